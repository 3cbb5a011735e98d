// A telephone in a process of its own, started by this program: its working folder is its own, its output goes into
// files there, and it has no input. It ends when the program that started it ends, however that happens. The test run
// and the fleet own these; the destructor ends the process.
//
//     auto process = TelephoneProcess::start({"/usr/bin/telephone", "play", "/home/me/a.script"}, "/tmp/run/a");
//     ... poll process->descriptor() ...
//     int const status = process->wait();
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <sys/types.h>

#include "telephone/base/Refusal.h"
#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class TelephoneProcess
{
public:
    // Of its files in the folder.
    static constexpr char const* kTranscript = "transcript";  // standard output
    static constexpr char const* kErrors = "errors";          // standard error

    // The first word is the program's file. The folder exists. `output`: a descriptor for the standard output in place
    // of the file; -1: the file. The thread that calls this must live as long as the process may. Refused if the
    // process cannot be started.
    [[nodiscard]] static Outcome<TelephoneProcess> start(std::vector<std::string> words, std::string const& folder,
                                                         int output = -1);
    // In the started process, before it starts threads: it shall end as soon as its starter has ended. Nothing happens
    // in a program that somebody else has started.
    static void endWithStarter();
    ~TelephoneProcess();
    TelephoneProcess(TelephoneProcess&&) noexcept;
    TelephoneProcess& operator=(TelephoneProcess&&) noexcept;

    // Readable once the process has ended.
    [[nodiscard]] int descriptor() const { return ended_.get(); }
    [[nodiscard]] pid_t id() const { return id_; }
    // SIGTERM: it may still write what it knows.
    void terminate() const;
    void kill() const;
    // Waits for the end. The status as waitpid gives it.
    int wait();

    // "ended by signal 9 (Killed)", of a status of wait.
    [[nodiscard]] static std::string endWords(int status);
    // The last lines of the standard error of a process that has ended.
    [[nodiscard]] static std::vector<std::string> lastErrors(std::string const& folder, std::size_t most);
    // The file of this program.
    [[nodiscard]] static std::string ownProgram();

private:
    TelephoneProcess(pid_t id, FileDescriptor ended);
    void send(int signal) const;

    pid_t id_;  // 0: it was waited for
    FileDescriptor ended_;
};

}  // namespace telephone

// A telephone that plays a script in a process of its own: its working folder is its own, its output goes into files
// there, and it has no input. The test run owns it; the destructor ends it.
//
//     auto process = ScriptProcess::start({"/usr/bin/telephone", "play", "/home/me/a.script"}, "/tmp/run/a");
//     ... poll process->descriptor() ...
//     int const status = process->wait();
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "telephone/base/Refusal.h"
#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class ScriptProcess
{
public:
    // Of its files in the folder.
    static constexpr char const* kTranscript = "transcript";  // standard output
    static constexpr char const* kErrors = "errors";          // standard error

    // The first word is the program's file. The folder exists. Refused if the process cannot be started.
    [[nodiscard]] static Outcome<ScriptProcess> start(std::vector<std::string> words, std::string const& folder);
    ~ScriptProcess();
    ScriptProcess(ScriptProcess&&) noexcept;
    ScriptProcess& operator=(ScriptProcess&&) noexcept;

    // Readable once the process has ended.
    [[nodiscard]] int descriptor() const { return ended_.get(); }
    // SIGTERM: it may still write what it knows.
    void terminate() const;
    void kill() const;
    // Waits for the end. The status as waitpid gives it.
    int wait();

private:
    ScriptProcess(pid_t id, FileDescriptor ended);
    void send(int signal) const;

    pid_t id_;  // 0: it was waited for
    FileDescriptor ended_;
};

}  // namespace telephone

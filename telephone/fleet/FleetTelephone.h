// One telephone of a fleet: its process, its files, and the connection over which it is used. Members owns it and
// guards it with its lock; only the thread that supervises starts it and takes its end.
//
// Normal flow: start, takeOutput until it runs, send and reply, and takeEnd once its process has ended.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "TelephoneClient.h"
#include "telephone/base/Refusal.h"
#include "telephone/fleet/ProcessUse.h"
#include "telephone/framework/FileDescriptor.h"
#include "telephone/framework/TelephoneProcess.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

enum class FleetCondition
{
    kStarting,
    kRunning,
    kWaiting,  // it has ended, and is started again
    kStopped,  // it has ended, as was wanted
};

class FleetTelephone
{
public:
    static constexpr char const* kConfiguration = "telephone.toml";  // in its folder

    // From 1. The folder is its own, and exists.
    FleetTelephone(int number, std::string folder);

    // The first word is the program's file. Refused if the process cannot be started.
    [[nodiscard]] Outcome<> start(std::vector<std::string> words);
    // SIGTERM; `stopped`: it shall not be started again.
    void end(bool stopped);
    void kill() const;

    // Reads what it has written. True: it has said so far where its panel is, and runs now.
    bool takeOutput();
    // Takes the process, which has ended; afterwards it waits to be started again, or is stopped. Returns why it ended,
    // with the last line of its standard error if it ended by itself with a failure.
    std::string takeEnd();

    // What it does at the next deadline of the supervision: it is started, or killed if it does not end.
    [[nodiscard]] SteadyClock::time_point deadline() const { return deadline_; }
    void startLater(SteadyClock::duration pause);
    void startNow();

    // Sends a request or a command. Refused with the reason while it does not run.
    [[nodiscard]] Outcome<> send(std::string_view text);
    // The reply to what was sent. Refused as replyOf; the connection is made anew then.
    [[nodiscard]] Outcome<telephone_client::Reply> reply(int stop, SteadyClock::time_point deadline);

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] std::string const& folder() const { return folder_; }
    [[nodiscard]] FleetCondition condition() const { return condition_; }
    // "has ended by signal 9 (Killed)"; empty: it has not ended yet.
    [[nodiscard]] std::string const& reason() const { return reason_; }
    [[nodiscard]] int starts() const { return starts_; }
    [[nodiscard]] SteadyClock::time_point since() const { return since_; }  // its latest start
    [[nodiscard]] pid_t process() const { return process_ ? process_->id() : 0; }
    [[nodiscard]] ProcessUse use() const { return process_ ? useOf(process_->id()) : ProcessUse(); }
    [[nodiscard]] std::string const& panel() const { return panel_; }  // its address, with the token; empty: none
    // Readable once its process has ended, and once it has written something; -1: there is no process.
    [[nodiscard]] int endDescriptor() const { return process_ ? process_->descriptor() : -1; }
    [[nodiscard]] int outputDescriptor() const { return output_.get(); }

private:
    [[nodiscard]] Outcome<> connect();
    [[nodiscard]] Outcome<> checkRuns() const;

    int const number_;
    std::string const folder_;
    FleetCondition condition_ = FleetCondition::kStarting;
    std::optional<TelephoneProcess> process_;
    FileDescriptor output_;
    std::string written_;  // a line that it has not finished
    std::string panel_;
    std::optional<telephone_client::Connection> client_;
    bool isStopped_ = false;  // it shall not be started again
    std::string reason_;
    int starts_ = 0;
    SteadyClock::time_point since_;
    SteadyClock::time_point deadline_ = kNoDeadline;
};

}  // namespace telephone

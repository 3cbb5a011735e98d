// Plays the application's side of a recording to a telephone: sends the recorded requests and commands at the recorded
// intervals, and compares the replies and the events with the recorded ones. One thread.
//
//     ReplayReport report(recording.name);
//     Replayer(conversation, recording, options).play(report);
//
// An input is not sent before the events that came before it in the recording, for at most a second more than recorded:
// an application acts on what it has seen, and a call that rings a little later is answered a little later. Every
// recorded session has a session of its own.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "telephone/access/Session.h"
#include "telephone/console/Conversation.h"
#include "telephone/display/DisplayOptions.h"
#include "telephone/replay/EventTracker.h"
#include "telephone/replay/IdMap.h"
#include "telephone/replay/Recording.h"
#include "telephone/replay/ReplayReport.h"

namespace telephone {

class Replayer
{
public:
    // They outlive the replayer. The conversation follows the telephone's events since its start.
    Replayer(Conversation& conversation, Recording const& recording, DisplayOptions const& options);
    ~Replayer();
    Replayer(Replayer const&) = delete;
    Replayer& operator=(Replayer const&) = delete;

    // Refused if the program must end before the recording does.
    [[nodiscard]] Outcome<> play(ReplayReport& report);

private:
    using Clock = Conversation::Clock;

    // Sends the input at its time.
    void play(std::size_t index, RecordedInput const& input, ReplayReport& report);
    // Waits for events until the deadline, or until enough came.
    void rest(Clock::time_point deadline, std::function<bool()> const& enough);
    void waitForEventsBefore(std::size_t entry);
    [[nodiscard]] std::string textOf(RecordedInput const& input);
    [[nodiscard]] std::vector<RecordedReply> send(RecordedInput const& input);
    void compare(RecordedEntry const& entry, RecordedInput const& input, std::vector<RecordedReply> const& replies,
                 ReplayReport& report) const;
    Session& sessionOf(RecordedInput const& input);

    Conversation& conversation_;
    Recording const& recording_;
    DisplayOptions const& options_;
    IdMap ids_;
    EventTracker events_;
    std::map<std::string, std::unique_ptr<Session>> sessions_;  // by recorded name
    Clock::time_point sent_;                                    // the latest input
    std::chrono::system_clock::time_point recorded_;            // the same, in the recording
};

}  // namespace telephone

// Plays the telephone's side of a recording to an application under test: there is no telephone. It answers each
// request and command of the application as recorded, and sends the recorded events at their intervals after the
// request that preceded them. The ids that the application chooses for its calls stand for the recorded ones.
//
// The recording begins to run when the application subscribes to events, or sends its first request. What was before
// the recorded subscription has happened by then.
//
// Sessions call it on the server's thread, timers on theirs.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "telephone/access/ClientSession.h"
#include "telephone/access/Words.h"
#include "telephone/framework/TimerService.h"
#include "telephone/replay/IdMap.h"
#include "telephone/replay/Recording.h"
#include "telephone/replay/ReplayReport.h"

namespace telephone {

class PlayedTelephone
{
public:
    struct Event
    {
        std::uint64_t number = 0;
        std::chrono::system_clock::time_point time;
        std::string text;
    };

    // The recorded sessions are those of the application; without any, all but the console, or the console if there is
    // no other. `ended` is called, on any thread, when the application has done everything, or has gone. All outlive
    // the object; the timers must have stopped before it ends.
    PlayedTelephone(Recording const& recording, std::vector<std::string> const& sessions, TimerService& timers,
                    std::function<void()> ended);
    PlayedTelephone(PlayedTelephone const&) = delete;
    PlayedTelephone& operator=(PlayedTelephone const&) = delete;

    // Refused if the recording lacks one of the sessions, saying which it has.
    [[nodiscard]] static Outcome<> checkSessions(Recording const& recording, std::vector<std::string> const& sessions);

    SessionFactory sessions();
    // What the application left out or did beside the recording, so far.
    void addTo(ReplayReport& report) const;

    // --- for its sessions
    using SessionId = int;
    SessionId opened(std::function<void()> wake);
    void closed(SessionId id);
    // The recorded replies to a request in full. Nothing: the recording has no such request left.
    [[nodiscard]] std::optional<std::vector<RecordedReply>> answer(std::string const& request);
    // The same for a command. One that may be repeated is answered as it was recorded last.
    [[nodiscard]] std::optional<std::vector<RecordedReply>> answer(Words const& command);
    // The events after a number, at most `most`.
    [[nodiscard]] std::vector<Event> after(std::uint64_t number, std::size_t most) const;
    // An application wants events from now on.
    void begin();
    // The number of the latest event.
    [[nodiscard]] std::uint64_t latest() const;
    [[nodiscard]] Recording const& recording() const { return recording_; }
    // The state as the recording has it for this moment, as JSON.
    [[nodiscard]] std::string state() const;
    void quit() { ended_(); }

private:
    // An input that the application has to send.
    struct Expected
    {
        std::size_t entry;
        RecordedInput const* input;
        MessageParts parts;  // of a request
        bool isDone = false;
    };
    // An event that waits for its time. It is sent behind those before it.
    struct Due
    {
        std::size_t entry;
        bool isTime = false;
    };

    void addInput(std::size_t entry, RecordedInput const& input, bool isOfApplication);

    // --- with the lock held
    void beginOnce();
    [[nodiscard]] std::vector<RecordedReply> done(Expected& expected);
    void noteExtra(RecordedInput const& input);
    // Starts the timers of the events behind an entry, up to the next input.
    void schedule(std::size_t first, std::chrono::system_clock::time_point since);
    void sendDue();
    void send(std::size_t entry);
    void checkEnd();
    // The first entry that the application or a timer has not reached.
    [[nodiscard]] std::size_t frontier() const;
    // A command as it was recorded last before that; else as it was recorded first. Null: it was not recorded.
    [[nodiscard]] RecordedInput const* latestOf(std::string const& command) const;
    [[nodiscard]] std::string presentState(std::string const& json) const;
    [[nodiscard]] std::string stateNow() const;

    void eventIsDue(std::size_t entry);

    Recording const& recording_;
    TimerService& timers_;
    std::function<void()> const ended_;
    mutable std::mutex mutex_;
    IdMap ids_;
    std::vector<Expected> expected_;
    std::vector<bool> passed_;  // by entry: an event that was sent, an input that came or is not waited for
    std::deque<Due> due_;
    std::vector<Event> sent_;
    std::vector<ReplayDifference> extra_;
    std::map<SessionId, std::function<void()>> wakes_;
    SessionId lastSession_ = 0;
    bool hasBegun_ = false;
    std::size_t first_ = 0;                        // entry with which the recording begins to run
    std::chrono::system_clock::time_point since_;  // its time
    int leaving_ = 0;                              // timer that runs while no application is connected
};

}  // namespace telephone

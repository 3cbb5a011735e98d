// A person or script using the telephone: a session whose replies and events are written to a transcript. A reply is
// written once it is complete, so that its answer can say that something is to be explained. Made before the telephone
// is activated, so that no event is missed; used on one thread.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "telephone/access/Session.h"
#include "telephone/console/OutputForm.h"
#include "telephone/framework/WakeUp.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class Transcript;

class Conversation
{
public:
    using Clock = SteadyClock;
    using Listener = std::function<void(std::string const& event)>;

    // What became of a line.
    struct Result
    {
        bool isRequest = false;
        std::optional<std::string> answer;  // of a request; nothing: it is never answered
        bool isOver = false;                // the line was quit
    };

    // Follows the events; requests are strict and explained. `stop` is a descriptor that becomes readable when the
    // program must end.
    Conversation(std::string const& name, SessionServices services, Transcript& transcript, int stop);
    ~Conversation();
    Conversation(Conversation const&) = delete;
    Conversation& operator=(Conversation const&) = delete;

    [[nodiscard]] TelephoneControls& controls() { return session_.services().telephone; }
    [[nodiscard]] Transcript& transcript() { return transcript_; }
    [[nodiscard]] Session& session() { return session_; }

    // From now on the transcript is written like this. Between words and tags, the command `raw` chooses.
    void writeAs(OutputKind kind);

    // Runs a line: a request, a command, a comment or nothing. Its replies are in the transcript; a refusal is not.
    [[nodiscard]] Outcome<Result> run(std::string const& line);
    [[nodiscard]] Outcome<Result> run(Words const& words);

    // Writes each change of a lamp, too, as the command line asks (--lamps).
    void showLamps();

    // The listener receives every event after it was written to the transcript.
    void listen(Listener listener) { listener_ = std::move(listener); }
    // The observer receives everything that is said, before it is written.
    void observe(MessageSink observer) { observer_ = std::move(observer); }
    // Takes the waiting events; false if there were none.
    bool takeEvents();
    // Waits for events until the deadline and takes them. False: none came, or the program must end.
    bool waitForEvents(Clock::time_point deadline);
    // Waits until the telephone is at rest: a moment has passed since the last activity and event.
    void settle();
    // Something was just done to the telephone, such as a request.
    void noteActivity() { lastActivity_ = Clock::now(); }
    [[nodiscard]] bool isStopped() const;

    // For callers with a poll of their own.
    [[nodiscard]] int eventDescriptor() const { return wakeUp_.descriptor(); }
    [[nodiscard]] int stopDescriptor() const { return stop_; }

private:
    [[nodiscard]] SessionServices withEnd(SessionServices services);
    [[nodiscard]] Outcome<Result> run(std::function<void(MessageSink const&)> const& handle);
    // The reply to the request under way is collected in the first.
    void show(Message const& message, OutputForm::Reply& reply, Outcome<Result>& result);
    void noteEnd(OutputForm::Reply& reply) const;
    void tellObserver(Message const& message) const;
    void showEvent(Message const& message);
    // Those that have changed since the last time.
    void writeLamps();

    Transcript& transcript_;
    int const stop_;
    WakeUp wakeUp_;
    bool quit_ = false;
    std::atomic<bool> lampsChanged_{false};
    std::map<std::string, LampState> lamps_;  // as written last, by key or name
    Session session_;
    Listener listener_;
    MessageSink observer_;
    Clock::time_point sent_;  // the request under way
    Clock::time_point lastActivity_ = Clock::now();
};

}  // namespace telephone

// A person or script using the telephone: a channel that receives every event, and the interpreter of their lines. Made
// before the telephone is activated, so that no event is missed; used on one thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "telephone/console/CommandInterpreter.h"
#include "telephone/framework/WakeUp.h"

namespace telephone {

class TelephoneContext;

class Conversation
{
public:
    using Clock = std::chrono::steady_clock;
    using Listener = std::function<void(std::string const& event)>;

    // Subscribes to events. `stop` is a descriptor that becomes readable when the program must end. Throws
    // std::runtime_error if the service refuses the subscription.
    Conversation(std::string const& name, TelephoneContext& context, RequestRunner& runner, TelephoneControls& controls,
                 Transcript& transcript, int stop);
    ~Conversation();
    Conversation(Conversation const&) = delete;
    Conversation& operator=(Conversation const&) = delete;

    [[nodiscard]] CommandInterpreter& interpreter() { return interpreter_; }
    [[nodiscard]] TelephoneControls& controls() { return controls_; }
    [[nodiscard]] Transcript& transcript() { return transcript_; }

    // The listener receives every event after it was written to the transcript.
    void listen(Listener listener) { listener_ = std::move(listener); }
    // Takes the waiting events; false if there were none.
    bool takeEvents();
    // Waits for events until the deadline and takes them. False: none came, or the program must end.
    bool waitForEvents(Clock::time_point deadline);
    // Waits until the telephone is at rest: a moment has passed since the last request and event.
    void settle();
    // A request has just been sent.
    void noteRequest() { lastActivity_ = Clock::now(); }
    [[nodiscard]] bool isStopped() const;

    // For callers with a poll of their own.
    [[nodiscard]] int eventDescriptor() const { return wakeUp_.descriptor(); }
    [[nodiscard]] int stopDescriptor() const { return stop_; }

private:
    TelephoneContext& context_;
    TelephoneControls& controls_;
    Transcript& transcript_;
    int const stop_;
    WakeUp wakeUp_;
    std::shared_ptr<Channel> channel_;
    CommandInterpreter interpreter_;
    Listener listener_;
    Clock::time_point lastActivity_ = Clock::now();
};

}  // namespace telephone

// One person or script talking to the telephone: a channel that hears every event, and what runs their lines. Made by
// main before the telephone is activated, so that no event is missed; used on one thread.
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

    // Subscribes. `stop` is a descriptor that becomes readable when all is to end. Throws std::runtime_error where the
    // service takes no subscription.
    Conversation(std::string const& name, TelephoneContext& context, RequestRunner& runner, TelephoneControls& controls,
                 Transcript& transcript, int stop);
    ~Conversation();
    Conversation(Conversation const&) = delete;
    Conversation& operator=(Conversation const&) = delete;

    [[nodiscard]] CommandInterpreter& interpreter() { return interpreter_; }
    [[nodiscard]] TelephoneControls& controls() { return controls_; }
    [[nodiscard]] Transcript& transcript() { return transcript_; }

    // Hears every event, after it is written to the transcript.
    void listen(Listener listener) { listener_ = std::move(listener); }
    // Takes the events that wait; false where there are none.
    bool takeEvents();
    // Waits for an event and takes it, at most until then. False: none came, or all is to end.
    bool waitForEvents(Clock::time_point deadline);
    // Waits until a moment has passed since the last request and event: what follows is to see the telephone at rest,
    // as a person does.
    void settle();
    // A request has been sent now.
    void noteRequest() { lastActivity_ = Clock::now(); }
    [[nodiscard]] bool isStopped() const;

    // For those who poll themselves.
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

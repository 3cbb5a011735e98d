// What a call needs of the engine that it lives in. The engine implements it; called with the phone lock held.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "telephone/calls/CallSnapshot.h"
#include "telephone/sip/Log.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Transfer.h"

class CommunicationsServiceEventIfc;

namespace telephone {

namespace sip {
class EventLoop;
}

class Call;

using Event = std::function<void(CommunicationsServiceEventIfc&)>;

class CallHost
{
public:
    virtual sip::EventLoop& loop() = 0;
    virtual void log(sip::LogLevel level, std::string const& text) = 0;
    virtual void post(Event event) = 0;
    // How long a far end may leave a re-INVITE unanswered.
    virtual std::chrono::milliseconds reinviteTimeout() const = 0;

    // After each change, before its event is posted. A call that has ended leaves the engine in it, but lives on until
    // the callback that runs is over.
    virtual void callChanged(Call& call, CallSnapshot const& before) = 0;
    // After the last event of a call.
    virtual void callEnded(Call& call) = 0;
    // Whether a call-back could be set for this outgoing call.
    virtual bool callBackPossible(Call const& call) const = 0;
    virtual void infoReceived(Call& call, sip::Content const& content) = 0;
    // The far end asks to be connected with somebody else.
    virtual void transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer) = 0;
    // The end of Call::transfer, after its event; status: 200, or why not.
    virtual void transferEnded(Call& call, int status) = 0;

protected:
    ~CallHost() = default;
};

}  // namespace telephone

// Receives the reports of calls. CallEngine implements it and hands each report to its subject. Called with the phone
// lock held.
#pragma once

#include <memory>

#include "telephone/calls/CallSnapshot.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Transfer.h"

namespace telephone {

class Call;

class CallHost
{
public:
    // After each change, before its event is posted. A call that has ended leaves the list during this, but lives until
    // the running callback has returned.
    virtual void callChanged(Call& call, CallSnapshot const& before) = 0;
    // After the last event of a call.
    virtual void callEnded(Call& call) = 0;
    // Whether a call-back could be set for this outgoing call.
    virtual bool callBackPossible(Call const& call) const = 0;
    virtual void infoReceived(Call& call, sip::Content const& content) = 0;
    // The far end asks to be connected with another party.
    virtual void transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer) = 0;
    // The end of Call::transfer, after its event. status: 200, or the reason for the failure.
    virtual void transferEnded(Call& call, int status) = 0;

protected:
    ~CallHost() = default;
};

}  // namespace telephone

// Follows every call: lines, lamps, recording. Called on any thread with the phone lock held; may call the engine, but
// no operation of the service that takes its team lock.
#pragma once

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/CallSnapshot.h"

namespace telephone {

class CallObserver
{
public:
    virtual ~CallObserver() = default;

    // before: null for a new call. The last report of a call has `ended()`; its id is free from then on.
    virtual void callChanged(CallSnapshot const& now, CallSnapshot const* before) = 0;
    virtual void registrationChanged(int /*lineNumber*/, bool /*registered*/) {}
    virtual void messageWaitingChanged(int /*lineNumber*/, sfiMessageWaitingRecord const&) {}
    virtual void microphoneMuteChanged(bool /*muted*/) {}
};

}  // namespace telephone

// Picks up a call that rings at another telephone. The telephone owns the singleton.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"

class Executable;
class SvcRTEContext;

class DirectedPickupHandler
{
public:
    static DirectedPickupHandler* Instance();

    virtual void setCommsSrv(SvcRTEContext* context, Executable* service) = 0;
    virtual void Initialise() = 0;
    // Offers one timer expiry; ids that are not its own are ignored.
    virtual void timerExpired(int timerId) = 0;
    // `target` is the number at which the call rings.
    virtual sfiResult directedPickupRequest(sfiCallInfo* call, std::string& target) = 0;

protected:
    ~DirectedPickupHandler() = default;
};

/// @file
/// Directed pickup.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"

class Executable;
class SvcRTEContext;

/// Picks up a call that rings at another telephone. The telephone owns the one object. Thread: any.
class DirectedPickupHandler
{
public:
    /// The pickup handler of this telephone.
    /// @return Never null while the service exists.
    static DirectedPickupHandler* Instance();

    /// Binds the handler to the service. Called by each `init`, before Initialise.
    virtual void setCommsSrv(SvcRTEContext* context, Executable* service) = 0;
    /// Called by each `init`, before the call control is set up.
    virtual void Initialise() = 0;
    /// Offers one timer expiry; ids that are not its own are ignored.
    virtual void timerExpired(int timerId) = 0;
    /// Takes over the call that rings at a number. Called with CSfi's Lock held, and only where sfiGetServerType is
    /// sfiServerWithPickup.
    /// @param call line, appearance and number for the call
    /// @param target the number at which the call rings; a copy, which may be changed
    /// @return sfiSuccess once the search for the call is under way; sfiFailure for an unknown line, an empty number,
    ///     and where CSfi::CallMake fails. When nothing rings there, `featureFailed` follows and the call ends as
    ///     failed.
    virtual sfiResult directedPickupRequest(sfiCallInfo* call, std::string& target) = 0;

protected:
    /// Never deleted through this interface.
    ~DirectedPickupHandler() = default;
};

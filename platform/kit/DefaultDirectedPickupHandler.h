/// @file
/// DirectedPickupHandler, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/team/DirectedPickupHandler.h"

namespace kit {

/// The directed pickup of a telephone that has none.
class DefaultDirectedPickupHandler : public DirectedPickupHandler
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultDirectedPickupHandler() = default;

    void setCommsSrv(SvcRTEContext* /*context*/, Executable* /*service*/) override
    {
        kMissing.report("setCommsSrv", "keep the context and the service");
    }
    void Initialise() override { kMissing.report("Initialise", "set directed pickup up"); }
    void timerExpired(int /*timerId*/) override
    {
        kMissing.report("timerExpired", "act on the ids of your own timers, ignore the others");
    }
    sfiResult directedPickupRequest(sfiCallInfo* /*call*/, std::string& /*target*/) override
    {
        kMissing.report("directedPickupRequest", "find the call that rings at the number, and take it over");
        return sfiFailure;
    }

private:
    static constexpr Missing kMissing{"DirectedPickupHandler", "platform/team/DirectedPickupHandler.h"};
};

}  // namespace kit

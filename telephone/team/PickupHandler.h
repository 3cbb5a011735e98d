// Picks up a call that is ringing at another telephone. Owned by the composition root;
// DirectedPickupHandler::Instance() while it exists. The service calls it with the phone lock held.
#pragma once

#include <string>

#include "platform/team/DirectedPickupHandler.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/OnlyObject.h"

namespace telephone {

class Lines;
class PhoneCalls;

class PickupHandler final : public DirectedPickupHandler
{
public:
    PickupHandler(Lines const& lines, PhoneCalls& calls);

    void setCommsSrv(SvcRTEContext* context, Executable* service) override;
    void Initialise() override {}
    // Pick-ups start no numbered timers.
    void timerExpired(int /*timerId*/) override {}
    sfiResult directedPickupRequest(sfiCallInfo* call, std::string& target) override;

    // Also for busy-lamp fields: picks up the call that is ringing at the number `target`, as the call of the record.
    [[nodiscard]] Outcome<> pickup(sfiCallInfo const* call, std::string const& target);

private:
    Lines const& lines_;
    PhoneCalls& calls_;
    OnlyObject<PickupHandler> const only_{*this, "a pick-up handler"};
};

}  // namespace telephone

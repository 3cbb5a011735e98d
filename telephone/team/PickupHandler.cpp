#include "telephone/team/PickupHandler.h"

#include <mutex>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/PhoneCalls.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/Lines.h"
#include "telephone/team/LogComponent.h"
#include "telephone/traced/TracedPlatform.h"

namespace telephone {

PickupHandler::PickupHandler(Lines const& lines, PhoneCalls& calls)
    : lines_(lines)
    , calls_(calls)
{}

void PickupHandler::setCommsSrv(SvcRTEContext* /*context*/, Executable* service)
{
    if (service == nullptr) {
        log(kLogWarning, kComponent, "there is no communications service");
    }
}

sfiResult PickupHandler::directedPickupRequest(sfiCallInfo* call, std::string& target)
{
    return reportIfRefused(kComponent, pickup(call, target)) ? sfiFailure : sfiSuccess;
}

Outcome<> PickupHandler::pickup(sfiCallInfo const* call, std::string const& target)
{
    if (call == nullptr || target.empty()) {
        return refuse(RefusalKind::kBadInput, call == nullptr ? "a pick-up needs a call" : "a pick-up needs a number");
    }
    std::lock_guard const lock(calls_);
    auto const* const line = lines_.byNumber(call->lineID);
    if (line == nullptr) {
        return refuse(RefusalKind::kNotFound, fmt::format("there is no line {} for the pick-up", call->lineID));
    }
    return calls_.pickup(line->place(), call->callID, target);
}

}  // namespace telephone

DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    return telephone::traced<DirectedPickupHandler>(telephone::OnlyObject<telephone::PickupHandler>::get());
}

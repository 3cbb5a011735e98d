#include "telephone/team/PickupHandler.h"

#include <atomic>
#include <mutex>
#include <stdexcept>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/PhoneCalls.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/Lines.h"

namespace telephone {

namespace {

constexpr char const* kPickupComponent = "pick-up";

std::atomic<PickupHandler*> theHandler{nullptr};

}  // namespace

PickupHandler::PickupHandler(Lines const& lines, PhoneCalls& calls)
    : lines_(lines)
    , calls_(calls)
{
    PickupHandler* none = nullptr;
    if (!theHandler.compare_exchange_strong(none, this)) {
        throw std::runtime_error("a pick-up handler already exists in this process");
    }
}

PickupHandler::~PickupHandler()
{
    theHandler = nullptr;
}

void PickupHandler::setCommsSrv(SvcRTEContext* /*context*/, Executable* service)
{
    if (service == nullptr) {
        log(kLogWarning, kPickupComponent, "there is no communications service");
    }
}

sfiResult PickupHandler::directedPickupRequest(sfiCallInfo* call, std::string& target)
{
    return reportIfRefused(kPickupComponent, pickup(call, target)) ? sfiFailure : sfiSuccess;
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
    return telephone::theHandler.load();
}

#include "telephone/team/PickupHandler.h"

#include <atomic>
#include <mutex>
#include <stdexcept>

#include "telephone/framework/Log.h"
#include "telephone/lines/Lines.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "pick-up";

std::atomic<PickupHandler*> theHandler{nullptr};

}  // namespace

PickupHandler::PickupHandler(Lines& lines)
    : lines_(lines)
{
    PickupHandler* nobody = nullptr;
    if (!theHandler.compare_exchange_strong(nobody, this)) {
        throw std::runtime_error("there is a pick-up handler already");
    }
}

PickupHandler::~PickupHandler()
{
    theHandler = nullptr;
}

void PickupHandler::setCommsSrv(SvcRTEContext* /*context*/, Executable* service)
{
    if (service == nullptr) {
        log(kLogWarning, kComponent, "there is no communications service");
    }
}

void PickupHandler::Initialise() {}

void PickupHandler::timerExpired(int /*timerId*/) {}

sfiResult PickupHandler::directedPickupRequest(sfiCallInfo* call, std::string& target)
{
    return pickupForRecord(lines_, call, target);
}

sfiResult pickupForRecord(Lines& lines, sfiCallInfo const* call, std::string const& target)
{
    if (call == nullptr || target.empty()) {
        log(kLogFailure, kComponent, "no call is picked up: {}", call == nullptr ? "no call is named" : "no number");
        return sfiFailure;
    }
    std::lock_guard const lock(lines.calls());
    auto const* const line = lines.byNumber(call->lineID);
    if (line == nullptr) {
        log(kLogFailure, kComponent, "the call at {} is not picked up: there is no line {}", target, call->lineID);
        return sfiFailure;
    }
    return lines.calls().pickup(line->place(), call->callID, target);
}

}  // namespace telephone

DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    return telephone::theHandler.load();
}

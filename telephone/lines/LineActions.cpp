#include "telephone/lines/LineActions.h"

#include <mutex>

#include <spdlog/fmt/fmt.h>

#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/lines/LogComponent.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

// The call that a transfer moves: the active one, else the first one on hold.
std::optional<CallSnapshot> callToTransfer(PhoneCalls const& calls)
{
    auto const active = calls.activeCall();
    return active ? active : firstCall(calls.calls(), isHeld);
}

Outcome<> isPrivate(TelephoneLine const& line)
{
    return refuse(RefusalKind::kNotPermitted,
                  fmt::format("the call of the other telephone on line {} is private", line.id()));
}

}  // namespace

LineActions::LineActions(Lines& lines, PhoneCalls& calls, TimerService& timers, std::chrono::milliseconds warmLineDelay)
    : lines_(lines)
    , calls_(calls)
    , timers_(timers)
    , warmLineDelay_(warmLineDelay)
{}

void LineActions::stop()
{
    std::lock_guard const lock(calls_);
    timers_.cancel(warmTimer_);
    warmTimer_ = 0;
}

Outcome<> LineActions::linePressed(TelephoneLine& line)
{
    std::lock_guard const lock(calls_);
    auto const state = line.state();
    log(kLogInfo, kComponent, "the key of line {} was pressed: {}", line.id(), lineStateName(state));
    switch (state) {
    case eLineStateIdle:
        return seize(line);
    case eLineStateRinging:
        return answer(line);
    case eLineStateActive:
    case eLineStateConference:
        return hold(line);
    case eLineStateHold:
    case eLineStateHoldConsult:
        return retrieve(line);
    case eLineStateSelected:
    case eLineStateReserved:
        lines_.release(line);
        return {};
    case eLineStateRingingElsewhere:
    case eLineStateHoldElsewhere:
    case eLineStateConferenceHoldElsewhere:
        return takeBack(line);
    case eLineStateActiveElsewhere:
        return line.bridge();
    case eLineStateUnknown:
    case eLineStateDialling:
    case eLineStateRemoteRinging:
    case eLineStateDSSBusy:
    case eLineStateOutOfService:
        break;
    }
    return refuse(RefusalKind::kWrongState,
                  fmt::format("the key of line {} does nothing while the line is {}", line.id(), lineStateName(state)));
}

Outcome<> LineActions::seize(TelephoneLine& line)
{
    bool const manual = line.data().takeManualMark();
    auto seized = lines_.seize(line, eLineStateSelected);
    if (!seized || !manual) {
        return seized;
    }
    auto const type = line.data().getHotWarmType();
    if (type != LineData::kHotLine && type != LineData::kWarmLine) {
        return seized;
    }
    bool const hot = type == LineData::kHotLine;
    auto const digits = line.data().getHotWarmDigits();
    if (digits.empty()) {
        return refuse(RefusalKind::kNotFound,
                      fmt::format("{} line {} has no digits to dial", hot ? "hot" : "warm", line.id()));
    }
    return hot ? dialHotLine(line, digits) : startWarmLine(line, digits);
}

Outcome<> LineActions::dialHotLine(TelephoneLine& line, std::string const& digits)
{
    auto* const place = line.appearances().empty() ? &line : lines_.selected();
    auto dialled = dial(place == nullptr ? line : *place, digits);
    if (!dialled) {
        lines_.release(line);
    }
    return dialled;
}

Outcome<> LineActions::startWarmLine(TelephoneLine& line, std::string const& digits)
{
    timers_.cancel(warmTimer_);
    warmTimer_ = timers_.start(warmLineDelay_, [this, &line, digits] { warmLineExpired(line, digits); });
    return {};
}

void LineActions::warmLineExpired(TelephoneLine& line, std::string const& digits)
{
    timerRanOut(PhoneTimer::kWarmLine);
    std::lock_guard const lock(calls_);
    warmTimer_ = 0;
    auto* const selected = lines_.selected();
    if (selected != nullptr && &selected->base() == &line.base()) {
        reportIfRefused(kComponent, dial(*selected, digits));
    }
}

Outcome<> LineActions::answer(TelephoneLine& line)
{
    auto const call = line.callInState(eLineStateRinging);
    if (!call) {
        return refuse(RefusalKind::kWrongState, fmt::format("no call is ringing on line {}", line.id()));
    }
    return calls_.answer(call->callID);
}

Outcome<> LineActions::hold(TelephoneLine& line)
{
    auto const active = line.callInState(eLineStateActive);
    auto const call = active ? active : line.callInState(eLineStateConference);
    return call ? calls_.hold(call->callID) : Outcome<>();
}

Outcome<> LineActions::retrieve(TelephoneLine& line)
{
    auto const held = firstCall(line.calls(), isHeld);
    if (!held) {
        return refuse(RefusalKind::kWrongState, fmt::format("line {} has no call on hold", line.id()));
    }
    return calls_.retrieve(held->callID);
}

Outcome<> LineActions::stationPressed(std::string const& number, EDSSContext context, std::string const& ringingLineURI)
{
    std::lock_guard const lock(calls_);
    switch (context) {
    case eDSSContextNone:
        return dialOnFreeLine(number);
    case eDSSContextConsultation:
        return consult(number);
    case eDSSContextBlindTransfer:
        return blindTransfer(number);
    case eDSSContextDeflect:
        return deflect(number, ringingLineURI);
    case eDSSContextPickup:
        return pickup(number);
    }
    return refuse(RefusalKind::kBadInput, fmt::format("the key of {} was pressed in the unknown context {}", number,
                                                      static_cast<int>(context)));
}

Outcome<> LineActions::dial(TelephoneLine& line, std::string const& number, CallPurpose purpose)
{
    if (!lines_.mayDial(number)) {
        return refuse(RefusalKind::kNotPermitted,
                      fmt::format("{} cannot be dialled while the phone is locked", number));
    }
    return calls_.make(line.place(), calls_.freeCallID(), number, purpose);
}

Outcome<> LineActions::dialOnFreeLine(std::string const& number)
{
    return lines_.lineForNewCall().and_then([&](TelephoneLine* line) { return dial(*line, number); });
}

Outcome<> LineActions::pickup(std::string const& number)
{
    return lines_.lineForNewCall().and_then(
        [&](TelephoneLine* line) { return calls_.pickup(line->place(), calls_.freeCallID(), number); });
}

Outcome<> LineActions::takeBack(TelephoneLine& line)
{
    return line.elsewhere().isPrivate ? isPrivate(line) : takeOver(line.elsewhere().dialog, line.id());
}

Outcome<> LineActions::join(TelephoneLine& line)
{
    return line.elsewhere().isPrivate ? isPrivate(line) : takeOver(line.elsewhere().join, line.id());
}

Outcome<> LineActions::takeOver(std::optional<PickupTarget> const& dialog, std::string const& owner)
{
    if (!dialog) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("{} has no call that this telephone knows how to take over", owner));
    }
    auto const take = [&](TelephoneLine* line) { return calls_.takeOver(line->place(), calls_.freeCallID(), *dialog); };
    auto* const line = lines_.find(owner);
    auto* const place = line == nullptr ? nullptr : line->freePlace();
    return place != nullptr ? take(place) : lines_.lineForNewCall().and_then(take);
}

// The consultation call uses the line of the active call, which is put on hold for it.
Outcome<> LineActions::consult(std::string const& number)
{
    auto const active = calls_.activeCall();
    auto* const line = active ? lines_.byNumber(active->line.recordLine) : nullptr;
    if (line == nullptr) {
        return refuse(RefusalKind::kWrongState, fmt::format("{} cannot be consulted without an active call", number));
    }
    return dial(*line, number, CallPurpose::kConsultation);
}

Outcome<> LineActions::blindTransfer(std::string const& number)
{
    auto const call = callToTransfer(calls_);
    if (!call) {
        return refuse(RefusalKind::kWrongState, fmt::format("there is no call to transfer to {}", number));
    }
    return calls_.blindTransfer(call->callID, number);
}

Outcome<> LineActions::deflect(std::string const& number, std::string const& ringingLineURI)
{
    auto* const line = lines_.find(ringingLineURI);
    auto const call = line == nullptr ? std::nullopt : line->callInState(eLineStateRinging);
    if (!call) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("no call is ringing on line \"{}\" to deflect to {}", ringingLineURI, number));
    }
    return calls_.deflect(call->callID, number);
}

}  // namespace telephone

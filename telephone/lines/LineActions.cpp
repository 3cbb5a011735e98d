#include "telephone/lines/LineActions.h"

#include <algorithm>
#include <mutex>

#include "telephone/framework/Log.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "lines";

bool isHeld(CallSnapshot const& call)
{
    auto const state = lineStateOf(call);
    return state == eLineStateHold || state == eLineStateHoldConsult;
}

// The call that a transfer moves: the active one, else the one that is held for it.
std::optional<CallSnapshot> callToTransfer(PhoneCalls const& calls)
{
    if (auto active = calls.activeCall()) {
        return active;
    }
    auto const all = calls.calls();
    auto const held = std::find_if(all.begin(), all.end(), isHeld);
    return held == all.end() ? std::nullopt : std::optional(*held);
}

}  // namespace

LineActions::LineActions(Lines& lines)
    : lines_(lines)
{}

void LineActions::stop()
{
    if (warmTimer_ != 0) {
        lines_.timers().cancel(warmTimer_);
        warmTimer_ = 0;
    }
}

void LineActions::linePressed(TelephoneLine& line)
{
    std::lock_guard const lock(lines_.calls());
    auto const state = line.state();
    log(kLogInfo, kComponent, "the key of line {} was pressed: {}", line.id(), lineStateName(state));
    switch (state) {
    case eLineStateIdle:
        return seize(line);
    case eLineStateRinging:
        static_cast<void>(answer(line));
        return;
    case eLineStateActive:
    case eLineStateConference:
        return hold(line);
    case eLineStateHold:
    case eLineStateHoldConsult:
        return retrieve(line);
    case eLineStateSelected:
    case eLineStateReserved:
        return lines_.release(line);
    case eLineStateHoldElsewhere:
    case eLineStateConferenceHoldElsewhere:
        static_cast<void>(takeOver(line.elsewhere().dialog, line.id()));
        return;
    case eLineStateActiveElsewhere:
        static_cast<void>(line.bridge());
        return;
    case eLineStateRingingElsewhere:
        static_cast<void>(takeOver(line.elsewhere().dialog, line.id()));
        return;
    case eLineStateUnknown:
    case eLineStateDialling:
    case eLineStateRemoteRinging:
    case eLineStateDSSBusy:
    case eLineStateOutOfService:
        log(kLogFailure, kComponent, "the key of line {} does nothing: the line is {}", line.id(),
            lineStateName(state));
        return;
    }
}

void LineActions::seize(TelephoneLine& line)
{
    bool const manual = line.data().takeManualMark();
    if (!lines_.seize(line, eLineStateSelected) || !manual) {
        return;
    }
    switch (line.data().getHotWarmType()) {
    case LineData::kHotLine:
        return dialHotLine(line);
    case LineData::kWarmLine:
        return startWarmLine(line);
    default:
        return;
    }
}

void LineActions::dialHotLine(TelephoneLine& line)
{
    auto const digits = line.data().getHotWarmDigits();
    if (digits.empty()) {
        log(kLogFailure, kComponent, "hot line {} dials nothing: it has no digits", line.id());
        return;
    }
    auto* const place = line.appearances().empty() ? &line : lines_.selected();
    if (dial(place == nullptr ? line : *place, digits) != sfiSuccess) {
        lines_.release(line);
    }
}

void LineActions::startWarmLine(TelephoneLine& line)
{
    auto const digits = line.data().getHotWarmDigits();
    if (digits.empty()) {
        log(kLogFailure, kComponent, "warm line {} will dial nothing: it has no digits", line.id());
        return;
    }
    stop();
    warmTimer_ =
        lines_.timers().start(lines_.warmLineDelay(), [this, &line, digits] { warmLineExpired(line, digits); });
}

void LineActions::warmLineExpired(TelephoneLine& line, std::string const& digits)
{
    std::lock_guard const lock(lines_.calls());
    warmTimer_ = 0;
    auto* const selected = lines_.selected();
    if (selected != nullptr && &selected->base() == &line.base()) {
        static_cast<void>(dial(*selected, digits));
    }
}

sfiResult LineActions::answer(TelephoneLine& line)
{
    auto const call = line.callInState(eLineStateRinging);
    if (!call) {
        log(kLogFailure, kComponent, "line {} answers nothing: no call rings on it", line.id());
        return sfiFailure;
    }
    return lines_.calls().answer(call->callID);
}

void LineActions::hold(TelephoneLine& line)
{
    auto call = line.callInState(eLineStateActive);
    if (!call) {
        call = line.callInState(eLineStateConference);
    }
    if (call) {
        static_cast<void>(lines_.calls().hold(call->callID));
    }
}

void LineActions::retrieve(TelephoneLine& line)
{
    auto const& calls = line.calls();
    auto const held = std::find_if(calls.begin(), calls.end(), isHeld);
    if (held != calls.end()) {
        int const callID = held->callID;
        static_cast<void>(lines_.calls().retrieve(callID));
    }
}

void LineActions::stationPressed(std::string const& number, EDSSContext context, std::string const& ringingLineURI)
{
    std::lock_guard const lock(lines_.calls());
    switch (context) {
    case eDSSContextNone:
        static_cast<void>(dialOnFreeLine(number));
        return;
    case eDSSContextConsultation:
        return consult(number);
    case eDSSContextBlindTransfer:
        return blindTransfer(number);
    case eDSSContextDeflect:
        return deflect(number, ringingLineURI);
    case eDSSContextPickup:
        static_cast<void>(pickup(number));
        return;
    }
    log(kLogFailure, kComponent, "the key of {} does nothing: context {} is unknown", number,
        static_cast<int>(context));
}

sfiResult LineActions::dial(TelephoneLine& line, std::string const& number, CallPurpose purpose)
{
    if (!lines_.mayDial(number)) {
        log(kLogFailure, kComponent, "{} is not dialled: the phone is locked", number);
        return sfiFailure;
    }
    auto& calls = lines_.calls();
    return calls.make(line.place(), calls.freeCallID(), number, purpose);
}

sfiResult LineActions::dialOnFreeLine(std::string const& number)
{
    auto* const line = freeLine(number + " is not dialled");
    return line == nullptr ? sfiFailure : dial(*line, number);
}

sfiResult LineActions::pickup(std::string const& number)
{
    auto* const line = freeLine("the call at " + number + " is not picked up");
    auto& calls = lines_.calls();
    return line == nullptr ? sfiFailure : calls.pickup(line->place(), calls.freeCallID(), number);
}

sfiResult LineActions::takeOver(std::optional<PickupTarget> const& dialog, std::string const& whose)
{
    if (!dialog) {
        log(kLogFailure, kComponent, "no call of {} is taken over: its telephone has not told how", whose);
        return sfiFailure;
    }
    auto* line = lines_.find(whose);
    line = line == nullptr ? nullptr : lines_.freePlace(*line);
    line = line == nullptr ? freeLine("the call of " + whose + " is not taken over") : line;
    auto& calls = lines_.calls();
    return line == nullptr ? sfiFailure : calls.takeOver(line->place(), calls.freeCallID(), *dialog);
}

// The consultation goes out on the line of the call that it interrupts, which is put on hold for it.
void LineActions::consult(std::string const& number)
{
    auto const active = lines_.calls().activeCall();
    auto* const line = active ? lines_.byNumber(active->line.recordLine) : nullptr;
    if (line == nullptr) {
        log(kLogFailure, kComponent, "{} is not consulted: no call is active", number);
        return;
    }
    static_cast<void>(dial(*line, number, CallPurpose::kConsultation));
}

void LineActions::blindTransfer(std::string const& number)
{
    auto const call = callToTransfer(lines_.calls());
    if (!call) {
        log(kLogFailure, kComponent, "nothing is transferred to {}: there is no call", number);
        return;
    }
    static_cast<void>(lines_.calls().blindTransfer(call->callID, number));
}

void LineActions::deflect(std::string const& number, std::string const& ringingLineURI)
{
    auto* const line = lines_.find(ringingLineURI);
    auto const call = line == nullptr ? std::nullopt : line->callInState(eLineStateRinging);
    if (!call) {
        log(kLogFailure, kComponent, "nothing is deflected to {}: no call rings on line \"{}\"", number,
            ringingLineURI);
        return;
    }
    static_cast<void>(lines_.calls().deflect(call->callID, number));
}

TelephoneLine* LineActions::freeLine(std::string const& what)
{
    auto* const line = lines_.lineForNewCall();
    if (line == nullptr) {
        log(kLogFailure, kComponent, "{}: no line is free", what);
    }
    return line;
}

}  // namespace telephone

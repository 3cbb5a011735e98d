#include "telephone/team/Keyset.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <tuple>
#include <vector>

#include "platform/lines/ClientUtils.h"
#include "telephone/framework/Log.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/Settings.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "keyset";

std::atomic<Keyset*> theKeyset{nullptr};

bool isHeld(CallSnapshot const& call)
{
    auto const state = lineStateOf(call);
    return state == eLineStateHold || state == eLineStateHoldConsult;
}

bool isBefore(TelephoneLine const* left, TelephoneLine const* right)
{
    auto const rank = [](TelephoneLine const& line) {
        return std::tuple(line.silenced(), !line.configuration().primary, line.configuration().overviewPosition);
    };
    return rank(*left) < rank(*right);
}

}  // namespace

Keyset::Keyset(Lines& lines, Settings& settings)
    : lines_(lines)
    , settings_(settings)
{
    Keyset* nobody = nullptr;
    if (!theKeyset.compare_exchange_strong(nobody, this)) {
        throw std::runtime_error("there is a keyset already");
    }
    lines_.addListener(*this);
}

Keyset::~Keyset()
{
    lines_.removeListener(*this);
    theKeyset = nullptr;
}

bool Keyset::isKeysetActive()
{
    return lines_.isKeyset();
}

void Keyset::setCommsSrv(SvcRTEContext* /*context*/, Executable* service)
{
    if (service == nullptr) {
        log(kLogWarning, kComponent, "the keyset has no communications service");
    }
}

void Keyset::init()
{
    log(kLogInfo, kComponent, "the keyset is {}", isKeysetActive() ? "active" : "not active: there is one line");
}

void Keyset::timerExpired(int /*timerId*/) {}

sfiResult Keyset::answerCall(std::string const& lineURI)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no call is answered");
    return line == nullptr ? sfiFailure : lines_.actions().answer(*line);
}

void Keyset::makeCall(std::string const& lineURI)
{
    std::lock_guard const lock(lines_.calls());
    if (auto* const line = find(lineURI, "no line is seized")) {
        static_cast<void>(lines_.seize(*line, eLineStateSelected));
    }
}

sfiResult Keyset::retrieveCall(std::string const& lineURI, int callID)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no call is retrieved");
    if (line == nullptr) {
        return sfiFailure;
    }
    auto const calls = line->calls();
    auto call = std::find_if(calls.begin(), calls.end(), [callID](auto const& each) { return each.callID == callID; });
    call = call == calls.end() ? std::find_if(calls.begin(), calls.end(), isHeld) : call;
    if (call == calls.end()) {
        log(kLogFailure, kComponent, "line {} retrieves nothing: it holds no call", lineURI);
        return sfiFailure;
    }
    return lines_.calls().retrieve(call->callID);
}

void Keyset::callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int /*reason*/)
{
    if (state != sfiCallStateAccepted) {
        log(kLogTrace, kComponent, "call {} on line {}: state {} follows from the call itself", callID, lineURI,
            static_cast<int>(state));
        return;
    }
    std::lock_guard const lock(lines_.calls());
    auto const call = lines_.calls().call(callID);
    if (!call || !call->alerting()) {
        log(kLogFailure, kComponent, "call {} on line {} is not accepted: no such call alerts", callID, lineURI);
        return;
    }
    acceptedCalls_.insert(callID);
    log(kLogTrace, kComponent, "call {} alerts on the keyset alone", callID);
}

void Keyset::callIgnored(std::string const& lineURI)
{
    std::lock_guard const lock(lines_.calls());
    if (auto* const line = find(lineURI, "no call is ignored")) {
        ignore(*line);
    }
}

void Keyset::ignore(TelephoneLine& line)
{
    if (!lines_.silence(line)) {
        log(kLogFailure, kComponent, "no call is ignored: nothing rings on line {}", line.id());
    }
}

void Keyset::callIsolation(std::string const& lineURI, bool on)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no line is isolated");
    if (line == nullptr || (!on && isolated_ != &line->base())) {
        return;
    }
    isolated_ = on ? &line->base() : nullptr;
    log(kLogInfo, kComponent, "line {} is {}", line->base().id(),
        on ? "isolated: the others are not heard" : "no longer isolated");
    lines_.refresh();
}

bool Keyset::changeMultiUser(std::string const& lineURI)
{
    auto* const line = find(lineURI, "the user stays");
    if (line == nullptr || !isKeysetActive()) {
        return false;
    }
    auto const outcome = settings_.set(SettingNames::kCurrentMultiUser, line->base().id());
    if (!outcome) {
        log(kLogFailure, kComponent, "the user stays: {}", outcome.error().reason);
    }
    return outcome.has_value();
}

std::string Keyset::getCurrentMultiUser()
{
    auto chosen = settings_.text(SettingNames::kCurrentMultiUser);
    if (!chosen.empty() && lines_.find(chosen) != nullptr) {
        return chosen;
    }
    auto const* const primary = lines_.primary();
    return primary == nullptr ? std::string() : primary->id();
}

bool Keyset::getImmediateRing()
{
    return settings_.flag(SettingNames::kImmediateRing);
}

void Keyset::setImmediateRing(bool on, std::string& outcome)
{
    auto const set = settings_.set(SettingNames::kImmediateRing, on ? "true" : "false");
    if (!set) {
        outcome = set.error().reason;
        log(kLogFailure, kComponent, "immediate ring is not set: {}", set.error().reason);
        return;
    }
    outcome = on ? "immediate ring is on" : "immediate ring is off";
    std::lock_guard const lock(lines_.calls());
    lines_.refresh();
}

int Keyset::getIncomingCallPriority(std::string const& lineURI)
{
    auto* const line = lines_.find(lineURI);
    if (line == nullptr) {
        return 0;
    }
    std::lock_guard const lock(lines_.calls());
    auto const ringing = ringingLines();
    auto const place = std::find(ringing.begin(), ringing.end(), &line->base());
    return place == ringing.end() ? 0 : static_cast<int>(place - ringing.begin()) + 1;
}

void Keyset::handleButtonPressedEvent(PhysDefs::keyFunctionType function)
{
    std::lock_guard const lock(lines_.calls());
    if (function == PhysDefs::keyFunctionPreview) {
        return showNextPreview();
    }
    if (function != PhysDefs::keyFunctionIgnoreCall) {
        log(kLogFailure, kComponent, "the keyset has no key function {}", static_cast<int>(function));
        return;
    }
    auto const ringing = ringingLines();
    auto* const line = preview_ != nullptr || ringing.empty() ? preview_ : ringing.front();
    if (line == nullptr) {
        log(kLogFailure, kComponent, "no call is ignored: none rings");
        return;
    }
    ignore(*line);
}

// After the last line that rings the preview is over.
void Keyset::showNextPreview()
{
    auto const ringing = ringingLines();
    auto const shown = std::find(ringing.begin(), ringing.end(), preview_);
    if (preview_ == nullptr || shown == ringing.end()) {
        preview_ = ringing.empty() ? nullptr : ringing.front();
    } else {
        preview_ = shown + 1 == ringing.end() ? nullptr : *(shown + 1);
    }
    if (preview_ == nullptr) {
        log(kLogInfo, kComponent, "{}", ringing.empty() ? "no preview: no call rings" : "the preview is over");
        return;
    }
    auto const call = preview_->callInState(eLineStateRinging);
    log(kLogInfo, kComponent, "preview of line {}: {} rings", preview_->id(), call ? call->remoteURI : "");
}

void Keyset::initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no call is made");
    if (line == nullptr || !reserveNextSCA(lineURI)) {
        return;
    }
    auto* const place = lines_.freePlace(*line);
    if (place == nullptr || lines_.actions().dial(*place, destination) != sfiSuccess) {
        lines_.release(line->base());
    }
}

bool Keyset::isSpoofedDummyLine(std::string const& lineURI)
{
    return isKeysetActive() && lineURI == kAnyLine && lines_.find(lineURI) == nullptr;
}

bool Keyset::dummyLine_reserve()
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = lines_.lineForNewCall();
    if (line == nullptr) {
        log(kLogFailure, kComponent, "no line is seized: all are taken");
        return false;
    }
    return lines_.seize(*line, eLineStateSelected);
}

bool Keyset::reserveNextSCA(std::string const& lineURI)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no appearance is reserved");
    return line != nullptr && lines_.seize(line->base(), eLineStateReserved);
}

bool Keyset::unreserveLine(std::string const& lineURI)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no line is given back");
    if (line == nullptr) {
        return false;
    }
    lines_.release(line->base());
    return true;
}

void Keyset::setIsInServiceInitiatedState(std::string const& lineURI, bool initiated)
{
    std::lock_guard const lock(lines_.calls());
    auto* const line = find(lineURI, "no line is shown as off the hook");
    if (line == nullptr) {
        return;
    }
    if (initiated) {
        static_cast<void>(lines_.seize(*line, eLineStateSelected));
    } else {
        lines_.release(line->base());
    }
}

void Keyset::terminatePreview()
{
    std::lock_guard const lock(lines_.calls());
    preview_ = nullptr;
}

void Keyset::lineChanged(TelephoneLine& line, ELineState /*before*/)
{
    if (preview_ == &line && line.state() != eLineStateRinging) {
        preview_ = nullptr;
    }
    std::erase_if(acceptedCalls_, [this](int callID) {
        auto const call = lines_.calls().call(callID);
        return !call || !call->alerting();
    });
}

bool Keyset::mayBeHeard(TelephoneLine const& line) const
{
    return !line.silenced() && (isolated_ == nullptr || isolated_ == &line);
}

TelephoneLine* Keyset::find(std::string const& lineURI, char const* what) const
{
    auto* const line = lines_.find(lineURI);
    if (line == nullptr) {
        log(kLogFailure, kComponent, "{}: there is no line \"{}\"", what, lineURI);
    }
    return line;
}

std::vector<TelephoneLine*> Keyset::ringingLines() const
{
    std::vector<TelephoneLine*> ringing;
    std::copy_if(lines_.lines().begin(), lines_.lines().end(), std::back_inserter(ringing),
                 [](TelephoneLine const* line) { return line->state() == eLineStateRinging; });
    std::sort(ringing.begin(), ringing.end(), isBefore);
    return ringing;
}

}  // namespace telephone

TeamServiceKeyset* TeamServiceKeyset::Instance()
{
    return telephone::theKeyset.load();
}

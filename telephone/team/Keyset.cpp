#include "telephone/team/Keyset.h"

#include <algorithm>
#include <mutex>
#include <tuple>
#include <vector>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/PhoneCalls.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/Settings.h"
#include "telephone/team/LogComponent.h"
#include "telephone/traced/TracedPlatform.h"

namespace telephone {

namespace {

bool isBefore(TelephoneLine const* left, TelephoneLine const* right)
{
    auto const rank = [](TelephoneLine const& line) {
        return std::tuple(line.silenced(), !line.configuration().primary, line.configuration().overviewPosition);
    };
    return rank(*left) < rank(*right);
}

sfiResult resultOf(bool done)
{
    return done ? sfiSuccess : sfiFailure;
}

}  // namespace

Keyset::Keyset(Lines& lines, LineActions& actions, PhoneCalls& calls, Settings& settings)
    : lines_(lines)
    , actions_(actions)
    , calls_(calls)
    , settings_(settings)
{
    lines_.addListener(*this);
}

Keyset::~Keyset()
{
    lines_.removeListener(*this);
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

sfiResult Keyset::answerCall(std::string const& lineURI)
{
    return resultOf(act(lineURI, [this](TelephoneLine& line) { return actions_.answer(line); }));
}

void Keyset::makeCall(std::string const& lineURI)
{
    act(lineURI, [this](TelephoneLine& line) { return lines_.seize(line, eLineStateSelected); });
}

sfiResult Keyset::retrieveCall(std::string const& lineURI, int callID)
{
    return resultOf(act(lineURI, [&](TelephoneLine& line) { return retrieve(line, callID); }));
}

Outcome<> Keyset::retrieve(TelephoneLine& line, int callID)
{
    auto const& calls = line.calls();
    bool const isThere =
        std::any_of(calls.begin(), calls.end(), [callID](auto const& each) { return each.callID == callID; });
    return isThere ? calls_.retrieve(callID) : actions_.retrieve(line);
}

void Keyset::callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int /*reason*/)
{
    if (state != sfiCallStateAccepted) {
        log(kLogTrace, kComponent, "call {} on line {}: state {} follows from the call itself", callID, lineURI,
            static_cast<int>(state));
        return;
    }
    std::lock_guard const lock(calls_);
    auto const call = calls_.call(callID);
    auto* const line = call && call->alerting() ? lines_.byNumber(call->line.recordLine) : nullptr;
    if (line == nullptr) {
        reportRefusal(kComponent,
                      {RefusalKind::kNotFound, fmt::format("no call {} is alerting on line {}", callID, lineURI)});
        return;
    }
    line->alertOnKeysetOnly(callID);
    log(kLogTrace, kComponent, "call {} alerts on the keyset alone", callID);
}

void Keyset::callIgnored(std::string const& lineURI)
{
    act(lineURI, [](TelephoneLine& line) { return line.silence(); });
}

void Keyset::callIsolation(std::string const& lineURI, bool on)
{
    std::lock_guard const lock(calls_);
    auto const line = find(lineURI);
    if (reportIfRefused(kComponent, line) || (!on && isolated_ != &(*line)->base())) {
        return;
    }
    auto& base = (*line)->base();
    isolated_ = on ? &base : nullptr;
    log(kLogInfo, kComponent, "line {} is {}", base.id(),
        on ? "isolated: other lines are not heard" : "no longer isolated");
    lines_.refresh();
}

bool Keyset::changeMultiUser(std::string const& lineURI)
{
    if (!isKeysetActive()) {
        reportRefusal(kComponent, {RefusalKind::kNotSupported, "a single-line telephone has only one user"});
        return false;
    }
    return !reportIfRefused(kComponent, find(lineURI).and_then([this](TelephoneLine* line) {
        return settings_.set(SettingNames::kCurrentMultiUser, line->base().id());
    }));
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
    if (reportIfRefused(kComponent, set)) {
        outcome = set.error().reason;
        return;
    }
    outcome = on ? "immediate ring is on" : "immediate ring is off";
    std::lock_guard const lock(calls_);
    lines_.refresh();
}

int Keyset::getIncomingCallPriority(std::string const& lineURI)
{
    auto* const line = lines_.find(lineURI);
    if (line == nullptr) {
        return 0;
    }
    std::lock_guard const lock(calls_);
    auto const ringing = ringingLines();
    auto const place = std::find(ringing.begin(), ringing.end(), &line->base());
    return place == ringing.end() ? 0 : static_cast<int>(place - ringing.begin()) + 1;
}

void Keyset::handleButtonPressedEvent(PhysDefs::keyFunctionType function)
{
    std::lock_guard const lock(calls_);
    if (function == PhysDefs::keyFunctionPreview) {
        showNextPreview();
    } else if (function == PhysDefs::keyFunctionIgnoreCall) {
        reportIfRefused(kComponent, ignoreNext());
    } else {
        reportRefusal(kComponent, {RefusalKind::kNotSupported,
                                   fmt::format("the keyset has no key function {}", static_cast<int>(function))});
    }
}

Outcome<> Keyset::ignoreNext()
{
    auto const ringing = ringingLines();
    auto* const line = preview_ != nullptr || ringing.empty() ? preview_ : ringing.front();
    return line == nullptr ? refuse(RefusalKind::kWrongState, "no call is ringing") : line->silence();
}

// The preview ends after the last ringing line.
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
        log(kLogInfo, kComponent, "{}", ringing.empty() ? "no preview: no call is ringing" : "the preview is over");
        return;
    }
    auto const call = preview_->callInState(eLineStateRinging);
    log(kLogInfo, kComponent, "preview of line {}: call from {}", preview_->id(), call ? call->remoteURI : "");
}

void Keyset::initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination)
{
    act(lineURI, [&](TelephoneLine& line) { return makeBridgedCall(line, destination); });
}

Outcome<> Keyset::makeBridgedCall(TelephoneLine& line, std::string const& destination)
{
    auto made = lines_.seize(line.base(), eLineStateReserved);
    if (!made) {
        return made;
    }
    auto* const place = line.freePlace();
    made = place == nullptr ? refuse(RefusalKind::kLimit, fmt::format("line {} has no free appearance", line.id()))
                            : actions_.dial(*place, destination);
    if (!made) {
        lines_.release(line.base());
    }
    return made;
}

bool Keyset::isSpoofedDummyLine(std::string const& lineURI)
{
    return isKeysetActive() && lineURI == kAnyLine && lines_.find(lineURI) == nullptr;
}

bool Keyset::dummyLine_reserve()
{
    std::lock_guard const lock(calls_);
    return !reportIfRefused(kComponent, lines_.lineForNewCall().and_then([this](TelephoneLine* line) {
        return lines_.seize(*line, eLineStateSelected);
    }));
}

bool Keyset::reserveNextSCA(std::string const& lineURI)
{
    return act(lineURI, [this](TelephoneLine& line) { return lines_.seize(line.base(), eLineStateReserved); });
}

bool Keyset::unreserveLine(std::string const& lineURI)
{
    return act(lineURI, [this](TelephoneLine& line) {
        lines_.release(line.base());
        return Outcome<>();
    });
}

void Keyset::setIsInServiceInitiatedState(std::string const& lineURI, bool initiated)
{
    if (initiated) {
        makeCall(lineURI);
    } else {
        unreserveLine(lineURI);
    }
}

void Keyset::terminatePreview()
{
    std::lock_guard const lock(calls_);
    preview_ = nullptr;
}

void Keyset::lineChanged(TelephoneLine& line, ELineState /*before*/)
{
    if (preview_ == &line && line.state() != eLineStateRinging) {
        preview_ = nullptr;
    }
}

bool Keyset::mayBeHeard(TelephoneLine const& line) const
{
    return line.isAudible() && (isolated_ == nullptr || isolated_ == &line);
}

bool Keyset::act(std::string const& lineURI, std::function<Outcome<>(TelephoneLine&)> const& action)
{
    std::lock_guard const lock(calls_);
    return !reportIfRefused(kComponent,
                            find(lineURI).and_then([&action](TelephoneLine* line) { return action(*line); }));
}

Outcome<TelephoneLine*> Keyset::find(std::string const& lineURI) const
{
    auto* const line = lines_.find(lineURI);
    if (line == nullptr) {
        return refuse(RefusalKind::kNotFound, fmt::format("there is no line \"{}\"", lineURI));
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
    return telephone::traced<TeamServiceKeyset>(telephone::OnlyObject<telephone::Keyset>::get());
}

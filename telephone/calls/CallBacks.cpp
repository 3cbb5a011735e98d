#include "telephone/calls/CallBacks.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

// Only the latest calls can be called back after their end.
constexpr std::size_t kRemembered = 32;

bool sameParty(std::string const& left, std::string const& right)
{
    auto const one = sip::Uri::parse(left);
    auto const other = sip::Uri::parse(right);
    return one && other && one->formatAddressOfRecord() == other->formatAddressOfRecord();
}

std::string noCallBack(int callID, std::string const& target)
{
    return !target.empty() ? fmt::format("no such call-back to \"{}\" is set", target)
           : callID > 0    ? fmt::format("no such call-back is set for call {}", callID)
                           : "no such call-back is set";
}

bool isOfType(sfiCallCompletionType type, sfiCancelCallBackType wanted)
{
    switch (wanted) {
    case sfiCancelCallBackAll:
        return true;
    case sfiCancelCallBackOnNoReply:
        return type == sfiCallCompletionOnNoReply;
    case sfiCancelCallBackOnBusy:
        return type == sfiCallCompletionOnBusy;
    }
    return true;
}

}  // namespace

CallBacks::CallBacks(sip::UserAgent& agent, EngineConfiguration const& configuration, LineDirectory const& lines,
                     Availability const& availability, CallList const& calls, EventPoster const& post)
    : agent_(agent)
    , configuration_(configuration)
    , lines_(lines)
    , availability_(availability)
    , calls_(calls)
    , post_(post)
{}

bool CallBacks::isFull() const
{
    return static_cast<int>(entries_.size()) >= configuration_.callBacks;
}

bool CallBacks::isWaitingFor(std::string const& target) const
{
    return std::ranges::any_of(entries_, [&target](Entry const& entry) { return sameParty(entry.target, target); });
}

bool CallBacks::isPossible(Call const& call) const
{
    bool const inState = call.state() == sfiCallStateRemoteRinging || call.state() == sfiCallStateBusy;
    return !call.snapshot().incoming && inState && !isFull() && !isWaitingFor(call.target());
}

bool CallBacks::allows(Attempt const& attempt, sfiCallCompletionType type)
{
    return type == sfiCallCompletionOnBusy ? attempt.busy : attempt.rang && !attempt.busy;
}

std::vector<CallSnapshot> CallBacks::endedAndPossible() const
{
    std::vector<CallSnapshot> calls;
    if (isFull() || !availability_.whenActive()) {
        return calls;
    }
    for (Attempt const& each : attempts_) {
        bool const allowed = allows(each, sfiCallCompletionOnBusy) || allows(each, sfiCallCompletionOnNoReply);
        // A present call of the same id hides it.
        if (allowed && !isWaitingFor(each.target) && calls_.find(each.call.callID) == nullptr) {
            calls.push_back(each.call);
        }
    }
    return calls;
}

Outcome<> CallBacks::set(int callID, sfiCallCompletionType type)
{
    std::lock_guard const guard(agent_.loop());
    auto const wanted = attempt(callID);
    if (!wanted) {
        return tl::unexpected(wanted.error());
    }
    if (!allows(*wanted, type)) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("call {} allows no call-back: its party {}", callID,
                                  type == sfiCallCompletionOnBusy ? "is not busy" : "does not ring"));
    }
    auto line = lines_.accountOfLine(wanted->call.line.lineNumber);
    if (auto const active = availability_.whenActive(); !active || !line) {
        return refuse(RefusalKind::kUnavailable, active ? line.error().reason : active.error().reason);
    }
    if (isWaitingFor(wanted->target)) {
        return refuse(RefusalKind::kAlreadyExists, fmt::format("a call-back to {} is set already", wanted->target));
    }
    if (isFull()) {
        return refuse(RefusalKind::kLimit, fmt::format("a call-back to {} cannot be set: there are {} already",
                                                       wanted->target, configuration_.callBacks));
    }
    return begin(callID, std::move(*line), wanted->target, type);
}

Outcome<CallBacks::Attempt> CallBacks::attempt(int callID) const
{
    if (Call const* const call = calls_.find(callID)) {
        return Attempt{call->snapshot(), call->target(), false, call->state() == sfiCallStateRemoteRinging};
    }
    auto const ended =
        std::ranges::find_if(attempts_, [callID](Attempt const& each) { return each.call.callID == callID; });
    if (ended == attempts_.end()) {
        return noSuchCall(callID);
    }
    return *ended;
}

Outcome<> CallBacks::begin(int callID, LineAccount line, std::string const& target, sfiCallCompletionType type)
{
    Entry& entry = entries_.emplace_back(
        Entry{callID, std::move(line), target, type, sip::Timer(agent_.loop()), sip::Timer(agent_.loop())});
    auto const changed = [this, &entry](auto const& dialogs) { followDialogs(entry, dialogs); };
    auto const ended = [this, &entry](int status, std::string const&) {
        fail(entry, status < 300    ? sfiCallCompletionFailureEnded
                    : status == 408 ? sfiCallCompletionFailureTimeout
                                    : sfiCallCompletionFailureRefused);
    };
    auto const expires = static_cast<std::uint32_t>(configuration_.callBackTime.count());
    auto subscription = sip::DialogSubscription::start(agent_, entry.line.account, target, changed, ended, expires);
    if (!subscription) {
        entries_.pop_back();
        return tl::unexpected(subscription.error());
    }
    entry.subscription = std::move(*subscription);
    entry.longest.start(configuration_.callBackTime, [this, &entry] {
        timerRanOut(PhoneTimer::kCallBackExpiry);
        fail(entry, sfiCallCompletionFailureTimeout);
    });
    return {};
}

Outcome<> CallBacks::cancel(int callID, std::string const& target, sfiCancelCallBackType type, bool displayOutcome)
{
    std::lock_guard const guard(agent_.loop());
    std::string uri;
    if (!target.empty()) {
        uri = lines_.accountNamed({})
                  .and_then([&target](LineAccount const& line) { return callTarget(target, line.account); })
                  .value_or(target);
    }
    auto const cancelled = entries_.remove_if([&](Entry const& entry) {
        // A target names the call-back, whichever call it was set for.
        bool const isMeant = uri.empty() ? callID <= 0 || entry.callID == callID : sameParty(entry.target, uri);
        if (!isMeant || !isOfType(entry.type, type)) {
            return false;
        }
        tell(entry, sfiCallCompletionCancelled, displayOutcome);
        return true;
    });
    if (cancelled == 0) {
        return refuse(RefusalKind::kNotFound, noCallBack(callID, target));
    }
    return {};
}

void CallBacks::follow(Call const& call, CallSnapshot const& before)
{
    CallSnapshot const& now = call.snapshot();
    if (!now.ended() || now.incoming || call.target().empty()) {
        return;
    }
    std::erase_if(attempts_, [&now](Attempt const& each) { return each.call.callID == now.callID; });
    attempts_.push_back({now, call.target(), now.state == sfiCallStateBusy, before.state == sfiCallStateRemoteRinging});
    if (attempts_.size() > kRemembered) {
        attempts_.pop_front();
    }
}

void CallBacks::called(std::string const& target)
{
    auto const entry =
        std::ranges::find_if(entries_, [&target](Entry const& each) { return sameParty(each.target, target); });
    if (entry != entries_.end()) {
        tell(*entry, sfiCallCompletionDone, true);
        entries_.erase(entry);
    }
}

void CallBacks::followDialogs(Entry& entry, std::vector<sip::DialogEntry> const& dialogs)
{
    if (!std::exchange(entry.activated, true)) {
        tell(entry, sfiCallCompletionActivated, true);
    }
    auto const hasDialogFrom = [&dialogs](sip::DialogState first) {
        return std::ranges::any_of(dialogs, [first](sip::DialogEntry const& dialog) {
            return dialog.state >= first && dialog.state <= sip::DialogState::kConfirmed;
        });
    };
    entry.seenActive = entry.seenActive || hasDialogFrom(sip::DialogState::kConfirmed);
    if (hasDialogFrom(sip::DialogState::kTrying)) {
        entry.settling.cancel();
        entry.ready = false;
        return;
    }
    bool const wasThere = entry.type == sfiCallCompletionOnBusy || entry.seenActive;
    if (wasThere && !entry.ready && !entry.settling.isRunning()) {
        entry.settling.start(configuration_.settlingTime, [this, &entry] {
            timerRanOut(PhoneTimer::kCallBackSettling);
            entry.ready = true;
            tell(entry, sfiCallCompletionReady, true);
        });
    }
}

void CallBacks::fail(Entry const& entry, sfiCallCompletionFailureType failure)
{
    log(kLogWarning, kComponent, "the call-back to {} failed", entry.target);
    post_([line = entry.line.lineURI, uri = entry.target, failure](CommunicationsServiceEventIfc& event) {
        event.callCompletionFailedEvent(line, uri, failure);
    });
    remove(entry);
}

void CallBacks::remove(Entry const& entry)
{
    entries_.remove_if([&entry](Entry const& each) { return &each == &entry; });
}

void CallBacks::tell(Entry const& entry, sfiCallCompletionState state, bool displayOutcome)
{
    post_([line = entry.line.lineURI, uri = entry.target, type = entry.type, state,
           displayOutcome](CommunicationsServiceEventIfc& event) {
        event.callCompletionEvent(line, uri, type, state, displayOutcome);
    });
}

}  // namespace telephone

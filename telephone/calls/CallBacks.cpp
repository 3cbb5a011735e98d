#include "telephone/calls/CallBacks.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

// So many calls can be called back after their end: the latest ones.
constexpr std::size_t kRemembered = 32;

bool sameParty(std::string const& left, std::string const& right)
{
    auto const one = sip::Uri::parse(left);
    auto const other = sip::Uri::parse(right);
    return one && other && one->formatAddressOfRecord() == other->formatAddressOfRecord();
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
    , burial_(agent.loop())
{}

bool CallBacks::isFull() const
{
    return static_cast<int>(entries_.size()) >= configuration_.callBacks;
}

bool CallBacks::isWaitingFor(std::string const& target) const
{
    return std::any_of(entries_.begin(), entries_.end(),
                       [&target](auto const& entry) { return sameParty(entry->target, target); });
}

bool CallBacks::isPossible(Call const& call) const
{
    bool const inState = call.state() == sfiCallStateRemoteRinging || call.state() == sfiCallStateBusy;
    return !call.snapshot().incoming && inState && !isFull() && !isWaitingFor(call.target());
}

Outcome<> CallBacks::set(int callID, sfiCallCompletionType type)
{
    std::lock_guard const guard(agent_.loop());
    auto const wanted = attempt(callID);
    if (!wanted) {
        return tl::unexpected(wanted.error());
    }
    bool const onBusy = type == sfiCallCompletionOnBusy;
    if (onBusy ? !wanted->busy : !wanted->rang || wanted->busy) {
        return refuse(RefusalKind::kWrongState, fmt::format("call {} allows no call-back: its party {}", callID,
                                                            onBusy ? "is not busy" : "does not ring"));
    }
    auto line = lines_.accountOfLine(wanted->lineNumber);
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
    return begin(std::make_unique<Entry>(agent_.loop(), callID, std::move(*line), wanted->target, type));
}

Outcome<CallBacks::Attempt> CallBacks::attempt(int callID) const
{
    if (Call const* const call = calls_.find(callID)) {
        return Attempt{callID, call->line().lineNumber, call->target(), false,
                       call->state() == sfiCallStateRemoteRinging};
    }
    auto const ended = std::find_if(attempts_.begin(), attempts_.end(),
                                    [callID](Attempt const& each) { return each.callID == callID; });
    if (ended == attempts_.end()) {
        return noSuchCall(callID);
    }
    return *ended;
}

Outcome<> CallBacks::begin(std::unique_ptr<Entry> entry)
{
    sip::SubscriptionRequest request;
    request.target = entry->target;
    request.event = sip::kDialogEvent;
    request.accept = sip::kDialogInfoType;
    request.expires = static_cast<std::uint32_t>(configuration_.callBackTime.count());
    auto subscription = agent_.subscribe(entry->line.account, request, *this);
    if (!subscription) {
        return tl::unexpected(subscription.error());
    }
    entry->subscription = std::move(*subscription);
    entry->longest.start(configuration_.callBackTime,
                         [this, waiting = entry.get()] { fail(*waiting, sfiCallCompletionFailureTimeout); });
    entries_.push_back(std::move(entry));
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
    std::vector<Entry*> meant;
    for (auto const& entry : entries_) {
        // A target names the call-back, whichever call asked for it.
        bool const isMeant = uri.empty() ? callID <= 0 || entry->callID == callID : sameParty(entry->target, uri);
        if (isMeant && isOfType(entry->type, type)) {
            meant.push_back(entry.get());
        }
    }
    for (Entry* const entry : meant) {
        tell(*entry, sfiCallCompletionCancelled, displayOutcome);
        remove(*entry);
    }
    if (meant.empty()) {
        return refuse(RefusalKind::kNotFound, fmt::format("there is no call-back for call {} \"{}\"", callID, target));
    }
    return {};
}

void CallBacks::follow(Call const& call, CallSnapshot const& before)
{
    CallSnapshot const& now = call.snapshot();
    if (!now.ended() || now.incoming || call.target().empty()) {
        return;
    }
    std::erase_if(attempts_, [&now](Attempt const& each) { return each.callID == now.callID; });
    attempts_.push_back({now.callID, now.line.lineNumber, call.target(), now.state == sfiCallStateBusy,
                         before.state == sfiCallStateRemoteRinging});
    if (attempts_.size() > kRemembered) {
        attempts_.pop_front();
    }
}

void CallBacks::called(std::string const& target)
{
    for (auto const& entry : entries_) {
        if (!sameParty(entry->target, target)) {
            continue;
        }
        tell(*entry, sfiCallCompletionDone, true);
        remove(*entry);
        return;
    }
}

void CallBacks::clear()
{
    entries_.clear();
    over_.clear();
    burial_.cancel();
}

CallBacks::Entry* CallBacks::find(sip::Subscription const& subscription)
{
    auto const found = std::find_if(entries_.begin(), entries_.end(), [&subscription](auto const& entry) {
        return entry->subscription.get() == &subscription;
    });
    return found == entries_.end() ? nullptr : found->get();
}

void CallBacks::onNotify(sip::Subscription& subscription, sip::Notification const& notification)
{
    Entry* entry = find(subscription);
    if (entry == nullptr || notification.state == sip::SubscriptionState::kTerminated) {
        return;
    }
    if (!std::exchange(entry->activated, true)) {
        tell(*entry, sfiCallCompletionActivated, true);
    }
    if (auto const dialogs = sip::DialogInfo::parse(notification.content.body)) {
        followDialogs(*entry, *dialogs);
    }
}

void CallBacks::followDialogs(Entry& entry, sip::DialogInfo const& dialogs)
{
    auto const isIn = [&dialogs](sip::DialogState first, sip::DialogState last) {
        return std::any_of(dialogs.dialogs.begin(), dialogs.dialogs.end(),
                           [first, last](const auto& dialog) { return dialog.state >= first && dialog.state <= last; });
    };
    if (isIn(sip::DialogState::kConfirmed, sip::DialogState::kConfirmed)) {
        entry.seenActive = true;
    }
    if (isIn(sip::DialogState::kTrying, sip::DialogState::kConfirmed)) {
        entry.settling.cancel();
        entry.ready = false;
        return;
    }
    bool const wasThere = entry.type == sfiCallCompletionOnBusy || entry.seenActive;
    if (wasThere && !entry.ready && !entry.settling.isRunning()) {
        entry.settling.start(configuration_.settlingTime, [this, waiting = &entry] { becomeReady(*waiting); });
    }
}

void CallBacks::becomeReady(Entry& entry)
{
    entry.ready = true;
    tell(entry, sfiCallCompletionReady, true);
}

void CallBacks::onTerminated(sip::Subscription& subscription, int status, std::string const&)
{
    Entry* entry = find(subscription);
    if (entry == nullptr) {
        return;
    }
    if (status < 300) {
        fail(*entry, sfiCallCompletionFailureEnded);
    } else {
        fail(*entry, status == 408 ? sfiCallCompletionFailureTimeout : sfiCallCompletionFailureRefused);
    }
}

void CallBacks::fail(Entry& entry, sfiCallCompletionFailureType failure)
{
    log(kLogWarning, "calls", "the call-back to {} failed", entry.target);
    post_([line = entry.line.lineURI, uri = entry.target, failure](CommunicationsServiceEventIfc& event) {
        event.callCompletionFailedEvent(line, uri, failure);
    });
    remove(entry);
}

void CallBacks::remove(Entry& entry)
{
    entry.longest.cancel();
    entry.settling.cancel();
    auto const found =
        std::find_if(entries_.begin(), entries_.end(), [&entry](auto const& each) { return each.get() == &entry; });
    over_.splice(over_.end(), entries_, found);
    burial_.start(std::chrono::milliseconds(0), [this] { over_.clear(); });
}

void CallBacks::tell(Entry const& entry, sfiCallCompletionState state, bool displayOutcome)
{
    post_([line = entry.line.lineURI, uri = entry.target, type = entry.type, state,
           displayOutcome](CommunicationsServiceEventIfc& event) {
        event.callCompletionEvent(line, uri, type, state, displayOutcome);
    });
}

}  // namespace telephone

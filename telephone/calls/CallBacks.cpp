#include "telephone/calls/CallBacks.h"

#include <algorithm>
#include <utility>

#include "CommunicationsServiceEventIfc.h"

namespace telephone {

namespace {

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

CallBacks::CallBacks(CallHost& host, sip::UserAgent& agent, Limits limits)
    : host_(host)
    , agent_(agent)
    , limits_(limits)
    , burial_(host.loop())
{}

CallBacks::~CallBacks() = default;

bool CallBacks::isPossible(std::string const& target) const
{
    return static_cast<int>(entries_.size()) < limits_.most &&
           std::none_of(entries_.begin(), entries_.end(),
                        [&target](auto const& entry) { return sameParty(entry->wanted.target, target); });
}

sfiResult CallBacks::set(Wanted const& wanted)
{
    const std::string what = "call-back to " + wanted.target + ": ";
    auto const isSame = [&wanted](auto const& entry) { return sameParty(entry->wanted.target, wanted.target); };
    if (std::any_of(entries_.begin(), entries_.end(), isSame)) {
        host_.log(sip::LogLevel::kWarning, what + "there is one already");
        return sfiFailureCallBackAllreadyExists;
    }
    if (static_cast<int>(entries_.size()) >= limits_.most) {
        host_.log(sip::LogLevel::kWarning, what + "there are " + std::to_string(limits_.most) + " already");
        return sfiFailureCallBackToMany;
    }
    auto entry = std::make_unique<Entry>(host_.loop());
    entry->wanted = wanted;
    sip::SubscriptionRequest request;
    request.target = wanted.target;
    request.event = sip::kDialogEvent;
    request.accept = sip::kDialogInfoType;
    request.expires =
        static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::seconds>(limits_.longest).count());
    auto subscription = agent_.subscribe(wanted.line.account, request, *this);
    if (!subscription) {
        host_.log(sip::LogLevel::kWarning, what + subscription.error().reason);
        return sfiFailure;
    }
    entry->subscription = std::move(*subscription);
    entry->longest.start(limits_.longest,
                         [this, waiting = entry.get()] { fail(*waiting, sfiCallCompletionFailureTimeout); });
    entries_.push_back(std::move(entry));
    return sfiSuccess;
}

sfiResult CallBacks::cancel(int callID, std::string const& target, sfiCancelCallBackType type, bool displayOutcome)
{
    std::vector<Entry*> meant;
    for (auto const& entry : entries_) {
        bool const isCall = callID == 0 || entry->wanted.callID == callID;
        bool const isTarget = target.empty() || sameParty(entry->wanted.target, target);
        if (isCall && isTarget && isOfType(entry->wanted.type, type)) {
            meant.push_back(entry.get());
        }
    }
    for (Entry* entry : meant) {
        tell(*entry, sfiCallCompletionCancelled, displayOutcome);
        remove(*entry);
    }
    return meant.empty() ? sfiFailureCallBackNoCallInfo : sfiSuccess;
}

void CallBacks::called(std::string const& target)
{
    for (auto const& entry : entries_) {
        if (!sameParty(entry->wanted.target, target)) {
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
        follow(*entry, *dialogs);
    }
}

void CallBacks::follow(Entry& entry, sip::DialogInfo const& dialogs)
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
    bool const wasThere = entry.wanted.type == sfiCallCompletionOnBusy || entry.seenActive;
    if (wasThere && !entry.ready && !entry.settling.isRunning()) {
        entry.settling.start(limits_.settling, [this, waiting = &entry] { becomeReady(*waiting); });
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
    host_.log(sip::LogLevel::kWarning, "call-back to " + entry.wanted.target + " failed");
    host_.post([line = entry.wanted.line.lineURI, uri = entry.wanted.target, failure](
                   CommunicationsServiceEventIfc& event) { event.callCompletionFailedEvent(line, uri, failure); });
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
    host_.post([line = entry.wanted.line.lineURI, uri = entry.wanted.target, type = entry.wanted.type, state,
                displayOutcome](CommunicationsServiceEventIfc& event) {
        event.callCompletionEvent(line, uri, type, state, displayOutcome);
    });
}

}  // namespace telephone

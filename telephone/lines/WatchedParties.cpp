#include "telephone/lines/WatchedParties.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/CallEngine.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/LogComponent.h"
#include "telephone/sip/DialogSubscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/Uri.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

// A document that names more has them all on the last one.
constexpr int kMostAppearances = 255;

bool isRinging(sip::DialogEntry const& entry)
{
    return entry.recipient && entry.state != sip::DialogState::kConfirmed;
}

PartyStatus statusOf(sip::DialogEntry const& entry)
{
    if (entry.state == sip::DialogState::kTerminated) {
        return PartyStatus::kIdle;
    }
    if (isRinging(entry)) {
        return PartyStatus::kRinging;
    }
    return entry.local.rendering ? PartyStatus::kBusy : PartyStatus::kHolding;
}

bool canBeTakenOver(sip::DialogEntry const& entry)
{
    auto const& dialog = entry.dialog;
    return !entry.exclusive && !dialog.callId.empty() && !dialog.localTag.empty() && !dialog.remoteTag.empty() &&
           !(entry.remote.target.empty() && entry.remote.identity.empty());
}

PickupTarget targetOf(sip::DialogEntry const& entry)
{
    auto const& calling = entry.recipient ? entry.remote : entry.local;
    auto const& called = entry.recipient ? entry.local : entry.remote;
    PickupTarget target;
    target.targetURI = entry.remote.target.empty() ? entry.remote.identity : entry.remote.target;
    target.replaces = entry.dialog.replaces();
    target.replaces.earlyOnly = isRinging(entry);
    target.callingURI = calling.identity;
    target.callingName = calling.displayName;
    target.calledURI = called.identity;
    target.calledName = called.displayName;
    return target;
}

std::optional<PickupTarget> takeOverOf(sip::DialogEntry const& entry)
{
    return canBeTakenOver(entry) ? std::optional(targetOf(entry)) : std::nullopt;
}

// Join names the dialog as the party itself does.
std::optional<PickupTarget> joinOf(sip::DialogEntry const& entry)
{
    if (!canBeTakenOver(entry) || entry.state != sip::DialogState::kConfirmed || entry.local.target.empty()) {
        return std::nullopt;
    }
    PickupTarget target = targetOf(entry);
    target.targetURI = entry.local.target;
    target.replaces = {entry.dialog.callId, entry.dialog.localTag, entry.dialog.remoteTag, false};
    target.joins = true;
    return target;
}

// The party shows the call that ranks highest.
void show(sip::DialogEntry const& entry, WatchedParty& party)
{
    auto const status = statusOf(entry);
    if (status > party.status) {
        party.status = status;
        party.remoteURI = entry.remote.identity;
        party.dialog = takeOverOf(entry);
        party.join = joinOf(entry);
        party.isPrivate = entry.exclusive;
    }
}

}  // namespace

WatchedParty partyOf(std::vector<sip::DialogEntry> const& dialogs)
{
    WatchedParty idle;
    idle.status = PartyStatus::kIdle;
    WatchedParty party = idle;
    for (auto const& entry : dialogs) {
        show(entry, party);
        auto const count = static_cast<std::size_t>(std::min(entry.appearance, kMostAppearances));
        if (count > party.appearances.size()) {
            party.appearances.resize(count, idle);
        }
        if (count > 0) {
            show(entry, party.appearances[count - 1]);
        }
    }
    return party;
}

// One watched party with its subscription.
class WatchedParties::Party
{
public:
    Party(CallEngine& engine, int lineNumber, std::string number)
        : engine_(engine)
        , lineNumber_(lineNumber)
        , number_(std::move(number))
        , retry_(engine.userAgent().loop())
    {}

    std::string const& number() const { return number_; }

    void add(Listener listener)
    {
        if (now_.status != PartyStatus::kUnknown) {
            listener(now_);
        }
        listeners_.push_back(std::move(listener));
    }

    void subscribe()
    {
        auto const account = engine_.accountOfLine(lineNumber_);
        if (subscription_ || !account) {
            return;
        }
        auto subscribed = sip::DialogSubscription::start(
            engine_.userAgent(), *account, sip::targetUri(number_, account->domain),
            [this](std::vector<sip::DialogEntry> const& dialogs) { tell(partyOf(dialogs)); },
            [this](int status, std::string const& reason) { ended(status, reason); });
        if (!subscribed) {
            reportRefusal(kComponent, subscribed.error());
            retryLater();
            return;
        }
        subscription_ = std::move(*subscribed);
    }

    void stop()
    {
        retry_.cancel();
        subscription_.reset();
        setUnknown();
    }

private:
    void ended(int status, std::string const& reason)
    {
        reportRefusal(kComponent,
                      {RefusalKind::kUnavailable, fmt::format("{} is no longer watched: {} {}; next attempt in {} s",
                                                              number_, status, reason, kRetry.count())});
        subscription_.reset();
        setUnknown();
        retryLater();
    }

    void retryLater()
    {
        retry_.start(kRetry, [this] {
            timerRanOut(PhoneTimer::kWatchRetry);
            subscribe();
        });
    }

    void setUnknown()
    {
        if (now_.status != PartyStatus::kUnknown) {
            tell({});
        }
    }

    void tell(WatchedParty now)
    {
        now_ = std::move(now);
        for (auto const& listener : listeners_) {
            listener(now_);
        }
    }

    CallEngine& engine_;
    int lineNumber_;
    std::string number_;
    sip::Timer retry_;
    std::unique_ptr<sip::DialogSubscription> subscription_;
    WatchedParty now_;
    std::vector<Listener> listeners_;
};

WatchedParties::WatchedParties(CallEngine& engine, int lineNumber)
    : engine_(engine)
    , lineNumber_(lineNumber)
{}

WatchedParties::~WatchedParties()
{
    stop();
}

void WatchedParties::watch(std::string const& number, Listener changed)
{
    std::lock_guard const lock(engine_);
    auto party = std::find_if(parties_.begin(), parties_.end(),
                              [&number](auto const& each) { return each->number() == number; });
    if (party == parties_.end()) {
        party = parties_.insert(parties_.end(), std::make_unique<Party>(engine_, lineNumber_, number));
    }
    (*party)->add(std::move(changed));
    if (started_) {
        (*party)->subscribe();
    }
}

void WatchedParties::start()
{
    std::lock_guard const lock(engine_);
    started_ = true;
    for (auto const& party : parties_) {
        party->subscribe();
    }
}

void WatchedParties::stop()
{
    std::lock_guard const lock(engine_);
    started_ = false;
    for (auto const& party : parties_) {
        party->stop();
    }
}

void WatchedParties::registrationChanged(int lineNumber, bool registered)
{
    if (registered && lineNumber == lineNumber_) {
        start();
    }
}

}  // namespace telephone

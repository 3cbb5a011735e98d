#include "telephone/team/DialogWatch.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "telephone/calls/CallEngine.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "busy lamps";

bool isAlive(sip::DialogEntry const& entry)
{
    return entry.state != sip::DialogState::kTerminated;
}

bool rings(sip::DialogEntry const& entry)
{
    return entry.recipient && entry.state != sip::DialogState::kConfirmed;
}

PickupTarget targetOf(sip::DialogEntry const& entry)
{
    auto const& calling = entry.recipient ? entry.remote : entry.local;
    auto const& called = entry.recipient ? entry.local : entry.remote;
    PickupTarget target;
    target.targetURI = entry.remote.target.empty() ? entry.remote.identity : entry.remote.target;
    target.replaces = entry.dialog.replaces();
    target.replaces.earlyOnly = rings(entry);
    target.callingURI = calling.identity;
    target.callingName = calling.displayName;
    target.calledURI = called.identity;
    target.calledName = called.displayName;
    return target;
}

PartyStatus statusOf(sip::DialogEntry const& entry)
{
    if (rings(entry)) {
        return PartyStatus::kRinging;
    }
    return entry.local.rendering ? PartyStatus::kBusy : PartyStatus::kHolding;
}

bool canBeTakenOver(sip::DialogEntry const& entry)
{
    auto const& dialog = entry.dialog;
    return !dialog.callId.empty() && !dialog.localTag.empty() && !dialog.remoteTag.empty() &&
           !(entry.remote.target.empty() && entry.remote.identity.empty());
}

// A call that rings comes before one that is spoken in, and that before one on hold: it is what can be picked up.
WatchedParty partyOf(std::map<std::string, sip::DialogEntry> const& dialogs)
{
    WatchedParty party;
    party.status = PartyStatus::kIdle;
    for (auto const& [id, entry] : dialogs) {
        bool const holds = statusOf(entry) == PartyStatus::kHolding;
        if (party.status == PartyStatus::kRinging || !isAlive(entry) || (party.status == PartyStatus::kBusy && holds)) {
            continue;
        }
        party.status = statusOf(entry);
        party.remoteURI = entry.remote.identity;
        party.dialog = canBeTakenOver(entry) ? std::optional(targetOf(entry)) : std::nullopt;
    }
    return party;
}

}  // namespace

DialogNotices::Outcome DialogNotices::take(std::string const& document)
{
    auto const info = sip::DialogInfo::parse(document);
    if (!info) {
        return Outcome::kNoDocument;
    }
    if (version_ && info->version <= *version_) {
        return Outcome::kOld;
    }
    version_ = info->version;
    if (info->full) {
        dialogs_.clear();
    }
    for (auto const& entry : info->dialogs) {
        dialogs_[entry.id] = entry;
    }
    std::erase_if(dialogs_, [](auto const& each) { return !isAlive(each.second); });
    party_ = partyOf(dialogs_);
    return Outcome::kTaken;
}

void DialogNotices::forget()
{
    version_.reset();
    dialogs_.clear();
    party_ = {};
}

// One watched party with its subscription.
class DialogWatch::Party final : public sip::SubscriptionObserver
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
        if (notices_.party().status != PartyStatus::kUnknown) {
            listener(notices_.party());
        }
        listeners_.push_back(std::move(listener));
    }

    void subscribe()
    {
        auto const account = engine_.accountOfLine(lineNumber_);
        if (subscription_ || !account) {
            return;
        }
        sip::SubscriptionRequest request;
        request.target = sip::targetUri(number_, account->domain);
        request.event = sip::kDialogEvent;
        request.accept = sip::kDialogInfoType;
        notices_.forget();
        auto subscription = engine_.userAgent().subscribe(*account, request, *this);
        if (subscription) {
            subscription_ = std::move(*subscription);
        } else {
            log(kLogFailure, kComponent, "{} cannot be watched: {}", number_, subscription.error().reason);
            retryLater();
        }
    }

    void stop()
    {
        retry_.cancel();
        subscription_.reset();
        setUnknown();
    }

    void onNotify(sip::Subscription& /*subscription*/, sip::Notification const& notification) override
    {
        if (notification.content.body.empty()) {
            return;
        }
        switch (notices_.take(notification.content.body)) {
        case DialogNotices::Outcome::kTaken:
            return tell();
        case DialogNotices::Outcome::kOld:
            log(kLogInfo, kComponent, "a notice of {} is older than what is known", number_);
            return;
        case DialogNotices::Outcome::kNoDocument:
            log(kLogFailure, kComponent, "a notice of {} is no dialog-info document", number_);
            return;
        }
    }

    void onTerminated(sip::Subscription& /*subscription*/, int status, std::string const& reason) override
    {
        log(kLogFailure, kComponent, "{} is not watched any more: {} {}; tried again in {} s", number_, status, reason,
            kRetry.count());
        subscription_.reset();
        setUnknown();
        retryLater();
    }

private:
    void retryLater()
    {
        retry_.start(kRetry, [this] { subscribe(); });
    }

    void setUnknown()
    {
        if (notices_.party().status != PartyStatus::kUnknown) {
            notices_.forget();
            tell();
        }
    }

    void tell()
    {
        for (auto const& listener : listeners_) {
            listener(notices_.party());
        }
    }

    CallEngine& engine_;
    int lineNumber_;
    std::string number_;
    sip::Timer retry_;
    std::unique_ptr<sip::Subscription> subscription_;
    DialogNotices notices_;
    std::vector<Listener> listeners_;
};

DialogWatch::DialogWatch(CallEngine& engine, int lineNumber)
    : engine_(engine)
    , lineNumber_(lineNumber)
{}

DialogWatch::~DialogWatch()
{
    stop();
}

void DialogWatch::watch(std::string const& number, Listener changed)
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

void DialogWatch::start()
{
    std::lock_guard const lock(engine_);
    started_ = true;
    for (auto const& party : parties_) {
        party->subscribe();
    }
}

void DialogWatch::stop()
{
    std::lock_guard const lock(engine_);
    started_ = false;
    for (auto const& party : parties_) {
        party->stop();
    }
}

void DialogWatch::callChanged(CallSnapshot const& /*now*/, CallSnapshot const* /*before*/) {}

void DialogWatch::registrationChanged(int lineNumber, bool registered)
{
    if (registered && lineNumber == lineNumber_) {
        start();
    }
}

}  // namespace telephone

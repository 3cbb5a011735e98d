#include "telephone/exchange/ExchangeImpl.h"

#include <algorithm>

namespace telephone::exchange {

namespace {

constexpr char const* kCstaType = "application/csta+xml";

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace

Exchange::Impl::Impl(sip::EventLoop& loop, ExchangeConfig settings)
    : loop_(loop)
    , config_(std::move(settings))
    , registrar_(config_, [this](std::string const& number) { registrationChanged(number); })
    , dialogWatchers_(sip::kDialogInfoType, [this](std::string const& number) { updateWatch(number); })
    , messageWatchers_(sip::kMessageSummaryType, [](std::string const&) {})
{
    for (auto const& row : kNumbers) {
        behaviours_.emplace(row.number, row.behaviour);
    }
    sip::UserAgentConfig own;
    own.address = config_.address;
    own.udpPort = config_.port;
    own.name = "exchange";
    own.log = config_.log;
    agent_ = std::make_unique<sip::UserAgent>(loop, own, *this);
    say(sip::LogLevel::kInfo, "The exchange listens on " + agent_->hostPort());
}

void Exchange::Impl::close()
{
    closed_ = true;
    pickups_.clear();
    watches_.clear();
    for (auto& call : calls_) {
        call.reset();
    }
    calls_.clear();
    dialogWatchers_ = Watchers(sip::kDialogInfoType, [](std::string const&) {});
    messageWatchers_ = Watchers(sip::kMessageSummaryType, [](std::string const&) {});
}

void Exchange::Impl::say(sip::LogLevel level, std::string const& line) const
{
    if (config_.log) {
        config_.log(level, "exchange: " + line);
    }
}

void Exchange::Impl::post(std::function<void(Impl&)> work)
{
    loop_.post([weak = weak_from_this(), work = std::move(work)] {
        const auto self = weak.lock();
        if (self && !self->closed_) {
            work(*self);
        }
    });
}

sip::Account Exchange::Impl::accountOf(std::string const& number) const
{
    sip::Account account;
    account.user = number;
    account.domain = agent_->hostPort();
    return account;
}

NumberBehaviour const* Exchange::Impl::behaviourOf(std::string const& number) const
{
    auto const found = behaviours_.find(number);
    return found == behaviours_.end() ? nullptr : &found->second;
}

void Exchange::Impl::setBehaviour(std::string const& number, std::optional<NumberBehaviour> const& behaviour)
{
    if (behaviour) {
        behaviours_[number] = *behaviour;
    } else {
        behaviours_.erase(number);
    }
    changed(number);
}

bool Exchange::Impl::knowsUser(std::string const& user)
{
    return user.empty() || behaviourOf(user) || registrar_.knows(user) || startsWith(user, kDirectedPickup) ||
           user == kGroupPickup;
}

// --- calls

ExchangeCall& Exchange::Impl::add(std::string const& number, NumberBehaviour const& behaviour)
{
    calls_.push_back(std::make_unique<ExchangeCall>(*this, number, behaviour));
    return *calls_.back();
}

void Exchange::Impl::drop(ExchangeCall& call)
{
    post([ended = &call](Impl& self) {
        self.calls_.remove_if([ended](const auto& known) { return known.get() == ended; });
    });
}

void Exchange::Impl::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    if (closed_) {
        return;
    }
    const std::string number = sip::userOf(session->invitation().requestUri);
    auto const wanted = session->invitation().replaces;
    NumberBehaviour const* behaviour = behaviourOf(number);
    auto const contacts = registrar_.contactsOf(number);
    say(sip::LogLevel::kInfo, "call from " + session->invitation().from.uri.format() + " to " + number);
    if (wanted && findCall(*wanted)) {
        replace(std::move(session), *wanted);
    } else if (startsWith(number, kDirectedPickup)) {
        pickUp(std::move(session), number.substr(std::string_view(kDirectedPickup).size()));
    } else if (number == kGroupPickup) {
        pickUp(std::move(session), "");
    } else if (!contacts.empty()) {
        session->redirect(contacts.front());
    } else if (wanted) {
        session->reject(481, "Call/Transaction Does Not Exist");
    } else if (behaviour && behaviour->refuseWith) {
        session->reject(behaviour->refuseWith, behaviour->refuseText);
    } else if (behaviour) {
        add(number, *behaviour).take(std::move(session));
    } else {
        refuseUnknown(std::move(session), number);
    }
}

void Exchange::Impl::refuseUnknown(std::unique_ptr<sip::Session> session, std::string const& number)
{
    if (registrar_.knows(number)) {
        session->reject(480, "Temporarily Unavailable");
    } else {
        session->reject(404, "Not Found");
    }
}

ExchangeCall* Exchange::Impl::findCall(sip::Replaces const& wanted)
{
    for (auto const& call : calls_) {
        if (call->matches(wanted)) {
            return call.get();
        }
    }
    return nullptr;
}

ExchangeCall* Exchange::Impl::findRinging(std::string const& number)
{
    for (auto const& call : calls_) {
        if (call->isRinging() && (number.empty() || call->number() == number)) {
            return call.get();
        }
    }
    return nullptr;
}

void Exchange::Impl::replace(std::unique_ptr<sip::Session> session, sip::Replaces const& wanted)
{
    ExchangeCall& present = *findCall(wanted);
    ExchangeCall& fresh = add(present.number(), kAnswering);
    if (present.isRinging()) {
        fresh.pickUp(std::move(session), present);
    } else {
        fresh.takeInsteadOf(std::move(session), present);
    }
}

void Exchange::Impl::pickUp(std::unique_ptr<sip::Session> session, std::string const& number)
{
    if (ExchangeCall* ringing = findRinging(number)) {
        add(ringing->number(), kAnswering).pickUp(std::move(session), *ringing);
        return;
    }
    if (number.empty()) {
        searchRinging(std::move(session), registeredNumbers());
    } else if (!registrar_.contactsOf(number).empty()) {
        searchRinging(std::move(session), {number});
    } else {
        session->reject(480, "Nothing to pick up");
    }
}

void Exchange::Impl::searchRinging(std::unique_ptr<sip::Session> session, std::vector<std::string> numbers)
{
    // The caller's own telephone has nothing that it could pick up from here.
    std::erase(numbers, session->invitation().from.uri.user);
    if (numbers.empty()) {
        session->reject(480, "Nothing to pick up");
        return;
    }
    pickups_.push_back(std::make_unique<PendingPickup>(loop_, std::move(session), numbers,
                                                       [this](PendingPickup& pickup) { forget(pickup); }));
    for (auto const& number : numbers) {
        updateWatch(number);
        checkPickups(number);
    }
}

void Exchange::Impl::checkPickups(std::string const& number)
{
    auto const watch = watches_.find(number);
    if (watch == watches_.end()) {
        return;
    }
    auto const& dialogs = watch->second->dialogs();
    auto const ringing = std::find_if(dialogs.begin(), dialogs.end(), [](sip::DialogEntry const& entry) {
        return entry.recipient && entry.state == sip::DialogState::kEarly;
    });
    auto const waiting =
        std::find_if(pickups_.begin(), pickups_.end(), [&number](auto const& pickup) { return pickup->isFor(number); });
    if (ringing != dialogs.end() && waiting != pickups_.end()) {
        takeFound(**waiting, number, sip::DialogEntry(*ringing));
    }
}

// The caller of the ringing call gets a new one that replaces it; its other end is who picks up.
void Exchange::Impl::takeFound(PendingPickup& pickup, std::string const& number, sip::DialogEntry const& found)
{
    auto session = pickup.takeSession();
    forget(pickup);
    const std::string target = found.remote.target.empty() ? found.remote.identity : found.remote.target;
    const sip::Replaces replaces{found.dialog.callId, found.dialog.remoteTag, found.dialog.localTag, true};
    ExchangeCall& outgoing = add(number, kAnswering);
    if (!outgoing.dial(resolve(target), replaces, {}, nullptr)) {
        drop(outgoing);
        session->reject(480, "Nothing to pick up");
        return;
    }
    add(number, kAnswering).takeFor(std::move(session), outgoing);
}

void Exchange::Impl::forget(PendingPickup& pickup)
{
    auto const numbers = pickup.numbers();
    pickups_.remove_if([&pickup](auto const& known) { return known.get() == &pickup; });
    post([numbers](Impl& self) {
        for (const auto& number : numbers) {
            self.updateWatch(number);
        }
    });
}

std::string Exchange::Impl::resolve(std::string const& target)
{
    auto const uri = sip::Uri::parse(target);
    if (!uri) {
        return target;
    }
    bool const ours =
        uri->host == agent_->address() && (uri->port == agent_->udpPort() || uri->port == agent_->tcpPort());
    auto const contacts = ours ? registrar_.contactsOf(uri->user) : std::vector<std::string>();
    return contacts.empty() ? target : contacts.front();
}

bool Exchange::Impl::callOut(std::string const& from, std::string const& target,
                             std::optional<sip::Replaces> const& replaces, std::string const& referredBy,
                             std::unique_ptr<sip::Transfer> askedBy)
{
    ExchangeCall& call = add(from, kAnswering);
    if (call.dial(resolve(target), replaces, referredBy, std::move(askedBy))) {
        return true;
    }
    drop(call);
    return false;
}

void Exchange::Impl::transfer(std::string const& number, std::unique_ptr<sip::Transfer> transfer)
{
    if (!transfer->accept()) {
        return;
    }
    const std::string target = transfer->target();
    auto const replaces = transfer->replaces();
    const std::string referredBy = transfer->referredBy();
    (void)callOut(number, target, replaces, referredBy, std::move(transfer));
}

void Exchange::Impl::onTransferRequested(std::unique_ptr<sip::Transfer> asked)
{
    const std::string number = asked->to().uri.user;
    if (!closed_ && behaviourOf(number)) {
        transfer(number, std::move(asked));
    }
}

void Exchange::Impl::callBack(std::string const& number, sip::NameAddr const& caller, std::string const& contact)
{
    auto const registered = registrar_.contactsOf(caller.uri.user);
    const std::string target = registered.empty() ? contact : registered.front();
    post([number, target](Impl& self) { (void)self.callOut(number, target, std::nullopt, {}, nullptr); });
}

// --- requests outside dialogs

void Exchange::Impl::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
{
    if (closed_) {
        return;
    }
    if (request->method() == "REGISTER") {
        registrar_.handle(*request);
        request.reset();
    } else if (request->method() == "INFO" || request->method() == "MESSAGE") {
        echoInfo(*request);
        request.reset();
    }
}

void Exchange::Impl::echoInfo(sip::IncomingRequest& request)
{
    const sip::Content content = request.content();
    request.reply(200, "OK");
    if (request.method() != "INFO" || !startsWith(content.type, kCstaType)) {
        return;
    }
    auto const registered = registrar_.contactsOf(request.from().uri.user);
    auto const contact = sip::NameAddr::parse(request.headers().value("Contact"));
    if (registered.empty() && !contact) {
        return;
    }
    const std::string target = registered.empty() ? contact->uri.format() : registered.front();
    agent_->request(accountOf(request.to().uri.user), "INFO", target, {}, content, {});
}

}  // namespace telephone::exchange

#include "telephone/exchange/Exchange.h"

#include <algorithm>
#include <mutex>
#include <string_view>

#include "telephone/exchange/ExchangeAgent.h"
#include "telephone/sip/EventLoop.h"

namespace telephone::exchange {

namespace {

constexpr int kBusyHere = 486;
constexpr unsigned kMostMessages = 9999;
constexpr std::size_t kLongestNumber = 64;
constexpr std::size_t kLongestName = 255;

sip::UserAgentConfig agentConfig(ExchangeConfig const& config)
{
    sip::UserAgentConfig own;
    own.address = config.address;
    own.udpPort = config.port;
    own.name = "exchange";
    if (config.log) {
        own.log = [log = config.log](sip::LogLevel level, std::string const& line) { log(level, "exchange: " + line); };
    }
    return own;
}

// which: names the number in the refusal.
Outcome<> checkNumber(std::string const& which, std::string_view number)
{
    constexpr std::string_view kAllowed =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz+-._*#";  // ASCII, whatever the locale
    if (number.empty() || number.size() > kLongestNumber ||
        number.find_first_not_of(kAllowed) != std::string_view::npos) {
        return refuse(RefusalKind::kBadInput, which + " must consist of 1 to 64 letters, digits, and + - . _ * #");
    }
    return {};
}

Outcome<> checkName(std::string_view name)
{
    if (name.size() > kLongestName) {
        return refuse(RefusalKind::kBadInput, "the caller's name must not be longer than 255 bytes");
    }
    auto const isControl = [](unsigned char each) { return each < 0x20 || each == 0x7f; };
    if (std::ranges::any_of(name, isControl)) {
        return refuse(RefusalKind::kBadInput, "the caller's name must not contain control characters");
    }
    return {};
}

Outcome<> checkCounts(sip::MessageCounts const& counts)
{
    if (std::max({counts.fresh, counts.old, counts.urgentFresh, counts.urgentOld}) > kMostMessages) {
        return refuse(RefusalKind::kBadInput, "the number of messages must be 0 to 9999");
    }
    return {};
}

}  // namespace

Exchange::Exchange(sip::EventLoop& loop, ExchangeConfig config)
    : Exchange(loop, std::move(config), std::lock_guard(loop))
{}

Exchange::Exchange(sip::EventLoop& loop, ExchangeConfig config, std::lock_guard<sip::EventLoop> const& /*locked*/)
    : loop_(loop)
    , config_(std::move(config))
    , agent_(std::make_unique<sip::UserAgent>(loop, agentConfig(config_), *this))
    , deferred_(loop)
    , registrar_(config_, [this](std::string const& number) { registrationChanged(number); })
    , dialogWatchers_(
          sip::kDialogInfoType, [this](std::string const& number) { return dialogDocument(number); },
          [this](std::string const& number) { updateFollowing(number); })
    , messages_(*agent_, registrar_)
    , telephoneDialogs_(*agent_,
                        [this](std::string const& number) {
                            dialogsChanged(number);
                            pickups_.check(number);
                        })
    , calls_(config_, *agent_, registrar_, deferred_, [this](std::string const& number) { dialogsChanged(number); })
    , pickups_(loop, calls_, registrar_, telephoneDialogs_, deferred_,
               [this](std::string const& number) { updateFollowing(number); })
{
    for (auto const& row : kNumbers) {
        behaviours_.emplace(row.number, row.behaviour);
    }
    agent_->log(sip::LogLevel::kInfo, "listening on " + agent_->hostPort());
}

Exchange::~Exchange()
{
    {
        std::lock_guard guard(loop_);
        closed_ = true;
        pickups_.clear();
        telephoneDialogs_.clear();
        calls_.clear();
        dialogWatchers_.clear();
        messages_.clear();
    }
    // Waits for the last answers, so without the lock.
    agent_.reset();
}

NumberBehaviour const* Exchange::behaviourOf(std::string const& number) const
{
    auto const found = behaviours_.find(number);
    return found == behaviours_.end() ? nullptr : &found->second;
}

void Exchange::setBehaviour(std::string const& number, std::optional<NumberBehaviour> const& behaviour)
{
    std::lock_guard guard(loop_);
    if (behaviour) {
        behaviours_[number] = *behaviour;
    } else {
        behaviours_.erase(number);
    }
    dialogsChanged(number);
}

Outcome<> Exchange::setMessages(std::string const& number, sip::MessageCounts const& counts, bool unsolicited)
{
    std::lock_guard guard(loop_);
    return checkNumber("the number", number)
        .and_then([&counts] { return checkCounts(counts); })
        .and_then([&]() -> Outcome<> {
            if (!registrar_.knows(number)) {
                return refuse(RefusalKind::kNotFound, number + " has not registered with the exchange");
            }
            messages_.set(number, counts, unsolicited);
            return {};
        });
}

void Exchange::setRegistrarAnswers(bool answers)
{
    std::lock_guard guard(loop_);
    registrar_.setAnswers(answers);
    agent_->log(sip::LogLevel::kInfo, answers ? "the registrar answers" : "the registrar no longer answers");
}

std::vector<std::string> Exchange::contactsOf(std::string const& number) const
{
    std::lock_guard guard(loop_);
    return registrar_.contactsOf(number);
}

std::size_t Exchange::callCount() const
{
    std::lock_guard guard(loop_);
    return calls_.count();
}

std::size_t Exchange::watcherCount(std::string const& number, std::string const& event) const
{
    std::lock_guard guard(loop_);
    return event == sip::kDialogEvent ? dialogWatchers_.count(number) : messages_.watcherCount(number);
}

Outcome<> Exchange::callNumber(std::string const& from, std::string const& to, std::string const& displayName)
{
    std::lock_guard guard(loop_);
    return checkNumber("the caller's number", from)
        .and_then([&to] { return checkNumber("the number to call", to); })
        .and_then([&displayName] { return checkName(displayName); })
        .and_then([&]() -> Outcome<> {
            if (from == to) {
                return refuse(RefusalKind::kBadInput, to + " cannot call itself");
            }
            auto const contacts = registrar_.contactsOf(to);
            if (contacts.empty()) {
                return refuse(RefusalKind::kNotFound, to + " is not registered with the exchange");
            }
            return calls_.callOut(from, {.target = contacts.front(), .displayName = displayName});
        });
}

// --- calls

bool Exchange::knowsUser(std::string const& user)
{
    return user.empty() || behaviourOf(user) || registrar_.knows(user) || calls_.isInCall(user) ||
           user.starts_with(kDirectedPickup) || user == kGroupPickup;
}

void Exchange::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    if (closed_) {
        return;
    }
    std::string const number = sip::userOf(session->invitation().requestUri);
    auto const wanted = session->invitation().replaces;
    agent_->log(sip::LogLevel::kInfo, "call from " + session->invitation().from.uri.format() + " to " + number);
    if (ExchangeCall* const present = wanted ? calls_.find(*wanted) : nullptr) {
        calls_.replace(std::move(session), *present);
    } else if (number.starts_with(kDirectedPickup)) {
        pickups_.pickUp(std::move(session), number.substr(std::string_view(kDirectedPickup).size()));
    } else if (number == kGroupPickup) {
        pickups_.pickUp(std::move(session), "");
    } else if (auto const contacts = registrar_.contactsOf(number); !contacts.empty()) {
        logRefusal(*agent_, "call to " + number, session->redirect(contacts.front()));
    } else if (wanted) {
        session->reject(481, "Call/Transaction Does Not Exist");
    } else {
        takeCall(std::move(session), number);
    }
}

void Exchange::takeCall(std::unique_ptr<sip::Session> session, std::string const& number)
{
    NumberBehaviour const* const behaviour = behaviourOf(number);
    if (behaviour && behaviour->refuseWith) {
        session->reject(behaviour->refuseWith, behaviour->refuseText);
    } else if (behaviour) {
        calls_.add(number, *behaviour).take(std::move(session));
    } else if (registrar_.knows(number)) {
        session->reject(480, "Temporarily Unavailable");
    } else {
        session->reject(404, "Not Found");
    }
}

void Exchange::onTransferRequested(std::unique_ptr<sip::Transfer> transfer)
{
    std::string const number = transfer->to().uri.user;
    if (!closed_ && behaviourOf(number)) {
        calls_.transfer(number, {}, std::move(transfer));
    }
}

// --- requests outside dialogs

void Exchange::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
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

// Sends CSTA messages back to their sender.
void Exchange::echoInfo(sip::IncomingRequest& request)
{
    sip::Content const content = request.content();
    request.reply(200, "OK");
    if (request.method() != "INFO" || !content.type.starts_with(sip::kCstaType)) {
        return;
    }
    auto const registered = registrar_.contactsOf(request.from().uri.user);
    auto const contact = sip::NameAddr::parse(request.headers().value("Contact"));
    if (registered.empty() && !contact) {
        return;
    }
    std::string const target = registered.empty() ? contact->uri.format() : registered.front();
    logRefusal(*agent_, "INFO to " + target,
               agent_->request(accountOf(*agent_, request.to().uri.user), "INFO", target, {}, content, {}));
}

// --- event packages

void Exchange::onSubscribe(std::unique_ptr<sip::Notifier> notifier)
{
    if (closed_) {
        return;
    }
    std::string const number = sip::userOf(notifier->requestUri());
    if (notifier->event() == sip::kMessageSummaryEvent) {
        messages_.subscribe(number, std::move(notifier));
    } else if (notifier->event() == sip::kDialogEvent) {
        dialogWatchers_.add(number, std::move(notifier));
        updateFollowing(number);
    } else {
        notifier->reject(489, "Bad Event", {{"Allow-Events", "dialog, message-summary, refer"}});
    }
}

void Exchange::registrationChanged(std::string const& number)
{
    bool const registered = isRegistered(number);
    agent_->log(sip::LogLevel::kInfo, number + (registered ? " is registered" : " is no longer registered"));
    updateFollowing(number);
    dialogsChanged(number);
}

void Exchange::dialogsChanged(std::string const& number)
{
    if (!closed_) {
        dialogWatchers_.notify(number);
    }
}

// A registered telephone is followed for as long as somebody watches it or wants to pick up its call.
void Exchange::updateFollowing(std::string const& number)
{
    if (closed_) {
        return;
    }
    auto const contacts = registrar_.contactsOf(number);
    bool const wanted = dialogWatchers_.count(number) > 0 || pickups_.isFor(number);
    if (wanted && !contacts.empty() && !behaviourOf(number)) {
        telephoneDialogs_.follow(number, contacts.front());
    } else {
        telephoneDialogs_.unfollow(number);
    }
}

// Always the full state, including calls that have just ended.
std::string Exchange::dialogDocument(std::string const& number)
{
    sip::DialogInfo info;
    info.version = dialogVersions_[number]++;
    info.entity = accountOf(*agent_, number).addressOfRecord();
    info.dialogs = calls_.dialogsOf(number);
    NumberBehaviour const* const behaviour = behaviourOf(number);
    if (behaviour && behaviour->refuseWith == kBusyHere) {
        sip::DialogEntry busy;
        busy.id = "busy";
        busy.state = sip::DialogState::kConfirmed;
        info.dialogs.push_back(busy);
    }
    auto const reported = telephoneDialogs_.dialogsOf(number);
    info.dialogs.insert(info.dialogs.end(), reported.begin(), reported.end());
    return info.format();
}

}  // namespace telephone::exchange

#include "telephone/exchange/Exchange.h"

#include <algorithm>
#include <charconv>
#include <mutex>
#include <string_view>

#include "telephone/exchange/BuiltInNumbers.h"
#include "telephone/exchange/ExchangeAgent.h"
#include "telephone/sip/EventLoop.h"

namespace telephone::exchange {

namespace {

constexpr unsigned kMostMessages = 9999;
constexpr std::size_t kLongestName = 255;

sip::UserAgentConfig agentConfig(ExchangeConfig const& config)
{
    sip::UserAgentConfig own;
    own.address = config.address;
    own.udpPort = config.port;
    own.tls = config.tls;
    own.tlsPort = config.tlsPort;
    own.tlsFromTheStart = config.tls.has_value();
    own.name = "exchange";
    own.encryption = config.encryption;
    own.keysWithoutTls = config.keysWithoutTls;
    if (config.log) {
        own.log = [log = config.log](sip::LogLevel level, std::string const& line) { log(level, "exchange: " + line); };
    }
    return own;
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

// The appearance that a telephone wants for its call (RFC 7463); 0: any.
int appearanceIn(std::string const& alertInfo)
{
    constexpr std::string_view kParameter = ";appearance=";
    auto const place = alertInfo.find(kParameter);
    int appearance = 0;
    if (place != std::string::npos) {
        auto const* const text = alertInfo.data() + place + kParameter.size();
        std::from_chars(text, alertInfo.data() + alertInfo.size(), appearance);
    }
    return std::max(appearance, 0);
}

bool isBusy(ExchangeNumber const& number)
{
    return !number.steps.empty() && number.steps.front().kind == StepKind::kBusy;
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
                            appearances_.noteReport(number);
                            dialogsChanged(number);
                            pickups_.check(number);
                        })
    , appearances_([this](std::string const& number) { return find(number) ? find(number)->appearances : 0; },
                   [this](std::string const& number) { return telephoneDialogs_.dialogsOf(number); })
    , calls_(config_, *agent_, registrar_, appearances_, deferred_,
             [this](std::string const& number) { dialogsChanged(number); })
    , pickups_(loop, calls_, registrar_, telephoneDialogs_, deferred_,
               [this](std::string const& number) { updateFollowing(number); })
{
    for (auto const& row : kBuiltInNumbers) {
        std::string const number(row.number);
        numbers_[number] = {
            .number = number, .description = std::string(row.description), .steps = valueOrThrow(readSteps(row.does))};
    }
    for (auto const& number : config_.numbers) {
        numbers_[number.number] = number;
        messages_.set(number.number, number.messages, false);
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

// --- numbers

ExchangeNumber const* Exchange::find(std::string const& number) const
{
    auto const found = numbers_.find(number);
    return found == numbers_.end() ? nullptr : &found->second;
}

std::string Exchange::nameOf(std::string const& number) const
{
    ExchangeNumber const* const found = find(number);
    return found ? found->name : std::string();
}

bool Exchange::isPlayed(std::string const& number) const
{
    ExchangeNumber const* const found = find(number);
    return found && !found->steps.empty();
}

std::string Exchange::groupOf(std::string const& number) const
{
    ExchangeNumber const* const found = find(number);
    return found ? found->pickupGroup : std::string();
}

void Exchange::define(ExchangeNumber number)
{
    std::lock_guard guard(loop_);
    std::string const name = number.number;
    numbers_[name] = std::move(number);
    dialogsChanged(name);
}

void Exchange::remove(std::string const& number)
{
    std::lock_guard guard(loop_);
    numbers_.erase(number);
    dialogsChanged(number);
}

Outcome<> Exchange::define(std::string const& number, std::string_view text)
{
    auto const checked = checkNumber("the number", number).and_then([text] { return readSteps(text); });
    return checked.and_then([](Steps const& steps) { return checkOrder(steps, CallPhase::kOffered); }).map([&] {
        std::lock_guard guard(loop_);
        ExchangeNumber changed = find(number) ? *find(number) : ExchangeNumber{.number = number};
        changed.steps = *checked;
        changed.description.clear();
        define(std::move(changed));
    });
}

Outcome<> Exchange::play(std::string const& number, std::string_view text)
{
    auto const steps = checkNumber("the number", number).and_then([text] { return readSteps(text); });
    if (!steps) {
        return tl::unexpected(steps.error());
    }
    std::lock_guard guard(loop_);
    ExchangeCall* const present = callFor(steps->front().kind, number);
    return checkOrder(*steps, present ? present->phase() : CallPhase::kNoCall).and_then([&] {
        ExchangeCall& call = present ? *present : calls_.add({.number = number, .name = nameOf(number)});
        return call.play(*steps);
    });
}

// A step that only begins a call does so beside the present one, except for the call from a line that was seized.
ExchangeCall* Exchange::callFor(StepKind first, std::string const& number) const
{
    ExchangeCall* const present = calls_.latestOf(number);
    bool const isSeized = present && present->phase() == CallPhase::kSeized;
    bool const begins = first == StepKind::kSeize || (first == StepKind::kCall && !isSeized);
    return begins ? nullptr : present;
}

std::vector<std::string> Exchange::numbers() const
{
    std::lock_guard guard(loop_);
    std::vector<std::string> rows;
    for (auto const& [number, value] : numbers_) {
        std::string const steps = isPlayed(number) ? formatSteps(value.steps) : "a telephone registers under it";
        rows.push_back(number + " " + (value.description.empty() ? steps : value.description));
    }
    return rows;
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

void Exchange::setRegistrar(RegistrarConduct conduct)
{
    std::lock_guard guard(loop_);
    agent_->log(sip::LogLevel::kInfo, "the registrar will " + conduct.format());
    registrar_.setConduct(std::move(conduct));
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
            return calls_.callOut(
                from, {.target = contacts.front(), .displayName = displayName.empty() ? nameOf(from) : displayName});
        });
}

// --- calls

bool Exchange::knowsUser(std::string const& user)
{
    return user.empty() || find(user) || registrar_.knows(user) || calls_.isInCall(user) ||
           user.starts_with(kDirectedPickup) || user == kGroupPickup;
}

void Exchange::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    if (closed_) {
        return;
    }
    auto const& invitation = session->invitation();
    agent_->log(sip::LogLevel::kInfo,
                "call from " + invitation.from.uri.format() + " to " + sip::userOf(invitation.requestUri));
    std::string const from = invitation.from.uri.user;
    std::string const callId = session->dialogId().callId;
    if (!admit(*session)) {
        return;
    }
    route(std::move(session));
    if (!calls_.has(callId)) {
        appearances_.release(from, callId);
    }
}

// A call that takes the place of another keeps that one's appearance.
bool Exchange::admit(sip::Session& session)
{
    std::string const callId = session.dialogId().callId;
    if (session.invitation().replaces || session.invitation().joins || calls_.has(callId)) {
        return true;
    }
    auto const taken =
        appearances_.take(session.invitation().from.uri.user, callId, appearanceIn(session.invitation().alertInfo));
    if (!taken) {
        agent_->log(sip::LogLevel::kInfo, taken.error().reason);
        session.reject(403, "No Free Appearance");
    }
    return taken.has_value();
}

void Exchange::route(std::unique_ptr<sip::Session> session)
{
    std::string const number = sip::userOf(session->invitation().requestUri);
    auto const joined = session->invitation().joins;
    auto const wanted = joined ? joined : session->invitation().replaces;
    if (ExchangeCall* const present = wanted ? calls_.find(*wanted) : nullptr) {
        takeForCall(std::move(session), *present, joined.has_value());
    } else if (number.starts_with(kDirectedPickup) || number == kGroupPickup) {
        pickUp(std::move(session), number);
    } else if (ExchangeNumber const* const own = find(number); own && !own->forwarding.always.empty()) {
        logRefusal(*agent_, "call to " + number,
                   session->redirect(accountOf(*agent_, own->forwarding.always).addressOfRecord(), "unconditional"));
    } else if (auto const contacts = registrar_.contactsOf(number); !contacts.empty()) {
        logRefusal(*agent_, "call to " + number, session->redirect(contacts.front()));
    } else if (wanted) {
        session->reject(481, "Call/Transaction Does Not Exist");
    } else {
        takeCall(std::move(session), number);
    }
}

void Exchange::pickUp(std::unique_ptr<sip::Session> session, std::string const& dialled)
{
    if (dialled.starts_with(kDirectedPickup)) {
        auto const wanted = dialled.substr(std::string_view(kDirectedPickup).size());
        pickups_.pickUp(std::move(session), [&wanted](std::string const& number) { return number == wanted; });
        return;
    }
    std::string const group = groupOf(session->invitation().from.uri.user);
    pickups_.pickUp(std::move(session),
                    [this, &group](std::string const& number) { return group.empty() || groupOf(number) == group; });
}

void Exchange::takeForCall(std::unique_ptr<sip::Session> session, ExchangeCall& present, bool joins)
{
    if (calls_.isPrivate(present)) {
        session->reject(403, "Private");
    } else if (joins) {
        calls_.join(std::move(session), present);
    } else {
        calls_.replace(std::move(session), present);
    }
}

void Exchange::takeCall(std::unique_ptr<sip::Session> session, std::string const& number)
{
    if (isPlayed(number)) {
        calls_.add(*find(number)).take(std::move(session));
    } else if (find(number) || registrar_.knows(number)) {
        session->reject(480, "Temporarily Unavailable");
    } else {
        session->reject(404, "Not Found");
    }
}

void Exchange::onTransferRequested(std::unique_ptr<sip::Transfer> transfer)
{
    std::string const number = transfer->to().uri.user;
    if (!closed_ && isPlayed(number)) {
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
    if (wanted && !contacts.empty() && !isPlayed(number)) {
        telephoneDialogs_.follow(number, contacts.front());
    } else {
        telephoneDialogs_.unfollow(number);
    }
}

// The call that watchers see of a number without calls.
std::optional<sip::DialogEntry> Exchange::lampOf(std::string const& number) const
{
    ExchangeNumber const* const found = find(number);
    if (!found) {
        return std::nullopt;
    }
    sip::DialogEntry shown;
    shown.id = "lamp";
    shown.state = sip::DialogState::kConfirmed;
    switch (found->lamp) {
    case NumberLamp::kFromSteps:
        return isBusy(*found) ? std::optional(shown) : std::nullopt;
    case NumberLamp::kIdle:
        return std::nullopt;
    case NumberLamp::kRinging:
        shown.recipient = true;
        shown.state = sip::DialogState::kEarly;
        return shown;
    case NumberLamp::kBusy:
        return shown;
    case NumberLamp::kHolding:
        shown.local.target = accountOf(*agent_, number).addressOfRecord();
        shown.local.rendering = false;
        return shown;
    }
    return std::nullopt;
}

// Always the full state, including calls that have just ended.
std::string Exchange::dialogDocument(std::string const& number)
{
    sip::DialogInfo info;
    info.version = dialogVersions_[number]++;
    info.entity = accountOf(*agent_, number).addressOfRecord();
    info.dialogs = calls_.dialogsOf(number);
    if (auto lamp = lampOf(number); lamp && !calls_.isInCall(number)) {
        info.dialogs.push_back(*std::move(lamp));
    }
    auto const reported = telephoneDialogs_.dialogsOf(number);
    info.dialogs.insert(info.dialogs.end(), reported.begin(), reported.end());
    return info.format();
}

}  // namespace telephone::exchange

#include "telephone/exchange/Registrar.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <spdlog/fmt/fmt.h>

#include "telephone/exchange/ReasonPhrases.h"
#include "telephone/exchange/Steps.h"

namespace telephone::exchange {

namespace {

constexpr std::uint32_t kUsualExpires = 3600;
constexpr std::size_t kMostContacts = 10;

struct ConductRow
{
    RegistrarConduct::Kind kind;
    std::string_view name;
    bool takesValue;
};

constexpr std::array kConducts{
    ConductRow{RegistrarConduct::Kind::kAccept, "accept", false},
    ConductRow{RegistrarConduct::Kind::kRefuse, "refuse", true},
    ConductRow{RegistrarConduct::Kind::kRedirect, "redirect", true},
    ConductRow{RegistrarConduct::Kind::kAway, "away", false},
    ConductRow{RegistrarConduct::Kind::kForget, "forget", false},
};

tl::unexpected<Refusal> wrongConduct(std::string const& reason)
{
    return refuse(RefusalKind::kBadInput,
                  reason + "; the registrar can accept, refuse STATUS, redirect URI, go away or forget");
}

std::uint32_t number(std::string const& text, std::uint32_t otherwise)
{
    std::uint32_t value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : otherwise;
}

}  // namespace

Outcome<RegistrarConduct> RegistrarConduct::read(std::string_view text)
{
    auto const blank = std::min(text.find(' '), text.size());
    std::string const value(text.substr(std::min(blank + 1, text.size())));
    auto const* const row = std::ranges::find(kConducts, text.substr(0, blank), &ConductRow::name);
    if (row == kConducts.end() || row->takesValue == value.empty()) {
        return wrongConduct(fmt::format("\"{}\" is not understood", text));
    }
    RegistrarConduct conduct{.kind = row->kind};
    if (row->kind == Kind::kRefuse) {
        return readStatus(value).map([&conduct](int read) {
            conduct.status = read;
            return conduct;
        });
    }
    if (row->kind == Kind::kRedirect && !sip::Uri::parse(value)) {
        return wrongConduct(fmt::format("\"{}\" is not a SIP URI", value));
    }
    conduct.target = value;
    return conduct;
}

std::string RegistrarConduct::format() const
{
    auto const* const row = std::ranges::find(kConducts, kind, &ConductRow::kind);
    return fmt::format("{}{}{}", row->name, row->takesValue ? " " : "",
                       kind == Kind::kRefuse ? std::to_string(status) : target);
}

Registrar::Registrar(ExchangeConfig const& config, std::function<void(std::string const& number)> changed)
    : config_(config)
    , digest_(config.realm, config.digests, config.nonceLifetime)
    , changed_(std::move(changed))
{}

std::optional<std::string> Registrar::passwordFor(std::string const& number, std::string const& user) const
{
    auto const known = std::ranges::find(config_.users, number, &ExchangeUser::number);
    bool const hasOwn = known != config_.users.end();
    if (user != (hasOwn && !known->authUser.empty() ? known->authUser : number)) {
        return std::nullopt;
    }
    return hasOwn ? known->password : config_.anyPassword;
}

bool Registrar::knows(std::string const& number) const
{
    return std::ranges::count(config_.users, number, &ExchangeUser::number) > 0 || bindings_.contains(number);
}

std::vector<std::string> Registrar::registeredNumbers() const
{
    std::vector<std::string> numbers;
    for (auto const& entry : bindings_) {
        if (!contactsOf(entry.first).empty()) {
            numbers.push_back(entry.first);
        }
    }
    return numbers;
}

std::vector<std::string> Registrar::contactsOf(std::string const& number) const
{
    std::vector<std::string> contacts;
    auto const found = bindings_.find(number);
    if (found == bindings_.end()) {
        return contacts;
    }
    auto const now = Clock::now();
    for (auto binding = found->second.rbegin(); binding != found->second.rend(); ++binding) {
        if (binding->end > now) {
            contacts.push_back(binding->contact);
        }
    }
    return contacts;
}

bool Registrar::authenticate(sip::IncomingRequest& request, std::string const& number)
{
    using Verdict = sip::DigestServer::Verdict;
    auto const result = digest_.judge(request.method(), request.headers(),
                                      [&](std::string const& user) { return passwordFor(number, user); });
    switch (result.verdict) {
    case Verdict::kNoCredentials:
    case Verdict::kStale:
        request.reply(401, "Unauthorized", digest_.challenges(result.verdict == Verdict::kStale));
        return false;
    case Verdict::kAccepted:
        return true;
    case Verdict::kWrong:
        request.reply(403, "Forbidden");
        return false;
    }
    return false;
}

void Registrar::handle(sip::IncomingRequest& request)
{
    if (!passesConduct(request)) {
        return;
    }
    std::string const number = request.to().uri.user;
    if (number.empty()) {
        request.reply(404, "Not Found");
        return;
    }
    if (!authenticate(request, number)) {
        return;
    }
    auto& bindings = bindings_[number];
    std::erase_if(bindings, [now = Clock::now()](Binding const& binding) { return binding.end <= now; });
    bool const before = !bindings.empty();
    if (!update(request, bindings)) {
        return;
    }
    answer(request, bindings);
    if (before != !bindings.empty() && changed_) {
        changed_(number);
    }
}

bool Registrar::passesConduct(sip::IncomingRequest& request) const
{
    switch (conduct_.kind) {
    case RegistrarConduct::Kind::kAccept:
        return true;
    case RegistrarConduct::Kind::kRefuse:
        request.reply(conduct_.status, reasonPhrase(conduct_.status));
        return false;
    case RegistrarConduct::Kind::kRedirect:
        request.reply(302, "Moved Temporarily", {{"Contact", "<" + conduct_.target + ">"}});
        return false;
    case RegistrarConduct::Kind::kAway:
        request.ignore();
        return false;
    case RegistrarConduct::Kind::kForget:
        break;
    }
    return false;
}

void Registrar::setConduct(RegistrarConduct conduct)
{
    if (conduct.kind == RegistrarConduct::Kind::kForget) {
        forget();
    } else {
        conduct_ = std::move(conduct);
    }
}

void Registrar::forget()
{
    for (auto const& number : registeredNumbers()) {
        bindings_[number].clear();
        if (changed_) {
            changed_(number);
        }
    }
}

bool Registrar::update(sip::IncomingRequest& request, std::vector<Binding>& bindings)
{
    auto const contacts = request.headers().list("Contact");
    if (contacts.size() == 1 && contacts.front() == "*") {
        if (request.headers().value("Expires") != "0") {
            request.reply(400, "Contact * without Expires 0");
            return false;
        }
        bindings.clear();
        return true;
    }
    for (auto const& value : contacts) {
        auto const contact = sip::NameAddr::parse(value);
        if (!contact) {
            request.reply(400, "Bad Contact");
            return false;
        }
        if (!bind(request, *contact, bindings)) {
            request.reply(500, "Out of order");
            return false;
        }
    }
    return true;
}

bool Registrar::bind(sip::IncomingRequest& request, sip::NameAddr const& contact, std::vector<Binding>& bindings)
{
    std::string const uri = contact.uri.format();
    std::string const order = request.headers().value("CSeq");  // "7 REGISTER"
    std::uint32_t const sequence = number(order.substr(0, order.find(' ')), 0);
    auto const known = std::ranges::find(bindings, uri, &Binding::contact);
    if (known != bindings.end()) {
        // A late repetition must not undo later changes.
        if (known->callId == request.callId() && sequence < known->sequence) {
            return false;
        }
        bindings.erase(known);
    }
    std::uint32_t const usual = number(request.headers().value("Expires"), kUsualExpires);
    std::uint32_t const asked = number(contact.parameter("expires").value_or(""), usual);
    if (asked == 0) {
        return true;
    }
    if (bindings.size() >= kMostContacts) {
        bindings.erase(bindings.begin());
    }
    std::chrono::seconds const granted(std::min(asked, config_.longestExpires));
    bindings.push_back({uri, request.callId(), sequence, Clock::now() + granted});
    request.useConnectionFor(contact.uri);
    return true;
}

void Registrar::answer(sip::IncomingRequest& request, std::vector<Binding> const& bindings)
{
    sip::Headers headers;
    auto const now = Clock::now();
    for (auto const& binding : bindings) {
        auto const left = std::chrono::ceil<std::chrono::seconds>(binding.end - now).count();
        headers.add("Contact", "<" + binding.contact + ">;expires=" + std::to_string(left));
    }
    request.reply(200, "OK", headers);
}

}  // namespace telephone::exchange

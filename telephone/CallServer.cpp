#include "telephone/CallServer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "platform/lines/LineData.h"
#include "telephone/framework/Log.h"
#include "telephone/services/CertificateManagement.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

// Host and port of a registrar's address.
Outcome<std::string> hostPortOf(std::string const& registrar)
{
    auto uri = sip::Uri::parse(registrar);
    if (!uri) {
        return refuse(RefusalKind::kBadInput, "server.registrar: \"" + registrar + "\" is not a sip: address");
    }
    uri->user.clear();
    std::string const scheme = uri->scheme + ":";
    return uri->formatAddressOfRecord().substr(scheme.size());
}

void useExchange(Configuration& configuration, exchange::Exchange const& exchange)
{
    ServerConfiguration& server = configuration.server;
    bool const overTls = configuration.sip.transport == Transport::kTls;
    server.registrar = "sip:" + exchange.hostPort(overTls ? sip::Transport::kTls : sip::Transport::kUdp);
    if (server.directedPickup.empty()) {
        server.directedPickup = exchange::kDirectedPickup;
    }
    if (server.groupPickup.empty()) {
        server.groupPickup = exchange::kGroupPickup;
    }
}

// One text with commas, or a text for each step.
Outcome<exchange::Steps> stepsOf(Texts const& does)
{
    auto const& texts = does.list;
    if (texts.empty()) {
        return exchange::Steps();
    }
    auto steps = texts.size() == 1 ? exchange::readSteps(texts.front()) : exchange::readSteps(texts);
    return steps.and_then([](exchange::Steps& read) {
        return exchange::checkOrder(read, exchange::CallPhase::kOffered).map([&read] { return std::move(read); });
    });
}

Outcome<> checkNumbers(ExchangeNumberConfiguration const& number)
{
    using Key = std::pair<char const*, std::string const&>;
    for (auto const& [key, value] :
         {Key{"forward-always", number.forwardAlways}, Key{"forward-on-busy", number.forwardOnBusy},
          Key{"forward-on-no-reply", number.forwardOnNoReply}}) {
        if (auto checked = exchange::checkNumber(key, value); !value.empty() && !checked) {
            return checked;
        }
    }
    return exchange::checkNumber("number", number.number);
}

Outcome<exchange::ExchangeNumber> numberOf(ExchangeNumberConfiguration const& configured)
{
    auto const named = [&configured](std::string const& key) {
        return [&configured, key](Refusal const& refusal) {
            return Refusal{refusal.kind, "exchange.number \"" + configured.number + "\": " + key + refusal.reason};
        };
    };
    auto const checked = checkNumbers(configured).map_error(named(""));
    auto steps = stepsOf(configured.does).map_error(named("does: "));
    if (!checked || !steps) {
        return tl::unexpected(checked ? steps.error() : checked.error());
    }
    exchange::ExchangeNumber number{.number = configured.number, .name = configured.name, .steps = *std::move(steps)};
    number.forwarding = {configured.forwardAlways, configured.forwardOnBusy, configured.forwardOnNoReply,
                         std::chrono::seconds(configured.noReplyAfter)};
    number.messages = {static_cast<unsigned>(configured.newMessages), static_cast<unsigned>(configured.oldMessages), 0,
                       0};
    number.pickupGroup = configured.pickupGroup;
    number.appearances = configured.appearances;
    number.lamp = static_cast<exchange::NumberLamp>(configured.lamp);
    return number;
}

// In the order of the choices of exchange.digests.
std::array<std::vector<sip::DigestAlgorithm>, 3> const kDigests{{
    {sip::DigestAlgorithm::kSha256, sip::DigestAlgorithm::kMd5},
    {sip::DigestAlgorithm::kSha256},
    {sip::DigestAlgorithm::kMd5},
}};

// The lines that the telephone shares have their appearances at the exchange, too.
void addSharedLines(Configuration const& configuration, std::vector<exchange::ExchangeNumber>& numbers)
{
    for (auto const& line : configuration.lines) {
        if (line.sharedLineType == LineData::kNotShared) {
            continue;
        }
        auto const& user = userOfLine(line);
        auto number = std::ranges::find(numbers, user, &exchange::ExchangeNumber::number);
        if (number == numbers.end()) {
            number = numbers.insert(numbers.end(), {.number = user});
        }
        number->appearances = number->appearances == 0 ? line.appearances : number->appearances;
    }
}

}  // namespace

sip::Logger sipLogger(char const* component)
{
    return [component](sip::LogLevel level, std::string const& text) {
        constexpr std::array<int, 4> kLevels{kLogTrace, kLogInfo, kLogWarning, kLogFailure};
        logLine(kLevels.at(static_cast<std::size_t>(level)), component, text);
    };
}

Outcome<exchange::ExchangeConfig> exchangeConfigOf(Configuration const& configuration)
{
    exchange::ExchangeConfig config;
    // Of the family in which the telephone can reach it.
    config.address = configuration.sip.address.find(':') == std::string::npos ? "127.0.0.1" : "::1";
    config.port = static_cast<std::uint16_t>(configuration.exchange.port);
    config.realm = configuration.exchange.realm;
    config.digests = kDigests.at(static_cast<std::size_t>(configuration.exchange.digests));
    config.anyPassword = configuration.exchange.password;
    for (auto const& line : configuration.lines) {
        if (!line.password.empty()) {
            config.users.push_back({userOfLine(line), line.password, line.authUser});
        }
    }
    config.log = sipLogger("exchange");
    if (!configuration.exchange.certificate.empty()) {
        config.tls = {configuration.exchange.certificate, configuration.exchange.key,
                      trustedAuthorities(configuration)};
        config.tlsPort = static_cast<std::uint16_t>(config.port == 0 ? 0 : config.port + 1);
    }
    // Its own numbers take calls of either kind.
    config.encryption = configuration.media.encryption == 0 ? sip::Encryption::kNone : sip::Encryption::kOptional;
    config.keysWithoutTls = configuration.media.keysWithoutTls;
    for (auto const& each : configuration.exchangeNumbers) {
        auto number = numberOf(each);
        if (!number) {
            return tl::unexpected(number.error());
        }
        config.numbers.push_back(*std::move(number));
    }
    addSharedLines(configuration, config.numbers);
    return config;
}

std::function<std::string(std::string const& host)> trustedAuthorities(Configuration const& configuration)
{
    return [management = std::make_shared<CertificateManagement>(configuration.certificates)](std::string const& host) {
        return management->trustedAuthoritiesFor(host);
    };
}

std::unique_ptr<exchange::Exchange> makeExchange(sip::EventLoop& loop, Configuration const& configuration)
{
    if (!configuration.exchange.enabled || !configuration.server.registrar.empty()) {
        return nullptr;
    }
    return std::make_unique<exchange::Exchange>(loop, valueOrThrow(exchangeConfigOf(configuration)));
}

Outcome<Configuration> withServer(Configuration configuration, exchange::Exchange const* exchange)
{
    ServerConfiguration& server = configuration.server;
    if (exchange != nullptr) {
        useExchange(configuration, *exchange);
    }
    if (!server.domain.empty() || server.registrar.empty()) {
        return configuration;
    }
    return hostPortOf(server.registrar).map([&configuration](std::string const& domain) {
        configuration.server.domain = domain;
        return std::move(configuration);
    });
}

ServerAddress serverAddressOf(Configuration const& configuration, bool hasExchange, std::string const& ownHostPort)
{
    std::string const& domain = configuration.server.domain;
    return {configuration.server.registrar, domain.empty() ? ownHostPort : domain,
            hasExchange ? configuration.exchange.password : std::string()};
}

}  // namespace telephone

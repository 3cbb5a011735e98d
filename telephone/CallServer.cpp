#include "telephone/CallServer.h"

#include <array>
#include <utility>

#include "telephone/framework/Log.h"
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

void useExchange(ServerConfiguration& server, exchange::Exchange const& exchange)
{
    server.registrar = "sip:" + exchange.hostPort();
    if (server.directedPickup.empty()) {
        server.directedPickup = exchange::kDirectedPickup;
    }
    if (server.groupPickup.empty()) {
        server.groupPickup = exchange::kGroupPickup;
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

exchange::ExchangeConfig exchangeConfigOf(ExchangeConfiguration const& configuration)
{
    exchange::ExchangeConfig config;
    config.port = static_cast<std::uint16_t>(configuration.port);
    config.realm = configuration.realm;
    config.anyPassword = configuration.password;
    config.log = sipLogger("exchange");
    return config;
}

std::unique_ptr<exchange::Exchange> makeExchange(sip::EventLoop& loop, Configuration const& configuration)
{
    if (!configuration.exchange.enabled || !configuration.server.registrar.empty()) {
        return nullptr;
    }
    return std::make_unique<exchange::Exchange>(loop, exchangeConfigOf(configuration.exchange));
}

Outcome<Configuration> withServer(Configuration configuration, exchange::Exchange const* exchange)
{
    ServerConfiguration& server = configuration.server;
    if (exchange != nullptr) {
        useExchange(server, *exchange);
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

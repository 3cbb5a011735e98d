// The call server with which the telephone's lines register: the configured registrar, else the built-in exchange.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/lines/Accounts.h"
#include "telephone/sip/Log.h"

namespace telephone {

// Writes the messages of the SIP stack and the exchange to the telephone's log.
sip::Logger sipLogger(char const* component);

// Refused for a number whose keys contradict each other, or whose steps or sound files are wrong; the reason names the
// number and the key.
[[nodiscard]] Outcome<exchange::ExchangeConfig> exchangeConfigOf(Configuration const& configuration);

// The authorities that the configuration trusts for TLS.
std::function<std::string(std::string const& host)> trustedAuthorities(Configuration const& configuration);

// Null if the configuration names a registrar or switches the exchange off. Throws std::runtime_error if the exchange
// cannot use its port, and as exchangeConfigOf refuses.
std::unique_ptr<exchange::Exchange> makeExchange(sip::EventLoop& loop, Configuration const& configuration);

// The configuration with the addresses of the exchange, if there is one, and with the domain. Refused for a registrar
// that is not a SIP address.
[[nodiscard]] Outcome<Configuration> withServer(Configuration configuration, exchange::Exchange const* exchange);

// The server as the lines' accounts use it. Without a server, the lines' addresses are at `ownHostPort`.
ServerAddress serverAddressOf(Configuration const& configuration, bool hasExchange, std::string const& ownHostPort);

}  // namespace telephone

// The settings of the built-in exchange.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "telephone/exchange/ExchangeNumber.h"
#include "telephone/sip/Audio.h"
#include "telephone/sip/DigestResponse.h"
#include "telephone/sip/Log.h"
#include "telephone/sip/TlsConfig.h"

namespace telephone::exchange {

struct ExchangeUser
{
    std::string number;
    std::string password;
    std::string authUser = {};  // in its credentials; empty: the number
};

struct ExchangeConfig
{
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;             // UDP, and TCP if it is free; 0: chosen
    std::optional<sip::TlsConfig> tls;  // none: no TLS
    std::uint16_t tlsPort = 0;          // 0: chosen
    std::string realm = "exchange";
    std::vector<sip::DigestAlgorithm> digests{sip::DigestAlgorithm::kSha256, sip::DigestAlgorithm::kMd5};  // offered
    std::vector<ExchangeUser> users;                    // numbers with a password of their own
    std::optional<std::string> anyPassword = "secret";  // password of all other numbers; none: they cannot register
    std::vector<ExchangeNumber> numbers = {};           // beside the built-in ones, or instead of them
    std::uint32_t longestExpires = 3600;                // upper limit of a registration, in seconds
    std::chrono::seconds nonceLifetime{300};
    std::chrono::milliseconds longestRinging{180000};  // of a call from one of its numbers, which then ends unanswered
    sip::Encryption encryption = sip::Encryption::kNone;  // of the audio of its own numbers
    bool keysWithoutTls = false;                          // as in sip::UserAgentConfig
    sip::Logger log;
};

}  // namespace telephone::exchange

// An address of record and its credentials. A plain value, copied into every object made from it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace telephone::sip {

enum class Transport : int
{
    kUdp,
    kTcp,
    kTls
};

struct Account
{
    std::string user;         // user part of the address of record and of the Contact
    std::string domain;       // "host" or "host:port"
    std::string displayName;  // for the From header; may be empty
    std::string registrar;    // URI; empty: "sip:<domain>"
    std::string proxy;        // URI of the outbound proxy; empty: none
    std::string authUser;     // empty: same as user
    std::string password;     // digest (RFC 7616, SHA-256 or MD5); empty: a challenge ends the request with its status
    Transport transport = Transport::kUdp;
    std::uint32_t expires = 3600;  // seconds requested at registration

    std::chrono::seconds keepAlive{120};  // between keep-alives over TCP and TLS, at most; 0: none

    // Retries of a failed registration: no answer within answerTimeout counts as a failure (408); the delay starts at
    // retryFirst and doubles up to retryMax, and half of it or less is taken off by chance (RFC 5626 section 4.5). A
    // Retry-After of the registrar has precedence.
    std::chrono::milliseconds answerTimeout{8000};
    std::chrono::milliseconds retryFirst{2000};
    std::chrono::milliseconds retryMax{60000};

    std::string addressOfRecord() const { return "sip:" + user + "@" + domain; }
};

}  // namespace telephone::sip

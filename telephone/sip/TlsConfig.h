// What a user agent needs for TLS. A plain value.
#pragma once

#include <functional>
#include <string>

namespace telephone::sip {

struct TlsConfig
{
    // PEM files with the user agent's own certificate, followed by those of its authorities, and with its key. Empty:
    // it shows none, and nobody can connect to it.
    std::string certificate;
    std::string key;
    // The file with the authorities that are trusted for a host; empty: none is, and connections to it are refused.
    std::function<std::string(std::string const& host)> authoritiesFor;
    // Whoever connects must show a certificate of a trusted authority.
    bool asksForCertificates = false;
};

}  // namespace telephone::sip

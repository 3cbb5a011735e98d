// SIP URIs and name-addr values (RFC 3261 section 19.1 and 20.10) as plain values. Pure functions of their input; any
// thread. What cannot be parsed yields nothing; the caller knows what it was for and what to report.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace telephone::sip {

// "sip:user:password@host:port;params?headers". Names of parameters and headers compare without regard to case.
struct Uri
{
    std::string scheme = "sip";
    std::string user;  // unescaped
    std::string password;
    std::string host;                                             // IPv6 addresses without brackets
    std::uint16_t port = 0;                                       // 0: not given
    std::vector<std::pair<std::string, std::string>> parameters;  // as written; a name alone has an empty value
    std::vector<std::pair<std::string, std::string>> headers;     // unescaped

    // Nothing unless the text is a sip:, sips: or tel: URI. A tel: number becomes the user of a URI without a host.
    static std::optional<Uri> parse(std::string_view text);
    std::string format() const;
    // "sip:user@host:port": equal for two URIs of the same user.
    std::string formatAddressOfRecord() const;

    std::optional<std::string> parameter(std::string_view name) const;
    void setParameter(std::string_view name, std::string_view value);
    std::optional<std::string> header(std::string_view name) const;

    bool operator==(Uri const&) const = default;
};

// "display" <uri>;parameters, as in From, To, Contact, P-Asserted-Identity, Diversion and Refer-To.
struct NameAddr
{
    std::string displayName;  // without quotes, unescaped
    Uri uri;
    std::vector<std::pair<std::string, std::string>> parameters;  // after the brackets: tag, reason, expires ...

    static std::optional<NameAddr> parse(std::string_view text);
    std::string format() const;
    std::optional<std::string> parameter(std::string_view name) const;

    bool operator==(NameAddr const&) const = default;
};

// The user part of a URI or name-addr; empty if there is none.
std::string userOf(std::string_view text);

// The URI of a dialled text: a text with a scheme is used unchanged, "user@host" gets "sip:", anything else becomes the
// escaped user at the domain ("host" or "host:port").
std::string targetUri(std::string_view dialled, std::string_view domain);

// Escapes characters that are not allowed in the user part of a URI.
std::string escapeUser(std::string_view text);

// Escapes characters that are not allowed in a URI header value (RFC 3261 section 19.1.1), for a Replaces in a
// Refer-To.
std::string escapeHeaderValue(std::string_view text);

// The elements of a comma-separated header. Commas in quotes and brackets do not separate.
std::vector<std::string> splitList(std::string_view text);

// Compares without regard to the case of ASCII letters.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

}  // namespace telephone::sip

// SIP URIs and name-addr values (RFC 3261 section 19.1 and 20.10) as plain values: parse, read, change, format.
// Pure functions of their input; usable on any thread.
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
    std::string host;                                             // an IPv6 address without its brackets
    std::uint16_t port = 0;                                       // 0: not given
    std::vector<std::pair<std::string, std::string>> parameters;  // as written; an empty value for a bare name
    std::vector<std::pair<std::string, std::string>> headers;     // unescaped

    // Nothing for what is no sip:, sips: or tel: URI. A tel: number becomes the user of a URI without a host.
    static std::optional<Uri> parse(std::string_view text);
    std::string format() const;
    // Without parameters, headers and password: what two URIs must share to mean the same user ("sip:user@host:port").
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

// The user part of a URI or name-addr text; empty when there is none.
std::string userOf(std::string_view text);

// What a person or a program dialled as a URI: a text with a scheme stays as it is, "user@host" gets "sip:", anything
// else becomes the user at the domain ("host" or "host:port"). Characters a user part cannot hold are escaped.
std::string targetUri(std::string_view dialled, std::string_view domain);

// Escapes what the user part of a URI cannot hold.
std::string escapeUser(std::string_view text);

// Escapes what a URI header value cannot hold (RFC 3261 section 19.1.1), for a Replaces inside a Refer-To.
std::string escapeHeaderValue(std::string_view text);

// The values of a comma-separated header; commas in quotes and brackets do not separate.
std::vector<std::string> splitList(std::string_view text);

// Whether two texts are equal without regard to the case of ASCII letters.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

}  // namespace telephone::sip

#include "telephone/sip/Uri.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

#include "telephone/sip/WireText.h"

namespace telephone::sip {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// Characters that are not escaped besides letters, digits and "-_.!~*'()" (RFC 3261 section 25.1).
constexpr std::string_view kUserExtra = "&=+$,;?/";
constexpr std::string_view kHeaderExtra = "[]/?:+$";

bool isAlphanumeric(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

char lower(char character)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

int hexValue(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    char const small = lower(digit);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

std::string unescape(std::string_view escaped)
{
    std::string plain;
    plain.reserve(escaped.size());
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        bool const code = escaped[i] == '%' && i + 2 < escaped.size() && hexValue(escaped[i + 1]) >= 0 &&
                          hexValue(escaped[i + 2]) >= 0;
        if (!code) {
            plain += escaped[i];
            continue;
        }
        plain += static_cast<char>(hexValue(escaped[i + 1]) * 16 + hexValue(escaped[i + 2]));
        i += 2;
    }
    return plain;
}

std::string escape(std::string_view plain, std::string_view extra)
{
    constexpr std::string_view kMarks = "-_.!~*'()";
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string escaped;
    for (char const character : plain) {
        if (isAlphanumeric(character) || kMarks.find(character) != std::string_view::npos ||
            extra.find(character) != std::string_view::npos) {
            escaped += character;
            continue;
        }
        auto const byte = static_cast<unsigned char>(character);
        escaped += '%';
        escaped += kHex[byte >> 4];
        escaped += kHex[byte & 15];
    }
    return escaped;
}

std::string_view trim(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    auto const first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Pairs parsePairs(std::string_view text, char separator)
{
    Pairs pairs;
    while (!text.empty()) {
        auto const end = text.find(separator);
        std::string_view const part = trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (part.empty()) {
            continue;
        }
        auto const equals = part.find('=');
        if (equals == std::string_view::npos) {
            pairs.emplace_back(part, "");
        } else {
            pairs.emplace_back(trim(part.substr(0, equals)), trim(part.substr(equals + 1)));
        }
    }
    return pairs;
}

std::string formatParameters(Pairs const& parameters)
{
    std::string text;
    for (auto const& [name, value] : parameters) {
        text += ";" + name + (value.empty() ? std::string() : "=" + value);
    }
    return text;
}

std::optional<std::string> find(Pairs const& pairs, std::string_view name)
{
    for (auto const& [key, value] : pairs) {
        if (equalsIgnoringCase(key, name)) {
            return value;
        }
    }
    return std::nullopt;
}

bool parsePort(std::string_view text, std::uint16_t& port)
{
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port != 0;
}

bool isHostCharacter(char character)
{
    return isAlphanumeric(character) || character == '.' || character == '-' || character == '_';
}

// "host", "host:port" or "[address]:port".
bool parseHostPort(std::string_view text, Uri& uri)
{
    std::string_view rest;
    if (!text.empty() && text.front() == '[') {
        auto const end = text.find(']');
        if (end == std::string_view::npos) {
            return false;
        }
        uri.host = text.substr(1, end - 1);
        rest = text.substr(end + 1);
    } else {
        auto const colon = text.find(':');
        uri.host = text.substr(0, colon);
        rest = colon == std::string_view::npos ? std::string_view() : text.substr(colon);
        if (!std::all_of(uri.host.begin(), uri.host.end(), isHostCharacter)) {
            return false;
        }
    }
    if (uri.host.empty()) {
        return false;
    }
    return rest.empty() || (rest.front() == ':' && parsePort(rest.substr(1), uri.port));
}

void parseUserInfo(std::string_view text, Uri& uri)
{
    auto const colon = text.find(':');
    uri.user = unescape(text.substr(0, colon));
    if (colon != std::string_view::npos) {
        uri.password = text.substr(colon + 1);
    }
}

bool isForbidden(char character)
{
    return static_cast<unsigned char>(character) <= ' ' || character == '<' || character == '>' || character == '"' ||
           character == '\x7f';
}

std::string unquote(std::string_view quoted)
{
    std::string plain;
    for (std::size_t i = 0; i < quoted.size(); ++i) {
        if (quoted[i] == '\\' && i + 1 < quoted.size()) {
            ++i;
        }
        plain += quoted[i];
    }
    return plain;
}

// The position of the quotation mark that closes the one at the front, or npos.
std::size_t closingQuote(std::string_view text)
{
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return i;
        }
    }
    return std::string_view::npos;
}

// The text up to the first comma outside quotes and brackets.
std::string_view firstOfList(std::string_view text)
{
    bool quoted = false;
    bool bracketed = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (quoted && text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            quoted = !quoted;
        } else if (!quoted && (text[i] == '<' || text[i] == '>')) {
            bracketed = text[i] == '<';
        } else if (!quoted && !bracketed && text[i] == ',') {
            return text.substr(0, i);
        }
    }
    return text;
}

}  // namespace

bool equalsIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

std::optional<Uri> Uri::parse(std::string_view text)
{
    text = trim(text);
    auto const colon = text.find(':');
    if (colon == std::string_view::npos || std::any_of(text.begin(), text.end(), isForbidden)) {
        return std::nullopt;
    }
    Uri uri;
    uri.scheme = text.substr(0, colon);
    std::transform(uri.scheme.begin(), uri.scheme.end(), uri.scheme.begin(), lower);
    text.remove_prefix(colon + 1);

    if (uri.scheme == "tel") {
        auto const end = text.find(';');
        uri.user = text.substr(0, end);
        if (end != std::string_view::npos) {
            uri.parameters = parsePairs(text.substr(end + 1), ';');
        }
        return uri.user.empty() ? std::nullopt : std::optional(uri);
    }
    if (uri.scheme != "sip" && uri.scheme != "sips") {
        return std::nullopt;
    }

    if (auto const at = text.find('@'); at != std::string_view::npos) {
        parseUserInfo(text.substr(0, at), uri);
        text.remove_prefix(at + 1);
    }
    if (auto const mark = text.find('?'); mark != std::string_view::npos) {
        for (auto const& [name, value] : parsePairs(text.substr(mark + 1), '&')) {
            uri.headers.emplace_back(unescape(name), unescape(value));
        }
        text = text.substr(0, mark);
    }
    if (auto const mark = text.find(';'); mark != std::string_view::npos) {
        uri.parameters = parsePairs(text.substr(mark + 1), ';');
        text = text.substr(0, mark);
    }
    return parseHostPort(text, uri) ? std::optional(uri) : std::nullopt;
}

std::string Uri::formatAddressOfRecord() const
{
    std::string text = scheme + ":" + escape(user, kUserExtra);
    if (scheme == "tel") {
        return text;
    }
    if (!user.empty()) {
        text += "@";
    }
    text += host.find(':') == std::string::npos ? host : "[" + host + "]";
    return port ? text + ":" + std::to_string(port) : text;
}

std::string Uri::format() const
{
    Uri plain;
    plain.scheme = scheme;
    plain.user = user;
    plain.host = host;
    plain.port = port;
    std::string text = plain.formatAddressOfRecord();
    if (!password.empty() && !user.empty()) {
        text.insert(text.find('@'), ":" + password);
    }
    text += formatParameters(parameters);
    char separator = '?';
    for (auto const& [name, value] : headers) {
        text += separator + escape(name, kHeaderExtra) + "=" + escape(value, kHeaderExtra);
        separator = '&';
    }
    return text;
}

std::optional<std::string> Uri::parameter(std::string_view name) const
{
    return find(parameters, name);
}

void Uri::setParameter(std::string_view name, std::string_view value)
{
    for (auto& [key, present] : parameters) {
        if (equalsIgnoringCase(key, name)) {
            present = value;
            return;
        }
    }
    parameters.emplace_back(name, value);
}

std::optional<std::string> Uri::header(std::string_view name) const
{
    return find(headers, name);
}

std::optional<NameAddr> NameAddr::parse(std::string_view text)
{
    text = trim(firstOfList(text));
    NameAddr address;
    if (!text.empty() && text.front() == '"') {
        auto const end = closingQuote(text);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        address.displayName = plainText(unquote(text.substr(1, end - 1)));
        text = trim(text.substr(end + 1));
    }
    std::string_view inner;
    if (auto const open = text.find('<'); open != std::string_view::npos) {
        auto const close = text.find('>', open);
        if (close == std::string_view::npos) {
            return std::nullopt;
        }
        if (address.displayName.empty()) {
            address.displayName = plainText(trim(text.substr(0, open)));
        }
        inner = text.substr(open + 1, close - open - 1);
        text = text.substr(close + 1);
    } else {
        // Without brackets the parameters are the header's, not the URI's (RFC 3261 section 20).
        auto const end = text.find(';');
        inner = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end);
    }
    auto const uri = Uri::parse(inner);
    if (!uri) {
        return std::nullopt;
    }
    address.uri = *uri;
    address.parameters = parsePairs(text, ';');
    return address;
}

std::string NameAddr::format() const
{
    std::string text;
    if (!displayName.empty()) {
        text += '"';
        for (char const character : displayName) {
            if (character == '"' || character == '\\') {
                text += '\\';
            }
            text += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
        }
        text += "\" ";
    }
    return text + "<" + uri.format() + ">" + formatParameters(parameters);
}

std::optional<std::string> NameAddr::parameter(std::string_view name) const
{
    return find(parameters, name);
}

std::string userOf(std::string_view text)
{
    auto const address = NameAddr::parse(text);
    return address ? address->uri.user : std::string();
}

std::string targetUri(std::string_view dialled, std::string_view domain)
{
    std::string_view const trimmed = trim(dialled);
    for (std::string_view const scheme : {"sip:", "sips:", "tel:"}) {
        if (equalsIgnoringCase(trimmed.substr(0, scheme.size()), scheme)) {
            return std::string(trimmed);
        }
    }
    if (trimmed.find('@') != std::string_view::npos) {
        return "sip:" + std::string(trimmed);
    }
    return "sip:" + escape(trimmed, kUserExtra) + "@" + std::string(domain);
}

std::vector<std::string> splitList(std::string_view text)
{
    std::vector<std::string> values;
    while (!text.empty()) {
        std::string_view const value = firstOfList(text);
        if (!trim(value).empty()) {
            values.emplace_back(trim(value));
        }
        text.remove_prefix(std::min(text.size(), value.size() + 1));
    }
    return values;
}

std::string escapeUser(std::string_view text)
{
    return escape(text, kUserExtra);
}

std::string escapeHeaderValue(std::string_view text)
{
    return escape(text, kHeaderExtra);
}

}  // namespace telephone::sip

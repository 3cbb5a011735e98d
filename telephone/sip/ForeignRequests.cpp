#include "telephone/sip/ForeignRequests.h"

#include <algorithm>
#include <array>

namespace telephone::sip {

namespace {

constexpr std::string_view kVersion = "SIP/2.0";
constexpr std::string_view kReadableScheme = "sip:";
constexpr auto kSchemes = std::to_array<std::string_view>({"sip", "sips", "tel"});

struct RequestLine
{
    std::string_view method;
    std::string_view uri;
    std::string_view version;
};

std::optional<RequestLine> requestLineOf(std::string_view packet)
{
    std::string_view const line = packet.substr(0, packet.find_first_of("\r\n"));
    auto const first = line.find(' ');
    auto const last = line.rfind(' ');
    if (first == std::string_view::npos || last == first) {
        return std::nullopt;
    }
    return RequestLine{line.substr(0, first), line.substr(first + 1, last - first - 1), line.substr(last + 1)};
}

bool isKnownScheme(std::string_view scheme)
{
    return std::any_of(kSchemes.begin(), kSchemes.end(),
                       [scheme](std::string_view known) { return equalsIgnoringCase(scheme, known); });
}

}  // namespace

std::optional<Strangeness> makeReadable(mbuf& packet)
{
    std::string_view const text(reinterpret_cast<char const*>(mbuf_buf(&packet)), mbuf_get_left(&packet));
    auto const line = requestLineOf(text);
    if (!line || !line->version.starts_with("SIP/") || line->method.starts_with("SIP/")) {
        return std::nullopt;
    }
    bool const isOtherVersion = line->version != kVersion;
    bool const isOtherScheme = !isKnownScheme(line->uri.substr(0, line->uri.find(':')));
    std::size_t const room = line->uri.size() + line->version.size();
    if ((!isOtherVersion && !isOtherScheme) || room <= kVersion.size() + kReadableScheme.size()) {
        return std::nullopt;
    }
    std::string readable(kReadableScheme);
    readable.resize(room - kVersion.size(), 'x');
    readable += ' ';
    readable += kVersion;
    std::copy(readable.begin(), readable.end(), mbuf_buf(&packet) + line->method.size() + 1);
    return isOtherVersion ? Strangeness::kVersion : Strangeness::kScheme;
}

void mark(sip_msg& message, Strangeness strangeness)
{
    (strangeness == Strangeness::kVersion ? message.ver : message.uri.scheme) = slice("other");
}

std::optional<Strangeness> strangenessOf(sip_msg const& request)
{
    if (view(request.ver) != kVersion) {
        return Strangeness::kVersion;
    }
    return isKnownScheme(view(request.uri.scheme)) ? std::nullopt : std::optional(Strangeness::kScheme);
}

}  // namespace telephone::sip

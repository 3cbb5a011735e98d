#include "telephone/team/UrlPush.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <stdexcept>

#include <arpa/inet.h>
#include <httplib.h>

#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/team/LogComponent.h"

namespace telephone {

namespace {

constexpr std::string_view kScheme = "http://";
constexpr std::chrono::seconds kTimeout{5};
constexpr std::size_t kQueuedRequests = 1000;

bool isThisMachine(std::string const& host)
{
    in_addr address{};
    bool const isNumeric = inet_pton(AF_INET, host.c_str(), &address) == 1;
    return host == "localhost" || (isNumeric && (ntohl(address.s_addr) >> 24U) == IN_LOOPBACKNET);
}

std::string escape(std::string const& text)
{
    constexpr std::string_view kUnreserved = "-._~";
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string escaped;
    for (char const each : text) {
        auto const byte = static_cast<unsigned char>(each);
        if (std::isalnum(byte) != 0 || kUnreserved.find(each) != std::string_view::npos) {
            escaped += each;
        } else {
            escaped += {'%', kHex[byte >> 4U], kHex[byte & 15U]};
        }
    }
    return escaped;
}

int portOf(std::string const& text)
{
    bool const isPort = !text.empty() && text.size() <= 5 &&
                        std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
    return isPort ? std::stoi(text) : 0;
}

}  // namespace

UrlPush::UrlPush(std::string const& address)
    : queue_("push requests", kQueuedRequests)
{
    if (address.empty()) {
        return;
    }
    auto const wrong = std::runtime_error("push address " + address + " is not http://127.0.0.1:port/path");
    if (address.compare(0, kScheme.size(), kScheme) != 0) {
        throw wrong;
    }
    auto const rest = address.substr(kScheme.size());
    auto const slash = std::min(rest.find('/'), rest.size());
    auto const authority = rest.substr(0, slash);
    auto const colon = authority.find(':');
    path_ = slash == rest.size() ? "/" : rest.substr(slash);
    host_ = authority.substr(0, colon);
    port_ = colon == std::string::npos ? 80 : portOf(authority.substr(colon + 1));
    if (!isThisMachine(host_) || port_ < 1 || port_ > 65535) {
        throw wrong;
    }
}

Outcome<> UrlPush::send(std::string const& url, std::string const& data)
{
    if (host_.empty()) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("\"{}\" cannot be pushed because push.address is not configured", url));
    }
    return queue_.post([this, target = target(path_, url, data)] { get(target); });
}

std::string UrlPush::target(std::string const& path, std::string const& url, std::string const& data)
{
    return path + (path.find('?') == std::string::npos ? "?" : "&") + "url=" + escape(url) + "&data=" + escape(data);
}

void UrlPush::get(std::string const& target) const
{
    httplib::Client client(host_, port_);
    client.set_connection_timeout(kTimeout);
    client.set_read_timeout(kTimeout);
    client.set_write_timeout(kTimeout);
    auto const answer = client.Get(target);
    if (!answer) {
        reportRefusal(kComponent, {RefusalKind::kUnavailable, fmt::format("the push to {}:{} failed: {}", host_, port_,
                                                                          httplib::to_string(answer.error()))});
    } else if (answer->status < 200 || answer->status > 299) {
        reportRefusal(kComponent, {RefusalKind::kUnavailable, fmt::format("the push to {}:{} was answered with {}",
                                                                          host_, port_, answer->status)});
    } else {
        log(kLogInfo, kComponent, "pushed to {}:{}: {}", host_, port_, answer->status);
    }
}

}  // namespace telephone

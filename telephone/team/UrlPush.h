// Push requests: passes a URL and data from an application on as one HTTP GET to the configured address,
// ".../path?url=...&data=...". Off without an address. Only addresses of this machine are allowed.
//
// TeamFeatures owns it. A thread of its own sends the requests in order.
#pragma once

#include <functional>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/framework/WorkQueue.h"

namespace telephone {

class UrlPush
{
public:
    // address: http://127.0.0.1:port/path, or empty. Throws std::runtime_error for any other.
    explicit UrlPush(std::string const& address);

    // Queues the request. Its outcome is logged.
    [[nodiscard]] Outcome<> send(std::string const& url, std::string const& data);
    void stop() { queue_.stop(); }

    // "/path?url=...&data=..." with the characters escaped that a query cannot contain (RFC 3986 section 3.4).
    static std::string target(std::string const& path, std::string const& url, std::string const& data);

private:
    void get(std::string const& target) const;

    std::string host_;  // empty when off
    int port_ = 80;
    std::string path_;
    WorkQueue queue_;
};

}  // namespace telephone

// Push requests: an application hands over a URL and data, and the telephone passes them on as one HTTP GET to the
// configured address, ".../path?url=...&data=...". Off without an address; only addresses of this machine are allowed.
//
// Owned by the team features; requests are sent one after the other on a thread of its own.
#pragma once

#include <functional>
#include <string>

#include "telephone/lines/WorkQueue.h"

namespace telephone {

class UrlPush
{
public:
    // `address`: http://127.0.0.1:port/path, or empty. Throws std::runtime_error for any other.
    explicit UrlPush(std::string const& address);

    // Queues the request; its outcome is in the log. False, with the reason there, when it is not sent at all.
    bool send(std::string const& url, std::string const& data);
    void stop() { queue_.stop(); }

    // "/path?url=...&data=..." with everything escaped that a query can't hold (RFC 3986 section 3.4).
    static std::string target(std::string const& path, std::string const& url, std::string const& data);

private:
    void get(std::string const& target) const;

    std::string host_;  // empty: off
    int port_ = 80;
    std::string path_;
    WorkQueue queue_;
};

}  // namespace telephone

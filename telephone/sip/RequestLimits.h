// How many requests are taken in: a token bucket for each source, and the total of those outside dialogs in the time
// for which the stack remembers one. Asked for each request before the stack keeps anything of it. Used under the lock.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>

#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

struct Limits
{
    // 0: any number
    int requests = 0;           // a second from one source
    int transactions = 0;       // remembered at once
    int subscriptions = 0;      // at once
    int connections = 0;        // accepted, at once
    int sourceConnections = 0;  // of these from one source
};

class RequestLimits
{
public:
    using Source = std::array<std::uint8_t, 16>;  // IP address

    explicit RequestLimits(Limits const& limits)
        : limits_(limits)
    {}

    // Takes a token of the source; false: it has none left. A trusted source has ten times as many.
    bool takeFrom(Source const& source, bool trusted);
    // Counts a transaction; false: there are too many.
    bool remember();
    bool hasRoomForSubscription(std::size_t present) const;

private:
    using Time = SteadyClock::time_point;
    struct Bucket
    {
        double tokens = 0;
        Time filled;
    };
    struct Shelf
    {
        std::map<Source, Bucket> buckets;
        Time swept;  // when the full ones were taken out last
    };

    double rateOf(bool trusted) const;
    Bucket& bucketOf(Source const& source, bool trusted, Time now);

    Limits const limits_;
    Shelf shelves_[2];  // of untrusted sources, of trusted ones
    std::deque<Time> remembered_;
};

}  // namespace telephone::sip

#include "telephone/sip/RequestLimits.h"

#include <algorithm>

namespace telephone::sip {

namespace {

constexpr int kTrustFactor = 10;
// A bucket holds the tokens of that many seconds.
constexpr double kBurst = 2;
constexpr std::size_t kMostSources = 1000;
// The time for which a transaction lives after its answer (RFC 3261: 64 * T1).
constexpr std::chrono::seconds kMemory{32};

double secondsBetween(SteadyClock::time_point begin, SteadyClock::time_point end)
{
    return std::chrono::duration<double>(end - begin).count();
}

}  // namespace

double RequestLimits::rateOf(bool trusted) const
{
    return limits_.requests * (trusted ? kTrustFactor : 1);
}

// A bucket that has had time to fill is as good as a new one. When too many are not full, the other sources share one.
// They are looked through once a second at most: a flood of forged addresses must not buy a search with each request.
RequestLimits::Bucket& RequestLimits::bucketOf(Source const& source, bool trusted, Time now)
{
    auto& [buckets, swept] = shelves_[trusted ? 1 : 0];
    bool const isKnown = buckets.contains(source);
    if (!isKnown && buckets.size() >= kMostSources && secondsBetween(swept, now) >= 1) {
        swept = now;
        std::erase_if(buckets, [now](auto const& each) { return secondsBetween(each.second.filled, now) >= kBurst; });
    }
    bool const isShared = !isKnown && buckets.size() >= kMostSources;
    return buckets.try_emplace(isShared ? Source{} : source, Bucket{rateOf(trusted) * kBurst, now}).first->second;
}

bool RequestLimits::takeFrom(Source const& source, bool trusted)
{
    if (limits_.requests == 0) {
        return true;
    }
    auto const now = SteadyClock::now();
    Bucket& bucket = bucketOf(source, trusted, now);
    double const rate = rateOf(trusted);
    bucket.tokens = std::min(bucket.tokens + rate * secondsBetween(bucket.filled, now), rate * kBurst);
    bucket.filled = now;
    if (bucket.tokens < 1) {
        return false;
    }
    bucket.tokens -= 1;
    return true;
}

bool RequestLimits::remember()
{
    if (limits_.transactions == 0) {
        return true;
    }
    auto const now = SteadyClock::now();
    while (!remembered_.empty() && now - remembered_.front() > kMemory) {
        remembered_.pop_front();
    }
    if (remembered_.size() >= static_cast<std::size_t>(limits_.transactions)) {
        return false;
    }
    remembered_.push_back(now);
    return true;
}

bool RequestLimits::hasRoomForSubscription(std::size_t present) const
{
    return limits_.subscriptions == 0 || present < static_cast<std::size_t>(limits_.subscriptions);
}

}  // namespace telephone::sip

#include "telephone/sip/PlayoutBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace telephone::sip {

namespace {

constexpr std::uint32_t kFrame = kFrameSamples;
constexpr std::uint32_t kSamplesPerMillisecond = kSampleRate / 1000;
constexpr auto kLongest = static_cast<std::uint32_t>(PlayoutBuffer::kLongestDelay.count()) * kSamplesPerMillisecond;
constexpr std::int32_t kWindow = 2 * kLongest;  // timestamps farther away are a jump
constexpr unsigned kProof = 3;                  // packets in a row
constexpr unsigned kMostFilled = 3;             // frames
constexpr unsigned kObserved = 250;             // packets before the delay becomes shorter: 5 s
// Periods of voices, and how much of the end is compared with what was before.
constexpr std::size_t kShortestPeriod = 40;
constexpr std::size_t kLongestPeriod = 160;
constexpr std::size_t kCompared = 80;

std::int32_t distance(std::uint32_t from, std::uint32_t to)
{
    return static_cast<std::int32_t>(to - from);
}

}  // namespace

std::chrono::milliseconds PlayoutBuffer::delay() const
{
    return std::chrono::milliseconds(target_ / kSamplesPerMillisecond);
}

void PlayoutBuffer::clear()
{
    ssrc_.reset();
    playing_ = false;
    next_ = end_;
    concealed_ = 0;
    history_.fill(0);
}

bool PlayoutBuffer::isStrange(PacketPlace const& place) const
{
    bool const idle = !playing_ && buffered() == 0;
    bool const jumps = !idle && std::abs(distance(next_, place.timestamp)) > kWindow;
    return ssrc_ && (place.ssrc != *ssrc_ || jumps);
}

// Whether enough packets have come that continue each other.
bool PlayoutBuffer::isProven(PacketPlace const& place)
{
    bool const continues = candidate_.ssrc == place.ssrc && candidate_.sequence == place.sequence;
    candidates_ = continues ? candidates_ + 1 : 1;
    candidate_ = {place.ssrc, static_cast<std::uint16_t>(place.sequence + 1), 0};
    return candidates_ >= kProof;
}

void PlayoutBuffer::begin(PacketPlace const& place)
{
    if (!ring_) {
        ring_ = std::make_unique<Ring>();
    }
    ring_->present.reset();
    ssrc_ = place.ssrc;
    next_ = end_ = place.timestamp;
    playing_ = false;
    waited_ = margins_ = 0;
    stretch_ = shorten_ = false;
    missing_.fill(place.timestamp - 2 * kWindow);
}

void PlayoutBuffer::lengthen(std::uint32_t samples)
{
    target_ = std::min(target_ + samples, kLongest);
    margins_ = 0;
    shorten_ = false;
}

void PlayoutBuffer::put(PacketPlace const& place, std::span<std::int16_t const> samples)
{
    bool const strange = isStrange(place);
    if (strange && !isProven(place)) {
        return;
    }
    candidates_ = 0;
    if (!playing_ && buffered() == 0 && ssrc_ && place.timestamp == next_) {
        lengthen(kMostFilled * kFrame);  // not a pause of the speaker: the network has stood still
    }
    bool const restarts = strange || !ssrc_ || (!playing_ && buffered() == 0);
    if (restarts) {
        begin(place);
    }
    noteArrival(place.timestamp);
    std::int32_t const missed = distance(place.timestamp, next_);
    if (missed < static_cast<std::int32_t>(samples.size())) {
        store(place.timestamp, samples);
    } else if (playing_ && !stretch_ && wasMissing(place.timestamp)) {
        lengthen(kFrame);
        stretch_ = true;
    }
    if (buffered() > kLongest + kFrame) {
        moveTo(end_ - target_);
    }
}

// What was filled while the buffer was empty takes the place of what has not come until now.
void PlayoutBuffer::noteArrival(std::uint32_t timestamp)
{
    if (unsigned const waited = std::exchange(waited_, 0)) {
        std::int32_t const gap = distance(next_, timestamp);
        if (gap <= 0) {
            lengthen(waited * kFrame);
        } else {
            std::uint32_t const until = next_ + std::min(static_cast<std::uint32_t>(gap), waited * kFrame);
            for (std::uint32_t at = next_; distance(at, until) > 0; at += kFrame) {
                noteMissing(at);
            }
            moveTo(until);
        }
    }
    if (playing_) {
        noteMargin(distance(next_, timestamp));
    }
}

void PlayoutBuffer::noteMargin(std::int32_t margin)
{
    leastMargin_ = margins_ == 0 ? margin : std::min(leastMargin_, margin);
    if (++margins_ < kObserved) {
        return;
    }
    margins_ = 0;
    if (leastMargin_ >= static_cast<std::int32_t>(kFrame)) {
        shorten_ = true;
        target_ = std::max(target_ - kFrame, kFrame);
    }
}

void PlayoutBuffer::store(std::uint32_t timestamp, std::span<std::int16_t const> samples)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        auto const at = timestamp + static_cast<std::uint32_t>(i);
        if (distance(next_, at) >= 0) {
            ring_->samples[at % kCapacity] = samples[i];
            ring_->present.set(at % kCapacity);
        }
    }
    auto const behind = timestamp + static_cast<std::uint32_t>(samples.size());
    if (distance(end_, behind) > 0) {
        end_ = behind;
    }
}

// Forgets everything before.
void PlayoutBuffer::moveTo(std::uint32_t timestamp)
{
    for (; next_ != timestamp; ++next_) {
        ring_->present.reset(next_ % kCapacity);
    }
    if (distance(end_, next_) > 0) {
        end_ = next_;
    }
}

// A copy of one that was played is not late.
bool PlayoutBuffer::wasMissing(std::uint32_t timestamp) const
{
    return std::ranges::any_of(missing_, [timestamp](std::uint32_t each) {
        return distance(timestamp, each) >= 0 && distance(each, timestamp + kFrame) > 0;
    });
}

// Replaces those samples of the frame that have come, and says how many.
std::uint32_t PlayoutBuffer::read(std::uint32_t timestamp, AudioFrame& frame) const
{
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < kFrame; ++i) {
        auto const at = (timestamp + i) % kCapacity;
        if (ring_->present.test(at)) {
            frame[i] = ring_->samples[at];
            ++count;
        }
    }
    return count;
}

bool PlayoutBuffer::take(AudioFrame& frame)
{
    if (!playing_ && buffered() < target_) {
        return false;
    }
    playing_ = true;
    if (std::exchange(stretch_, false)) {
        conceal(frame);
        return true;
    }
    if (shorten(frame)) {
        return true;
    }
    if (buffered() == 0 && ++waited_ > kMostFilled) {
        playing_ = false;
        return false;
    }
    fill(frame);
    if (buffered() > 0) {
        moveTo(next_ + kFrame);
    }
    return true;
}

// What has come, and something in place of the rest.
void PlayoutBuffer::fill(AudioFrame& frame)
{
    std::uint32_t const come = read(next_, frame);
    if (come < kFrame) {
        conceal(frame);
        (void)read(next_, frame);
    }
    if (come > 0) {
        concealed_ = 0;
        remember(frame);
    } else if (buffered() > 0) {
        noteMissing(next_);
    }
}

// Two frames in the time of one, the first fading into the second.
bool PlayoutBuffer::shorten(AudioFrame& frame)
{
    AudioFrame first{};
    AudioFrame second{};
    if (!shorten_ || buffered() < 2 * kFrame || read(next_, first) < kFrame || read(next_ + kFrame, second) < kFrame) {
        return false;
    }
    shorten_ = false;
    for (std::size_t i = 0; i < frame.size(); ++i) {
        auto const part = static_cast<int>(i);
        auto const whole = static_cast<int>(frame.size());
        frame[i] = static_cast<std::int16_t>((first[i] * (whole - part) + second[i] * part) / whole);
    }
    moveTo(next_ + 2 * kFrame);
    remember(frame);
    return true;
}

void PlayoutBuffer::remember(AudioFrame const& frame)
{
    std::copy(history_.begin() + kFrame, history_.end(), history_.begin());
    std::copy(frame.begin(), frame.end(), history_.begin() + kFrame);
}

// The period with which the end of the history resembles what was before it most.
std::size_t PlayoutBuffer::pitchLag() const
{
    auto const end = history_.size();
    std::size_t best = kLongestPeriod;
    double bestLikeness = 0;
    for (std::size_t lag = kShortestPeriod; lag <= kLongestPeriod; ++lag) {
        double product = 0;
        double energy = 1;
        for (std::size_t i = end - kCompared; i < end; ++i) {
            product += static_cast<double>(history_[i]) * history_[i - lag];
            energy += static_cast<double>(history_[i - lag]) * history_[i - lag];
        }
        double const likeness = product > 0 ? product * product / energy : 0;
        if (likeness > bestLikeness) {
            bestLikeness = likeness;
            best = lag;
        }
    }
    return best;
}

void PlayoutBuffer::conceal(AudioFrame& frame)
{
    constexpr std::size_t kFade = kMostFilled * kFrame;
    std::size_t const lag = pitchLag();
    for (std::size_t i = 0; i < frame.size(); ++i) {
        std::size_t const at = concealed_ + i;
        auto const loudness = static_cast<int>(at < kFade ? kFade - at : 0);
        std::int16_t const sample = history_[history_.size() - lag + at % lag];
        frame[i] = static_cast<std::int16_t>(sample * loudness / static_cast<int>(kFade));
    }
    concealed_ += kFrame;
}

}  // namespace telephone::sip

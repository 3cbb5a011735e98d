// Turns packets that come early, late, twice, out of order or not at all into a frame of audio each 20 ms. Owned by its
// stream; used under the lock.
//
//   - It delays the audio by 20 to 200 ms: a packet that comes too late makes the delay longer at once; if all of the
//     last five seconds came earlier than needed, it becomes shorter by 20 ms.
//   - A gap is filled with what was heard last, repeated at its pitch and faded out in 60 ms. Then there is nothing,
//     until packets come again.
//   - One source at a time is heard (SSRC). Another one, or a jump of the timestamps, counts once three packets in a
//     row have come, or at once when there is nothing else to play.
#pragma once

#include <array>
#include <bitset>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "telephone/sip/Audio.h"

namespace telephone::sip {

// Where a packet belongs.
struct PacketPlace
{
    std::uint32_t ssrc = 0;
    std::uint16_t sequence = 0;
    std::uint32_t timestamp = 0;
};

class PlayoutBuffer
{
public:
    static constexpr std::chrono::milliseconds kShortestDelay{20};
    static constexpr std::chrono::milliseconds kLongestDelay{200};

    void put(PacketPlace const& place, std::span<std::int16_t const> samples);
    // The next frame; false: there is nothing to play. To be called each 20 ms.
    bool take(AudioFrame& frame);
    // Forgets all audio and its source, but not the delay that the network needs.
    void clear();

    // What packets wait at least before they are played.
    std::chrono::milliseconds delay() const;

private:
    static constexpr std::uint32_t kCapacity = 4096;  // samples; a power of 2

    struct Ring
    {
        std::array<std::int16_t, kCapacity> samples{};
        std::bitset<kCapacity> present;
    };

    std::uint32_t buffered() const { return end_ - next_; }
    bool isProven(PacketPlace const& place);
    bool isStrange(PacketPlace const& place) const;
    void begin(PacketPlace const& place);
    void noteArrival(std::uint32_t timestamp);
    void noteMargin(std::int32_t margin);
    void store(std::uint32_t timestamp, std::span<std::int16_t const> samples);
    void lengthen(std::uint32_t samples);
    void moveTo(std::uint32_t timestamp);
    std::uint32_t read(std::uint32_t timestamp, AudioFrame& frame) const;
    void fill(AudioFrame& frame);
    void noteMissing(std::uint32_t timestamp) { missing_[missingAt_++ % missing_.size()] = timestamp; }
    bool wasMissing(std::uint32_t timestamp) const;
    bool shorten(AudioFrame& frame);
    void conceal(AudioFrame& frame);
    void remember(AudioFrame const& frame);
    std::size_t pitchLag() const;

    std::unique_ptr<Ring> ring_;  // made for the first packet
    std::optional<std::uint32_t> ssrc_;
    std::uint32_t next_ = 0;  // timestamp of the sample to be played next
    std::uint32_t end_ = 0;   // timestamp behind the last one
    bool playing_ = false;
    std::uint32_t target_ = kFrameSamples;  // samples to wait for before playing

    unsigned waited_ = 0;   // frames filled since the buffer ran empty
    bool stretch_ = false;  // fill a frame to make the delay longer
    bool shorten_ = false;
    std::array<std::uint32_t, 16> missing_{};  // frames that had not come when they were due
    std::size_t missingAt_ = 0;
    std::int32_t leastMargin_ = 0;
    unsigned margins_ = 0;

    PacketPlace candidate_;  // what would continue a strange packet
    unsigned candidates_ = 0;

    std::array<std::int16_t, 2 * kFrameSamples> history_{};  // what was played last
    std::size_t concealed_ = 0;                              // samples filled in a row
};

}  // namespace telephone::sip

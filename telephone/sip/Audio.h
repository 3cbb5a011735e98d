// The audio of a session: 8 kHz, 16 bit, mono, in frames of 20 ms. A stream reads the frames that it sends from a
// source and writes the frames that it receives to a sink. Both belong to the user, who detaches them before destroying
// them. They are called on the loop's thread with the lock held and must not block.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace telephone::sip {

constexpr unsigned kSampleRate = 8000;
constexpr std::size_t kFrameSamples = 160;
constexpr std::chrono::milliseconds kFrameTime{20};

using AudioFrame = std::array<std::int16_t, kFrameSamples>;

class AudioSource
{
public:
    virtual ~AudioSource() = default;
    // Fills the next frame to be sent; false sends silence. Called every 20 ms while the direction of the call allows
    // sending.
    virtual bool readFrame(AudioFrame& frame) = 0;
    // In virtual time instead of so many calls of readFrame whose frames nobody hears.
    virtual void skipFrames(std::uint64_t /*count*/) {}
};

class AudioSink
{
public:
    virtual ~AudioSink() = default;
    // The next frame of what is received, every 20 ms while anything is. Short gaps are filled.
    virtual void writeFrame(AudioFrame const& frame) = 0;
    // False: frames that are written now are dropped, so in virtual time they need not come.
    virtual bool isListening() const { return true; }
};

// Directions as in SDP (RFC 3264), seen from this end. The values combine the bits "receives" (1) and "sends" (2).
enum class Direction : int
{
    kInactive = 0,
    kReceiveOnly = 1,
    kSendOnly = 2,
    kSendReceive = 3
};

constexpr bool sends(Direction direction)
{
    return (static_cast<int>(direction) & 2) != 0;
}
constexpr bool receives(Direction direction)
{
    return (static_cast<int>(direction) & 1) != 0;
}

// Whether the audio of calls is encrypted (SRTP).
enum class Encryption : int
{
    kNone,      // neither offered nor accepted
    kOptional,  // where the far end does it, too
    kRequired,  // a call without it fails
};

// What a stream has sent and received since it began.
struct AudioStatistics
{
    std::uint64_t sent = 0;      // packets
    std::uint64_t received = 0;  // packets of the far end
    std::uint64_t lost = 0;      // packets of the far end that never came
    std::chrono::microseconds jitter{0};
    // What the far end reports (RTCP); nothing: it has not yet.
    std::optional<std::uint64_t> farLost;
    std::optional<std::chrono::microseconds> farJitter;
    std::optional<std::chrono::microseconds> roundTrip;
    // Dropped packets.
    std::uint64_t foreign = 0;   // from another address
    std::uint64_t forged = 0;    // not encrypted with the far end's key
    std::uint64_t replayed = 0;  // copies of encrypted ones
};

// RTP with G.711 on a socket of its own, owned by its session. The session starts it with the first answer and updates
// direction and far address with every later one.
class AudioStream
{
public:
    virtual ~AudioStream() = default;

    virtual void setSource(AudioSource* source) = 0;  // null: silence
    virtual void setSink(AudioSink* sink) = 0;        // null: received audio is dropped
    // Sends the received audio back instead of the source's.
    virtual void setEcho(bool echo) = 0;
    // To be called before its source gives anything else, and before its sink begins or ends to listen. In virtual time
    // the stream then makes up for frames that nobody heard.
    virtual void catchUp() = 0;

    virtual Direction direction() const = 0;  // agreed by both ends
    virtual std::string codec() const = 0;    // "PCMU" or "PCMA"; empty until agreed
    virtual bool isEncrypted() const = 0;
    virtual AudioStatistics statistics() const = 0;
};

}  // namespace telephone::sip

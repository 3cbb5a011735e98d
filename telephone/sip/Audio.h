// The audio side of a session: 8 kHz, 16 bit, mono, in frames of 20 ms. A stream of a session takes frames from a
// source and gives what it hears to a sink; both belong to the user, must outlive their use or be taken away before,
// and are called on the loop's thread with the lock held, so they must be quick and must not block.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
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
    // Fills the next frame to be sent; false: nothing to say, silence is sent. Called each 20 ms while the direction of
    // the call lets us send.
    virtual bool readFrame(AudioFrame& frame) = 0;
};

class AudioSink
{
public:
    virtual ~AudioSink() = default;
    // What was heard, decoded, as it arrives: about each 20 ms, in the order of arrival, gaps are not filled.
    virtual void writeFrame(AudioFrame const& frame) = 0;
};

// Directions as in SDP (RFC 3264), seen from this end; the values are the bits "receives" (1) and "sends" (2).
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

// RTP with G.711 on one socket of its own. Made and owned by its session, which starts it with the first answer and
// changes its direction and far address with every later one.
class AudioStream
{
public:
    virtual ~AudioStream() = default;

    virtual void setSource(AudioSource* source) = 0;  // null: silence
    virtual void setSink(AudioSink* sink) = 0;        // null: dropped
    // Sends back what is heard instead of what a source says.
    virtual void setEcho(bool echo) = 0;

    virtual Direction direction() const = 0;  // what both ends agreed on
    virtual bool isRunning() const = 0;
    virtual std::string codec() const = 0;  // "PCMU", "PCMA"; empty before it is agreed
    virtual std::uint16_t localPort() const = 0;
    virtual std::string remoteAddress() const = 0;  // "address:port"; empty before it is known

    virtual std::uint64_t framesSent() const = 0;
    virtual std::uint64_t framesReceived() const = 0;
};

}  // namespace telephone::sip

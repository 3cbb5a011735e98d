// The RTP stream of one session (RFC 3550, 3551, 4733): sockets on a free pair of ports, G.711 and telephone-events in
// both directions, and a report each 5 seconds. Owned by its session; used under the lock.
//
// In virtual time both ends are in this process, and a packet of audio to which nobody listens is counted instead of
// being encoded and sent: it could change nothing. Its frame of the source is skipped, and it uses no sequence number.
// While that is all that there is to do, the stream needs no beats and reports nothing, so that hours of it cost
// nothing. While a fault may befall RTP (DatagramFaults.h), every packet is sent.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "telephone/sip/Audio.h"
#include "telephone/sip/FarAddress.h"
#include "telephone/sip/MediaClock.h"
#include "telephone/sip/PlayoutBuffer.h"
#include "telephone/sip/RtcpReports.h"
#include "telephone/sip/SdpNegotiation.h"
#include "telephone/sip/SrtpContext.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

class RtpStream final : public AudioStream, private MediaClockListener
{
public:
    // Binds a free port; throws std::runtime_error if there is none.
    RtpStream(MediaClock& clock, sa const& localAddress);
    ~RtpStream() override;

    std::uint16_t localPort() const { return sa_port(&local_); }
    // Starts the stream, or changes it to a new agreement.
    void apply(SdpNegotiation::Agreement const& agreement);
    void stop();

    bool canSendDigits() const;
    void sendDigits(std::string const& digits, std::chrono::milliseconds duration);
    // Packets that were not sent, since they would change nothing, up to the last beat or `catchUp`.
    std::uint64_t unheard() const { return unheard_; }
    // When the last packet came, or would have come had anybody listened; milliseconds of the stack's clock, 0: never.
    std::uint64_t lastHeard() const { return lastHeard_; }
    void onDigit(std::function<void(char)> heard) { digitHeard_ = std::move(heard); }

    void setSource(AudioSource* source) override;
    void setSink(AudioSink* sink) override;
    void setEcho(bool echo) override;
    void catchUp() override { MediaClock::catchUp(); }
    Direction direction() const override { return agreement_.direction; }
    std::string codec() const override { return agreement_.codec; }
    bool isEncrypted() const override { return encryptor_ != nullptr; }
    AudioStatistics statistics() const override;

private:
    struct Digit
    {
        char key = 0;
        unsigned beats = 0;  // how long it is held
    };

    void onBeat() override;
    [[nodiscard]] bool needsBeats() const override;
    void makeUpFor(std::uint64_t beats) override;
    [[nodiscard]] bool sendsNow() const;
    bool nextFrame(AudioFrame& frame);
    void skipFrames(std::uint64_t count);
    void sendAudio();
    [[nodiscard]] bool isHeard() const;
    // Whether a packet sent now could change anything.
    [[nodiscard]] bool matters() const;
    void countUnheard(std::uint64_t packets);
    // Whether what it receives reaches somebody. The echo of what nobody hears does not, nor that of an echo.
    [[nodiscard]] bool isListening() const;
    [[nodiscard]] bool hasListener() const;
    void sendEvent();
    void send(int payloadType, bool marker, std::uint32_t timestamp, std::uint8_t const* payload, std::size_t size);
    void useKeys();
    bool decrypt(mbuf& packet, PacketKind kind);
    int openPorts();
    int openNextPort();
    void sendReport();
    void receive(sa const& from, mbuf* packet);
    void receiveReport(sa const& from, mbuf* packet);
    void receiveAudio(rtp_header const& header, std::uint8_t const* payload, std::size_t size, bool aLaw);
    // Passes on the next frame of what was received.
    void play();
    // Whether anybody here wants what is received.
    bool wantsAudio() const;
    void receiveEvent(rtp_header const& header, std::uint8_t const* payload, std::size_t size);

    MediaClock& clock_;
    Ref<udp_sock> socket_;
    Ref<udp_sock> reportSocket_;
    sa local_{};
    SdpNegotiation::Agreement agreement_;
    std::unique_ptr<SrtpContext> encryptor_;  // null: not encrypted
    std::unique_ptr<SrtpContext> decryptor_;
    FarAddress far_;
    AudioStatistics statistics_;
    AudioSource* source_ = nullptr;
    AudioSink* sink_ = nullptr;
    bool echo_ = false;
    bool running_ = false;
    bool talkspurt_ = true;  // the next packet carries the marker

    std::uint32_t ssrc_;
    std::uint16_t sequence_;
    std::uint32_t timestamp_;
    std::uint64_t unheard_ = 0;
    RtcpReports reports_;
    FarAddress farReports_;
    std::uint16_t farReportCount_ = 0;
    unsigned beatsSinceReport_ = 0;
    std::uint64_t lastHeard_ = 0;

    std::deque<Digit> digits_;
    unsigned eventBeat_ = 0;  // beats since the present digit began
    std::uint32_t eventTimestamp_ = 0;
    bool eventSeen_ = false;
    std::uint32_t eventSeenTimestamp_ = 0;
    std::function<void(char)> digitHeard_;

    PlayoutBuffer playout_;
    std::deque<AudioFrame> echoed_;
};

}  // namespace telephone::sip

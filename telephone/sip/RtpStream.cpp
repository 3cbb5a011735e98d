#include "telephone/sip/RtpStream.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "telephone/sip/DatagramFaults.h"
#include "telephone/sip/MemoryNetwork.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

using namespace std::chrono_literals;

constexpr std::string_view kEventKeys = "0123456789*#ABCD";
constexpr unsigned kEventVolume = 10;    // -10 dBm0
constexpr unsigned kEndRepeats = 3;      // RFC 4733 section 2.5.1.4
constexpr unsigned kPauseBeats = 3;      // between two digits
constexpr std::size_t kEchoFrames = 10;  // longest delay of the echo
constexpr unsigned kFrameSamplesWide = kFrameSamples;
constexpr std::size_t kMostSamples = 1600;  // in a packet: 200 ms
constexpr int kMostAttempts = 64;           // to find a free pair of ports
constexpr unsigned kReportBeats = 5s / kFrameTime;

// The streams of this process by their local address, in virtual time. Used under the lock.
std::map<SocketAddress, RtpStream*>& streams()
{
    static auto& all = *new std::map<SocketAddress, RtpStream*>;  // never destroyed, as the network
    return all;
}

// A name for RTCP that says nothing about its owner (RFC 7022 section 4.2).
std::string randomName()
{
    std::array<char, 17> name{};
    rand_str(name.data(), name.size());
    return name.data();
}

RtpStream* streamAt(sa const& address)
{
    auto const found = streams().find(SocketAddress(address));
    return found == streams().end() ? nullptr : found->second;
}

}  // namespace

RtpStream::RtpStream(MediaClock& clock, sa const& localAddress)
    : clock_(clock)
    , local_(localAddress)
    , ssrc_(rand_u32())
    , sequence_(rand_u16() & 0x7fffU)  // not near its end (RFC 3711 section 3.3.1)
    , timestamp_(rand_u32())
    , reports_(ssrc_, randomName())
{
    if (int const error = openPorts()) {
        throw std::runtime_error("no RTP port: " + errorText(error));
    }
    if (isVirtual()) {
        streams()[SocketAddress(local_)] = this;
    }
}

// An even port for RTP and the next one for RTCP (RFC 3550 section 11).
int RtpStream::openPorts()
{
    int error = EADDRINUSE;
    for (int attempt = 0; error == EADDRINUSE && attempt < kMostAttempts; ++attempt) {
        sa_set_port(&local_, 0);
        error = udp_listen(socket_.out(), &local_, handlerOf<&RtpStream::receive>, this);
        if (!error) {
            error = udp_local_get(socket_.get(), &local_);
        }
        if (!error) {
            error = openNextPort();
        }
    }
    return error;
}

int RtpStream::openNextPort()
{
    if (sa_port(&local_) % 2 != 0) {
        return EADDRINUSE;
    }
    sa reports = local_;
    sa_set_port(&reports, static_cast<std::uint16_t>(sa_port(&local_) + 1));
    return udp_listen(reportSocket_.out(), &reports, handlerOf<&RtpStream::receiveReport>, this);
}

RtpStream::~RtpStream()
{
    stop();
    if (isVirtual()) {
        streams().erase(SocketAddress(local_));
    }
}

void RtpStream::apply(SdpNegotiation::Agreement const& agreement)
{
    catchUp();
    talkspurt_ = talkspurt_ || !sends(agreement_.direction);
    agreement_ = agreement;
    useKeys();
    far_.describe(agreement.remote);
    farReports_.describe(agreement.remoteReports);
    running_ = true;
    clock_.add(*this);
}

// A key that stays keeps its context: a new one would have forgotten how often the sequence has begun anew.
void RtpStream::useKeys()
{
    auto const use = [](std::unique_ptr<SrtpContext>& context, CryptoKey const& key, bool sends) {
        if (!context || context->key() != key) {
            context = std::make_unique<SrtpContext>(key, sends);
        }
    };
    if (agreement_.keys) {
        use(encryptor_, agreement_.keys->own, true);
        use(decryptor_, agreement_.keys->far, false);
    } else {
        encryptor_.reset();
        decryptor_.reset();
    }
}

void RtpStream::stop()
{
    catchUp();
    running_ = false;
    clock_.remove(*this);
    digits_.clear();
}

void RtpStream::setSource(AudioSource* source)
{
    catchUp();
    source_ = source;
}

void RtpStream::setSink(AudioSink* sink)
{
    catchUp();
    sink_ = sink;
}

void RtpStream::setEcho(bool echo)
{
    catchUp();
    echo_ = echo;
}

bool RtpStream::canSendDigits() const
{
    return running_ && agreement_.eventPayloadType >= 0 && sends(agreement_.direction);
}

void RtpStream::sendDigits(std::string const& digits, std::chrono::milliseconds duration)
{
    catchUp();
    auto const beats = std::clamp<std::int64_t>(duration / kFrameTime, 2, 250);
    for (char const key : digits) {
        digits_.push_back({key, static_cast<unsigned>(beats)});
    }
}

bool RtpStream::sendsNow() const
{
    return sends(agreement_.direction) && sa_isset(&far_.destination(), SA_ALL);
}

void RtpStream::onBeat()
{
    if (isVirtual() && !needsBeats()) {
        return makeUpFor(1);
    }
    play();
    timestamp_ += kFrameSamplesWide;
    if (++beatsSinceReport_ >= kReportBeats) {
        beatsSinceReport_ = 0;
        sendReport();
    }
    if (!sendsNow()) {
        return;
    }
    if (digits_.empty()) {
        sendAudio();
    } else {
        sendEvent();
    }
}

// A sink that listens may also be told what is sent.
bool RtpStream::needsBeats() const
{
    bool const isTapped = sink_ != nullptr && sink_->isListening();
    return isTapped || (sendsNow() && (!digits_.empty() || matters()));
}

void RtpStream::makeUpFor(std::uint64_t beats)
{
    timestamp_ += static_cast<std::uint32_t>(beats) * kFrameSamplesWide;
    playout_.clear();
    if (!sendsNow()) {
        return;
    }
    skipFrames(beats);
    countUnheard(beats);
    talkspurt_ = true;
}

void RtpStream::skipFrames(std::uint64_t count)
{
    if (echo_) {
        auto const skipped = std::min<std::uint64_t>(count, echoed_.size());
        echoed_.erase(echoed_.begin(), echoed_.begin() + static_cast<std::ptrdiff_t>(skipped));
    } else if (source_ != nullptr) {
        source_->skipFrames(count);
    }
}

bool RtpStream::nextFrame(AudioFrame& frame)
{
    if (echo_) {
        if (echoed_.empty()) {
            return false;
        }
        frame = echoed_.front();
        echoed_.pop_front();
        return true;
    }
    return source_ && source_->readFrame(frame);
}

bool RtpStream::hasListener() const
{
    return running_ && receives(agreement_.direction) && sink_ != nullptr && sink_->isListening();
}

bool RtpStream::isListening() const
{
    bool const echoes = running_ && receives(agreement_.direction) && echo_ && sends(agreement_.direction);
    RtpStream const* const far = echoes ? streamAt(far_.destination()) : nullptr;
    return hasListener() || (far != nullptr && far->hasListener());
}

bool RtpStream::isHeard() const
{
    RtpStream const* const far = streamAt(far_.destination());
    return far == nullptr ? isInMemory(far_.destination()) : far->isListening();
}

bool RtpStream::matters() const
{
    bool const arrivesHere = streamAt(far_.destination()) != nullptr;
    return isHeard() || (arrivesHere && datagramFaults().mayBefallRtp(local_, far_.destination()));
}

void RtpStream::countUnheard(std::uint64_t packets)
{
    unheard_ += packets;
    RtpStream* const far = streamAt(far_.destination());
    if (far != nullptr && far->running_) {
        far->lastHeard_ = tmr_jiffies();
    }
}

void RtpStream::sendAudio()
{
    AudioFrame frame{};
    if (!nextFrame(frame)) {
        frame.fill(0);
    }
    if (isVirtual() && !matters()) {
        countUnheard(1);
        talkspurt_ = true;
        return;
    }
    bool const aLaw = agreement_.codec == "PCMA";
    std::array<std::uint8_t, kFrameSamples> payload{};
    std::transform(frame.begin(), frame.end(), payload.begin(), [aLaw](std::int16_t sample) {
        // The encoder negates samples, which overflows for the most negative one.
        auto const safe = std::max<std::int16_t>(sample, -32767);
        return aLaw ? g711_pcm2alaw(safe) : g711_pcm2ulaw(safe);
    });
    send(agreement_.payloadType, std::exchange(talkspurt_, false), timestamp_, payload.data(), payload.size());
}

void RtpStream::sendEvent()
{
    Digit const& digit = digits_.front();
    bool const pausing = eventBeat_ >= digit.beats + kEndRepeats;
    if (!pausing && agreement_.eventPayloadType >= 0) {
        if (eventBeat_ == 0) {
            eventTimestamp_ = timestamp_;
        }
        bool const ended = eventBeat_ >= digit.beats;
        unsigned const held = std::min(eventBeat_ + 1, digit.beats) * kFrameSamplesWide;
        std::array<std::uint8_t, 4> const payload{static_cast<std::uint8_t>(kEventKeys.find(digit.key)),
                                                  static_cast<std::uint8_t>((ended ? 0x80 : 0) | kEventVolume),
                                                  static_cast<std::uint8_t>(held >> 8),
                                                  static_cast<std::uint8_t>(held & 0xff)};
        send(agreement_.eventPayloadType, eventBeat_ == 0, eventTimestamp_, payload.data(), payload.size());
    }
    if (++eventBeat_ < digit.beats + kEndRepeats + kPauseBeats) {
        return;
    }
    eventBeat_ = 0;
    digits_.pop_front();
    talkspurt_ = true;
}

void RtpStream::send(int payloadType, bool marker, std::uint32_t timestamp, std::uint8_t const* payload,
                     std::size_t size)
{
    rtp_header header{};
    header.ver = RTP_VERSION;
    header.m = marker;
    header.pt = static_cast<std::uint8_t>(payloadType);
    header.seq = sequence_++;
    header.ts = timestamp;
    header.ssrc = ssrc_;
    Ref<mbuf> packet;
    *packet.out() = mbuf_alloc(RTP_HEADER_SIZE + size);
    if (!packet || rtp_hdr_encode(packet.get(), &header) != 0 || mbuf_write_mem(packet.get(), payload, size) != 0) {
        return;
    }
    packet.get()->pos = 0;
    if (encryptor_ && !encryptor_->protect(*packet.get(), PacketKind::kAudio)) {
        return;
    }
    if (udp_send(socket_.get(), &far_.destination(), packet.get()) == 0) {
        reports_.onSent(size);
    }
}

void RtpStream::sendReport()
{
    Ref<mbuf> report;
    bool const possible = sa_isset(&farReports_.destination(), SA_ALL) && reports_.write(report, timestamp_);
    if (possible && (!encryptor_ || encryptor_->protect(*report.get(), PacketKind::kReport))) {
        (void)udp_send(reportSocket_.get(), &farReports_.destination(), report.get());
    }
}

void RtpStream::receiveReport(sa const& from, mbuf* packet)
{
    if (!running_ || !decrypt(*packet, PacketKind::kReport)) {
        return;
    }
    if (!farReports_.accept(from, farReportCount_++)) {
        ++statistics_.foreign;
        return;
    }
    reports_.read(*packet);
}

AudioStatistics RtpStream::statistics() const
{
    AudioStatistics statistics = statistics_;
    reports_.fillIn(statistics);
    return statistics;
}

// False for a packet that must be dropped.
bool RtpStream::decrypt(mbuf& packet, PacketKind kind)
{
    switch (decryptor_ ? decryptor_->unprotect(packet, kind) : SrtpResult::kDone) {
    case SrtpResult::kForged:
        ++statistics_.forged;
        return false;
    case SrtpResult::kReplayed:
        ++statistics_.replayed;
        return false;
    case SrtpResult::kDone:
        break;
    }
    return true;
}

void RtpStream::receive(sa const& from, mbuf* packet)
{
    rtp_header header{};
    // Decrypted first, so that only authentic packets can be taken for the far end's.
    if (!running_ || !decrypt(*packet, PacketKind::kAudio) || rtp_hdr_decode(&header, packet) != 0 ||
        header.ver != RTP_VERSION) {
        return;
    }
    if (!far_.accept(from, header.seq)) {
        ++statistics_.foreign;
        return;
    }
    ++statistics_.received;
    reports_.onReceived(header, agreement_.received[header.pt] != Payload::kEvents);
    lastHeard_ = tmr_jiffies();
    std::uint8_t const* payload = mbuf_buf(packet);
    std::size_t const size = mbuf_get_left(packet);
    switch (Payload const kind = agreement_.received[header.pt]) {
    case Payload::kEvents:
        return receiveEvent(header, payload, size);
    case Payload::kULaw:
    case Payload::kALaw:
        return receiveAudio(header, payload, size, kind == Payload::kALaw);
    case Payload::kUnknown:
        return;
    }
}

bool RtpStream::wantsAudio() const
{
    return receives(agreement_.direction) && (echo_ || (sink_ != nullptr && sink_->isListening()));
}

void RtpStream::receiveAudio(rtp_header const& header, std::uint8_t const* payload, std::size_t size, bool aLaw)
{
    std::array<std::int16_t, kMostSamples> samples;
    // Packets still under way after we stopped receiving are dropped.
    if (!wantsAudio() || size > samples.size()) {
        return;
    }
    std::transform(payload, payload + size, samples.begin(), [aLaw](std::uint8_t sample) {
        return static_cast<std::int16_t>(aLaw ? g711_alaw2pcm(sample) : g711_ulaw2pcm(sample));
    });
    playout_.put({header.ssrc, header.seq, header.ts}, {samples.data(), size});
}

void RtpStream::play()
{
    AudioFrame frame{};
    if (!wantsAudio()) {
        return playout_.clear();
    }
    if (!playout_.take(frame)) {
        return;
    }
    if (echo_ && echoed_.size() < kEchoFrames) {
        echoed_.push_back(frame);
    }
    if (sink_) {
        sink_->writeFrame(frame);
    }
}

void RtpStream::receiveEvent(rtp_header const& header, std::uint8_t const* payload, std::size_t size)
{
    if (size < 4 || payload[0] >= kEventKeys.size()) {
        return;
    }
    // All packets of one event carry the same timestamp, so that lost and repeated packets do not count twice.
    if (eventSeen_ && eventSeenTimestamp_ == header.ts) {
        return;
    }
    eventSeen_ = true;
    eventSeenTimestamp_ = header.ts;
    auto const heard = digitHeard_;
    if (heard) {
        heard(kEventKeys[payload[0]]);
    }
}

}  // namespace telephone::sip

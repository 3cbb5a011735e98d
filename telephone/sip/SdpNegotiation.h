// Offer and answer of one session (RFC 3264): one audio stream with G.711 and telephone-event. Owned by the session;
// used under the lock.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "telephone/sip/Audio.h"
#include "telephone/sip/CryptoNegotiation.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

// What the packets of a payload type contain.
enum class Payload : std::uint8_t
{
    kUnknown,
    kULaw,
    kALaw,
    kEvents,
};

class SdpNegotiation
{
public:
    // The result of the latest offer and answer.
    struct Agreement
    {
        std::string codec;  // empty: no common codec
        int payloadType = -1;
        int eventPayloadType = -1;  // -1: not supported by the far end
        sa remote{};
        sa remoteReports{};  // for RTCP
        Direction direction = Direction::kInactive;
        std::array<Payload, 128> received{};  // by payload type
        std::optional<CryptoKeys> keys;       // nothing: not encrypted
    };

    // What the next offer has, besides the formats.
    struct Offer
    {
        Direction direction;
        CryptoNegotiation crypto;
    };

    // Throws std::runtime_error without memory.
    SdpNegotiation(sa const& local, std::uint16_t rtpPort, std::vector<std::string> const& codecs,
                   bool telephoneEvents);
    ~SdpNegotiation();

    bool encode(Ref<mbuf>& description, bool offer);
    // Reads the far end's description. Returns 0, or an error of errno for the stack: EPROTO without a common codec.
    int decode(mbuf const* body, bool offer);
    // Why decode() found the latest description unacceptable; empty: no common codec, or it is malformed.
    std::string const& objection() const { return objection_; }

    // Before the first description of a session: begins with new keys.
    void useEncryption(Encryption encryption);
    // The next offer, or those from now on, with new keys or without any.
    [[nodiscard]] Outcome<> changeEncryption(bool encrypted) { return crypto_.change(encrypted); }
    Offer nextOffer() const { return {localDirection(), crypto_}; }
    void restore(Offer const& offer);

    void setLocalDirection(Direction direction);
    Direction localDirection() const;
    // The far end's direction, seen from this end. An address of 0.0.0.0 means that we must not send.
    Direction remoteDirection() const;
    Agreement agreement() const;
    bool isAgreed() const { return agreed_; }

private:
    bool holdsByAddress() const;
    CryptoDescription remoteCrypto() const;
    void addReceived(bool local, Agreement& agreement) const;

    Ref<sdp_session> session_;
    sdp_media* media_ = nullptr;
    CryptoNegotiation crypto_;
    bool bothProfiles_ = false;  // the stack accepts RTP/SAVP, too
    bool agreed_ = false;
    std::string objection_;
};

}  // namespace telephone::sip

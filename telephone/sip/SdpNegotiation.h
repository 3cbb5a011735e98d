// Offer and answer of one session (RFC 3264): one audio stream with G.711 and telephone-event. Owned by the session;
// used under the lock.
#pragma once

#include <string>
#include <vector>

#include "telephone/sip/Audio.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

class SdpNegotiation
{
public:
    // What both ends agreed on; valid after one offer and one answer.
    struct Agreement
    {
        std::string codec;  // empty: none in common
        int payloadType = -1;
        int eventPayloadType = -1;  // -1: the far end has no telephone-event
        sa remote{};
        Direction direction = Direction::kInactive;
    };

    // throws std::runtime_error without memory
    SdpNegotiation(sa const& local, std::uint16_t rtpPort, std::vector<std::string> const& codecs,
                   bool telephoneEvents);
    ~SdpNegotiation();

    bool encode(Ref<mbuf>& description, bool offer);
    // Reads the far end's description; an error of errno, EPROTO when there is no codec in common.
    int decode(mbuf const* body, bool offer);

    void setLocalDirection(Direction direction);
    Direction localDirection() const;
    // What the far end lets us do: its own direction seen from here, an address of 0.0.0.0 counted as "do not send".
    Direction remoteDirection() const;
    Agreement agreement() const;
    bool isAgreed() const { return agreed_; }

private:
    bool holdsByAddress() const;

    Ref<sdp_session> session_;
    sdp_media* media_ = nullptr;
    bool agreed_ = false;
};

}  // namespace telephone::sip

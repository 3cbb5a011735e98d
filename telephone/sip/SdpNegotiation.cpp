#include "telephone/sip/SdpNegotiation.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "telephone/sip/SdpText.h"

namespace telephone::sip {

namespace {

struct Codec
{
    char const* name;
    char const* payloadType;
    Payload payload;
};

constexpr auto kCodecs = std::to_array<Codec>({{"PCMU", "0", Payload::kULaw}, {"PCMA", "8", Payload::kALaw}});
constexpr char const* kEventName = "telephone-event";
constexpr char const* kEventPayloadType = "101";
constexpr char const* kCryptoName = "crypto";

void check(int error)
{
    if (error) {
        throw std::runtime_error("the session description cannot be made: " + errorText(error));
    }
}

Direction fromStack(sdp_dir direction)
{
    return static_cast<Direction>(direction);
}

Payload payloadOf(char const* name)
{
    for (auto const& codec : kCodecs) {
        if (equalsIgnoringCase(name, codec.name)) {
            return codec.payload;
        }
    }
    return equalsIgnoringCase(name, kEventName) ? Payload::kEvents : Payload::kUnknown;
}

// Calls with each format of ours that both ends support. The stack compares static payload types by number alone.
template <typename Use>
void forEachFormat(sdp_media const* media, bool local, Use use)
{
    list const* formats = sdp_media_format_lst(media, local);
    for (le const* element = formats ? formats->head : nullptr; element; element = element->next) {
        auto const* format = static_cast<sdp_format const*>(element->data);
        if (format->sup && format->name && payloadOf(format->name) != Payload::kUnknown) {
            use(*format);
        }
    }
}

}  // namespace

SdpNegotiation::SdpNegotiation(sa const& local, std::uint16_t rtpPort, std::vector<std::string> const& codecs,
                               bool telephoneEvents)
{
    check(sdp_session_alloc(session_.out(), &local));
    check(sdp_media_add(&media_, session_.get(), sdp_media_audio, rtpPort, sdp_proto_rtpavp));
    for (auto const& wanted : codecs) {
        for (auto const& codec : kCodecs) {
            if (equalsIgnoringCase(wanted, codec.name)) {
                check(sdp_format_add(nullptr, media_, false, codec.payloadType, codec.name, kSampleRate, 1, nullptr,
                                     nullptr, nullptr, false, nullptr));
            }
        }
    }
    if (telephoneEvents) {
        check(sdp_format_add(nullptr, media_, false, kEventPayloadType, kEventName, kSampleRate, 1, nullptr, nullptr,
                             nullptr, false, "0-15"));
    }
    check(sdp_media_set_lattr(media_, true, "ptime", "%u", static_cast<unsigned>(kFrameTime.count())));
}

SdpNegotiation::~SdpNegotiation() = default;

void SdpNegotiation::useEncryption(Encryption encryption)
{
    crypto_ = CryptoNegotiation(encryption);
    if (encryption != Encryption::kNone && !std::exchange(bothProfiles_, true)) {
        check(sdp_media_set_alt_protos(media_, 2, sdp_proto_rtpavp, sdp_proto_rtpsavp));
    }
}

bool SdpNegotiation::encode(Ref<mbuf>& description, bool offer)
{
    auto const crypto = offer ? crypto_.offer() : crypto_.answer();
    sdp_media_del_lattr(media_, kCryptoName);
    for (auto const& attribute : crypto.attributes) {
        if (sdp_media_set_lattr(media_, false, kCryptoName, "%s", attribute.c_str()) != 0) {
            return false;
        }
    }
    if (sdp_encode(description.out(), session_.get(), offer) != 0) {
        return false;
    }
    // The stack answers with the profile of the offer, and offers the one that was agreed before.
    return !offer || fill(description, withProfile(remainingText(description.get()),
                                                   crypto.isSecureProfile ? sdp_proto_rtpsavp : sdp_proto_rtpavp));
}

CryptoDescription SdpNegotiation::remoteCrypto() const
{
    CryptoDescription crypto;
    auto const add = [](char const*, char const* value, void* attributes) {
        static_cast<std::vector<std::string>*>(attributes)->emplace_back(value);
        return false;
    };
    (void)sdp_media_rattr_apply(media_, kCryptoName, add, &crypto.attributes);
    crypto.isSecureProfile = str_casecmp(sdp_media_proto(media_), sdp_proto_rtpsavp) == 0;
    return crypto;
}

void SdpNegotiation::restore(Offer const& offer)
{
    setLocalDirection(offer.direction);
    crypto_.restoreOffer(offer.crypto);
}

int SdpNegotiation::decode(mbuf const* body, bool offer)
{
    // A copy, because the stack tells by the unread rest of the message whether there was a body.
    Ref<mbuf> copy;
    objection_.clear();
    if (!fill(copy, completedDescription(remainingText(body)))) {
        return ENOMEM;
    }
    if (int const error = sdp_decode(session_.get(), copy.get(), offer)) {
        return error;
    }
    agreed_ = !agreement().codec.empty();
    if (!agreed_) {
        return EPROTO;
    }
    auto const encryption = offer ? crypto_.readOffer(remoteCrypto()) : crypto_.readAnswer(remoteCrypto());
    if (!encryption) {
        objection_ = encryption.error().reason;
    }
    return encryption ? 0 : EPROTO;
}

void SdpNegotiation::setLocalDirection(Direction direction)
{
    sdp_media_set_ldir(media_, static_cast<sdp_dir>(direction));
}

Direction SdpNegotiation::localDirection() const
{
    return fromStack(sdp_media_ldir(media_));
}

bool SdpNegotiation::holdsByAddress() const
{
    sa const* remote = sdp_media_raddr(media_);
    return agreed_ && remote && sa_af(remote) == AF_INET && sa_in(remote) == 0;
}

Direction SdpNegotiation::remoteDirection() const
{
    auto const told = static_cast<int>(sdp_media_rdir(media_));
    return static_cast<Direction>(holdsByAddress() ? told & SDP_RECVONLY : told);
}

// The far end sends the payload types that we gave; some send their own instead, where these are free.
void SdpNegotiation::addReceived(bool local, Agreement& agreement) const
{
    forEachFormat(media_, local, [&agreement](sdp_format const& format) {
        auto const type = static_cast<std::size_t>(format.pt);
        if (type < agreement.received.size() && agreement.received[type] == Payload::kUnknown) {
            agreement.received[type] = payloadOf(format.name);
        }
    });
}

SdpNegotiation::Agreement SdpNegotiation::agreement() const
{
    Agreement result;
    if (sdp_media_rport(media_) == 0) {
        return result;
    }
    forEachFormat(media_, false, [&result](sdp_format const& format) {
        if (payloadOf(format.name) == Payload::kEvents) {
            result.eventPayloadType = format.pt;
        } else if (result.codec.empty()) {
            result.codec = payloadOf(format.name) == Payload::kALaw ? "PCMA" : "PCMU";
            result.payloadType = format.pt;
        }
    });
    addReceived(true, result);
    addReceived(false, result);
    result.keys = crypto_.agreed();
    result.remote = *sdp_media_raddr(media_);
    sdp_media_raddr_rtcp(media_, &result.remoteReports);
    int const both = static_cast<int>(localDirection()) & static_cast<int>(remoteDirection());
    result.direction = static_cast<Direction>(both);
    return result;
}

}  // namespace telephone::sip

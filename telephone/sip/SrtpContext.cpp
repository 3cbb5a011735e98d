#include "telephone/sip/SrtpContext.h"

#include <array>
#include <stdexcept>

#include <srtp2/srtp.h>

namespace telephone::sip {

namespace {

constexpr unsigned long kReplayWindow = 128;  // packets

using SetPolicy = void (*)(srtp_crypto_policy_t*);

struct SuitePolicy
{
    SetPolicy audio;
    SetPolicy reports;  // always with the long authentication tag (RFC 3711 section 5.2)
};

// In the order of CryptoSuite.
constexpr std::array<SuitePolicy, kCryptoSuites> kPolicies{{
    {srtp_crypto_policy_set_aes_gcm_256_16_auth, srtp_crypto_policy_set_aes_gcm_256_16_auth},
    {srtp_crypto_policy_set_aes_gcm_128_16_auth, srtp_crypto_policy_set_aes_gcm_128_16_auth},
    {srtp_crypto_policy_set_rtp_default, srtp_crypto_policy_set_rtcp_default},
    {srtp_crypto_policy_set_aes_cm_128_hmac_sha1_32, srtp_crypto_policy_set_rtcp_default},
}};

void startLibrary()
{
    static srtp_err_status_t const started = srtp_init();
    if (started != srtp_err_status_ok) {
        throw std::runtime_error("the library for encrypted audio does not start");
    }
}

}  // namespace

SrtpContext::SrtpContext(CryptoKey key, bool sends)
    : key_(std::move(key))
{
    startLibrary();
    // The library reads the key and does not keep it.
    std::string material = key_.key;
    SuitePolicy const& suite = kPolicies.at(static_cast<std::size_t>(key_.suite));
    srtp_policy_t policy{};
    suite.audio(&policy.rtp);
    suite.reports(&policy.rtcp);
    policy.ssrc.type = sends ? ssrc_any_outbound : ssrc_any_inbound;
    policy.key = reinterpret_cast<unsigned char*>(material.data());
    policy.window_size = kReplayWindow;
    if (srtp_create(&context_, &policy) != srtp_err_status_ok) {
        throw std::runtime_error("the audio cannot be encrypted");
    }
}

SrtpContext::~SrtpContext()
{
    (void)srtp_dealloc(context_);
}

bool SrtpContext::protect(mbuf& packet, PacketKind kind)
{
    auto const size = mbuf_get_left(&packet);
    if (mbuf_resize(&packet, packet.pos + size + SRTP_MAX_TRAILER_LEN + sizeof(std::uint32_t)) != 0) {
        return false;
    }
    int length = static_cast<int>(size);
    auto const function = kind == PacketKind::kAudio ? srtp_protect : srtp_protect_rtcp;
    if (function(context_, mbuf_buf(&packet), &length) != srtp_err_status_ok) {
        return false;
    }
    mbuf_set_end(&packet, packet.pos + static_cast<std::size_t>(length));
    return true;
}

SrtpResult SrtpContext::unprotect(mbuf& packet, PacketKind kind)
{
    int length = static_cast<int>(mbuf_get_left(&packet));
    auto const function = kind == PacketKind::kAudio ? srtp_unprotect : srtp_unprotect_rtcp;
    auto const status = function(context_, mbuf_buf(&packet), &length);
    if (status == srtp_err_status_replay_fail || status == srtp_err_status_replay_old) {
        return SrtpResult::kReplayed;
    }
    if (status != srtp_err_status_ok) {
        return SrtpResult::kForged;
    }
    mbuf_set_end(&packet, packet.pos + static_cast<std::size_t>(length));
    return SrtpResult::kDone;
}

}  // namespace telephone::sip

// Encryption of one direction of a stream (RFC 3711, RFC 7714), on libsrtp. Owned by its stream. Packets that are not
// authentic change nothing in it.
#pragma once

#include "telephone/sip/Sdes.h"
#include "telephone/sip/Stack.h"

struct srtp_ctx_t_;

namespace telephone::sip {

enum class SrtpResult : int
{
    kDone,
    kForged,    // not made with the key
    kReplayed,  // came before, or is too old to tell
};

// RTP and RTCP have different functions.
enum class PacketKind : int
{
    kAudio,
    kReport,
};

class SrtpContext
{
public:
    // sends: whether it encrypts or decrypts. Throws std::runtime_error if the library cannot make it.
    SrtpContext(CryptoKey key, bool sends);
    ~SrtpContext();
    SrtpContext(SrtpContext const&) = delete;
    SrtpContext& operator=(SrtpContext const&) = delete;

    CryptoKey const& key() const { return key_; }
    // Encrypt or decrypt the packet from the buffer's position on. false, or another result than kDone: it must be
    // dropped.
    [[nodiscard]] bool protect(mbuf& packet, PacketKind kind);
    [[nodiscard]] SrtpResult unprotect(mbuf& packet, PacketKind kind);

private:
    CryptoKey const key_;
    srtp_ctx_t_* context_ = nullptr;
};

}  // namespace telephone::sip

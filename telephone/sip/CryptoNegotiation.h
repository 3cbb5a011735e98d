// Offer and answer of the keys of one session (RFC 4568 sections 5 and 7.1). Part of SdpNegotiation; a plain value.
//
// An end that may encrypt offers its keys in an ordinary description (RTP/AVP), which a far end that knows nothing of
// encryption answers without keys; an end that must encrypt offers RTP/SAVP. Either is answered as it was offered.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Audio.h"
#include "telephone/sip/Sdes.h"

namespace telephone::sip {

struct CryptoKeys
{
    CryptoKey own;  // for what we send
    CryptoKey far;  // for what the far end sends
};

// What a description says about encryption.
struct CryptoDescription
{
    std::vector<std::string> attributes = {};  // values of "crypto"
    bool isSecureProfile = false;              // RTP/SAVP
};

class CryptoNegotiation
{
public:
    explicit CryptoNegotiation(Encryption wanted = Encryption::kNone)
        : wanted_(wanted)
        , offers_(wanted != Encryption::kNone)
    {}

    // The next offer has new keys, or none at all. kNotSupported: what is wanted does not permit it.
    [[nodiscard]] Outcome<> change(bool encrypted);
    // The next offer is as it was when this copy was made: a change has been refused.
    void restoreOffer(CryptoNegotiation const& before);

    CryptoDescription offer();
    CryptoDescription answer();

    // Reads the far end's description. A refusal changes nothing; its reason is for the far end, too.
    [[nodiscard]] Outcome<> readOffer(CryptoDescription const& offered);
    [[nodiscard]] Outcome<> readAnswer(CryptoDescription const& answered);

    // The latest agreement; nothing: the audio is not encrypted.
    std::optional<CryptoKeys> const& agreed() const { return agreed_; }

private:
    CryptoKey const& ownKey(CryptoSuite suite);
    [[nodiscard]] Outcome<> agreePlain(CryptoDescription const& description);

    Encryption wanted_;
    bool offers_;
    std::array<std::optional<CryptoKey>, kCryptoSuites> own_;  // made when they are needed
    int acceptedTag_ = 0;
    bool secureProfile_ = false;  // agreed
    std::optional<CryptoKeys> agreed_;
};

}  // namespace telephone::sip

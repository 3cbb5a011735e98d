#include "telephone/sip/CryptoNegotiation.h"

namespace telephone::sip {

namespace {

tl::unexpected<Refusal> noEncryption(char const* reason)
{
    return refuse(RefusalKind::kNotSupported, reason);
}

}  // namespace

Outcome<> CryptoNegotiation::change(bool encrypted)
{
    if (encrypted && wanted_ == Encryption::kNone) {
        return noEncryption("this telephone has no encrypted audio");
    }
    if (!encrypted && wanted_ == Encryption::kRequired) {
        return noEncryption("encrypted audio is required");
    }
    offers_ = encrypted;
    own_ = {};
    return {};
}

void CryptoNegotiation::restoreOffer(CryptoNegotiation const& before)
{
    offers_ = before.offers_;
    own_ = before.own_;
}

CryptoKey const& CryptoNegotiation::ownKey(CryptoSuite suite)
{
    auto& key = own_.at(static_cast<std::size_t>(suite));
    if (!key) {
        key = makeCryptoKey(suite);
    }
    return *key;
}

// A suite's tag is its place in the table, from 1.
CryptoDescription CryptoNegotiation::offer()
{
    CryptoDescription offered;
    if (!offers_) {
        return offered;
    }
    for (std::size_t i = 0; i < kCryptoSuites; ++i) {
        CryptoKey const& key = ownKey(static_cast<CryptoSuite>(i));
        offered.attributes.push_back(CryptoAttribute{static_cast<int>(i + 1), key}.format());
    }
    offered.isSecureProfile = wanted_ == Encryption::kRequired || secureProfile_;
    return offered;
}

CryptoDescription CryptoNegotiation::answer()
{
    CryptoDescription answered{{}, secureProfile_};
    if (agreed_) {
        answered.attributes.push_back(CryptoAttribute{acceptedTag_, agreed_->own}.format());
    }
    return answered;
}

Outcome<> CryptoNegotiation::agreePlain(CryptoDescription const& description)
{
    if (wanted_ == Encryption::kRequired) {
        return noEncryption("encrypted audio is required");
    }
    if (description.isSecureProfile) {
        return noEncryption(wanted_ == Encryption::kNone ? "there is no encrypted audio here"
                                                         : "there is no encryption in common");
    }
    agreed_.reset();
    secureProfile_ = false;
    return {};
}

Outcome<> CryptoNegotiation::readOffer(CryptoDescription const& offered)
{
    for (auto const& value : offered.attributes) {
        auto const attribute = CryptoAttribute::parse(value);
        if (attribute && wanted_ != Encryption::kNone) {
            agreed_ = CryptoKeys{ownKey(attribute->key.suite), attribute->key};
            acceptedTag_ = attribute->tag;
            secureProfile_ = offered.isSecureProfile;
            offers_ = true;
            return {};
        }
    }
    return agreePlain(offered);
}

Outcome<> CryptoNegotiation::readAnswer(CryptoDescription const& answered)
{
    if (answered.attributes.empty() || !offers_) {
        return agreePlain(answered);
    }
    auto const attribute = CryptoAttribute::parse(answered.attributes.front());
    if (!attribute || attribute->tag != static_cast<int>(attribute->key.suite) + 1) {
        return noEncryption("the answer has another encryption than was offered");
    }
    agreed_ = CryptoKeys{ownKey(attribute->key.suite), attribute->key};
    secureProfile_ = answered.isSecureProfile;
    return {};
}

}  // namespace telephone::sip

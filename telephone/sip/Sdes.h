// Keys of encrypted audio in session descriptions (RFC 4568): the attribute "crypto".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace telephone::sip {

// In the order of preference.
enum class CryptoSuite : int
{
    kAeadAes256Gcm,  // RFC 7714
    kAeadAes128Gcm,
    kAesCm128HmacSha1_80,  // RFC 4568
    kAesCm128HmacSha1_32,
};
constexpr std::size_t kCryptoSuites = 4;

// A suite and the master key and salt for it, as they are: 28 to 44 bytes.
struct CryptoKey
{
    CryptoSuite suite = CryptoSuite::kAesCm128HmacSha1_80;
    std::string key;

    bool operator==(CryptoKey const&) const = default;
};

// With a random key.
CryptoKey makeCryptoKey(CryptoSuite suite);

// The value of one attribute.
struct CryptoAttribute
{
    int tag = 0;
    CryptoKey key;

    // "1 AES_CM_128_HMAC_SHA1_80 inline:..."
    std::string format() const;
    // Nothing for a malformed attribute, an unknown suite, several keys, or parameters that we do not support: a key
    // identifier, and session parameters that must be understood (RFC 4568 section 6.3).
    static std::optional<CryptoAttribute> parse(std::string_view value);
};

// The message with "inline:***" in place of each key.
std::string maskedKeys(std::string_view message);

}  // namespace telephone::sip

#include "telephone/sip/Sdes.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

namespace {

constexpr std::string_view kInline = "inline:";
constexpr int kHighestTag = 999'999'999;  // 9 digits

struct SuiteRow
{
    CryptoSuite suite;
    std::string_view name;
    std::size_t keySize;  // master key and salt
};

constexpr std::array<SuiteRow, kCryptoSuites> kSuites{{
    {CryptoSuite::kAeadAes256Gcm, "AEAD_AES_256_GCM", 44},
    {CryptoSuite::kAeadAes128Gcm, "AEAD_AES_128_GCM", 28},
    {CryptoSuite::kAesCm128HmacSha1_80, "AES_CM_128_HMAC_SHA1_80", 30},
    {CryptoSuite::kAesCm128HmacSha1_32, "AES_CM_128_HMAC_SHA1_32", 30},
}};

SuiteRow const& rowOf(CryptoSuite suite)
{
    return kSuites.at(static_cast<std::size_t>(suite));
}

std::string encodedKey(std::string const& key)
{
    std::array<char, 64> text{};
    std::size_t size = text.size();
    (void)base64_encode(reinterpret_cast<std::uint8_t const*>(key.data()), key.size(), text.data(), &size);
    return {text.data(), size};
}

std::string decodedKey(std::string_view text)
{
    std::array<std::uint8_t, 64> key{};
    std::size_t size = key.size();
    if (base64_decode(text.data(), text.size(), key.data(), &size) != 0) {
        return {};
    }
    return {reinterpret_cast<char const*>(key.data()), size};
}

std::string_view takeWord(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    auto const word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

// "inline:KEY", also with a lifetime behind it: "|2^20". Empty if it has anything else.
std::string keyOf(std::string_view parameters)
{
    if (!parameters.starts_with(kInline) || parameters.find(';') != std::string_view::npos) {
        return {};
    }
    parameters.remove_prefix(kInline.size());
    auto const bar = parameters.find('|');
    bool const identified = bar != std::string_view::npos && parameters.find(':', bar) != std::string_view::npos;
    return identified ? std::string() : decodedKey(parameters.substr(0, bar));
}

// Parameters that may be ignored begin with "-".
bool mustBeUnderstood(std::string_view sessionParameters)
{
    for (auto word = takeWord(sessionParameters); !word.empty(); word = takeWord(sessionParameters)) {
        if (word.front() != '-') {
            return true;
        }
    }
    return false;
}

}  // namespace

CryptoKey makeCryptoKey(CryptoSuite suite)
{
    CryptoKey made{suite, std::string(rowOf(suite).keySize, '\0')};
    rand_bytes(reinterpret_cast<std::uint8_t*>(made.key.data()), made.key.size());
    return made;
}

std::string CryptoAttribute::format() const
{
    return std::to_string(tag) + " " + std::string(rowOf(key.suite).name) + " " + std::string(kInline) +
           encodedKey(key.key);
}

std::optional<CryptoAttribute> CryptoAttribute::parse(std::string_view value)
{
    auto const tag = takeWord(value);
    auto const suite = takeWord(value);
    auto const row = std::ranges::find(kSuites, suite, &SuiteRow::name);
    CryptoAttribute read;
    auto const [end, error] = std::from_chars(tag.data(), tag.data() + tag.size(), read.tag);
    bool const numbered =
        error == std::errc() && end == tag.data() + tag.size() && read.tag >= 0 && read.tag <= kHighestTag;
    if (!numbered || row == kSuites.end()) {
        return std::nullopt;
    }
    read.key = {row->suite, keyOf(takeWord(value))};
    if (read.key.key.size() != row->keySize || mustBeUnderstood(value)) {
        return std::nullopt;
    }
    return read;
}

std::string maskedKeys(std::string_view message)
{
    std::string masked;
    for (auto at = message.find(kInline); at != std::string_view::npos; at = message.find(kInline)) {
        masked.append(message.substr(0, at + kInline.size())).append("***");
        message.remove_prefix(at + kInline.size());
        message.remove_prefix(std::min(message.find_first_of("|; \r\n"), message.size()));
    }
    return masked.append(message);
}

}  // namespace telephone::sip

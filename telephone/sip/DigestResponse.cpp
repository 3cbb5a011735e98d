#include "telephone/sip/DigestResponse.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <openssl/evp.h>

#include "telephone/sip/Uri.h"

namespace telephone::sip {

namespace {

struct AlgorithmRow
{
    DigestAlgorithm algorithm;
    std::string_view name;
    EVP_MD const* (*hash)();
    bool ofSession;
};

constexpr auto kAlgorithms = std::to_array<AlgorithmRow>({
    {DigestAlgorithm::kMd5, "MD5", EVP_md5, false},
    {DigestAlgorithm::kMd5Session, "MD5-sess", EVP_md5, true},
    {DigestAlgorithm::kSha256, "SHA-256", EVP_sha256, false},
    {DigestAlgorithm::kSha256Session, "SHA-256-sess", EVP_sha256, true},
});

AlgorithmRow const& rowFor(DigestAlgorithm algorithm)
{
    return kAlgorithms.at(static_cast<std::size_t>(algorithm));
}

std::string_view withoutBlanks(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    auto const first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view withoutQuotes(std::string_view text)
{
    bool const quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

}  // namespace

std::string_view nameOf(DigestAlgorithm algorithm)
{
    return rowFor(algorithm).name;
}

bool isOfSession(DigestAlgorithm algorithm)
{
    return rowFor(algorithm).ofSession;
}

std::optional<DigestAlgorithm> digestAlgorithmOf(std::string_view name)
{
    if (name.empty()) {
        return DigestAlgorithm::kMd5;
    }
    auto const* const row =
        std::ranges::find_if(kAlgorithms, [name](auto const& each) { return equalsIgnoringCase(each.name, name); });
    return row == kAlgorithms.end() ? std::nullopt : std::optional(row->algorithm);
}

std::optional<DigestFields> DigestFields::parse(std::string_view text)
{
    constexpr std::string_view kScheme = "Digest";
    text = withoutBlanks(text);
    if (!equalsIgnoringCase(text.substr(0, kScheme.size()), kScheme) || text.size() <= kScheme.size()) {
        return std::nullopt;
    }
    DigestFields fields;
    for (auto const& element : splitList(text.substr(kScheme.size()))) {
        auto const equals = element.find('=');
        if (equals == std::string::npos) {
            return std::nullopt;
        }
        std::string_view const whole(element);
        fields.fields_.emplace_back(withoutBlanks(whole.substr(0, equals)),
                                    withoutQuotes(withoutBlanks(whole.substr(equals + 1))));
    }
    return fields;
}

std::string DigestFields::value(std::string_view name) const
{
    auto const field =
        std::ranges::find_if(fields_, [name](auto const& each) { return equalsIgnoringCase(each.first, name); });
    return field == fields_.end() ? std::string() : field->second;
}

bool DigestFields::offersAuth() const
{
    auto const options = splitList(value("qop"));
    return std::ranges::any_of(options, [](auto const& option) { return equalsIgnoringCase(option, "auth"); });
}

std::string hashOf(DigestAlgorithm algorithm, std::string_view text)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::array<unsigned char, EVP_MAX_MD_SIZE> hash{};
    unsigned size = 0;
    if (EVP_Digest(text.data(), text.size(), hash.data(), &size, rowFor(algorithm).hash(), nullptr) != 1) {
        throw std::runtime_error("OpenSSL cannot calculate " + std::string(nameOf(algorithm)));
    }
    std::string digits;
    for (unsigned i = 0; i < size; ++i) {
        digits += kDigits[hash[i] >> 4U];
        digits += kDigits[hash[i] & 15U];
    }
    return digits;
}

std::string digestResponse(DigestInput const& input)
{
    auto const hash = [&input](std::string const& text) { return hashOf(input.algorithm, text); };
    std::string secret = hash(input.user + ":" + input.realm + ":" + input.password);
    if (isOfSession(input.algorithm)) {
        secret = hash(secret + ":" + input.nonce + ":" + input.clientNonce);
    }
    std::string const protection =
        input.nonceCount.empty() ? std::string() : input.nonceCount + ":" + input.clientNonce + ":auth:";
    return hash(secret + ":" + input.nonce + ":" + protection + hash(input.method + ":" + input.uri));
}

}  // namespace telephone::sip

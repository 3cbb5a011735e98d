// What both sides of digest authentication have in common (RFC 7616, RFC 8760): the algorithms, the fields of a
// challenge or of credentials, and the response. Pure functions; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace telephone::sip {

// From the weakest to the strongest.
enum class DigestAlgorithm : int
{
    kMd5,
    kMd5Session,
    kSha256,
    kSha256Session,
};

// "MD5", "MD5-sess", "SHA-256", "SHA-256-sess".
std::string_view nameOf(DigestAlgorithm algorithm);
// "MD5-sess" and "SHA-256-sess".
bool isOfSession(DigestAlgorithm algorithm);
// An empty name is MD5; nothing: an algorithm that is not supported.
std::optional<DigestAlgorithm> digestAlgorithmOf(std::string_view name);

// The fields of a challenge or of credentials, without their quotation marks. Escapes stay: the response is calculated
// with them.
class DigestFields
{
public:
    // Nothing unless the text is "Digest", and fields "name=value" separated by commas.
    static std::optional<DigestFields> parse(std::string_view text);

    // Empty if the field is missing.
    std::string value(std::string_view name) const;
    // Whether it is present and names the quality of protection "auth", among others or alone.
    bool offersAuth() const;

private:
    std::vector<std::pair<std::string, std::string>> fields_;
};

// What a response is calculated from.
struct DigestInput
{
    DigestAlgorithm algorithm = DigestAlgorithm::kMd5;
    std::string user;
    std::string realm;
    std::string password;
    std::string method;
    std::string uri;
    std::string nonce;
    std::string clientNonce;
    std::string nonceCount;  // eight hexadecimal digits; empty: without quality of protection (RFC 2069)
};

// The response in hexadecimal digits.
std::string digestResponse(DigestInput const& input);

// The hash of a text in hexadecimal digits: SHA-256, or MD5 for the algorithms of that name.
std::string hashOf(DigestAlgorithm algorithm, std::string_view text);

}  // namespace telephone::sip

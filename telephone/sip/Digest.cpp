#include "telephone/sip/Digest.h"

#include <array>
#include <charconv>
#include <cstdlib>

#include "telephone/sip/Stack.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

namespace {

using Hash = std::array<std::uint8_t, MD5_SIZE>;

Hash hash(std::string const& text)
{
    Hash result{};
    md5(reinterpret_cast<std::uint8_t const*>(text.data()), text.size(), result.data());
    return result;
}

std::string hex(Hash const& value)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (std::uint8_t const byte : value) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::int64_t secondsNow()
{
    using namespace std::chrono;
    return duration_cast<seconds>(SteadyClock::now().time_since_epoch()).count();
}

}  // namespace

DigestServer::DigestServer(std::string realm, std::chrono::seconds nonceLifetime)
    : realm_(std::move(realm))
    , nonceLifetime_(nonceLifetime)
{
    for (int i = 0; i < 4; ++i) {
        secret_ += std::to_string(rand_u64());
    }
}

std::string DigestServer::sign(std::string const& text) const
{
    return hex(hash(secret_ + ":" + text + ":" + realm_ + ":" + secret_));
}

std::string DigestServer::challenge(bool stale) const
{
    // The random number distinguishes two challenges of the same second.
    std::string const made = std::to_string(secondsNow()) + "-" + std::to_string(rand_u32());
    return "Digest realm=\"" + realm_ + "\", nonce=\"" + made + "." + sign(made) + "\", qop=\"auth\", algorithm=MD5" +
           (stale ? ", stale=true" : "");
}

bool DigestServer::isFresh(std::string const& nonce) const
{
    auto const dot = nonce.find('.');
    if (dot == std::string::npos) {
        return false;
    }
    std::string const made = nonce.substr(0, dot);
    if (nonce.substr(dot + 1) != sign(made)) {
        return false;
    }
    std::int64_t time = 0;
    (void)std::from_chars(made.data(), made.data() + made.size(), time);
    return secondsNow() - time <= nonceLifetime_.count();
}

DigestServer::Result
DigestServer::judge(std::string const& method, std::string const& authorization,
                    std::function<std::optional<std::string>(std::string const& user)> const& password) const
{
    httpauth_digest_resp credentials{};
    pl const value = slice(authorization);
    if (authorization.empty() || httpauth_digest_response_decode(&credentials, &value) != 0 ||
        view(credentials.realm) != realm_) {
        return {};
    }

    Result result{Verdict::kWrong, text(credentials.username)};
    auto const secret = password(result.user);
    if (!secret) {
        return result;
    }
    Hash const ha1 = hash(result.user + ":" + realm_ + ":" + *secret);
    pl const methodSlice = slice(method);
    if (httpauth_digest_response_auth(&credentials, &methodSlice, ha1.data()) != 0) {
        return result;
    }
    result.verdict = isFresh(text(credentials.nonce)) ? Verdict::kAccepted : Verdict::kStale;
    return result;
}

}  // namespace telephone::sip

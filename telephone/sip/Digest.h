// The server side of digest authentication (RFC 2617, MD5, qop "auth"). Nonces are signed and contain the time of their
// creation, so none are stored. A nonce that is too old is "stale": the client repeats the request with a new one
// without asking its user. Any thread; the object does not change.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace telephone::sip {

class DigestServer
{
public:
    enum class Verdict : int
    {
        kAccepted,
        kNoCredentials,  // none for our realm: send a challenge
        kStale,          // right, but the nonce is too old or not ours: send a challenge with stale=true
        kWrong,          // unknown user or wrong password
    };

    struct Result
    {
        Verdict verdict = Verdict::kNoCredentials;
        std::string user;  // named by the credentials
    };

    explicit DigestServer(std::string realm, std::chrono::seconds nonceLifetime = std::chrono::seconds(300));

    // Value of a WWW-Authenticate or Proxy-Authenticate header.
    std::string challenge(bool stale = false) const;

    // authorization: value of the request's header, or empty. password: returns a user's password, nothing for an
    // unknown user.
    Result judge(std::string const& method, std::string const& authorization,
                 std::function<std::optional<std::string>(std::string const& user)> const& password) const;

private:
    std::string sign(std::string const& text) const;
    bool isFresh(std::string const& nonce) const;

    std::string realm_;
    std::string secret_;
    std::chrono::seconds nonceLifetime_;
};

}  // namespace telephone::sip

// The server's side of digest authentication (RFC 2617, MD5, qop "auth"): makes challenges and judges answers. Nonces
// say when they were made and are signed, so nothing is stored; one that is too old is "stale" and the far end tries
// again with a new one without asking its user. Not for several threads at once.
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
        kNoCredentials,  // none for our realm: challenge
        kStale,          // right, but the nonce is too old or not ours: challenge with stale=true
        kWrong,          // wrong user or password
    };

    struct Result
    {
        Verdict verdict = Verdict::kNoCredentials;
        std::string user;  // that the credentials name
    };

    explicit DigestServer(std::string realm, std::chrono::seconds nonceLifetime = std::chrono::seconds(300));

    // Value of a WWW-Authenticate or Proxy-Authenticate header.
    std::string challenge(bool stale = false) const;

    // password: of a user, nothing where there is no such user. authorization: value of the request's header, or empty.
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

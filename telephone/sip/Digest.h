// The server side of digest authentication (RFC 7616, RFC 8760, qop "auth"). Nonces are signed and contain the time of
// their creation, so that only those in use are stored. A nonce that is too old, or that was used with the same count
// before, is "stale": the client repeats the request with a new one without asking its user. A captured request is
// therefore worth nothing. Used under the lock.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/DigestResponse.h"
#include "telephone/sip/Message.h"

namespace telephone::sip {

class DigestServer
{
public:
    enum class Verdict : int
    {
        kAccepted,
        kNoCredentials,  // none for our realm: send a challenge
        kStale,          // right, but the nonce is too old, used up or not ours: send a challenge with stale=true
        kWrong,          // unknown user, wrong password, or an algorithm that was not offered
    };

    struct Result
    {
        Verdict verdict = Verdict::kNoCredentials;
        std::string user;  // named by the credentials
    };

    // Returns a user's password; nothing: an unknown user.
    using Password = std::function<std::optional<std::string>(std::string const& user)>;

    // algorithms: offered, in the order of preference.
    DigestServer(std::string realm, std::vector<DigestAlgorithm> algorithms,
                 std::chrono::seconds nonceLifetime = std::chrono::seconds(300));

    // A WWW-Authenticate header for each algorithm.
    Headers challenges(bool stale = false) const;

    // Judges the credentials in the Authorization headers of a request.
    Result judge(std::string const& method, Headers const& request, Password const& password);

private:
    struct Use
    {
        std::int64_t made = 0;    // of the nonce, in milliseconds
        std::uint32_t count = 0;  // the highest so far
    };

    Verdict verdictOn(std::string const& method, DigestFields const& credentials, Password const& password);
    std::string sign(std::string const& text) const;
    std::optional<std::int64_t> timeOf(std::string const& nonce) const;
    bool use(std::string const& nonce, std::string const& count);
    void makeRoom();

    std::string realm_;
    std::vector<DigestAlgorithm> algorithms_;
    std::string secret_;
    std::chrono::seconds nonceLifetime_;
    std::map<std::string, Use> used_;
    std::int64_t oldest_ = 0;  // nonces made before are stale: too old, or it is forgotten how often they were used
};

}  // namespace telephone::sip

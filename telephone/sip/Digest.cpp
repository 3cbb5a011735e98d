#include "telephone/sip/Digest.h"

#include <algorithm>
#include <charconv>

#include "telephone/sip/Stack.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

namespace {

constexpr std::size_t kMostNonces = 1000;  // in use

std::int64_t millisecondsNow()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(SteadyClock::now().time_since_epoch()).count();
}

template <typename Number>
std::optional<Number> numberIn(std::string_view text, int base)
{
    Number number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

}  // namespace

DigestServer::DigestServer(std::string realm, std::vector<DigestAlgorithm> algorithms,
                           std::chrono::seconds nonceLifetime)
    : realm_(std::move(realm))
    , algorithms_(std::move(algorithms))
    , nonceLifetime_(nonceLifetime)
{
    for (int i = 0; i < 4; ++i) {
        secret_ += std::to_string(rand_u64());
    }
}

// Half of the hash: a challenge should not be much larger than the request.
std::string DigestServer::sign(std::string const& text) const
{
    return hashOf(DigestAlgorithm::kSha256, secret_ + ":" + text + ":" + realm_ + ":" + secret_).substr(0, 32);
}

Headers DigestServer::challenges(bool stale) const
{
    // The random number distinguishes two challenges of the same moment.
    std::string const made = std::to_string(millisecondsNow()) + "-" + std::to_string(rand_u32());
    std::string const nonce = made + "." + sign(made);
    Headers headers;
    for (DigestAlgorithm const algorithm : algorithms_) {
        headers.add("WWW-Authenticate", "Digest realm=\"" + realm_ + "\", nonce=\"" + nonce +
                                            "\", qop=\"auth\", algorithm=" + std::string(nameOf(algorithm)) +
                                            (stale ? ", stale=true" : ""));
    }
    return headers;
}

// The time at which we made the nonce; nothing: it is not ours.
std::optional<std::int64_t> DigestServer::timeOf(std::string const& nonce) const
{
    auto const dot = nonce.find('.');
    std::string const made = nonce.substr(0, dot);
    if (dot == std::string::npos || nonce.substr(dot + 1) != sign(made)) {
        return std::nullopt;
    }
    return numberIn<std::int64_t>(std::string_view(made).substr(0, made.find('-')), 10);
}

void DigestServer::makeRoom()
{
    if (used_.size() < kMostNonces) {
        return;
    }
    auto const madeAt = [](auto const& each) { return each.second.made; };
    oldest_ = std::max(oldest_, madeAt(*std::ranges::min_element(used_, {}, madeAt)) + 1);
    std::erase_if(used_, [this](auto const& each) { return each.second.made < oldest_; });
}

// Counts the nonce as used; false: it is too old, or it was used with this count or a higher one (RFC 7616
// section 3.4).
bool DigestServer::use(std::string const& nonce, std::string const& count)
{
    auto const made = timeOf(nonce);
    auto const wanted = count.empty() ? std::optional(1U) : numberIn<std::uint32_t>(count, 16);
    makeRoom();
    oldest_ = std::max(oldest_, millisecondsNow() - std::chrono::milliseconds(nonceLifetime_).count());
    if (!made || *made < oldest_ || !wanted) {
        return false;
    }
    Use& present = used_[nonce];
    if (*wanted <= present.count) {
        return false;
    }
    present = {*made, *wanted};
    return true;
}

DigestServer::Verdict DigestServer::verdictOn(std::string const& method, DigestFields const& credentials,
                                              Password const& password)
{
    auto const algorithm = digestAlgorithmOf(credentials.value("algorithm"));
    auto const secret = password(credentials.value("username"));
    if (!secret || !algorithm || std::ranges::find(algorithms_, *algorithm) == algorithms_.end()) {
        return Verdict::kWrong;
    }
    DigestInput input;
    input.algorithm = *algorithm;
    input.user = credentials.value("username");
    input.realm = realm_;
    input.password = *secret;
    input.method = method;
    input.uri = credentials.value("uri");
    input.nonce = credentials.value("nonce");
    input.clientNonce = credentials.value("cnonce");
    input.nonceCount = credentials.value("nc");
    if (!equalsIgnoringCase(digestResponse(input), credentials.value("response"))) {
        return Verdict::kWrong;
    }
    return use(input.nonce, input.nonceCount) ? Verdict::kAccepted : Verdict::kStale;
}

DigestServer::Result DigestServer::judge(std::string const& method, Headers const& request, Password const& password)
{
    for (auto const& value : request.values("Authorization")) {
        auto const credentials = DigestFields::parse(value);
        if (credentials && credentials->value("realm") == realm_) {
            return {verdictOn(method, *credentials, password), credentials->value("username")};
        }
    }
    return {};
}

}  // namespace telephone::sip

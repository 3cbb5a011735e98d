#include "telephone/sip/ClientDigest.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/DigestResponse.h"

namespace telephone::sip {

struct DigestChallenge
{
    sip_hdrid header = SIP_HDR_NONE;
    DigestFields fields;
    DigestAlgorithm algorithm = DigestAlgorithm::kMd5;
};

// A challenge, and with what it is answered.
struct DigestAnswer
{
    DigestChallenge challenge;
    std::string user;
    std::string password;
    std::uint32_t count = 0;  // of the requests that were answered with this nonce

    std::string realm() const { return challenge.fields.value("realm"); }
};

namespace {

// Why the challenge cannot be answered; empty: it can.
std::string obstacle(DigestFields const& challenge)
{
    if (!digestAlgorithmOf(challenge.value("algorithm"))) {
        return "uses the algorithm " + challenge.value("algorithm");
    }
    bool const protects = !challenge.value("qop").empty();
    return protects && !challenge.offersAuth() ? "offers only qop \"" + challenge.value("qop") + "\"" : std::string();
}

// The strongest challenge of each realm, in the order of the realms.
std::vector<DigestChallenge> bestOf(sip_msg const& response, void const* credentials)
{
    std::vector<DigestChallenge> best;
    std::string refused;
    for (le const* each = response.hdrl.head; each; each = each->next) {
        auto const* const header = static_cast<sip_hdr const*>(each->data);
        if (header->id != SIP_HDR_WWW_AUTHENTICATE && header->id != SIP_HDR_PROXY_AUTHENTICATE) {
            continue;
        }
        auto const fields = DigestFields::parse(view(header->val));
        if (!fields || !obstacle(*fields).empty()) {
            refused = fields ? obstacle(*fields) : "is not a digest challenge";
            continue;
        }
        DigestChallenge const challenge{header->id, *fields, *digestAlgorithmOf(fields->value("algorithm"))};
        auto const same = std::ranges::find_if(
            best, [&](auto const& other) { return other.fields.value("realm") == fields->value("realm"); });
        if (same == best.end()) {
            best.push_back(challenge);
        } else if (same->algorithm < challenge.algorithm) {
            *same = challenge;
        }
    }
    if (best.empty() && !refused.empty()) {
        reportUnanswered(credentials, "the challenge from " + addressText(response.src) + " " + refused +
                                          ", which is not supported: it is not answered");
    }
    return best;
}

std::string headerOf(DigestAnswer const& answer, std::string const& method, std::string const& uri)
{
    DigestFields const& challenge = answer.challenge.fields;
    bool const protects = !challenge.value("qop").empty();
    DigestInput input{answer.challenge.algorithm,
                      answer.user,
                      answer.realm(),
                      answer.password,
                      method,
                      uri,
                      challenge.value("nonce"),
                      hexText(rand_u64()),
                      protects ? hexText(answer.count, 8) : std::string()};
    bool const isOfProxy = answer.challenge.header == SIP_HDR_PROXY_AUTHENTICATE;
    std::string header = isOfProxy ? "Proxy-Authorization: " : "Authorization: ";
    header += "Digest username=\"" + input.user + "\", realm=\"" + input.realm + "\", nonce=\"" + input.nonce +
              "\", uri=\"" + uri + "\", response=\"" + digestResponse(input) + "\"";
    if (std::string const algorithm = challenge.value("algorithm"); !algorithm.empty()) {
        header += ", algorithm=" + algorithm;
    }
    if (std::string const opaque = challenge.value("opaque"); !opaque.empty()) {
        header += ", opaque=\"" + opaque + "\"";
    }
    // Without quality of protection only the algorithms of a session use it.
    if (protects || isOfSession(input.algorithm)) {
        header += ", cnonce=\"" + input.clientNonce + "\"";
    }
    return header + (protects ? ", qop=auth, nc=" + input.nonceCount : std::string()) + "\r\n";
}

}  // namespace

}  // namespace telephone::sip

struct sip_auth
{
    sip_auth_h* handler = nullptr;
    void* argument = nullptr;
    bool owned = false;
    std::vector<telephone::sip::DigestAnswer> answers;
};

namespace telephone::sip {

namespace {

void destroyAuthentication(void* object)
{
    auto* const authentication = static_cast<sip_auth*>(object);
    if (authentication->owned) {
        mem_deref(authentication->argument);
    }
    authentication->~sip_auth();
}

int takeChallenge(sip_auth& authentication, DigestChallenge const& challenge)
{
    std::string const realm = challenge.fields.value("realm");
    auto const present = std::ranges::find(authentication.answers, realm, &DigestAnswer::realm);
    if (present != authentication.answers.end()) {
        if (!equalsIgnoringCase(challenge.fields.value("stale"), "true")) {
            return EAUTH;
        }
        present->challenge = challenge;
        present->count = 0;
        return 0;
    }
    char* user = nullptr;
    char* password = nullptr;
    int const error = authentication.handler(&user, &password, realm.c_str(), authentication.argument);
    if (!error) {
        authentication.answers.push_back({challenge, user ? user : "", password ? password : ""});
    }
    mem_deref(user);
    mem_deref(password);
    return error;
}

}  // namespace

int makeAuthentication(sip_auth** made, sip_auth_h* handler, void* argument, bool owned)
{
    void* const memory = mem_zalloc(sizeof(sip_auth), destroyAuthentication);
    if (!memory) {
        return ENOMEM;
    }
    *made = new (memory) sip_auth{handler, owned ? mem_ref(argument) : argument, owned, {}};
    return 0;
}

int takeChallenges(sip_auth& authentication, sip_msg const& response)
{
    auto const challenges = bestOf(response, authentication.argument);
    for (DigestChallenge const& challenge : challenges) {
        if (int const error = takeChallenge(authentication, challenge)) {
            return error;
        }
    }
    return challenges.empty() ? ENOSYS : 0;
}

int writeCredentials(mbuf& buffer, sip_auth& authentication, char const* method, char const* uri)
{
    for (DigestAnswer& answer : authentication.answers) {
        ++answer.count;
        if (int const error = mbuf_write_str(&buffer, headerOf(answer, method, uri).c_str())) {
            return error;
        }
    }
    return 0;
}

void forgetChallenges(sip_auth& authentication)
{
    authentication.answers.clear();
}

}  // namespace telephone::sip

#include "telephone/sip/InvitationReader.h"

#include <array>

namespace telephone::sip {

namespace {

struct HistoryCause
{
    std::string_view code;
    char const* reason;
};

// RFC 4458 section 2.1 and RFC 7544: causes in History-Info and the corresponding reasons of the Diversion header.
constexpr auto kHistoryCauses = std::to_array<HistoryCause>({
    {"302", "unconditional"},
    {"404", "unknown"},
    {"408", "no-answer"},
    {"480", "deflection"},
    {"486", "user-busy"},
    {"503", "unavailable"},
});

std::string unquoted(std::string value)
{
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
    }
    return value;
}

std::string causeOf(Uri const& uri)
{
    std::string code = uri.parameter("cause").value_or("");
    if (auto const reason = uri.header("Reason"); code.empty() && reason) {
        auto const place = reason->find("cause=");
        if (place != std::string::npos) {
            code = reason->substr(place + 6, 3);
        }
    }
    for (auto const& cause : kHistoryCauses) {
        if (cause.code == code) {
            return cause.reason;
        }
    }
    return {};
}

std::vector<Diversion> diversionsOf(Headers const& headers)
{
    std::vector<Diversion> diversions;
    for (auto const& value : headers.list("Diversion")) {
        if (auto const party = NameAddr::parse(value)) {
            diversions.push_back({*party, unquoted(party->parameter("reason").value_or(""))});
        }
    }
    if (!diversions.empty()) {
        return diversions;
    }

    // All entries but the last, which is the present target; the most recent one comes last. The cause of a diversion
    // is in the entry's own Reason header or in the URI of the next entry.
    auto const history = headers.list("History-Info");
    for (std::size_t i = history.size(); i > 1; --i) {
        auto const left = NameAddr::parse(history[i - 2]);
        auto const next = NameAddr::parse(history[i - 1]);
        if (!left) {
            continue;
        }
        std::string reason = causeOf(left->uri);
        if (reason.empty() && next) {
            reason = causeOf(next->uri);
        }
        diversions.push_back({*left, reason});
    }
    return diversions;
}

bool contains(std::string const& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

bool asksForAutomaticAnswer(Headers const& headers)
{
    for (char const* name : {"Answer-Mode", "Priv-Answer-Mode"}) {
        std::string const mode = headers.value(name);
        if (equalsIgnoringCase(mode.substr(0, mode.find(';')), "Auto")) {
            return true;
        }
    }
    for (char const* name : {"Call-Info", "Alert-Info"}) {
        std::string const info = headers.value(name);
        if (contains(info, "answer-after=") || contains(info, "alert-autoanswer")) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::optional<NameAddr> assertedIdentityOf(Headers const& headers)
{
    std::string const value = headers.value("P-Asserted-Identity");
    return value.empty() ? std::nullopt : NameAddr::parse(value);
}

Invitation readInvitation(sip_msg const& invite, bool fromServer)
{
    Invitation invitation;
    invitation.headers = headersOf(invite);
    Headers const& headers = invitation.headers;
    invitation.requestUri = text(invite.ruri);
    invitation.from = nameAddrOf(invite.from);
    invitation.to = nameAddrOf(invite.to);
    invitation.assertedIdentity = fromServer ? assertedIdentityOf(headers) : std::nullopt;
    invitation.diversions = diversionsOf(headers);
    invitation.replaces = Replaces::parse(headers.value("Replaces"));
    invitation.joins = Replaces::parse(headers.value("Join"));
    invitation.alertInfo = headers.value("Alert-Info");
    invitation.resourcePriority = headers.value("Resource-Priority");
    invitation.referredBy = headers.value("Referred-By");
    invitation.answerAutomatically = asksForAutomaticAnswer(headers);
    return invitation;
}

}  // namespace telephone::sip

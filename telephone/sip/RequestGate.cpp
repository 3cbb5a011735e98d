#include "telephone/sip/RequestGate.h"

#include <algorithm>
#include <array>

#include <malloc.h>

#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/NotifierImpl.h"

namespace telephone::sip {

namespace {

bool hasMethod(sip_msg const& request, char const* method)
{
    return pl_strcmp(&request.met, method) == 0;
}

std::optional<RequestKind> kindOf(sip_msg const& request)
{
    struct Row
    {
        char const* method;
        RequestKind kind;
    };
    constexpr auto kKinds = std::to_array<Row>({
        {"INVITE", RequestKind::kCall},
        {"SUBSCRIBE", RequestKind::kSubscription},
        {"NOTIFY", RequestKind::kNotification},
        {"INFO", RequestKind::kControl},
        {"REFER", RequestKind::kTransfer},
    });
    auto const* const row =
        std::ranges::find_if(kKinds, [&](Row const& each) { return hasMethod(request, each.method); });
    if (row == kKinds.end()) {
        return std::nullopt;
    }
    bool const takesOver = sip_msg_hdr(&request, SIP_HDR_REPLACES) || sip_msg_hdr(&request, SIP_HDR_JOIN);
    return row->kind == RequestKind::kCall && takesOver ? RequestKind::kTakeOver : row->kind;
}

// A far end that is not known answers for nobody but itself: what is sent to its Contact must go where the request came
// from.
bool isAtItsContact(sip_msg const& request)
{
    auto const contact = Uri::parse(contactOf(request));
    std::uint16_t const port = contact && contact->port != 0 ? contact->port : std::uint16_t{SIP_PORT};
    sa address{};
    // A connection comes from another port than the one on which its sender listens.
    int const compared = request.tp == SIP_TRANSP_UDP ? SA_ALL : SA_ADDR;
    return contact && sa_set_str(&address, contact->host.c_str(), port) == 0 &&
           sa_cmp(&address, &request.src, compared);
}

}  // namespace

RequestGate::RequestGate(std::shared_ptr<Element> element, Users users)
    : element_(std::move(element))
    , users_(std::move(users))
    , digest_(element_->config().name, {DigestAlgorithm::kSha256, DigestAlgorithm::kMd5})
    , limits_(element_->config().limits)
    , quiet_(element_->loop())
{}

// Fragmentation would otherwise keep it.
void RequestGate::tidyLater()
{
    constexpr std::chrono::seconds kForgotten{38};  // 64 * T1, and some seconds
    if (element_->config().limits.transactions > 0) {
        quiet_.start(kForgotten, [] { (void)malloc_trim(0); });
    }
}

bool RequestGate::isInDialog(sip_msg const& request) const
{
    if (!request.to.tag.p) {
        return false;
    }
    auto const& notifiers = element_->notifiers();
    return element_->tap().knows(text(request.callid), text(request.to.tag)) ||
           std::ranges::any_of(notifiers, [&](NotifierImpl const* each) { return each->isOf(request); });
}

bool RequestGate::hasRoomFor(sip_msg const& request)
{
    if (hasMethod(request, "ACK") || hasMethod(request, "CANCEL")) {
        return true;
    }
    bool const known = isInDialog(request);
    bool const trusted = known || element_->lineServers().areAt(request.src);
    if (!limits_.takeFrom(SocketAddress(request.src).host, trusted)) {
        return false;
    }
    if (known || hasMethod(request, "OPTIONS")) {
        return true;
    }
    bool const subscribes = hasMethod(request, "SUBSCRIBE") && !request.to.tag.p;
    if (limits_.remember() && (!subscribes || limits_.hasRoomForSubscription(element_->notifiers().size()))) {
        tidyLater();
        return true;
    }
    element_->answerAndForget(request, 503, "Service Unavailable", {{"Retry-After", "30"}});
    return false;
}

Sender RequestGate::senderOf(sip_msg const& request, GuardedUser const& user)
{
    isStale_ = false;
    if (element_->lineServers().haveSent(request, user.name)) {
        return Sender::kServer;
    }
    if (user.password.empty()) {
        return Sender::kAnybody;
    }
    // Whoever knows the line's password may send under any name.
    auto const result =
        digest_.judge(text(request.met), headersOf(request), [&user](std::string const&) { return user.password; });
    isStale_ = result.verdict == DigestServer::Verdict::kStale;
    return result.verdict == DigestServer::Verdict::kAccepted ? Sender::kAuthenticated : Sender::kAnybody;
}

bool RequestGate::permits(sip_msg const& request)
{
    auto const kind = kindOf(request);
    if (!kind || request.to.tag.p) {
        return true;
    }
    pl const& name = *kind == RequestKind::kNotification ? request.to.uri.user : request.uri.user;
    auto const user = users_(text(name));
    if (!user) {
        return true;
    }
    Sender const wanted = user->permissions.of(*kind, user->hasServer);
    Sender const sender =
        wanted == Sender::kAnybody && *kind != RequestKind::kSubscription ? Sender::kAnybody : senderOf(request, *user);
    bool const reflects = *kind == RequestKind::kSubscription && sender == Sender::kAnybody && !isAtItsContact(request);
    if (sender <= wanted && !reflects) {
        return true;
    }
    refuse(request, kPermissions.at(static_cast<std::size_t>(*kind)), wanted, *user);
    return false;
}

void RequestGate::refuse(sip_msg const& request, PermissionRow const& row, Sender wanted, GuardedUser const& user)
{
    bool const canAuthenticate = wanted != Sender::kServer && !user.password.empty();
    if (canAuthenticate) {
        element_->answerAndForget(request, 401, "Unauthorized", digest_.challenges(isStale_));
    } else {
        element_->answerAndForget(request, 403, "Forbidden");
    }
    element_->log(LogLevel::kInfo, text(request.met) + " from " + addressText(request.src) + " for " + user.name +
                                       " is refused: permissions." + std::string(row.name) +
                                       (canAuthenticate ? " asks for the line's password" : " does not permit it"));
}

}  // namespace telephone::sip

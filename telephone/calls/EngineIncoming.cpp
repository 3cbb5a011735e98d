// Calls that come in: which line they are for, whether they are forwarded or turned away, and how they are offered.
#include <algorithm>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/CallEngineImpl.h"

namespace telephone {

namespace {

struct ForwardingChoice
{
    sfiForwardReason reason;
    sfiForwardingType general;
    sfiForwardingType external;
    sfiForwardingType internal;
};

// clang-format off
constexpr ForwardingChoice kForwardingChoices[] = {
    {sfiForwardReasonUnconditional, sfiForwardUnconditional, sfiForwardUnconditionalExternal, sfiForwardUnconditionalInternal},
    {sfiForwardReasonBusy,          sfiForwardBusy,          sfiForwardBusyExternal,          sfiForwardBusyInternal},
    {sfiForwardReasonNoReply,       sfiForwardNoReply,       sfiForwardNoReplyExternal,       sfiForwardNoReplyInternal},
};
// clang-format on

constexpr std::uint16_t kSipPort = 5060;

bool sameHost(sip::Uri const& left, sip::Uri const& right)
{
    auto const port = [](sip::Uri const& uri) { return uri.port == 0 ? kSipPort : uri.port; };
    return sip::equalsIgnoringCase(left.host, right.host) && port(left) == port(right);
}

}  // namespace

bool CallEngine::Impl::knowsUser(std::string const& user)
{
    return lines_.lineOfUser(user).has_value();
}

void CallEngine::Impl::onTransferRequested(std::unique_ptr<sip::Transfer> transfer)
{
    log(sip::LogLevel::kWarning, "transfer to " + transfer->target() + " refused: it belongs to no call");
    transfer->reject(603, "Decline");
}

void CallEngine::Impl::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    sip::Invitation const& invitation = session->invitation();
    auto const lineNumber = lines_.lineOfUser(sip::userOf(invitation.requestUri));
    auto const line = lineNumber ? accountOf(*lineNumber) : std::nullopt;
    if (!line) {
        session->reject(404, "Not Found");
        return;
    }
    if (!active_ || serviceState_ == sfiServiceOutOfService) {
        session->reject(480, "Temporarily Unavailable");
        return;
    }
    if (invitation.replaces) {
        replaceCall(std::move(session));
        return;
    }
    if (turnedAway(*session, *line)) {
        return;
    }
    int const callID = freeCallID();
    auto const place = lines_.seizeForIncoming(*lineNumber, callID);
    if (place) {
        offer(std::move(session), *line, callID, *place);
    } else if (!forwarded(*session, *line, sfiForwardReasonBusy)) {
        log(sip::LogLevel::kInfo, "a call for line " + line->lineURI + " is refused: all its appearances are taken");
        session->reject(486, "Busy Here");
    }
}

// True when the call needs nothing more: it was forwarded or refused.
bool CallEngine::Impl::turnedAway(sip::Session& session, LineAccount const& line)
{
    if (forwarded(session, line, sfiForwardReasonUnconditional)) {
        return true;
    }
    if (policy_.doNotDisturb(line.lineNumber) || serviceState_ == sfiServiceDoNotDisturb) {
        bool const busy = configuration_.doNotDisturbStatus != 480;
        const sip::NameAddr caller = session.invitation().caller();
        session.reject(busy ? 486 : 480, busy ? "Busy Here" : "Temporarily Unavailable");
        post([lineURI = line.lineURI, callID = freeCallID(), uri = displayUri(caller), name = caller.displayName,
              busy](CommunicationsServiceEventIfc& event) {
            event.incomingCallMissed(lineURI, callID, uri, name, busy ? sfiReasonBusy : sfiReasonUnavailable, {}, {},
                                     sfiForwardReasonNone);
        });
        return true;
    }
    if (isLineBusy(line.lineNumber) && forwarded(session, line, sfiForwardReasonBusy)) {
        return true;
    }
    if (!isLimitReached()) {
        return false;
    }
    log(sip::LogLevel::kWarning, "a call for line " + line.lineURI + " is refused: there are " +
                                     std::to_string(configuration_.maximumCalls) + " calls already");
    session.reject(486, "Busy Here");
    return true;
}

bool CallEngine::Impl::isLineBusy(int lineNumber) const
{
    return std::any_of(calls_.begin(), calls_.end(),
                       [lineNumber](auto const& call) { return call->line().lineNumber == lineNumber; });
}

bool CallEngine::Impl::isInternal(sip::NameAddr const& caller, LineAccount const& line) const
{
    auto const own = sip::Uri::parse(line.account.addressOfRecord());
    return !line.account.domain.empty() && own && sameHost(caller.uri, *own);
}

std::optional<ForwardingRule> CallEngine::Impl::ruleFor(LineAccount const& line, bool internal, sfiForwardReason reason)
{
    auto const choice = std::find_if(std::begin(kForwardingChoices), std::end(kForwardingChoices),
                                     [reason](auto const& row) { return row.reason == reason; });
    if (choice == std::end(kForwardingChoices) || !policy_.forwardsHere()) {
        return std::nullopt;
    }
    // The rule for callers of this kind comes before the one for all.
    for (const sfiForwardingType type : {internal ? choice->internal : choice->external, choice->general}) {
        const ForwardingRule rule = policy_.forwarding(line.lineNumber, type);
        if (!rule.on) {
            continue;
        }
        auto const target = targetOf(rule.destination, line.account);
        if (target && *target != line.account.addressOfRecord()) {
            return ForwardingRule{true, *target};
        }
        log(sip::LogLevel::kWarning, "line " + line.lineURI + " cannot be forwarded to \"" + rule.destination + '"');
        return std::nullopt;
    }
    return std::nullopt;
}

bool CallEngine::Impl::forwarded(sip::Session& session, LineAccount const& line, sfiForwardReason reason)
{
    const sip::NameAddr caller = session.invitation().caller();
    auto const rule = ruleFor(line, isInternal(caller, line), reason);
    if (!rule || !session.redirect(rule->destination, diversionReasonOf(reason))) {
        return false;
    }
    postForwarded(line.lineURI, freeCallID(), caller, rule->destination, reason);
    return true;
}

void CallEngine::Impl::postForwarded(std::string const& lineURI, int callID, sip::NameAddr const& caller,
                                     std::string const& destination, sfiForwardReason reason)
{
    log(sip::LogLevel::kInfo, "a call for line " + lineURI + " is forwarded to " + destination);
    post([lineURI, callID, uri = displayUri(caller), name = caller.displayName, destination,
          reason](CommunicationsServiceEventIfc& event) {
        event.callForwarded(lineURI, callID, uri, name, destination, reason);
    });
}

void CallEngine::Impl::offer(std::unique_ptr<sip::Session> session, LineAccount const& line, int callID,
                             LineAddress const& place)
{
    const sfiCallType type =
        isInternal(session->invitation().caller(), line) ? sfiCallTypeInternal : sfiCallTypeExternal;
    auto const current = std::find_if(calls_.begin(), calls_.end(),
                                      [&line](auto const& call) { return call->line().lineNumber == line.lineNumber; });
    bool const isAssociated = associatedCalls_ && current != calls_.end();
    int const currentID = isAssociated ? (*current)->id() : 0;
    Call& call = add(newCall(callID, place, true));
    call.offer(std::move(session), type);
    if (isAssociated) {
        post([lineURI = place.lineURI, currentID, callID](CommunicationsServiceEventIfc& event) {
            event.incomingAssociatedCall(lineURI, currentID, callID);
        });
    }
    armNoReply(call, line);
    if (configuration_.automaticRinging) {
        call.ring();
    }
}

void CallEngine::Impl::armNoReply(Call& call, LineAccount const& line)
{
    bool const internal = isInternal(call.session()->invitation().caller(), line);
    int const rings = policy_.ringsBeforeNoReply();
    if (rings < 1 || !ruleFor(line, internal, sfiForwardReasonNoReply)) {
        return;
    }
    // What the rule says when the time is up counts.
    auto const expired = [this, callID = call.id(), line, internal] {
        Call* unanswered = find(callID);
        const auto rule = ruleFor(line, internal, sfiForwardReasonNoReply);
        if (unanswered == nullptr || !rule) {
            return;
        }
        const sip::NameAddr caller = unanswered->session()->invitation().caller();
        if (unanswered->redirect(rule->destination, sfiForwardReasonNoReply)) {
            postForwarded(unanswered->line().lineURI, callID, caller, rule->destination, sfiForwardReasonNoReply);
        }
    };
    noReplyTimers_.insert_or_assign(call.id(), sip::Timer(loop_, rings * configuration_.ringTime, expired));
}

// An INVITE that takes the place of a call of ours (RFC 3891): a transfer or a pick-up that somebody else makes.
void CallEngine::Impl::replaceCall(std::unique_ptr<sip::Session> session)
{
    const sip::Replaces wanted = *session->invitation().replaces;
    auto const found = std::find_if(calls_.begin(), calls_.end(), [&wanted](auto const& call) {
        return call->session() != nullptr && call->session()->dialogId().matches(wanted);
    });
    bool const early = found != calls_.end() && !(*found)->isEstablished();
    if (found == calls_.end() || (early && (*found)->snapshot().incoming)) {
        session->reject(481, "Call/Transaction Does Not Exist");
        return;
    }
    if (wanted.earlyOnly && !early) {
        session->reject(486, "Busy Here");
        return;
    }
    Call& call = **found;
    log(sip::LogLevel::kInfo,
        "call " + std::to_string(call.id()) + " goes on with " + displayUri(session->invitation().caller()));
    call.replaceWith(std::move(session));
}

}  // namespace telephone

#include "telephone/calls/CallForwarding.h"

#include <algorithm>
#include <array>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"

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
constexpr std::array kForwardingChoices{
    ForwardingChoice{sfiForwardReasonUnconditional, sfiForwardUnconditional, sfiForwardUnconditionalExternal, sfiForwardUnconditionalInternal},
    ForwardingChoice{sfiForwardReasonBusy,          sfiForwardBusy,          sfiForwardBusyExternal,          sfiForwardBusyInternal},
    ForwardingChoice{sfiForwardReasonNoReply,       sfiForwardNoReply,       sfiForwardNoReplyExternal,       sfiForwardNoReplyInternal},
};
// clang-format on

constexpr std::uint16_t kSipPort = 5060;

bool sameHost(sip::Uri const& left, sip::Uri const& right)
{
    auto const port = [](sip::Uri const& uri) { return uri.port == 0 ? kSipPort : uri.port; };
    return sip::equalsIgnoringCase(left.host, right.host) && port(left) == port(right);
}

}  // namespace

bool isInternal(sip::NameAddr const& caller, LineAccount const& line)
{
    auto const own = sip::Uri::parse(line.account.addressOfRecord());
    return !line.account.domain.empty() && own && sameHost(caller.uri, *own);
}

CallForwarding::CallForwarding(CallPolicy const& policy, CallList& calls, EventPoster const& post)
    : policy_(policy)
    , calls_(calls)
    , post_(post)
{}

bool CallForwarding::forward(sip::Session& session, LineAccount const& line, sfiForwardReason reason)
{
    sip::NameAddr const caller = session.invitation().caller();
    auto const target = destination(line, caller, reason);
    if (!target) {
        return false;
    }
    if (reportIfRefused(kComponent, session.redirect(*target, diversionReasonOf(reason)))) {
        return false;
    }
    postForwarded(line.lineURI, calls_.freeCallID(), caller, *target, reason);
    return true;
}

std::optional<std::string> CallForwarding::destination(LineAccount const& line, sip::NameAddr const& caller,
                                                       sfiForwardReason reason) const
{
    auto const choice = std::ranges::find(kForwardingChoices, reason, &ForwardingChoice::reason);
    if (choice == kForwardingChoices.end() || !policy_.forwardsHere()) {
        return std::nullopt;
    }
    // The rule for internal or external callers comes before the general one.
    for (sfiForwardingType const type :
         {isInternal(caller, line) ? choice->internal : choice->external, choice->general}) {
        ForwardingRule const rule = policy_.forwarding(line.lineNumber, type);
        if (!rule.on) {
            continue;
        }
        auto const target = callTarget(rule.destination, line.account);
        if (target && *target != line.account.addressOfRecord()) {
            return *target;
        }
        log(kLogWarning, kComponent, "line {} cannot be forwarded to \"{}\"", line.lineURI, rule.destination);
        return std::nullopt;
    }
    return std::nullopt;
}

void CallForwarding::postForwarded(std::string const& lineURI, int callID, sip::NameAddr const& caller,
                                   std::string const& destination, sfiForwardReason reason)
{
    log(kLogInfo, kComponent, "a call for line {} is forwarded to {}", lineURI, destination);
    post_([lineURI, callID, uri = displayUri(caller), name = caller.displayName, destination,
           reason](CommunicationsServiceEventIfc& event) {
        event.callForwarded(lineURI, callID, uri, name, destination, reason);
    });
}

}  // namespace telephone

// Translates SIP statuses, reasons and headers to the platform's values and back. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "platform/sfi/SfiTypes.h"
#include "telephone/sip/Session.h"

namespace telephone {

// The end of a call, as events report it.
struct Ending
{
    sfiCallState state = sfiCallStateIdle;  // Idle, Busy or Failed
    sfiReason reason = sfiReasonNormal;
};

Ending endingOf(sip::Closing const& closing);
Ending endingOf(int status);  // final refusal of an INVITE

sfiFeatureFailure featureFailureOf(int status);  // 300 and above
sfiRegistrationResult registrationResultOf(int status);

struct StatusLine
{
    int status = 0;  // 0: no such reason
    char const* text = "";
};
StatusLine statusOf(sfiRefuseCall reason);
// The response that clears a call before it is answered.
StatusLine statusOf(CSTAEventCause cause);
// Value of a Reason header (RFC 3326); empty: none.
std::string reasonHeaderOf(CSTAEventCause cause);

// The address of a party in events and displays; empty for an anonymous one.
std::string displayUri(sip::NameAddr const& party);

// Words of the Diversion header (RFC 5806).
sfiForwardReason forwardReasonOf(std::string_view diversionReason);
char const* diversionReasonOf(sfiForwardReason reason);

// Resource-Priority (RFC 4412), namespace dsn.
sfiResourcePriority priorityOf(std::string_view header);

// What the Reason of a BYE, a CANCEL or a refusal says of preemption (RFC 4411).
struct Preemption
{
    sfiPreemptionCause cause = sfiPreemptionCauseNone;
    std::string text;  // for people
};
Preemption preemptionOf(std::string_view reasonHeader);

// Alert-Info: "<uri>;info=param".
struct AlertInformation
{
    std::string uri;
    std::string infoParam;
};
AlertInformation alertInformationOf(std::string_view header);

}  // namespace telephone

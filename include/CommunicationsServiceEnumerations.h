/// @file
/// The enumerations of the text protocol: the meaning of the numbers and fixed words in requests, answers and events.
///
/// These names are the telephone's vocabulary: text for people says "remote ringing" for the CallState 3. The service
/// passes every integer through, so a value without a name is possible.
///
/// Thread: any; the tables are constant.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/physical/PhysDefs.h"
#include "platform/sfi/SfiTypes.h"

/// One value of an enumeration.
struct EnumerationValue
{
    int number;                ///< as sent; in an enumeration of words, its place in the table
    std::string_view word;     ///< as sent, in an enumeration of words; else empty
    std::string_view name;     ///< for people: a few lower-case words
    std::string_view meaning;  ///< one sentence
};

/// One enumeration.
struct Enumeration
{
    /// Made of a table of values, which must live as long.
    template <std::size_t kSize>
    constexpr Enumeration(std::string_view theName, std::string_view theMeaning,
                          EnumerationValue const (&theValues)[kSize])
        : name(theName)
        , meaning(theMeaning)
        , values(theValues)
        , count(kSize)
    {}

    /// The first value.
    /// @return Start of the values.
    constexpr EnumerationValue const* begin() const { return values; }
    /// Behind the last value.
    /// @return End of the values.
    constexpr EnumerationValue const* end() const { return values + count; }
    /// Whether messages carry its words.
    /// @return false when they carry its numbers, as decimals.
    constexpr bool isOfWords() const { return !values[0].word.empty(); }

    /// Finds a value by its number.
    /// @return Null when there is none.
    constexpr EnumerationValue const* find(int number) const
    {
        for (auto const& value : *this) {
            if (value.number == number) {
                return &value;
            }
        }
        return nullptr;
    }
    /// Finds a value by the word that messages carry.
    /// @return Null when there is none.
    constexpr EnumerationValue const* findWord(std::string_view word) const
    {
        for (auto const& value : *this) {
            if (!word.empty() && value.word == word) {
                return &value;
            }
        }
        return nullptr;
    }
    /// Finds a value by its name for people.
    /// @return Null when there is none.
    constexpr EnumerationValue const* findName(std::string_view valueName) const
    {
        for (auto const& value : *this) {
            if (value.name == valueName) {
                return &value;
            }
        }
        return nullptr;
    }

    std::string_view name;           ///< "CallState"; its C++ enumeration is "sfi" + name, if SfiTypes.h has one
    std::string_view meaning;        ///< one sentence
    EnumerationValue const* values;  ///< in the order of the documentation
    std::size_t count;               ///< the number of values
};

/// The values of each enumeration; use kEnumerations.
namespace enumeration_values {
// clang-format off
/// @name Values
/// @{

/// The values of one enumeration.
inline constexpr EnumerationValue kCallStates[] = {
    {sfiCallStateIdle,          "", "idle",           "The call is over; its id is free again."},
    {sfiCallStateDialling,      "", "dialling",       "The call is being set up; the request is on its way."},
    {sfiCallStateProceeding,    "", "proceeding",     "The far side is working on the call."},
    {sfiCallStateRemoteRinging, "", "remote ringing", "The called party's telephone is ringing."},
    {sfiCallStateIncoming,      "", "incoming",       "The call is offered to this telephone and is not ringing yet."},
    {sfiCallStateRinging,       "", "ringing",        "The call is ringing at this telephone."},
    {sfiCallStateConnected,     "", "connected",      "The parties can talk."},
    {sfiCallStateHeld,          "", "held",           "This telephone holds the call."},
    {sfiCallStateRemotelyHeld,  "", "remotely held",  "The far end holds the call."},
    {sfiCallStateHeldByBoth,    "", "held by both",   "Both ends hold the call."},
    {sfiCallStateConference,    "", "conference",     "The call is part of a conference at this telephone."},
    {sfiCallStateTransferring,  "", "transferring",   "The call is being transferred; the outcome is not known yet."},
    {sfiCallStateClearing,      "", "clearing",       "The call is ending. Not reported by this telephone."},
    {sfiCallStateBusy,          "", "busy",           "The called party was busy; the call is over."},
    {sfiCallStateFailed,        "", "failed",         "The call failed for another reason; it is over."},
    {sfiCallStateAccepted,      "", "accepted",       "The call is ringing on the keyset only. Not reported by this telephone."},
};

inline constexpr EnumerationValue kReasons[] = {
    {sfiReasonNormal,            "", "normal",             "Nothing special."},
    {sfiReasonBusy,              "", "busy",               "The party was busy."},
    {sfiReasonNoAnswer,          "", "no answer",          "Nobody answered."},
    {sfiReasonNotFound,          "", "not found",          "The number does not exist."},
    {sfiReasonRefused,           "", "refused",            "The call was refused, here or by the other side."},
    {sfiReasonUnavailable,       "", "unavailable",        "The party cannot be reached at present."},
    {sfiReasonTimeout,           "", "timeout",            "The far end or the server did not respond."},
    {sfiReasonCancelled,         "", "cancelled",          "The caller gave up before the call was answered."},
    {sfiReasonForwarded,         "", "forwarded",          "The call was forwarded or deflected."},
    {sfiReasonServerFailure,     "", "server failure",     "The server failed, or the call could not be sent."},
    {sfiReasonUnauthorised,      "", "unauthorised",       "The server did not accept the user or the password."},
    {sfiReasonAnsweredElsewhere, "", "answered elsewhere", "Another telephone answered the call."},
    {sfiReasonTransferred,       "", "transferred",        "The call was transferred."},
    {sfiReasonPickedUp,          "", "picked up",          "Another telephone picked up the call. Not reported by this telephone."},
    {sfiReasonNotAcceptable,     "", "not acceptable",     "The two ends have no media in common."},
};

inline constexpr EnumerationValue kSendOptions[] = {
    {sfiSendOptionsNone,   "", "none",             "No digits can be sent at present."},
    {sfiSendOptionsEvents, "", "digits as events", "Digits are sent as telephone events (RFC 4733)."},
    {sfiSendOptionsInfo,   "", "digits as INFO",   "Digits are sent in SIP INFO requests."},
};

inline constexpr EnumerationValue kResourcePriorities[] = {
    {sfiResourcePriorityNone,          "", "none",           "The call has no precedence."},
    {sfiResourcePriorityRoutine,       "", "routine",        "Precedence dsn.routine (RFC 4412)."},
    {sfiResourcePriorityPriority,      "", "priority",       "Precedence dsn.priority."},
    {sfiResourcePriorityImmediate,     "", "immediate",      "Precedence dsn.immediate."},
    {sfiResourcePriorityFlash,         "", "flash",          "Precedence dsn.flash."},
    {sfiResourcePriorityFlashOverride, "", "flash override", "Precedence dsn.flash-override, the highest."},
};

inline constexpr EnumerationValue kPreemptionCauses[] = {
    {sfiPreemptionCauseNone,              "", "none",               "The call was not preempted."},
    {sfiPreemptionCauseUserAgent,         "", "user agent",         "A user agent preempted the call (RFC 4411)."},
    {sfiPreemptionCauseReservedResources, "", "reserved resources", "The network needed reserved resources."},
    {sfiPreemptionCauseGeneric,           "", "generic",            "Preempted without a more specific cause."},
    {sfiPreemptionCauseNonIp,             "", "not IP",             "Preempted in a network other than IP."},
};

inline constexpr EnumerationValue kCallTypes[] = {
    {sfiCallTypeUnknown,  "", "unknown",   "Nothing is known about the caller. Not reported by this telephone."},
    {sfiCallTypeInternal, "", "internal",  "The caller is in the line's own domain."},
    {sfiCallTypeExternal, "", "external",  "The caller is in another domain."},
    {sfiCallTypeCallBack, "", "call-back", "The call is a call-back that was set here. Not reported by this telephone."},
    {sfiCallTypePickup,   "", "pickup",    "The call can be picked up. Not reported by this telephone."},
};

inline constexpr EnumerationValue kForwardReasons[] = {
    {sfiForwardReasonNone,          "", "none",           "The call was not forwarded."},
    {sfiForwardReasonUnconditional, "", "unconditional",  "A rule forwards every call."},
    {sfiForwardReasonBusy,          "", "busy",           "The line was busy."},
    {sfiForwardReasonNoReply,       "", "no reply",       "Nobody answered in time."},
    {sfiForwardReasonDeflected,     "", "deflected",      "The call was deflected while it was ringing."},
    {sfiForwardReasonDoNotDisturb,  "", "do-not-disturb", "The line did not want to be disturbed."},
    {sfiForwardReasonUnknown,       "", "unknown",        "The diverting side gave no reason, or an unknown one."},
};

inline constexpr EnumerationValue kRegistrationResults[] = {
    {sfiRegistrationSucceeded,    "", "registered",          "The line is registered."},
    {sfiRegistrationUnauthorised, "", "unauthorised",        "The user or the password is wrong."},
    {sfiRegistrationRefused,      "", "refused",             "The registrar refused the line for another reason."},
    {sfiRegistrationNoAnswer,     "", "no answer",           "The registrar does not respond; the telephone keeps trying."},
    {sfiRegistrationEnded,        "", "given up on purpose", "The telephone ended the registration itself."},
};

inline constexpr EnumerationValue kMWIServiceTypes[] = {
    {sfiMWIServiceNone,  "", "none",  "Nothing is known about a mailbox."},
    {sfiMWIServiceVoice, "", "voice", "The mailbox holds voice messages."},
    {sfiMWIServiceFax,   "", "fax",   "The mailbox holds faxes. Not reported by this telephone."},
};

inline constexpr EnumerationValue kMWIMessageReturnTypes[] = {
    {sfiMWIReturnNone,      "", "none",       "The mailbox has no number to call."},
    {sfiMWIReturnVoiceMail, "", "voice mail", "The mailbox can be called at its number."},
};

inline constexpr EnumerationValue kMWIAvailableInfos[] = {
    {sfiMWIAvailableNothing, "", "nothing",   "Nothing is known."},
    {sfiMWIAvailableFlag,    "", "flag only", "Only whether messages are waiting is known; the counts are 0."},
    {sfiMWIAvailableCounts,  "", "counts",    "The counts are known."},
};

inline constexpr EnumerationValue kMessagesWaiting[] = {
    {sfiMessagesWaitingNo,  "", "no messages",      "No message is waiting."},
    {sfiMessagesWaitingYes, "", "messages waiting", "At least one message is waiting."},
};

inline constexpr EnumerationValue kSecurityStates[] = {
    {sfiSecurityStatusUnknown, "", "unknown", "Not known. Not reported by this telephone."},
    {sfiSecurityStatusPlain,   "", "plain",   "The audio is not encrypted."},
    {sfiSecurityStatusSecure,  "", "secure",  "The audio is encrypted."},
};

inline constexpr EnumerationValue kCallCompletionTypes[] = {
    {sfiCallCompletionOnNoReply, "", "no reply", "The call-back was set because the party did not answer."},
    {sfiCallCompletionOnBusy,    "", "busy",     "The call-back was set because the party was busy."},
};

inline constexpr EnumerationValue kCallCompletionStates[] = {
    {sfiCallCompletionActivated, "", "activated", "The call-back is set; the party's side is reporting."},
    {sfiCallCompletionReady,     "", "ready",     "The party is free: call now."},
    {sfiCallCompletionCancelled, "", "cancelled", "The call-back was cancelled."},
    {sfiCallCompletionDone,      "", "done",      "The party was called; the call-back is over."},
};

inline constexpr EnumerationValue kCallCompletionFailures[] = {
    {sfiCallCompletionFailureRefused, "", "refused", "The server or the party does not offer call-backs."},
    {sfiCallCompletionFailureTimeout, "", "timeout", "The party did not become free in time, or nothing responded."},
    {sfiCallCompletionFailureEnded,   "", "ended",   "The party's side ended the call-back."},
};

inline constexpr EnumerationValue kFeatures[] = {
    {sfiFeatureAlternate,         "", "alternate",             "Swaps the active call and the held call."},
    {sfiFeatureDeflect,           "", "deflect",               "Sends a ringing call to another destination."},
    {sfiFeatureBlindTransfer,     "", "blind transfer",        "Transfers a call without a consultation."},
    {sfiFeatureConference,        "", "conference",            "Joins two calls."},
    {sfiFeatureAttendedTransfer,  "", "attended transfer",     "Connects the parties of two calls."},
    {sfiFeatureHold,              "", "hold",                  "Puts a call on hold."},
    {sfiFeatureConsultationHold,  "", "consultation hold",     "Puts a call on hold for a consultation call."},
    {sfiFeatureRetrieve,          "", "retrieve",              "Takes a call back from hold."},
    {sfiFeatureDirectedPickup,    "", "directed pickup",       "Picks up a call that is ringing at a given number."},
    {sfiFeatureGroupPickup,       "", "group pickup",          "Picks up a call that is ringing in the group."},
    {sfiFeatureCallBackOnNoReply, "", "call-back on no reply", "Sets a call-back on a party that does not answer."},
    {sfiFeatureCallBackOnBusy,    "", "call-back on busy",     "Sets a call-back on a busy party."},
    {sfiFeatureSecurityChange,    "", "security change",       "Negotiates the audio of a call again."},
    {sfiFeatureDigits,            "", "digits",                "Sends digits in a call."},
};

inline constexpr EnumerationValue kFeatureFailures[] = {
    {sfiFeatureFailureNone,          "", "none",           "No failure."},
    {sfiFeatureFailureRefused,       "", "refused",        "The far end or the server refused."},
    {sfiFeatureFailureTimeout,       "", "timeout",        "Nobody responded in time."},
    {sfiFeatureFailureNotPossible,   "", "not possible",   "Not possible in the present state."},
    {sfiFeatureFailureUnknownTarget, "", "unknown target", "The target does not exist, or has nothing to pick up."},
    {sfiFeatureFailureTargetBusy,    "", "target busy",    "The target is busy."},
};

inline constexpr EnumerationValue kRefuseCalls[] = {
    {sfiRefuseCallBusy,        "", "busy",        "The caller gets 486 Busy Here."},
    {sfiRefuseCallDecline,     "", "decline",     "The caller gets 603 Decline."},
    {sfiRefuseCallUnavailable, "", "unavailable", "The caller gets 480 Temporarily Unavailable."},
    {sfiRefuseCallNotFound,    "", "not found",   "The caller gets 404 Not Found."},
    {sfiRefuseCallForbidden,   "", "forbidden",   "The caller gets 403 Forbidden."},
};

inline constexpr EnumerationValue kEventCauses[] = {
    {CSTAEventCauseNone,              "", "none",               "No cause is sent; a ringing call gets 603 Decline."},
    {CSTAEventCauseNormalClearing,    "", "normal clearing",    "Q.850 cause 16; a ringing call gets 603 Decline."},
    {CSTAEventCauseBusy,              "", "busy",               "Q.850 cause 17; a ringing call gets 486 Busy Here."},
    {CSTAEventCauseCallCancelled,     "", "call cancelled",     "SIP cause 487; a ringing call gets 603 Decline."},
    {CSTAEventCauseNoAnswer,          "", "no answer",          "Q.850 cause 19; a ringing call gets 480 Temporarily Unavailable."},
    {CSTAEventCauseNetworkCongestion, "", "network congestion", "Q.850 cause 42; a ringing call gets 503 Service Unavailable."},
};

inline constexpr EnumerationValue kCancelCallBackTypes[] = {
    {sfiCancelCallBackAll,       "", "all",      "Call-backs of both types."},
    {sfiCancelCallBackOnNoReply, "", "no reply", "Call-backs on a party that did not answer."},
    {sfiCancelCallBackOnBusy,    "", "busy",     "Call-backs on a busy party."},
};

inline constexpr EnumerationValue kForwardingTypes[] = {
    {sfiForwardUnconditional,         "", "unconditional",          "Every call."},
    {sfiForwardUnconditionalExternal, "", "unconditional external", "Every call from another domain."},
    {sfiForwardUnconditionalInternal, "", "unconditional internal", "Every call from the line's own domain."},
    {sfiForwardBusy,                  "", "busy",                   "Calls while the line is busy."},
    {sfiForwardBusyExternal,          "", "busy external",          "Calls from another domain while the line is busy."},
    {sfiForwardBusyInternal,          "", "busy internal",          "Calls from the line's own domain while the line is busy."},
    {sfiForwardNoReply,               "", "no reply",               "Calls that nobody answers."},
    {sfiForwardNoReplyExternal,       "", "no reply external",      "Calls from another domain that nobody answers."},
    {sfiForwardNoReplyInternal,       "", "no reply internal",      "Calls from the line's own domain that nobody answers."},
    {sfiForwardAlternative,           "", "alternative",            "The destination of the alternative forwarding key; it can be set, not read."},
};

inline constexpr EnumerationValue kLampModes[] = {
    {PhysDefs::lampOff,        "", "off",        "The lamp is dark."},
    {PhysDefs::lampSteady,     "", "steady",     "The lamp is lit."},
    {PhysDefs::lampFlashing,   "", "flashing",   "The lamp flashes slowly."},
    {PhysDefs::lampFluttering, "", "fluttering", "The lamp flashes fast."},
};

inline constexpr EnumerationValue kResults[] = {
    {sfiFailure,                       "sfiFailure",                       "failure",                  "The request was refused or is unknown."},
    {sfiFailureCallBackInvalidState,   "sfiFailureCallBackInvalidState",   "not in a call-back state", "The call's party is not busy, or is not ringing."},
    {sfiFailureCallBackNoCallInfo,     "sfiFailureCallBackNoCallInfo",     "no such call",             "There is no such call, or no such call-back."},
    {sfiFailureCallBackToMany,         "sfiFailureCallBackToMany",         "too many call-backs",      "As many call-backs are set as the telephone allows."},
    {sfiFailureCallBackAllreadyExists, "sfiFailureCallBackAllreadyExists", "call-back exists",         "A call-back to this party is set already."},
    {sfiSuccess,                       "sfiSuccess",                       "success",                  "The request was accepted; events tell how it goes."},
};

inline constexpr EnumerationValue kServiceStates[] = {
    {sfiServiceInService,    "sfiServiceInService",    "in service",     "Calls can be made and received."},
    {sfiServiceOutOfService, "sfiServiceOutOfService", "out of service", "No line is registered and no new call is possible."},
    {sfiServiceDoNotDisturb, "sfiServiceDoNotDisturb", "do-not-disturb", "Calls can be made; incoming calls are refused."},
};

inline constexpr EnumerationValue kAgentStates[] = {
    {0, "loggedOn",         "logged on",          "The agent is logged on."},
    {1, "loggedOff",        "logged off",         "The agent is logged off."},
    {2, "notReady",         "not ready",          "The agent does not take calls at present."},
    {3, "ready",            "ready",              "The agent takes calls."},
    {4, "workingAfterCall", "working after call", "The agent is finishing work on the last call."},
};

inline constexpr EnumerationValue kLamps[] = {
    {0, "Hold",        "hold lamp",         "The lamp of the hold key; green."},
    {1, "SecondAlert", "second-alert lamp", "The lamp that announces a second call; amber."},
};

inline constexpr EnumerationValue kSystemStatuses[] = {
    {0, "CallView-Normal",                       "call view",             "The call view is showing."},
    {1, "MessagesPhonelet-Normal",               "messages view",         "The messages view is showing."},
    {2, "CallViewMWI-Normal",                    "message indication",    "The call view is showing its message indication."},
    {3, "CallViewMWI-Normal-NoMessagesPhonelet", "no messages view",      "As CallViewMWI-Normal, on a telephone without a messages view."},
};

inline constexpr EnumerationValue kServerFeatureStatuses[] = {
    {0, "initialized", "initialized", "The server has started the features of the line."},
    {1, "finalized",   "finalized",   "The server has ended the features of the line."},
    {2, "failed",      "failed",      "The server refused, or did not respond."},
};

inline constexpr EnumerationValue kRecordingStatuses[] = {
    {0, "true",  "on",  "The call is being recorded."},
    {1, "false", "off", "The recording has ended, or could not be made."},
};
/// @}
// clang-format on
}  // namespace enumeration_values

/// Each enumeration under its name.
namespace enumerations {
namespace values = enumeration_values;
// clang-format off
/// @name Enumerations
/// @{

/// An enumeration.
inline constexpr Enumeration kCallState{"CallState", "Where a call is in its life.", values::kCallStates};
inline constexpr Enumeration kReason{"Reason", "Why a call ended or was missed.", values::kReasons};
inline constexpr Enumeration kSendOptions{"SendOptions", "How digits can be sent in a call at present.", values::kSendOptions};
inline constexpr Enumeration kResourcePriority{"ResourcePriority", "Precedence of a call.", values::kResourcePriorities};
inline constexpr Enumeration kPreemptionCause{"PreemptionCause", "Why a call was preempted.", values::kPreemptionCauses};
inline constexpr Enumeration kCallType{"CallType", "Where an incoming call comes from.", values::kCallTypes};
inline constexpr Enumeration kForwardReason{"ForwardReason", "Why a call was forwarded.", values::kForwardReasons};
inline constexpr Enumeration kRegistrationResult{"RegistrationResult", "Outcome of a line's registration.", values::kRegistrationResults};
inline constexpr Enumeration kMWIServiceType{"MWIServiceType", "Kind of mailbox.", values::kMWIServiceTypes};
inline constexpr Enumeration kMWIMessageReturnType{"MWIMessageReturnType", "Whether the mailbox can be called.", values::kMWIMessageReturnTypes};
inline constexpr Enumeration kMWIAvailableInfo{"MWIAvailableInfo", "How much the mailbox reports.", values::kMWIAvailableInfos};
inline constexpr Enumeration kMessagesWaiting{"MessagesWaiting", "Whether messages are waiting.", values::kMessagesWaiting};
inline constexpr Enumeration kSecurityStatus{"SecurityStatus", "Whether a call's audio is encrypted.", values::kSecurityStates};
inline constexpr Enumeration kCallCompletionType{"CallCompletionType", "Why a call-back was set.", values::kCallCompletionTypes};
inline constexpr Enumeration kCallCompletionState{"CallCompletionState", "Where a call-back is in its life.", values::kCallCompletionStates};
inline constexpr Enumeration kCallCompletionFailureType{"CallCompletionFailureType", "Why a call-back failed.", values::kCallCompletionFailures};
inline constexpr Enumeration kFeature{"Feature", "A feature of calls.", values::kFeatures};
inline constexpr Enumeration kFeatureFailure{"FeatureFailure", "Why a feature failed.", values::kFeatureFailures};
inline constexpr Enumeration kRefuseCall{"RefuseCall", "How a ringing call is refused.", values::kRefuseCalls};
inline constexpr Enumeration kEventCause{"EventCause", "Why an application ends a call (CSTAEventCause in C++).", values::kEventCauses};
inline constexpr Enumeration kCancelCallBackType{"CancelCallBackType", "Which call-backs are cancelled.", values::kCancelCallBackTypes};
inline constexpr Enumeration kForwardingType{"ForwardingType", "Which calls a forwarding rule applies to.", values::kForwardingTypes};
inline constexpr Enumeration kLampMode{"LampMode", "How a lamp shines (PhysDefs::lampMode in C++).", values::kLampModes};
inline constexpr Enumeration kResult{"Result", "The result word of an answer.", values::kResults};
inline constexpr Enumeration kServiceState{"ServiceState", "State of the whole service.", values::kServiceStates};
inline constexpr Enumeration kAgentState{"AgentState", "State of a call-centre agent.", values::kAgentStates};
inline constexpr Enumeration kLamp{"Lamp", "Lamps that applications can set.", values::kLamps};
inline constexpr Enumeration kSystemStatus{"SystemStatus", "View that the user interface is showing.", values::kSystemStatuses};
inline constexpr Enumeration kServerFeatureStatus{"ServerFeatureStatus", "State of the features that the server provides for a line.", values::kServerFeatureStatuses};
inline constexpr Enumeration kRecordingStatus{"RecordingStatus", "Whether a call is being recorded.", values::kRecordingStatuses};
/// @}
// clang-format on

/// Every enumeration; use kEnumerations.
inline constexpr Enumeration const* kAll[] = {
    &kCallState,
    &kReason,
    &kForwardReason,
    &kSendOptions,
    &kCallType,
    &kResourcePriority,
    &kPreemptionCause,
    &kSecurityStatus,
    &kRecordingStatus,
    &kRegistrationResult,
    &kFeature,
    &kFeatureFailure,
    &kRefuseCall,
    &kEventCause,
    &kForwardingType,
    &kCallCompletionType,
    &kCallCompletionState,
    &kCallCompletionFailureType,
    &kCancelCallBackType,
    &kMWIServiceType,
    &kMWIMessageReturnType,
    &kMWIAvailableInfo,
    &kMessagesWaiting,
    &kServiceState,
    &kAgentState,
    &kServerFeatureStatus,
    &kSystemStatus,
    &kLamp,
    &kLampMode,
    &kResult,
};

/// Checks one enumeration.
/// @return true when no number, word or name occurs twice, and either all values have words or none has.
constexpr bool valuesAreUnique(Enumeration const& enumeration)
{
    for (auto const& value : enumeration) {
        bool const wordIsUnique = value.word.empty() || enumeration.findWord(value.word) == &value;
        if (enumeration.find(value.number) != &value || enumeration.findName(value.name) != &value || !wordIsUnique ||
            value.word.empty() == enumeration.isOfWords()) {
            return false;
        }
    }
    return true;
}

/// Checks all enumerations.
/// @return true when each is sound and no two have the same name.
constexpr bool areSound()
{
    for (auto const* const each : kAll) {
        std::size_t count = 0;
        for (auto const* const other : kAll) {
            count += each->name == other->name ? 1U : 0U;
        }
        if (count != 1 || !valuesAreUnique(*each)) {
            return false;
        }
    }
    return true;
}
static_assert(areSound(), "a name, number or word stands twice, or an enumeration of words has a value without one");
}  // namespace enumerations

inline constexpr std::size_t kEnumerationCount = 30;        ///< the number of enumerations
inline constexpr auto& kEnumerations = enumerations::kAll;  ///< every enumeration

static_assert(sizeof(enumerations::kAll) / sizeof(enumerations::kAll[0]) == kEnumerationCount,
              "an enumeration was added or removed: whoever lists enumerations must know");

/// Finds an enumeration by its name, "CallState".
/// @return Null when there is none of that name.
constexpr Enumeration const* findEnumeration(std::string_view name)
{
    for (auto const* const each : kEnumerations) {
        if (each->name == name) {
            return each;
        }
    }
    return nullptr;
}

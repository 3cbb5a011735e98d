/// @file
/// The values that cross the SIP functional interface: results, states, reasons and records.
///
/// Every enumeration has a fixed underlying type, because applications send its values as decimal text: any integer may
/// arrive, and the service passes it on unchecked. The telephone refuses what it does not know.
#pragma once

#include <cstddef>
#include <cstdint>

/// Outcome of a call operation. Everything but sfiSuccess is a failure. A text request is answered with the
/// enumerator's name; a value without a name is answered as sfiFailure.
enum sfiResult : int
{
    /// refused or failed, for any other reason; also what the service answers when it refuses by itself
    sfiFailure = 0,
    sfiFailureCallBackInvalidState = 1,    ///< the call is in no state that allows a call-back
    sfiFailureCallBackNoCallInfo = 2,      ///< there is no such call, or no call-back to cancel
    sfiFailureCallBackToMany = 3,          ///< the limit of call-backs is reached
    sfiFailureCallBackAllreadyExists = 4,  ///< a call-back to this party is set already
    sfiSuccess = 5,                        ///< done, or under way
};

/// The state of the telephone's call service.
enum sfiServiceState : int
{
    sfiServiceInService = 0,     ///< calls are possible
    sfiServiceOutOfService = 1,  ///< lines are not registered, calls are refused
    sfiServiceDoNotDisturb = 2,  ///< lines are registered, offered calls are refused
};

/// What CallFeature is to do, and the feature that an event reports on.
enum sfiFeature : int
{
    sfiFeatureAlternate = 0,           ///< swaps the active and the held call
    sfiFeatureDeflect = 1,             ///< sends an alerting call on to a destination
    sfiFeatureBlindTransfer = 2,       ///< connects the party with a destination that is not asked first
    sfiFeatureConference = 3,          ///< joins two calls
    sfiFeatureAttendedTransfer = 4,    ///< connects the parties of two calls with each other
    sfiFeatureHold = 5,                ///< puts a call on hold
    sfiFeatureConsultationHold = 6,    ///< puts a call on hold for a call to a third party
    sfiFeatureRetrieve = 7,            ///< takes a call back from hold
    sfiFeatureDirectedPickup = 8,      ///< takes over a call that rings at a given number
    sfiFeatureGroupPickup = 9,         ///< takes over a call that rings in the group
    sfiFeatureCallBackOnNoReply = 10,  ///< call-back on a party that did not answer
    sfiFeatureCallBackOnBusy = 11,     ///< call-back on a busy party
    sfiFeatureSecurityChange = 12,     ///< negotiates the media with other security
    sfiFeatureDigits = 13,             ///< sends digits
};

/// Why a feature failed.
enum sfiFeatureFailure : int
{
    sfiFeatureFailureNone = 0,           ///< it did not fail
    sfiFeatureFailureRefused = 1,        ///< the far end or the server refused it
    sfiFeatureFailureTimeout = 2,        ///< no answer in time
    sfiFeatureFailureNotPossible = 3,    ///< not possible in the present state
    sfiFeatureFailureUnknownTarget = 4,  ///< the destination does not exist
    sfiFeatureFailureTargetBusy = 5,     ///< the destination is busy
};

/// How an alerting call is refused.
enum sfiRefuseCall : int
{
    sfiRefuseCallBusy = 0,         ///< 486 Busy Here
    sfiRefuseCallDecline = 1,      ///< 603 Decline
    sfiRefuseCallUnavailable = 2,  ///< 480 Temporarily Unavailable
    sfiRefuseCallNotFound = 3,     ///< 404 Not Found
    sfiRefuseCallForbidden = 4,    ///< 403 Forbidden
};

/// Which call-backs are cancelled.
enum sfiCancelCallBackType : int
{
    sfiCancelCallBackAll = 0,        ///< of either kind
    sfiCancelCallBackOnNoReply = 1,  ///< on a party that did not answer
    sfiCancelCallBackOnBusy = 2,     ///< on a busy party
};

/// Why a call is cleared, as computer-telephony applications name it. The status is what an alerting call is refused
/// with.
enum CSTAEventCause : int
{
    CSTAEventCauseNone = 0,               ///< not stated; 603 Decline
    CSTAEventCauseNormalClearing = 1,     ///< 603 Decline
    CSTAEventCauseBusy = 2,               ///< 486 Busy Here
    CSTAEventCauseCallCancelled = 3,      ///< 603 Decline
    CSTAEventCauseNoAnswer = 4,           ///< 480 Temporarily Unavailable
    CSTAEventCauseNetworkCongestion = 5,  ///< 503 Service Unavailable
};

/// The ten forwarding rules. External rules apply to callers of another domain than the line's, internal ones to
/// callers of its own; either comes before the rule for all.
enum sfiForwardingType : int
{
    sfiForwardUnconditional = 0,          ///< every call
    sfiForwardUnconditionalExternal = 1,  ///< every call from outside
    sfiForwardUnconditionalInternal = 2,  ///< every call from the own domain
    sfiForwardBusy = 3,                   ///< when the line is busy
    sfiForwardBusyExternal = 4,           ///< when busy, calls from outside
    sfiForwardBusyInternal = 5,           ///< when busy, calls from the own domain
    sfiForwardNoReply = 6,                ///< when nobody answers; the only rule with a delay of its own
    sfiForwardNoReplyExternal = 7,        ///< when nobody answers, calls from outside
    sfiForwardNoReplyInternal = 8,        ///< when nobody answers, calls from the own domain
    sfiForwardAlternative = 9,            ///< the forwarding key's rule, which the team features keep
};

/// The states of a call.
enum sfiCallState : int
{
    sfiCallStateIdle = 0,           ///< cleared; the call id is free again
    sfiCallStateDialling = 1,       ///< the request is on its way
    sfiCallStateProceeding = 2,     ///< the far side works on it
    sfiCallStateRemoteRinging = 3,  ///< the far end rings
    sfiCallStateIncoming = 4,       ///< offered to this telephone
    sfiCallStateRinging = 5,        ///< alerting here
    sfiCallStateConnected = 6,      ///< both ends talk
    sfiCallStateHeld = 7,           ///< held by this telephone
    sfiCallStateRemotelyHeld = 8,   ///< held by the far end
    sfiCallStateHeldByBoth = 9,     ///< held by this telephone and by the far end
    sfiCallStateConference = 10,    ///< part of a conference
    sfiCallStateTransferring = 11,  ///< being transferred
    sfiCallStateClearing = 12,      ///< being ended
    sfiCallStateBusy = 13,          ///< the far end was busy; the call is over
    sfiCallStateFailed = 14,        ///< it failed for another reason; the call is over
    sfiCallStateAccepted = 17,      ///< alerting on the keyset only
};

/// Why a call changed its state, or ended unanswered.
enum sfiReason : int
{
    sfiReasonNormal = 0,              ///< ended or changed as asked
    sfiReasonBusy = 1,                ///< the far end is busy
    sfiReasonNoAnswer = 2,            ///< nobody answered
    sfiReasonNotFound = 3,            ///< the destination does not exist
    sfiReasonRefused = 4,             ///< the far end or the server refused it
    sfiReasonUnavailable = 5,         ///< the far end cannot be reached at present
    sfiReasonTimeout = 6,             ///< no answer to a request: the far end or the server is dead
    sfiReasonCancelled = 7,           ///< ended before it was answered
    sfiReasonForwarded = 8,           ///< sent on by a forwarding rule
    sfiReasonServerFailure = 9,       ///< the server failed
    sfiReasonUnauthorised = 10,       ///< wrong user or password
    sfiReasonAnsweredElsewhere = 11,  ///< another telephone answered it
    sfiReasonTransferred = 12,        ///< transferred
    sfiReasonPickedUp = 13,           ///< picked up by another telephone
    sfiReasonNotAcceptable = 14,      ///< no common media
};

/// How digits can be sent in the call at present.
enum sfiSendOptions : int
{
    sfiSendOptionsNone = 0,    ///< not at all: the call is not connected
    sfiSendOptionsEvents = 1,  ///< RFC 4733 telephone events
    sfiSendOptionsInfo = 2,    ///< SIP INFO
};

/// Precedence of a call, RFC 4412 section 12 (dsn).
enum sfiResourcePriority : int
{
    sfiResourcePriorityNone = 0,           ///< the call carries none
    sfiResourcePriorityRoutine = 1,        ///< dsn.routine
    sfiResourcePriorityPriority = 2,       ///< dsn.priority
    sfiResourcePriorityImmediate = 3,      ///< dsn.immediate
    sfiResourcePriorityFlash = 4,          ///< dsn.flash
    sfiResourcePriorityFlashOverride = 5,  ///< dsn.flash-override
};

/// Why a call was preempted, RFC 4411 section 5.
enum sfiPreemptionCause : int
{
    sfiPreemptionCauseNone = 0,               ///< not preempted
    sfiPreemptionCauseUserAgent = 1,          ///< at the telephone
    sfiPreemptionCauseReservedResources = 2,  ///< for reserved resources
    sfiPreemptionCauseGeneric = 3,            ///< no further detail
    sfiPreemptionCauseNonIp = 4,              ///< in a network other than IP
};

/// The kind of an offered call.
enum sfiCallType : int
{
    sfiCallTypeUnknown = 0,   ///< not known
    sfiCallTypeInternal = 1,  ///< the caller is of the line's own domain
    sfiCallTypeExternal = 2,  ///< the caller is of another domain
    sfiCallTypeCallBack = 3,  ///< a call-back that was set here
    sfiCallTypePickup = 4,    ///< a call that was picked up
};

/// Why a call was forwarded or diverted.
enum sfiForwardReason : int
{
    sfiForwardReasonNone = 0,           ///< it was not
    sfiForwardReasonUnconditional = 1,  ///< every call is
    sfiForwardReasonBusy = 2,           ///< busy
    sfiForwardReasonNoReply = 3,        ///< nobody answered
    sfiForwardReasonDeflected = 4,      ///< sent on by hand
    sfiForwardReasonDoNotDisturb = 5,   ///< do-not-disturb
    sfiForwardReasonUnknown = 6,        ///< a reason that is not named here
};

/// The result of a registration.
enum sfiRegistrationResult : int
{
    sfiRegistrationSucceeded = 0,     ///< registered
    sfiRegistrationUnauthorised = 1,  ///< wrong user or password
    sfiRegistrationRefused = 2,       ///< any other final refusal
    sfiRegistrationNoAnswer = 3,      ///< the registrar is silent; it is tried again
    sfiRegistrationEnded = 4,         ///< given up on purpose
};

/// The kind of messages in a mailbox, after RFC 3842.
enum sfiMWIServiceType : int
{
    sfiMWIServiceNone = 0,   ///< not known
    sfiMWIServiceVoice = 1,  ///< voice messages
    sfiMWIServiceFax = 2,    ///< fax messages
};

/// How the messages can be fetched.
enum sfiMWIMessageReturnType : int
{
    sfiMWIReturnNone = 0,       ///< not from here
    sfiMWIReturnVoiceMail = 1,  ///< the mailbox can be called
};

/// How much is known of a mailbox.
enum sfiMWIAvailableInfo : int
{
    sfiMWIAvailableNothing = 0,  ///< nothing
    sfiMWIAvailableFlag = 1,     ///< only whether messages wait
    sfiMWIAvailableCounts = 2,   ///< and how many
};

/// Whether messages wait.
enum sfiMessagesWaiting : int
{
    sfiMessagesWaitingNo = 0,   ///< none does
    sfiMessagesWaitingYes = 1,  ///< at least one
};

/// The security of a call's audio.
enum sfiSecurityStatus : int
{
    sfiSecurityStatusUnknown = 0,  ///< not known
    sfiSecurityStatusPlain = 1,    ///< not encrypted
    sfiSecurityStatusSecure = 2,   ///< encrypted
};

/// The kind of a call-back.
enum sfiCallCompletionType : int
{
    sfiCallCompletionOnNoReply = 0,  ///< on a party that did not answer
    sfiCallCompletionOnBusy = 1,     ///< on a busy party
};

/// The state of a call-back.
enum sfiCallCompletionState : int
{
    sfiCallCompletionActivated = 0,  ///< set; the party is being watched
    sfiCallCompletionReady = 1,      ///< the party is free: the call-back can be made
    sfiCallCompletionCancelled = 2,  ///< cancelled here
    sfiCallCompletionDone = 3,       ///< the party was called
};

/// Why a call-back failed.
enum sfiCallCompletionFailureType : int
{
    sfiCallCompletionFailureRefused = 0,  ///< the server or the party does not offer it
    sfiCallCompletionFailureTimeout = 1,  ///< no answer, or it was set for too long
    sfiCallCompletionFailureEnded = 2,    ///< the party's side ended it
};

/// The call record that every call operation is handed: which line, which appearance of it, which call. On a
/// single-line telephone, and for a line that does not exist, it is line 0, primary 1, the call id, appearance 0.
struct sfiCallInfo
{
    std::uint8_t lineID;   ///< line number, or virtual line number of a multi-call-appearance line; 0: the telephone
    std::int32_t primary;  ///< LineData::getPrimary of the line; 1 without line data
    std::int32_t callID;   ///< the application's number of the call; calls that arrive are numbered by the telephone
    std::uint8_t appearanceIndex;  ///< from 1; 0 for a plain line
};
static_assert(offsetof(sfiCallInfo, lineID) == 0 && offsetof(sfiCallInfo, primary) == 4 &&
                  offsetof(sfiCallInfo, callID) == 8 && offsetof(sfiCallInfo, appearanceIndex) == 12,
              "the platform reads the call record by this layout");

/// The dialog that a call replaces, and the parties to show for it. All texts are NUL-terminated, and empty when the
/// call replaces nothing.
struct sfiReplacesDisplay
{
    static constexpr std::size_t kPartySize = 65;  ///< bytes of a party's text, with its NUL

    char callID[128];              ///< Call-ID of the replaced dialog, RFC 3891
    char toTag[80];                ///< its to-tag
    char fromTag[80];              ///< its from-tag
    char calledName[kPartySize];   ///< display name of the called party
    char called[kPartySize];       ///< address of the called party
    char callingName[kPartySize];  ///< display name of the calling party
    char calling[kPartySize];      ///< address of the calling party
};
static_assert(offsetof(sfiReplacesDisplay, calledName) == 288 && offsetof(sfiReplacesDisplay, called) == 353 &&
                  offsetof(sfiReplacesDisplay, callingName) == 418 && offsetof(sfiReplacesDisplay, calling) == 483,
              "the platform fills the record by this layout");

/// Impact levels of a call.
struct sfiAdditionalCallInfo
{
    std::int32_t callImpactLevel;   ///< of the call
    std::int32_t localImpactLevel;  ///< of this telephone
};

/// Message counts of a mailbox. All zero: nothing is known.
struct sfiMessageWaitingRecord
{
    int type;                        ///< sfiMWIServiceType
    unsigned int newMessages;        ///< not listened to, urgent ones included
    unsigned int oldMessages;        ///< listened to, urgent ones included
    unsigned int newUrgentMessages;  ///< urgent ones of the new
    unsigned int oldUrgentMessages;  ///< urgent ones of the old
    int returnType;                  ///< sfiMWIMessageReturnType
    int availableInfo;               ///< sfiMWIAvailableInfo
    int messagesWaiting;             ///< sfiMessagesWaiting
};

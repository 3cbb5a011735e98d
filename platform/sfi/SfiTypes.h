// The values that cross the SIP functional interface: results, states, reasons and the call record.
//
// Every enumeration has a fixed underlying type, because applications send its values as decimal text: any integer may
// arrive and is passed through unchecked. The named values are the platform's own meaning of them.
#pragma once

#include <cstddef>
#include <cstdint>

// Outcome of a call operation. Everything but sfiSuccess is a failure.
enum sfiResult : int
{
    sfiFailure = 0,
    sfiFailureCallBackInvalidState = 1,    // the call is in no state that allows a call-back
    sfiFailureCallBackNoCallInfo = 2,      // there is no such call
    sfiFailureCallBackToMany = 3,          // the number of call-backs is exhausted
    sfiFailureCallBackAllreadyExists = 4,  // a call-back to this party is set already
    sfiSuccess = 5,
};

enum sfiServiceState : int
{
    sfiServiceInService = 0,
    sfiServiceOutOfService = 1,
    sfiServiceDoNotDisturb = 2,
};

// What a call feature operation is to do, and which feature an event speaks of.
enum sfiFeature : int
{
    sfiFeatureAlternate = 0,
    sfiFeatureDeflect = 1,
    sfiFeatureBlindTransfer = 2,
    sfiFeatureConference = 3,
    sfiFeatureAttendedTransfer = 4,
    sfiFeatureHold = 5,
    sfiFeatureConsultationHold = 6,
    sfiFeatureRetrieve = 7,
    sfiFeatureDirectedPickup = 8,
    sfiFeatureGroupPickup = 9,
    sfiFeatureCallBackOnNoReply = 10,
    sfiFeatureCallBackOnBusy = 11,
    sfiFeatureSecurityChange = 12,
    sfiFeatureDigits = 13,
};

enum sfiFeatureFailure : int
{
    sfiFeatureFailureNone = 0,
    sfiFeatureFailureRefused = 1,      // the far end or the server refused it
    sfiFeatureFailureTimeout = 2,      // nobody answered in time
    sfiFeatureFailureNotPossible = 3,  // not possible in the present state
    sfiFeatureFailureUnknownTarget = 4,
    sfiFeatureFailureTargetBusy = 5,
};

// How an alerting call is turned away.
enum sfiRefuseCall : int
{
    sfiRefuseCallBusy = 0,         // 486 Busy Here
    sfiRefuseCallDecline = 1,      // 603 Decline
    sfiRefuseCallUnavailable = 2,  // 480 Temporarily Unavailable
    sfiRefuseCallNotFound = 3,     // 404 Not Found
    sfiRefuseCallForbidden = 4,    // 403 Forbidden
};

enum sfiCancelCallBackType : int
{
    sfiCancelCallBackAll = 0,
    sfiCancelCallBackOnNoReply = 1,
    sfiCancelCallBackOnBusy = 2,
};

// Why a call is cleared, as computer-telephony applications name it.
enum CSTAEventCause : int
{
    CSTAEventCauseNone = 0,
    CSTAEventCauseNormalClearing = 1,
    CSTAEventCauseBusy = 2,
    CSTAEventCauseCallCancelled = 3,
    CSTAEventCauseNoAnswer = 4,
    CSTAEventCauseNetworkCongestion = 5,
};

// The ten forwarding rules. External and internal ones tell callers of another and of the own domain apart.
enum sfiForwardingType : int
{
    sfiForwardUnconditional = 0,
    sfiForwardUnconditionalExternal = 1,
    sfiForwardUnconditionalInternal = 2,
    sfiForwardBusy = 3,
    sfiForwardBusyExternal = 4,
    sfiForwardBusyInternal = 5,
    sfiForwardNoReply = 6,
    sfiForwardNoReplyExternal = 7,
    sfiForwardNoReplyInternal = 8,
    sfiForwardAlternative = 9,
};

enum sfiCallState : int
{
    sfiCallStateIdle = 0,        // cleared; the call id is free again
    sfiCallStateDialling = 1,    // the request is on its way
    sfiCallStateProceeding = 2,  // the far side works on it
    sfiCallStateRemoteRinging = 3,
    sfiCallStateIncoming = 4,  // offered to this telephone
    sfiCallStateRinging = 5,   // alerting here
    sfiCallStateConnected = 6,
    sfiCallStateHeld = 7,          // by this telephone
    sfiCallStateRemotelyHeld = 8,  // by the far end
    sfiCallStateHeldByBoth = 9,
    sfiCallStateConference = 10,
    sfiCallStateTransferring = 11,
    sfiCallStateClearing = 12,
    sfiCallStateBusy = 13,      // the far end was busy; the call is over
    sfiCallStateFailed = 14,    // it failed for another reason; the call is over
    sfiCallStateAccepted = 17,  // alerting on the keyset only
};

enum sfiReason : int
{
    sfiReasonNormal = 0,
    sfiReasonBusy = 1,
    sfiReasonNoAnswer = 2,
    sfiReasonNotFound = 3,
    sfiReasonRefused = 4,
    sfiReasonUnavailable = 5,
    sfiReasonTimeout = 6,  // no answer to a request: the far end or the server is dead
    sfiReasonCancelled = 7,
    sfiReasonForwarded = 8,
    sfiReasonServerFailure = 9,
    sfiReasonUnauthorised = 10,
    sfiReasonAnsweredElsewhere = 11,
    sfiReasonTransferred = 12,
    sfiReasonPickedUp = 13,
    sfiReasonNotAcceptable = 14,  // no common media
};

// How digits can be sent in the call at present.
enum sfiSendOptions : int
{
    sfiSendOptionsNone = 0,
    sfiSendOptionsEvents = 1,  // RFC 4733 telephone events
    sfiSendOptionsInfo = 2,    // SIP INFO
};

// Precedence of a call, RFC 4412 section 12 (dsn).
enum sfiResourcePriority : int
{
    sfiResourcePriorityNone = 0,
    sfiResourcePriorityRoutine = 1,
    sfiResourcePriorityPriority = 2,
    sfiResourcePriorityImmediate = 3,
    sfiResourcePriorityFlash = 4,
    sfiResourcePriorityFlashOverride = 5,
};

// Why a call was preempted, RFC 4411 section 5.
enum sfiPreemptionCause : int
{
    sfiPreemptionCauseNone = 0,
    sfiPreemptionCauseUserAgent = 1,
    sfiPreemptionCauseReservedResources = 2,
    sfiPreemptionCauseGeneric = 3,
    sfiPreemptionCauseNonIp = 4,
};

enum sfiCallType : int
{
    sfiCallTypeUnknown = 0,
    sfiCallTypeInternal = 1,  // the caller is of the line's own domain
    sfiCallTypeExternal = 2,
    sfiCallTypeCallBack = 3,  // a call-back that was set here
    sfiCallTypePickup = 4,
};

enum sfiForwardReason : int
{
    sfiForwardReasonNone = 0,
    sfiForwardReasonUnconditional = 1,
    sfiForwardReasonBusy = 2,
    sfiForwardReasonNoReply = 3,
    sfiForwardReasonDeflected = 4,
    sfiForwardReasonDoNotDisturb = 5,
    sfiForwardReasonUnknown = 6,
};

enum sfiRegistrationResult : int
{
    sfiRegistrationSucceeded = 0,
    sfiRegistrationUnauthorised = 1,  // wrong user or password
    sfiRegistrationRefused = 2,       // any other final refusal
    sfiRegistrationNoAnswer = 3,      // the registrar is silent; it is tried again
    sfiRegistrationEnded = 4,         // given up on purpose
};

// Message waiting, after RFC 3842.
enum sfiMWIServiceType : int
{
    sfiMWIServiceNone = 0,
    sfiMWIServiceVoice = 1,
    sfiMWIServiceFax = 2,
};

enum sfiMWIMessageReturnType : int
{
    sfiMWIReturnNone = 0,
    sfiMWIReturnVoiceMail = 1,  // the mailbox can be called
};

enum sfiMWIAvailableInfo : int
{
    sfiMWIAvailableNothing = 0,
    sfiMWIAvailableFlag = 1,    // only whether messages wait
    sfiMWIAvailableCounts = 2,  // and how many
};

enum sfiMessagesWaiting : int
{
    sfiMessagesWaitingNo = 0,
    sfiMessagesWaitingYes = 1,
};

enum sfiSecurityStatus : int
{
    sfiSecurityStatusUnknown = 0,
    sfiSecurityStatusPlain = 1,
    sfiSecurityStatusSecure = 2,
};

enum sfiCallCompletionType : int
{
    sfiCallCompletionOnNoReply = 0,
    sfiCallCompletionOnBusy = 1,
};

enum sfiCallCompletionState : int
{
    sfiCallCompletionActivated = 0,
    sfiCallCompletionReady = 1,  // the party is free: the call-back can be made
    sfiCallCompletionCancelled = 2,
    sfiCallCompletionDone = 3,
};

enum sfiCallCompletionFailureType : int
{
    sfiCallCompletionFailureRefused = 0,  // the server or the party does not offer it
    sfiCallCompletionFailureTimeout = 1,
    sfiCallCompletionFailureEnded = 2,  // the party's side ended it
};

// The call record that every call operation is handed: which line, which appearance of it, which call.
struct sfiCallInfo
{
    std::uint8_t lineID;           // line number, or virtual line number of a multi-call-appearance line; 0: the phone
    std::int32_t primary;          // primary value of the line
    std::int32_t callID;           // the application's number of the call
    std::uint8_t appearanceIndex;  // 0 for a plain line
};
static_assert(offsetof(sfiCallInfo, lineID) == 0 && offsetof(sfiCallInfo, primary) == 4 &&
                  offsetof(sfiCallInfo, callID) == 8 && offsetof(sfiCallInfo, appearanceIndex) == 12,
              "the platform reads the call record by this layout");

// The dialog that a call replaces, and the parties to show for it. All texts are NUL-terminated.
struct sfiReplacesDisplay
{
    static constexpr std::size_t kPartySize = 65;

    char callID[128];  // of the replaced dialog, RFC 3891
    char toTag[80];
    char fromTag[80];
    char calledName[kPartySize];
    char called[kPartySize];
    char callingName[kPartySize];
    char calling[kPartySize];
};
static_assert(offsetof(sfiReplacesDisplay, calledName) == 288 && offsetof(sfiReplacesDisplay, called) == 353 &&
                  offsetof(sfiReplacesDisplay, callingName) == 418 && offsetof(sfiReplacesDisplay, calling) == 483,
              "the platform fills the record by this layout");

struct sfiAdditionalCallInfo
{
    std::int32_t callImpactLevel;
    std::int32_t localImpactLevel;
};

// Message counts of a mailbox.
struct sfiMessageWaitingRecord
{
    int type;  // sfiMWIServiceType
    unsigned int newMessages;
    unsigned int oldMessages;
    unsigned int newUrgentMessages;
    unsigned int oldUrgentMessages;
    int returnType;       // sfiMWIMessageReturnType
    int availableInfo;    // sfiMWIAvailableInfo
    int messagesWaiting;  // sfiMessagesWaiting
};

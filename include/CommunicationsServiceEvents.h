/// @file
/// The events that the service sends as text, described for programs that read or show them: documentation, a console's
/// help, test tools. The tests compare what the event proxy sends with this table.
///
/// An event is the element "Method" followed by every element of its row, in the row's order, with nothing between
/// them: `<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>`. No element is ever left out, even
/// when its value is empty. Values are raw: there is no escaping. The meaning of an element belongs to its event: the
/// same tag means different things in different events. "This telephone" is the reference telephone; others may send
/// more.
///
/// Thread: any; the table is constant.
#pragma once

#include <cstddef>
#include <string_view>

#include "CommunicationsServiceEnumerations.h"

/// How the value of an element is written.
enum class EventElementKind
{
    text,     ///< as it stands
    cutText,  ///< as it stands, but only up to its first NUL
    integer,  ///< signed decimal; enumerations too
    count,    ///< unsigned decimal
    flag,     ///< 1 or 0
    list,     ///< a list in the framework's serialised form
    body,     ///< no element: the text follows as it stands, up to the end of the event
};

/// One element of an event.
struct EventElement
{
    std::string_view tag;       ///< its name; case-sensitive
    EventElementKind kind;      ///< how its value is written
    Enumeration const* values;  ///< enumeration of its numbers or words; null: none
    std::string_view form;      ///< what the value is, unless it has an enumeration: "line id", "number of messages"
    std::string_view meaning;   ///< in this event, one sentence
};

/// The elements of an event, in order. A list that can be written in a table row.
struct EventElements
{
    static constexpr std::size_t kMaximum = 17;  ///< most elements of an event

    EventElement list[kMaximum] = {};  ///< unused places have an empty tag

    /// The first element.
    /// @return Start of the elements in use.
    constexpr EventElement const* begin() const { return list; }
    /// Behind the last element.
    /// @return End of the elements in use.
    constexpr EventElement const* end() const { return list + size(); }
    /// The number of elements.
    /// @return 0 for an event without elements.
    constexpr std::size_t size() const
    {
        std::size_t count = 0;
        while (count < kMaximum && !list[count].tag.empty()) {
            ++count;
        }
        return count;
    }
};

/// Whether an application ever receives an event.
enum class EventSource
{
    telephone,        ///< this telephone sends it
    otherTelephones,  ///< the service can send it, but nothing in this telephone causes it
    nobody,           ///< it is never sent
};

/// One event.
struct EventDescription
{
    std::string_view operation;  ///< of CommunicationsServiceEventIfc
    std::string_view method;     ///< the value of the element "Method"; empty: the event is not sent
    std::string_view name;     ///< in a few words for people; of CallStateChangeEvent, the state's name is used instead
    EventSource source;        ///< whether an application ever receives it
    EventElements elements;    ///< what follows the method
    std::string_view meaning;  ///< one sentence for the documentation
    std::string_view when;     ///< when it is sent, and what a receiver must know
};

/// Short names for the rows of the table.
namespace event_elements {
/// @name Kinds of elements
/// @{

/// See EventElementKind.
inline constexpr auto text = EventElementKind::text;
inline constexpr auto cutText = EventElementKind::cutText;
inline constexpr auto integer = EventElementKind::integer;
inline constexpr auto count = EventElementKind::count;
inline constexpr auto flag = EventElementKind::flag;
inline constexpr auto list = EventElementKind::list;
/// @}

/// No enumeration.
inline constexpr Enumeration const* none = nullptr;

/// @name Elements of several events
/// @{

/// An element of several events. The spelling of one and the same thing differs between events, and receivers depend on
/// it.
inline constexpr EventElement kLineID{"LineID", text, none, "line id", "Line or appearance that the call is on."};
inline constexpr EventElement kCutLineID{"LineID", cutText, none, "line id", "Line or appearance that the call is on."};
inline constexpr EventElement kLineURI{"lineURI", text, none, "line id", "Line or appearance that the call is on."};
inline constexpr EventElement kOwnLineURI{"lineURI", text, none, "line id", "The line."};
inline constexpr EventElement kCallID{"CallID", integer, none, "call id", "The call."};
inline constexpr EventElement kCallId{"callId", integer, none, "call id", "The call."};
inline constexpr EventElement kURI{"URI", text, none, "SIP address", "The far end."};
inline constexpr EventElement kName{"Name", text, none, "display name",
                                    "The far end's name, as it claims; may be empty."};
inline constexpr EventElement kCallLevel{"ILCallLevel", integer, none, "impact level",
                                         "Impact level of the call; always 0 on this telephone."};
inline constexpr EventElement kLocalLevel{"ILLocalLevel", integer, none, "impact level",
                                          "Impact level of this telephone; always 0 on this telephone."};
/// @}
}  // namespace event_elements

/// The table itself; use kEventDescriptions.
namespace event_table {
using namespace event_elements;
namespace e = enumerations;
/// @name Sources of events
/// @{

/// See EventSource.
inline constexpr auto telephone = EventSource::telephone;
inline constexpr auto others = EventSource::otherTelephones;
/// @}

// clang-format off
/// One row for each operation of CommunicationsServiceEventIfc, in its order.
inline constexpr EventDescription kRows[] = {
    {"callStateChange", "CallStateChangeEvent", "call state", telephone,
        {{kLineID, kCallID,
          {"CallState",                integer, &e::kCallState,        "",                "State that the call has entered."},
          {"Reason",                   integer, &e::kReason,           "",                "Why the call ended; normal unless the state ends the call."},
          {"SendOptions",              integer, &e::kSendOptions,      "",                "How digits can be sent now."},
          kURI, kName,
          {"GPUCLG",                   text,    none,                  "SIP address",     "Caller of a call that was picked up here; else empty."},
          {"GPUCLGName",               text,    none,                  "display name",    "Name of that caller; else empty."},
          {"GPUCLD",                   text,    none,                  "SIP address",     "Party that a picked-up call was meant for; else empty."},
          {"GPUCLDName",               text,    none,                  "display name",    "Name of that party; else empty."},
          {"ResourcePriority",         integer, &e::kResourcePriority, "",                "Precedence of the call; none for calls made here."},
          {"PreemptionCause",          integer, &e::kPreemptionCause,  "",                "Why the call was preempted; none unless it was."},
          {"PreemptionText",           text,    none,                  "text for people", "The same in the words of whoever preempted it; empty unless it was."},
          {"CallBackFearureAvailable", flag,    none,                  "",                "Whether a call-back can be set on the call's party now."},
          kCallLevel, kLocalLevel}},
        "A call has entered another state.",
        "Sent for every change of state except three: IncomingCallEvent reports a new incoming call, CallHeldEvent a "
        "hold and CallRetrievedEvent a retrieval. After idle, busy or failed the call is over and its id is free "
        "again; a call-back can still be set on it."},
    {"registrationStateChange", "RegistrationStateChangeEvent", "registration", telephone,
        {{{"LineID",             text,    none,                    "line id", "The line."},
          {"CallID",             integer, none,                    "call id", "Always 0: the event concerns no call."},
          {"Registered",         flag,    none,                    "",        "Whether the line is registered now."},
          {"RegistrationResult", integer, &e::kRegistrationResult, "",        "Outcome of the registration."}}},
        "The registration of a line has succeeded, failed or ended.",
        "Sent when the outcome changes: a renewed registration, or the same failure again, is not reported."},
    {"incomingCall", "IncomingCallEvent", "incoming call", telephone,
        {{kLineID, kCallID,
          {"URI",                         text,    none,                  "SIP address",  "The caller."},
          {"Name",                        text,    none,                  "display name", "The caller's name, as the caller claims; may be empty."},
          {"AlertInformation_AlertURI",   text,    none,                  "address",      "Ring tone that the server suggests (Alert-Info); may be empty."},
          {"AlertInformation_InfoParam",  text,    none,                  "word",         "Kind of ringing that the server suggests (the parameter info of Alert-Info); may be empty."},
          {"AlertInformation_AutoAnswer", flag,    none,                  "",             "Whether the caller asks for the call to be answered automatically."},
          {"CallType",                    integer, &e::kCallType,         "",             "Where the call comes from; internal or external on this telephone."},
          {"DiversionURI",                text,    none,                  "SIP address",  "Party that diverted the call here; empty if nobody did."},
          {"DiversionName",               text,    none,                  "display name", "Name of that party; may be empty."},
          {"DiversionReason",             integer, &e::kForwardReason,    "",             "Why that party diverted the call; none if nobody did."},
          {"AICSZIPAutoAnswer",           flag,    none,                  "",             "As AlertInformation_AutoAnswer; always equal to it on this telephone."},
          {"ResourcePriority",            integer, &e::kResourcePriority, "",             "Precedence of the call."},
          kCallLevel, kLocalLevel,
          {"IsVideoCall",                 flag,    none,                  "",             "Whether the call has video; always 0 on this telephone."}}},
        "A call is offered.",
        "Sent once, first of all events of an incoming call. CallStateChangeEvent with ringing follows at once, "
        "unless the configuration leaves it to an application to let calls ring (AcceptCall)."},
    {"incomingPickupCall", "IncomingPickupCallEvent", "picked up", telephone,
        {{kLineID, kCallID,
          {"URI",  text, none, "SIP address",  "The party that the picked-up call is with."},
          {"Name", text, none, "display name", "Name of that party; may be empty."}}},
        "A call that was ringing elsewhere has been picked up.",
        "Sent when a pickup has succeeded, just before CallStateChangeEvent with connected."},
    {"callHeld", "CallHeldEvent", "held", telephone,
        {{kLineID, kCallID}},
        "A call is on hold.",
        "Sent when the far end has agreed to the hold, even if the telephone itself held the call to let another one "
        "be active. Held conferences report it for both calls."},
    {"callRetrieved", "CallRetrievedEvent", "retrieved", telephone,
        {{kLineID, kCallID, kURI, kName, kCallLevel, kLocalLevel,
          {"ConnectedToMediaServer", flag, none, "", "Whether a media server is in the call; always 0 on this telephone."}}},
        "A call is back from hold.",
        "Sent when the far end has agreed. The call is then connected; in a conference it is in state conference, "
        "and the event comes for both calls. CallStateChangeEvent follows if the far end holds the call itself."},
    {"featureSuccess", "FeatureSuccessEvent", "feature done", telephone,
        {{kLineID, kCallID,
          {"Feature", integer, &e::kFeature, "", "The feature; one of alternate, blind transfer, attended transfer, conference, directed pickup and group pickup."}}},
        "A feature of a call has done its work.",
        "Sent after the events that show the effect, except for a transfer: there the calls end afterwards. Hold, "
        "retrieve, deflect and digits do not report success this way."},
    {"featureFailed", "FeatureFailedEvent", "feature failed", telephone,
        {{kLineID,
          {"CallID",         integer, none,                "call id", "The call; 0 if the feature concerned no call."},
          {"Feature",        integer, &e::kFeature,        "",        "The feature; of a hold, the HoldCallReason of the request."},
          {"FeatureFailure", integer, &e::kFeatureFailure, "",        "Why it failed."}}},
        "A feature of a call has failed.",
        "Sent when a request that was answered with success fails later. The call is as it was before, unless "
        "another event says otherwise."},
    {"remoteEndpointDetailsChanged", "RemoteEndpointDetailsChangedEvent", "party changed", telephone,
        {{kLineID, kCallID,
          {"URI",       text, none, "SIP address",  "The far end from now on."},
          {"Name",      text, none, "display name", "Its name, as it claims; may be empty."},
          {"exitConf",  flag, none, "",             "Whether the call has just left a conference."},
          {"jointCall", flag, none, "",             "Whether the call is in a conference."}}},
        "The far end of a call is another party or shows another name.",
        "Sent when the called party forwards the call, when the far end transfers it, when the far end's identity "
        "changes, and when a call stays behind alone after a conference."},
    {"incomingCallMissed", "IncomingCallMissedEvent", "missed", telephone,
        {{{"LineID",          text,    none,               "line id",      "Line or appearance that the call was for."},
          {"CallID",          integer, none,               "call id",      "The call; of a call that do-not-disturb refused, an id that no other event has."},
          {"URI",             text,    none,               "SIP address",  "The caller."},
          {"Name",            text,    none,               "display name", "The caller's name, as the caller claims; may be empty."},
          {"Reason",          integer, &e::kReason,        "",             "Why the call was missed: no answer, or busy or unavailable for a call that do-not-disturb refused."},
          {"DiversionURI",    text,    none,               "SIP address",  "Party that diverted the call here; empty if nobody did."},
          {"DiversionName",   text,    none,               "display name", "Name of that party; may be empty."},
          {"DiversionReason", integer, &e::kForwardReason, "",             "Why that party diverted the call; none if nobody did."}}},
        "An incoming call was not answered.",
        "Sent before CallStateChangeEvent with idle when the caller gives up, and alone when do-not-disturb refuses "
        "a call. A call that is answered elsewhere, refused or forwarded is not missed."},
    {"callForwarded", "CallForwardedEvent", "forwarded", telephone,
        {{{"LineID",           text,    none,               "line id",      "Line or appearance that the call was for."},
          {"CallID",           integer, none,               "call id",      "The call; if it was forwarded before it was offered, an id that no other event has."},
          {"CallingParty",     text,    none,               "SIP address",  "The caller."},
          {"CallingPartyName", text,    none,               "display name", "The caller's name, as the caller claims; may be empty."},
          {"NewDestination",   text,    none,               "SIP address",  "Where the call was sent."},
          {"Reason",           integer, &e::kForwardReason, "",             "Why the call was forwarded; not a reason for ending, although the tag is the same."}}},
        "An incoming call was forwarded or deflected.",
        "Sent when the caller has been told the new destination. A call that was offered already ends with "
        "CallStateChangeEvent (idle, forwarded) before it."},
    {"incomingAssociatedCall", "IncomingAssociatedCallEvent", "associated call", telephone,
        {{{"LineID",        cutText, none, "line id", "Line or appearance that the new call is on."},
          {"CurrentCallID", integer, none, "call id", "The call that the line had before."},
          {"NewCallID",     integer, none, "call id", "The new incoming call."}}},
        "A new call is offered on a line that has a call.",
        "Sent after IncomingCallEvent, and only after setAssociatedCalls has switched it on."},
    {"devicesChanged", "DevicesChangedEvent", "devices changed", others,
        {{}},
        "The set of devices has changed.",
        "Not sent by this telephone: its lines do not change while it runs."},
    {"messageWaiting", "messageWaitingEvent", "mailbox", telephone,
        {{{"LineID",              text,    none,                      "line id",               "Line that the mailbox belongs to."},
          {"type",                integer, &e::kMWIServiceType,       "",                      "Kind of mailbox; always voice on this telephone."},
          {"new_messages",        count,   none,                      "number of messages",    "New messages."},
          {"old_messages",        count,   none,                      "number of messages",    "Old messages."},
          {"new_urgent_messages", count,   none,                      "number of messages",    "New urgent messages."},
          {"old_urgent_messages", count,   none,                      "number of messages",    "Old urgent messages."},
          {"return_type",         integer, &e::kMWIMessageReturnType, "",                      "Whether the mailbox can be called."},
          {"avail_info",          integer, &e::kMWIAvailableInfo,     "",                      "Whether the counts are known."},
          {"messages_waiting",    integer, &e::kMessagesWaiting,      "",                      "Whether messages are waiting."},
          {"voiceMailNumber",     text,    none,                      "number or SIP address", "Number of the mailbox; may be empty."}}},
        "A mailbox has reported its message counts.",
        "Sent after a line has been registered, when its mailbox reports for the first time, and then when anything "
        "changes."},
    {"doNotDisturbSet", "DoNotDisturbEvent", "do-not-disturb", telephone,
        {{{"deviceId",       text, none, "line id", "Line that do-not-disturb was set for; the first line if it was set for the whole telephone."},
          {"doNotDisturbOn", flag, none, "",        "Whether do-not-disturb is on."}}},
        "Do-not-disturb was set.",
        "Sent whenever it is set, even to the value that it had. Not sent for a line other than the present user's, which is "
        "the primary line at first."},
    {"agentStateSet", "AgentStateEvent", "agent", telephone,
        {{{"deviceId",   text, none,            "line id", "Line that the state was set for; the first line if the request named no line that exists."},
          {"agentState", text, &e::kAgentState, "",        "The agent's state."}}},
        "The agent state was set.",
        "Sent whenever it is set, even to the value that it had."},
    {"securityStatusChanged", "securityStatusChanged", "security", telephone,
        {{kLineURI, kCallId,
          {"securityStatus",       integer, &e::kSecurityStatus, "",                 "Whether the call's audio is encrypted."},
          {"CallIDsRecorded",      list,    none,                "list of call ids", "Every call that is being recorded."},
          {"CallLineURIsRecorded", list,    none,                "list of line ids", "The lines of these calls, in the same order."}}},
        "The security or the recording of a call has changed.",
        "Sent with every callRecordingStatusEvent, and, with empty lists, when the audio of a call was negotiated "
        "again (makeSecurityChangeReinvite)."},
    {"callRecordingStatus", "callRecordingStatusEvent", "recording", telephone,
        {{kLineID, kCallId,
          {"callRecorded", text, &e::kRecordingStatus, "", "Whether the call is being recorded."}}},
        "The recording of a call has started or ended.",
        "Sent when a recording starts, and when its file is complete or nothing could be recorded."},
    {"preemptionStatusChanged", "preemptionStatusChanged", "preemption", telephone,
        {{kLineURI, kCallId,
          {"priority", integer, &e::kResourcePriority, "",                "Precedence of the call."},
          {"cause",    integer, &e::kPreemptionCause,  "",                "Why the call was preempted."},
          {"reason",   text,    none,                  "text for people", "Why the call was preempted."}}},
        "The precedence of a call has changed, or the call was preempted.",
        "Sent before the last event of a call that the far end or a server preempts, and when the far end gives a "
        "call another precedence."},
    {"impactLevelChanged", "impactLevelChanged", "impact level", others,
        {{kLineURI, kCallId,
          {"ILCallLevel",  integer, none, "impact level", "Impact level of the call."},
          {"ILLocalLevel", integer, none, "impact level", "Impact level of this telephone."}}},
        "The impact levels of a call have changed.",
        "Not sent by this telephone: it has no impact levels."},
    {"systemStatusChange", "systemStatusEvent", "system status", telephone,
        {{{"status",     text, &e::kSystemStatus, "",     "The view, as the request SystemStatus named it; never CallView-Normal."},
          {"statusInfo", text, none,              "text", "What the request added; may be empty."}}},
        "The user interface is showing another view.",
        "Sent for every SystemStatus request that names a known view other than CallView-Normal."},
    {"serverFeatureStatusChange", "serverFeatureStatusEvent", "server features", telephone,
        {{kOwnLineURI,
          {"status", text, &e::kServerFeatureStatus, "", "What has happened to the features."}}},
        "The features that the server provides for a line have started or ended.",
        "Sent when the server has answered InitializeOrFinalizeServerFeatures."},
    {"b2buaCSTAResponse", "b2buaCSTAResponse", "server answered", telephone,
        {{{"lineURI", text,                   none, "line id",           "Line that the request was sent for; the first line for SendUACSTAServerMessage."},
          {"success", flag,                   none, "",                  "Whether the server accepted the request."},
          {"Body",    EventElementKind::body, none, "text, usually XML", "The server's answer; may be empty."}}},
        "The server has answered a CSTA request.",
        "Sent for every SendCSTARequest and SendUACSTAServerMessage that was sent to the server."},
    {"b2buaCSTAEventOrRequest", "b2buaCSTAEventOrRequest", "server says", telephone,
        {{kOwnLineURI,
          {"Body", EventElementKind::body, none, "text, usually XML", "What the server sent."}}},
        "The server has sent a CSTA event or request for a line.",
        "Sent for every CSTA document that arrives, inside a call or outside."},
    {"conferenceStatusEvent", "conferenceStatusEvent", "conference", telephone,
        {{kCutLineID, kCallID,
          {"XMLContent", text, none, "XML document (RFC 4575)", "The parties in the conference, and which of them are on hold."}}},
        "The parties of a conference have changed.",
        "Sent for both calls when a conference begins, and for the call that stays when it ends."},
    {"callCompletionEvent", "callCompletionEvent", "call-back", telephone,
        {{{"LineID",               cutText, none,                     "line id",     "Line that the call-back was set on."},
          {"URI",                  text,    none,                     "SIP address", "Party to be called back."},
          {"CallCompletionType",   integer, &e::kCallCompletionType,  "",            "Why the call-back was set."},
          {"CallCompletionState",  integer, &e::kCallCompletionState, "",            "State that the call-back has entered."},
          {"DisplayOutcomeCallUI", flag,    none,                     "",            "Whether the user interface should show it; 1, except that a cancellation passes on the flag of CancelCallbacks."}}},
        "A call-back has entered another state.",
        "Sent when the party's side starts to report, when the party is free, when the party is called, and when the "
        "call-back is cancelled."},
    {"callCompletionFailedEvent", "callCompletionFailedEvent", "call-back failed", telephone,
        {{{"LineID",                    cutText, none,                           "line id",     "Line that the call-back was set on."},
          {"URI",                       text,    none,                           "SIP address", "Party to be called back."},
          {"CallCompletionFailureType", integer, &e::kCallCompletionFailureType, "",            "Why it failed."}}},
        "A call-back has failed.",
        "Sent when the party's side refuses or ends the call-back, or when the party did not become free in time. "
        "The call-back is over."},
    {"bluetoothAudioStatusChanged", "bluetoothAudioStatusChanged", "bluetooth", others,
        {{kCutLineID, kCallID,
          {"AudioEnabled",  flag, none, "", "Whether the device carries the audio."},
          {"AudioGateway",  flag, none, "", "Whether the telephone is the gateway of the audio."},
          {"InBandRinging", flag, none, "", "Whether the device gets the ring tone as audio."}}},
        "The audio of a Bluetooth device was switched.",
        "Not sent by this telephone: it has no Bluetooth."},
    {"csCommunicationsServiceEvent", "", "", EventSource::nobody,
        {{}},
        "Carries nothing.",
        "Never arrives: the service does not deliver it. Applications receive at most the other 28 events."},
};
// clang-format on

/// Checks the table.
/// @return true when no operation has two rows.
constexpr bool operationsAreUnique()
{
    for (auto const& row : kRows) {
        std::size_t found = 0;
        for (auto const& other : kRows) {
            found += row.operation == other.operation ? 1U : 0U;
        }
        if (found != 1) {
            return false;
        }
    }
    return true;
}

/// Checks the table.
/// @return true when every element but a flag has an enumeration or a form.
constexpr bool elementsAreComplete()
{
    for (auto const& row : kRows) {
        for (auto const& element : row.elements) {
            if (element.kind != EventElementKind::flag && element.values == nullptr && element.form.empty()) {
                return false;
            }
        }
    }
    return true;
}
}  // namespace event_table

inline constexpr std::size_t kEventCount = 29;  ///< the number of operations of CommunicationsServiceEventIfc
inline constexpr auto& kEventDescriptions = event_table::kRows;  ///< every event, in the order of the interface

static_assert(sizeof(event_table::kRows) / sizeof(event_table::kRows[0]) == kEventCount,
              "an event was added or removed: whoever lists events must know");
static_assert(event_table::operationsAreUnique(), "an event stands in the table twice");
static_assert(event_table::elementsAreComplete(), "an element has no enumeration, and nothing says what its value is");

/// Finds the description of an event by its method.
/// @return Null when no event has that method, and for the empty text.
constexpr EventDescription const* findEventDescription(std::string_view method)
{
    for (auto const& row : kEventDescriptions) {
        if (!method.empty() && row.method == method) {
            return &row;
        }
    }
    return nullptr;
}

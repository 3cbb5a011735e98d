/// @file
/// The events that the service sends as text, described for programs that read or show them: documentation, a console's
/// help, test tools. The tests compare what the event proxy sends with this table.
///
/// An event is the element "Method" followed by every element of its row, in the row's order, with nothing between
/// them: `<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>`. No element is ever left out, even
/// when its value is empty. Values are raw: there is no escaping.
///
/// Thread: any; the table is constant.
#pragma once

#include <cstddef>
#include <string_view>

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
    std::string_view tag;   ///< its name; case-sensitive
    EventElementKind kind;  ///< how its value is written
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

/// One event.
struct EventDescription
{
    std::string_view operation;  ///< of CommunicationsServiceEventIfc
    std::string_view method;     ///< the value of the element "Method"; empty: the event is not sent
    EventElements elements;      ///< what follows the method
    std::string_view meaning;    ///< one sentence for the documentation
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

/// @name Elements of several events
/// @{

/// An element of several events. The spelling of one and the same thing differs between events, and receivers depend on
/// it.
inline constexpr EventElement kLineID{"LineID", text};
inline constexpr EventElement kCutLineID{"LineID", cutText};
inline constexpr EventElement kLineURI{"lineURI", text};
inline constexpr EventElement kCallID{"CallID", integer};
inline constexpr EventElement kCallId{"callId", integer};
inline constexpr EventElement kURI{"URI", text};
inline constexpr EventElement kName{"Name", text};
inline constexpr EventElement kCallLevel{"ILCallLevel", integer};
inline constexpr EventElement kLocalLevel{"ILLocalLevel", integer};
inline constexpr EventElement kBody{"Body", EventElementKind::body};
/// @}
}  // namespace event_elements

/// The table itself; use kEventDescriptions.
namespace event_table {
using namespace event_elements;

// clang-format off
/// One row for each operation of CommunicationsServiceEventIfc, in its order.
inline constexpr EventDescription kRows[] = {
    {"callStateChange", "CallStateChangeEvent",
        {{kLineID, kCallID, {"CallState", integer}, {"Reason", integer}, {"SendOptions", integer}, kURI, kName,
          {"GPUCLG", text}, {"GPUCLGName", text}, {"GPUCLD", text}, {"GPUCLDName", text},
          {"ResourcePriority", integer}, {"PreemptionCause", integer}, {"PreemptionText", text},
          {"CallBackFearureAvailable", flag}, kCallLevel, kLocalLevel}},
        "A call has come into another state."},
    {"registrationStateChange", "RegistrationStateChangeEvent",
        {{kLineID, kCallID, {"Registered", flag}, {"RegistrationResult", integer}}},
        "A line has been registered or has lost its registration."},
    {"incomingCall", "IncomingCallEvent",
        {{kLineID, kCallID, kURI, kName,
          {"AlertInformation_AlertURI", text}, {"AlertInformation_InfoParam", text},
          {"AlertInformation_AutoAnswer", flag}, {"CallType", integer},
          {"DiversionURI", text}, {"DiversionName", text}, {"DiversionReason", integer}, {"AICSZIPAutoAnswer", flag},
          {"ResourcePriority", integer}, kCallLevel, kLocalLevel, {"IsVideoCall", flag}}},
        "A call is offered."},
    {"incomingPickupCall", "IncomingPickupCallEvent",
        {{kLineID, kCallID, kURI, kName}},
        "A call rings elsewhere and can be picked up."},
    {"callHeld", "CallHeldEvent",
        {{kLineID, kCallID}},
        "A call is on hold."},
    {"callRetrieved", "CallRetrievedEvent",
        {{kLineID, kCallID, kURI, kName, kCallLevel, kLocalLevel, {"ConnectedToMediaServer", flag}}},
        "A call is back from hold."},
    {"featureSuccess", "FeatureSuccessEvent",
        {{kLineID, kCallID, {"Feature", integer}}},
        "A feature of a call has done its work."},
    {"featureFailed", "FeatureFailedEvent",
        {{kLineID, kCallID, {"Feature", integer}, {"FeatureFailure", integer}}},
        "A feature of a call has failed."},
    {"remoteEndpointDetailsChanged", "RemoteEndpointDetailsChangedEvent",
        {{kLineID, kCallID, kURI, kName, {"exitConf", flag}, {"jointCall", flag}}},
        "The far end of a call is another party, or shows another name."},
    {"incomingCallMissed", "IncomingCallMissedEvent",
        {{kLineID, kCallID, kURI, kName, {"Reason", integer},
          {"DiversionURI", text}, {"DiversionName", text}, {"DiversionReason", integer}}},
        "An offered call ended before it was answered."},
    {"callForwarded", "CallForwardedEvent",
        {{kLineID, kCallID, {"CallingParty", text}, {"CallingPartyName", text}, {"NewDestination", text},
          {"Reason", integer}}},
        "An offered call was sent on by a forwarding rule."},
    {"incomingAssociatedCall", "IncomingAssociatedCallEvent",
        {{kCutLineID, {"CurrentCallID", integer}, {"NewCallID", integer}}},
        "A new call belongs to a present one."},
    {"devicesChanged", "DevicesChangedEvent",
        {{}},
        "The set of devices has changed."},
    {"messageWaiting", "messageWaitingEvent",
        {{kLineID, {"type", integer},
          {"new_messages", count}, {"old_messages", count}, {"new_urgent_messages", count},
          {"old_urgent_messages", count},
          {"return_type", integer}, {"avail_info", integer}, {"messages_waiting", integer},
          {"voiceMailNumber", text}}},
        "The message counts of a mailbox."},
    {"doNotDisturbSet", "DoNotDisturbEvent",
        {{{"deviceId", text}, {"doNotDisturbOn", flag}}},
        "Do-not-disturb was switched."},
    {"agentStateSet", "AgentStateEvent",
        {{{"deviceId", text}, {"agentState", text}}},
        "The agent state was set."},
    {"securityStatusChanged", "securityStatusChanged",
        {{kLineURI, kCallId, {"securityStatus", integer}, {"CallIDsRecorded", list}, {"CallLineURIsRecorded", list}}},
        "The security of a call has changed; the lists name the calls whose recording it concerns, and their lines."},
    {"callRecordingStatus", "callRecordingStatusEvent",
        {{kLineID, kCallId, {"callRecorded", text}}},
        "The recording of a call was started or ended."},
    {"preemptionStatusChanged", "preemptionStatusChanged",
        {{kLineURI, kCallId, {"priority", integer}, {"cause", integer}, {"reason", text}}},
        "The precedence of a call has changed, or it was preempted."},
    {"impactLevelChanged", "impactLevelChanged",
        {{kLineURI, kCallId, kCallLevel, kLocalLevel}},
        "The impact levels of a call have changed."},
    {"systemStatusChange", "systemStatusEvent",
        {{{"status", text}, {"statusInfo", text}}},
        "The status of the system has changed."},
    {"serverFeatureStatusChange", "serverFeatureStatusEvent",
        {{kLineURI, {"status", text}}},
        "The server-based features of a line came or went."},
    {"b2buaCSTAResponse", "b2buaCSTAResponse",
        {{kLineURI, {"success", flag}, kBody}},
        "The server's response to a CSTA request of the line."},
    {"b2buaCSTAEventOrRequest", "b2buaCSTAEventOrRequest",
        {{kLineURI, kBody}},
        "A CSTA event or request of the server for the line."},
    {"conferenceStatusEvent", "conferenceStatusEvent",
        {{kCutLineID, kCallID, {"XMLContent", text}}},
        "What the conference server tells of a conference."},
    {"callCompletionEvent", "callCompletionEvent",
        {{kCutLineID, kURI, {"CallCompletionType", integer}, {"CallCompletionState", integer},
          {"DisplayOutcomeCallUI", flag}}},
        "A call-back has come into another state."},
    {"callCompletionFailedEvent", "callCompletionFailedEvent",
        {{kCutLineID, kURI, {"CallCompletionFailureType", integer}}},
        "A call-back has failed."},
    {"bluetoothAudioStatusChanged", "bluetoothAudioStatusChanged",
        {{kCutLineID, kCallID, {"AudioEnabled", flag}, {"AudioGateway", flag}, {"InBandRinging", flag}}},
        "The audio of a Bluetooth device was switched."},
    {"csCommunicationsServiceEvent", "",
        {{}},
        "Carries nothing and is not sent."},
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
}  // namespace event_table

inline constexpr std::size_t kEventCount = 29;  ///< the number of operations of CommunicationsServiceEventIfc
inline constexpr auto& kEventDescriptions = event_table::kRows;  ///< every event, in the order of the interface

static_assert(sizeof(event_table::kRows) / sizeof(event_table::kRows[0]) == kEventCount,
              "an event was added or removed: whoever lists events must know");
static_assert(event_table::operationsAreUnique(), "an event stands in the table twice");

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

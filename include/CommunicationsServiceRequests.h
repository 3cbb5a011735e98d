/// @file
/// The text requests that the service understands, described for programs that write or offer them: a console's help
/// and completion, documentation, test tools. The invoker's own table is checked against this one at compile time.
///
/// A request is the element "Method" with the name, followed by an element for each parameter, in any order, with
/// nothing between them: `<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>`. Values are raw: there is no
/// escaping and no nesting. If an element occurs twice, the first one applies. Two requests end with a body, which is
/// everything after "</Line>"; in these the line must be the last element before it. "This telephone" is the reference
/// telephone.
///
/// Thread: any; the table is constant.
#pragma once

#include <cstddef>
#include <string_view>

#include "CommunicationsServiceEnumerations.h"
#include "CommunicationsServiceEvents.h"

/// What a parameter's element holds, and what the service reads when the element is missing.
enum class RequestParameterKind
{
    text,          ///< as it stands; missing: empty
    integer,       ///< signed decimal, held to the range of 32 bits; missing: -1; not a number: 0
    flag,          ///< decimal, everything but 0 is true; missing: true; not a number: false
    word,          ///< "TRUE" is true, everything else false; missing: false
    serviceState,  ///< one of kRequestServiceStates; missing or another word: sfiServiceOutOfService
    body,          ///< no element: everything after "</Line>", as it stands
};

/// The form of an answer. A request that the service does not know, or that yields no text, is answered "sfiFailure".
enum class RequestAnswer
{
    resultWord,    ///< one of kRequestResultWords
    wordAndValue,  ///< a result word, a comma and a value
    texts,         ///< texts, run together
    truth,         ///< "true" or "false"
    elements,      ///< elements, one after another
    fixedText,     ///< always the same text
    nothing,       ///< no answer at all, only the end of the request
};

/// Whether a sender must give a parameter.
enum class RequestNeed
{
    required,  ///< without it the request does not do what it is for
    optional,  ///< without it the request still does what it is for
    unused,    ///< read, but without effect on this telephone
};

/// The smallest and the largest number that makes sense. The default is no range.
struct RequestRange
{
    static constexpr int kNoLimit = 2147483647;  ///< as largest number: every number that fits

    int least = 1;  ///< smallest number
    int most = 0;   ///< largest number; below the smallest: no range

    /// Whether there is a range.
    /// @return false for the default.
    constexpr bool isGiven() const { return least <= most; }
    /// Whether a number is in the range.
    /// @return true also when there is no range.
    constexpr bool holds(int number) const { return !isGiven() || (number >= least && number <= most); }
};

/// One parameter of a request.
struct RequestParameter
{
    std::string_view tag;       ///< name of its element; case-sensitive
    RequestParameterKind kind;  ///< what the element holds
    RequestNeed need;           ///< whether a sender must give it
    std::string_view sample;    ///< a value that fits the request
    Enumeration const* values;  ///< enumeration of its numbers or words; null: none
    std::string_view form;      ///< what the value is, unless it has an enumeration: "call id"
    std::string_view meaning;   ///< in this request, one sentence
    std::string_view missing;   ///< effect of a missing element, beside the value that the kind then has; may be empty
    std::string_view wrong;     ///< effect of a value that does not exist or is out of range; may be empty
    RequestRange range = {};    ///< the numbers that make sense
};

/// The parameters of a request. A list that can be written in a table row.
struct RequestParameters
{
    static constexpr std::size_t kMaximum = 6;  ///< most parameters of a request

    RequestParameter list[kMaximum] = {};  ///< unused places have an empty tag

    /// The first parameter.
    /// @return Start of the parameters in use.
    constexpr RequestParameter const* begin() const { return list; }
    /// Behind the last parameter.
    /// @return End of the parameters in use.
    constexpr RequestParameter const* end() const { return list + size(); }
    /// The number of parameters.
    /// @return 0 for a request without parameters.
    constexpr std::size_t size() const
    {
        std::size_t count = 0;
        while (count < kMaximum && !list[count].tag.empty()) {
            ++count;
        }
        return count;
    }
};

/// The events that follow a request, by the value of their element "Method". A list that can be written in a table row.
struct RequestEvents
{
    static constexpr std::size_t kMaximum = 6;  ///< most events of a request

    std::string_view list[kMaximum] = {};  ///< unused places are empty

    /// The first event.
    /// @return Start of the events in use.
    constexpr std::string_view const* begin() const { return list; }
    /// Behind the last event.
    /// @return End of the events in use.
    constexpr std::string_view const* end() const { return list + size(); }
    /// The number of events.
    /// @return 0 for a request that no event follows.
    constexpr std::size_t size() const
    {
        std::size_t count = 0;
        while (count < kMaximum && !list[count].empty()) {
            ++count;
        }
        return count;
    }
};

/// One request.
struct RequestDescription
{
    std::string_view name;         ///< the value of the element "Method", case-sensitive
    RequestParameters parameters;  ///< what the request carries
    RequestAnswer answer;          ///< the form of its answer
    std::string_view answerForm;   ///< the answer's text unless it is a plain result word; "..." stands for a value
    EventElements answerElements;  ///< the values in the answer, described as in an event
    std::string_view meaning;      ///< one sentence for the documentation
    std::string_view addressing;   ///< which of Line and CallID counts
    std::string_view promise;      ///< what a good answer promises
    std::string_view noPromise;    ///< what a good answer does not promise; may be empty
    RequestEvents events;          ///< the events that can follow, in no order
};

/// The answer words of a result: success, failure, and the failures of a call-back.
inline constexpr std::string_view kRequestResultWords[] = {
    "sfiSuccess",
    "sfiFailure",
    "sfiFailureCallBackInvalidState",
    "sfiFailureCallBackNoCallInfo",
    "sfiFailureCallBackToMany",
    "sfiFailureCallBackAllreadyExists",
};

/// The words of a service state, at the place of their value.
inline constexpr std::string_view kRequestServiceStates[] = {
    "sfiServiceInService",
    "sfiServiceOutOfService",
    "sfiServiceDoNotDisturb",
};

/// Short names for the rows of the table.
namespace request_parameters {
/// @name Kinds and needs of parameters
/// @{

/// See RequestParameterKind and RequestNeed.
inline constexpr auto text = RequestParameterKind::text;
inline constexpr auto integer = RequestParameterKind::integer;
inline constexpr auto flag = RequestParameterKind::flag;
inline constexpr auto word = RequestParameterKind::word;
inline constexpr auto serviceState = RequestParameterKind::serviceState;
inline constexpr auto body = RequestParameterKind::body;
inline constexpr auto required = RequestNeed::required;
inline constexpr auto optional = RequestNeed::optional;
inline constexpr auto unused = RequestNeed::unused;
/// @}

/// No enumeration.
inline constexpr Enumeration const* none = nullptr;

// clang-format off
/// @name Parameters of several requests
/// @{

/// A parameter that several requests have.
inline constexpr RequestParameter kAnyLine{"Line", text, unused, "4711", none, "line id",
    "Not used: the call id alone says which call.", "", ""};
inline constexpr RequestParameter kLineOfNewCall{"Line", text, required, "4711", none, "line id",
    "Line that the new call goes out on; 4711#2 names an appearance.",
    "refused on a keyset; a telephone of one line uses that line", "unknown line: as missing"};
inline constexpr RequestParameter kLineOfServer{"Line", text, optional, "4711", none, "line id",
    "Line whose server gets the message.", "the first line", "unknown line: refused"};
inline constexpr RequestParameter kCall{"CallID", integer, required, "2", none, "call id",
    "The call.", "refused", "no such call: refused"};
inline constexpr RequestParameter kNewCall{"CallID", integer, required, "2", none, "call id",
    "Id of the new call, chosen by the application; the telephone's own ids begin at 1001.",
    "refused", "below 1 or in use: refused", {1, RequestRange::kNoLimit}};
inline constexpr RequestParameter kActiveCall{"activeCall", integer, unused, "3", none, "call id",
    "Not used: the telephone finds the other call itself.", "", ""};
inline constexpr RequestParameter kDestination{"Destination", text, required, "100", none, "number or SIP address",
    "Where to; a number without a domain belongs to the line's server.",
    "refused", "not a number or an address: refused"};
/// @}
// clang-format on

/// The sample of a body.
inline constexpr std::string_view kBodySample =
    "<MonitorStart><monitorObject><deviceObject>4711</deviceObject></monitorObject></MonitorStart>";
}  // namespace request_parameters

/// The table itself; use kRequestDescriptions.
namespace request_table {
using namespace request_parameters;
namespace e = enumerations;
/// Short for the rows.
using A = RequestAnswer;
/// Short for the rows.
using K = EventElementKind;

// clang-format off
/// One row for each request.
inline constexpr RequestDescription kRows[] = {
    {"OutgoingCallMakeRequest",
        {{kLineOfNewCall, kNewCall, kDestination,
          {"DSSDirectCall",      flag, optional, "1", none, "",
            "Whether a direct-station key makes the call. With 0 in all three flags, and another call active, the "
            "call counts as a consultation.", "", ""},
          {"BridgeCall",         flag, optional, "0", none, "",
            "Whether the call joins a bridged line; treated like DSSDirectCall on this telephone.", "", ""},
          {"CallCompletionCall", flag, optional, "0", none, "",
            "Whether the call follows a call-back; treated like DSSDirectCall on this telephone.", "", ""}}},
        A::resultWord, "", {{}},
        "Makes a call.",
        "Line says where the new call goes out; CallID is the id of the new call, not of a call that exists.",
        "The call has been begun: its id is taken, and the active call, if there is one, is being put on hold. "
        "Refused while the telephone is out of service, locked for the number or barred for outgoing calls.",
        "That the destination exists or answers.",
        {{"CallStateChangeEvent", "CallHeldEvent", "RemoteEndpointDetailsChangedEvent", "callCompletionEvent"}}},
    {"AcceptCall",
        {{kAnyLine,
          {"CallID",     integer, required, "1001", none, "call id",
            "The offered call.", "with AutoAnswer 0 refused", "no such call: with AutoAnswer 0 refused"},
          {"AutoAnswer", flag,    optional, "0",    none, "",
            "Whether to let the call ring on the keyset only, in which case nothing is sent to the caller.",
            "only the keyset is told; the caller hears no ringing", ""}}},
        A::resultWord, "", {{}},
        "Lets an offered call ring.",
        "CallID counts; Line does not.",
        "With AutoAnswer 0: the call is ringing, and the caller has been told. Calls ring by themselves unless the "
        "configuration says otherwise.",
        "That anything has happened if AutoAnswer is 1 or missing: success is then the answer even if there is no "
        "such call. The call is not answered.",
        {{"CallStateChangeEvent"}}},
    {"AnswerCall",
        {{{"Line",   text,    required, "4711", none, "line id",
            "Line that the call is ringing on; 4711#2 names an appearance.",
            "refused on a keyset", "unknown line, or nothing is ringing on it: refused on a keyset"},
          {"CallID", integer, required, "1001", none, "call id",
            "The call, on a telephone of one line; not used on a keyset.",
            "refused on a telephone of one line", "no such call: refused on a telephone of one line"}}},
        A::resultWord, "", {{}},
        "Answers a ringing call.",
        "On a keyset Line counts, and CallID does not; on a telephone of one line it is the other way round.",
        "The answer is on its way; an active call is put on hold first.",
        "That the call is connected: CallStateChangeEvent says so. FeatureFailedEvent (hold, not possible) reports "
        "that the active call could not be held.",
        {{"CallStateChangeEvent", "CallHeldEvent", "FeatureFailedEvent"}}},
    {"DeflectCall",
        {{kAnyLine,
          {"CallID", integer, required, "1001", none, "call id",
            "The ringing call.", "refused", "no such call, or it is not ringing: refused"},
          kDestination}},
        A::resultWord, "", {{}},
        "Sends a ringing call to another destination.",
        "CallID counts; Line does not.",
        "The caller has been told the new destination, and the call is over here.",
        "That the new destination answers, or that the caller calls it.",
        {{"CallStateChangeEvent", "CallForwardedEvent"}}},
    {"HoldCall",
        {{kAnyLine, kCall,
          {"HoldCallReason", integer, optional, "5", &e::kFeature, "",
            "Why the call is held; consultation hold shows on the line, and FeatureFailedEvent repeats the number.",
            "treated as hold", "any other number: an ordinary hold", {5, 6}},
          {"Manual",         flag,    optional, "1", none,         "",
            "Whether a person asked for the hold; getManualHoldIndication reports it.", "", ""}}},
        A::resultWord, "", {{}},
        "Puts a call on hold.",
        "CallID counts; Line does not.",
        "The far end is being asked. A held conference is held as a whole.",
        "That the far end agrees: CallHeldEvent or FeatureFailedEvent says so. For a call that is held already, an "
        "event.",
        {{"CallHeldEvent", "FeatureFailedEvent"}}},
    {"RetrieveCall",
        {{{"Line",   text,    required, "4711", none, "line id",
            "Line that the call is on; not used on a telephone of one line.",
            "nothing is retrieved on a keyset", "unknown line: nothing is retrieved on a keyset"},
          {"CallID", integer, required, "2",    none, "call id",
            "The held call.",
            "on a keyset a held call of the line; else refused", "not a call of the line: as missing"}}},
        A::resultWord, "", {{}},
        "Takes a call back from hold.",
        "On a keyset both count: CallID names a call of Line; otherwise a held call of Line is taken. On a telephone "
        "of one line only CallID counts.",
        "On a telephone of one line: the far end is being asked; an active call is put on hold first.",
        "That anything is retrieved, on a keyset: success is the answer there in any case. CallRetrievedEvent or "
        "FeatureFailedEvent says what happened.",
        {{"CallRetrievedEvent", "CallHeldEvent", "FeatureFailedEvent", "CallStateChangeEvent"}}},
    {"Consult",
        {{kLineOfNewCall,
          {"CallID", integer, required, "3", none, "call id",
            "Id of the new call, chosen by the application; not the id of the active call.",
            "refused", "below 1 or in use: refused", {1, RequestRange::kNoLimit}},
          kDestination}},
        A::resultWord, "", {{}},
        "Makes a consultation call beside the active call.",
        "Line says where the new call goes out; CallID is the id of the new call, not of a call that exists. The "
        "active call needs no HoldCall: it is held automatically.",
        "The call has been begun: its id is taken, and the active call is being put on hold. Unlike "
        "OutgoingCallMakeRequest it is not checked against the lock and the dial restriction.",
        "That the destination exists or answers. If the active call cannot be held, the new call fails.",
        {{"CallHeldEvent", "CallStateChangeEvent", "RemoteEndpointDetailsChangedEvent"}}},
    {"AttendedTransfer",
        {{kAnyLine, kActiveCall,
          {"heldCall", integer, required, "2", none, "call id",
            "The call whose party is transferred to the party of the other call.",
            "refused", "no such call: refused"}}},
        A::resultWord, "", {{}},
        "Connects the parties of two calls with each other.",
        "heldCall counts; Line and activeCall do not. The other call is the active one, else one whose party is "
        "still ringing, else the call that was held last. CallID is not read.",
        "The party of heldCall has been asked to call the other party.",
        "That the transfer succeeds: FeatureSuccessEvent or FeatureFailedEvent says so. On success both calls end "
        "(idle, transferred).",
        {{"CallStateChangeEvent", "FeatureSuccessEvent", "FeatureFailedEvent"}}},
    {"BlindTransfer",
        {{kAnyLine,
          {"CallID", integer, required, "2", none, "call id",
            "The connected or held call.", "refused", "no such call, or it is not connected: refused"},
          kDestination}},
        A::resultWord, "", {{}},
        "Transfers a call to a destination without a consultation.",
        "CallID counts; Line does not.",
        "The far end has been asked to call the destination.",
        "That the transfer succeeds: FeatureSuccessEvent or FeatureFailedEvent says so. On success the call ends "
        "(idle, transferred).",
        {{"CallStateChangeEvent", "FeatureSuccessEvent", "FeatureFailedEvent"}}},
    {"RefuseCall",
        {{kAnyLine,
          {"CallID",           integer, required, "1001", none,            "call id",
            "The ringing call.", "refused", "no such call, or it is not ringing: refused"},
          {"RefuseCallReason", integer, required, "1",    &e::kRefuseCall, "",
            "What the caller is told.",
            "the request is refused, and the call keeps ringing", "any other number: as missing", {0, 4}}}},
        A::resultWord, "", {{}},
        "Refuses a ringing call.",
        "CallID counts; Line does not.",
        "The caller has been told, and the call is over.",
        "",
        {{"CallStateChangeEvent"}}},
    {"CallClearRequest",
        {{kAnyLine, kCall,
          {"Cause", integer, optional, "1", &e::kEventCause, "",
            "What the far end is told.", "as none", "any other number: as none", {0, 5}}}},
        A::resultWord, "", {{}},
        "Ends a call in any state.",
        "CallID counts; Line does not.",
        "The call is over, and its id is free again.",
        "That the far end has heard of it.",
        {{"CallStateChangeEvent", "RemoteEndpointDetailsChangedEvent", "conferenceStatusEvent"}}},
    {"SystemStatus",
        {{{"SystemStatus",     text, required, "MessagesPhonelet-Normal", &e::kSystemStatus, "",
            "The view that is showing now.", "refused", "an unknown word: refused"},
          {"SystemStatusInfo", text, optional, "on",                      none,              "text",
            "Anything to add; systemStatusEvent repeats it.", "", ""}}},
        A::resultWord, "", {{}},
        "Tells the telephone which view the user interface is showing.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "The telephone has noted the view.",
        "An event for CallView-Normal: none is sent.",
        {{"systemStatusEvent"}}},
    {"Subscribe",
        {{}},
        A::resultWord, "", {{}},
        "Subscribes the requesting application to the events.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "Every event from now on is sent to this application. A second Subscribe changes nothing.",
        "The current state: what happened before is not repeated. On this telephone, the command state returns it.",
        {{}}},
    {"ActivateCallbackRinging",
        {{kAnyLine,
          {"CallID", integer, required, "2", none, "call id",
            "An outgoing call whose party is ringing, or was ringing when the call ended.",
            "sfiFailureCallBackNoCallInfo", "no such call: sfiFailureCallBackNoCallInfo; its party is not ringing: sfiFailureCallBackInvalidState"}}},
        A::resultWord, "", {{}},
        "Sets a call-back on a party that does not answer.",
        "CallID counts; Line does not. The call may be over: the telephone remembers the last 32 calls made.",
        "The party's side has been asked to report when the party is free.",
        "That it agrees: callCompletionEvent (activated) or callCompletionFailedEvent says so. The telephone does "
        "not call by itself: on callCompletionEvent (ready), make the call.",
        {{"callCompletionEvent", "callCompletionFailedEvent"}}},
    {"ActivateCallbackBusy",
        {{kAnyLine,
          {"CallID", integer, required, "2", none, "call id",
            "An outgoing call that ended because its party was busy.",
            "sfiFailureCallBackNoCallInfo", "no such call: sfiFailureCallBackNoCallInfo; its party is not busy: sfiFailureCallBackInvalidState"}}},
        A::resultWord, "", {{}},
        "Sets a call-back on a busy party.",
        "CallID counts; Line does not. The call may be over: the telephone remembers the last 32 calls made.",
        "The party's side has been asked to report when the party is free.",
        "That it agrees: callCompletionEvent (activated) or callCompletionFailedEvent says so. The telephone does "
        "not call by itself: on callCompletionEvent (ready), make the call.",
        {{"callCompletionEvent", "callCompletionFailedEvent"}}},
    {"CancelCallbacks",
        {{kAnyLine,
          {"CallID",               integer, optional, "0",   none,                    "call id",
            "Call that the call-back was set for; not used if URI is present.",
            "any call", "0 or below: any call; no call-back set for it: sfiFailureCallBackNoCallInfo"},
          {"URI",                  text,    optional, "100", none,                    "number or SIP address",
            "Party of the call-back.", "any party", "no call-back set on it: sfiFailureCallBackNoCallInfo"},
          {"CancelCallBackType",   integer, optional, "0",   &e::kCancelCallBackType, "",
            "Which call-backs.", "as all", "any other number: as all", {0, 2}},
          {"DisplayOutcomeCallUI", flag,    optional, "1",   none,                    "",
            "Whether the user interface should show it; callCompletionEvent repeats it.", "", ""}}},
        A::resultWord, "", {{}},
        "Cancels call-backs.",
        "URI counts if it is present, else CallID; Line does not.",
        "All matching call-backs are cancelled. sfiFailureCallBackNoCallInfo: there was none.",
        "",
        {{"callCompletionEvent"}}},
    {"DirectedPickupCall",
        {{kLineOfNewCall, kNewCall,
          {"CallToBePickedUp", text, required, "102", none, "number or SIP address",
            "Number that the call is ringing at.", "refused", "not a number or an address: refused"},
          {"BLFPickup",        flag, optional, "1",   none, "",
            "Whether to pick up as a busy-lamp key does, by asking that telephone for its call; 0 dials the pickup "
            "number of the server with the number appended, unless the server is of type 1.", "", ""}}},
        A::resultWord, "", {{}},
        "Picks up a call that is ringing at another number.",
        "Line says where the new call goes out; CallID is the id of the new call, not of a call that exists.",
        "The pickup has been begun: the id is taken.",
        "That there is a call to pick up: FeatureSuccessEvent or FeatureFailedEvent says so; after a failure the "
        "call ends.",
        {{"CallStateChangeEvent", "CallHeldEvent", "IncomingPickupCallEvent", "FeatureSuccessEvent", "FeatureFailedEvent"}}},
    {"GroupPickupCall",
        {{kLineOfNewCall, kNewCall}},
        A::resultWord, "", {{}},
        "Picks up a call that is ringing in the group.",
        "Line says where the new call goes out; CallID is the id of the new call, not of a call that exists.",
        "The pickup number of the group is being called. Refused if no such number is configured.",
        "That there is a call to pick up: FeatureSuccessEvent or FeatureFailedEvent says so; after a failure the "
        "call ends.",
        {{"CallStateChangeEvent", "CallHeldEvent", "IncomingPickupCallEvent", "FeatureSuccessEvent", "FeatureFailedEvent"}}},
    {"ConferenceCall",
        {{kAnyLine, kActiveCall,
          {"heldCall", integer, required, "2", none,         "call id",
            "One of the two calls.", "refused", "no such call: refused"},
          {"feature",  integer, optional, "3", &e::kFeature, "",
            "What to do with the two calls: 4 is an attended transfer, anything else a conference.",
            "a conference", "any other number: a conference", {3, 4}}}},
        A::resultWord, "", {{}},
        "Joins two calls into a conference.",
        "heldCall counts; Line and activeCall do not. The other call is the active one, else the call that was held "
        "last. CallID is not read.",
        "The conference is being made; held calls are being retrieved for it. A call joins the conference that the other "
        "one is in already.",
        "That it succeeds: FeatureSuccessEvent and conferenceStatusEvent, or FeatureFailedEvent, say so.",
        {{"CallRetrievedEvent", "CallStateChangeEvent", "FeatureSuccessEvent", "conferenceStatusEvent", "FeatureFailedEvent"}}},
    {"SetServiceState",
        {{{"state", serviceState, required, "sfiServiceInService", &e::kServiceState, "",
            "The new state.", "the service goes out of service", "any other word: the service goes out of service"}}},
        A::resultWord, "", {{}},
        "Sets the state of the service.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "The state is set. Out of service, lines give up their registration; otherwise they register.",
        "That the lines are registered: RegistrationStateChangeEvent says so. An event for the state itself: "
        "none is sent.",
        {{"RegistrationStateChangeEvent", "messageWaitingEvent"}}},
    {"GetServiceState",
        {{}},
        A::wordAndValue, "...,sfiServiceInService|sfiServiceOutOfService|sfiServiceDoNotDisturb",
        {{{"value", K::text, &e::kServiceState, "", "State of the service."}}},
        "Asks for the state of the service.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "The state that was set last.",
        "That the telephone is ready, or any line registered: the service is in service from the start. On this "
        "telephone, the command hello says whether it is ready.",
        {{}}},
    {"SetDoNotDisturb",
        {{{"Line",           text, required, "4711", none, "line id",
            "Line whose calls are refused.", "nothing is set on a keyset", "unknown line: as missing"},
          {"doNotDisturbOn", flag, required, "1",    none, "",
            "Whether do-not-disturb is on.", "it is switched on", ""}}},
        A::resultWord, "", {{}},
        "Switches do-not-disturb on or off.",
        "On a keyset Line counts: calls to that line are refused. On a telephone of one line it does not matter.",
        "Calls to the line are refused or accepted from now on. The request is refused only if the configuration "
        "forbids do-not-disturb.",
        "An event for a line other than the present user's (at first the primary line): such a setting takes effect "
        "without one, and GetDoNotDisturb does not show it. An effect, if the line does not exist or the store "
        "refuses the value.",
        {{"DoNotDisturbEvent"}}},
    {"GetDoNotDisturb",
        {{{"deviceID", text, unused, "4711", none, "line id",
            "Not used: the answer is about the whole telephone.", "", ""}}},
        A::wordAndValue, "...,true|false",
        {{{"value", K::text, none, "true or false", "Whether do-not-disturb is on."}}},
        "Asks whether do-not-disturb is on.",
        "Neither Line nor CallID: the request concerns the whole telephone. The device is not used.",
        "Whether it is on for the whole telephone or for the present user's line.",
        "Anything about another line.",
        {{}}},
    {"SetAgentState",
        {{{"Line",       text, optional, "4711",  none,            "line id",
            "The agent's line.", "the first line", "unknown line: the first line"},
          {"agentState", text, required, "ready", &e::kAgentState, "",
            "The new state.", "refused", "an unknown word: refused"}}},
        A::resultWord, "", {{}},
        "Sets the agent state.",
        "Line only says which line the event names and which server is told: the telephone has one agent.",
        "The state is kept, unless the store refuses it. The request is refused, except for loggedOff, if the "
        "configuration has no agent.",
        "That the server accepts it.",
        {{"AgentStateEvent", "b2buaCSTAEventOrRequest"}}},
    {"GenerateDigits",
        {{kAnyLine,
          {"activeCall", integer, required, "2",   none, "call id",
            "The connected call.", "refused", "no such call, or it is not connected: refused"},
          {"digits",     text,    required, "12#", none, "0-9 * # A-D",
            "The digits.", "refused", "any other character: refused"}}},
        A::resultWord, "", {{}},
        "Sends digits in a call.",
        "activeCall counts; Line does not. CallID is not read.",
        "The digits are being sent, in the way that SendOptions names.",
        "That the far end understands them. An event: none is sent.",
        {{}}},
    {"GetDevices",
        {{}},
        A::texts, "<prime:...>...<groupPickup:...>", {{}},
        "Asks for the devices that can be monitored.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "<prime:LINE> for every line, run together: <prime:4711><prime:4712>. <groupPickup:NUMBER> follows if the "
        "telephone has a number for group pickup. It is not XML. sfiFailure: there is no line.",
        "That the lines are registered.",
        {{}}},
    {"SetMicrophoneMute",
        {{{"Status", flag, required, "1", none, "",
            "Whether the microphone is muted.", "it is muted", ""}}},
        A::resultWord, "", {{}},
        "Mutes or unmutes the microphone.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "The microphone is muted or not, in present and later calls.",
        "An event: none is sent.",
        {{}}},
    {"GetMicrophoneMute",
        {{}},
        A::wordAndValue, "...,true|false",
        {{{"value", K::text, none, "true or false", "Whether the microphone is muted."}}},
        "Asks whether the microphone is muted.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "The present setting.",
        "",
        {{}}},
    {"getManualHoldIndication",
        {{kAnyLine,
          {"CallID", integer, required, "2", none, "call id",
            "The call.", "false", "no such call: false"}}},
        A::truth, "true|false",
        {{{"value", K::text, none, "true or false", "Whether the call was put on hold by hand."}}},
        "Asks whether a call was put on hold by hand.",
        "CallID counts; Line does not.",
        "true while the call is held and the hold was asked for with Manual 1 or by a key.",
        "To tell a call that is not held from a call that does not exist: false is the answer for both.",
        {{}}},
    {"Activate",
        {{}},
        A::resultWord, "", {{}},
        "Starts SIP operation.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "The lines are being registered. At its start the telephone does this by itself.",
        "That the lines are registered: RegistrationStateChangeEvent says so.",
        {{"RegistrationStateChangeEvent", "messageWaitingEvent"}}},
    {"Deactivate",
        {{{"AllowAutoActivate", flag, unused, "1", none, "",
            "Whether SIP operation may come back by itself; this telephone waits for Activate in any case.", "", ""}}},
        A::resultWord, "", {{}},
        "Ends SIP operation.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "All calls are over, and the lines give up their registration.",
        "That the far ends have heard of it.",
        {{"CallStateChangeEvent", "RegistrationStateChangeEvent"}}},
    {"SendCSTARequest",
        {{kLineOfServer,
          {"Body", body, required, kBodySample, none, "everything after </Line>, usually XML",
            "The message; sent unchanged.",
            "refused", "without </Line> the first six characters of the request are cut off, and the rest is the body"}}},
        A::resultWord, "", {{}},
        "Sends a CSTA request to the server of a line.",
        "Line counts, and must be the last element before the body.",
        "The request is being sent.",
        "That the server accepts it: b2buaCSTAResponse says so.",
        {{"b2buaCSTAResponse", "b2buaCSTAEventOrRequest"}}},
    {"InitializeOrFinalizeServerFeatures",
        {{{"Line",       text, optional, "4711", none, "line id",
            "The line.", "the first line", "unknown line: nothing happens"},
          {"initialize", flag, required, "1",    none, "",
            "Whether the features start or end.", "they start", ""}}},
        A::nothing, "", {{}},
        "Starts or ends the features that the server provides for a line.",
        "Line counts.",
        "No answer is sent.",
        "That the server has heard of it: serverFeatureStatusEvent says so.",
        {{"serverFeatureStatusEvent", "b2buaCSTAEventOrRequest"}}},
    {"AlternateCalls",
        {{{"Line", text, optional, "4711", none, "line id",
            "Line whose held call becomes active.",
            "refused on a keyset; a telephone of one line uses that line", "unknown line: as missing"}}},
        A::resultWord, "", {{}},
        "Swaps the active call and the held call.",
        "Line counts: the call that was held last on it becomes active, else the one that was held last on any line. "
        "CallID is not read.",
        "The active call is being put on hold, and the held call is retrieved after it. Refused if there is no "
        "active or no held call.",
        "That both far ends agree: FeatureSuccessEvent (alternate) or FeatureFailedEvent says so.",
        {{"CallHeldEvent", "CallRetrievedEvent", "FeatureSuccessEvent", "FeatureFailedEvent"}}},
    {"GetMessageWaitingIndicator",
        {{}},
        A::elements,
        "<Type>...</Type><newMsgs>...</newMsgs><oldMsgs>...</oldMsgs><newUrgMsgs>...</newUrgMsgs>"
        "<oldUrgMsgs>...</oldUrgMsgs><return_type>...</return_type><available_info>...</available_info>"
        "<messages_waiting>...</messages_waiting><voiceMailNumber>...</voiceMailNumber>"
        "<func_return_val>...</func_return_val>",
        {{{"Type",             K::integer, &e::kMWIServiceType,       "",                      "Kind of mailbox."},
          {"newMsgs",          K::count,   none,                      "number of messages",    "New messages."},
          {"oldMsgs",          K::count,   none,                      "number of messages",    "Old messages."},
          {"newUrgMsgs",       K::count,   none,                      "number of messages",    "New urgent messages."},
          {"oldUrgMsgs",       K::count,   none,                      "number of messages",    "Old urgent messages."},
          {"return_type",      K::integer, &e::kMWIMessageReturnType, "",                      "Whether the mailbox can be called."},
          {"available_info",   K::integer, &e::kMWIAvailableInfo,     "",                      "Whether the counts are known."},
          {"messages_waiting", K::integer, &e::kMessagesWaiting,      "",                      "Whether messages are waiting."},
          {"voiceMailNumber",  K::text,    none,                      "number or SIP address", "Number of the mailbox; may be empty."},
          {"func_return_val",  K::text,    &e::kResult,               "",                      "Always sfiSuccess."}}},
        "Asks for the message counts of the mailbox.",
        "Neither Line nor CallID: the request concerns the whole telephone. The mailbox belongs to the "
        "telephone's own number.",
        "The counts that the mailbox reported last; all 0 if it has not reported.",
        "That the counts are known: Type 0 means that they are not. The result word is sfiSuccess in any case.",
        {{}}},
    {"setAssociatedCalls",
        {{{"associated", flag, required, "1", none, "",
            "Whether a call to a line that has a call is reported with IncomingAssociatedCallEvent.",
            "it is reported", ""}}},
        A::resultWord, "", {{}},
        "Switches IncomingAssociatedCallEvent on or off.",
        "Neither Line nor CallID: the request concerns the whole telephone.",
        "Later incoming calls are reported that way.",
        "Anything about existing calls.",
        {{"IncomingAssociatedCallEvent"}}},
    {"setLampMode",
        {{{"Line",     text,    unused,   "4711", none,          "line id",
            "Not used: the lamps belong to the whole telephone.", "", ""},
          {"lampId",   text,    required, "Hold", &e::kLamp,     "",
            "The lamp.", "nothing happens", "an unknown word: nothing happens"},
          {"lampMode", integer, required, "2",    &e::kLampMode, "",
            "How the lamp is to shine.", "nothing happens", "any other number: nothing happens", {0, 3}}}},
        A::resultWord, "", {{}},
        "Sets the lamp Hold or SecondAlert.",
        "Neither: the two lamps belong to the whole telephone.",
        "Success is the answer in any case, so it promises nothing.",
        "That the lamp exists or shines.",
        {{}}},
    {"makeSecurityChangeReinvite",
        {{kAnyLine,
          {"CallID",    integer, required, "2", none, "call id",
            "The connected call.", "refused", "no such call, or it is not connected: refused"},
          {"forceFlag", flag,    required, "0", none, "",
            "Whether the call must become secure; refused without encrypted audio in the configuration.",
            "refused", ""}}},
        A::resultWord, "", {{}},
        "Negotiates the audio of a call again.",
        "CallID counts; Line does not.",
        "The far end is being asked.",
        "That it agrees: securityStatusChanged or FeatureFailedEvent says so.",
        {{"securityStatusChanged", "FeatureFailedEvent"}}},
    {"setForwardingConfiguration",
        {{{"Line",            text,    required, "4711", none,                "line id",
            "Line whose calls the rule forwards.", "nothing is set on a keyset", "unknown line: as missing"},
          {"fwType",          integer, required, "6",    &e::kForwardingType, "",
            "Which rule; 9 sets the destination of the alternative forwarding key only.",
            "nothing is set", "any other number: nothing is set", {0, 9}},
          {"status",          flag,    required, "1",    none,                "",
            "Whether the rule is on.", "it is switched on", ""},
          {"uri",             text,    required, "102",  none,                "number or SIP address",
            "Where calls go; send it with status 0 too.",
            "the destination is lost, and a rule that is on forwards nothing", "not a number or an address: the rule forwards nothing"},
          {"cfnrRingCount",   integer, optional, "4",    none,                "number of rings",
            "Rings before the no-reply rules apply, 0: they never do; read with type 6 only, and meant for all of "
            "them.", "of type 6: the number stays as it was", "out of range: the number stays as it was", {0, 99}},
          {"forceQORAUpdate", flag,    optional, "0",    none,                "",
            "Whether to write to the store what has not changed either.", "", ""}}},
        A::resultWord, "", {{}},
        "Sets a forwarding rule.",
        "On a keyset Line counts: the rule forwards calls to that line. On a telephone of one line it does not "
        "matter.",
        "Success is the answer even if the type or the line does not exist or the store refuses a value, so it promises "
        "nothing.",
        "That the rule is kept: for the present user's line, getForwardingConfiguration shows it. An event for the "
        "change: CallForwardedEvent only reports each call that is forwarded.",
        {{"CallForwardedEvent"}}},
    {"getForwardingConfiguration",
        {{{"fwType", integer, required, "6", &e::kForwardingType, "",
            "Which rule; the alternative destination (9) cannot be read.",
            "sfiFailure in sfiResult", "any other number, 9 included: sfiFailure in sfiResult", {0, 8}}}},
        A::elements,
        "<sfiResult>...</sfiResult><status>...</status><uri>...</uri><cfnrRingCount>...</cfnrRingCount>",
        {{{"sfiResult",     K::text,    &e::kResult, "",                      "sfiSuccess, or sfiFailure for a type that cannot be read."},
          {"status",        K::flag,    none,        "",                      "Whether the rule is on."},
          {"uri",           K::text,    none,        "number or SIP address", "Where calls go; may be empty."},
          {"cfnrRingCount", K::integer, none,        "number of rings",       "Rings before the no-reply rules apply; 0 for every type but 6."}}},
        "Asks for a forwarding rule.",
        "Neither Line nor CallID: the request concerns the whole telephone. The rules are those of the present "
        "user's line, at first the primary line.",
        "The rule as it is in the store. With sfiFailure the other values are 0 and empty.",
        "Anything about another line's rules. That the text begins with the result word: it does not.",
        {{}}},
    {"setIsInServiceInitiatedState",
        {{{"Line",                      text, required, "4711", none, "line id",
            "Line that is off the hook.", "nothing happens", "unknown line: nothing happens"},
          {"IsInServiceInitiatedState", word, required, "TRUE", none, "TRUE or anything else",
            "TRUE seizes the line for a call that is about to be made; anything else releases it.",
            "the line is released", ""}}},
        A::nothing, "", {{}},
        "Tells the telephone that a line is off the hook and has no call yet.",
        "Line counts.",
        "No answer is sent.",
        "That the line was free. An event: none is sent.",
        {{}}},
    {"SendUACSTAServerMessage",
        {{{"Line", text, unused,   "4711", none, "line id",
            "Not used: the message goes to the first line's server. Its closing tag marks where the body begins.",
            "", ""},
          {"Body", body, required, kBodySample, none, "everything after </Line>, usually XML",
            "The message; sent unchanged.",
            "nothing is sent", "without </Line> the first six characters of the request are cut off, and the rest is the body"}}},
        A::fixedText, "UACSTA message is sent.", {{}},
        "Sends a CSTA message to the server.",
        "Neither: the first line is used. Line must still be the last element before the body.",
        "The answer is always the same, so it promises nothing.",
        "That anything was sent: b2buaCSTAResponse says so.",
        {{"b2buaCSTAResponse", "b2buaCSTAEventOrRequest"}}},
    {"callbackDOFeatureCallID",
        {{{"CallID",     text,    required, "2", none, "call id, any text",
            "Call of the feature instance.", "an empty id is kept", ""},
          {"instanceId", integer, required, "1", none, "number of a feature instance",
            "The instance.", "kept for the instance -1", ""}}},
        A::nothing, "", {{}},
        "Tells the telephone the call id of a feature instance.",
        "CallID is kept as a text; it need not be a call.",
        "No answer is sent.",
        "An event: none is sent.",
        {{}}},
};
// clang-format on

/// Checks the table.
/// @return true when no name has two rows.
constexpr bool namesAreUnique()
{
    for (auto const& row : kRows) {
        std::size_t count = 0;
        for (auto const& other : kRows) {
            count += row.name == other.name ? 1U : 0U;
        }
        if (count != 1) {
            return false;
        }
    }
    return true;
}

/// Checks the table.
/// @return true when every event that follows a request is sent.
constexpr bool eventsExist()
{
    for (auto const& row : kRows) {
        for (auto const event : row.events) {
            if (findEventDescription(event) == nullptr) {
                return false;
            }
        }
    }
    return true;
}

/// Checks a parameter.
/// @return true when each number in its range has a name, or it has no range or no enumeration.
constexpr bool rangeIsSound(RequestParameter const& parameter)
{
    RequestRange const& range = parameter.range;
    if (!range.isGiven() || parameter.values == nullptr) {
        return true;
    }
    for (int number = range.least; number <= range.most; ++number) {
        if (parameter.values->find(number) == nullptr) {
            return false;
        }
    }
    return true;
}

/// Checks a parameter.
/// @return true when its row tells which values it takes.
constexpr bool valuesAreSaid(RequestParameter const& parameter)
{
    switch (parameter.kind) {
    case RequestParameterKind::flag:
        return true;
    case RequestParameterKind::serviceState:
        return parameter.values != nullptr;
    case RequestParameterKind::text:
    case RequestParameterKind::integer:
    case RequestParameterKind::word:
    case RequestParameterKind::body:
        break;
    }
    return parameter.values != nullptr || !parameter.form.empty();
}

/// Checks the table.
/// @return true when every parameter has its values, a sound range, a sample and a meaning.
constexpr bool parametersAreComplete()
{
    for (auto const& row : kRows) {
        for (auto const& parameter : row.parameters) {
            if (!valuesAreSaid(parameter) || !rangeIsSound(parameter) || parameter.sample.empty() ||
                parameter.meaning.empty()) {
                return false;
            }
        }
    }
    return true;
}

/// Checks the words of results and service states against the enumerations.
/// @return true when the enumerations have the same words, and the same numbers for service states.
constexpr bool wordsAreThoseOfEnumerations()
{
    std::size_t place = 0;
    for (auto const word : kRequestServiceStates) {
        EnumerationValue const* const value = enumerations::kServiceState.findWord(word);
        if (value == nullptr || value->number != static_cast<int>(place)) {
            return false;
        }
        ++place;
    }
    for (auto const word : kRequestResultWords) {
        if (enumerations::kResult.findWord(word) == nullptr) {
            return false;
        }
    }
    return true;
}
}  // namespace request_table

inline constexpr std::size_t kRequestCount = 43;                     ///< the number of requests
inline constexpr auto& kRequestDescriptions = request_table::kRows;  ///< every request

static_assert(sizeof(request_table::kRows) / sizeof(request_table::kRows[0]) == kRequestCount,
              "a request was added or removed: the invoker and everyone who lists requests must know");
static_assert(request_table::namesAreUnique(), "a request stands in the table twice");
static_assert(request_table::eventsExist(), "a request is followed by an event that is not sent");
static_assert(request_table::parametersAreComplete(),
              "a parameter lacks its values, its sample or its meaning, or its range is wrong");
static_assert(request_table::wordsAreThoseOfEnumerations(),
              "a result word or service state has another name or number");

/// Finds the description of a request by its name.
/// @return Null when there is none of that name.
constexpr RequestDescription const* findRequestDescription(std::string_view name)
{
    for (auto const& row : kRequestDescriptions) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

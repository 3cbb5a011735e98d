/// @file
/// The text requests that the service understands, described for programs that write or offer them: a console's help
/// and completion, documentation, test tools. The invoker's own table is checked against this one at compile time.
///
/// A request is the element "Method" with the name, followed by an element for each parameter, in any order, with
/// nothing between them: `<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>`. Values are raw: there is no
/// escaping and no nesting. The first of two elements of one name wins.
///
/// Thread: any; the table is constant.
#pragma once

#include <cstddef>
#include <string_view>

/// What a parameter's element holds, and how it reads when the element is missing.
enum class RequestParameterKind
{
    text,          ///< as it stands; missing: empty
    integer,       ///< signed decimal, held to the range of 32 bits; missing: -1
    flag,          ///< decimal, everything but 0 is true; missing: true
    word,          ///< "TRUE" is true, everything else false; missing: false
    serviceState,  ///< one of kRequestServiceStates; missing or another word: sfiServiceOutOfService
    body,          ///< no element: everything after the line's closing tag, as it stands
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

/// One parameter of a request.
struct RequestParameter
{
    std::string_view tag;       ///< name of its element; case-sensitive
    RequestParameterKind kind;  ///< what the element holds
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

/// One request.
struct RequestDescription
{
    std::string_view name;         ///< the value of the element "Method", case-sensitive
    RequestParameters parameters;  ///< what the request carries
    RequestAnswer answer;          ///< the form of its answer
    std::string_view answerForm;   ///< the answer's text unless it is a plain result word; "..." stands for a value
    std::string_view meaning;      ///< one sentence for the documentation
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
/// @name Kinds of parameters
/// @{

/// See RequestParameterKind.
inline constexpr auto text = RequestParameterKind::text;
inline constexpr auto integer = RequestParameterKind::integer;
inline constexpr auto flag = RequestParameterKind::flag;
inline constexpr auto word = RequestParameterKind::word;
inline constexpr auto serviceState = RequestParameterKind::serviceState;

/// @}

/// @name Parameters of several requests
/// @{

/// A parameter that several requests have.
inline constexpr RequestParameter kLine{"Line", text};
inline constexpr RequestParameter kCallID{"CallID", integer};
inline constexpr RequestParameter kActiveCall{"activeCall", integer};
inline constexpr RequestParameter kHeldCall{"heldCall", integer};
inline constexpr RequestParameter kDestination{"Destination", text};
inline constexpr RequestParameter kBody{"Body", RequestParameterKind::body};
/// @}
}  // namespace request_parameters

/// The table itself; use kRequestDescriptions.
namespace request_table {
using namespace request_parameters;
/// Short for the rows.
using A = RequestAnswer;

// clang-format off
/// One row for each request.
inline constexpr RequestDescription kRows[] = {
    {"OutgoingCallMakeRequest", {{kLine, kCallID, kDestination,
                                  {"DSSDirectCall", flag}, {"BridgeCall", flag}, {"CallCompletionCall", flag}}},
        A::resultWord, "", "Makes a call to a destination on a free appearance of the line."},
    {"AcceptCall", {{kLine, kCallID, {"AutoAnswer", flag}}},
        A::resultWord, "", "Lets an offered call ring; with the flag on the keyset alone, and nothing is sent."},
    {"AnswerCall", {{kLine, kCallID}},
        A::resultWord, "", "Answers a ringing call."},
    {"DeflectCall", {{kLine, kCallID, kDestination}},
        A::resultWord, "", "Sends a ringing call on to another destination."},
    {"HoldCall", {{kLine, kCallID, {"HoldCallReason", integer}, {"Manual", flag}}},
        A::resultWord, "", "Puts a call on hold; the reason is a feature number, the flag says: asked for by hand."},
    {"RetrieveCall", {{kLine, kCallID}},
        A::resultWord, "", "Takes a call back from hold."},
    {"Consult", {{kLine, kCallID, kDestination}},
        A::resultWord, "", "Makes a consultation call beside a held call."},
    {"AttendedTransfer", {{kLine, kActiveCall, kHeldCall}},
        A::resultWord, "", "Connects the parties of two calls with each other."},
    {"BlindTransfer", {{kLine, kCallID, kDestination}},
        A::resultWord, "", "Transfers a call to a destination without asking it first."},
    {"RefuseCall", {{kLine, kCallID, {"RefuseCallReason", integer}}},
        A::resultWord, "", "Turns a ringing call away, with a reason number."},
    {"CallClearRequest", {{kLine, kCallID, {"Cause", integer}}},
        A::resultWord, "", "Ends a call, with a cause number."},
    {"SystemStatus", {{{"SystemStatus", text}, {"SystemStatusInfo", text}}},
        A::resultWord, "", "Tells which view the user interface shows."},
    {"Subscribe", {{}},
        A::resultWord, "", "Subscribes the requesting application to the events."},
    {"ActivateCallbackRinging", {{kLine, kCallID}},
        A::resultWord, "", "Sets a call-back on a party that does not answer."},
    {"ActivateCallbackBusy", {{kLine, kCallID}},
        A::resultWord, "", "Sets a call-back on a busy party."},
    {"CancelCallbacks", {{kLine, kCallID, {"URI", text},
                          {"CancelCallBackType", integer}, {"DisplayOutcomeCallUI", flag}}},
        A::resultWord, "", "Cancels call-backs to a party, by type number."},
    {"DirectedPickupCall", {{kLine, kCallID, {"CallToBePickedUp", text}, {"BLFPickup", flag}}},
        A::resultWord, "", "Picks up a call that rings at another telephone."},
    {"GroupPickupCall", {{kLine, kCallID}},
        A::resultWord, "", "Picks up a call that rings in the group."},
    {"ConferenceCall", {{kLine, kActiveCall, kHeldCall, {"feature", integer}}},
        A::resultWord, "", "Joins two calls into a conference; the feature is a number."},
    {"SetServiceState", {{{"state", serviceState}}},
        A::resultWord, "", "Sets the state of the service."},
    {"GetServiceState", {{}},
        A::wordAndValue, "...,sfiServiceInService|sfiServiceOutOfService|sfiServiceDoNotDisturb",
        "Asks for the state of the service."},
    {"SetDoNotDisturb", {{kLine, {"doNotDisturbOn", flag}}},
        A::resultWord, "", "Switches do-not-disturb."},
    {"GetDoNotDisturb", {{{"deviceID", text}}},
        A::wordAndValue, "...,true|false", "Asks for do-not-disturb."},
    {"SetAgentState", {{kLine, {"agentState", text}}},
        A::resultWord, "", "Sets the agent state: loggedOn, loggedOff, notReady, ready or workingAfterCall."},
    {"GenerateDigits", {{kLine, kActiveCall, {"digits", text}}},
        A::resultWord, "", "Sends digits in a call."},
    {"GetDevices", {{}},
        A::texts, "......", "Asks for the devices that can be monitored; their texts are run together."},
    {"SetMicrophoneMute", {{{"Status", flag}}},
        A::resultWord, "", "Mutes the microphone."},
    {"GetMicrophoneMute", {{}},
        A::wordAndValue, "...,true|false", "Asks whether the microphone is muted."},
    {"getManualHoldIndication", {{kLine, kCallID}},
        A::truth, "true|false", "Asks whether a call was put on hold by hand."},
    {"Activate", {{}},
        A::resultWord, "", "Starts SIP operation."},
    {"Deactivate", {{{"AllowAutoActivate", flag}}},
        A::resultWord, "", "Ends SIP operation; with the flag it may come back by itself."},
    {"SendCSTARequest", {{kLine, kBody}},
        A::resultWord, "", "Sends a CSTA request of the line to the server."},
    {"InitializeOrFinalizeServerFeatures", {{kLine, {"initialize", flag}}},
        A::nothing, "", "Starts or ends the server-based features of a line."},
    {"AlternateCalls", {{kLine}},
        A::resultWord, "", "Swaps the active and the held call of a line."},
    {"GetMessageWaitingIndicator", {{}},
        A::elements,
        "<Type>...</Type><newMsgs>...</newMsgs><oldMsgs>...</oldMsgs><newUrgMsgs>...</newUrgMsgs>"
        "<oldUrgMsgs>...</oldUrgMsgs><return_type>...</return_type><available_info>...</available_info>"
        "<messages_waiting>...</messages_waiting><voiceMailNumber>...</voiceMailNumber>"
        "<func_return_val>...</func_return_val>",
        "Asks for the message counts of the mailbox."},
    {"setAssociatedCalls", {{{"associated", flag}}},
        A::resultWord, "", "Tells whether calls are associated with each other."},
    {"setLampMode", {{kLine, {"lampId", text}, {"lampMode", integer}}},
        A::resultWord, "", "Sets the lamp Hold or SecondAlert."},
    {"makeSecurityChangeReinvite", {{kLine, kCallID, {"forceFlag", flag}}},
        A::resultWord, "", "Negotiates a call anew after a change of its security."},
    {"setForwardingConfiguration", {{kLine, {"fwType", integer}, {"status", flag}, {"uri", text},
                                     {"cfnrRingCount", integer}, {"forceQORAUpdate", flag}}},
        A::resultWord, "", "Sets one of the forwarding rules, by type number."},
    {"getForwardingConfiguration", {{{"fwType", integer}}},
        A::elements,
        "<sfiResult>...</sfiResult><status>...</status><uri>...</uri><cfnrRingCount>...</cfnrRingCount>",
        "Asks for one of the forwarding rules, by type number."},
    {"setIsInServiceInitiatedState", {{kLine, {"IsInServiceInitiatedState", word}}},
        A::nothing, "", "Tells that a line is off the hook and has no call yet."},
    {"SendUACSTAServerMessage", {{kLine, kBody}},
        A::fixedText, "UACSTA message is sent.", "Sends a CSTA message to the server; the answer is always the same."},
    {"callbackDOFeatureCallID", {{{"CallID", text}, {"instanceId", integer}}},
        A::nothing, "", "Tells the call id that a feature of an instance got."},
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
}  // namespace request_table

inline constexpr std::size_t kRequestCount = 43;                     ///< the number of requests
inline constexpr auto& kRequestDescriptions = request_table::kRows;  ///< every request

static_assert(sizeof(request_table::kRows) / sizeof(request_table::kRows[0]) == kRequestCount,
              "a request was added or removed: the invoker and everyone who lists requests must know");
static_assert(request_table::namesAreUnique(), "a request stands in the table twice");

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

#include "telephone/protocol/ProtocolDescription.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CommunicationsServiceRequests.h"

namespace telephone {
namespace {

ProtocolDescription description()
{
    return ProtocolDescription("1.0.0", {{"press", "KEY", "presses a key, by number, label or function"}});
}

std::string textOf(std::string_view name)
{
    auto const text = description().describe(name);
    return text ? *text : "refused: " + text.error().reason;
}

TEST(ProtocolDescription, Describe_OfARequest_SaysEverything)
{
    EXPECT_EQ(textOf("HoldCall"), R"(HoldCall: request
  Puts a call on hold.

  Line              line id
                    Not used: the call id alone says which call.
  CallID            number, call id; required
                    The call.
                    If missing, -1: refused.
                    If wrong, a non-number is 0; no such call: refused.
  HoldCallReason    number of Feature, 5 or 6; optional
                    Why the call is held; consultation hold shows on the line, and
                    FeatureFailedEvent repeats the number.
                    If missing, -1: treated as hold.
                    If wrong, a non-number is 0; any other number: an ordinary hold.
  Manual            1 or 0; optional
                    Whether a person asked for the hold; getManualHoldIndication reports it.
                    If missing, true.
                    If wrong, every number but 0 is true, a non-number is false.

  What counts       CallID counts; Line does not.
  Answer            a result word
  Promises          The far end is being asked. A held conference is held as a whole.
  Does not promise  That the far end agrees: CallHeldEvent or FeatureFailedEvent says so. For a call
                    that is held already, an event.
  Events            CallHeldEvent, FeatureFailedEvent
  Sample            <Method>HoldCall</Method><Line>4711</Line><CallID>2</CallID><HoldCallReason>5</HoldCallReason><Manual>1</Manual>
)");
}

TEST(ProtocolDescription, Describe_OfARequestWithAValueInItsAnswer_SaysItsEnumeration)
{
    EXPECT_EQ(textOf("GetServiceState"), R"(GetServiceState: request
  Asks for the state of the service.

  What counts       Neither Line nor CallID: the request concerns the whole telephone.
  Answer            a result word and a value,
                    `...,sfiServiceInService|sfiServiceOutOfService|sfiServiceDoNotDisturb`
    value           word of ServiceState: State of the service.
  Promises          The state that was set last.
  Does not promise  That the telephone is ready, or any line registered: the service is in service
                    from the start. On this telephone, the command hello says whether it is ready.
  Events            none
  Sample            <Method>GetServiceState</Method>
)");
}

TEST(ProtocolDescription, Describe_OfARequestWithABody_ShowsItInTheSample)
{
    EXPECT_EQ(textOf("SendCSTARequest"), R"(SendCSTARequest: request
  Sends a CSTA request to the server of a line.

  Line              line id; optional
                    Line whose server gets the message.
                    If missing, empty: the first line.
                    If wrong, unknown line: refused.
  Body              everything after </Line>, usually XML; required
                    The message; sent unchanged.
                    If missing, empty: refused.
                    If wrong, without </Line> the first six characters of the request are cut off,
                    and the rest is the body.

  What counts       Line counts, and must be the last element before the body.
  Answer            a result word
  Promises          The request is being sent.
  Does not promise  That the server accepts it: b2buaCSTAResponse says so.
  Events            b2buaCSTAResponse, b2buaCSTAEventOrRequest
  Sample            <Method>SendCSTARequest</Method><Line>4711</Line><MonitorStart><monitorObject><deviceObject>4711</deviceObject></monitorObject></MonitorStart>
)");
}

TEST(ProtocolDescription, Describe_OfAnEvent_SaysEverything)
{
    EXPECT_EQ(textOf("CallForwardedEvent"), R"(CallForwardedEvent: event
  An incoming call was forwarded or deflected.

  LineID            line id
                    Line or appearance that the call was for.
  CallID            number, call id
                    The call; if it was forwarded before it was offered, an id that no other event
                    has.
  CallingParty      SIP address
                    The caller.
  CallingPartyName  display name
                    The caller's name, as the caller claims; may be empty.
  NewDestination    SIP address
                    Where the call was sent.
  Reason            number of ForwardReason
                    Why the call was forwarded; not a reason for ending, although the tag is the
                    same.

  When              Sent when the caller has been told the new destination. A call that was offered
                    already ends with CallStateChangeEvent (idle, forwarded) before it.
)");
}

TEST(ProtocolDescription, Describe_OfAnEventThatIsNotDelivered_SaysSo)
{
    EXPECT_EQ(textOf("csCommunicationsServiceEvent"), R"(csCommunicationsServiceEvent: event
  Carries nothing.

  When              Never arrives: the service does not deliver it. Applications receive at most the
                    other 28 events.
)");
}

TEST(ProtocolDescription, Describe_OfAnEnumeration_ListsItsValuesAndUses)
{
    EXPECT_EQ(textOf("ServiceState"), R"(ServiceState: enumeration
  State of the whole service.

  sfiServiceInService     in service      Calls can be made and received.
  sfiServiceOutOfService  out of service  No line is registered and no new call is possible.
  sfiServiceDoNotDisturb  do-not-disturb  Calls can be made; incoming calls are refused.

  Used by  state in SetServiceState, value in answer of GetServiceState
)");
}

TEST(ProtocolDescription, Describe_OfAValueByNumber_SaysItsName)
{
    EXPECT_EQ(textOf("CallState 6"), R"(CallState 6: connected
  The parties can talk.

  Used by  CallState in CallStateChangeEvent
)");
}

TEST(ProtocolDescription, Describe_OfAValueByWord_SaysItsNumber)
{
    EXPECT_EQ(textOf("remote ringing"), R"(CallState 3: remote ringing
  The called party's telephone is ringing.

  Used by  CallState in CallStateChangeEvent
)");
}

TEST(ProtocolDescription, Describe_OfAValueWhoseEnumerationIsNoTag_FindsIt)
{
    EXPECT_EQ(textOf("Lamp Hold"), R"(Lamp Hold: hold lamp
  The lamp of the hold key; green.

  Used by  lampId in setLampMode
)");
}

TEST(ProtocolDescription, Describe_OfAnElement_SaysItsMeaningInEachPlace)
{
    EXPECT_EQ(textOf("DiversionReason"), R"(DiversionReason: element
  in IncomingCallEvent  number of ForwardReason
      Why that party diverted the call; none if nobody did.
  in IncomingCallMissedEvent  number of ForwardReason
      Why that party diverted the call; none if nobody did.
)");
}

TEST(ProtocolDescription, Describe_OfATagWithTwoEnumerations_FindsTheValueInBoth)
{
    std::string const text = textOf("Reason busy");

    EXPECT_NE(text.find("Reason 1: busy\n"), std::string::npos) << text;
    EXPECT_NE(text.find("ForwardReason 2: busy\n"), std::string::npos) << text;
}

TEST(ProtocolDescription, Describe_OfACommand_SaysHowToWriteIt)
{
    EXPECT_EQ(textOf("press"), R"(press: command
  presses a key, by number, label or function

  Write   press KEY
)");
}

TEST(ProtocolDescription, Describe_DoesNotMindCapitalsOrTheEndOfAnEventsName)
{
    EXPECT_EQ(textOf("holdcall"), textOf("HoldCall"));
    EXPECT_EQ(textOf("CALLHELD"), textOf("CallHeldEvent"));
    EXPECT_EQ(textOf("remoteRinging"), textOf("remote ringing"));
}

TEST(ProtocolDescription, Describe_OfAnUnknownName_IsRefusedWithTheNearestOne)
{
    EXPECT_EQ(textOf("HoldCal"), "refused: \"HoldCal\" is not a request, event, command, enumeration, element or word "
                                 "(did you mean HoldCall?)");
    EXPECT_EQ(textOf("pres"), "refused: \"pres\" is not a request, event, command, enumeration, element or word "
                              "(did you mean press?)");
    EXPECT_EQ(textOf("xyzzyplugh"),
              "refused: \"xyzzyplugh\" is not a request, event, command, enumeration, element or word");
    EXPECT_EQ(textOf("CallState 99"), "refused: \"99\" is not a value of CallState");
    EXPECT_EQ(textOf("CallState conected"),
              "refused: \"conected\" is not a value of CallState (did you mean connected?)");
    EXPECT_EQ(textOf(""), "refused: \"\" is not a request, event, command, enumeration, element or word");
    EXPECT_EQ(textOf("6"), "refused: \"6\" is not a request, event, command, enumeration, element or word");
}

TEST(ProtocolDescription, EveryName_CanBeDescribed)
{
    auto const all = description();
    for (auto const name : all.names()) {
        EXPECT_TRUE(all.describe(name)) << name;
    }
}

TEST(ProtocolDescription, Overview_HasALineForEverything)
{
    std::string const text = description().overview();

    EXPECT_EQ(text.substr(0, text.find('\n')), "The protocol of telephone 1.0.0");
    // A line each and a command; a title and four headings with a blank line before each.
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'),
              kRequestCount + kEventCount + kEnumerationCount + 1 + 1 + 4 * 2);
    EXPECT_NE(text.find("\n  HoldCall                              Puts a call on hold.\n"), std::string::npos);
    EXPECT_NE(text.find("\n  press KEY                             presses a key, by number, label or function\n"),
              std::string::npos);
}

TEST(ProtocolDescription, Json_HoldsEverything)
{
    auto const document = nlohmann::json::parse(description().json());

    EXPECT_EQ(document.at("telephone"), "1.0.0");
    EXPECT_EQ(document.at("requests").size(), kRequestCount);
    EXPECT_EQ(document.at("events").size(), kEventCount);
    EXPECT_EQ(document.at("enumerations").size(), kEnumerationCount);
    EXPECT_EQ(document.at("commands"),
              nlohmann::json::parse(
                  R"([{"name": "press", "arguments": "KEY", "help": "presses a key, by number, label or function"}])"));
}

TEST(ProtocolDescription, Json_OfARequest_IsComplete)
{
    auto const document = nlohmann::json::parse(description().json());

    EXPECT_EQ(document.at("requests").at(9), nlohmann::json::parse(R"({
  "name": "RefuseCall",
  "meaning": "Refuses a ringing call.",
  "parameters": [
    {
      "tag": "Line",
      "kind": "text",
      "form": "line id",
      "need": "not used",
      "meaning": "Not used: the call id alone says which call.",
      "missing": {
        "value": ""
      },
      "sample": "4711"
    },
    {
      "tag": "CallID",
      "kind": "number",
      "form": "call id",
      "need": "required",
      "meaning": "The ringing call.",
      "missing": {
        "value": -1,
        "effect": "refused"
      },
      "wrong": "a non-number is 0; no such call, or it is not ringing: refused",
      "sample": "1001"
    },
    {
      "tag": "RefuseCallReason",
      "kind": "number",
      "enumeration": "RefuseCall",
      "minimum": 0,
  "maximum": 4,
      "need": "required",
      "meaning": "What the caller is told.",
      "missing": {
        "value": -1,
        "effect": "the request is refused, and the call keeps ringing"
      },
      "wrong": "a non-number is 0; any other number: as missing",
      "sample": "1"
    }
  ],
  "what_counts": "CallID counts; Line does not.",
  "answer": {
    "kind": "result word",
    "elements": [],
    "promises": "The caller has been told, and the call is over."
  },
  "events": [
    "CallStateChangeEvent"
  ],
  "sample": "<Method>RefuseCall</Method><Line>4711</Line><CallID>1001</CallID><RefuseCallReason>1</RefuseCallReason>"
})"));
}

TEST(ProtocolDescription, Json_OfAnEvent_IsComplete)
{
    auto const document = nlohmann::json::parse(description().json());

    EXPECT_EQ(document.at("events").at(4), nlohmann::json::parse(R"({
  "operation": "callHeld",
  "method": "CallHeldEvent",
  "name": "held",
  "sent_by": "this telephone",
  "meaning": "A call is on hold.",
  "when": "Sent when the far end has agreed to the hold, even if the telephone itself held the call to let another one be active. Held conferences report it for both calls.",
  "elements": [
    {
      "tag": "LineID",
      "kind": "text",
      "form": "line id",
      "meaning": "Line or appearance that the call is on."
    },
    {
      "tag": "CallID",
      "kind": "number",
      "form": "call id",
      "meaning": "The call."
    }
  ]
})"));
}

}  // namespace
}  // namespace telephone

#include "telephone/protocol/ProtocolCheck.h"

#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CommunicationsServiceRequests.h"
#include "telephone/protocol/Phrases.h"

namespace telephone {
namespace {

std::string reasonOf(Outcome<> const& outcome)
{
    return outcome ? "fine" : outcome.error().reason;
}

std::string request(std::string const& text)
{
    return reasonOf(checkRequest(text));
}

std::string event(std::string const& text)
{
    return reasonOf(checkEvent(text));
}

TEST(ProtocolCheck, EverySample_IsFine)
{
    for (auto const& description : kRequestDescriptions) {
        EXPECT_EQ(request(sampleOf(description)), "fine") << description.name;
    }
}

TEST(ProtocolCheck, EverySuccessfulGoldenRequest_IsFine)
{
    auto const requests = nlohmann::json::parse(std::ifstream(GOLDEN_FOLDER "/requests.json"));
    for (auto const& each : requests) {
        EXPECT_EQ(request(each.at("exchanges").at(0).at("request")), "fine") << each.at("method");
    }
}

TEST(ProtocolCheck, SignallingNotice_IsFine)
{
    EXPECT_EQ(request("SigEvent:anything"), "fine");
}

TEST(ProtocolCheck, UnknownMethod_IsRefusedWithTheNearestName)
{
    EXPECT_EQ(request("<Method>HoldCal</Method>"), "there is no request HoldCal (did you mean HoldCall?)");
    EXPECT_EQ(request("<Method>holdcall</Method>"), "there is no request holdcall (did you mean HoldCall?)");
    EXPECT_EQ(request("<Line>4711</Line>"), "a request begins with <Method>, the name of the request and </Method>");
    EXPECT_EQ(request(""), "a request begins with <Method>, the name of the request and </Method>");
}

TEST(ProtocolCheck, UnknownParameter_IsRefusedWithTheNearestName)
{
    EXPECT_EQ(request("<Method>HoldCall</Method><CallId>1</CallId>"),
              "HoldCall has no parameter CallId (did you mean CallID?)");
    EXPECT_EQ(request("<Method>Consult</Method><Line>4711</Line><CallID>3</CallID><Destination>100</Destination>rest"),
              "\"rest\" is not an element with a closing tag");
    EXPECT_EQ(request("<Method>HoldCall</Method><CallID>1</CallID><CallID>2</CallID>"),
              "HoldCall has the parameter CallID twice; the first one counts");
}

TEST(ProtocolCheck, MissingRequiredParameter_IsRefused)
{
    EXPECT_EQ(request("<Method>HoldCall</Method><Line>4711</Line>"), "HoldCall lacks CallID, which is read as -1");
    EXPECT_EQ(request("<Method>SetDoNotDisturb</Method><Line>4711</Line>"),
              "SetDoNotDisturb lacks doNotDisturbOn, which is read as true");
    EXPECT_EQ(request("<Method>SendUACSTAServerMessage</Method><Line>4711</Line>"),
              "SendUACSTAServerMessage lacks Body, which is read as empty");
}

TEST(ProtocolCheck, WrongValue_IsRefused)
{
    EXPECT_EQ(request("<Method>HoldCall</Method><CallID>one</CallID>"), "CallID \"one\" is not a number");
    EXPECT_EQ(request("<Method>HoldCall</Method><CallID>1</CallID><Manual>yes</Manual>"),
              "Manual \"yes\" is neither 1 nor 0");
    EXPECT_EQ(request("<Method>getForwardingConfiguration</Method><fwType>9</fwType>"),
              "fwType \"9\" is out of range (0 to 8)");
    EXPECT_EQ(request("<Method>HoldCall</Method><CallID>99999999999</CallID>"),
              "CallID \"99999999999\" is out of range");
    EXPECT_EQ(request("<Method>SetServiceState</Method><state>sfiServiceInservice</state>"),
              "state \"sfiServiceInservice\" is not a word of ServiceState (did you mean sfiServiceInService?)");
    EXPECT_EQ(request("<Method>SetAgentState</Method><agentState>asleep</agentState>"),
              "agentState \"asleep\" is not a word of AgentState");
}

TEST(ProtocolCheck, Body_MayBeAnything)
{
    EXPECT_EQ(request("<Method>SendCSTARequest</Method><Line>4711</Line>no <XML at all"), "fine");
}

TEST(ProtocolCheck, Form_OfARequest_LetsParametersBeMissingOrOutOfRange)
{
    EXPECT_EQ(reasonOf(checkForm("<Method>HoldCall</Method>")), "fine");
    EXPECT_EQ(reasonOf(checkForm("<Method>HoldCall</Method><HoldCallReason>99</HoldCallReason>")), "fine");
    EXPECT_EQ(reasonOf(checkForm("SigEvent:anything")), "fine");
    EXPECT_EQ(reasonOf(checkForm("<Method>HoldCall</Method><CallID>one</CallID>")), "CallID \"one\" is not a number");
    EXPECT_EQ(reasonOf(checkForm("<Method>HoldCall</Method><CallId>1</CallId>")),
              "HoldCall has no parameter CallId (did you mean CallID?)");
}

TEST(ProtocolCheck, Event_OfItsElementsInOrder_IsFine)
{
    EXPECT_EQ(event("<Method>DevicesChangedEvent</Method>"), "fine");
    EXPECT_EQ(event("<Method>CallForwardedEvent</Method><LineID>4711</LineID><CallID>1003</CallID>"
                    "<CallingParty>sip:4712@127.0.0.1</CallingParty><CallingPartyName></CallingPartyName>"
                    "<NewDestination>sip:100@127.0.0.1</NewDestination><Reason>1</Reason>"),
              "fine");
    EXPECT_EQ(event("<Method>b2buaCSTAResponse</Method><lineURI>4711</lineURI><success>1</success><a/>"), "fine");
}

TEST(ProtocolCheck, EventWithAnotherElement_IsRefused)
{
    EXPECT_EQ(event("<Method>CallHoldEvent</Method>"), "there is no event \"CallHoldEvent\"");
    EXPECT_EQ(event("CallHeldEvent"), "there is no event \"CallHeldEvent\"");
    EXPECT_EQ(event("<Method>CallHeldEvent</Method><CallID>1</CallID><LineID>4711</LineID>"),
              "CallHeldEvent lacks LineID in its place");
    EXPECT_EQ(event("<Method>CallHeldEvent</Method><LineID>4711</LineID>"), "CallHeldEvent lacks CallID in its place");
    EXPECT_EQ(event("<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID><More></More>"),
              "CallHeldEvent ends with \"<More></More>\"");
}

TEST(ProtocolCheck, EventWithAnotherValue_IsRefused)
{
    EXPECT_EQ(event("<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>x</CallID>"),
              "CallID \"x\" is not a number");
    EXPECT_EQ(event("<Method>FeatureSuccessEvent</Method><LineID>4711</LineID><CallID>1</CallID><Feature>99</Feature>"),
              "Feature \"99\" is not a value of Feature");
    EXPECT_EQ(event("<Method>DoNotDisturbEvent</Method><deviceId>4711</deviceId><doNotDisturbOn>2</doNotDisturbOn>"),
              "doNotDisturbOn \"2\" is neither 1 nor 0");
}

}  // namespace
}  // namespace telephone

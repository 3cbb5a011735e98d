#include "telephone/access/RequestReasons.h"

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationsServiceRequests.h"
#include "telephone/base/Touched.h"
#include "telephone/protocol/Phrases.h"

namespace telephone {
namespace {

using Reasons = std::vector<std::string>;

CallStatus call(int id, std::string const& line)
{
    CallStatus call;
    call.id = id;
    call.line = line;
    call.place = line;
    return call;
}

LineStatus line(std::string const& id)
{
    LineStatus line;
    line.id = id;
    return line;
}

// A keyset with calls 2 and 3 on line 4711, on its two appearances, and none on 4712.
TelephoneState keyset()
{
    TelephoneState state;
    state.lines = {line("4711"), line("4712")};
    state.lines[0].appearances = {line("4711#1"), line("4711#2")};
    state.calls = {call(2, "4711"), call(3, "4711")};
    state.calls[0].place = "4711#1";
    state.calls[1].place = "4711#2";
    return state;
}

TelephoneState oneLine()
{
    TelephoneState state;
    state.keyset = false;
    state.lines = {line("4711")};
    return state;
}

std::string request(std::string const& method, std::string const& elements = {})
{
    return "<Method>" + method + "</Method>" + elements;
}

class RequestReasons : public testing::Test
{
protected:
    Reasons of(std::string const& text, std::optional<std::string> answer, std::vector<Refusal> refusals = {}) const
    {
        return reasonsOf(text, {std::move(answer), true, std::move(refusals)},
                         [this]() -> TelephoneState const& { return state_; });
    }
    Reasons refused(std::string const& text, std::vector<Refusal> refusals = {}) const
    {
        return of(text, "sfiFailure", std::move(refusals));
    }
    Reasons accepted(std::string const& text, std::vector<Refusal> refusals = {}) const
    {
        return of(text, "sfiSuccess", std::move(refusals));
    }

    TelephoneState state_ = keyset();
};

// --- requests that need no reason

TEST_F(RequestReasons, SampleOfEveryRequest_ThatSucceeds_HasNone)
{
    state_.calls.push_back(call(1001, "4711"));
    for (auto const& description : kRequestDescriptions) {
        EXPECT_EQ(accepted(sampleOf(description)), Reasons()) << description.name;
    }
}

TEST_F(RequestReasons, MissingParameters_OfARequestThatSucceeds_HaveNone)
{
    EXPECT_EQ(accepted(request("AnswerCall", "<Line>4711</Line>")), Reasons());
    EXPECT_EQ(accepted(request("SetDoNotDisturb", "<Line>4711</Line>")), Reasons());
    EXPECT_EQ(accepted(request("SetAgentState", "<agentState>ready</agentState>")), Reasons());
    EXPECT_EQ(accepted(request("HoldCall", "<CallID>2</CallID><HoldCallReason>99</HoldCallReason>")), Reasons());
}

TEST_F(RequestReasons, SignallingNotice_HasNone)
{
    EXPECT_EQ(of("SigEvent:anything", std::nullopt), Reasons());
}

TEST_F(RequestReasons, State_IsNotAskedFor_WithoutARuleThatNeedsIt)
{
    auto const never = []() -> TelephoneState const& { throw std::logic_error("the state was asked for"); };

    EXPECT_EQ(reasonsOf(request("GetServiceState"), {"sfiSuccess,sfiServiceInService", true, {}}, never), Reasons());
    EXPECT_EQ(reasonsOf(request("HoldCall", "<CallID>2</CallID>"), {"sfiSuccess", true, {}}, never), Reasons());
}

// --- calls

TEST_F(RequestReasons, UnknownCall_OfALine_NamesItsCallsOnce)
{
    Refusal const refusal{RefusalKind::kNotFound, "there is no call 7"};
    for (char const* const method : {"HoldCall", "DeflectCall", "BlindTransfer", "RefuseCall", "CallClearRequest",
                                     "makeSecurityChangeReinvite", "RetrieveCall"}) {
        std::string const text = request(method, "<Line>4711</Line><CallID>7</CallID><Destination>100</Destination>"
                                                 "<RefuseCallReason>1</RefuseCallReason>");
        EXPECT_EQ(refused(text, {refusal}), Reasons{"line 4711 has no call 7; it has calls 2 and 3"}) << method;
    }
}

TEST_F(RequestReasons, UnknownCall_OfATransferOrConference_IsTheHeldCall)
{
    for (char const* const method : {"AttendedTransfer", "ConferenceCall"}) {
        std::string const text = request(method, "<Line>4711</Line><activeCall>2</activeCall><heldCall>7</heldCall>");
        EXPECT_EQ(refused(text, {{RefusalKind::kNotFound, "there is no call 7"}}),
                  Reasons{"line 4711 has no call 7; it has calls 2 and 3"})
            << method;
    }
}

TEST_F(RequestReasons, UnknownCall_OfDigits_IsTheActiveCall)
{
    EXPECT_EQ(refused(request("GenerateDigits", "<activeCall>7</activeCall><digits>1</digits>"),
                      {{RefusalKind::kNotFound, "there is no call 7"}}),
              Reasons{"there is no call 7; the telephone has calls 2 and 3"});
}

TEST_F(RequestReasons, UnknownCall_OfALineWithoutCalls_NamesThoseOfTheTelephone)
{
    std::string const text = request("HoldCall", "<Line>4712</Line><CallID>7</CallID>");

    EXPECT_EQ(refused(text), Reasons{"line 4712 has no call 7; the telephone has calls 2 and 3"});
    state_.calls.pop_back();
    EXPECT_EQ(refused(text), Reasons{"line 4712 has no call 7; the telephone has call 2"});
    state_.calls.clear();
    EXPECT_EQ(refused(text), Reasons{"line 4712 has no call 7; the telephone has no calls"});
}

TEST_F(RequestReasons, MissingCall_NamesTheCalls)
{
    EXPECT_EQ(refused(request("HoldCall", "<Line>4711</Line>"), {{RefusalKind::kNotFound, "there is no call -1"}}),
              Reasons{"HoldCall lacks CallID; line 4711 has calls 2 and 3"});
    EXPECT_EQ(refused(request("HoldCall", "<CallID>two</CallID>"), {{RefusalKind::kNotFound, "there is no call 0"}}),
              Reasons{"CallID \"two\" is not a number; the telephone has calls 2 and 3"});
}

TEST_F(RequestReasons, CallThatIsOver_IsUnknownExceptForACallBack)
{
    state_.calls = {call(2, "4711"), call(4, "4711")};
    state_.calls[1].over = true;

    EXPECT_EQ(refused(request("HoldCall", "<Line>4711</Line><CallID>4</CallID>")),
              Reasons{"line 4711 has no call 4; it has call 2"});
    Refusal const state{RefusalKind::kWrongState, "call 9 allows no call-back: its party does not ring"};
    for (char const* const method : {"ActivateCallbackRinging", "ActivateCallbackBusy"}) {
        EXPECT_EQ(of(request(method, "<CallID>9</CallID>"), "sfiFailureCallBackInvalidState", {state}),
                  Reasons{"call 9 allows no call-back: its party does not ring"});
        EXPECT_EQ(of(request(method, "<Line>4711</Line><CallID>7</CallID>"), "sfiFailureCallBackNoCallInfo",
                     {{RefusalKind::kNotFound, "there is no call 7"}}),
                  Reasons{"line 4711 has no call 7; it has calls 2 and 4"});
    }
}

TEST_F(RequestReasons, CallThatExists_LeavesTheRefusal)
{
    Refusal const refusal{RefusalKind::kWrongState, "call 2 cannot be held: it is not connected"};

    EXPECT_EQ(refused(request("HoldCall", "<Line>4711</Line><CallID>2</CallID>"), {refusal, refusal}),
              Reasons{"call 2 cannot be held: it is not connected"});
}

TEST_F(RequestReasons, AcceptCallWithoutAutoAnswer_OfAnUnknownCall_HasOneAlthoughItSucceeds)
{
    Refusal const refusal{RefusalKind::kNotFound, "no call 7 is alerting on line 4711"};

    EXPECT_EQ(accepted(request("AcceptCall", "<Line>4711</Line><CallID>7</CallID>"), {refusal}),
              Reasons{"line 4711 has no call 7; it has calls 2 and 3"});
}

TEST_F(RequestReasons, AcceptCallWithoutAutoAnswer_OnATelephoneOfOneLine_DoesNothing)
{
    state_ = oneLine();
    state_.calls = {call(1001, "4711")};

    EXPECT_EQ(accepted(request("AcceptCall", "<CallID>1001</CallID>")),
              Reasons{"AcceptCall without AutoAnswer 0 does nothing on a telephone of one line"});
    EXPECT_EQ(accepted(request("AcceptCall", "<CallID>1001</CallID><AutoAnswer>0</AutoAnswer>")), Reasons());
}

TEST_F(RequestReasons, AnswerCall_OfAnUnknownCall_DependsOnTheKindOfTelephone)
{
    std::string const text = request("AnswerCall", "<Line>4711</Line><CallID>7</CallID>");
    Refusal const silent{RefusalKind::kWrongState, "no call is ringing on line 4711"};

    EXPECT_EQ(refused(text, {silent}), Reasons{"no call is ringing on line 4711"});
    state_ = oneLine();
    EXPECT_EQ(refused(text, {{RefusalKind::kNotFound, "there is no call 7"}}),
              Reasons{"line 4711 has no call 7; the telephone has no calls"});
}

TEST_F(RequestReasons, RetrieveCall_OfAnUnknownCallOnAKeyset_HasOneAlthoughItSucceeds)
{
    Refusal const refusal{RefusalKind::kWrongState, "line 4711 has no call on hold"};

    EXPECT_EQ(accepted(request("RetrieveCall", "<Line>4711</Line><CallID>7</CallID>"), {refusal}),
              Reasons{"line 4711 has no call 7; it has calls 2 and 3"});
    EXPECT_EQ(accepted(request("RetrieveCall", "<Line>4712</Line><CallID>2</CallID>")),
              Reasons{"line 4712 has no call 2; the telephone has calls 2 and 3"});
    EXPECT_EQ(accepted(request("RetrieveCall", "<Line>4711#2</Line><CallID>2</CallID>")),
              Reasons{"line 4711#2 has no call 2; it has call 3"});
}

TEST_F(RequestReasons, ManualHoldOfAnUnknownCall_HasOne)
{
    EXPECT_EQ(of(request("getManualHoldIndication", "<Line>4711</Line><CallID>7</CallID>"), "false"),
              Reasons{"line 4711 has no call 7; it has calls 2 and 3"});
    EXPECT_EQ(of(request("getManualHoldIndication", "<Line>4711</Line><CallID>2</CallID>"), "false"), Reasons());
}

// --- lines

TEST_F(RequestReasons, UnknownLineOfAKeyset_NamesTheLinesOnce)
{
    Refusal const refusal{RefusalKind::kNotFound, "the request names no line of this telephone"};
    std::string const elements = "<Line>9999</Line><CallID>7</CallID><Destination>100</Destination>"
                                 "<CallToBePickedUp>102</CallToBePickedUp>";
    for (char const* const method : {"OutgoingCallMakeRequest", "AnswerCall", "Consult", "DirectedPickupCall",
                                     "GroupPickupCall", "AlternateCalls"}) {
        EXPECT_EQ(refused(request(method, elements), {refusal}),
                  Reasons{"there is no line 9999; the lines are 4711 and 4712"})
            << method;
    }
}

TEST_F(RequestReasons, UnknownLineOfASetting_HasOneAlthoughItSucceeds)
{
    EXPECT_EQ(accepted(request("SetDoNotDisturb", "<Line>9999</Line><doNotDisturbOn>1</doNotDisturbOn>")),
              Reasons{"there is no line 9999; the lines are 4711 and 4712"});
    EXPECT_EQ(accepted(request("SetDoNotDisturb", "<doNotDisturbOn>1</doNotDisturbOn>")),
              Reasons{"SetDoNotDisturb lacks Line; the lines are 4711 and 4712"});
    EXPECT_EQ(accepted(request("setForwardingConfiguration", "<Line>9999</Line><fwType>0</fwType><status>0</status>")),
              Reasons{"there is no line 9999; the lines are 4711 and 4712"});
    EXPECT_EQ(accepted(request("SetAgentState", "<Line>9999</Line><agentState>ready</agentState>")),
              Reasons{"there is no line 9999; the lines are 4711 and 4712"});
}

TEST_F(RequestReasons, UnknownLine_OfARequestWithoutAnswer_HasOne)
{
    Refusal const refusal{RefusalKind::kNotFound, "there is no line \"9999\""};

    EXPECT_EQ(of(request("setIsInServiceInitiatedState", "<Line>9999</Line>"), std::nullopt, {refusal}),
              Reasons{"there is no line 9999; the lines are 4711 and 4712"});
    EXPECT_EQ(of(request("InitializeOrFinalizeServerFeatures", "<Line>9999</Line>"), std::nullopt, {refusal}),
              Reasons{"there is no line 9999; the lines are 4711 and 4712"});
}

TEST_F(RequestReasons, UnknownLineOfTheServer_HasOne)
{
    EXPECT_EQ(refused(request("SendCSTARequest", "<Line>9999</Line><a/>"),
                      {{RefusalKind::kNotFound, "there is no line \"9999\""}}),
              Reasons{"there is no line 9999; the lines are 4711 and 4712"});
}

TEST_F(RequestReasons, LineNamedByAppearanceUserOrAddress_IsKnown)
{
    state_.lines[1].user = "desk";
    for (char const* const name : {"4711#2", "desk", "sip:4711@127.0.0.1"}) {
        EXPECT_EQ(accepted(request("SetDoNotDisturb",
                                   "<Line>" + std::string(name) + "</Line><doNotDisturbOn>1</doNotDisturbOn>")),
                  Reasons())
            << name;
    }
}

TEST_F(RequestReasons, UnknownLine_OnATelephoneOfOneLine_DoesNotMatter)
{
    state_ = oneLine();

    EXPECT_EQ(accepted(request("SetDoNotDisturb", "<Line>9999</Line><doNotDisturbOn>1</doNotDisturbOn>")), Reasons());
    EXPECT_EQ(accepted(request("SetAgentState", "<Line>9999</Line><agentState>ready</agentState>")),
              Reasons{"there is no line 9999; the line is 4711"});
}

// --- new calls

TEST_F(RequestReasons, CallWhileLocked_NamesTheNumber)
{
    std::string const text =
        request("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>5</CallID><Destination>100</Destination>");
    state_.locked = true;

    EXPECT_EQ(refused(text), Reasons{"\"100\" cannot be dialled while the telephone is locked"});
    EXPECT_EQ(accepted(text), Reasons());
    EXPECT_EQ(refused(text, {{RefusalKind::kAlreadyExists, "call id 5 is in use"}}), Reasons{"call id 5 is in use"});
}

TEST_F(RequestReasons, CallWhileBarred_NamesTheSetting)
{
    state_.barred = true;

    EXPECT_EQ(refused(request("OutgoingCallMakeRequest",
                              "<Line>4711</Line><CallID>5</CallID><Destination>100</Destination>")),
              Reasons{"\"100\" cannot be dialled: outgoing calls are barred (dial-restriction-mode)"});
}

TEST_F(RequestReasons, PickupByNumber_WithoutOne_SaysWhich)
{
    std::string const elements = "<Line>4711</Line><CallID>5</CallID><BLFPickup>0</BLFPickup>";

    EXPECT_EQ(refused(request("DirectedPickupCall", elements + "<CallToBePickedUp></CallToBePickedUp>")),
              Reasons{"DirectedPickupCall names no number to pick up"});
    EXPECT_EQ(refused(request("DirectedPickupCall", elements + "<CallToBePickedUp>102</CallToBePickedUp>")),
              Reasons{"no number for directed pickup is configured (server.directed-pickup); BLFPickup 1 needs none"});
}

// --- words and numbers

TEST_F(RequestReasons, UnknownServiceState_TellsTheConsequence)
{
    EXPECT_EQ(accepted(request("SetServiceState", "<state>busy</state>")),
              Reasons{"there is no service state \"busy\" (sfiServiceInService, sfiServiceOutOfService and "
                      "sfiServiceDoNotDisturb): the telephone is out of service now"});
    EXPECT_EQ(accepted(request("SetServiceState")),
              Reasons{"SetServiceState lacks state (sfiServiceInService, sfiServiceOutOfService and "
                      "sfiServiceDoNotDisturb): the telephone is out of service now"});
}

TEST_F(RequestReasons, UnknownView_NamesTheViews)
{
    EXPECT_EQ(refused(request("SystemStatus", "<SystemStatus>CallView</SystemStatus>")),
              Reasons{"there is no view \"CallView\" (CallView-Normal, MessagesPhonelet-Normal, CallViewMWI-Normal and "
                      "CallViewMWI-Normal-NoMessagesPhonelet)"});
}

TEST_F(RequestReasons, UnknownAgentState_NamesTheStates)
{
    EXPECT_EQ(refused(request("SetAgentState", "<agentState>asleep</agentState>")),
              Reasons{"there is no agent state \"asleep\" (loggedOn, loggedOff, notReady, ready and "
                      "workingAfterCall)"});
}

TEST_F(RequestReasons, UnknownLamp_HasOneAlthoughItSucceeds)
{
    EXPECT_EQ(accepted(request("setLampMode", "<lampId>Mute</lampId><lampMode>1</lampMode>")),
              Reasons{"there is no lamp \"Mute\" (Hold and SecondAlert)"});
    EXPECT_EQ(accepted(request("setLampMode", "<lampId>Hold</lampId><lampMode>9</lampMode>"),
                       {{RefusalKind::kBadInput, "lamp 101 has no mode 9"}}),
              Reasons{"there is no lamp mode 9 (0 to 3)"});
}

TEST_F(RequestReasons, UnknownForwardingType_HasOneAlthoughItSucceeds)
{
    std::string const elements = "<Line>4711</Line><status>1</status><uri>102</uri>";

    EXPECT_EQ(accepted(request("setForwardingConfiguration", elements + "<fwType>99</fwType>"),
                       {{RefusalKind::kBadInput, "there is no forwarding type 99"}}),
              Reasons{"there is no forwarding type 99 (0 to 9)"});
    EXPECT_EQ(accepted(request("setForwardingConfiguration", elements)),
              Reasons{"setForwardingConfiguration lacks fwType (0 to 9)"});
    EXPECT_EQ(of(request("getForwardingConfiguration", "<fwType>9</fwType>"),
                 "<sfiResult>sfiFailure</sfiResult><status>0</status><uri></uri><cfnrRingCount>0</cfnrRingCount>"),
              Reasons{"there is no forwarding type 9 (0 to 8)"});
}

TEST_F(RequestReasons, UnknownRefuseReason_NamesTheRange)
{
    std::string const text = request("RefuseCall", "<CallID>2</CallID><RefuseCallReason>9</RefuseCallReason>");

    EXPECT_EQ(refused(text, {{RefusalKind::kBadInput, "call 2 cannot be refused: there is no reason 9"}}),
              Reasons{"there is no refusal reason 9 (0 to 4)"});
}

// --- settings

TEST_F(RequestReasons, DoNotDisturbThatIsForbidden_NamesTheSetting)
{
    EXPECT_EQ(refused(request("SetDoNotDisturb", "<Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>")),
              Reasons{"do-not-disturb cannot be switched on: the setting call-dnd-enabled is false"});
}

TEST_F(RequestReasons, AgentStateWithoutAgent_NamesTheSetting)
{
    EXPECT_EQ(refused(request("SetAgentState", "<agentState>ready</agentState>")),
              Reasons{"the telephone has no agent: while the setting agent-feature-enabled is false, only loggedOff "
                      "is accepted"});
}

TEST_F(RequestReasons, ForwardingWithoutDestination_TellsWhatBecomesOfIt)
{
    std::string const rule = "<Line>4711</Line><fwType>0</fwType>";

    EXPECT_EQ(accepted(request("setForwardingConfiguration", rule + "<status>0</status>")),
              Reasons{"setForwardingConfiguration lacks uri: forwarding type 0 has no destination now"});
    EXPECT_EQ(accepted(request("setForwardingConfiguration", rule + "<status>0</status><uri></uri>")), Reasons());
    EXPECT_EQ(accepted(request("setForwardingConfiguration", rule + "<status>1</status><uri></uri>")),
              Reasons{"forwarding type 0 is on without a destination: it forwards no call"});
}

TEST_F(RequestReasons, NumberOfRings_ThatIsNotSet_StaysAsItWas)
{
    std::string const rule = "<Line>4711</Line><fwType>6</fwType><status>1</status><uri>102</uri>";
    Refusal const refusal{RefusalKind::kBadInput, "\"cfnr-delay\" takes a number from 0 to 99, not \"200\""};

    EXPECT_EQ(accepted(request("setForwardingConfiguration", rule + "<cfnrRingCount>200</cfnrRingCount>"), {refusal}),
              Reasons{"cfnrRingCount \"200\" is out of range (0 to 99): the number of rings stays as it was"});
    EXPECT_EQ(accepted(request("setForwardingConfiguration", rule), {refusal}),
              Reasons{"setForwardingConfiguration lacks cfnrRingCount: the number of rings stays as it was"});
}

TEST_F(RequestReasons, StoreThatRefuses_TellsWhatWasNotKeptOnce)
{
    Refusal const full{RefusalKind::kLimit,
                       "the store \"/tmp/store\" is full: make room on its disk, or reset settings"};

    EXPECT_EQ(accepted(request("setForwardingConfiguration",
                               "<Line>4711</Line><fwType>0</fwType><status>1</status><uri>102</uri>"),
                       {full, full, full}),
              Reasons{"the forwarding rule was not kept, because the store \"/tmp/store\" is full: make room on its "
                      "disk, or reset settings"});
    EXPECT_EQ(
        accepted(request("SetDoNotDisturb", "<Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>"), {full}),
        Reasons{"do-not-disturb stays as it was, because the store \"/tmp/store\" is full: make room on its disk, "
                "or reset settings"});
    EXPECT_EQ(accepted(request("SetAgentState", "<agentState>ready</agentState>"), {full}),
              Reasons{"the agent state stays as it was, because the store \"/tmp/store\" is full: make room on its "
                      "disk, or reset settings"});
}

// --- queries and messages to the server

TEST_F(RequestReasons, DevicesOfALineThatDoesNotRegister_HaveOne)
{
    EXPECT_EQ(refused(request("GetDevices")), Reasons{"the telephone has no device: its line does not register"});
}

TEST_F(RequestReasons, MessageCountsThatAreNotKnown_HaveOne)
{
    EXPECT_EQ(of(request("GetMessageWaitingIndicator"), "<Type>0</Type><newMsgs>0</newMsgs>"),
              Reasons{"the mailbox has not reported: the counts are not known"});
    EXPECT_EQ(of(request("GetMessageWaitingIndicator"), "<Type>1</Type><newMsgs>0</newMsgs>"), Reasons());
}

TEST_F(RequestReasons, ServerMessageWithoutLine_TellsWhatWasSent)
{
    EXPECT_EQ(
        accepted(request("SendCSTARequest", "<a/>")),
        Reasons{"SendCSTARequest has no </Line>: the request itself, without its first six characters, was sent"});
    EXPECT_EQ(of(request("SendUACSTAServerMessage", "<a/>"), "UACSTA message is sent."),
              Reasons{"SendUACSTAServerMessage has no </Line>: the request itself, without its first six characters, "
                      "was sent"});
}

// --- texts that are wrong

TEST_F(RequestReasons, UnknownMethod_NamesTheNearest)
{
    EXPECT_EQ(refused(request("HoldCal")), Reasons{"there is no request HoldCal (did you mean HoldCall?)"});
}

TEST_F(RequestReasons, UnknownParameter_HasOneAlthoughTheRequestSucceeds)
{
    EXPECT_EQ(accepted(request("SetDoNotDisturb", "<Line>4711</Line><doNotDistrubOn>0</doNotDistrubOn>")),
              Reasons{"SetDoNotDisturb has no parameter doNotDistrubOn (did you mean doNotDisturbOn?)"});
    EXPECT_EQ(accepted(request("HoldCall", "<CallID>2</CallID><Manual>yes</Manual>")),
              Reasons{"Manual \"yes\" is neither 1 nor 0"});
}

TEST_F(RequestReasons, TextThatIsWrong_ExplainsTheRefusalOfItsValue)
{
    Refusal const refusal{RefusalKind::kBadInput, "\"\" is not a number or an address that can be called"};
    Refusal const state{RefusalKind::kUnavailable, "the telephone is not active"};

    EXPECT_EQ(refused(request("Consult", "<Line>4711</Line><CallID>5</CallID>"), {refusal}),
              Reasons{"Consult lacks Destination, which is read as empty"});
    EXPECT_EQ(refused(request("Consult", "<Line>4711</Line><CallID>5</CallID>"), {state}),
              (Reasons{"Consult lacks Destination, which is read as empty", "the telephone is not active"}));
}

TEST_F(RequestReasons, RuleThatExplainsNoRefusal_StandsBesideIt)
{
    Refusal const refusal{RefusalKind::kBadInput, "it is wrong in another way, too"};

    EXPECT_EQ(refused(request("SetDoNotDisturb", "<Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>"), {refusal}),
              (Reasons{"do-not-disturb cannot be switched on: the setting call-dnd-enabled is false", refusal.reason}));
    EXPECT_EQ(of(request("GetMessageWaitingIndicator"), "<Type>0</Type><newMsgs>0</newMsgs>", {refusal}),
              (Reasons{"the mailbox has not reported: the counts are not known", refusal.reason}));
}

// Each of these says why nothing was done only if nobody else does.
TEST_F(RequestReasons, RuleForASilentFailure_LeavesTheRefusalAlone)
{
    Refusal const refusal{RefusalKind::kWrongState, "another reason"};
    state_.locked = true;
    struct Case
    {
        char const* request;
        char const* elements;
        char const* answer;
    };
    for (Case const& each :
         {Case{"OutgoingCallMakeRequest", "<Line>4711</Line><CallID>5</CallID><Destination>100</Destination>",
               "sfiFailure"},
          Case{"DirectedPickupCall",
               "<Line>4711</Line><CallID>5</CallID><BLFPickup>0</BLFPickup><CallToBePickedUp></CallToBePickedUp>",
               "sfiFailure"},
          Case{"DirectedPickupCall",
               "<Line>4711</Line><CallID>5</CallID><BLFPickup>1</BLFPickup><CallToBePickedUp></CallToBePickedUp>",
               "sfiFailure"},
          Case{"setForwardingConfiguration", "<Line>4711</Line><fwType>0</fwType><status>1</status><uri></uri>",
               "sfiSuccess"},
          Case{"SendCSTARequest", "", "sfiSuccess"}}) {
        EXPECT_EQ(of(request(each.request, each.elements), each.answer, {refusal}), Reasons{"another reason"})
            << each.request;
    }
}

TEST_F(RequestReasons, ForwardingType_ThatIsFirstOrLast_Exists)
{
    for (char const* const type : {"0", "9"}) {
        EXPECT_EQ(
            accepted(request("setForwardingConfiguration", "<Line>4711</Line><status>1</status><uri></uri><fwType>" +
                                                               std::string(type) + "</fwType>")),
            Reasons{"forwarding type " + std::string(type) + " is on without a destination: it forwards no call"});
    }
    for (char const* const type : {"-1", "10"}) {
        EXPECT_EQ(
            accepted(request("setForwardingConfiguration", "<Line>4711</Line><status>1</status><uri></uri><fwType>" +
                                                               std::string(type) + "</fwType>")),
            Reasons{"there is no forwarding type " + std::string(type) + " (0 to 9)"});
    }
}

// With one line, the rule is for it whatever it is called.
TEST_F(RequestReasons, ForwardingWithoutDestination_OnATelephoneOfOneLine_NeedsNoLine)
{
    std::string const rule = "<fwType>0</fwType><status>1</status>";
    std::string const text = request("setForwardingConfiguration", "<Line>9999</Line>" + rule + "<uri></uri>");
    EXPECT_EQ(accepted(text), Reasons{"there is no line 9999; the lines are 4711 and 4712"});

    state_ = oneLine();

    EXPECT_EQ(accepted(text), Reasons{"forwarding type 0 is on without a destination: it forwards no call"});
}

// Each kind with which the settings say that they were not stored; the others stand alone.
TEST_F(RequestReasons, RefusalOfTheStore_IsToldByItsKind)
{
    std::string const text = request("SetAgentState", "<agentState>ready</agentState>");
    for (RefusalKind const kind : {RefusalKind::kLimit, RefusalKind::kUnavailable, RefusalKind::kNotPermitted}) {
        EXPECT_EQ(accepted(text, {{kind, "of this"}}), Reasons{"the agent state stays as it was, because of this"});
        EXPECT_EQ(accepted(request("HoldCall", "<CallID>2</CallID>"), {{kind, "of this"}}), Reasons{"of this"});
    }
    EXPECT_EQ(accepted(text, {{RefusalKind::kWrongState, "of this"}}), Reasons{"of this"});
}

TEST_F(RequestReasons, Rules_HaveDifferentNames)
{
    auto const rules = reasonRules();

    EXPECT_EQ(rules.size(), 47U);
    EXPECT_EQ(rules.front(), "OutgoingCallMakeRequest: unknown line");
    EXPECT_EQ(rules.back(), "SendUACSTAServerMessage: no body");
    EXPECT_EQ(std::set<std::string>(rules.begin(), rules.end()).size(), rules.size());
}

TEST_F(RequestReasons, RuleThatApplies_IsTouched)
{
    keepTouched();

    accepted(request("setForwardingConfiguration", "<Line>none</Line><fwType>99</fwType>"));

    EXPECT_EQ(touchedNames(Touched::kReason), (std::set<std::string>{"setForwardingConfiguration: unknown line",
                                                                     "setForwardingConfiguration: out of range"}));
}

}  // namespace
}  // namespace telephone

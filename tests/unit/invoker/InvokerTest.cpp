// The invoker's work around a request: choosing the handler, answering, finishing, logging.
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommunicationsServiceFactories.h"
#include "src/CommunicationsServiceInvoker.h"
#include "tests/doubles/CurrentDouble.h"
#include "tests/doubles/LogDouble.h"
#include "tests/doubles/MockCommunicationsService.h"
#include "tests/doubles/MockExecutable.h"
#include "tests/doubles/MockFrameworkContext.h"
#include "tests/doubles/MockInvokerResponse.h"
#include "tests/doubles/MockProxy.h"

using testing::_;
using testing::DoAll;
using testing::ElementsAre;
using testing::Eq;
using testing::InSequence;
using testing::Return;
using testing::ReturnRef;
using testing::SaveArg;
using testing::StrictMock;
using namespace std::string_literals;

namespace {
MATCHER_P(IsText, expected, "")
{
    return std::string(std::get<0>(arg), static_cast<std::size_t>(std::get<1>(arg))) == expected;
}

class TheInvoker : public testing::Test
{
protected:
    void handle(std::string const& request) { handle(&service, request); }
    void handle(Executable* executable, std::string const& request)
    {
        invoker.handleMessage(executable, request.c_str(), static_cast<int>(request.size()), &response);
    }

    void expectAnswerAndFinish(std::string const& answer)
    {
        InSequence const inThisOrder;
        EXPECT_CALL(response, sendResponse(_, _)).With(IsText(answer));
        EXPECT_CALL(response, finish());
    }

    LogDouble log;
    CurrentDouble<LogDouble> installedLog{log};
    StrictMock<MockCommunicationsService> service;
    StrictMock<MockInvokerResponse> response;
    StrictMock<MockFrameworkContext> context;
    CommunicationsServiceInvoker invoker;
};

TEST_F(TheInvoker, Request_IsCalledThenAnsweredThenFinished)
{
    InSequence const inThisOrder;
    EXPECT_CALL(service, answerCall("4711", 3)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(response, sendResponse(_, 10)).With(IsText("sfiSuccess"));
    EXPECT_CALL(response, finish());

    handle("<Method>AnswerCall</Method><Line>4711</Line><CallID>3</CallID>");
}

TEST_F(TheInvoker, Answer_IsFollowedByANul)
{
    char const* answer = nullptr;
    EXPECT_CALL(service, alternateCalls("")).WillOnce(Return(sfiFailureCallBackToMany));
    EXPECT_CALL(response, sendResponse(_, 24)).WillOnce([&](char const* text, int length) {
        answer = text;
        EXPECT_EQ(text[length], '\0');
    });
    EXPECT_CALL(response, finish());

    handle("<Method>AlternateCalls</Method>");

    EXPECT_NE(answer, nullptr);
}

TEST_F(TheInvoker, SigEvent_WithThreeBytes_PassesThemWithACountOfFour)
{
    std::string payload;
    EXPECT_CALL(service, processSignallingComponentEvent(_, 4)).WillOnce([&](char const* text, int count) {
        payload.assign(text, static_cast<std::size_t>(count));
    });
    EXPECT_CALL(response, finish());

    handle("SigEvent:abc");

    EXPECT_EQ(payload, "abc\0"s);
}

TEST_F(TheInvoker, SigEvent_WithFurtherColons_IsSplitAtTheFirst)
{
    std::string payload;
    EXPECT_CALL(service, processSignallingComponentEvent(_, 5)).WillOnce([&](char const* text, int /*count*/) {
        payload = text;
    });
    EXPECT_CALL(response, finish());

    handle("SigEvent::a:b");

    EXPECT_EQ(payload, ":a:b");
}

TEST_F(TheInvoker, SigEvent_WithoutColon_PassesTheWholeTextWithItsLengthPlusOne)
{
    std::string payload;
    EXPECT_CALL(service, processSignallingComponentEvent(_, 9)).WillOnce([&](char const* text, int /*count*/) {
        payload = text;
    });
    EXPECT_CALL(response, finish());

    handle("SigEvent");

    EXPECT_EQ(payload, "SigEvent");
}

TEST_F(TheInvoker, SigEvent_EndsWithTheGivenLength)
{
    std::string payload;
    EXPECT_CALL(service, processSignallingComponentEvent(_, 3)).WillOnce([&](char const* text, int count) {
        payload.assign(text, static_cast<std::size_t>(count));
    });
    EXPECT_CALL(response, finish());

    invoker.handleMessage(&service, "SigEvent:abcdef", 11, &response);

    EXPECT_EQ(payload, "ab\0"s);
}

TEST_F(TheInvoker, SigEvent_WithANulInside_IsPassedBeyondIt)
{
    std::string payload;
    EXPECT_CALL(service, processSignallingComponentEvent(_, 4)).WillOnce([&](char const* text, int count) {
        payload.assign(text, static_cast<std::size_t>(count));
    });
    EXPECT_CALL(response, finish());

    handle("SigEvent:a\0b"s);

    EXPECT_EQ(payload, "a\0b\0"s);
}

TEST_F(TheInvoker, SigEvent_WithoutResponse_IsPassed)
{
    EXPECT_CALL(service, processSignallingComponentEvent(_, 1));

    invoker.handleMessage(&service, "SigEvent:", 9, nullptr);
}

TEST_F(TheInvoker, SigEvent_HoldingAMethod_IsNoRequest)
{
    EXPECT_CALL(service, processSignallingComponentEvent(_, _));
    EXPECT_CALL(response, finish());

    handle("SigEvent:<Method>Activate</Method>");
}

TEST_F(TheInvoker, SigEvent_WithoutService_IsOnlyFinished)
{
    EXPECT_CALL(response, finish());

    handle(nullptr, "SigEvent:abc");
}

class NoSigEvent : public TheInvoker, public testing::WithParamInterface<char const*>
{};

TEST_P(NoSigEvent, IsAnsweredWithFailure)
{
    expectAnswerAndFinish("sfiFailure");

    handle(GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, NoSigEvent,
                         testing::Values("SigEvents:abc", "SigEvents", " SigEvent:abc", "SigEvent :abc", "sigevent:abc",
                                         "SigEven:t", "SigEven", "SigEvenX:", ":SigEvent", ":", "xSigEvent"));

class NoMethod : public TheInvoker, public testing::WithParamInterface<char const*>
{};

TEST_P(NoMethod, IsAnsweredWithFailure)
{
    expectAnswerAndFinish("sfiFailure");

    handle(GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, NoMethod,
                         testing::Values("", " ", "holdcall", "<Method>holdcall</Method>", "<Method>HOLDCALL</Method>",
                                         "<Method>HoldCall </Method>", "<Method> HoldCall</Method>", "<Method>HoldCall",
                                         "HoldCall</Method>", "<Method></Method>", "</Method><Method>HoldCall",
                                         "<method>HoldCall</method>", "<Line>4711</Line><CallID>1</CallID>",
                                         "<Method>HoldCallRequest</Method>", "<Method>GetManualHoldIndication</Method>",
                                         "<Method>SetLampMode</Method>",
                                         "<Method>unknown</Method><Method>Activate</Method>", "<Method>H</Method>"));

TEST_F(TheInvoker, Method_WithAColonBeforeIt_IsFound)
{
    EXPECT_CALL(service, activate()).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle("a:b<Method>Activate</Method>");
}

TEST_F(TheInvoker, Method_BehindTheParameters_IsFound)
{
    EXPECT_CALL(service, alternateCalls("4711")).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle("<Line>4711</Line><Method>AlternateCalls</Method>");
}

TEST_F(TheInvoker, Parameter_GivenTwice_TheFirstOneWins)
{
    EXPECT_CALL(service, alternateCalls("4711")).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle("<Method>AlternateCalls</Method><Line>4711</Line><Line>4712</Line>");
}

TEST_F(TheInvoker, Method_BeyondTheGivenLength_IsNotFound)
{
    std::string const request = "<Line>4711</Line><Method>AlternateCalls</Method>";
    expectAnswerAndFinish("sfiFailure");

    invoker.handleMessage(&service, request.c_str(), static_cast<int>(request.size()) - 1, &response);
}

TEST_F(TheInvoker, Parameters_BeyondTheGivenLength_AreRead)
{
    std::string const request = "<Method>AlternateCalls</Method><Line>4711</Line>";
    EXPECT_CALL(service, alternateCalls("4711")).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    invoker.handleMessage(&service, request.c_str(), 31, &response);
}

TEST_F(TheInvoker, Method_BehindANul_IsFoundButParametersThereAreNot)
{
    std::string const request = "\0<Method>AlternateCalls</Method><Line>4711</Line>"s;
    EXPECT_CALL(service, alternateCalls("")).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle(request);
}

TEST_F(TheInvoker, Executable_ThatIsNoService_IsAnsweredWithFailure)
{
    StrictMock<MockExecutable> other;
    expectAnswerAndFinish("sfiFailure");

    handle(&other, "<Method>Activate</Method>");
}

// Its interface has another offset than that of the ordinary service.
class DistantService : public StrictMock<MockExecutable>, public StrictMock<MockProxy>, public MockCommunicationsService
{};

TEST_F(TheInvoker, ServicesOfDifferentTypes_AreAllReached)
{
    StrictMock<DistantService> distant;
    for (int round = 0; round < 3; ++round) {
        EXPECT_CALL(service, activate()).WillOnce(Return(sfiSuccess));
        expectAnswerAndFinish("sfiSuccess");
        handle("<Method>Activate</Method>");

        EXPECT_CALL(distant, activate()).WillOnce(Return(sfiFailure));
        expectAnswerAndFinish("sfiFailure");
        handle(static_cast<MockCommunicationsService*>(&distant), "<Method>Activate</Method>");

        StrictMock<MockExecutable> other;
        expectAnswerAndFinish("sfiFailure");
        handle(&other, "<Method>Activate</Method>");
    }
}

TEST_F(TheInvoker, NoExecutable_IsAnsweredWithFailure)
{
    expectAnswerAndFinish("sfiFailure");

    handle(nullptr, "<Method>GetServiceState</Method>");
}

TEST_F(TheInvoker, NoExecutable_ForARequestWithoutAnswer_IsOnlyFinished)
{
    EXPECT_CALL(response, finish());

    handle(nullptr, "<Method>callbackDOFeatureCallID</Method><CallID>a</CallID><instanceId>1</instanceId>");

    EXPECT_THAT(log.texts(), ElementsAre("6 handleMessage(msg = \"<Method>callbackDOFeatureCallID</Method>"
                                         "<CallID>a</CallID><instanceId>1</instanceId>\")",
                                         "6 handleMessage - exiting with response: \"\")"));
}

TEST_F(TheInvoker, NoResponse_TheCallIsMadeAllTheSame)
{
    EXPECT_CALL(service, activate()).WillOnce(Return(sfiSuccess));

    invoker.handleMessage(&service, "<Method>Activate</Method>", 25, nullptr);
}

TEST_F(TheInvoker, UnknownMethod_WithoutResponse_IsIgnored)
{
    invoker.handleMessage(&service, "<Method>Aktivate</Method>", 25, nullptr);

    EXPECT_EQ(log.texts().size(), 2U);
}

TEST_F(TheInvoker, EmptyListOfDevices_IsAnsweredWithFailureButLoggedAsEmpty)
{
    EXPECT_CALL(service, getDevices(_)).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiFailure");

    handle("<Method>GetDevices</Method>");

    EXPECT_THAT(log.texts(), ElementsAre("6 handleMessage(msg = \"<Method>GetDevices</Method>\")",
                                         "6 handleMessage - exiting with response: \"\")"));
}

TEST_F(TheInvoker, Devices_WithANulInside_AreAnsweredWhole)
{
    EXPECT_CALL(service, getDevices(_)).WillOnce([](std::vector<std::string>& devices) {
        devices = {"a\0b"s, "c"};
        return sfiSuccess;
    });
    expectAnswerAndFinish("a\0bc"s);

    handle("<Method>GetDevices</Method>");
}

TEST_F(TheInvoker, Outputs_ThatTheServiceLeavesAlone_AreZeroAndEmpty)
{
    EXPECT_CALL(service, getMessageWaitingIndicator(_, _, _, _, _, _, _, _, _)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(service, getForwardingConfiguration(sfiForwardBusy, _, _, _)).WillOnce(Return(sfiFailure));
    EXPECT_CALL(service, getServiceState(_)).WillOnce(Return(sfiFailure));
    EXPECT_CALL(service, getDoNotDisturb("", _)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(service, getMicrophoneMute(_)).WillOnce(Return(sfiFailure));

    expectAnswerAndFinish("<Type>0</Type><newMsgs>0</newMsgs><oldMsgs>0</oldMsgs><newUrgMsgs>0</newUrgMsgs>"
                          "<oldUrgMsgs>0</oldUrgMsgs><return_type>0</return_type><available_info>0</available_info>"
                          "<messages_waiting>0</messages_waiting><voiceMailNumber></voiceMailNumber>"
                          "<func_return_val>sfiSuccess</func_return_val>");
    handle("<Method>GetMessageWaitingIndicator</Method>");
    expectAnswerAndFinish("<sfiResult>sfiFailure</sfiResult><status>0</status><uri></uri>"
                          "<cfnrRingCount>0</cfnrRingCount>");
    handle("<Method>getForwardingConfiguration</Method><fwType>3</fwType>");
    expectAnswerAndFinish("sfiFailure,sfiServiceInService");
    handle("<Method>GetServiceState</Method>");
    expectAnswerAndFinish("sfiSuccess,false");
    handle("<Method>GetDoNotDisturb</Method>");
    expectAnswerAndFinish("sfiFailure,false");
    handle("<Method>GetMicrophoneMute</Method>");
}

TEST_F(TheInvoker, CstaBody_OfATextShorterThanSixCharacters_IsEmpty)
{
    // The method follows a NUL, so the text from which the body is taken has five characters.
    std::string const request = "abcde\0<Method>SendCSTARequest</Method>"s;
    EXPECT_CALL(service, SendCSTARequest("", "")).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle(request);
}

TEST_F(TheInvoker, CstaBody_EndsAtANul)
{
    std::string const request = "<Method>SendUACSTAServerMessage</Method><Line>1</Line>ab\0cd"s;
    EXPECT_CALL(service, sendUACSTAServerMessage(Eq("1"), Eq("ab"))).WillOnce(Return(sfiFailure));
    expectAnswerAndFinish("UACSTA message is sent.");

    handle(request);
}

TEST_F(TheInvoker, Subscribe_HandsOnTheProxyOfTheRequestersChannel)
{
    StrictMock<MockProxy> proxy;
    std::string const channel = "messages-view";
    invoker.initInvoker(&context);
    InSequence const inThisOrder;
    EXPECT_CALL(response, channelName()).WillOnce(ReturnRef(channel));
    EXPECT_CALL(context, findProxy("CommunicationsServiceEventIfc", "messages-view")).WillOnce(Return(&proxy));
    EXPECT_CALL(service, subscribe(&proxy)).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle("<Method>Subscribe</Method>");
}

TEST_F(TheInvoker, Subscribe_WithoutProxy_FailsWithoutACall)
{
    std::string const channel = "messages-view";
    invoker.initInvoker(&context);
    EXPECT_CALL(response, channelName()).WillOnce(ReturnRef(channel));
    EXPECT_CALL(context, findProxy(_, _)).WillOnce(Return(nullptr));
    expectAnswerAndFinish("sfiFailure");

    handle("<Method>Subscribe</Method>");
}

TEST_F(TheInvoker, Subscribe_WithoutContext_FailsWithoutACall)
{
    expectAnswerAndFinish("sfiFailure");

    handle("<Method>Subscribe</Method>");
}

TEST_F(TheInvoker, Subscribe_WithoutResponse_IsNotMade)
{
    invoker.initInvoker(&context);

    invoker.handleMessage(&service, "<Method>Subscribe</Method>", 26, nullptr);

    EXPECT_EQ(log.texts().back(), "6 handleMessage - exiting with response: \"sfiFailure\")");
}

TEST_F(TheInvoker, Context_IsTheOneGivenLast)
{
    StrictMock<MockFrameworkContext> later;
    std::string const channel = "a";
    invoker.initInvoker(&context);
    invoker.initInvoker(&later);
    EXPECT_CALL(response, channelName()).WillOnce(ReturnRef(channel));
    EXPECT_CALL(later, findProxy(_, _)).WillOnce(Return(nullptr));
    expectAnswerAndFinish("sfiFailure");

    handle("<Method>Subscribe</Method>");
}

TEST_F(TheInvoker, Log_ShowsRequestAndAnswer)
{
    EXPECT_CALL(service, getMicrophoneMute(_)).WillOnce([](bool& mute) {
        mute = true;
        return sfiSuccess;
    });
    expectAnswerAndFinish("sfiSuccess,true");

    handle("<Method>GetMicrophoneMute</Method>");

    auto const lines = log.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].text, "handleMessage(msg = \"<Method>GetMicrophoneMute</Method>\")");
    EXPECT_EQ(lines[1].text, "handleMessage - exiting with response: \"sfiSuccess,true\")");
    for (auto const& line : lines) {
        EXPECT_EQ(line.component, "SIP Communications Service");
        EXPECT_EQ(line.source, "src/CommunicationsServiceInvoker");
        EXPECT_EQ(line.level, 6);
        EXPECT_GT(line.line, 0);
    }
    EXPECT_THAT(log.questions(), ElementsAre(std::pair<std::string, int>("SIP Communications Service", 6),
                                             std::pair<std::string, int>("SIP Communications Service", 6)));
}

TEST_F(TheInvoker, Log_ShowsTheRequestUpToItsNulWhateverTheLength)
{
    expectAnswerAndFinish("sfiFailure");

    invoker.handleMessage(&service, "abcdef", 3, &response);

    EXPECT_EQ(log.texts().front(), "6 handleMessage(msg = \"abcdef\")");
}

TEST_F(TheInvoker, Log_OfASigEvent_IsItsEntryAlone)
{
    EXPECT_CALL(service, processSignallingComponentEvent(_, _));
    EXPECT_CALL(response, finish());

    handle("SigEvent:abc");

    EXPECT_THAT(log.texts(), ElementsAre("6 handleMessage(msg = \"SigEvent:abc\")"));
}

TEST_F(TheInvoker, Log_AtLevelFive_IsSilent)
{
    log.setLevel(5);
    EXPECT_CALL(service, activate()).WillOnce(Return(sfiSuccess));
    expectAnswerAndFinish("sfiSuccess");

    handle("<Method>Activate</Method>");

    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TheInvoker, Log_ComesBeforeTheCallAndBeforeTheAnswer)
{
    StrictMock<MockLogListener> listener;
    log.setListener(&listener);
    InSequence const inThisOrder;
    EXPECT_CALL(listener, written(6, "handleMessage(msg = \"<Method>Activate</Method>\")"));
    EXPECT_CALL(service, activate()).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(listener, written(6, "handleMessage - exiting with response: \"sfiSuccess\")"));
    expectAnswerAndFinish("sfiSuccess");

    handle("<Method>Activate</Method>");
}

// Counts without a lock: requests share no state.
class AtomicResponse : public InvokerResponse
{
public:
    void finish() override { ++finished; }
    void sendResponse(char const* answer, int length) override
    {
        if (std::string_view(answer, static_cast<std::size_t>(length)) == "sfiSuccess,false") {
            ++answered;
        }
    }
    std::string const& channelName() override { return name; }

    std::atomic<int> finished{0};
    std::atomic<int> answered{0};
    std::string name;
};

TEST(InvokerThreads, RequestsOfSeveralThreads_DoNotDisturbEachOther)
{
    testing::NiceMock<MockCommunicationsService> service;
    ON_CALL(service, getDoNotDisturb("4711", _)).WillByDefault(Return(sfiSuccess));
    AtomicResponse response;
    CommunicationsServiceInvoker invoker;
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&] {
            std::string const request = "<Method>GetDoNotDisturb</Method><deviceID>4711</deviceID>";
            for (int round = 0; round < 250; ++round) {
                invoker.handleMessage(&service, request.c_str(), static_cast<int>(request.size()), &response);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(response.answered, 1000);
    EXPECT_EQ(response.finished, 1000);
}

TEST(InvokerFactory, MakesAnInvokerWithoutContext)
{
    std::unique_ptr<Invoker> const invoker(createCommunicationsServiceInvoker());
    StrictMock<MockCommunicationsService> service;
    StrictMock<MockInvokerResponse> response;
    InSequence const inThisOrder;
    EXPECT_CALL(response, sendResponse(_, 10)).With(IsText("sfiFailure"));
    EXPECT_CALL(response, finish());

    invoker->handleMessage(&service, "<Method>Subscribe</Method>", 26, &response);
}
}  // namespace

// The event proxy as an object: its binding, its channel, and the texts of single values.
#include <atomic>
#include <cstring>
#include <locale>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceFactories.h"
#include "RecordedRequest.h"
#include "platform/framework/SvcRTEContext.h"
#include "src/CommunicationsServiceEventProxy.h"
#include "tests/doubles/CurrentDouble.h"
#include "tests/doubles/MockExecutable.h"
#include "tests/doubles/MockFrameworkContext.h"
#include "tests/doubles/MockProxyRequest.h"
#include "tests/doubles/MockSerializer.h"

using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::Return;
using testing::ReturnRef;
using testing::StrictMock;
using namespace std::string_literals;

namespace {
class EventProxy : public testing::Test
{
protected:
    void bind() { proxy.initProxy(request); }
    std::string sent() const { return request.messages.empty() ? std::string() : request.messages.back(); }

    RecordedRequest request;
    CommunicationsServiceEventProxy proxy;
};

TEST(EventProxyBinding, NamesTheProtocolOnceAndSendsNothing)
{
    StrictMock<MockProxyRequest> request;
    CommunicationsServiceEventProxy proxy;
    EXPECT_CALL(request, setProtocol("CommunicationsServiceProtocol"));

    proxy.initProxy(request);
}

TEST(EventProxyBinding, ToAnotherRequest_SendsThroughTheLaterOne)
{
    RecordedRequest first;
    RecordedRequest second;
    CommunicationsServiceEventProxy proxy;
    proxy.initProxy(first);
    proxy.initProxy(second);

    proxy.devicesChanged();

    EXPECT_TRUE(first.messages.empty());
    EXPECT_THAT(second.messages, ElementsAre("<Method>DevicesChangedEvent</Method>"));
}

TEST(EventProxyFactory, MakesAProxyWithoutChannel)
{
    std::unique_ptr<Proxy> const proxy(createCommunicationsServiceEventProxy());

    EXPECT_EQ(static_cast<CommunicationsServiceEventProxy&>(*proxy).callBackChan(), "");
}

TEST_F(EventProxy, InheritedOperations_DoNothing)
{
    SvcRTEContext context;
    Executable& executable = proxy;
    bind();

    executable.init(context);
    executable.timerEvent(1);
    executable.shutdown();

    EXPECT_TRUE(request.messages.empty());
}

TEST(EventProxyChannel, OfAnExecutable_IsTheOneThatTheContextFinds)
{
    StrictMock<MockFrameworkContext> context;
    StrictMock<MockProxyRequest> request;
    StrictMock<MockExecutable> executable;
    CommunicationsServiceEventProxy proxy;
    EXPECT_CALL(request, setProtocol(_));
    EXPECT_CALL(request, context()).WillRepeatedly(ReturnRef(context));
    EXPECT_CALL(context, findChannel(&executable)).WillOnce(Return("call-view")).WillOnce(Return(""));
    proxy.initProxy(request);

    proxy.setCallBackChan(&executable);
    EXPECT_EQ(proxy.callBackChan(), "call-view");
    proxy.setCallBackChan(&executable);
    EXPECT_EQ(proxy.callBackChan(), "");
}

TEST(EventProxyChannel, OfNull_IsEmptyAndNobodyIsAsked)
{
    StrictMock<MockFrameworkContext> context;
    StrictMock<MockProxyRequest> request;
    StrictMock<MockExecutable> executable;
    CommunicationsServiceEventProxy proxy;
    EXPECT_CALL(request, setProtocol(_));
    EXPECT_CALL(request, context()).WillOnce(ReturnRef(context));
    EXPECT_CALL(context, findChannel(&executable)).WillOnce(Return("call-view"));
    proxy.initProxy(request);
    proxy.setCallBackChan(&executable);

    proxy.setCallBackChan(nullptr);

    EXPECT_EQ(proxy.callBackChan(), "");
}

TEST_F(EventProxy, Channel_InAContextThatFindsNothing_IsEmpty)
{
    StrictMock<MockExecutable> executable;
    bind();

    proxy.setCallBackChan(&executable);

    EXPECT_EQ(proxy.callBackChan(), "");
}

TEST_F(EventProxy, Channel_BeforeTheBinding_IsEmpty)
{
    StrictMock<MockExecutable> executable;

    proxy.setCallBackChan(&executable);

    EXPECT_EQ(proxy.callBackChan(), "");
}

TEST_F(EventProxy, EachEvent_IsOneMessage)
{
    bind();

    proxy.callHeld("line1", -1);
    proxy.callHeld("line2", 2);

    EXPECT_THAT(request.messages,
                ElementsAre("<Method>CallHeldEvent</Method><LineID>line1</LineID><CallID>-1</CallID>",
                            "<Method>CallHeldEvent</Method><LineID>line2</LineID><CallID>2</CallID>"));
}

TEST_F(EventProxy, FeatureFailed_CarriesBothNumbers)
{
    bind();

    proxy.featureFailed("line1", 4, static_cast<sfiFeature>(7), static_cast<sfiFeatureFailure>(2));

    EXPECT_EQ(sent(), "<Method>FeatureFailedEvent</Method><LineID>line1</LineID><CallID>4</CallID>"
                      "<Feature>7</Feature><FeatureFailure>2</FeatureFailure>");
}

TEST_F(EventProxy, Parties_EndAtTheirFirstNulOrWithTheirArray)
{
    sfiReplacesDisplay record{};
    std::memset(&record, 'x', sizeof record);
    record.called[0] = '\0';
    record.calledName[64] = '\0';
    record.callingName[1] = '\0';
    bind();

    proxy.callStateChange("", 0, sfiCallStateIdle, sfiReasonNormal, sfiSendOptionsNone, "", "", &record,
                          sfiResourcePriorityNone, sfiPreemptionCauseNone, "", false, {0, 0});

    EXPECT_EQ(sent(), "<Method>CallStateChangeEvent</Method><LineID></LineID><CallID>0</CallID><CallState>0</CallState>"
                      "<Reason>0</Reason><SendOptions>0</SendOptions><URI></URI><Name></Name>"
                      "<GPUCLG>xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx</GPUCLG>"
                      "<GPUCLGName>x</GPUCLGName><GPUCLD></GPUCLD>"
                      "<GPUCLDName>xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx</GPUCLDName>"
                      "<ResourcePriority>0</ResourcePriority><PreemptionCause>0</PreemptionCause>"
                      "<PreemptionText></PreemptionText><CallBackFearureAvailable>0</CallBackFearureAvailable>"
                      "<ILCallLevel>0</ILCallLevel><ILLocalLevel>0</ILLocalLevel>");
}

TEST_F(EventProxy, Lists_AreWrittenAsTheFrameworkSerialisesThem)
{
    StrictMock<MockSerializer> serializer;
    CurrentDouble<MockSerializer> const installed(serializer);
    std::vector<int> calls = {1, 2};
    std::vector<std::string> lines = {"a"};
    InSequence const inThisOrder;
    EXPECT_CALL(serializer, numbers(ElementsAre(1, 2))).WillOnce(Return("<n>&"));
    EXPECT_CALL(serializer, texts(ElementsAre("a"))).WillOnce(Return("t\0t"s));
    bind();

    proxy.securityStatusChanged("line1", 4, sfiSecurityStatusSecure, calls, lines);

    EXPECT_EQ(sent(), "<Method>securityStatusChanged</Method><lineURI>line1</lineURI><callId>4</callId>"
                      "<securityStatus>2</securityStatus><CallIDsRecorded><n>&</CallIDsRecorded>"
                      "<CallLineURIsRecorded>t\0t</CallLineURIsRecorded>"s);
}

TEST_F(EventProxy, UnusedEvent_IsNotSent)
{
    bind();

    proxy.csCommunicationsServiceEvent("anything");

    EXPECT_TRUE(request.messages.empty());
}

// Groups digits in threes, as some locales write numbers.
class Grouping : public std::numpunct<char>
{
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "yes"; }
};

TEST_F(EventProxy, Numbers_AreTheSameInEveryLocale)
{
    std::locale const former = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    bind();

    proxy.messageWaiting("l", static_cast<sfiMWIServiceType>(-1234567), 4294967295U, 1234567, 0, 1000, sfiMWIReturnNone,
                         sfiMWIAvailableCounts, sfiMessagesWaitingYes, "1");
    std::locale::global(former);

    EXPECT_EQ(sent(), "<Method>messageWaitingEvent</Method><LineID>l</LineID><type>-1234567</type>"
                      "<new_messages>4294967295</new_messages><old_messages>1234567</old_messages>"
                      "<new_urgent_messages>0</new_urgent_messages><old_urgent_messages>1000</old_urgent_messages>"
                      "<return_type>0</return_type><avail_info>2</avail_info><messages_waiting>1</messages_waiting>"
                      "<voiceMailNumber>1</voiceMailNumber>");
}

TEST_F(EventProxy, Text_OfEveryLength_IsSentWhole)
{
    bind();
    std::string text;
    for (int length = 0; length < 300; ++length) {
        proxy.agentStateSet(text, "");
        ASSERT_EQ(sent(), "<Method>AgentStateEvent</Method><deviceId>" + text + "</deviceId><agentState></agentState>");
        text += static_cast<char>('A' + length % 61);
    }
}

TEST_F(EventProxy, Number_OfEveryLength_IsSentWhole)
{
    bind();
    for (int const number :
         {0,        1,         5,          9,  10, 11,  99,  100, 999,  1000,   99999,       1234567,
          99999999, 123456789, 2147483647, -1, -9, -10, -11, -99, -100, -12345, -1234567890, -2147483647 - 1}) {
        proxy.featureSuccess("l", number, sfiFeatureHold);
        EXPECT_EQ(sent(), "<Method>FeatureSuccessEvent</Method><LineID>l</LineID><CallID>" + std::to_string(number) +
                              "</CallID><Feature>5</Feature>");
    }
}

TEST_F(EventProxy, Text_OfOneMegabyte_IsSentWhole)
{
    std::string const text(1U << 20U, 'x');
    bind();

    proxy.agentStateSet("4711", text);

    EXPECT_EQ(sent(), "<Method>AgentStateEvent</Method><deviceId>4711</deviceId><agentState>" + text + "</agentState>");
}

class CountingRequest : public ProxyRequest
{
public:
    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override
    {
        if (message == expected) {
            ++same;
        }
    }
    FrameworkContext& context() override { return emptyContext; }

    static constexpr char const* expected = "<Method>CallHeldEvent</Method><LineID>line1</LineID><CallID>7</CallID>";
    std::atomic<int> same{0};
    FrameworkContext emptyContext;
};

TEST(EventProxyThreads, EventsOfSeveralThreads_DoNotDisturbEachOther)
{
    CountingRequest request;
    CommunicationsServiceEventProxy proxy;
    proxy.initProxy(request);
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&proxy] {
            std::string const line = "line1";
            for (int round = 0; round < 1000; ++round) {
                proxy.callHeld(line, 7);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(request.same, 4000);
}

TEST(EventDescription, IsFoundByTheMethodOfItsMessage)
{
    EXPECT_EQ(findEventDescription("systemStatusEvent")->operation, "systemStatusChange");
    EXPECT_EQ(findEventDescription("systemStatusChange"), nullptr);
    EXPECT_EQ(findEventDescription(""), nullptr);
}

TEST(EventDescription, EveryEventSaysWhatItMeans)
{
    for (auto const& description : kEventDescriptions) {
        EXPECT_FALSE(description.meaning.empty()) << description.operation;
        EXPECT_EQ(description.meaning.back(), '.') << description.operation;
    }
}
}  // namespace

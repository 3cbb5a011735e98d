#include "telephone/protocol/EventJson.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

using namespace std::chrono;

// 2026-03-01T12:00:00.007Z
constexpr system_clock::time_point kTime = sys_days(year(2026) / March / 1) + 12h + 7ms;

TEST(EventJson, CallState_HasNumbersFlagsAndNamedValues)
{
    EXPECT_EQ(
        eventJson(
            17, kTime,
            "<Method>CallStateChangeEvent</Method><LineID>4711#2</LineID><CallID>2</CallID><CallState>6</CallState>"
            "<Reason>0</Reason><SendOptions>1</SendOptions><URI>sip:100@127.0.0.1:5060</URI><Name>Ann</Name>"
            "<GPUCLG></GPUCLG><GPUCLGName></GPUCLGName><GPUCLD></GPUCLD><GPUCLDName></GPUCLDName>"
            "<ResourcePriority>0</ResourcePriority><PreemptionCause>0</PreemptionCause>"
            "<PreemptionText></PreemptionText><CallBackFearureAvailable>1</CallBackFearureAvailable>"
            "<ILCallLevel>0</ILCallLevel><ILLocalLevel>0</ILLocalLevel>"),
        R"({"event":17,"time":"2026-03-01T12:00:00.007Z","name":"CallStateChangeEvent","line":"4711#2","call":2,)"
        R"("elements":{"LineID":"4711#2","CallID":2,"CallState":{"value":6,"name":"connected"},)"
        R"("Reason":{"value":0,"name":"normal"},"SendOptions":{"value":1,"name":"digits as events"},)"
        R"("URI":"sip:100@127.0.0.1:5060","Name":"Ann","GPUCLG":"","GPUCLGName":"","GPUCLD":"","GPUCLDName":"",)"
        R"("ResourcePriority":{"value":0,"name":"none"},"PreemptionCause":{"value":0,"name":"none"},)"
        R"("PreemptionText":"","CallBackFearureAvailable":true,"ILCallLevel":0,"ILLocalLevel":0},)"
        R"("raw":"<Method>CallStateChangeEvent</Method><LineID>4711#2</LineID><CallID>2</CallID>)"
        R"(<CallState>6</CallState><Reason>0</Reason><SendOptions>1</SendOptions><URI>sip:100@127.0.0.1:5060</URI>)"
        R"(<Name>Ann</Name><GPUCLG></GPUCLG><GPUCLGName></GPUCLGName><GPUCLD></GPUCLD><GPUCLDName></GPUCLDName>)"
        R"(<ResourcePriority>0</ResourcePriority><PreemptionCause>0</PreemptionCause><PreemptionText></PreemptionText>)"
        R"(<CallBackFearureAvailable>1</CallBackFearureAvailable><ILCallLevel>0</ILCallLevel>)"
        R"(<ILLocalLevel>0</ILLocalLevel>"})");
}

TEST(EventJson, EventWithoutACall_HasNull)
{
    EXPECT_EQ(eventJson(1, kTime,
                        "<Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID><CallID>0</CallID>"
                        "<Registered>0</Registered><RegistrationResult>3</RegistrationResult>"),
              R"({"event":1,"time":"2026-03-01T12:00:00.007Z","name":"RegistrationStateChangeEvent","line":"4711",)"
              R"("call":null,"elements":{"LineID":"4711","CallID":0,"Registered":false,)"
              R"("RegistrationResult":{"value":3,"name":"no answer"}},)"
              R"("raw":"<Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID><CallID>0</CallID>)"
              R"(<Registered>0</Registered><RegistrationResult>3</RegistrationResult>"})");
}

TEST(EventJson, WordOfAnEnumeration_IsTheValue)
{
    EXPECT_EQ(eventJson(2, kTime,
                        "<Method>AgentStateEvent</Method><deviceId>4711</deviceId><agentState>loggedOn</agentState>"),
              R"({"event":2,"time":"2026-03-01T12:00:00.007Z","name":"AgentStateEvent","line":"4711","call":null,)"
              R"("elements":{"deviceId":"4711","agentState":{"value":"loggedOn","name":"logged on"}},)"
              R"("raw":"<Method>AgentStateEvent</Method><deviceId>4711</deviceId><agentState>loggedOn</agentState>"})");
}

TEST(EventJson, UnknownValue_HasAQuestionMark)
{
    EXPECT_EQ(eventJson(3, kTime,
                        "<Method>FeatureSuccessEvent</Method><LineID>4711</LineID><CallID>1</CallID>"
                        "<Feature>99</Feature>"),
              R"({"event":3,"time":"2026-03-01T12:00:00.007Z","name":"FeatureSuccessEvent","line":"4711","call":1,)"
              R"("elements":{"LineID":"4711","CallID":1,"Feature":{"value":99,"name":"99?"}},)"
              R"("raw":"<Method>FeatureSuccessEvent</Method><LineID>4711</LineID><CallID>1</CallID>)"
              R"(<Feature>99</Feature>"})");
}

TEST(EventJson, Body_IsTextUpToTheEnd)
{
    EXPECT_EQ(eventJson(4, kTime,
                        "<Method>b2buaCSTAResponse</Method><lineURI>4711</lineURI><success>1</success>"
                        "<?xml version=\"1.0\"?>\n<a/>"),
              R"({"event":4,"time":"2026-03-01T12:00:00.007Z","name":"b2buaCSTAResponse","line":"4711","call":null,)"
              R"("elements":{"lineURI":"4711","success":true,"Body":"<?xml version=\"1.0\"?>\n<a/>"},)"
              R"("raw":"<Method>b2buaCSTAResponse</Method><lineURI>4711</lineURI><success>1</success>)"
              R"(<?xml version=\"1.0\"?>\n<a/>"})");
}

TEST(EventJson, TextFromTheNetwork_IsReplacedOrEscaped)
{
    EXPECT_EQ(
        eventJson(5, kTime,
                  "<Method>IncomingPickupCallEvent</Method><LineID>4711</LineID><CallID>1</CallID><URI>\xff\x1b[2J"
                  "</URI><Name>M\xc3\xbcller\x7f</Name>"),
        R"({"event":5,"time":"2026-03-01T12:00:00.007Z","name":"IncomingPickupCallEvent","line":"4711","call":1,)"
        R"("elements":{"LineID":"4711","CallID":1,"URI":"\ufffd\u001b[2J","Name":"M\u00fcller\u007f"},)"
        R"("raw":"<Method>IncomingPickupCallEvent</Method><LineID>4711</LineID><CallID>1</CallID>)"
        R"(<URI>\ufffd\u001b[2J</URI><Name>M\u00fcller\u007f</Name>"})");
}

TEST(EventJson, TextThatIsNotAnEvent_HasNoName)
{
    EXPECT_EQ(eventJson(6, kTime, "hello"),
              R"({"event":6,"time":"2026-03-01T12:00:00.007Z","name":null,"raw":"hello"})");
}

}  // namespace
}  // namespace telephone

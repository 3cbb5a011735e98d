#include <fstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "DisplayTexts.h"

namespace telephone {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using test::at;

constexpr std::string_view kHold7 = "<Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>";

std::string answerLine(std::string_view time, ReadableLines::Answer const& answer)
{
    return ReadableLines(test::options()).answer(at(time), answer);
}

std::string requestLine(std::string_view text, char letter = '\0')
{
    return ReadableLines(test::options()).request(at("12:00:00.000"), text, letter);
}

TEST(ReadableAnswers, Request_HasItsLineAndCallInTheirColumns)
{
    ReadableLines lines(test::options());
    EXPECT_EQ(lines.request(at("23:57:45.557"), "<Method>OutgoingCallMakeRequest</Method><Line>4711</Line>"
                                                "<CallID>2</CallID><Destination>100</Destination>"),
              "23:57:45.557     →  4711     2     OutgoingCallMakeRequest  Destination=100");
    EXPECT_EQ(lines.request(at("23:57:54.961"), kHold7), "23:57:54.961     →  4711     7     HoldCall");
    EXPECT_EQ(lines.request(at("23:57:55.361"), "<Method>setForwardingConfiguration</Method><Line>4711</Line>"
                                                "<fwType>99</fwType><status>1</status><uri>100</uri>"),
              "23:57:55.361     →  4711           setForwardingConfiguration  fwType=99 status=1 uri=100");
    EXPECT_EQ(lines.request(at("23:50:29.369"), "<Method>GetServiceState</Method>"),
              "23:50:29.369     →                 GetServiceState");
}

TEST(ReadableAnswers, Request_QuotesValuesThatAreNotOneWord)
{
    EXPECT_EQ(requestLine("<Method>SystemStatus</Method><SystemStatus>CallView-Normal</SystemStatus>"
                          "<SystemStatusInfo>on the \"way\"\x1b</SystemStatusInfo>"),
              R"(12:00:00.000     →                 SystemStatus      SystemStatus=CallView-Normal )"
              R"(SystemStatusInfo="on the \"way\"\x1b")");
}

TEST(ReadableAnswers, Request_WithABody_NamesItsFirstElementAndItsSize)
{
    EXPECT_EQ(requestLine("<Method>SendCSTARequest</Method><Line>4711</Line><MonitorStart><a>b</a></MonitorStart>"),
              "12:00:00.000     →  4711           SendCSTARequest   MonitorStart, 37 bytes");
    EXPECT_EQ(requestLine("<Method>SendCSTARequest</Method><Line>4711</Line>x"),
              "12:00:00.000     →  4711           SendCSTARequest   1 byte");
}

TEST(ReadableAnswers, Request_OfCallZero_NamesNoCall)
{
    EXPECT_EQ(requestLine("<Method>CancelCallbacks</Method><CallID>0</CallID><URI>100</URI>"),
              "12:00:00.000     →                 CancelCallbacks   URI=100");
}

TEST(ReadableAnswers, UnknownRequests_AreWrittenAsTheyStand)
{
    EXPECT_EQ(requestLine("<Method>Dance</Method><Line>4711</Line>"), "12:00:00.000     →  4711           Dance");
    EXPECT_EQ(requestLine("SigEvent\n1"), "12:00:00.000     →                 SigEvent\\x0a1");
    EXPECT_EQ(requestLine("<Method>HoldCall</Method><Line"),
              "12:00:00.000     →                 <Method>HoldCall</Method><Line");
}

TEST(ReadableAnswers, ConcurrentRequests_HaveLettersAtTheirMarks)
{
    EXPECT_EQ(requestLine(kHold7, 'a'), "12:00:00.000    →a  4711     7     HoldCall");
    EXPECT_EQ(answerLine("12:00:00.000", {kHold7, "sfiSuccess", milliseconds(12), false, 'a'}),
              "12:00:00.000    ←a  4711     7     success  12 ms");
}

TEST(ReadableAnswers, Answer_IsAWordAndTheTimeItTook)
{
    std::string_view const hold2 = "<Method>HoldCall</Method><Line>4711</Line><CallID>2</CallID>";
    EXPECT_EQ(answerLine("23:57:45.558", {hold2, "sfiSuccess", milliseconds(1)}),
              "23:57:45.558     ←  4711     2     success  1 ms");
    EXPECT_EQ(answerLine("23:57:54.961", {kHold7, "sfiFailure", microseconds(400)}),
              "23:57:54.961     ←  4711     7     failure  <1 ms");
    EXPECT_EQ(answerLine("12:00:00.000", {"<Method>ActivateCallbackBusy</Method><CallID>7</CallID>",
                                          "sfiFailureCallBackToMany", milliseconds(1250)}),
              "12:00:00.000     ←           7     too many call-backs  1.2 s");
}

TEST(ReadableAnswers, SuccessThatIsExplained_IsNotAsAsked)
{
    EXPECT_EQ(
        answerLine("23:57:55.361", {"<Method>setForwardingConfiguration</Method><Line>4711</Line><fwType>99</fwType>",
                                    "sfiSuccess", microseconds(100), true}),
        "23:57:55.361     ←  4711           success  <1 ms, not as asked");
}

TEST(ReadableAnswers, Answer_WithAValue_SaysItInWords)
{
    EXPECT_EQ(answerLine("23:50:29.369",
                         {"<Method>GetServiceState</Method>", "sfiSuccess,sfiServiceInService", microseconds(100)}),
              "23:50:29.369     ←                 success, in service  <1 ms");
    EXPECT_EQ(answerLine("23:50:29.770",
                         {"<Method>GetDevices</Method>", "<prime:4711><prime:4712><groupPickup:*98>", milliseconds(1)}),
              "23:50:29.770     ←                 line 4711, line 4712, group pickup *98  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000", {"<Method>GetMicrophoneMute</Method>", "sfiSuccess,false", milliseconds(1)}),
              "12:00:00.000     ←                 success, no  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000",
                         {"<Method>getManualHoldIndication</Method><CallID>2</CallID>", "true", milliseconds(1)}),
              "12:00:00.000     ←           2     yes  1 ms");
    EXPECT_EQ(
        answerLine("12:00:00.000", {"<Method>getForwardingConfiguration</Method><fwType>6</fwType>",
                                    "<sfiResult>sfiSuccess</sfiResult><status>1</status><uri>sip:102@127.0.0.1</uri>"
                                    "<cfnrRingCount>4</cfnrRingCount>",
                                    milliseconds(1)}),
        "12:00:00.000     ←                 success, on, to 102, rings 4  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000",
                         {"<Method>GetMessageWaitingIndicator</Method>",
                          "<Type>1</Type><newMsgs>2</newMsgs><oldMsgs>0</oldMsgs><newUrgMsgs>1</newUrgMsgs>"
                          "<oldUrgMsgs>0</oldUrgMsgs><return_type>0</return_type><available_info>2</available_info>"
                          "<messages_waiting>1</messages_waiting><voiceMailNumber></voiceMailNumber>"
                          "<func_return_val>sfiSuccess</func_return_val>",
                          milliseconds(1)}),
              "12:00:00.000     ←                 success, 2 new, 1 new urgent, messages waiting  1 ms");
}

TEST(ReadableAnswers, AnswersThatAreNotOfTheProtocol_AreWrittenAsTheyStand)
{
    EXPECT_EQ(answerLine("12:00:00.000", {"<Method>GetDevices</Method>", "sfiFailure", milliseconds(1)}),
              "12:00:00.000     ←                 failure  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000", {"<Method>GetDevices</Method>", "<\x1b>", milliseconds(1)}),
              "12:00:00.000     ←                 <\\x1b>  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000", {"<Method>getForwardingConfiguration</Method>", "<uri>", milliseconds(1)}),
              "12:00:00.000     ←                 <uri>  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000", {"SigEvent 1", std::nullopt, milliseconds(1)}),
              "12:00:00.000     ←                 finished  1 ms");
    EXPECT_EQ(answerLine("12:00:00.000", {"<Method>SendUACSTAServerMessage</Method><Line>1</Line>x",
                                          "UACSTA message is sent.", milliseconds(1)}),
              "12:00:00.000     ←  1              UACSTA message is sent.  1 ms");
}

// Every recorded exchange with the service, with all kinds of values.
TEST(ReadableAnswers, EveryRecordedExchange_IsTwoHarmlessLines)
{
    std::ifstream file(GOLDEN_FOLDER "/requests.json");
    std::size_t count = 0;
    for (auto const& method : nlohmann::json::parse(file)) {
        for (auto const& exchange : method["exchanges"]) {
            auto const request = exchange["request"].get<std::string>();
            auto const text = exchange["answer"].is_string() ? exchange["answer"].get<std::string>() : "";
            std::string const asked = requestLine(request);
            std::string const answered = answerLine("12:00:00.000", {request, text, milliseconds(1)});
            EXPECT_TRUE(test::isHarmless(asked)) << asked;
            EXPECT_TRUE(test::isHarmless(answered)) << answered;
            ++count;
        }
    }
    EXPECT_GT(count, 43U);
}

}  // namespace
}  // namespace telephone

#include <fstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "DisplayTexts.h"

namespace telephone {
namespace {

using test::at;
using test::eventText;
using test::Values;

constexpr std::string_view kScript = "<script>alert(1)</script>";

std::string eventLine(std::string_view time, std::uint64_t number, std::string_view method, Values const& values)
{
    return ReadableLines(test::options()).event(number, at(time), eventText(method, values));
}

std::string stateLine(std::string_view time, std::uint64_t number, Values const& values)
{
    return eventLine(time, number, "CallStateChangeEvent", values);
}

TEST(ReadableEvents, States_OfACallMadeHere_AreWhatHappened)
{
    Values values{{"LineID", "4711"}, {"CallID", "2"}, {"URI", "sip:100@127.0.0.1:5060"}, {"CallState", "1"}};
    EXPECT_EQ(stateLine("23:57:45.559", 15, values), "23:57:45.559    15  4711     2     dialling          100");
    values["CallState"] = "2";
    EXPECT_EQ(stateLine("23:57:45.559", 16, values), "23:57:45.559    16  4711     2     proceeding        100");
    values["CallState"] = "3";
    values["CallBackFearureAvailable"] = "1";
    EXPECT_EQ(stateLine("23:57:45.559", 17, values),
              "23:57:45.559    17  4711     2     remote ringing    100, call-back possible");
    values["CallState"] = "6";
    values["CallBackFearureAvailable"] = "0";
    values["SendOptions"] = "1";
    EXPECT_EQ(stateLine("23:57:45.559", 18, values),
              "23:57:45.559    18  4711     2     connected         100, digits as events");
}

TEST(ReadableEvents, HeldCall_HasNoParty)
{
    EXPECT_EQ(eventLine("23:57:46.358", 19, "CallHeldEvent", {{"LineID", "4711"}, {"CallID", "2"}}),
              "23:57:46.358    19  4711     2     held");
}

TEST(ReadableEvents, OfferedCall_NamesItsCallerInQuotes)
{
    Values const caller{{"LineID", "4711"}, {"CallID", "1001"}, {"URI", "sip:4713@127.0.0.1:5060"},
                        {"Name", kScript},  {"CallType", "1"},  {"CallState", "5"}};
    EXPECT_EQ(eventLine("23:57:39.555", 10, "IncomingCallEvent", caller),
              R"(23:57:39.555    10  4711     1001  incoming call     "<script>alert(1)</script>" 4713, internal)");
    EXPECT_EQ(stateLine("23:57:39.555", 11, caller),
              R"(23:57:39.555    11  4711     1001  ringing           "<script>alert(1)</script>" 4713)");
}

TEST(ReadableEvents, OfferedCall_WithoutACaller_IsFromUnknown)
{
    EXPECT_EQ(eventLine("12:00:00.000", 10, "IncomingCallEvent", {{"LineID", "4711"}, {"CallID", "1001"}}),
              "12:00:00.000    10  4711     1001  incoming call     unknown");
}

TEST(ReadableEvents, OfferedCall_ThatWasDiverted_SaysByWhomAndWhy)
{
    EXPECT_EQ(eventLine("12:00:00.000", 10, "IncomingCallEvent",
                        {{"LineID", "4711"},
                         {"CallID", "1001"},
                         {"URI", "sip:4712@example.com"},
                         {"AlertInformation_AutoAnswer", "1"},
                         {"AICSZIPAutoAnswer", "1"},
                         {"CallType", "2"},
                         {"DiversionURI", "sip:102@127.0.0.1:5060"},
                         {"DiversionName", "Bob Example"},
                         {"DiversionReason", "2"},
                         {"ResourcePriority", "4"}}),
              "12:00:00.000    10  4711     1001  incoming call     4712@example.com, to be answered automatically, "
              "external, diverted by \"Bob Example\" 102, diversion reason busy, precedence flash");
}

TEST(ReadableEvents, MissedCall_SaysWhy)
{
    Values const missed{
        {"LineID", "4711"}, {"CallID", "1002"}, {"URI", "sip:4713@127.0.0.1:5060"}, {"Name", kScript}, {"Reason", "2"}};
    EXPECT_EQ(eventLine("23:57:58.063", 41, "IncomingCallMissedEvent", missed),
              R"(23:57:58.063    41  4711     1002  missed            "<script>alert(1)</script>" 4713, no answer)");
    Values ended = missed;
    ended["Reason"] = "7";
    EXPECT_EQ(stateLine("23:57:58.063", 42, ended),
              R"(23:57:58.063    42  4711     1002  idle              "<script>alert(1)</script>" 4713, cancelled)");
}

TEST(ReadableEvents, ForwardedCall_SaysWhereToAndWhy)
{
    EXPECT_EQ(
        eventLine("23:52:46.286", 58, "CallForwardedEvent",
                  {{"LineID", "4711"},
                   {"CallID", "1003"},
                   {"CallingParty", "sip:4712@127.0.0.1:5060"},
                   {"CallingPartyName", kScript},
                   {"NewDestination", "sip:100@127.0.0.1:5060"},
                   {"Reason", "1"}}),
        R"(23:52:46.286    58  4711     1003  forwarded         "<script>alert(1)</script>" 4712, to 100, unconditional)");
}

TEST(ReadableEvents, SwappedAndJoinedCalls)
{
    EXPECT_EQ(eventLine("23:50:08.065", 15, "CallRetrievedEvent",
                        {{"LineID", "4711"}, {"CallID", "1"}, {"URI", "sip:100@127.0.0.1:5060"}}),
              "23:50:08.065    15  4711     1     retrieved         100");
    EXPECT_EQ(eventLine("23:50:08.065", 16, "FeatureSuccessEvent", {{"LineID", "4711"}, {"CallID", "1"}}),
              "23:50:08.065    16  4711     1     feature done      alternate");
    EXPECT_EQ(eventLine("23:57:50.561", 28, "conferenceStatusEvent",
                        {{"LineID", "4711"},
                         {"CallID", "2"},
                         {"XMLContent", "<conference-info entity=\"sip:4711@127.0.0.1:5060\"><users>"
                                        "<user entity=\"sip:4711@127.0.0.1:5060\"/>"
                                        "<user entity=\"sip:100@127.0.0.1:5060\"/>"
                                        "<user entity=\"sip:103@127.0.0.1:5060\"/></users></conference-info>"}}),
              "23:57:50.561    28  4711     2     conference        3 parties: 4711, 100, 103");
    EXPECT_EQ(eventLine("23:57:55.863", 36, "RemoteEndpointDetailsChangedEvent",
                        {{"LineID", "4711"}, {"CallID", "2"}, {"URI", "sip:100@127.0.0.1:5060"}, {"exitConf", "1"}}),
              "23:57:55.863    36  4711     2     party changed     100, out of the conference");
    EXPECT_EQ(stateLine("23:52:25.872", 20,
                        {{"LineID", "4711#2"},
                         {"CallID", "1001"},
                         {"Reason", "12"},
                         {"URI", "sip:4712@127.0.0.1:5060"},
                         {"Name", kScript}}),
              R"(23:52:25.872    20  4711#2   1001  idle              "<script>alert(1)</script>" 4712, transferred)");
}

TEST(ReadableEvents, Conference_NamesItsPartiesAndWhoIsOnHold)
{
    EXPECT_EQ(
        eventLine("12:00:00.000", 72, "conferenceStatusEvent",
                  {{"LineID", "4711"},
                   {"CallID", "3"},
                   {"XMLContent", "<ci:conference-info xmlns:ci=\"urn:ietf:params:xml:ns:conference-info\"><ci:users>"
                                  "<ci:user entity=\"sip:4712@example.com\"><ci:display-text>Alice Example"
                                  "</ci:display-text><ci:endpoint><ci:status>on-hold</ci:status></ci:endpoint>"
                                  "</ci:user></ci:users></ci:conference-info>"}}),
        "12:00:00.000    72  4711     3     conference        1 party: \"Alice Example\" 4712@example.com (on hold)");
    EXPECT_EQ(eventLine("12:00:00.000", 72, "conferenceStatusEvent",
                        {{"LineID", "4711"},
                         {"CallID", "3"},
                         {"XMLContent", "<?xml version=\"1.0\"?><conference-info entity=\"sip:conf@example.com\">"
                                        "<users/></conference-info>"}}),
              "12:00:00.000    72  4711     3     conference        document names nobody, 94 bytes");
}

TEST(ReadableEvents, EndsThatAreNotNormal)
{
    EXPECT_EQ(stateLine("23:52:30.672", 29,
                        {{"LineID", "4711#1"},
                         {"CallID", "3"},
                         {"CallState", "13"},
                         {"Reason", "1"},
                         {"URI", "sip:101@127.0.0.1:5060"},
                         {"CallBackFearureAvailable", "1"}}),
              "23:52:30.672    29  4711#1   3     busy              101, call-back possible");
    EXPECT_EQ(stateLine("23:52:40.683", 47,
                        {{"LineID", "4711#2"},
                         {"CallID", "11"},
                         {"CallState", "14"},
                         {"Reason", "3"},
                         {"URI", "sip:777@127.0.0.1:5060"}}),
              "23:52:40.683    47  4711#2   11    failed            777, not found");
}

TEST(ReadableEvents, Registration_IsWhatHappened)
{
    EXPECT_EQ(eventLine("23:57:34.666", 1, "RegistrationStateChangeEvent", {{"LineID", "4711"}, {"Registered", "1"}}),
              "23:57:34.666     1  4711           registered");
    EXPECT_EQ(eventLine("23:52:34.076", 35, "RegistrationStateChangeEvent",
                        {{"LineID", "4711"}, {"RegistrationResult", "4"}}),
              "23:52:34.076    35  4711           not registered    given up on purpose");
}

TEST(ReadableEvents, Mailbox_CountsItsMessages)
{
    Values values{{"LineID", "4711"}, {"type", "1"}, {"avail_info", "2"}};
    EXPECT_EQ(eventLine("23:57:34.666", 3, "messageWaitingEvent", values),
              "23:57:34.666     3  4711           mailbox           no messages");
    values["new_messages"] = "3";
    values["old_messages"] = "1";
    values["return_type"] = "1";
    values["messages_waiting"] = "1";
    values["voiceMailNumber"] = "sip:*90@127.0.0.1";
    EXPECT_EQ(eventLine("23:57:34.666", 4, "messageWaitingEvent", values),
              "23:57:34.666     4  4711           mailbox           3 new, 1 old, messages waiting, number *90");
}

TEST(ReadableEvents, TheTelephoneAndItsLines)
{
    EXPECT_EQ(eventLine("23:50:31.971", 46, "DoNotDisturbEvent", {{"deviceId", "4711"}, {"doNotDisturbOn", "1"}}),
              "23:50:31.971    46  4711           do-not-disturb    on");
    EXPECT_EQ(eventLine("23:52:32.473", 32, "AgentStateEvent", {{"deviceId", "4711"}, {"agentState", "ready"}}),
              "23:52:32.473    32  4711           agent             ready");
    EXPECT_EQ(eventLine("23:52:29.472", 26, "callCompletionEvent",
                        {{"LineID", "4711"}, {"URI", "sip:102@127.0.0.1:5060"}, {"DisplayOutcomeCallUI", "1"}}),
              "23:52:29.472    26  4711           call-back         102, no reply, activated, outcome shown");
    EXPECT_EQ(
        eventLine("23:52:43.381", 48, "serverFeatureStatusEvent", {{"lineURI", "4711"}, {"status", "initialized"}}),
        "23:52:43.381    48  4711           server features   initialized");
    EXPECT_EQ(eventLine("23:52:43.383", 50, "b2buaCSTAResponse", {{"lineURI", "4711"}, {"success", "1"}}),
              "23:52:43.383    50  4711           server answered   success");
    EXPECT_EQ(
        eventLine("23:52:43.381", 49, "b2buaCSTAEventOrRequest",
                  {{"lineURI", "4711"},
                   {"Body", "<MonitorStart xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
                            "<monitorObject><deviceObject>sip:4711@pbx</deviceObject></monitorObject>"
                            "<monitorType>device</monitorType></MonitorStart>"}}),
        "23:52:43.381    49  4711           server says       MonitorStart, 204 bytes");
}

TEST(ReadableEvents, PickupsAndFeatures)
{
    Values const pickup{
        {"LineID", "4711"}, {"CallID", "3"}, {"URI", "sip:4712@example.com"}, {"Name", "Alice Example"}};
    EXPECT_EQ(eventLine("12:00:00.000", 61, "IncomingPickupCallEvent", pickup),
              "12:00:00.000    61  4711     3     picked up         \"Alice Example\" 4712@example.com");
    EXPECT_EQ(eventLine("12:00:00.000", 62, "FeatureFailedEvent",
                        {{"LineID", "4711"}, {"CallID", "3"}, {"Feature", "4"}, {"FeatureFailure", "5"}}),
              "12:00:00.000    62  4711     3     feature failed    attended transfer, target busy");
    EXPECT_EQ(eventLine("12:00:00.000", 63, "IncomingAssociatedCallEvent",
                        {{"LineID", "4711"}, {"CurrentCallID", "3"}, {"NewCallID", "4"}}),
              "12:00:00.000    63  4711     3     associated call   4");
    EXPECT_EQ(eventLine("12:00:00.000", 64, "DevicesChangedEvent", {}),
              "12:00:00.000    64                 devices changed");
}

TEST(ReadableEvents, ValuesWithoutAName_AreShownWithAQuestionMark)
{
    EXPECT_EQ(eventLine("12:00:00.000", 65, "securityStatusChanged",
                        {{"lineURI", "4711"},
                         {"callId", "3"},
                         {"securityStatus", "4"},
                         {"CallIDsRecorded", "3,14"},
                         {"CallLineURIsRecorded", "4711,4712"}}),
              "12:00:00.000    65  4711     3     security          4?, recorded: calls 3 and 14, lines 4711 and 4712");
    EXPECT_EQ(
        eventLine("12:00:00.000", 67, "preemptionStatusChanged",
                  {{"lineURI", "4711"}, {"callId", "3"}, {"priority", "4"}, {"cause", "5"}, {"reason", "reserved"}}),
        "12:00:00.000    67  4711     3     preemption        flash, cause 5?, \"reserved\"");
    EXPECT_EQ(eventLine("12:00:00.000", 70, "callCompletionFailedEvent",
                        {{"LineID", "4711"}, {"URI", "sip:4712@example.com"}, {"CallCompletionFailureType", "3"}}),
              "12:00:00.000    70  4711           call-back failed  4712@example.com, type 3?");
    EXPECT_EQ(stateLine("12:00:00.000", 70, {{"LineID", "4711"}, {"CallID", "3"}, {"CallState", "15"}}),
              "12:00:00.000    70  4711     3     15?");
}

TEST(ReadableEvents, List_SaysOneOrSeveral)
{
    Values values{{"lineURI", "4711"},
                  {"callId", "3"},
                  {"securityStatus", "1"},
                  {"CallIDsRecorded", "3"},
                  {"CallLineURIsRecorded", "47\\,11"}};
    EXPECT_EQ(eventLine("12:00:00.000", 65, "securityStatusChanged", values),
              "12:00:00.000    65  4711     3     security          plain, recorded: call 3, line 47,11");
    values["CallIDsRecorded"] = "3,14,15";
    values["CallLineURIsRecorded"] = "";
    EXPECT_EQ(eventLine("12:00:00.000", 65, "securityStatusChanged", values),
              "12:00:00.000    65  4711     3     security          plain, recorded: calls 3, 14 and 15");
}

TEST(ReadableEvents, OtherEventsOfTheSampleTexts)
{
    EXPECT_EQ(eventLine("12:00:00.000", 66, "callRecordingStatusEvent",
                        {{"LineID", "4711"}, {"callId", "3"}, {"callRecorded", "true"}}),
              "12:00:00.000    66  4711     3     recording         on");
    EXPECT_EQ(eventLine("12:00:00.000", 68, "impactLevelChanged",
                        {{"lineURI", "4711"}, {"callId", "3"}, {"ILCallLevel", "21"}, {"ILLocalLevel", "22"}}),
              "12:00:00.000    68  4711     3     impact level      call 21, local 22");
    EXPECT_EQ(eventLine("12:00:00.000", 69, "systemStatusEvent", {{"status", "CallView-Normal"}, {"statusInfo", "on"}}),
              "12:00:00.000    69                 system status     call view, \"on\"");
    EXPECT_EQ(eventLine("12:00:00.000", 71, "bluetoothAudioStatusChanged",
                        {{"LineID", "4711"}, {"CallID", "3"}, {"AudioEnabled", "1"}}),
              "12:00:00.000    71  4711     3     bluetooth         audio on");
}

TEST(ReadableEvents, TextOfTheFarEnd_CannotControlTheTerminalNorForgeDetails)
{
    EXPECT_EQ(
        stateLine("12:00:00.000", 80,
                  {{"LineID", "4711"},
                   {"CallID", "3"},
                   {"CallState", "6"},
                   {"URI", "sip:1, digits\x1b[2J@127.0.0.1"},
                   {"Name", "Eve\" 100\xe2\x80\xae \\ \xff"}}),
        R"(12:00:00.000    80  4711     3     connected         "Eve\" 100\u{202e} \\ \xff" 1,\x20digits\x1b[2J)");
}

TEST(ReadableEvents, TextThatIsNoEvent_IsWrittenAsItStands)
{
    ReadableLines lines(test::options());
    EXPECT_EQ(lines.event(81, at("12:00:00.000"), "<Method>Nothing</Method>\x1b[31m"),
              "12:00:00.000    81                 <Method>Nothing</Method>\\x1b[31m");
    EXPECT_EQ(lines.event(82, at("12:00:00.000"), ""), "12:00:00.000    82");
}

// Every recorded event of the service, with its ordinary, extreme and awkward values: one line, and no control
// character.
TEST(ReadableEvents, EveryRecordedEvent_IsOneHarmlessLine)
{
    std::ifstream file(GOLDEN_FOLDER "/events.json");
    std::size_t count = 0;
    ReadableLines lines(test::options());
    for (auto const& operation : nlohmann::json::parse(file)) {
        for (auto const& event : operation["events"]) {
            if (!event["message"].is_string()) {
                continue;
            }
            std::string const line = lines.event(1, at("12:00:00.000"), event["message"].get<std::string>());
            ++count;
            EXPECT_TRUE(test::isHarmless(line)) << line;
        }
    }
    EXPECT_GT(count, 28U);
}

}  // namespace
}  // namespace telephone

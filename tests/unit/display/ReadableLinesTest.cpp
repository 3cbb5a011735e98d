#include <gtest/gtest.h>

#include "DisplayTexts.h"

namespace telephone {
namespace {

using test::at;

std::string const kHeld = "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>";
std::string const kRetrieved =
    "<Method>CallRetrievedEvent</Method><LineID>4711</LineID><CallID>2</CallID><URI>sip:100@127.0.0.1:5060</URI>"
    "<Name>Zo\xc3\xab</Name><ILCallLevel>0</ILCallLevel><ILLocalLevel>0</ILLocalLevel>"
    "<ConnectedToMediaServer>0</ConnectedToMediaServer>";

TEST(ReadableLines, Reason_IsOneSentence)
{
    ReadableLines lines(test::options());
    EXPECT_EQ(lines.reason(at("23:57:54.961"), "4711", "7", "line 4711 has no call 7; it has calls 2 and 3"),
              "23:57:54.961     ✕  4711     7     line 4711 has no call 7; it has calls 2 and 3");
    EXPECT_EQ(lines.reason(at("23:57:55.361"), "4711", "", "there is no forwarding type 99 (0 to 9)"),
              "23:57:55.361     ✕  4711           there is no forwarding type 99 (0 to 9)");
}

TEST(ReadableLines, Lamp_ShinesAndSaysWhy)
{
    ReadableLines lines(test::options());
    TelephoneState state;
    state.lines.resize(1);
    state.lines[0].id = "4711";
    state.lines[0].state = "ringing";
    KeyState const line{.number = 1,
                        .function = "line",
                        .target = "4711",
                        .label = {},
                        .showsOnly = false,
                        .lamp = {"flashing", "green"}};
    KeyState const alert{
        .number = 0, .function = "SecondAlert", .target = {}, .label = {}, .showsOnly = false, .lamp = {"off", "none"}};

    EXPECT_EQ(lines.lamp(at("23:57:39.555"), line, state),
              "23:57:39.555  lamp  1              flashing green    ringing");
    EXPECT_EQ(lines.lamp(at("23:57:39.555"), alert, state), "23:57:39.555  lamp  SecondAlert        off");
}

TEST(ReadableLines, Gap_NamesTheEventsThatWereMissed)
{
    ReadableLines lines(test::options());
    EXPECT_EQ(lines.gap(at("23:57:56.000"), 34, 57),
              "23:57:56.000   gap                 events 34 to 57   were missed; the state follows");
    EXPECT_EQ(lines.gap(at("23:57:56.000"), 34, 34),
              "23:57:56.000   gap                 event 34          was missed; the state follows");
}

TEST(ReadableLines, WordTooLongForItsColumn_PushesTheRestAfterTwoBlanks)
{
    ReadableLines lines(test::options());
    EXPECT_EQ(lines.event(1234567, at("12:00:00.000"),
                          "<Method>CallHeldEvent</Method><LineID>sip:4711@example.com</LineID><CallID>123456</CallID>"),
              "12:00:00.000 1234567  sip:4711@example.com  123456  held");
}

TEST(ReadableLines, DateAndUtc_AreWrittenWithTheTime)
{
    DisplayOptions options = test::options();
    options.date = true;
    EXPECT_EQ(ReadableLines(options).event(1, at("23:57:45.007"), kHeld),
              "2026-03-01 23:57:45.007     1  4711     2     held");
    options.utc = true;
    EXPECT_EQ(ReadableLines(options).event(1, at("23:57:45.007"), kHeld),
              "2026-03-01 23:57:45.007Z     1  4711     2     held");
}

TEST(ReadableLines, Addresses_AreWrittenInFullOnRequest)
{
    DisplayOptions options = test::options();
    options.addresses = true;
    EXPECT_EQ(ReadableLines(options).event(1, at("12:00:00.000"), kRetrieved),
              "12:00:00.000     1  4711     2     retrieved         \"Zoë\" sip:100@127.0.0.1:5060");
}

TEST(ReadableLines, LineTooWideForTheTerminal_IsCut)
{
    DisplayOptions options = test::options();
    options.width = 57;
    EXPECT_EQ(ReadableLines(options).event(1, at("12:00:00.000"), kRetrieved),
              "12:00:00.000     1  4711     2     retrieved         \"Zo…");
    options.width = 62;
    EXPECT_EQ(ReadableLines(options).event(1, at("12:00:00.000"), kRetrieved),
              "12:00:00.000     1  4711     2     retrieved         \"Zoë\" 100");
}

TEST(ReadableLines, WithoutUtf8_EverythingIsAscii)
{
    DisplayOptions options = test::options();
    options.ascii = true;
    options.width = 57;
    ReadableLines lines(options);
    EXPECT_EQ(lines.request(at("12:00:00.000"), "<Method>GetDevices</Method>"),
              "12:00:00.000     >                 GetDevices");
    EXPECT_EQ(lines.answer(at("12:00:00.000"), {"<Method>GetDevices</Method>", "sfiFailure", {}}),
              "12:00:00.000     <                 failure  <1 ms");
    EXPECT_EQ(lines.reason(at("12:00:00.000"), "", "", "no line"), "12:00:00.000     x                 no line");
    lines.options().width = 60;
    EXPECT_EQ(lines.event(1, at("12:00:00.000"), kRetrieved),
              "12:00:00.000     1  4711     2     retrieved         \"Zo\\...");
}

TEST(ReadableLines, Colour_MarksWhatHappenedAndFailures)
{
    DisplayOptions options = test::options();
    options.colour = true;
    ReadableLines lines(options);
    EXPECT_EQ(lines.event(1, at("12:00:00.000"), kHeld), "12:00:00.000     1  4711     2     \x1b[1mheld\x1b[0m");
    EXPECT_EQ(lines.request(at("12:00:00.000"), "<Method>RefuseCall</Method><RefuseCallReason>1</RefuseCallReason>"),
              "\x1b[2m12:00:00.000\x1b[0m     \x1b[34m→\x1b[0m                 \x1b[34mRefuseCall\x1b[0m        "
              "\x1b[2mRefuseCallReason=\x1b[0m1");
    EXPECT_EQ(lines.answer(at("12:00:00.001"), {"<Method>RefuseCall</Method>", "sfiFailure", {}}),
              "12:00:00.001     ←                 \x1b[35mfailure\x1b[0m  \x1b[2m<1 ms\x1b[0m");
}

}  // namespace
}  // namespace telephone

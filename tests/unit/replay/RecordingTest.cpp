#include "telephone/replay/Recording.h"

#include <gtest/gtest.h>

#include "RecordingText.h"
#include "telephone/replay/RecordingLines.h"

using namespace telephone;

namespace {

std::string whyRefused(std::string const& lines)
{
    auto const read = readLines(lines);
    return read ? "" : read.error().reason;
}

}  // namespace

TEST(Recording, Header_SaysWhatTheTelephoneWas)
{
    Recording const recording = recordingOf("");

    EXPECT_EQ(recording.name, "test.recording");
    EXPECT_EQ(recording.start, "k3f9x2ab");
    EXPECT_EQ(recording.domain, "127.0.0.1:5060");
    EXPECT_TRUE(recording.ready);
    EXPECT_EQ(recording.begin, recording.end);
    EXPECT_TRUE(recording.entries.empty());
}

TEST(Recording, Replies_BelongToTheLatestInputOfTheirSession)
{
    Recording const recording =
        recordingOf(R"({"request":"<Method>HoldCall</Method>","session":"a","strict":true)" + at(1000) + "}\n" +
                    R"({"command":"press 1","session":"b","reasons":true)" + at(1100) + "}\n" +
                    R"({"answer":"sfiFailure","session":"a")" + at(1200) + "}\n" +
                    R"({"error":"no key 1","session":"b")" + at(1300) + "}\n" + R"({"reason":"no call","session":"a")" +
                    at(1400) + "}\n" + R"({"finished":null,"session":"a")" + at(1500) + "}\n");

    ASSERT_EQ(recording.entries.size(), 2U);
    EXPECT_EQ(recording.entries[0].line, 2);
    EXPECT_EQ(recording.entries[0].time - recording.begin, std::chrono::seconds(1));
    auto const& request = std::get<RecordedInput>(recording.entries[0].what);
    EXPECT_EQ(request.kind, InputKind::kRequest);
    EXPECT_EQ(request.text, "<Method>HoldCall</Method>");
    EXPECT_TRUE(request.strict);
    EXPECT_FALSE(request.reasons);
    ASSERT_EQ(request.replies.size(), 3U);
    EXPECT_EQ(request.replies[0].kind, MessageKind::kAnswer);
    EXPECT_EQ(request.replies[0].text, "sfiFailure");
    EXPECT_EQ(request.replies[1].kind, MessageKind::kReason);
    EXPECT_EQ(request.replies[2].kind, MessageKind::kFinished);
    auto const& command = std::get<RecordedInput>(recording.entries[1].what);
    EXPECT_EQ(command.kind, InputKind::kCommand);
    EXPECT_EQ(command.session, "b");
    EXPECT_TRUE(command.reasons);
    ASSERT_EQ(command.replies.size(), 1U);
    EXPECT_EQ(command.replies[0].kind, MessageKind::kError);
    EXPECT_EQ(command.replies[0].text, "no key 1");
}

TEST(Recording, End_IsThatOfTheLastLine)
{
    EXPECT_EQ(recordingOf(eventLine(2000, 5, held("1")) + R"({"end":null)" + at(9000) + "}\n").end -
                  recordingOf("").begin,
              std::chrono::seconds(9));
}

TEST(Recording, EmptyLinesAndLineEndsOfOtherSystems_AreNothing)
{
    EXPECT_EQ(recordingOf("\n \r\n" + eventLine(0, 5, held("1"))).entries.at(0).line, 4);
}

TEST(Recording, WrongLine_IsRefusedWithItsNumber)
{
    EXPECT_EQ(whyRefused(""), "test.recording: empty; a recording begins with a line that has \"recording\"");
    EXPECT_EQ(whyRefused("# a script\n"), "test.recording:1: not a JSON object");
    EXPECT_EQ(whyRefused("[1]\n"), "test.recording:1: not a JSON object");
    EXPECT_EQ(whyRefused(eventLine(0, 1, held("1"))),
              "test.recording:1: not a recording: the first line must have \"recording\"");
    EXPECT_EQ(whyRefused(R"({"recording":1})"),
              "test.recording:1: \"time\" is missing, or is not in the form 2026-03-01T12:00:00.000Z");
    EXPECT_EQ(whyRefused(R"({"recording":2)" + at(0) + "}"),
              "test.recording:1: a recording of version 2: this telephone reads version 1");
    EXPECT_EQ(whyRefused(R"({"recording":1)" + at(0) + "}"), "test.recording:1: \"state\" with \"lines\" is missing");

    std::string const header = kHeader;
    EXPECT_EQ(whyRefused(header + "{\"event\":1"), "test.recording:2: not a JSON object");
    EXPECT_EQ(whyRefused(header + R"({"event":1,"raw":"x","time":"noon"})"),
              "test.recording:2: \"time\" is missing, or is not in the form 2026-03-01T12:00:00.000Z");
    EXPECT_EQ(whyRefused(header + R"({"event":1)" + at(0) + "}"),
              "test.recording:2: an event needs its number in \"event\" and its text in \"raw\"");
    EXPECT_EQ(whyRefused(header + R"({"event":-1,"raw":"x")" + at(0) + "}"),
              "test.recording:2: an event needs its number in \"event\" and its text in \"raw\"");
    EXPECT_EQ(whyRefused(header + R"({"request":"<Method>HoldCall</Method>")" + at(0) + "}"),
              "test.recording:2: a request needs its text in \"request\" and its session in \"session\"");
    EXPECT_EQ(whyRefused(header + R"({"command":7,"session":"a")" + at(0) + "}"),
              "test.recording:2: a command needs its text in \"command\" and its session in \"session\"");
    EXPECT_EQ(whyRefused(header + R"({"answer":"sfiSuccess","session":"a")" + at(0) + "}"),
              "test.recording:2: \"answer\" of a session that has sent nothing: \"a\"");
    EXPECT_EQ(whyRefused(header + requestLine(0, holdCall("1")) + R"({"answer":null,"session":"application-1")" +
                         at(0) + "}"),
              "test.recording:5: \"answer\" must be a text");
    EXPECT_EQ(whyRefused(header + R"({"anwser":"x","session":"a")" + at(0) + "}"),
              "test.recording:2: the line has none of request, command, answer, reason, finished, result, error, event "
              "and end");
}

TEST(RecordingLines, AreWrittenAsThePageSays)
{
    RecordingTime const noon = recordingOf("").begin;

    EXPECT_EQ(recordingLine(noon, SessionInput{"console", InputKind::kCommand, "press \"a b\""}),
              R"({"command":"press \"a b\"","time":"2026-03-01T12:00:00.000Z","session":"console"})");
    EXPECT_EQ(recordingLine(noon, SessionInput{"x", InputKind::kRequest, "<Method>GetDevices</Method>", true, true}),
              R"({"request":"<Method>GetDevices</Method>","time":"2026-03-01T12:00:00.000Z","session":"x",)"
              R"("strict":true,"reasons":true})");
    EXPECT_EQ(recordingLine(noon, "x", Message{MessageKind::kAnswer, "\xff"}),
              R"({"answer":"\ufffd","time":"2026-03-01T12:00:00.000Z","session":"x"})");
    EXPECT_EQ(recordingLine(noon, "x", Message{MessageKind::kFinished, {}}),
              R"({"finished":null,"time":"2026-03-01T12:00:00.000Z","session":"x"})");
    EXPECT_EQ(recordingEnd(noon), R"({"end":null,"time":"2026-03-01T12:00:00.000Z"})");
}

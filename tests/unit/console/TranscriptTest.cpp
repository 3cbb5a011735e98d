#include "telephone/console/Transcript.h"

#include <utility>

#include <gtest/gtest.h>

using namespace telephone;
using namespace std::chrono;

namespace {

constexpr char const* kHoldCall = "<Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>";
constexpr char const* kCallHeld = "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>";

class TranscriptTest : public testing::Test
{
protected:
    // 2026-03-01T23:57:45.559Z
    static constexpr system_clock::time_point kTime = sys_days(year(2026) / March / 1) + 23h + 57min + 45s + 559ms;

    Transcript& as(OutputKind kind)
    {
        transcript_.setKind(kind);
        return transcript_;
    }
    // What was written since the last call.
    std::string written() { return std::exchange(written_, ""); }

    static Message message(MessageKind kind, std::string_view text, std::uint64_t number = 0)
    {
        return {kind, text, number, kTime};
    }
    static OutputForm::Reply reply(std::optional<std::string> answer, std::vector<std::string> reasons = {})
    {
        return {kHoldCall, std::move(answer), kTime, 1500us, std::move(reasons)};
    }

    static DisplayOptions options()
    {
        DisplayOptions options;
        options.utc = true;
        options.ownDomain = "127.0.0.1:5060";
        return options;
    }

    std::string written_;
    std::string failures_;
    Transcript transcript_{[this](std::string const& line) { written_ += line + "\n"; },
                           [this](std::string const& line) { failures_ += line + "\n"; }, OutputKind::kWords,
                           options()};
};

}  // namespace

TEST_F(TranscriptTest, RequestReplyAndEvent_InWords)
{
    transcript_.write(message(MessageKind::kRequest, kHoldCall));
    transcript_.reply(reply("sfiFailure", {"line 4711 has no call 7", "it is late"}));
    transcript_.write(message(MessageKind::kEvent, kCallHeld, 17));

    EXPECT_EQ(written(), "23:57:45.559Z     →  4711     7     HoldCall\n"
                         "23:57:45.559Z     ←  4711     7     failure  1 ms\n"
                         "23:57:45.559Z     ✕  4711     7     line 4711 has no call 7\n"
                         "23:57:45.559Z     ✕  4711     7     it is late\n"
                         "23:57:45.559Z    17  4711     2     held\n");
}

TEST_F(TranscriptTest, RequestReplyAndEvent_WithTags)
{
    as(OutputKind::kTags).write(message(MessageKind::kRequest, kHoldCall));
    transcript_.reply(reply("sfiFailure", {"line 4711 has no call 7"}));
    transcript_.reply(reply(std::nullopt));
    transcript_.write(message(MessageKind::kEvent, kCallHeld, 17));

    EXPECT_EQ(written(), "request  <Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>\n"
                         "answer   sfiFailure\n"
                         "reason   line 4711 has no call 7\n"
                         "finished\n"
                         "event 17 <Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>\n");
}

TEST_F(TranscriptTest, RequestReplyAndEvent_AsJson)
{
    as(OutputKind::kJson).write(message(MessageKind::kRequest, kHoldCall));
    transcript_.reply(reply("sfiFailure", {"line 4711 has no call 7"}));
    transcript_.reply(reply(std::nullopt));
    transcript_.write(message(MessageKind::kEvent, kCallHeld, 17));

    EXPECT_EQ(
        written(),
        R"({"request":"<Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>","time":"2026-03-01T23:57:45.559Z"})"
        "\n"
        R"({"answer":"sfiFailure","time":"2026-03-01T23:57:45.559Z","seconds":0.0015})"
        "\n"
        R"({"reason":"line 4711 has no call 7","time":"2026-03-01T23:57:45.559Z"})"
        "\n"
        R"({"answer":null,"time":"2026-03-01T23:57:45.559Z","seconds":0.0015})"
        "\n"
        R"({"event":17,"time":"2026-03-01T23:57:45.559Z","name":"CallHeldEvent","line":"4711","call":2,)"
        R"("elements":{"LineID":"4711","CallID":2},)"
        R"("raw":"<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>"})"
        "\n");
}

TEST_F(TranscriptTest, RequestReplyAndEvent_AreDrawn)
{
    as(OutputKind::kDrawing).write(message(MessageKind::kRequest, kHoldCall));
    transcript_.reply(reply("sfiFailure", {"line 4711 has no call 7"}));
    transcript_.step("expect answer sfiFailure", 1ms);

    EXPECT_EQ(written(),
              "s   application                                            telephone                         far end\n"
              "  0.000  │───────────────── HoldCall, call 7 ─────────────────▶│                                  │\n"
              "         │◀──────────────────── ✕ failure ─────────────────────│                                  │\n"
              "         ✕ line 4711 has no call 7\n");
}

TEST_F(TranscriptTest, SuccessWithAReason_IsNotAsAsked)
{
    transcript_.reply(reply("sfiSuccess", {"there is no forwarding type 99 (0 to 9)"}));
    transcript_.reply(reply("sfiSuccess"));

    EXPECT_EQ(written(), "23:57:45.559Z     ←  4711     7     success  1 ms, not as asked\n"
                         "23:57:45.559Z     ✕  4711     7     there is no forwarding type 99 (0 to 9)\n"
                         "23:57:45.559Z     ←  4711     7     success  1 ms\n");
}

TEST_F(TranscriptTest, GapAndState_AreWritten)
{
    transcript_.write(message(MessageKind::kGap, R"({"first":34,"last":57})"));
    transcript_.write(message(MessageKind::kState, R"({"event":57})", 57));
    as(OutputKind::kTags).write(message(MessageKind::kGap, R"({"first":34,"last":57})"));
    as(OutputKind::kJson).write(message(MessageKind::kState, R"({"event":57})", 57));

    EXPECT_EQ(written(), "23:57:45.559Z   gap                 events 34 to 57   were missed; the state follows\n"
                         "{\"event\":57}\n"
                         "gap      {\"first\":34,\"last\":57}\n"
                         R"({"state":{"event":57},"time":"2026-03-01T23:57:45.559Z"})"
                         "\n");
}

TEST_F(TranscriptTest, Results_AreWrittenLineByLine)
{
    transcript_.write(message(MessageKind::kResult, "one\n\n  two\n"));
    transcript_.write(message(MessageKind::kResult, ""));
    as(OutputKind::kJson).write(message(MessageKind::kResult, "one\n\n  two\n"));
    transcript_.write(message(MessageKind::kResult, R"({"ready":true})"));
    transcript_.write(message(MessageKind::kResult, ""));

    EXPECT_EQ(written(), "one\n\n  two\n"
                         R"({"result":"one\n\n  two\n","time":"2026-03-01T23:57:45.559Z"})"
                         "\n"
                         R"({"result":{"ready":true},"time":"2026-03-01T23:57:45.559Z"})"
                         "\n"
                         R"({"result":"","time":"2026-03-01T23:57:45.559Z"})"
                         "\n");
}

TEST_F(TranscriptTest, Errors_AreWrittenInEveryForm)
{
    for (OutputKind const kind : {OutputKind::kWords, OutputKind::kTags, OutputKind::kJson, OutputKind::kDrawing}) {
        as(kind).write(message(MessageKind::kError, "no key 99"));
    }

    EXPECT_EQ(written(), "error: no key 99\n"
                         "error    no key 99\n"
                         R"({"error":"no key 99","time":"2026-03-01T23:57:45.559Z"})"
                         "\n"
                         "error: no key 99\n");
}

TEST_F(TranscriptTest, Failures_AreWrittenElsewhere)
{
    as(OutputKind::kJson).failure("a.script:3: the answer was \x1b[2J");

    EXPECT_EQ(failures_, "error: a.script:3: the answer was \\x1b[2J\n");
    EXPECT_EQ(written(), "");
}

TEST_F(TranscriptTest, Steps_HaveTheirTime)
{
    transcript_.step("wait CallHeldEvent", 1500ms);
    EXPECT_EQ(written().substr(13), "     ✓                 passed            wait CallHeldEvent  1.5 s\n");

    as(OutputKind::kTags).step("wait CallHeldEvent", 1500ms);
    EXPECT_EQ(written(), "passed   wait CallHeldEvent  1.500 s\n");
}

TEST_F(TranscriptTest, HostileText_CannotControlTheTerminal)
{
    constexpr char const* kHostile = "a\x1b[2J\xe2\x80\xae\xff";
    for (OutputKind const kind : {OutputKind::kWords, OutputKind::kTags, OutputKind::kDrawing}) {
        as(kind).write(message(MessageKind::kResult, kHostile));
        EXPECT_EQ(written(), "a\\x1b[2J\\u{202e}\\xff\n");
    }
    as(OutputKind::kTags).write(message(MessageKind::kEvent, kHostile, 1));
    EXPECT_EQ(written(), "event 1  a\\x1b[2J\\u{202e}\\xff\n");
    as(OutputKind::kJson).write(message(MessageKind::kResult, kHostile));
    EXPECT_EQ(written(), R"({"result":"a\u001b[2J\u202e\ufffd","time":"2026-03-01T23:57:45.559Z"})"
                         "\n");
}

TEST_F(TranscriptTest, NarrowTerminal_CutsLinesButNoReason)
{
    transcript_.fitTo(48);
    transcript_.reply(reply("sfiFailure", {"line 4711 has no call 7"}));
    transcript_.write(message(MessageKind::kRequest, "<Method>GetServiceState</Method><Long>1</Long>"));

    EXPECT_EQ(written(), "23:57:45.559Z     ←  4711     7     failure  1 …\n"
                         "23:57:45.559Z     ✕  4711     7     line 4711 has no call 7\n"
                         "23:57:45.559Z     →                 GetServiceS…\n");
}

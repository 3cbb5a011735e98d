#include "telephone/analysis/TraceReader.h"

#include "TraceTexts.h"

namespace telephone {
namespace {

using test::kHeader;
using test::TraceText;

Outcome<TraceContents> readText(std::string const& text)
{
    std::istringstream file(text);
    TraceReader reader("hold.trace");
    return reader.read(file).and_then([&](auto const&) { return reader.finish(); });
}

std::string refusalOf(std::string const& text)
{
    auto const contents = readText(text);
    return contents ? "no refusal" : contents.error().reason;
}

// A step with these members besides those that every step has.
std::string withStep(std::string const& members)
{
    return std::string(kHeader) + R"({"seq":1,"time":"2026-03-01T12:00:00.000Z","id":1,)" + members + "}\n";
}

TEST(TraceReader, WholeTrace_HasItsStepsInTheirOrder)
{
    auto const contents = readText(
        std::string(kHeader) +
        R"({"seq":2,"time":"2026-03-01T12:00:00.250Z","thread":"SIP","id":1,"because":1,"step":"timer","name":"ring"})"
        "\n\n"
        R"({"seq":1,"time":"2026-03-01T12:00:00.000Z","thread":"events","id":1,"step":"platform","name":"CSfi::CallMake",)"
        R"("arguments":{"call":{"line":1,"appearance":0,"call":3},"destination":"100","mode":1,"numberFlag":false},)"
        R"("result":"sfiSuccess","microseconds":41,"unknown":[]})"
        "\n");

    ASSERT_TRUE(contents);
    EXPECT_EQ(contents->domain, "127.0.0.1:5060");
    ASSERT_EQ(contents->steps.size(), 2U);
    TracedStep const& call = contents->steps.begin()->second;
    EXPECT_EQ(call.thread, "events");
    EXPECT_EQ(call.text("name"), "CSfi::CallMake");
    EXPECT_EQ(call.wholeNumber("microseconds"), 41);
    EXPECT_FALSE(call.has("unknown"));
    EXPECT_EQ(call.arguments, (std::vector<std::pair<std::string, std::string>>{
                                  {"call", "3"}, {"destination", "100"}, {"mode", "1"}, {"numberFlag", "false"}}));
    TracedStep const& timer = *contents->find(2);
    EXPECT_EQ(timer.time - call.time, std::chrono::milliseconds(250));
    EXPECT_EQ(contents->causeOf(timer), &call);
    EXPECT_EQ(contents->causeOf(call), nullptr);
}

TEST(TraceReader, LineThatWasCutOff_IsLeftOut)
{
    std::string const text = TraceText().request("GetDevices").request("GetDevices").text();

    auto const contents = readText(text.substr(0, text.size() - 20));

    ASSERT_TRUE(contents);
    EXPECT_EQ(contents->steps.size(), 1U);
    auto const withoutEnd = readText(text.substr(0, text.size() - 1));
    ASSERT_TRUE(withoutEnd);
    EXPECT_EQ(withoutEnd->steps.size(), 2U);
}

TEST(TraceReader, LineThatComesInPieces_IsOneLine)
{
    std::string const text = TraceText().request("GetDevices").text();
    TraceReader reader("hold.trace");
    std::istringstream begin(text.substr(0, text.size() - 30));
    std::istringstream rest(text.substr(text.size() - 30));

    EXPECT_EQ(reader.read(begin), std::vector<std::uint64_t>{});
    EXPECT_EQ(reader.read(rest), std::vector<std::uint64_t>{1});
}

TEST(TraceReader, WhatIsNotATrace_IsRefusedWithItsLine)
{
    EXPECT_EQ(refusalOf(""), "hold.trace: empty; a trace begins with a line that has \"trace\"");
    EXPECT_EQ(refusalOf("Dear diary,\n"), "hold.trace:1: not a trace: the first line must have \"trace\"");
    EXPECT_EQ(refusalOf("{\"trace\":2}\n"), "hold.trace:1: a trace of version 2: this telephone reads version 1");
    EXPECT_EQ(refusalOf("{\"recording\":1}\n"), "hold.trace:1: not a trace: the first line must have \"trace\"");
    EXPECT_EQ(refusalOf(std::string(kHeader) + "Dear diary,\n"), "hold.trace:2: not a JSON object");
    EXPECT_EQ(refusalOf(std::string(kHeader) + "{\"step\":\"timer\"}\n"),
              "hold.trace:2: \"seq\" is missing, or is not a number from 1");
    EXPECT_EQ(refusalOf(std::string(kHeader) + "{\"seq\":1,\"step\":\"timer\",\"time\":\"noon\"}\n"),
              "hold.trace:2: \"time\" is missing, or is not in the form 2026-03-01T12:00:00.000Z");
    EXPECT_EQ(refusalOf(withStep(R"("step":"dream")")),
              "hold.trace:2: \"step\" is missing, or is not a kind of step that this telephone knows");
    EXPECT_EQ(refusalOf(withStep(R"("step":"timer")")), "hold.trace:2: \"name\" of the step \"timer\" is missing");
    EXPECT_EQ(refusalOf(withStep(R"("step":"event","number":"9","text":"")")),
              "hold.trace:2: \"number\" of the step \"event\" must be a whole number");
    EXPECT_EQ(refusalOf(withStep(R"("step":"event","number":9,"text":{})")),
              "hold.trace:2: \"text\" of the step \"event\" must be a text");
    EXPECT_EQ(refusalOf(withStep(R"("step":"platform","name":"CSfi::Lock","arguments":"none")")),
              "hold.trace:2: \"arguments\" of the step \"platform\" must be an object");
    EXPECT_EQ(refusalOf(withStep(R"("step":"store","settings":[1])")),
              "hold.trace:2: \"settings\" of the step \"store\" must be a text or a list of texts");
    std::string const timer = R"("step":"timer","name":"ring")";
    EXPECT_EQ(refusalOf(withStep(timer) + withStep(timer).substr(kHeader.size())),
              "hold.trace:3: there are two steps 1");
}

TEST(TraceReader, CauseThatIsNotEarlier_IsNone)
{
    auto const contents = readText(TraceText()
                                       .step(2, R"("step":"timer","name":"ring")")
                                       .step(1, R"("step":"timer","name":"ring")")
                                       .step(3, R"("step":"timer","name":"ring")")
                                       .step(77, R"("step":"timer","name":"ring")")
                                       .text());

    ASSERT_TRUE(contents);
    EXPECT_EQ(contents->causeOf(*contents->find(1)), nullptr);
    EXPECT_EQ(contents->causeOf(*contents->find(2)), contents->find(1));
    EXPECT_EQ(contents->causeOf(*contents->find(3)), nullptr);
    EXPECT_EQ(contents->causeOf(*contents->find(4)), nullptr);
}

}  // namespace
}  // namespace telephone

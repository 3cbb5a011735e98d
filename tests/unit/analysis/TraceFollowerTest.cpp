#include "telephone/analysis/TraceFollower.h"

#include <fstream>

#include "TraceTexts.h"
#include "tests/doubles/TemporaryFolder.h"

namespace telephone {
namespace {

using test::TraceText;

class Following : public testing::Test
{
protected:
    void append(std::string_view text) { std::ofstream(file(), std::ios::app) << text; }

    // What the next look shows; a refusal as a text.
    std::string look()
    {
        shown_ = "\n";
        auto const looked = follower_.look(stream_);
        return looked ? shown_ : looked.error().reason;
    }

    [[nodiscard]] std::string file() const { return folder_.file("a.trace"); }

    TemporaryFolder const folder_;
    std::ofstream const created_{folder_.file("a.trace")};
    std::ifstream stream_{file()};
    std::string shown_;
    TraceFollower follower_{"a.trace",
                            {},
                            TraceTree::Form::kWords,
                            [](std::string const& domain) {
                                DisplayOptions options = test::options();
                                options.ownDomain = domain;
                                return options;
                            },
                            [this](std::string const& line) { shown_ += line + "\n"; }};
};

// The line of each step, without its end.
std::vector<std::string> linesOf(TraceText const& trace)
{
    std::vector<std::string> lines;
    std::istringstream text(trace.text());
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST_F(Following, Steps_AreShownAsTheyAreWritten)
{
    TraceText trace;
    trace.request("GetDevices").answer(1).request("GetServiceState").answer(3).lamp(1, 3, "Hold", "steady", "red");
    auto const lines = linesOf(trace);
    EXPECT_EQ(look(), "\n");
    append(lines[0] + "\n" + lines[1] + "\n" + lines[2].substr(0, 40));
    EXPECT_EQ(look(), R"(
12:00:00.000         →  GetDevices, console
)");
    append(lines[2].substr(40) + "\n" + lines[3] + "\n" + lines[4] + "\n" + lines[5] + "\n");
    EXPECT_EQ(look(), R"(
12:00:00.000         ←    success  1 ms
12:00:00.000         →  GetServiceState, console
12:00:00.000         ←    success  1 ms
12:00:00.000         →  GetDevices, console
12:00:00.000      lamp    3 "Hold"  steady red
)");
    EXPECT_EQ(look(), "\n");
}

TEST_F(Following, StepThatIsWrittenLate_IsWaitedForDuringOneLook)
{
    TraceText trace;
    trace.request("GetDevices").platform(1, "CSfi::Lock", "").lamp(2, 3, "Hold", "steady", "red").answer(1);
    auto const lines = linesOf(trace);
    append(lines[0] + "\n" + lines[1] + "\n" + lines[3] + "\n");
    EXPECT_EQ(look(), R"(
12:00:00.000         →  GetDevices, console
)");
    append(lines[2] + "\n");
    EXPECT_EQ(look(), R"(
12:00:00.000  platform    CSfi::Lock  success
12:00:00.000      lamp      3 "Hold"  steady red
)");
    append(lines[4] + "\n");
    EXPECT_EQ(look(), R"(
12:00:00.000         ←    success  1 ms
)");
}

TEST_F(Following, StepWhoseCauseIsMissing_IsShownAfterOneMoreLook)
{
    TraceText trace;
    trace.request("GetDevices").platform(1, "CSfi::Lock", "").lamp(2, 3, "Hold", "steady", "red");
    auto const lines = linesOf(trace);
    append(lines[0] + "\n" + lines[1] + "\n" + lines[3] + "\n");
    static_cast<void>(look());
    EXPECT_EQ(look(), R"(
12:00:00.000      lamp  3 "Hold"  steady red
)");
}

TEST_F(Following, StepBehindOneThatWasWaitedFor_IsShownWithIt)
{
    TraceText trace;
    trace.request("GetDevices").answer(1).lamp(0, 3, "", "steady", "red").lamp(0, 4, "", "steady", "red");
    trace.lamp(0, 5, "", "steady", "red").lamp(0, 6, "", "steady", "red");
    auto const lines = linesOf(trace);
    append(lines[0] + "\n" + lines[1] + "\n" + lines[3] + "\n");
    static_cast<void>(look());
    append(lines[4] + "\n" + lines[6] + "\n");
    EXPECT_EQ(look(), R"(
12:00:00.000      lamp  3  steady red
12:00:00.000      lamp  4  steady red
)");
    append(lines[5] + "\n");
    EXPECT_EQ(look(), R"(
12:00:00.000      lamp  5  steady red
12:00:00.000      lamp  6  steady red
)");
}

TEST_F(Following, AnotherTraceInTheSameFile_IsRefused)
{
    append(TraceText().request("GetDevices").text());
    static_cast<void>(look());
    std::ofstream(file()) << test::kHeader;
    EXPECT_EQ(look(), "a.trace was begun again: it is another trace now");
}

TEST_F(Following, FileThatIsNotATrace_IsRefused)
{
    append("Dear diary,\n");
    EXPECT_EQ(look(), "a.trace:1: not a trace: the first line must have \"trace\"");
}

}  // namespace
}  // namespace telephone

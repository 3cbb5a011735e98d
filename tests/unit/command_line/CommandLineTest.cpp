// The command line: what each word sets, and what is refused.
#include "telephone/program/CommandLine.h"

#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

using Words = std::vector<std::string>;

Words with(Words words, Words const& more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

class CommandLineTest : public testing::Test
{
protected:
    void SetUp() override
    {
        unsetenv("TELEPHONE_TIME");
        unsetenv("TELEPHONE_CHECK");
    }
    void TearDown() override { SetUp(); }

    std::optional<CommandLine> read(Words const& words)
    {
        std::vector<char const*> arguments{"telephone"};
        for (std::string const& each : words) {
            arguments.push_back(each.c_str());
        }
        status_ = -1;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        auto line = CommandLine::read(static_cast<int>(arguments.size()), arguments.data(), status_);
        output_ = testing::internal::GetCapturedStdout();
        errors_ = testing::internal::GetCapturedStderr();
        return line;
    }
    CommandLine taken(Words const& words)
    {
        auto line = read(words);
        EXPECT_TRUE(line) << testing::PrintToString(words) << errors_;
        return line.value_or(CommandLine());
    }
    // With a sentence, and the exit status of a mistake.
    bool isRefused(Words const& words) { return !read(words) && status_ == 2 && !errors_.empty(); }

    int status_ = -1;
    std::string output_;
    std::string errors_;
};

TEST_F(CommandLineTest, WithoutWords_IsTheConsoleWithEveryStandard)
{
    CommandLine const line = taken({});
    EXPECT_EQ(line.action, Action::kConsole);
    EXPECT_FALSE(line.lamps);
    EXPECT_EQ(line.configuration, "");
    EXPECT_EQ(line.socket, "");
    EXPECT_FALSE(line.logLevel);
    EXPECT_FALSE(line.withoutExchange);
    EXPECT_EQ(line.time, "");
    EXPECT_FALSE(line.virtualStart);
    EXPECT_EQ(line.seed, 0U);
    EXPECT_EQ(line.checked, CheckedTraffic::kNone);
    EXPECT_EQ(line.port, 0);
    EXPECT_EQ(line.hours, 1);
    EXPECT_EQ(line.test.limit, 120);
    EXPECT_FALSE(line.test.jobs);
    EXPECT_FALSE(line.test.seeds);
    EXPECT_FALSE(line.test.coverage);
    EXPECT_FALSE(line.replay.report);
    EXPECT_FALSE(line.replay.asTelephone);
    EXPECT_FALSE(line.traced.follow);
    EXPECT_FALSE(line.lenient);
    EXPECT_EQ(line.output.colour, ColourUse::kAuto);
    EXPECT_FALSE(line.output.raw || line.output.json || line.output.addresses || line.output.date || line.output.utc);
    EXPECT_FALSE(line.after);
}

TEST_F(CommandLineTest, EveryCommand_HasItsAction)
{
    // clang-format off
    for (auto const& [words, action] : {
             std::pair(Words{"console"},            Action::kConsole),  std::pair(Words{"tour"},          Action::kTour),
             std::pair(Words{"play", "a.script"},   Action::kPlay),     std::pair(Words{"replay", "a"},   Action::kReplay),
             std::pair(Words{"trace", "a.trace"},   Action::kTrace),    std::pair(Words{"why", "a", "9"}, Action::kWhy),
             std::pair(Words{"ladder", "a.trace"},  Action::kLadder),   std::pair(Words{"serve"},         Action::kServe),
             std::pair(Words{"panel"},              Action::kPanel),    std::pair(Words{"test", "a"},     Action::kTest),
             std::pair(Words{"chaos"},              Action::kChaos),    std::pair(Words{"exchange"},      Action::kExchange),
             std::pair(Words{"fleet", "3"},         Action::kFleet),    std::pair(Words{"do", "lines"},   Action::kDo),
             std::pair(Words{"request", "HoldCall"}, Action::kRequest), std::pair(Words{"watch"},         Action::kWatch),
             std::pair(Words{"store", "list"},      Action::kStore),    std::pair(Words{"devices"},       Action::kDevices),
             std::pair(Words{"describe"},           Action::kDescribe),
         }) {
        // clang-format on
        EXPECT_EQ(taken(words).action, action) << words.front();
    }
}

TEST_F(CommandLineTest, CommandWithoutWhatItNeeds_IsRefused)
{
    for (char const* const command :
         {"play", "replay", "trace", "why", "ladder", "test", "fleet", "do", "request", "juggle"}) {
        EXPECT_TRUE(isRefused({command})) << command;
    }
    EXPECT_TRUE(isRefused({"why", "a.trace"}));
    EXPECT_TRUE(isRefused({"why", "a.trace", "lamp", "3", "4"}));
    EXPECT_TRUE(isRefused({"console", "tour"}));
}

TEST_F(CommandLineTest, OptionsOfEveryCommand_StandBeforeOrBehindIt)
{
    TemporaryFolder const folder;
    std::ofstream(folder.file("desk.toml")) << "\n";
    Words const options{"--config",     folder.file("desk.toml"),
                        "--socket",     "a.socket",
                        "--library",    "a.so",
                        "--log-level",  "5",
                        "--log-file",   "a.log",
                        "--record",     "a.recording",
                        "--trace",      "a.trace",
                        "--time",       "virtual",
                        "--seed",       "7",
                        "--check",      "all",
                        "--no-exchange"};
    Words before = options;
    before.push_back("serve");
    Words behind{"serve"};
    behind.insert(behind.end(), options.begin(), options.end());
    for (Words const& words : {before, behind}) {
        CommandLine const line = taken(words);
        EXPECT_EQ(line.action, Action::kServe);
        EXPECT_EQ(line.configuration, folder.file("desk.toml"));
        EXPECT_EQ(line.socket, "a.socket");
        EXPECT_EQ(line.library, "a.so");
        EXPECT_EQ(line.logLevel, 5);
        EXPECT_EQ(line.logFile, "a.log");
        EXPECT_EQ(line.record, "a.recording");
        EXPECT_EQ(line.trace, "a.trace");
        EXPECT_EQ(line.time, "virtual");
        EXPECT_EQ(line.seed, 7U);
        EXPECT_EQ(line.checked, CheckedTraffic::kAll);
        EXPECT_TRUE(line.withoutExchange);
    }
    EXPECT_EQ(taken({"-c", folder.file("desk.toml"), "-s", "b", "-l", "c"}).socket, "b");
    EXPECT_EQ(taken({"-l", "c"}).library, "c");
    EXPECT_TRUE(isRefused({"--config", folder.file("other.toml")}));
}

TEST_F(CommandLineTest, Time_IsRealOrVirtualFromAMoment)
{
    using namespace std::chrono;
    CommandLine line = taken({"--time", "real"});
    EXPECT_EQ(line.time, "real");
    EXPECT_FALSE(line.virtualStart);
    EXPECT_EQ(taken({"--time", "virtual"}).virtualStart, sys_days(year(2000) / January / 1));
    auto const moment = sys_days(year(2025) / March / 30) + minutes(59);
    line = taken({"--time", "virtual=2025-03-30T00:59:00Z"});
    EXPECT_EQ(line.virtualStart, moment);
    EXPECT_EQ(line.time, "virtual=2025-03-30T00:59:00Z");
    EXPECT_EQ(taken({"--time", "virtual=2025-03-30T00:59:00.250Z"}).virtualStart, moment + milliseconds(250));
    for (char const* const wrong : {"", "Virtual", "virtual=", "virtual=noon", "virtual=2025-03-30T00:59:00", "reel"}) {
        EXPECT_TRUE(isRefused({"--time", wrong})) << wrong;
    }
    EXPECT_NE(errors_.find("write real, virtual or virtual=2025-03-30T00:59:00Z"), std::string::npos) << errors_;
}

TEST_F(CommandLineTest, Environment_SaysTimeAndCheckWhereTheWordsDoNot)
{
    setenv("TELEPHONE_TIME", "virtual", 1);
    setenv("TELEPHONE_CHECK", "events", 1);
    EXPECT_EQ(taken({}).time, "virtual");
    EXPECT_EQ(taken({}).checked, CheckedTraffic::kEvents);
    EXPECT_EQ(taken({"--seed", "3"}).seed, 3U);
    EXPECT_EQ(taken({"--time", "real", "--check", "none"}).time, "real");
    EXPECT_EQ(taken({"--time", "real", "--check", "none"}).checked, CheckedTraffic::kNone);
}

TEST_F(CommandLineTest, Seed_NeedsATime)
{
    EXPECT_TRUE(isRefused({"--seed", "3"}));
    EXPECT_EQ(taken({"chaos", "--seed", "3"}).seed, 3U);
}

struct Limit
{
    Words words;  // behind which the value stands
    char const* below;
    char const* least;
    char const* most;
    char const* above;
};

TEST_F(CommandLineTest, Numbers_HaveTheirLimits)
{
    // clang-format off
    for (auto const& [words, below, least, most, above] : {
             Limit{{"--log-level"},          "-1", "0",     "6",       "7"},
             Limit{{"test", "a", "--jobs"},  "0",  "1",     "1000",    "1001"},
             Limit{{"test", "a", "--limit"}, "0",  "0.001", "86400",   "86401"},
             Limit{{"chaos", "--hours"},     "0",  "1",     "1000000", "1000001"},
             Limit{{"exchange", "--port"},   "-1", "0",     "65535",   "65536"},
             Limit{{"fleet"},                "0",  "1",     "999",     "1000"},
         }) {
        // clang-format on
        EXPECT_TRUE(isRefused(with(words, {below}))) << words.back();
        EXPECT_TRUE(read(with(words, {least}))) << words.back();
        EXPECT_TRUE(read(with(words, {most}))) << words.back();
        EXPECT_TRUE(isRefused(with(words, {above}))) << words.back();
    }
}

TEST_F(CommandLineTest, OptionsOfPlayAndTest_AreTaken)
{
    CommandLine line = taken({"play", "a.script", "--junit", "a.xml", "--report", "a.report", "--lamps"});
    EXPECT_EQ(line.script, "a.script");
    EXPECT_EQ(line.junit, "a.xml");
    EXPECT_EQ(line.report, "a.report");
    EXPECT_TRUE(line.lamps);
    line = taken({"test", "a", "b", "-j", "3", "--seeds", "4-9", "--limit", "2.5", "--junit", "b.xml", "--files", "c"});
    EXPECT_EQ(line.test.scripts, (Words{"a", "b"}));
    EXPECT_EQ(line.test.jobs, 3);
    EXPECT_EQ(line.test.seeds->first, 4U);
    EXPECT_EQ(line.test.seeds->last, 9U);
    EXPECT_EQ(line.test.limit, 2.5);
    EXPECT_EQ(line.junit, "b.xml");
    EXPECT_EQ(line.test.files, "c");
    EXPECT_FALSE(line.test.coverage);
    EXPECT_EQ(taken({"test", "a", "--coverage"}).test.coverage, "");
    EXPECT_EQ(taken({"test", "a", "--coverage=c.json"}).test.coverage, "c.json");
    EXPECT_TRUE(isRefused({"test", "a", "--seeds", "9-4"}));
    EXPECT_NE(errors_.find("--seeds: the range of seeds 9-4 runs backwards"), std::string::npos) << errors_;
}

TEST_F(CommandLineTest, OptionsOfChaosFleetAndExchange_AreTaken)
{
    CommandLine line = taken({"chaos", "--seed", "9", "--hours", "20", "-j", "2", "--files", "a"});
    EXPECT_EQ(line.seed, 9U);
    EXPECT_EQ(line.hours, 20);
    EXPECT_EQ(line.test.jobs, 2);
    EXPECT_EQ(line.test.files, "a");
    line = taken({"fleet", "12", "--files", "b"});
    EXPECT_EQ(line.count, 12);
    EXPECT_EQ(line.test.files, "b");
    EXPECT_EQ(taken({"exchange", "--port", "5070"}).port, 5070);
}

TEST_F(CommandLineTest, OptionsOfReplay_AreTaken)
{
    CommandLine line = taken({"replay", "a.recording"});
    EXPECT_EQ(line.replay.recording, "a.recording");
    EXPECT_FALSE(line.replay.report);
    line = taken({"replay", "a", "--as-telephone", "--session", "1", "--report", "r.txt", "--json"});
    EXPECT_TRUE(line.replay.asTelephone);
    EXPECT_EQ(line.replay.sessions, Words{"1"});
    EXPECT_EQ(line.replay.report, "r.txt");
    EXPECT_TRUE(line.output.json);
    EXPECT_EQ(taken({"replay", "a", "--report"}).replay.report, "-");
    EXPECT_TRUE(isRefused({"replay", "a", "--session", "1"}));
}

TEST_F(CommandLineTest, OptionsOfTraces_AreTaken)
{
    CommandLine line = taken({"trace", "a", "--only", "sip", "--line", "4711", "--call", "3", "--follow"});
    EXPECT_EQ(line.traced.file, "a");
    EXPECT_EQ(line.traced.only, "sip");
    EXPECT_EQ(line.traced.line, "4711");
    EXPECT_EQ(line.traced.call, "3");
    EXPECT_TRUE(line.traced.follow);
    EXPECT_EQ(taken({"why", "a", "lamp", "3"}).traced.what, (Words{"lamp", "3"}));
    EXPECT_EQ(taken({"why", "a", "9", "--utc"}).traced.what, Words{"9"});
    line = taken({"ladder", "a", "--call", "4", "--svg", "-"});
    EXPECT_EQ(line.traced.call, "4");
    EXPECT_EQ(line.traced.svg, "-");
}

TEST_F(CommandLineTest, OptionsOfWatchRequestAndDescribe_AreTaken)
{
    CommandLine line = taken({"watch", "--line", "4711", "--only", "CallHeldEvent", "--after", "7"});
    EXPECT_EQ(line.lines, "4711");
    EXPECT_EQ(line.events, "CallHeldEvent");
    EXPECT_EQ(line.after, 7U);
    line = taken({"request", "HoldCall", "Line=4711", "--lenient"});
    EXPECT_EQ(line.words, (Words{"HoldCall", "Line=4711"}));
    EXPECT_TRUE(line.lenient);
    EXPECT_EQ(taken({"do", "press", "1"}).words, (Words{"press", "1"}));
    EXPECT_EQ(taken({"store", "set", "cfu-address", "100"}).words, (Words{"set", "cfu-address", "100"}));
    EXPECT_EQ(taken({"describe", "CallState", "6"}).words, (Words{"CallState", "6"}));
    EXPECT_TRUE(taken({"describe", "--json"}).output.json);
    EXPECT_TRUE(isRefused({"describe", "CallState", "--json"}));
}

TEST_F(CommandLineTest, FormsOfOutput_AreThoseOfTheCommandsThatWrite)
{
    for (Words const& words : {Words{"console"}, Words{"tour"}, Words{"play", "a"}, Words{"watch"}, Words{"trace", "a"},
                               Words{"why", "a", "9"}, Words{"ladder", "a"}}) {
        CommandLine const line = taken(with(words, {"--color", "always", "--addresses", "--date", "--utc"}));
        EXPECT_EQ(line.output.colour, ColourUse::kAlways) << words.front();
        EXPECT_TRUE(line.output.addresses && line.output.date && line.output.utc) << words.front();
        EXPECT_EQ(taken(with(words, {"--color", "never"})).output.colour, ColourUse::kNever);
        EXPECT_EQ(taken(with(words, {"--color", "auto"})).output.colour, ColourUse::kAuto);
        EXPECT_TRUE(isRefused(with(words, {"--color", "green"})));
        bool const isInWordsOnly = words.front() == "why" || words.front() == "ladder";
        EXPECT_EQ(read(with(words, {"--raw"})).has_value(), !isInWordsOnly) << words.front();
        EXPECT_EQ(read(with(words, {"--json"})).has_value(), !isInWordsOnly) << words.front();
        EXPECT_TRUE(isRefused(with(words, {"--raw", "--json"})));
    }
    EXPECT_TRUE(taken({"console", "--raw"}).output.raw);
    EXPECT_FALSE(taken({"console", "--raw"}).output.json);
    EXPECT_TRUE(taken({"console", "--json"}).output.json);
    for (Words const& words : {Words{"console"}, Words{"tour"}, Words{"play", "a"}}) {
        Words withLamps = words;
        withLamps.push_back("--lamps");
        EXPECT_TRUE(taken(withLamps).lamps);
    }
    EXPECT_TRUE(isRefused({"watch", "--lamps"}));
}

TEST_F(CommandLineTest, HelpAndVersion_EndWithZeroAndAreNoMistake)
{
    for (Words const& words : {Words{"--help"}, Words{"--version"}, Words{"play", "--help"}}) {
        EXPECT_FALSE(read(words));
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(errors_, "");
        EXPECT_NE(output_, "");
    }
    static_cast<void>(read({"play", "--help"}));
    EXPECT_EQ(output_.find("--report"), std::string::npos) << output_;
    EXPECT_NE(output_.find("--junit"), std::string::npos) << output_;
}

TEST_F(CommandLineTest, PanelAndServe_AreForOthers)
{
    EXPECT_TRUE(servesOthers(Action::kServe));
    EXPECT_TRUE(servesOthers(Action::kPanel));
    EXPECT_FALSE(servesOthers(Action::kConsole));
    EXPECT_FALSE(servesOthers(Action::kPlay));
}

}  // namespace

#include "telephone/testing/TestRun.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "telephone/framework/WakeUp.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

using Lines = std::vector<std::string>;

// The telephone is a shell: the scripts of these tests are its commands, which may write a report.
class TestRunTest : public testing::Test
{
protected:
    static constexpr char const* kReport =
        R"(echo '{"steps":1,"seconds":2.5,"failures":[],"touched":{"keys":["hold"]}}' >report.json; )";

    TestRunTest()
    {
        writeFile(folder_.file("telephone"), "#!/bin/sh\nfor last; do :; done\n. \"$last\"\n");
        std::filesystem::permissions(folder_.file("telephone"), std::filesystem::perms::owner_all);
        plan_.program = folder_.file("telephone");
        plan_.limit = 60;
        plan_.folder = folder_.path();
    }
    void add(std::string const& name, std::string const& commands)
    {
        writeFile(folder_.file(name), commands + "\n");
        plan_.tasks.push_back({folder_.file(name), 0, name + "-0", {}});
    }
    std::vector<TestRun::Result> play()
    {
        TestRun run(plan_, stop_.descriptor(), [&](TestRun::Result const& result) {
            most_ = std::max(most_, run.running().size());
            told_.push_back(std::filesystem::path(result.task.script).filename().string() +
                            (result.verdict == ScriptVerdict::kNotRun ? " begins" : " ends"));
        });
        return run.play();
    }

    TemporaryFolder folder_;
    TestPlan plan_;
    WakeUp stop_;
    Lines told_;            // to the listener
    std::size_t most_ = 0;  // at the same time
};

}  // namespace

TEST_F(TestRunTest, TelephoneWithAGoodReport_Passes)
{
    add("a", std::string(kReport) + "exit 0");

    auto const results = play();

    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].verdict, ScriptVerdict::kPassed);
    EXPECT_EQ(results[0].reasons, Lines{});
    EXPECT_EQ(results[0].report.result.seconds, 2.5);
    EXPECT_EQ(results[0].report.touched, (Coverage::Names{{"keys", {"hold"}}}));
    EXPECT_EQ(results[0].kept, "");
    EXPECT_GT(results[0].seconds, 0);
    EXPECT_FALSE(std::filesystem::exists(folder_.file("a-0")));
}

TEST_F(TestRunTest, TelephoneWithAGoodReportAndAStatus_IsBroken)
{
    add("a", std::string(kReport) + "echo first >&2; echo last >&2; exit 3");

    auto const results = play();

    EXPECT_EQ(results[0].verdict, ScriptVerdict::kBroken);
    EXPECT_EQ(results[0].reasons, (Lines{"ended with status 3", "first", "last"}));
    EXPECT_EQ(results[0].kept, folder_.file("a-0"));
}

TEST_F(TestRunTest, TelephoneWithoutAReport_IsBroken)
{
    add("a", "exit 0");

    EXPECT_EQ(play()[0].reasons, Lines{"ended with status 0"});
}

TEST_F(TestRunTest, ManyLastWords_AreCutAtTheBeginning)
{
    add("a", "seq 1 30 >&2; exit 1");

    auto const reasons = play()[0].reasons;

    ASSERT_EQ(reasons.size(), 21U);
    EXPECT_EQ(reasons[1], "11");
    EXPECT_EQ(reasons[20], "30");
}

TEST_F(TestRunTest, ReportWithAFailure_FailsWhateverTheStatus)
{
    add("a", R"(echo '{"steps":1,"seconds":0,"failures":[{"line":2,"step":"press 1","reason":"no"}],"touched":{}}' )"
             ">report.json; exit 1");

    auto const results = play();

    EXPECT_EQ(results[0].verdict, ScriptVerdict::kFailed);
    EXPECT_EQ(results[0].reasons, Lines{folder_.file("a") + ":2: press 1: no"});
}

TEST_F(TestRunTest, ProgramThatDoesNotExist_BreaksEachScript)
{
    add("a", "");
    add("b", "");
    plan_.program = "/no/such/program";

    auto const results = play();

    EXPECT_EQ(results[0].verdict, ScriptVerdict::kBroken);
    EXPECT_EQ(results[1].reasons, Lines{"/no/such/program: No such file or directory"});
}

TEST_F(TestRunTest, Options_ComeBeforeTheScript)
{
    add("a", "echo \"$@\"; exit 1");
    plan_.tasks[0].options = {"--seed", "7"};
    plan_.workingOptions = {"--log-file", "log"};

    play();

    EXPECT_EQ(contentOf(folder_.file("a-0/transcript")),
              "--seed 7 --log-file log play --report report.json " + folder_.file("a") + "\n");
}

TEST_F(TestRunTest, FilesOfAnEarlierRun_AreRemoved)
{
    std::filesystem::create_directory(folder_.file("a-0"));
    writeFile(folder_.file("a-0/report.json"), R"({"steps":1,"seconds":0,"failures":[],"touched":{}})");
    add("a", "exit 0");

    EXPECT_EQ(play()[0].verdict, ScriptVerdict::kBroken);
}

TEST_F(TestRunTest, OneJob_PlaysOneAfterTheOther)
{
    for (char const* const each : {"a", "b"}) {
        add(each, kReport);
    }

    play();

    EXPECT_EQ(told_, (Lines{"a begins", "a ends", "b begins", "b ends"}));
    EXPECT_EQ(most_, 1U);
}

TEST_F(TestRunTest, SeveralJobs_ArePlayedAtTheSameTimeAndKeepTheirPlaces)
{
    // Each of the first two waits for the other.
    add("a", std::string(kReport) + "mkfifo ../a-fifo; echo >../a-fifo; cat ../b-fifo");
    add("b",
        std::string(kReport) + "mkfifo ../b-fifo; until test -p ../a-fifo; do :; done; cat ../a-fifo; echo >../b-fifo");
    add("c", "exit 1");
    plan_.jobs = 2;

    auto const results = play();

    EXPECT_EQ(most_, 2U);
    EXPECT_EQ(results[0].verdict, ScriptVerdict::kPassed) << results[0].reasons[0];
    EXPECT_EQ(results[1].verdict, ScriptVerdict::kPassed) << results[1].reasons[0];
    EXPECT_EQ(results[2].verdict, ScriptVerdict::kBroken);
}

TEST_F(TestRunTest, TelephoneThatIgnoresSigterm_IsKilled)
{
    plan_.limit = 0.2;
    add("a", "trap '' TERM; while :; do sleep 0.05; done");

    auto const results = play();

    EXPECT_EQ(results[0].verdict, ScriptVerdict::kBroken);
    EXPECT_EQ(results[0].reasons, Lines{"it did not end within 0.2 s"});
    EXPECT_GT(results[0].seconds, 2.1);  // the limit, and two seconds to end by itself
}

TEST_F(TestRunTest, Stop_LeavesTheOthersOut)
{
    stop_.signal();
    add("a", "exec sleep 600");
    add("b", kReport);

    auto const results = play();

    EXPECT_EQ(results[0].verdict, ScriptVerdict::kNotRun);
    EXPECT_EQ(results[0].reasons, Lines{"the run was ended before"});
    EXPECT_EQ(results[0].kept, folder_.file("a-0"));
    EXPECT_EQ(results[1].verdict, ScriptVerdict::kNotRun);
    EXPECT_EQ(results[1].kept, "");
    EXPECT_EQ(told_, Lines{"a begins"});
}

#include "telephone/testing/TestOutput.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

TestRun::Result passed(std::string const& script, std::uint64_t seed)
{
    TestRun::Result result;
    result.task = {script, seed, "", {"--time", "virtual", "--seed", std::to_string(seed)}};
    result.verdict = ScriptVerdict::kPassed;
    result.seconds = 0.25;
    result.report.result.seconds = 32;
    return result;
}

TestRun::Result failed(std::string const& script, std::uint64_t seed)
{
    TestRun::Result result = passed(script, seed);
    result.verdict = ScriptVerdict::kFailed;
    result.reasons = {script + ":3: wait CallHeldEvent: it did not come"};
    result.kept = "/tmp/run/a-" + std::to_string(seed);
    return result;
}

TestRun::Result with(TestRun::Result result, ScriptVerdict verdict)
{
    result.verdict = verdict;
    return result;
}

}  // namespace

TEST(TestOutput, Count_AddsEachVerdict)
{
    TestCount count{5};

    for (auto const each :
         {ScriptVerdict::kPassed, ScriptVerdict::kFailed, ScriptVerdict::kBroken, ScriptVerdict::kNotRun}) {
        count.add(each);
    }

    EXPECT_EQ(count.passed, 1U);
    EXPECT_EQ(count.failed, 2U);
}

TEST(TestOutput, ProgressLine_NamesWhatIsPlayedNow)
{
    EXPECT_EQ(progressLine({44, 12, 1}, {"a.script", "b.script"}, 80),
              "12 of 44 passed, 1 failed; now a.script, b.script");
}

TEST(TestOutput, ProgressLineAtTheEnd_NamesNothing)
{
    EXPECT_EQ(progressLine({44, 43, 1}, {}, 80), "43 of 44 passed, 1 failed");
}

TEST(TestOutput, ProgressLine_IsCutToTheColumns)
{
    EXPECT_EQ(progressLine({44, 12, 1}, {"a.script", "b.script"}, 15), "12 of 44 passed");
}

TEST(TestOutput, ResultLine_HasVerdictScriptSeedAndTime)
{
    EXPECT_EQ(resultLine(passed("a.script", 17)), "passed  a.script, seed 17, 0.25 s");
    EXPECT_EQ(resultLine(with(passed("a.script", 17), ScriptVerdict::kBroken)), "broken  a.script, seed 17, 0.25 s");
    EXPECT_EQ(resultLine(with(passed("a.script", 17), ScriptVerdict::kFailed)), "failed  a.script, seed 17, 0.25 s");
    EXPECT_EQ(resultLine(with(passed("a.script", 17), ScriptVerdict::kNotRun)), "not run a.script, seed 17, 0.25 s");
}

TEST(TestOutput, Table_HasARowForEachScript)
{
    EXPECT_EQ(resultTable({passed("a.script", 0), failed("longer.script", 0)}),
              "script         seed           time      played  result\n"
              "a.script       0            0.25 s     32.00 s  passed\n"
              "longer.script  0            0.25 s     32.00 s  failed\n");
}

TEST(TestOutput, Table_AddsTheSeedsOfAScript)
{
    EXPECT_EQ(resultTable({passed("a.script", 1), failed("a.script", 2), passed("a.script", 3),
                           with(passed("a.script", 4), ScriptVerdict::kNotRun)}),
              "script    seed           time      played  result\n"
              "a.script  1-4          1.00 s    128.00 s  2 passed, 1 failed, 1 not run\n");
}

TEST(TestOutput, FailureList_HasReasonCommandAndFilesOfEachFailure)
{
    EXPECT_EQ(failureList({passed("a.script", 1), failed("b c.script", 2),
                           with(passed("d.script", 3), ScriptVerdict::kNotRun)}),
              "failed: b c.script, seed 2\n"
              "    b c.script:3: wait CallHeldEvent: it did not come\n"
              "    again: telephone --time virtual --seed 2 play \"b c.script\"\n"
              "    files: /tmp/run/a-2\n");
}

TEST(TestOutput, FailureList_IsSafeForATerminal)
{
    TestRun::Result broken = with(failed("a.script", 2), ScriptVerdict::kBroken);
    broken.reasons = {"\x1b[2J"};

    EXPECT_EQ(failureList({broken}), "broken: a.script, seed 2\n"
                                     "    \\x1b[2J\n"
                                     "    again: telephone --time virtual --seed 2 play a.script\n"
                                     "    files: /tmp/run/a-2\n");
}

TEST(TestOutput, FailureListWithoutFailures_IsEmpty)
{
    EXPECT_EQ(failureList({passed("a.script", 1)}), "");
}

TEST(TestOutput, SummaryLine_LeavesOutWhatThereIsNot)
{
    EXPECT_EQ(summaryLine({22, 22, 0}, 0.434), "22 of 22 passed, in 0.43 s");
    EXPECT_EQ(summaryLine({22, 19, 2}, 12), "19 of 22 passed, 2 failed, 1 not run, in 12.00 s");
}

TEST(TestOutput, Cases_AreTogetherByScript)
{
    auto const cases = casesOf({passed("b.script", 1), passed("a.script", 1), failed("b.script", 2)});

    ASSERT_EQ(cases.size(), 3U);
    EXPECT_EQ(cases[0].suite, "a.script");
    EXPECT_EQ(cases[1].suite, "b.script");
    EXPECT_EQ(cases[1].name, "seed 1");
    EXPECT_EQ(cases[1].seconds, 0.25);
    EXPECT_EQ(cases[1].verdict, ScriptVerdict::kPassed);
    EXPECT_EQ(cases[2].suite, "b.script");
    EXPECT_EQ(cases[2].name, "seed 2");
    EXPECT_EQ(cases[2].verdict, ScriptVerdict::kFailed);
    EXPECT_EQ(cases[2].reasons, std::vector<std::string>{"b.script:3: wait CallHeldEvent: it did not come"});
}

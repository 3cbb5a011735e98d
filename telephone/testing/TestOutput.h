// What a test run writes: while it plays, its progress; at the end, a table of the scripts and everything about those
// that failed. Pure functions.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "telephone/testing/TestRun.h"

namespace telephone {

// How far a run has come.
struct TestCount
{
    std::size_t all = 0;
    std::size_t passed = 0;
    std::size_t failed = 0;  // or broken

    void add(ScriptVerdict verdict);
};

// "12 of 44 passed, 1 failed; now a.script, b.script", cut to the columns.
[[nodiscard]] std::string progressLine(TestCount const& count, std::vector<std::string> const& running,
                                       std::size_t columns);
// "passed  a.script, seed 17, 0.5 s"
[[nodiscard]] std::string resultLine(TestRun::Result const& result);
// A row for each script, with all its seeds.
[[nodiscard]] std::string resultTable(std::vector<TestRun::Result> const& results);
// Of each script that has left files, because it failed or was playing when the run was ended: with which seed, why,
// the command that repeats it, and where they are. Empty if there is none.
[[nodiscard]] std::string failureList(std::vector<TestRun::Result> const& results);
// "43 of 44 passed, 1 failed, in 2.1 s"
[[nodiscard]] std::string summaryLine(TestCount const& count, double seconds);
// For JUnit: a suite for each script, a case for each seed.
[[nodiscard]] std::vector<ScriptCase> casesOf(std::vector<TestRun::Result> const& results);

}  // namespace telephone

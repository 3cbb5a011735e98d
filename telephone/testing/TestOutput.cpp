#include "telephone/testing/TestOutput.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/access/Words.h"
#include "telephone/display/SafeText.h"
#include "telephone/testing/Seeds.h"

namespace telephone {

namespace {

std::string_view wordFor(ScriptVerdict verdict)
{
    switch (verdict) {
    case ScriptVerdict::kPassed:
        return "passed";
    case ScriptVerdict::kFailed:
        return "failed";
    case ScriptVerdict::kBroken:
        return "broken";
    case ScriptVerdict::kNotRun:
        return "not run";
    }
    return "";
}

bool isFailure(ScriptVerdict verdict)
{
    return verdict == ScriptVerdict::kFailed || verdict == ScriptVerdict::kBroken;
}

// The results of a script with all its seeds.
struct TableRow
{
    std::map<ScriptVerdict, std::size_t> counts;
    std::optional<Seeds> seeds;
    double seconds = 0;
    double played = 0;

    void add(TestRun::Result const& result)
    {
        ++counts[result.verdict];
        seeds = {seeds ? seeds->first : result.task.seed, result.task.seed};
        seconds += result.seconds;
        played += result.report.result.seconds;
    }
    // "passed", or "998 passed, 2 failed"
    [[nodiscard]] std::string verdict() const
    {
        std::vector<std::string> parts;
        for (auto const& [each, count] : counts) {
            bool const isAlone = counts.size() == 1;
            parts.push_back(isAlone ? std::string(wordFor(each)) : fmt::format("{} {}", count, wordFor(each)));
        }
        return fmt::format("{}", fmt::join(parts, ", "));
    }
};

std::string titleOf(TestTask const& task)
{
    return fmt::format("{}, seed {}", task.script, task.seed);
}

}  // namespace

void TestCount::add(ScriptVerdict verdict)
{
    passed += verdict == ScriptVerdict::kPassed ? 1U : 0U;
    failed += isFailure(verdict) ? 1U : 0U;
}

std::string progressLine(TestCount const& count, std::vector<std::string> const& running, std::size_t columns)
{
    std::string const now = running.empty() ? "" : fmt::format("; now {}", fmt::join(running, ", "));
    return fmt::format("{} of {} passed, {} failed{}", count.passed, count.all, count.failed, now).substr(0, columns);
}

std::string resultLine(TestRun::Result const& result)
{
    return fmt::format("{:<7} {}, {:.2f} s", wordFor(result.verdict), titleOf(result.task), result.seconds);
}

std::string resultTable(std::vector<TestRun::Result> const& results)
{
    std::map<std::string, TableRow> rows;
    std::size_t width = 0;
    for (TestRun::Result const& each : results) {
        rows[each.task.script].add(each);
        width = std::max(width, each.task.script.size());
    }
    std::string text = fmt::format("{:<{}}  {:<8}  {:>9}  {:>10}  result\n", "script", width, "seed", "time", "played");
    for (auto const& [script, row] : rows) {
        text += fmt::format("{:<{}}  {:<8}  {:>7.2f} s  {:>8.2f} s  {}\n", script, width, row.seeds->text(),
                            row.seconds, row.played, row.verdict());
    }
    return text;
}

std::string failureList(std::vector<TestRun::Result> const& results)
{
    std::string text;
    for (TestRun::Result const& each : results) {
        if (each.kept.empty()) {
            continue;
        }
        text += fmt::format("{}: {}\n", wordFor(each.verdict), titleOf(each.task));
        for (std::string const& reason : each.reasons) {
            text += fmt::format("    {}\n", safeText(reason));
        }
        text += fmt::format("    again: telephone {} play {}\n", quoteWords(each.task.options),
                            quoteWords({each.task.script}));
        text += fmt::format("    files: {}\n", each.kept);
    }
    return text;
}

std::string summaryLine(TestCount const& count, double seconds)
{
    std::size_t const left = count.all - count.passed - count.failed;
    return fmt::format("{} of {} passed{}{}, in {:.2f} s", count.passed, count.all,
                       count.failed == 0 ? "" : fmt::format(", {} failed", count.failed),
                       left == 0 ? "" : fmt::format(", {} not run", left), seconds);
}

std::vector<ScriptCase> casesOf(std::vector<TestRun::Result> const& results)
{
    std::vector<ScriptCase> cases;
    std::ranges::transform(results, std::back_inserter(cases), [](TestRun::Result const& each) {
        return ScriptCase{each.task.script, fmt::format("seed {}", each.task.seed), each.seconds, each.verdict,
                          each.reasons};
    });
    std::ranges::stable_sort(cases, {}, &ScriptCase::suite);
    return cases;
}

}  // namespace telephone

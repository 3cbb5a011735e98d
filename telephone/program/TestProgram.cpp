// The command test.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/Words.h"
#include "telephone/console/ScriptOptions.h"
#include "telephone/console/Terminal.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/framework/TelephoneProcess.h"
#include "telephone/program/CommonOptions.h"
#include "telephone/program/Programs.h"
#include "telephone/program/ScriptText.h"
#include "telephone/testing/Coverage.h"
#include "telephone/testing/ScriptFiles.h"
#include "telephone/testing/TestOutput.h"
#include "telephone/testing/TestRun.h"
#include "telephone/testing/WorkingFolder.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

namespace fs = std::filesystem;

constexpr int kUsage = 2;
constexpr int kEveryMessage = 6;

// --- the plan

Outcome<std::vector<std::string>> scriptsOf(CommandLine const& line)
{
    if (!line.logFile.empty() || !line.socket.empty()) {
        return refuse(RefusalKind::kBadInput,
                      "each telephone of a test has a log and a socket of its own: leave out --log-file and --socket");
    }
    return findScripts(line.test.scripts);
}

// How the log and the socket of a telephone stay in its working folder.
std::vector<std::string> workingOptions(CommandLine const& line)
{
    return {"--log-level", std::to_string(line.logLevel.value_or(kEveryMessage)), "--log-file", "log", "--socket",
            "socket"};
}

// The names of the scripts without folder and ending; a number follows if several are the same.
std::vector<std::string> folderNames(std::vector<std::string> const& scripts)
{
    std::map<std::string, int> uses;
    std::vector<std::string> names;
    for (std::string const& each : scripts) {
        std::string const name = fs::path(each).stem().string();
        int const use = ++uses[name];
        names.push_back(use == 1 ? name : fmt::format("{}.{}", name, use));
    }
    return names;
}

// The time of a script: its own word, that of the command line, or virtual.
std::string timeOf(std::string const& script, CommandLine const& line, StopSignal const& stop)
{
    auto const options = readScriptText(script, stop.descriptor()).and_then(scriptOptions);
    std::string const own = options ? options->time : std::string();
    // A wrong one is left to its telephone, which says what is wrong.
    bool const decides = !own.empty() && CommandLine().setTime(own);
    return decides ? own : line.time.empty() ? "virtual" : line.time;
}

Seeds seedsOf(CommandLine const& line)
{
    return line.test.seeds.value_or(Seeds{line.seed, line.seed});
}

// All scripts with the first seed, then with the next one. In real time a seed changes nothing.
std::vector<TestTask> tasksFor(CommandLine const& line, std::vector<std::string> const& scripts, StopSignal const& stop)
{
    auto options = commonOptions(line);
    if (!line.configuration.empty()) {
        options.insert(options.end(), {"--config", fs::absolute(line.configuration).string()});
    }
    auto const names = folderNames(scripts);
    std::vector<std::string> times;
    std::ranges::transform(scripts, std::back_inserter(times),
                           [&](std::string const& each) { return timeOf(each, line, stop); });
    Seeds const seeds = seedsOf(line);
    std::vector<TestTask> tasks;
    for (std::uint64_t seed = seeds.first; seed - seeds.first <= seeds.last - seeds.first; ++seed) {
        for (std::size_t i = 0; i < scripts.size(); ++i) {
            bool const isReal = times[i] == CommandLine::kRealTime;
            if (isReal && seed != seeds.first) {
                continue;
            }
            std::vector<std::string> all{"--time", times[i]};
            if (!isReal) {
                all.insert(all.end(), {"--seed", std::to_string(seed)});
            }
            all.insert(all.end(), options.begin(), options.end());
            tasks.push_back({scripts[i], seed, fmt::format("{}-{}", names[i], seed), all});
        }
    }
    return tasks;
}

Outcome<TestPlan> planFor(CommandLine const& line, std::vector<std::string> const& scripts, StopSignal const& stop)
{
    return workingFolder(line.test.files).map([&](std::string const& folder) {
        return TestPlan{TelephoneProcess::ownProgram(), workingOptions(line), tasksFor(line, scripts, stop),
                        jobsOf(line.test.jobs),         line.test.limit,      folder};
    });
}

// --- the run

// On a terminal, one line that is written again and again; otherwise a line for each script, with several seeds only
// for one that did not pass.
class Progress
{
public:
    Progress(std::size_t all, bool withPassed)
        : withPassed_(withPassed)
    {
        count_.all = all;
    }

    // A task that is not over has been started.
    void note(TestRun::Result const& result, std::vector<std::string> const& running)
    {
        count_.add(result.verdict);
        if (std::size_t const columns = terminalWidth(); columns != 0) {
            std::cout << "\r\x1b[K" << progressLine(count_, running, columns - 1) << std::flush;
        } else if (isWorthALine(result.verdict)) {
            std::cout << resultLine(result) << std::endl;
        }
    }
    void clear() const
    {
        if (terminalWidth() != 0) {
            std::cout << "\r\x1b[K";
        }
    }
    [[nodiscard]] TestCount const& count() const { return count_; }

private:
    [[nodiscard]] bool isWorthALine(ScriptVerdict verdict) const
    {
        return verdict != ScriptVerdict::kNotRun && (withPassed_ || verdict != ScriptVerdict::kPassed);
    }

    bool const withPassed_;
    TestCount count_;
};

Outcome<> reportCoverage(std::vector<TestRun::Result> const& results, std::string const& file)
{
    Coverage coverage;
    for (TestRun::Result const& each : results) {
        coverage.add(each.report.touched);
    }
    constexpr std::size_t kUsualWidth = 100;
    std::size_t const columns = terminalWidth();
    std::cout << "\ncoverage\n" << coverage.table(columns == 0 ? kUsualWidth : columns);
    if (file.empty()) {
        return {};
    }
    std::ofstream stream(file);
    stream << coverage.json() << std::flush;
    return stream ? Outcome<>() : refuse(RefusalKind::kUnavailable, file + ": cannot be written");
}

Outcome<> writeFiles(CommandLine const& line, std::vector<TestRun::Result> const& results)
{
    return (line.junit.empty() ? Outcome<>() : writeJUnit(casesOf(results), line.junit)).and_then([&] {
        return line.test.coverage ? reportCoverage(results, *line.test.coverage) : Outcome<>();
    });
}

Outcome<int> runPlan(CommandLine const& line, TestPlan const& plan, StopSignal const& stop)
{
    auto const start = SteadyClock::now();
    Progress progress(plan.tasks.size(), seedsOf(line).first == seedsOf(line).last);
    TestRun run(plan, stop.descriptor(), [&](TestRun::Result const& result) { progress.note(result, run.running()); });
    auto const results = run.play();
    double const seconds = std::chrono::duration<double>(SteadyClock::now() - start).count();
    progress.clear();
    std::cout << "\n" << resultTable(results) << "\n" << failureList(results);
    auto const written = writeFiles(line, results);
    std::cout << "\n" << summaryLine(progress.count(), seconds) << std::endl;
    std::error_code ignored;
    fs::remove(plan.folder, ignored);  // if nothing was kept
    return written.map([&progress] { return progress.count().passed == progress.count().all ? 0 : 1; });
}

}  // namespace

Outcome<int> runTest(CommandLine const& line, StopSignal const& stop)
{
    auto const scripts = scriptsOf(line);
    if (!scripts) {
        std::cerr << "telephone: " << scripts.error().reason << std::endl;
        return kUsage;
    }
    return planFor(line, *scripts, stop).and_then([&](TestPlan const& plan) { return runPlan(line, plan, stop); });
}

}  // namespace telephone

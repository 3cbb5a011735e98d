// The command chaos.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <spdlog/fmt/fmt.h>

#include "telephone/chaos/ChaosScript.h"
#include "telephone/exchange/BuiltInNumbers.h"
#include "telephone/faults/FaultKinds.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/framework/TelephoneProcess.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/testing/TestOutput.h"
#include "telephone/testing/TestRun.h"
#include "telephone/testing/WorkingFolder.h"

namespace telephone {

namespace {

namespace fs = std::filesystem;

constexpr int kHoursAtOnce = 50;  // whose scripts exist at a time
constexpr double kLimit = 300;    // seconds for one

ChaosGround groundOf(Configuration const& configuration)
{
    ChaosGround ground;
    for (LineConfiguration const& line : configuration.lines) {
        ground.lines.push_back(line.id);
        ground.numbers.push_back(line.id);
    }
    for (exchange::BuiltInNumber const& each : exchange::kBuiltInNumbers) {
        ground.numbers.emplace_back(each.number);
    }
    for (KeyConfiguration const& key : configuration.keys) {
        ground.keys.push_back(key.number);
    }
    for (FaultKind const& each : faultKinds()) {
        ground.faults.push_back(usageOf(each));
    }
    return ground;
}

// Plays random hours. Keeps the files of a failed one.
class Chaos
{
public:
    Chaos(CommandLine const& line, StopSignal const& stop, ChaosGround ground, std::string folder)
        : line_(line)
        , stop_(stop)
        , ground_(std::move(ground))
        , folder_(std::move(folder))
    {}

    // The hours that were played; refused with the shortest script for the first failure.
    Outcome<int> run()
    {
        for (int hour = 0; hour < line_.hours && !stop_.isRaised(); hour += kHoursAtOnce) {
            for (std::uint64_t const seed : failuresIn(hour, std::min(hour + kHoursAtOnce, line_.hours))) {
                if (failsAgain(seed)) {
                    return explain(seed);
                }
            }
            std::cout << fmt::format("{} of {} hours\n", std::min(hour + kHoursAtOnce, line_.hours), line_.hours)
                      << std::flush;
        }
        return 0;
    }

private:
    // Every hour has its own seed, for the script as for the order of its threads.
    [[nodiscard]] std::uint64_t seedOf(int hour) const { return line_.seed + static_cast<std::uint64_t>(hour) + 1; }

    std::string write(ScriptLines const& lines, std::string const& name) const
    {
        std::string file = folder_ + "/" + name + ".script";
        std::ofstream(file) << fmt::format("{}\n", fmt::join(lines, "\n"));
        return file;
    }

    [[nodiscard]] TestTask taskOf(std::string const& script, std::uint64_t seed) const
    {
        std::vector<std::string> options{"--time", "virtual", "--seed", std::to_string(seed), "--check", "events"};
        if (!line_.configuration.empty()) {
            options.insert(options.end(), {"--config", fs::absolute(line_.configuration).string()});
        }
        return {script, seed, fs::path(script).stem().string(), options};
    }

    [[nodiscard]] std::vector<TestRun::Result> play(std::vector<TestTask> tasks, int logLevel) const
    {
        TestPlan const plan{TelephoneProcess::ownProgram(),
                            {"--log-level", std::to_string(logLevel), "--log-file", "log", "--socket", "socket"},
                            std::move(tasks),
                            jobsOf(line_.test.jobs),
                            kLimit,
                            folder_};
        return TestRun(plan, stop_.descriptor(), [](TestRun::Result const&) {}).play();
    }

    static bool hasFailed(TestRun::Result const& result)
    {
        return result.verdict != ScriptVerdict::kPassed && result.verdict != ScriptVerdict::kNotRun;
    }

    [[nodiscard]] std::vector<std::uint64_t> failuresIn(int first, int end) const
    {
        std::vector<TestTask> tasks;
        for (int hour = first; hour < end; ++hour) {
            std::uint64_t const seed = seedOf(hour);
            tasks.push_back(taskOf(write(chaosScript(ground_, seed), fmt::format("hour-{}", seed)), seed));
        }
        auto const results = play(tasks, 0);
        for (TestTask const& each : tasks) {
            fs::remove(each.script);
            fs::remove_all(folder_ + "/" + each.name);  // the shortened script leaves better files
        }
        std::vector<std::uint64_t> seeds;
        for (TestRun::Result const& each : results) {
            if (hasFailed(each)) {
                std::cout << fmt::format("the hour with seed {} fails: {}\n", each.task.seed,
                                         fmt::join(each.reasons, "; "))
                          << std::flush;
                seeds.push_back(each.task.seed);
            }
        }
        return seeds;
    }

    // A run in virtual time is always the same, unless something outside ends it, or the machine is so busy that it
    // takes longer than it may.
    [[nodiscard]] bool failsAgain(std::uint64_t seed) const
    {
        bool const fails = attemptFails(chaosScript(ground_, seed), seed);
        if (!fails) {
            std::cout << "played again, it passes: something on this machine ended it, or kept it waiting\n"
                      << std::flush;
        }
        return fails;
    }

    [[nodiscard]] bool attemptFails(ScriptLines const& lines, std::uint64_t seed) const
    {
        bool const fails = !stop_.isRaised() && hasFailed(play({taskOf(write(lines, "attempt"), seed)}, 0).front());
        fs::remove(folder_ + "/attempt.script");
        fs::remove_all(folder_ + "/attempt");
        return fails;
    }

    Outcome<int> explain(std::uint64_t seed) const
    {
        std::cout << "looking for the lines that matter\n" << std::flush;
        auto const fails = [&](ScriptLines const& lines) { return attemptFails(lines, seed); };
        ScriptLines const lines = shortened(chaosScript(ground_, seed), fails);
        std::string const script = write(lines, fmt::format("failure-{}", seed));
        auto const results = play({taskOf(script, seed)}, kLogDetail);
        std::cout << fmt::format("{}\n", fmt::join(lines, "\n")) << failureList(results) << std::flush;
        return 1;
    }

    CommandLine const& line_;
    StopSignal const& stop_;
    ChaosGround const ground_;
    std::string const folder_;
};

}  // namespace

Outcome<int> runChaos(CommandLine const& line, StopSignal const& stop)
{
    return startConfiguration(line).and_then([&](Configuration const& configuration) {
        return workingFolder(line.test.files).and_then([&](std::string const& folder) {
            auto status = Chaos(line, stop, groundOf(configuration), folder).run();
            std::error_code ignored;
            fs::remove(folder, ignored);  // if nothing was kept
            return status;
        });
    });
}

}  // namespace telephone

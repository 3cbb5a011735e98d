#include "telephone/testing/TestRun.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <utility>

#include <poll.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto kGrace = 2s;  // to write the report after SIGTERM
constexpr char const* kReport = "report.json";
constexpr std::size_t kMostErrors = 20;  // lines of its standard error

SteadyClock::duration secondsOf(double seconds)
{
    return std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(seconds));
}

std::vector<std::string> failureTexts(std::string const& script, ScriptResult const& result)
{
    std::vector<std::string> texts;
    std::ranges::transform(result.failures, std::back_inserter(texts),
                           [&script](ScriptFailure const& each) { return failureText(script, each); });
    return texts;
}

}  // namespace

TestRun::TestRun(TestPlan plan, int stop, Listener listener)
    : plan_(std::move(plan))
    , stop_(stop)
    , listener_(std::move(listener))
{
    std::ranges::transform(plan_.tasks, std::back_inserter(results_), [](TestTask const& task) {
        return Result{task, ScriptVerdict::kNotRun, {"the run was ended before"}, 0, {}, {}};
    });
}

std::vector<TestRun::Result> TestRun::play()
{
    startMore();
    while (!running_.empty() && !mustStop()) {
        wait();
        if (!mustStop()) {
            takeEnded();
            endLate();
            startMore();
        }
    }
    stopAll();
    return results_;
}

void TestRun::startMore()
{
    while (running_.size() < plan_.jobs && next_ < plan_.tasks.size()) {
        start(next_++);
    }
}

void TestRun::start(std::size_t number)
{
    TestTask const& task = plan_.tasks[number];
    std::string const folder = folderOf(task);
    std::error_code error;
    fs::remove_all(folder, error);  // of an earlier run
    fs::create_directories(folder, error);
    std::vector<std::string> words{plan_.program};
    words.insert(words.end(), task.options.begin(), task.options.end());
    words.insert(words.end(), plan_.workingOptions.begin(), plan_.workingOptions.end());
    words.insert(words.end(), {"play", "--report", kReport, fs::absolute(task.script).string()});
    auto process = TelephoneProcess::start(std::move(words), folder);
    if (!process) {
        return finish(number, Result{task, ScriptVerdict::kBroken, {process.error().reason}, 0, {}, folder});
    }
    auto const now = SteadyClock::now();
    running_.push_back({number, *std::move(process), now, now + secondsOf(plan_.limit)});
    listener_(results_[number]);
}

void TestRun::wait() const
{
    std::vector<pollfd> waited{{stop_, POLLIN, 0}};
    auto deadline = kNoDeadline;
    for (Running const& each : running_) {
        waited.push_back({each.process.descriptor(), POLLIN, 0});
        deadline = std::min(deadline, each.deadline);
    }
    pollUntil(waited, deadline, "telephones");
}

void TestRun::takeEnded()
{
    for (auto each = running_.begin(); each != running_.end();) {
        if (isReadable(each->process.descriptor())) {
            Running ended = std::move(*each);
            each = running_.erase(each);
            judge(std::move(ended));
        } else {
            ++each;
        }
    }
}

void TestRun::endLate()
{
    for (Running& each : running_) {
        if (SteadyClock::now() < each.deadline) {
            continue;
        }
        if (each.isLate) {
            each.process.kill();
        } else {
            each.process.terminate();
        }
        each.isLate = true;
        each.deadline = SteadyClock::now() + kGrace;
    }
}

void TestRun::judge(Running ended)
{
    int const status = ended.process.wait();
    Result result = verdictOn(ended, status);
    result.seconds = std::chrono::duration<double>(SteadyClock::now() - ended.start).count();
    std::string const folder = folderOf(result.task);
    if (result.verdict == ScriptVerdict::kPassed) {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    } else {
        result.kept = folder;
    }
    finish(ended.task, std::move(result));
}

TestRun::Result TestRun::verdictOn(Running const& ended, int status) const
{
    TestTask const& task = plan_.tasks[ended.task];
    auto const read = readPlayReport(folderOf(task) + "/" + kReport);
    Result result{task, ScriptVerdict::kPassed, {}, 0, read.value_or(PlayReport()), {}};
    result.reasons = failureTexts(task.script, result.report.result);
    if (ended.isLate) {
        result.verdict = ScriptVerdict::kBroken;
        result.reasons.insert(result.reasons.begin(), fmt::format("it did not end within {} s", plan_.limit));
    } else if (!result.reasons.empty()) {
        result.verdict = ScriptVerdict::kFailed;
    } else if (!read || status != 0) {
        result.verdict = ScriptVerdict::kBroken;
        result.reasons = TelephoneProcess::lastErrors(folderOf(task), kMostErrors);
        result.reasons.insert(result.reasons.begin(), TelephoneProcess::endWords(status));
    }
    return result;
}

void TestRun::finish(std::size_t task, Result result)
{
    listener_(result);
    results_[task] = std::move(result);
}

void TestRun::stopAll()
{
    for (Running const& each : running_) {
        each.process.terminate();
    }
    auto const end = SteadyClock::now() + kGrace;
    for (Running const& each : running_) {
        std::array<pollfd, 1> waited{{{each.process.descriptor(), POLLIN, 0}}};
        pollUntil(waited, end, "telephones that end");
        results_[each.task].kept = folderOf(plan_.tasks[each.task]);
    }
    // The destructors end and take those that are left.
    running_.clear();
}

bool TestRun::mustStop() const
{
    return isReadable(stop_);
}

std::vector<std::string> TestRun::running() const
{
    std::vector<std::string> scripts;
    std::ranges::transform(running_, std::back_inserter(scripts),
                           [this](Running const& each) { return plan_.tasks[each.task].script; });
    return scripts;
}

std::string TestRun::folderOf(TestTask const& task) const
{
    return plan_.folder + "/" + task.name;
}

}  // namespace telephone

// Plays scripts, each with each seed, in processes of their own, several at a time. The command test owns the one test
// run; it uses one thread and has no other.
//
//     TestRun run(plan, stop.descriptor(), [](TestRun::Result const& each) { ... });
//     for (TestRun::Result const& each : run.play()) { ... }
//
// Whatever the scripts do, its own time is real: a telephone that does not end in time is ended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "telephone/console/ScriptReport.h"
#include "telephone/framework/TelephoneProcess.h"
#include "telephone/testing/PlayReport.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

// A script with a seed.
struct TestTask
{
    std::string script;  // as the user names it
    std::uint64_t seed = 0;
    std::string name;                  // of its working folder
    std::vector<std::string> options;  // of the telephone, before the command play
};

struct TestPlan
{
    std::string program;                      // file of the telephone
    std::vector<std::string> workingOptions;  // beside those of the task: how and where it logs
    std::vector<TestTask> tasks;
    std::size_t jobs = 1;  // processes at a time
    double limit = 0;      // seconds for each
    std::string folder;    // of the working folders; exists
};

class TestRun
{
public:
    struct Result
    {
        TestTask task;
        ScriptVerdict verdict = ScriptVerdict::kNotRun;
        std::vector<std::string> reasons;  // why it did not pass
        double seconds = 0;                // that the process took
        PlayReport report;                 // empty if the telephone wrote none
        std::string kept;                  // folder with its files; empty: it passed, or was not begun
    };
    using Listener = std::function<void(Result const&)>;

    // `stop` is a descriptor that becomes readable when the run must end. The listener is told of each task when it is
    // started, and with its verdict when it has ended.
    TestRun(TestPlan plan, int stop, Listener listener);

    // The results in the order of the plan. After a stop, the tasks that had not ended were not run.
    std::vector<Result> play();

    // Scripts that are being played.
    [[nodiscard]] std::vector<std::string> running() const;

private:
    struct Running
    {
        std::size_t task;  // its number in the plan
        TelephoneProcess process;
        SteadyClock::time_point start;
        SteadyClock::time_point deadline;
        bool isLate = false;  // it was told to end
    };

    void startMore();
    void start(std::size_t task);
    // Waits until a process has ended, one is late, or the run must end.
    void wait() const;
    void endLate();
    void takeEnded();
    void judge(Running ended);
    [[nodiscard]] Result verdictOn(Running const& ended, int status) const;
    void finish(std::size_t task, Result result);
    void stopAll();
    [[nodiscard]] bool mustStop() const;
    [[nodiscard]] std::string folderOf(TestTask const& task) const;

    TestPlan const plan_;
    int const stop_;
    Listener const listener_;
    std::size_t next_ = 0;  // task to start
    std::list<Running> running_;
    std::vector<Result> results_;
};

}  // namespace telephone

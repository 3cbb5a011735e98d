// In real time, what waits through the telephone's own time costs as much as what waits through the standard's: the
// clock, a message to another thread and its reply, a poll. Each pair does the same work.
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

#include <benchmark/benchmark.h>
#include <poll.h>
#include <unistd.h>

#include "telephone/time/Condition.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Thread.h"
#include "telephone/time/Waiting.h"

namespace {

struct StandardTime
{
    using Clock = std::chrono::steady_clock;
    using Thread = std::thread;

    class Condition
    {
    public:
        template <typename Predicate>
        void wait(std::unique_lock<std::mutex>& lock, Predicate isReady)
        {
            changed_.wait(lock, isReady);
        }
        void notifyOne() { changed_.notify_one(); }

    private:
        std::condition_variable changed_;
    };

    static int pollUntil(pollfd& file, Clock::time_point deadline)
    {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        return ::poll(&file, 1, static_cast<int>(left.count()));
    }
};

struct TelephoneTime
{
    using Clock = telephone::SteadyClock;

    struct Thread : telephone::Thread
    {
        explicit Thread(std::function<void()> body)
            : telephone::Thread("replies", std::move(body))
        {}
    };

    struct Condition : telephone::Condition
    {
        Condition()
            : telephone::Condition("a message")
        {}
    };

    static int pollUntil(pollfd& file, Clock::time_point deadline)
    {
        return telephone::pollUntil({&file, 1}, deadline, "a file");
    }
};

template <typename Time>
void readClock(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(Time::Clock::now());
    }
}
BENCHMARK(readClock<StandardTime>)->Name("standardClock");
BENCHMARK(readClock<TelephoneTime>)->Name("telephoneClock");

// Counts messages; odd numbers are messages, even ones their replies.
template <typename Time>
class Exchange
{
public:
    static constexpr std::uint64_t kEnd = UINT64_MAX;

    void reply()
    {
        std::unique_lock lock(mutex_);
        while (true) {
            changed_.wait(lock, [this] { return count_ % 2 == 1; });
            if (count_ == kEnd) {
                return;
            }
            ++count_;
            replied_.notifyOne();
        }
    }

    void ask()
    {
        std::unique_lock lock(mutex_);
        ++count_;
        changed_.notifyOne();
        replied_.wait(lock, [this] { return count_ % 2 == 0; });
    }

    void end()
    {
        std::lock_guard const lock(mutex_);
        count_ = kEnd;
        changed_.notifyOne();
    }

private:
    std::mutex mutex_;
    typename Time::Condition changed_;
    typename Time::Condition replied_;
    std::uint64_t count_ = 0;
};

template <typename Time>
void askAnotherThread(benchmark::State& state)
{
    Exchange<Time> exchange;
    typename Time::Thread thread([&exchange] { exchange.reply(); });
    for (auto _ : state) {
        exchange.ask();
    }
    exchange.end();
    thread.join();
}
BENCHMARK(askAnotherThread<StandardTime>)->Name("standardHandOver")->MeasureProcessCPUTime();
BENCHMARK(askAnotherThread<TelephoneTime>)->Name("telephoneHandOver")->MeasureProcessCPUTime();

template <typename Time>
void pollReadable(benchmark::State& state)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0 || write(ends[1], "x", 1) != 1) {
        state.SkipWithError("no pipe");
    }
    pollfd file{ends[0], POLLIN, 0};
    for (auto _ : state) {
        benchmark::DoNotOptimize(Time::pollUntil(file, Time::Clock::now() + std::chrono::seconds(1)));
    }
    close(ends[0]);
    close(ends[1]);
}
BENCHMARK(pollReadable<StandardTime>)->Name("standardPoll");
BENCHMARK(pollReadable<TelephoneTime>)->Name("telephonePoll");

}  // namespace

BENCHMARK_MAIN();

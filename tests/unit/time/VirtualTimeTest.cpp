#include "telephone/time/VirtualTime.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "telephone/time/Condition.h"
#include "telephone/time/Gate.h"
#include "telephone/time/Thread.h"
#include "telephone/time/Waiting.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;

// The order in which three threads run that all can run at once.
std::string orderOfThree(std::uint64_t seed)
{
    VirtualTime const time({.seed = seed});
    std::string order;
    std::vector<Thread> threads;
    for (char name : {'a', 'b', 'c'}) {
        threads.emplace_back(std::string(1, name), [&order, name] {
            for (int i = 0; i < 3; ++i) {
                order += name;
                sleepFor(0s);
            }
        });
    }
    for (Thread& each : threads) {
        each.join();
    }
    return order;
}

TEST(VirtualTimeTest, RealTime_IsTheSystems)
{
    auto const before = std::chrono::steady_clock::now();
    auto const now = SteadyClock::now();

    EXPECT_FALSE(isVirtual());
    EXPECT_LE(before, now);
    EXPECT_LE(now, std::chrono::steady_clock::now());
    EXPECT_LT(std::chrono::abs(wallTime() - std::chrono::system_clock::now()), 1min);
    EXPECT_EQ(virtualSeed(), 0U);
}

TEST(VirtualTimeTest, WallClock_BeginsWhereItIsTold)
{
    auto const start = std::chrono::sys_days(std::chrono::March / 30 / 2025) + 59min;
    VirtualTime const time({.start = start});

    EXPECT_EQ(wallTime(), start);
    sleepFor(90s);
    EXPECT_EQ(wallTime(), start + 90s);
}

TEST(VirtualTimeTest, WallClock_BeginsIn2000IfNothingIsSaid)
{
    VirtualTime const time({});

    EXPECT_EQ(wallTime().time_since_epoch(), 946'684'800s);
}

TEST(VirtualTimeTest, Calendar_IsThatOfUtcInVirtualTime)
{
    char const* const zone = std::getenv("TZ");
    std::string const before = zone ? zone : "";
    setenv("TZ", "JST-9", 1);
    tzset();
    auto const time = std::chrono::system_clock::time_point(946'684'800s);
    auto const hourOf = [](std::tm const& parts) {
        return std::to_string(parts.tm_year) + " " + std::to_string(parts.tm_hour);
    };
    {
        VirtualTime const virtualTime({});

        EXPECT_EQ(hourOf(localCalendar(time)), "100 0");
    }
    EXPECT_EQ(hourOf(localCalendar(time)), "100 9");
    EXPECT_EQ(hourOf(utcCalendar(time)), "100 0");
    zone ? setenv("TZ", before.c_str(), 1) : unsetenv("TZ");
    tzset();
}

TEST(VirtualTimeTest, Threads_WithoutSeedRunInTheOrderOfTheirWaits)
{
    EXPECT_EQ(orderOfThree(0), "abcabcabc");
}

TEST(VirtualTimeTest, Threads_RunInTheSameOrderForTheSameSeed)
{
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        EXPECT_EQ(orderOfThree(seed), orderOfThree(seed)) << seed;
    }
}

TEST(VirtualTimeTest, Threads_RunInOtherOrdersForOtherSeeds)
{
    std::set<std::string> orders;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        orders.insert(orderOfThree(seed));
    }

    EXPECT_GT(orders.size(), 10U);
}

TEST(VirtualTimeTest, RandomNumbers_ComeFromTheSeed)
{
    auto const firstOf = [](std::uint64_t seed) {
        VirtualTime const time({.seed = seed});
        return std::vector{randomNumber(), randomNumber()};
    };

    EXPECT_EQ(firstOf(7), firstOf(7));
    EXPECT_NE(firstOf(7), firstOf(8));
}

// Whoever has noted a seed finds the same run in another version.
TEST(VirtualTimeTest, Seed_KeepsItsMeaning)
{
    EXPECT_EQ(orderOfThree(1), "cabcabbca");
    EXPECT_EQ(orderOfThree(2), "abaacccbb");
    VirtualTime const time({.seed = 7});
    EXPECT_EQ(virtualSeed(), 7U);
    EXPECT_EQ(randomNumber(), 8930828567890437529U);
    EXPECT_EQ(randomNumber(), 16926849584203755386U);
}

TEST(VirtualTimeTest, RealTime_HasNoTurns)
{
    Driving const driving;
    Visit const visit;
    Absence const absence;

    EXPECT_FALSE(isVirtual());
    EXPECT_NE(randomNumber(), randomNumber());
}

TEST(VirtualTimeTest, Time_StandsWhileOnlyOthersWaitForIt)
{
    int const never = eventfd(0, EFD_CLOEXEC);
    int const soon = eventfd(0, EFD_CLOEXEC);
    {
        VirtualTime const time({});
        std::atomic<bool> woke{false};
        Thread sleeper("sleeper", [&woke] {
            sleepFor(1s);
            woke = true;
        });
        std::thread outside([soon] { eventfd_write(soon, 1); });
        std::array<pollfd, 2> files{{{never, POLLIN, 0}, {soon, POLLIN, 0}}};

        EXPECT_EQ(pollUntil(files, kNoDeadline, "a person"), 1);

        EXPECT_FALSE(woke);
        EXPECT_EQ(wallTime().time_since_epoch(), 946'684'800s);
        outside.join();
        sleeper.join();
        EXPECT_TRUE(woke);
    }
    close(never);
    close(soon);
}

TEST(VirtualTimeTest, Driving_MovesTimeForAnotherThread)
{
    int const never = eventfd(0, EFD_CLOEXEC);
    int const done = eventfd(0, EFD_CLOEXEC);
    {
        VirtualTime const time({});
        Thread driver("driver", [done] {
            Driving const driving;
            sleepFor(5s);
            eventfd_write(done, 1);
        });
        std::array<pollfd, 2> files{{{never, POLLIN, 0}, {done, POLLIN, 0}}};

        EXPECT_EQ(pollUntil(files, kNoDeadline, "a person"), 1);

        EXPECT_EQ(wallTime().time_since_epoch(), 946'684'805s);
        driver.join();
    }
    close(never);
    close(done);
}

TEST(VirtualTimeTest, Visitor_WaitsForItsTurnAndMayWaitInside)
{
    VirtualTime const time({});
    Gate visited("the visitor");
    SteadyClock::time_point left;
    std::thread foreign([&] {
        Visit const visit;
        Driving const driving;
        sleepFor(2s);
        left = SteadyClock::now();
        visited.open();
    });
    auto const start = SteadyClock::now();
    {
        Absence const absence;
        foreign.join();
    }

    EXPECT_TRUE(visited.waitFor(0s));
    EXPECT_EQ(left, start + 2s);
}

TEST(VirtualTimeTest, Absence_IsNoStandstill)
{
    VirtualTime const time({});
    Gate opened("somebody outside");
    Thread waiting("waiting", [&opened] { EXPECT_TRUE(opened.waitFor(SteadyClock::duration::max() / 4)); });
    std::thread outside([&opened] {
        std::this_thread::sleep_for(20ms);  // meanwhile nobody can run
        Visit const visit;
        Visit const again;
        opened.open();
    });
    {
        Absence const absence;
        outside.join();
    }
    waiting.join();
}

TEST(VirtualTimeTest, Standstill_EndsTheRunAndSaysWhoWaitsForWhat)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const standStill = [] {
        VirtualTime const time({});
        Gate gate("a call that never comes");
        Thread other("other", [] {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            Condition("an answer").wait(lock, [] { return false; });
        });
        other.join();
    };

    EXPECT_EXIT(standStill(), testing::ExitedWithCode(VirtualTime::kStandstill),
                "telephone: virtual time: nothing can happen any more\n  main waits for the end of a thread\n  other "
                "waits for an answer");
}

TEST(VirtualTimeTest, InstantThatNeverEnds_EndsTheRun)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const spin = [] {
        VirtualTime const time({.mostSteps = 1000});
        Thread sleeper("sleeper", [] { sleepFor(5s); });
        Thread other("other", [] {
            while (true) {
                sleepFor(0s);
            }
        });
        other.join();
    };

    EXPECT_EXIT(spin(), testing::ExitedWithCode(VirtualTime::kStandstill),
                "telephone: virtual time: this instant never ends\n  main waits for the end of a thread\n"
                "  sleeper waits for time to pass, 5.000000 s at most\n"
                "  other waits for time to pass, 0.000000 s at most\n");
}

}  // namespace
}  // namespace telephone

// Each in a process of its own, whose signals they block for good.
#include "telephone/framework/StopSignal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

using telephone::StopSignal;

namespace {

constexpr int kAsExpected = 42;

[[noreturn]] void endWith(bool isAsExpected)
{
    std::_Exit(isAsExpected ? kAsExpected : 1);
}

[[noreturn]] void isRaisedBy(int signal)
{
    StopSignal const stop;
    bool const before = stop.isRaised();
    kill(getpid(), signal);
    stop.wait();
    pollfd query{stop.descriptor(), POLLIN, 0};
    // Everybody sees it, however often they ask.
    endWith(!before && stop.isRaised() && stop.isRaised() && poll(&query, 1, 0) == 1);
}

[[noreturn]] void isRaisedByTheTelephone()
{
    StopSignal const stop;
    stop.raise();
    stop.wait();
    endWith(stop.isRaised());
}

[[noreturn]] void isNotRaisedByAnotherSignal()
{
    std::signal(SIGUSR1, SIG_IGN);
    StopSignal const stop;
    kill(getpid(), SIGUSR1);
    endWith(!stop.isRaised());
}

[[noreturn]] void writesToAClosedPipe()
{
    StopSignal const stop;
    std::array<int, 2> ends{};
    bool const isOpen = pipe(ends.data()) == 0 && close(ends[0]) == 0;
    endWith(isOpen && write(ends[1], "x", 1) == -1 && errno == EPIPE);
}

}  // namespace

TEST(StopSignalTest, SignalsThatEndAProgram_AreRaisedUntilTheEnd)
{
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(isRaisedBy(signal), testing::ExitedWithCode(kAsExpected), "") << signal;
    }
}

TEST(StopSignalTest, Raise_IsASignal)
{
    EXPECT_EXIT(isRaisedByTheTelephone(), testing::ExitedWithCode(kAsExpected), "");
}

TEST(StopSignalTest, OtherSignals_DoNotCount)
{
    EXPECT_EXIT(isNotRaisedByAnotherSignal(), testing::ExitedWithCode(kAsExpected), "");
}

TEST(StopSignalTest, WriteToAClosedConnection_FailsInsteadOfEndingTheProgram)
{
    EXPECT_EXIT(writesToAClosedPipe(), testing::ExitedWithCode(kAsExpected), "");
}

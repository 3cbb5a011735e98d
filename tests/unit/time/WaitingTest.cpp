#include "telephone/time/Waiting.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "telephone/time/Thread.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;

class WaitingTest : public testing::Test
{
protected:
    ~WaitingTest() override { close(event_); }

    int const event_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
};

TEST_F(WaitingTest, Poll_TellsWhichFilesAreReady)
{
    eventfd_write(event_, 1);
    std::array<pollfd, 1> files{{{event_, POLLIN, 0}}};

    EXPECT_EQ(pollUntil(files, kNoDeadline, "the test"), 1);
    EXPECT_EQ(files[0].revents, POLLIN);
}

TEST_F(WaitingTest, Poll_EndsAtTheDeadline)
{
    VirtualTime const time({});
    std::array<pollfd, 1> files{{{event_, POLLIN, 0}}};
    auto const deadline = SteadyClock::now() + 1h;

    EXPECT_EQ(pollUntil(files, deadline, "the test"), 0);
    EXPECT_EQ(SteadyClock::now(), deadline);
}

TEST_F(WaitingTest, Poll_IsWokenByAnotherThread)
{
    VirtualTime const time({});
    Thread writer("writer", [this] {
        sleepFor(3s);
        eventfd_write(event_, 1);
    });
    std::array<pollfd, 1> files{{{event_, POLLIN, 0}}};
    auto const start = SteadyClock::now();

    EXPECT_EQ(pollUntil(files, start + 1h, "the test"), 1);
    EXPECT_EQ(SteadyClock::now() - start, 3s);
    writer.join();
}

TEST_F(WaitingTest, PollInRealTime_EndsAtTheDeadline)
{
    std::array<pollfd, 1> files{{{event_, POLLIN, 0}}};
    auto const deadline = SteadyClock::now() + 5ms;

    EXPECT_EQ(pollUntil(files, deadline, "the test"), 0);
    EXPECT_GE(SteadyClock::now(), deadline);
    EXPECT_EQ(pollUntil(files, SteadyClock::now() - 1h, "the test"), 0) << "and not a moment later";
}

TEST_F(WaitingTest, File_IsReadableOrNot)
{
    EXPECT_FALSE(isReadable(event_));
    eventfd_write(event_, 1);
    EXPECT_TRUE(isReadable(event_));
}

TEST_F(WaitingTest, Events_AreThoseOfEpollInRealAndInVirtualTime)
{
    int const epoll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event wanted{.events = EPOLLIN, .data = {.u32 = 7}};
    epoll_ctl(epoll, EPOLL_CTL_ADD, event_, &wanted);
    std::array<epoll_event, 2> events{};

    eventfd_write(event_, 1);
    EXPECT_EQ(waitForEvents(epoll, events, "the test"), 1);
    EXPECT_EQ(events[0].data.u32, 7U);
    eventfd_t ignored = 0;
    eventfd_read(event_, &ignored);
    {
        VirtualTime const time({});
        Thread writer("writer", [this] {
            sleepFor(3s);
            eventfd_write(event_, 1);
            noteReadyFile();
        });
        Driving const driving;
        events = {};
        Thread clock("clock", [] {
            Driving const moving;
            sleepFor(1h);
        });

        EXPECT_EQ(waitForEvents(epoll, events, "the test"), 1);
        EXPECT_EQ(events[0].data.u32, 7U);
        EXPECT_EQ(wallTime().time_since_epoch(), 946'684'803s);
        writer.join();
        clock.join();
    }
    close(epoll);
}

TEST_F(WaitingTest, Advance_InRealTimeIsRefused)
{
    EXPECT_EQ(advance(1s).error().reason, "time is real and cannot be moved: start the telephone with --time virtual");
}

TEST_F(WaitingTest, Advance_ReturnsAfterEverythingThatIsDueThen)
{
    VirtualTime const time({});
    std::vector<int> done;
    Thread first("first", [&done] {
        sleepFor(1s);
        done.push_back(1);
        for (int i = 2; i <= 5; ++i) {
            sleepFor(0s);
            done.push_back(i);
        }
        sleepFor(1ms);
        done.push_back(6);
    });

    EXPECT_TRUE(advance(1s));

    EXPECT_EQ(done, (std::vector{1, 2, 3, 4, 5}));
    first.join();
}

TEST_F(WaitingTest, Advance_EndsWhenTheProgramMustEnd)
{
    VirtualTime const time({.stop = event_});
    eventfd_write(event_, 1);
    auto const start = SteadyClock::now();

    EXPECT_TRUE(advance(1h));

    EXPECT_EQ(SteadyClock::now(), start);
}

TEST_F(WaitingTest, Rest_ComesWhenNobodyCanRunWithoutTime)
{
    VirtualTime const time({});
    std::vector<int> done;
    Thread other("other", [&done] {
        for (int i = 1; i <= 3; ++i) {
            done.push_back(i);
            sleepFor(0s);
        }
        sleepFor(1ms);
        done.push_back(4);
    });

    awaitRest();

    EXPECT_EQ(done, (std::vector{1, 2, 3}));
    other.join();
}

}  // namespace
}  // namespace telephone

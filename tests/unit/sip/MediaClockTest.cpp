#include "telephone/sip/MediaClock.h"

#include <functional>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"

// In virtual time, where the clock rests while nobody needs its beats.
namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

// Writes down when it beats, and for how many beats it makes up.
class Listener final : public MediaClockListener
{
public:
    void onBeat() override
    {
        log +=
            std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin).count()) +
            ";";
        whenBeating();
    }
    bool needsBeats() const override { return needs; }
    void makeUpFor(std::uint64_t beats) override { log += "missed " + std::to_string(beats) + ";"; }

    SteadyClock::time_point const begin = SteadyClock::now();
    std::function<void()> whenBeating = [] {};
    bool needs = true;
    std::string log;
};

class MediaClockTest : public testing::Test
{
protected:
    MediaClockTest() { loop_.start(); }

    void add(Listener& listener)
    {
        std::lock_guard const guard(loop_);
        clock_.add(listener);
    }
    void remove(Listener& listener)
    {
        std::lock_guard const guard(loop_);
        clock_.remove(listener);
    }
    // Everybody catches up with what was not needed.
    void catchUp()
    {
        std::lock_guard const guard(loop_);
        MediaClock::catchUp();
    }
    std::string logOf(Listener& listener)
    {
        std::lock_guard const guard(loop_);
        return std::exchange(listener.log, {});
    }

    EventLoop loop_;
    MediaClock clock_{loop_};
    Listener first_;
    Listener second_;
};

TEST_F(MediaClockTest, Beats_ComeEachTwentyMilliseconds)
{
    add(first_);
    add(first_);
    sleepFor(30ms);
    add(second_);
    sleepFor(55ms);

    EXPECT_EQ(logOf(first_), "20;40;60;80;") << "once, though it was added twice";
    EXPECT_EQ(logOf(second_), "40;60;80;");
}

TEST_F(MediaClockTest, RemovedListener_BeatsNoMore)
{
    add(first_);
    add(second_);
    sleepFor(30ms);

    remove(first_);
    sleepFor(20ms);

    EXPECT_EQ(logOf(first_), "20;");
    EXPECT_EQ(logOf(second_), "20;40;");
}

TEST_F(MediaClockTest, ListenersThatAreRemovedDuringABeat_DoNotGetIt)
{
    first_.whenBeating = [this] {
        clock_.remove(first_);
        clock_.remove(second_);
    };
    add(first_);
    add(second_);

    sleepFor(50ms);

    EXPECT_EQ(logOf(first_), "20;");
    EXPECT_EQ(logOf(second_), "");
}

TEST_F(MediaClockTest, ClockWithoutListeners_BeginsAnewWithTheNextOne)
{
    add(first_);
    sleepFor(25ms);
    remove(first_);
    sleepFor(1005ms);

    add(second_);
    sleepFor(45ms);

    EXPECT_EQ(logOf(first_), "20;");
    EXPECT_EQ(logOf(second_), "1050;1070;");
}

TEST_F(MediaClockTest, ClockThatNobodyNeeds_RestsAndIsMadeUpForInWholeBeats)
{
    first_.needs = false;
    add(first_);
    sleepFor(1010ms);
    EXPECT_EQ(logOf(first_), "20;");

    catchUp();
    catchUp();
    EXPECT_EQ(logOf(first_), "missed 49;");
    sleepFor(5ms);
    EXPECT_EQ(logOf(first_), "") << "the next beat is due after 1020 ms";
    sleepFor(10ms);
    EXPECT_EQ(logOf(first_), "1020;");
}

TEST_F(MediaClockTest, ClockThatOneNeeds_BeatsForAll)
{
    first_.needs = false;
    add(first_);
    add(second_);

    sleepFor(50ms);
    catchUp();

    EXPECT_EQ(logOf(first_), "20;40;");
    EXPECT_EQ(logOf(second_), "20;40;");
}

TEST_F(MediaClockTest, RestThatEndsBeforeABeatWasDue_MissesNone)
{
    first_.needs = false;
    add(first_);
    sleepFor(25ms);

    catchUp();
    sleepFor(20ms);

    EXPECT_EQ(logOf(first_), "20;40;");
}

}  // namespace
}  // namespace telephone::sip

// What the headers of RFC 4028 make of the interval, and when it ends.
#include "telephone/sip/SessionTimer.h"

#include <array>
#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

class SessionTimerTest : public testing::Test
{
protected:
    SessionTimerTest()
    {
        loop_.start();
        start(1800s);
    }
    ~SessionTimerTest() override
    {
        std::lock_guard const guard(loop_);
        timer_.reset();
    }

    void start(std::chrono::seconds interval)
    {
        std::lock_guard const guard(loop_);
        timer_.reset();
        timer_ = std::make_unique<SessionTimer>(
            loop_, interval, SessionTimer::Actions{[this] { note("refresh"); }, [this] { note("expired"); }});
        happened_.clear();
    }
    // "Session-Expires: 1800\r\n" of headers that are one.
    std::string ofRequest()
    {
        std::lock_guard const guard(loop_);
        return timer_->ofRequest().format();
    }
    std::string accept(Headers const& request)
    {
        std::lock_guard const guard(loop_);
        begin_ = SteadyClock::now();
        return timer_->accept(request).format();
    }
    void accepted(Headers const& answer)
    {
        std::lock_guard const guard(loop_);
        begin_ = SteadyClock::now();
        timer_->accepted(answer);
    }
    bool lengthen(char const* least)
    {
        std::lock_guard const guard(loop_);
        return timer_->lengthen({{"Min-SE", least}});
    }
    void note(char const* what)
    {
        auto const after = std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin_);
        happened_ += what + (" " + std::to_string(after.count())) + ";";
    }
    // What happens in two hours, and after how many milliseconds.
    std::string happened()
    {
        sleepFor(2h);
        std::lock_guard const guard(loop_);
        return std::exchange(happened_, {});
    }

    EventLoop loop_;
    std::unique_ptr<SessionTimer> timer_;
    SteadyClock::time_point begin_;
    std::string happened_;
};

struct Asked
{
    char const* expires;
    char const* least;
    char const* supported;
    char const* answer;
};

TEST_F(SessionTimerTest, AnswerToARequest_HasTheIntervalOfBothAndWhoRefreshes)
{
    constexpr auto kRows = std::to_array<Asked>({
        {nullptr, nullptr, nullptr, "Session-Expires: 1800;refresher=uas\r\n"},
        {"3600", nullptr, nullptr, "Session-Expires: 1800;refresher=uas\r\n"},
        {"600", nullptr, "timer", "Session-Expires: 600;refresher=uac\r\nRequire: timer\r\n"},
        {"600;refresher=uac", nullptr, "timer", "Session-Expires: 600;refresher=uac\r\nRequire: timer\r\n"},
        {"600;refresher=uas", nullptr, "timer", "Session-Expires: 600;refresher=uas\r\n"},
        {"600;refresher=uac", nullptr, "100rel", "Session-Expires: 600;refresher=uas\r\n"},
        {"3600", "2400", "timer", "Session-Expires: 2400;refresher=uac\r\nRequire: timer\r\n"},
        {"3600", "900", "timer", "Session-Expires: 1800;refresher=uac\r\nRequire: timer\r\n"},
        {"60", nullptr, nullptr, "Session-Expires: 90;refresher=uas\r\n"},
        {"100000", "100000", "timer", "Session-Expires: 86400;refresher=uac\r\nRequire: timer\r\n"},
    });
    for (auto const& row : kRows) {
        Headers request;
        for (auto const& [name, value] : std::to_array<std::pair<char const*, char const*>>(
                 {{"Session-Expires", row.expires}, {"Min-SE", row.least}, {"Supported", row.supported}})) {
            if (value != nullptr) {
                request.add(name, value);
            }
        }
        start(1800s);
        EXPECT_EQ(accept(request), row.answer);
    }
}

TEST_F(SessionTimerTest, Interval_IsTooBriefBelow90SecondsForACallerThatKnowsIt)
{
    auto const isTooBrief = [this](char const* expires, char const* supported) {
        return timer_->isTooBrief({{"Session-Expires", expires}, {"Supported", supported}});
    };

    EXPECT_TRUE(isTooBrief("89", "timer"));
    EXPECT_FALSE(isTooBrief("90", "timer"));
    EXPECT_FALSE(isTooBrief("89", "100rel"));
    EXPECT_FALSE(timer_->isTooBrief({{"Supported", "timer"}}));
    EXPECT_EQ(SessionTimer::ofRefusal().format(), "Min-SE: 90\r\n");
    start(0s);
    EXPECT_FALSE(isTooBrief("89", "timer"));
}

TEST_F(SessionTimerTest, RefreshFromHere_IsDueAfterHalfTheInterval)
{
    accept({});

    EXPECT_EQ(happened(), "refresh 900000;expired 1800000;");
}

TEST_F(SessionTimerTest, RefreshOfTheFarEnd_IsMissed32SecondsBeforeTheEnd)
{
    accept({{"Session-Expires", "600"}, {"Supported", "timer"}});

    EXPECT_EQ(happened(), "expired 568000;");
}

TEST_F(SessionTimerTest, RefreshOfTheFarEnd_IsMissedAThirdOfAShortIntervalBeforeItsEnd)
{
    accept({{"Session-Expires", "90"}, {"Supported", "timer"}});

    EXPECT_EQ(happened(), "expired 60000;");
}

TEST_F(SessionTimerTest, AnswerOfTheFarEnd_SaysWhoRefreshesAndWhen)
{
    accepted({});
    EXPECT_EQ(ofRequest(), "Session-Expires: 1800;refresher=uac\r\nMin-SE: 90\r\n");
    EXPECT_EQ(happened(), "refresh 900000;expired 1800000;");

    accepted({{"Session-Expires", "400;refresher=uac"}});
    EXPECT_EQ(happened(), "refresh 200000;expired 400000;");

    accepted({{"Session-Expires", "400;refresher=uas"}});
    EXPECT_EQ(ofRequest(), "Session-Expires: 400;refresher=uas\r\nMin-SE: 90\r\n");
    EXPECT_EQ(happened(), "expired 368000;");

    accepted({{"Session-Expires", "10"}});
    EXPECT_EQ(happened(), "refresh 45000;expired 90000;");
}

TEST_F(SessionTimerTest, FarEndThatBeginsToRefresh_EndsOurRefreshes)
{
    accepted({});

    accepted({{"Session-Expires", "1800;refresher=uas"}});

    EXPECT_EQ(happened(), "expired 1768000;");
}

TEST_F(SessionTimerTest, RefreshAtAnotherTime_TakesThePlaceOfTheOneThatIsDue)
{
    accepted({});
    {
        std::lock_guard const guard(loop_);
        timer_->refreshIn(10s);
    }

    EXPECT_EQ(happened(), "refresh 10000;expired 1800000;");
}

TEST_F(SessionTimerTest, EndOfTheInterval_EndsTheRefreshes)
{
    accepted({});
    {
        std::lock_guard const guard(loop_);
        timer_->refreshIn(1900s);
    }

    EXPECT_EQ(happened(), "expired 1800000;");
}

TEST_F(SessionTimerTest, StoppedTimer_DoesNothing)
{
    accepted({});
    {
        std::lock_guard const guard(loop_);
        timer_->stop();
    }

    EXPECT_EQ(happened(), "");
}

TEST_F(SessionTimerTest, Refusal_LengthensTheIntervalIfItAsksForMore)
{
    EXPECT_EQ(ofRequest(), "Session-Expires: 1800\r\nMin-SE: 90\r\n");
    EXPECT_FALSE(lengthen("90"));
    EXPECT_TRUE(lengthen("91"));
    EXPECT_EQ(ofRequest(), "Session-Expires: 1800\r\nMin-SE: 91\r\n");
    EXPECT_FALSE(lengthen("91"));
    EXPECT_TRUE(lengthen("2400"));
    EXPECT_EQ(ofRequest(), "Session-Expires: 2400\r\nMin-SE: 2400\r\n");

    accepted({{"Session-Expires", "2400"}});
    EXPECT_TRUE(lengthen("3000"));
    EXPECT_EQ(ofRequest(), "Session-Expires: 3000;refresher=uac\r\nMin-SE: 3000\r\n");
}

TEST_F(SessionTimerTest, IntervalOfZero_IsNoTimer)
{
    start(0s);

    EXPECT_EQ(ofRequest(), "");
    EXPECT_EQ(accept({{"Session-Expires", "600"}, {"Supported", "timer"}}), "");
    accepted({{"Session-Expires", "600"}});
    EXPECT_FALSE(lengthen("2400"));
    EXPECT_EQ(happened(), "");
}

}  // namespace
}  // namespace telephone::sip

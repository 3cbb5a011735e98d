// When responses are repeated (RFC 3262), and what acknowledges them.
#include "telephone/sip/ReliableResponses.h"

#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

class ReliableResponsesTest : public testing::Test
{
protected:
    ReliableResponsesTest()
    {
        loop_.start();
        std::lock_guard const guard(loop_);
        responses_ = std::make_unique<ReliableResponses>(
            loop_, ReliableResponses::Actions{[this](EarlyResponse const& response) -> Outcome<> {
                                                  if (fails_) {
                                                      return refuse(RefusalKind::kUnavailable, "no way");
                                                  }
                                                  number_ = response.headers.value("RSeq");
                                                  required_ = response.headers.values("Require");
                                                  note(std::to_string(response.status));
                                                  return {};
                                              },
                                              [this] { note("missing"); }});
    }
    ~ReliableResponsesTest() override
    {
        std::lock_guard const guard(loop_);
        responses_.reset();
    }

    Outcome<> send(int status)
    {
        std::lock_guard const guard(loop_);
        return responses_->send({status, "x", {}, {}});
    }
    // With the number of the latest response, and this one added.
    bool acknowledge(int added = 0, char const* rest = " 7 INVITE")
    {
        std::lock_guard const guard(loop_);
        return responses_->acknowledge(std::to_string(std::stol(number_) + added) + rest, 7);
    }
    void note(std::string const& what)
    {
        auto const after = std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin_);
        happened_ += what + " " + std::to_string(after.count()) + ";";
    }
    std::string happenedIn(std::chrono::milliseconds time)
    {
        sleepFor(time);
        std::lock_guard const guard(loop_);
        return std::exchange(happened_, {});
    }

    EventLoop loop_;
    std::unique_ptr<ReliableResponses> responses_;
    SteadyClock::time_point const begin_ = SteadyClock::now();
    bool fails_ = false;
    std::string number_;
    std::vector<std::string> required_;
    std::string happened_;
};

TEST_F(ReliableResponsesTest, ResponseThatNobodyAcknowledges_IsRepeatedFor32Seconds)
{
    EXPECT_TRUE(send(180));

    EXPECT_EQ(happenedIn(1min), "180 0;180 500;180 1500;180 3500;180 7500;180 15500;180 31500;missing 32000;");
    EXPECT_EQ(required_, std::vector<std::string>{"100rel"});
}

TEST_F(ReliableResponsesTest, AcknowledgedResponse_IsNotRepeated)
{
    EXPECT_TRUE(send(180));

    EXPECT_FALSE(acknowledge(1));
    EXPECT_FALSE(acknowledge(0, " 8 INVITE"));
    EXPECT_FALSE(acknowledge(0, " 7 UPDATE"));
    EXPECT_EQ(happenedIn(600ms), "180 0;180 500;");
    EXPECT_TRUE(acknowledge());
    EXPECT_FALSE(acknowledge()) << "once";

    EXPECT_EQ(happenedIn(1min), "");
}

TEST_F(ReliableResponsesTest, NextResponse_WaitsForTheAcknowledgementAndHasTheNextNumber)
{
    EXPECT_TRUE(send(180));
    EXPECT_TRUE(send(183));
    long const first = std::stol(number_);
    EXPECT_EQ(happenedIn(0ms), "180 0;");

    EXPECT_TRUE(acknowledge());
    {
        std::lock_guard const guard(loop_);
        responses_->sendNext();
        responses_->sendNext();
    }

    EXPECT_EQ(happenedIn(600ms), "183 0;183 500;");
    EXPECT_EQ(std::stol(number_), first + 1);
    EXPECT_TRUE(acknowledge());
    {
        std::lock_guard const guard(loop_);
        responses_->sendNext();
    }
    EXPECT_EQ(happenedIn(1min), "");
}

TEST_F(ReliableResponsesTest, ResponseThatCannotBeSent_IsRefusedAndNotRepeated)
{
    fails_ = true;
    EXPECT_EQ(send(180).error().reason, "no way");
    fails_ = false;
    EXPECT_EQ(happenedIn(1min), "");

    EXPECT_TRUE(send(183));

    EXPECT_EQ(happenedIn(100ms), "183 60000;");
}

TEST_F(ReliableResponsesTest, StoppedOnes_AreForgotten)
{
    EXPECT_TRUE(send(180));
    EXPECT_TRUE(send(183));
    {
        std::lock_guard const guard(loop_);
        responses_->stop();
        responses_->sendNext();
    }

    EXPECT_EQ(happenedIn(1min), "180 0;");
    EXPECT_FALSE(acknowledge());
}

}  // namespace
}  // namespace telephone::sip

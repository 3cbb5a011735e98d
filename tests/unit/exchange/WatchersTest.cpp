#include "telephone/exchange/Watchers.h"

#include <map>
#include <utility>

#include <gtest/gtest.h>

namespace telephone::exchange {
namespace {

// What a subscriber received.
struct Received
{
    std::string contentType;
    std::vector<std::string> bodies;
    std::function<std::string()> refresh;
    std::function<void()> unsubscribe;
};

class FakeNotifier final : public sip::Notifier
{
public:
    explicit FakeNotifier(Received& received, bool works = true)
        : received_(received)
        , works_(works)
    {}

    std::string const& event() const override { return event_; }
    std::string requestUri() const override { return "sip:102@127.0.0.1"; }
    sip::Headers const& headers() const override { return headers_; }
    Outcome<> accept(std::string const& contentType) override
    {
        if (!works_) {
            return refuse(RefusalKind::kUnavailable, "no answer can be sent");
        }
        received_.contentType = contentType;
        return {};
    }
    void reject(int, std::string const&, sip::Headers const&) override {}
    void notify(std::string const& body, sip::SubscriptionState, std::string const&) override
    {
        received_.bodies.push_back(body);
    }
    bool isActive() const override { return true; }
    void onRefreshed(std::function<std::string()> body) override { received_.refresh = std::move(body); }
    void onClosed(std::function<void(sip::Notifier&)> closed) override
    {
        received_.unsubscribe = [this, closed = std::move(closed)] { closed(*this); };
    }

private:
    Received& received_;
    bool works_;
    std::string event_ = "dialog";
    sip::Headers headers_;
};

class WatchersTest : public ::testing::Test
{
protected:
    std::vector<std::string> gone_;
    std::map<std::string, std::string> states_{{"102", "idle"}, {"103", "idle"}};
    Watchers watchers_{"text/plain", [this](std::string const& number) { return states_.at(number); },
                       [this](std::string const& number) { gone_.push_back(number); }};
    Received first_;
    Received second_;
};

TEST_F(WatchersTest, NewSubscriber_ReceivesThePresentState)
{
    watchers_.add("102", std::make_unique<FakeNotifier>(first_));

    EXPECT_EQ(first_.contentType, "text/plain");
    EXPECT_EQ(first_.bodies, std::vector<std::string>{"idle"});
    EXPECT_EQ(watchers_.count("102"), 1U);
}

TEST_F(WatchersTest, Change_ReachesTheSubscribersOfItsNumber)
{
    watchers_.add("102", std::make_unique<FakeNotifier>(first_));
    watchers_.add("103", std::make_unique<FakeNotifier>(second_));

    states_["102"] = "busy";
    watchers_.notify("102");
    watchers_.notify("104");

    EXPECT_EQ(first_.bodies, (std::vector<std::string>{"idle", "busy"}));
    EXPECT_EQ(second_.bodies, std::vector<std::string>{"idle"});
}

TEST_F(WatchersTest, Refresh_IsAnsweredWithThePresentState)
{
    watchers_.add("102", std::make_unique<FakeNotifier>(first_));
    states_["102"] = "busy";

    EXPECT_EQ(first_.refresh(), "busy");
}

TEST_F(WatchersTest, SubscriptionThatCannotBeAccepted_IsNotKept)
{
    watchers_.add("102", std::make_unique<FakeNotifier>(first_, false));

    EXPECT_EQ(watchers_.count("102"), 0U);
    EXPECT_TRUE(first_.bodies.empty());
}

TEST_F(WatchersTest, LastSubscriberThatLeaves_IsReported)
{
    watchers_.add("102", std::make_unique<FakeNotifier>(first_));
    watchers_.add("102", std::make_unique<FakeNotifier>(second_));

    std::exchange(first_.unsubscribe, nullptr)();
    EXPECT_TRUE(gone_.empty());
    EXPECT_EQ(watchers_.count("102"), 1U);
    std::exchange(second_.unsubscribe, nullptr)();

    EXPECT_EQ(gone_, std::vector<std::string>{"102"});
    EXPECT_EQ(watchers_.count("102"), 0U);
}

}  // namespace
}  // namespace telephone::exchange

#include "telephone/framework/EventDispatcher.h"

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "FrameworkDoubles.h"

using telephone::EventDispatcher;

namespace {

class Subscriber : public ExecutableDouble, public IgnoredEvents
{
public:
    void callHeld(std::string const&, int callID) override
    {
        if (onHeld) {
            onHeld(callID);
        }
        held.push_back(callID);
    }

    std::function<void(int)> onHeld;
    std::vector<int> held;
};

void postHeld(EventDispatcher& dispatcher, int callID)
{
    dispatcher.post([callID](CommunicationsServiceEventIfc& events) { events.callHeld("4711", callID); });
}

}  // namespace

TEST(EventDispatcher, Post_ReachesEverySubscriberInOrder)
{
    EventDispatcher dispatcher;
    Subscriber first;
    Subscriber second;
    ASSERT_TRUE(dispatcher.subscribe(&first));
    ASSERT_TRUE(dispatcher.subscribe(&second));

    postHeld(dispatcher, 1);
    postHeld(dispatcher, 2);
    postHeld(dispatcher, 3);
    dispatcher.stop();

    EXPECT_EQ(first.held, (std::vector{1, 2, 3}));
    EXPECT_EQ(second.held, (std::vector{1, 2, 3}));
}

TEST(EventDispatcher, Subscribe_Twice_DeliversOnce)
{
    EventDispatcher dispatcher;
    Subscriber subscriber;

    EXPECT_TRUE(dispatcher.subscribe(&subscriber));
    EXPECT_TRUE(dispatcher.subscribe(&subscriber));
    postHeld(dispatcher, 1);
    dispatcher.stop();

    EXPECT_EQ(subscriber.held, std::vector{1});
}

TEST(EventDispatcher, Subscribe_WithoutEventInterface_IsRefused)
{
    EventDispatcher dispatcher;
    ExecutableDouble notASubscriber;

    EXPECT_EQ(dispatcher.subscribe(&notASubscriber).error().reason, "the subscriber has no interface for events");
    EXPECT_EQ(dispatcher.subscribe(nullptr).error().reason, "the subscriber has no interface for events");
}

TEST(EventDispatcher, Unsubscribe_WhileDelivering_WaitsForTheDelivery)
{
    EventDispatcher dispatcher;
    Subscriber subscriber;
    std::promise<void> entered;
    std::promise<void> leave;
    std::atomic<bool> left{false};
    subscriber.onHeld = [&](int) {
        entered.set_value();
        leave.get_future().wait();
        left = true;
    };
    ASSERT_TRUE(dispatcher.subscribe(&subscriber));
    postHeld(dispatcher, 1);
    entered.get_future().wait();

    auto unsubscribed = std::async(std::launch::async, [&] {
        dispatcher.unsubscribe(&subscriber);
        return left.load();
    });
    leave.set_value();

    EXPECT_TRUE(unsubscribed.get());
    postHeld(dispatcher, 2);
    dispatcher.stop();
    EXPECT_EQ(subscriber.held, std::vector{1});
}

TEST(EventDispatcher, Unsubscribe_FromWithinItsEvent_DoesNotWaitForItself)
{
    EventDispatcher dispatcher;
    Subscriber subscriber;
    subscriber.onHeld = [&](int) { dispatcher.unsubscribe(&subscriber); };
    ASSERT_TRUE(dispatcher.subscribe(&subscriber));

    postHeld(dispatcher, 1);
    postHeld(dispatcher, 2);
    dispatcher.stop();

    EXPECT_EQ(subscriber.held, std::vector{1});
}

TEST(EventDispatcher, Post_FromWithinAnEvent_IsDeliveredAfterIt)
{
    EventDispatcher dispatcher;
    Subscriber subscriber;
    std::promise<void> second;
    subscriber.onHeld = [&](int callID) {
        if (callID == 1) {
            postHeld(dispatcher, 2);
        } else {
            second.set_value();
        }
    };
    ASSERT_TRUE(dispatcher.subscribe(&subscriber));

    postHeld(dispatcher, 1);
    second.get_future().wait();
    dispatcher.stop();

    EXPECT_EQ(subscriber.held, (std::vector{1, 2}));
}

TEST(EventDispatcher, Subscriber_ThatThrows_DoesNotStopTheOthers)
{
    EventDispatcher dispatcher;
    Subscriber failing;
    Subscriber other;
    failing.onHeld = [](int) { throw std::runtime_error("a failing subscriber"); };
    ASSERT_TRUE(dispatcher.subscribe(&failing));
    ASSERT_TRUE(dispatcher.subscribe(&other));

    postHeld(dispatcher, 1);
    dispatcher.stop();

    EXPECT_EQ(other.held, std::vector{1});
}

TEST(EventDispatcher, Post_FromManyThreads_KeepsEachThreadsOrder)
{
    constexpr int kThreads = 4;
    constexpr int kEvents = 500;
    EventDispatcher dispatcher;
    Subscriber subscriber;
    ASSERT_TRUE(dispatcher.subscribe(&subscriber));

    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&dispatcher, thread] {
            for (int i = 0; i < kEvents; ++i) {
                postHeld(dispatcher, thread * kEvents + i);
            }
        });
    }
    for (std::thread& each : threads) {
        each.join();
    }
    dispatcher.stop();

    ASSERT_EQ(subscriber.held.size(), static_cast<std::size_t>(kThreads * kEvents));
    std::vector<int> last(kThreads, -1);
    for (int const callID : subscriber.held) {
        auto const thread = static_cast<std::size_t>(callID / kEvents);
        EXPECT_GT(callID, last[thread]);
        last[thread] = callID;
    }
}

TEST(EventDispatcher, Post_AfterStop_DoesNothing)
{
    EventDispatcher dispatcher;
    Subscriber subscriber;
    ASSERT_TRUE(dispatcher.subscribe(&subscriber));
    dispatcher.stop();

    postHeld(dispatcher, 1);
    dispatcher.stop();

    EXPECT_TRUE(subscriber.held.empty());
}

TEST(EventDispatcher, SubscriberThatAnotherUnsubscribes_DoesNotGetTheEventUnderWay)
{
    EventDispatcher dispatcher;
    Subscriber first;
    Subscriber second;
    first.onHeld = [&](int) { dispatcher.unsubscribe(&second); };
    ASSERT_TRUE(dispatcher.subscribe(&first));
    ASSERT_TRUE(dispatcher.subscribe(&second));

    postHeld(dispatcher, 1);
    dispatcher.stop();

    EXPECT_EQ(first.held, std::vector{1});
    EXPECT_TRUE(second.held.empty());
}

TEST(EventDispatcher, Events_AreNumberedFromOne)
{
    EventDispatcher dispatcher;
    Subscriber subscriber;
    std::vector<std::uint64_t> numbers;
    subscriber.onHeld = [&](int) { numbers.push_back(dispatcher.delivering()); };
    ASSERT_TRUE(dispatcher.subscribe(&subscriber));
    EXPECT_EQ(dispatcher.posted(), 0U);

    postHeld(dispatcher, 1);
    postHeld(dispatcher, 2);
    EXPECT_EQ(dispatcher.posted(), 2U);
    dispatcher.stop();
    postHeld(dispatcher, 3);

    EXPECT_EQ(numbers, (std::vector<std::uint64_t>{1, 2}));
    EXPECT_EQ(dispatcher.posted(), 2U);
}

TEST(EventDispatcher, Start_IsAWordOfEightLettersAndDigits)
{
    EventDispatcher const dispatcher;
    EventDispatcher const other;

    EXPECT_EQ(dispatcher.start().size(), 8U);
    EXPECT_EQ(dispatcher.start().find_first_not_of("abcdefghijkmnpqrstuvwxyz23456789"), std::string::npos);
    EXPECT_NE(dispatcher.start(), other.start());
}

#include "telephone/access/EventSubscription.h"

#include <gtest/gtest.h>
#include <poll.h>

#include "TelephoneDouble.h"
#include "telephone/framework/WakeUp.h"

using namespace telephone;

namespace {

class EventSubscriptionTest : public testing::Test
{
protected:
    // Posts events about the calls first to last and waits until they are in the history.
    void post(int first, int last)
    {
        for (int call = first; call <= last; ++call) {
            telephone_.held(call);
        }
        auto const end = history_.latest();
        while (history_.after(end - 1, 1).events.empty()) {
            pollfd query{came_.descriptor(), POLLIN, 0};
            ASSERT_EQ(poll(&query, 1, 10000), 1);
            came_.clear();
        }
    }

    std::string taken(EventSubscription& events)
    {
        std::string text;
        auto const state = [this] { return EventSubscription::State{history_.latest(), "{}"}; };
        while (events.take(2, state, [&text](Message const& each) {
            bool const isEvent = each.kind == MessageKind::kEvent;
            text += isEvent ? std::to_string(each.number) + " "
                            : (each.kind == MessageKind::kGap ? "gap" : "state") + std::string(each.text) + " ";
        })) {
        }
        return text;
    }

    TelephoneDouble telephone_{5};
    EventHistory& history_ = telephone_.services().history;
    WakeUp came_;
    EventHistory::ListenerId const listener_ = history_.listen([this] { came_.signal(); });
};

}  // namespace

TEST_F(EventSubscriptionTest, EventsAfterANumber_ComeOnceAndInOrder)
{
    EventSubscription events(history_, {1, {}, {}});
    post(1, 4);

    EXPECT_EQ(taken(events), "2 3 4 ");
    EXPECT_EQ(taken(events), "");
    EXPECT_EQ(events.position(), 4U);
}

TEST_F(EventSubscriptionTest, EventsNoLongerKept_AreAGapAndTheState)
{
    EventSubscription events(history_, {2, {}, {}});
    post(1, 9);

    EXPECT_EQ(taken(events), "gap{\"first\":3,\"last\":9} state{} ");
    EXPECT_EQ(events.position(), 9U);
}

TEST_F(EventSubscriptionTest, OldestKeptEvent_IsNoGap)
{
    EventSubscription events(history_, {4, {}, {}});
    post(1, 9);

    EXPECT_EQ(taken(events), "5 6 7 8 9 ");
}

TEST_F(EventSubscriptionTest, NumberThatIsNotReachedYet_IsOfAnotherStart)
{
    EventSubscription events(history_, {100, {}, {}});
    post(1, 3);

    EXPECT_EQ(taken(events), "gap{\"first\":1,\"last\":3} state{} ");
    EXPECT_EQ(events.position(), 3U);
}

TEST_F(EventSubscriptionTest, SelectionByNameAndLine_PassesOverTheRest)
{
    EventSubscription other(history_, {0, {"CallRetrievedEvent"}, {}});
    EventSubscription line(history_, {0, {}, {"4711"}});
    EventSubscription appearance(history_, {0, {}, {"4711#1"}});
    EventSubscription prefix(history_, {0, {}, {"471"}});
    post(1, 2);

    EXPECT_EQ(taken(other), "");
    EXPECT_EQ(other.position(), 2U);
    EXPECT_EQ(taken(line), "1 2 ");
    EXPECT_EQ(taken(appearance), "");
    EXPECT_EQ(taken(prefix), "");
}

TEST_F(EventSubscriptionTest, LineWithAppearances_IncludesThem)
{
    telephone_.dispatcher.post([](CommunicationsServiceEventIfc& events) { events.callHeld("4711#2", 1); });
    EventSubscription line(history_, {0, {}, {"4711"}});
    post(2, 2);

    EXPECT_EQ(taken(line), "1 2 ");
}

TEST(EventMethods, NamesAsTyped_BecomeTheServicesOwn)
{
    EXPECT_EQ(eventMethods({"callheld", "CallStateChangeEvent"}).value(),
              (std::vector<std::string>{"CallHeldEvent", "CallStateChangeEvent"}));
    EXPECT_EQ(eventMethods({"CallHeldEvnt"}).error().reason, "no event CallHeldEvnt (did you mean CallHeldEvent?)");
}

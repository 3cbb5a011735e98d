// Parties that the telephone watches, written message by message: when it asks, and what it makes of the answers.
#include "telephone/lines/WatchedParties.h"

#include "telephone/base/Touched.h"
#include "tests/helpers/EnginePhone.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

class WatchedEnd : public ::testing::Test
{
protected:
    ~WatchedEnd() override { parties_.stop(); }

    PartyWatch::Listener listener()
    {
        return [this](WatchedParty const& party) { told_.push_back(party.status); };
    }

    // The statuses that were told since the last call.
    std::vector<PartyStatus> told()
    {
        std::lock_guard const guard(eventLoop());
        return std::exchange(told_, {});
    }

    std::string subscription(std::chrono::milliseconds within = kDeadline) { return far_.receive("SUBSCRIBE", within); }

    void accept(std::string const& subscribe) { far_.answer(subscribe, "200 OK", "Expires: 3600\r\n"); }

    void tell(std::string const& subscribe, std::string const& dialogs,
              std::string const& state = "active;expires=3600")
    {
        far_.request("NOTIFY", subscribe,
                     "Event: dialog\r\nSubscription-State: " + state +
                         "\r\nContent-Type: application/dialog-info+xml\r\n",
                     "<?xml version=\"1.0\"?><dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"" +
                         std::to_string(version_++) + "\" state=\"full\" entity=\"" + far_.uri() + "\">" + dialogs +
                         "</dialog-info>");
        EXPECT_EQ(firstLineOf(far_.receive("SIP/2.0")), "SIP/2.0 200 OK");
    }

    static constexpr char const* kRings = "<dialog id=\"1\" direction=\"recipient\"><state>early</state></dialog>";

    EnginePhone phone_{EnginePhone::optionsOf("4711")};
    ScriptedEnd far_{eventLoop()};
    WatchedParties parties_{phone_.engine(), 1};
    std::vector<PartyStatus> told_;
    int version_ = 0;
};

using Statuses = std::vector<PartyStatus>;

}  // namespace

TEST_F(WatchedEnd, Party_IsSubscribedToOnceHoweverManyWatchIt)
{
    parties_.watch(far_.uri(), listener());
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 10s));
    parties_.start();
    std::string const subscribe = subscription();
    EXPECT_EQ(headerOf(subscribe, "Event"), "dialog");
    accept(subscribe);
    tell(subscribe, kRings);
    EXPECT_EQ(told(), Statuses{PartyStatus::kRinging});

    parties_.start();
    parties_.watch(far_.uri(), listener());

    EXPECT_EQ(told(), Statuses{PartyStatus::kRinging});
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 10s));
    tell(subscribe, "");
    EXPECT_EQ(told(), (Statuses{PartyStatus::kIdle, PartyStatus::kIdle}));
}

TEST_F(WatchedEnd, PartyThatIsWatchedLater_IsSubscribedToAtOnce)
{
    parties_.start();

    parties_.watch(far_.uri(), listener());

    EXPECT_NE(subscription(100ms), "");
    EXPECT_EQ(told(), Statuses{});
}

TEST_F(WatchedEnd, SubscriptionThatEnds_IsTriedAgainAfterHalfAMinute)
{
    parties_.watch(far_.uri(), listener());
    parties_.start();
    std::string const first = subscription();
    accept(first);
    tell(first, kRings);
    EXPECT_EQ(told(), Statuses{PartyStatus::kRinging});

    tell(first, "", "terminated;reason=noresource");
    EXPECT_EQ(told().back(), PartyStatus::kUnknown);

    keepTouched();
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 29900ms));
    std::string const second = subscription(200ms);
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("watched party is asked again"));
    far_.answer(second, "404 Not Found");
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 29900ms));
    EXPECT_EQ(told(), Statuses{});
    std::string const third = subscription(200ms);
    accept(third);
    version_ = 0;
    tell(third, "");
    EXPECT_EQ(told(), Statuses{PartyStatus::kIdle});
}

TEST_F(WatchedEnd, End_EndsTheSubscriptionAndAllAttempts)
{
    parties_.watch(far_.uri(), listener());
    parties_.start();
    std::string const first = subscription();
    accept(first);
    tell(first, kRings);
    (void)told();

    parties_.stop();

    std::string const last = subscription();
    EXPECT_EQ(headerOf(last, "Expires"), "0");
    far_.answer(last, "200 OK");
    EXPECT_EQ(told(), Statuses{PartyStatus::kUnknown});
    parties_.start();
    far_.answer(subscription(), "404 Not Found");
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 1s));
    parties_.stop();
    parties_.watch(far_.uri(), listener());
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 1min));
    EXPECT_EQ(told(), Statuses{});
}

TEST_F(WatchedEnd, Registration_OfTheLineThatWatchesStartsIt)
{
    parties_.watch(far_.uri(), listener());
    CallObserver& observer = parties_;
    observer.registrationChanged(2, true);
    observer.registrationChanged(1, false);
    EXPECT_TRUE(far_.hearsNothingOf("SUBSCRIBE", 1s));

    observer.registrationChanged(1, true);

    EXPECT_NE(subscription(100ms), "");
}

}  // namespace telephone::test

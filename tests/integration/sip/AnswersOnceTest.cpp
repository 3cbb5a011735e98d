// What is answered once and then told of step by step: subscriptions, transfers and requests of a far end.
#include <array>

#include "FarEnd.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class AnswersOnce : public FarEnd
{
protected:
    static std::string reasonOf(Outcome<> const& result) { return result ? "not refused" : result.error().reason; }
    sip::Notifier& takeSubscription(std::string const& headers = "Expires: 600\r\n")
    {
        far_.ask("SUBSCRIBE", "4711", phone_.agent->hostPort(), "Event: dialog\r\n" + headers);
        EXPECT_TRUE(phone_.waitFor("subscribe")) << phone_.events();
        return *phone_.notifiers.back();
    }
    // How the far end is told that its subscription ends.
    std::string endOf(std::string const& reason)
    {
        sip::Notifier& notifier = takeSubscription();
        EXPECT_TRUE(notifier.accept("text/plain"));
        notifier.notify("x", sip::SubscriptionState::kTerminated, reason);
        std::string const notice = far_.receive("NOTIFY ");
        far_.answer(notice, "200 OK");
        return headerOf(notice, "Subscription-State");
    }
    sip::Transfer& takeTransfer()
    {
        connect();
        far_.request("REFER", invite_, "Refer-To: <sip:4713@exchange>\r\n");
        EXPECT_TRUE(phone_.waitFor("transfer")) << phone_.events();
        return *phone_.transfers.at(0);
    }
    // The status that the next notice of a transfer brings.
    std::string nextNotice()
    {
        std::string const notice = far_.receive("NOTIFY ", 1s);
        if (!notice.empty()) {
            far_.answer(notice, "200 OK");
        }
        return notice.substr(std::min(notice.size(), notice.find("\r\n\r\n") + 4));
    }
    std::string subscribe()
    {
        phone_.subscribe(far_.uri(), "dialog", "application/dialog-info+xml", 600);
        return far_.receive("SUBSCRIBE ");
    }
    void notify(std::string const& subscribe, std::string const& event, std::string const& state)
    {
        far_.request("NOTIFY", subscribe, "Event: " + event + "\r\nSubscription-State: " + state + "\r\n");
        EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(far_.receive("SIP/2.0 ")));
    }
};

TEST_F(AnswersOnce, EndOfASubscription_HasOneOfTheKnownReasons)
{
    EXPECT_EQ("terminated;reason=deactivated", endOf("deactivated"));
    EXPECT_EQ("terminated;reason=probation", endOf("probation"));
    EXPECT_EQ("terminated;reason=rejected", endOf("Rejected"));
    EXPECT_EQ("terminated;reason=timeout", endOf("timeout"));
    EXPECT_EQ("terminated;reason=giveup", endOf("giveup"));
    EXPECT_EQ("terminated;reason=noresource", endOf("noresource"));
    EXPECT_EQ("terminated;reason=noresource", endOf("boredom"));
}

TEST_F(AnswersOnce, StatesOfASubscription_AreToldUntilItsEnd)
{
    sip::Notifier& notifier = takeSubscription();
    notifier.notify("early");
    EXPECT_TRUE(far_.hearsNothingOf("NOTIFY ", 1s)) << "not before it is accepted";
    ASSERT_TRUE(notifier.accept("text/plain"));
    EXPECT_TRUE(notifier.isActive());
    EXPECT_EQ("the subscription to dialog is already answered", reasonOf(notifier.accept("text/plain")));

    notifier.notify("x", sip::SubscriptionState::kPending);
    std::string const pending = far_.receive("NOTIFY ");
    far_.answer(pending, "200 OK");
    notifier.notify("y", sip::SubscriptionState::kTerminated);
    std::string const last = far_.receive("NOTIFY ");
    far_.answer(last, "200 OK");
    notifier.notify("z");

    EXPECT_TRUE(headerOf(pending, "Subscription-State").starts_with("pending;expires=")) << pending;
    EXPECT_TRUE(last.ends_with("\r\n\r\ny")) << last;
    EXPECT_FALSE(notifier.isActive());
    EXPECT_TRUE(far_.hearsNothingOf("NOTIFY ", 1s));
}

TEST_F(AnswersOnce, TimeOfASubscription_IsAnHourAndAtMostADay)
{
    for (auto const& [asked, granted] :
         {std::pair("", "3600"), std::pair("Expires: 60\r\n", "60"), std::pair("Expires: 100000\r\n", "86400")}) {
        EXPECT_TRUE(takeSubscription(asked).accept("text/plain"));
        EXPECT_EQ(granted, headerOf(far_.receive("SIP/2.0 200"), "Expires"));
    }
}

TEST_F(AnswersOnce, SubscriptionThatNobodyTakes_IsABadEvent)
{
    takeSubscription();
    phone_.notifiers.clear();
    EXPECT_EQ("SIP/2.0 489 Bad Event", firstLineOf(far_.receive("SIP/2.0 ")));

    takeSubscription().reject(403, "Forbidden", {{"Warning", "x"}});
    std::string const refusal = far_.receive("SIP/2.0 ");
    EXPECT_EQ("SIP/2.0 403 Forbidden", firstLineOf(refusal));
    EXPECT_EQ("x", headerOf(refusal, "Warning"));
}

TEST_F(AnswersOnce, Unsubscribing_IsToldOnce)
{
    sip::Notifier& notifier = takeSubscription();
    int closed = 0;
    notifier.onClosed([&closed](sip::Notifier&) { ++closed; });
    ASSERT_TRUE(notifier.accept("text/plain"));
    std::string const ok = far_.receive("SIP/2.0 200");

    far_.request("SUBSCRIBE", ok, "Event: dialog\r\nExpires: 0\r\n");

    EXPECT_TRUE(phone_.waitUntil([&closed] { return closed == 1; }));
    EXPECT_FALSE(notifier.isActive());
    far_.request("SUBSCRIBE", ok, "Event: dialog\r\nExpires: 0\r\n");
    sleepFor(1s);
    EXPECT_EQ(1, closed);
}

TEST_F(AnswersOnce, Transfer_IsAcceptedOnceAndToldUntilItsEnd)
{
    sip::Transfer& transfer = takeTransfer();
    transfer.notify(180, "Ringing");
    EXPECT_EQ("", nextNotice()) << "not before it is accepted";
    ASSERT_TRUE(transfer.accept());
    EXPECT_EQ("the transfer to sip:4713@exchange is already answered", reasonOf(transfer.accept()));
    EXPECT_EQ("SIP/2.0 100 Trying\r\n", nextNotice());

    transfer.notify(99, "Early");
    transfer.notify(700, "Late");
    transfer.notify(199, "Nearly");
    EXPECT_EQ("SIP/2.0 199 Nearly\r\n", nextNotice());
    transfer.notify(699, "Last");
    EXPECT_EQ("SIP/2.0 699 Last\r\n", nextNotice());
    transfer.notify(200, "OK");
    EXPECT_EQ("", nextNotice());
}

TEST_F(AnswersOnce, TransferThatIsDropped_IsUnavailable)
{
    ASSERT_TRUE(takeTransfer().accept());
    EXPECT_EQ("SIP/2.0 100 Trying\r\n", nextNotice());

    phone_.transfers.clear();

    EXPECT_EQ("SIP/2.0 503 Service Unavailable\r\n", nextNotice());
}

TEST_F(AnswersOnce, TransferThatIsRejected_HasThatStatus)
{
    takeTransfer().reject(486, "Busy Here");

    EXPECT_EQ("SIP/2.0 486 Busy Here", firstLineOf(far_.receive("SIP/2.0 ")));
    EXPECT_EQ("the transfer to sip:4713@exchange is already answered", reasonOf(phone_.transfers.at(0)->accept()));
}

TEST_F(AnswersOnce, NoticesOfASubscription_AreRead)
{
    std::string const asked = subscribe();
    far_.answer(asked, "200 OK", "Expires: 600\r\n");

    notify(asked, "dialog;x=7", "pending;expires=60");
    ASSERT_TRUE(phone_.waitFor("notify dialog")) << phone_.events();
    EXPECT_EQ(sip::SubscriptionState::kPending, phone_.notifications.back().state);
    notify(asked, "dialog", "ACTIVE");
    ASSERT_TRUE(phone_.waitFor("notify dialog")) << phone_.events();
    EXPECT_EQ(sip::SubscriptionState::kActive, phone_.notifications.back().state);
    EXPECT_EQ("", phone_.notifications.back().reason);
    notify(asked, "dialog", "Terminated;reason=noresource");
    ASSERT_TRUE(phone_.waitFor("notify dialog")) << phone_.events();
    EXPECT_EQ(sip::SubscriptionState::kTerminated, phone_.notifications.back().state);
    EXPECT_EQ("noresource", phone_.notifications.back().reason);
    EXPECT_TRUE(phone_.waitFor("terminated 200 noresource")) << phone_.events();
}

TEST_F(AnswersOnce, SubscriptionThatIsRefused_EndsWithTheStatus)
{
    far_.answer(subscribe(), "403 Forbidden");

    EXPECT_TRUE(phone_.waitFor("terminated 403 Forbidden")) << phone_.events();
}

TEST_F(AnswersOnce, SubscriptionThatIsNotAnswered_EndsWithATimeout)
{
    subscribe();

    EXPECT_TRUE(phone_.waitFor("terminated 408 Request Timeout", 33s)) << phone_.events();
}

TEST_F(AnswersOnce, SubscriptionThatReachesNobody_IsUnavailable)
{
    phone_.subscribe(far_.uri() + ";transport=tcp", "dialog", "", 600);

    EXPECT_TRUE(phone_.waitFor("terminated 503 Connection refused")) << phone_.events();
}

}  // namespace telephone::test

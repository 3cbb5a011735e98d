// What a far end may say about a transfer that it was asked for (RFC 3515).
#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class Referral : public SipTest
{
protected:
    void SetUp() override
    {
        call_ = &phone_.call(far_.uri());
        invite_ = far_.receive("INVITE");
        far_.accept(invite_);
        ASSERT_TRUE(phone_.waitFor("established")) << phone_.events();
        ASSERT_TRUE(call_->transfer("sip:4713@127.0.0.1:5099"));
        refer_ = far_.receive("REFER");
    }

    void notify(std::string const& state, std::string const& body)
    {
        far_.request(
            "NOTIFY", invite_,
            "Event: refer\r\nSubscription-State: " + state + "\r\nContent-Type: message/sipfrag;version=2.0\r\n", body);
    }

    ScriptedEnd far_{loop};
    SipPeer phone_{loop};
    sip::Session* call_ = nullptr;
    std::string invite_;
    std::string refer_;
};

TEST_F(Referral, Request_NamesTheTargetAndWhoAsks)
{
    EXPECT_EQ("<sip:4713@127.0.0.1:5099>", headerOf(refer_, "Refer-To"));
    EXPECT_EQ("<sip:4711@" + phone_.agent->hostPort() + ">", headerOf(refer_, "Referred-By"));
}

TEST_F(Referral, FinalStatusInASubscriptionThatGoesOn_EndsTheTransfer)
{
    far_.answer(refer_, "202 Accepted");

    notify("active;expires=60", "SIP/2.0 200 OK\r\n");

    EXPECT_TRUE(phone_.waitFor("transfer 200 ended")) << phone_.events();
    EXPECT_TRUE(call_->transfer("sip:4714@127.0.0.1:5099")) << "another transfer must be possible";
}

TEST_F(Referral, EndOfTheSubscriptionWithoutAFinalStatus_EndsTheTransferWithTheLastOne)
{
    far_.answer(refer_, "202 Accepted");
    notify("active;expires=60", "SIP/2.0 180 Ringing\r\n");
    ASSERT_TRUE(phone_.waitFor("transfer 180")) << phone_.events();

    notify("TERMINATED;reason=noresource", "");

    EXPECT_TRUE(phone_.waitFor("transfer 180 ended")) << phone_.events();
}

TEST_F(Referral, EndOfTheSubscriptionWithoutAnyStatus_Is503)
{
    far_.answer(refer_, "202 Accepted");

    notify("terminated;reason=noresource", "no status line");

    EXPECT_TRUE(phone_.waitFor("transfer 503 ended")) << phone_.events();
}

TEST_F(Referral, TextsThatAreNoStatusLine_AreNoProgress)
{
    far_.answer(refer_, "202 Accepted");

    for (char const* body :
         {"SIP/2.0 99 Soon\r\n", "SIP/2.0 700 Late\r\n", "SIP/2.0 x\r\n", "SIP/3.0 180 Ringing\r\n"}) {
        notify("active;expires=60", body);
        EXPECT_TRUE(far_.receive("SIP/2.0 200").find(" NOTIFY\r\n") != std::string::npos);
    }

    notify("active;expires=60", "SIP/2.0 699 Last");
    EXPECT_TRUE(phone_.waitFor("transfer 699 ended")) << phone_.events();
    EXPECT_EQ("", phone_.events());
}

TEST_F(Referral, Refusal_EndsTheTransferWithItsStatus)
{
    far_.answer(refer_, "405 Method Not Allowed");

    EXPECT_TRUE(phone_.waitFor("transfer 405 ended")) << phone_.events();
}

TEST_F(Referral, NoAnswer_EndsTheTransferWith408)
{
    EXPECT_TRUE(phone_.waitFor("transfer 408 ended", 40s)) << phone_.events();
}

}  // namespace telephone::test

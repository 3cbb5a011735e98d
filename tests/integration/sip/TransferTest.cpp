#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

using Transfers = ExchangeTest;

TEST_F(Transfers, BlindTransferOfANumberOfTheExchange_ReachesTheTarget)
{
    SipPeer phone(loop);
    SipPeer target(loop, "4712");
    sip::Session& call = phone.call(at("100"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_TRUE(call.transfer("sip:4712@" + target.agent->hostPort()));

    EXPECT_TRUE(phone.waitFor("transfer 100")) << phone.events();
    EXPECT_TRUE(target.waitFor("established")) << target.events();
    EXPECT_TRUE(phone.waitFor("transfer 200 ended")) << phone.events();
    EXPECT_EQ("<sip:4711@" + phone.agent->hostPort() + ">", target.lastInvitation.referredBy);
    call.hangUp();
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 1; }));
}

TEST_F(Transfers, BlindTransferToABusyNumber_FailsWithItsStatus)
{
    SipPeer phone(loop);
    sip::Session& call = phone.call(at("100"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_TRUE(call.transfer(at("101")));

    EXPECT_TRUE(phone.waitFor("transfer 486 ended")) << phone.events();
    EXPECT_EQ(sip::SessionState::kEstablished, call.state());
}

TEST_F(Transfers, AttendedTransferOfTwoNumbersOfTheExchange_ConnectsThem)
{
    SipPeer phone(loop);
    sip::Session& first = phone.call(at("100"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    sip::Session& second = phone.call(at("103"));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_TRUE(first.transfer(second.remoteContact(), second.dialogId().replaces()));

    EXPECT_TRUE(phone.waitFor("transfer 200 ended")) << phone.events();
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
    EXPECT_EQ(sip::SessionState::kClosed, second.state());
    first.hangUp();
    EXPECT_TRUE(phone.waitUntil([this] { return exchange.callCount() == 2; }));
}

TEST_F(Transfers, TransferAskedOfATelephone_IsOfferedToItsObserver)
{
    SipPeer first(loop, "4711");
    SipPeer second(loop, "4712");
    sip::Session& call = first.call("sip:4712@" + second.agent->hostPort());
    ASSERT_TRUE(first.waitFor("established"));
    ASSERT_TRUE(second.waitFor("established"));
    sip::Replaces const replaced{"some call@x", "to%1", "from", false};

    EXPECT_TRUE(call.transfer("sip:4713@127.0.0.1:5099;transport=tcp", replaced));

    ASSERT_TRUE(second.waitFor("transfer")) << second.events();
    sip::Transfer& asked = *second.transfers.at(0);
    EXPECT_EQ("sip:4713@127.0.0.1:5099;transport=tcp", asked.target());
    EXPECT_EQ(replaced, asked.replaces());
    EXPECT_TRUE(asked.accept());
    EXPECT_TRUE(first.waitFor("transfer 100")) << first.events();
    asked.notify(180, "Ringing");
    EXPECT_TRUE(first.waitFor("transfer 180")) << first.events();
    asked.notify(603, "Decline");
    EXPECT_TRUE(first.waitFor("transfer 603 ended")) << first.events();
    asked.notify(200, "OK");
    call.hangUp();
    EXPECT_TRUE(second.waitFor("closed remote")) << second.events();
    EXPECT_EQ(std::string::npos, first.events().find("transfer 200"));
}

TEST_F(Transfers, TransferOutsideACall_IsMadeByANumberThatTheExchangePlays)
{
    ScriptedEnd far(loop);

    far.ask("REFER", "100", exchange.hostPort(), "Refer-To: <" + far.uri() + ">\r\n");

    EXPECT_EQ("SIP/2.0 202 Accepted", firstLineOf(far.receive("SIP/2.0 ")));
    EXPECT_EQ("<sip:100@" + exchange.hostPort() + ">",
              headerOf(far.receive("INVITE"), "From").substr(0, exchange.hostPort().size() + 10));
}

TEST_F(Transfers, TransferOutsideACall_OfATelephonesNumber_IsRefused)
{
    SipPeer phone(loop, "4711");
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    ScriptedEnd far(loop);

    far.ask("REFER", "4711", exchange.hostPort(), "Refer-To: <" + far.uri() + ">\r\n");

    EXPECT_EQ("SIP/2.0 603 Decline", firstLineOf(far.receive("SIP/2.0 ")));
    EXPECT_TRUE(far.hearsNothingOf("INVITE", 1s));
}

TEST_F(Transfers, RefusedTransfer_EndsWithItsStatus)
{
    SipPeer first(loop, "4711");
    SipPeer second(loop, "4712");
    sip::Session& call = first.call("sip:4712@" + second.agent->hostPort());
    ASSERT_TRUE(first.waitFor("established"));
    ASSERT_TRUE(second.waitFor("established"));
    EXPECT_TRUE(call.transfer("sip:4713@127.0.0.1:5099"));
    ASSERT_TRUE(second.waitFor("transfer")) << second.events();

    second.transfers.clear();

    EXPECT_TRUE(first.waitFor("transfer 603 ended")) << first.events();
    EXPECT_TRUE(call.transfer("sip:4713@127.0.0.1:5099")) << "a second try must be possible";
    EXPECT_TRUE(second.waitFor("transfer"));
}

TEST_F(Transfers, InviteWithReplaces_TakesTheCallOver)
{
    SipPeer first(loop, "4711");
    SipPeer second(loop, "4712");
    sip::Session& call = first.call(at("100"));
    ASSERT_TRUE(first.waitFor("established"));
    sip::DialogId atExchange = call.dialogId();

    second.call(at("100"), [&atExchange](sip::CallRequest& request) { request.replaces = atExchange.replaces(); });

    EXPECT_TRUE(second.waitFor("established")) << second.events();
    EXPECT_TRUE(first.waitFor("closed remote")) << first.events();
}

TEST_F(Transfers, InviteThatReplacesNothing_IsRefused)
{
    SipPeer phone(loop);

    phone.call(at("100"), [](sip::CallRequest& request) {
        request.replaces = sip::Replaces{"no", "such", "call", false};
    });

    EXPECT_TRUE(phone.waitFor("closed rejected 481")) << phone.events();
}

TEST_F(Transfers, PickUpOfARingingNumber_ConnectsCallerAndPicker)
{
    SipPeer caller(loop, "4711");
    SipPeer picker(loop, "4712");
    caller.call(at("102"));
    ASSERT_TRUE(caller.waitFor("progress 180"));

    picker.call(at("*97102"));

    EXPECT_TRUE(picker.waitFor("established")) << picker.events();
    EXPECT_TRUE(caller.waitFor("established")) << caller.events();
    picker.session().hangUp();
    EXPECT_TRUE(caller.waitFor("closed remote")) << caller.events();
}

TEST_F(Transfers, GroupPickUp_TakesAnyRingingNumber)
{
    SipPeer caller(loop, "4711");
    SipPeer picker(loop, "4712");
    caller.call(at("102"));
    ASSERT_TRUE(caller.waitFor("progress 180"));

    picker.call(at("*98"));

    EXPECT_TRUE(picker.waitFor("established")) << picker.events();
    EXPECT_TRUE(caller.waitFor("established")) << caller.events();
}

TEST_F(Transfers, PickUpOfNothing_IsRefused)
{
    SipPeer picker(loop, "4712");

    picker.call(at("*98"));
    picker.call(at("*97102"));

    EXPECT_TRUE(picker.waitFor("closed rejected 480")) << picker.events();
    EXPECT_TRUE(picker.waitFor("closed rejected 480")) << picker.events();
}

}  // namespace telephone::test

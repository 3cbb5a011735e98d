// What the telephone sends for transfers, registrations and event packages, and outside of calls, as a whole.
#include "WholeMessages.h"

namespace telephone::test {

TEST_F(WholeMessages, Transfer_NamesTheTargetAndTheReplacedCall)
{
    connect();

    ASSERT_TRUE(call->transfer("sip:4713@exchange", sip::Replaces{"some call@x", "to%1", "from", false}));

    std::string const refer = far.receive("REFER ");
    EXPECT_EQ(R"(REFER sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * REFER
User-Agent: desk
Refer-To: <sip:4713@exchange?Replaces=some%20call%40x%3Bto-tag%3Dto%251%3Bfrom-tag%3Dfrom>
Referred-By: <sip:4711@PHONE>
Content-Length: 0

)",
              plain(refer));
    far.answer(refer, "202 Accepted");
    far.request("NOTIFY", invite, "Event: refer\r\nSubscription-State: active\r\nContent-Type: message/sipfrag\r\n",
                "SIP/2.0 100 Trying\r\n");
    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKNOTIFY2;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: 2 NOTIFY
Server: desk
Content-Length: 0

)",
              received("SIP/2.0 200"));
}

TEST_F(WholeMessages, AnswerToATransfer_IsFollowedByItsNotices)
{
    connect();

    far.request("REFER", invite, "Refer-To: <sip:4713@exchange>\r\n");
    ASSERT_TRUE(phone.waitFor("transfer")) << phone.events();
    ASSERT_TRUE(phone.transfers.at(0)->accept());

    EXPECT_EQ(R"(SIP/2.0 202 Accepted
Via: SIP/2.0/UDP FAR;branch=z9hG4bKREFER2;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: 2 REFER
Server: desk
Contact: <sip:4711@PHONE>
Expires: 180
Content-Length: 0

)",
              received("SIP/2.0 202"));
    std::string const first = far.receive("NOTIFY ");
    EXPECT_EQ(R"(NOTIFY sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * NOTIFY
User-Agent: desk
Event: refer;id=2
Subscription-State: active;expires=*
Content-Type: message/sipfrag;version=2.0
Content-Length: 20

SIP/2.0 100 Trying
)",
              plain(first));
    far.answer(first, "200 OK");
    phone.transfers.at(0)->notify(486, "Busy Here");
    EXPECT_EQ(R"(NOTIFY sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * NOTIFY
User-Agent: desk
Event: refer;id=2
Subscription-State: terminated;reason=noresource
Content-Type: message/sipfrag;version=2.0
Content-Length: 23

SIP/2.0 486 Busy Here
)",
              received("NOTIFY "));
}

TEST_F(WholeMessages, Registration_NamesTheDeviceAndIsTakenBack)
{
    phone.account.displayName = "Anna";
    phone.registerAt(far.hostPort());

    std::string const first = far.receive("REGISTER ");
    EXPECT_EQ(R"(REGISTER sip:FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE;line=*>;expires=3600;+sip.instance="<urn:uuid:00000000-0000-1000-8000-0004f2000001>"
Max-Forwards: 70
To: <sip:4711@FAR>
From: "Anna" <sip:4711@FAR>;tag=*
Call-ID: *
CSeq: * REGISTER
User-Agent: desk
Allow: ALL
Supported: replaces, join, timer, 100rel
Content-Length: 0

)",
              plain(first));
    far.answer(first, "200 OK", "Expires: 300\r\n");
    ASSERT_TRUE(phone.waitFor("registered 300")) << phone.events();
    phone.registration.reset();
    EXPECT_EQ(R"(REGISTER sip:FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE;line=*>;expires=0;+sip.instance="<urn:uuid:00000000-0000-1000-8000-0004f2000001>"
Max-Forwards: 70
To: <sip:4711@FAR>
From: "Anna" <sip:4711@FAR>;tag=*
Call-ID: *
CSeq: * REGISTER
User-Agent: desk
Content-Length: 0

)",
              received("REGISTER "));
}

TEST_F(WholeMessages, Subscription_NamesItsEventAndWhatItAccepts)
{
    phone.subscribe(far.uri(), "message-summary", "application/simple-message-summary", 600);

    EXPECT_EQ(R"(SUBSCRIBE sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * SUBSCRIBE
User-Agent: desk
Event: message-summary
Expires: 600
Accept: application/simple-message-summary
Content-Length: 0

)",
              received("SUBSCRIBE "));
}

TEST_F(WholeMessages, AnswerToASubscription_IsFollowedByItsNotices)
{
    far.ask("SUBSCRIBE", "4711", phone.agent->hostPort(), "Event: dialog;id=7\r\nExpires: 600\r\n");
    ASSERT_TRUE(phone.waitFor("subscribe")) << phone.events();
    sip::Notifier& notifier = *phone.notifiers.at(0);
    ASSERT_TRUE(notifier.accept("text/plain"));

    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 SUBSCRIBE
Server: desk
Contact: <sip:4711@PHONE>
Expires: 600
Content-Length: 0

)",
              received("SIP/2.0 200"));
    notifier.notify("state");
    std::string const notice = far.receive("NOTIFY ");
    EXPECT_EQ(R"(NOTIFY sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: * NOTIFY
User-Agent: desk
Event: dialog;id=7
Subscription-State: active;expires=*
Content-Type: text/plain
Content-Length: 5

state)",
              plain(notice));
    far.answer(notice, "200 OK");
    notifier.notify("", sip::SubscriptionState::kTerminated, "giveup");
    EXPECT_EQ(R"(NOTIFY sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: * NOTIFY
User-Agent: desk
Event: dialog;id=7
Subscription-State: terminated;reason=giveup
Content-Type: text/plain
Content-Length: 5

state)",
              received("NOTIFY "));
}

TEST_F(WholeMessages, AnswerToOptions_NamesWhatIsSupported)
{
    far.ask("OPTIONS", "4711", phone.agent->hostPort());

    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 OPTIONS
Server: desk
Allow: ALL
Supported: replaces, join, timer, 100rel
Accept: application/sdp, application/dtmf-relay, message/sipfrag
Content-Length: 0

)",
              received("SIP/2.0 200"));
}

TEST_F(WholeMessages, RequestOutsideACall_HasItsHeadersAndContent)
{
    ASSERT_TRUE(phone.agent->request(phone.account, "MESSAGE", far.uri() + "?Subject=x", {{"Subject", "hello"}},
                                     {"text/plain", "How are you?"}, {}));

    EXPECT_EQ(R"(MESSAGE sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Max-Forwards: 70
To: <sip:far@FAR>
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * MESSAGE
User-Agent: desk
Subject: hello
Content-Type: text/plain
Content-Length: 12

How are you?)",
              received("MESSAGE "));
}

}  // namespace telephone::test

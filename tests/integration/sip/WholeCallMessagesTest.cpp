// What the telephone sends in a call, each request and each response as a whole.
#include "WholeMessages.h"

namespace telephone::test {

TEST_F(WholeMessages, Invite_NamesTheCallerAndOffersAudio)
{
    phone.account.displayName = "Anna \"A\" Muster";

    phone.call(far.uri(), [](sip::CallRequest& request) {
        request.replaces = sip::Replaces{"call", "to", "from", true};
        request.referredBy = "<sip:100@exchange>";
        request.headers.add("Diversion", "<sip:raw@127.0.0.1>;reason=user-busy");
    });

    EXPECT_EQ(R"(INVITE sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>
From: "Anna \"A\" Muster" <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * INVITE
User-Agent: desk
Allow: ALL
Supported: replaces, join, timer, 100rel
Replaces: call;to-tag=to;from-tag=from;early-only
Referred-By: <sip:100@exchange>
Session-Expires: 1800
Min-SE: 90
Diversion: <sip:raw@127.0.0.1>;reason=user-busy
Content-Type: application/sdp
Content-Length: *

v=0
o=- * * IN IP4 127.0.0.1
s=-
c=IN IP4 127.0.0.1
t=0 0
m=audio * RTP/AVP 0 8 101
a=rtpmap:0 PCMU/8000
a=rtpmap:8 PCMA/8000
a=rtpmap:101 telephone-event/8000
a=fmtp:101 0-15
a=sendrecv
a=ptime:20
)",
              received("INVITE "));
}

TEST_F(WholeMessages, AckAndBye_BelongToTheCall)
{
    call = &phone.call(far.uri());
    invite = far.receive("INVITE ");
    far.accept(invite);

    EXPECT_EQ(R"(ACK sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * ACK
User-Agent: desk
Content-Length: 0

)",
              received("ACK "));
    call->hangUp("Q.850;cause=16");
    EXPECT_EQ(R"(BYE sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * BYE
User-Agent: desk
Reason: Q.850;cause=16
Content-Length: 0

)",
              received("BYE "));
}

TEST_F(WholeMessages, Cancel_IsThatOfTheInvite)
{
    call = &phone.call(far.uri());
    invite = far.receive("INVITE ");
    far.answer(invite, "180 Ringing");
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();

    call->hangUp();

    EXPECT_EQ(R"(CANCEL sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Max-Forwards: 70
To: <sip:far@FAR>
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * CANCEL
User-Agent: desk
Content-Length: 0

)",
              received("CANCEL "));
}

TEST_F(WholeMessages, AnswersToAnInvite_AreThreeWithTheHeadersOfTheirCaller)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.ring({{"Alert-Info", "<urn:alert:tone:internal>"}}));
        EXPECT_TRUE(session.answer({{"P-Asserted-Identity", "<sip:4711@desk>"}}));
    };

    takeCall();

    EXPECT_EQ(R"(SIP/2.0 100 Trying
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Content-Length: 0

)",
              received("SIP/2.0 "));
    EXPECT_EQ(R"(SIP/2.0 180 Ringing
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
Alert-Info: <urn:alert:tone:internal>
Content-Length: 0

)",
              received("SIP/2.0 "));
    std::string const ok = far.receive("SIP/2.0 ");
    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
P-Asserted-Identity: <sip:4711@desk>
Session-Expires: 1800;refresher=uas
Content-Type: application/sdp
Content-Length: *

v=0
o=- * * IN IP4 127.0.0.1
s=-
c=IN IP4 127.0.0.1
t=0 0
m=audio * RTP/AVP 0
a=rtpmap:0 PCMU/8000
a=sendrecv
a=ptime:20
)",
              plain(ok));
    far.acknowledge(ok);
    far.request("BYE", ok);
    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKBYE2;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 2 BYE
Server: desk
Content-Length: 0

)",
              received("SIP/2.0 "));
}

TEST_F(WholeMessages, EarlyMedia_IsAcknowledgedBeforeTheAnswer)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.progress()); };

    takeCall("Supported: 100rel\r\n");

    std::string const progress = far.receive("SIP/2.0 183");
    EXPECT_EQ(R"(SIP/2.0 183 Session Progress
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
Require: 100rel
RSeq: *
Content-Type: application/sdp
Content-Length: *

v=0
o=- * * IN IP4 127.0.0.1
s=-
c=IN IP4 127.0.0.1
t=0 0
m=audio * RTP/AVP 0
a=rtpmap:0 PCMU/8000
a=sendrecv
a=ptime:20
)",
              plain(progress));
    far.request("PRACK", progress, "RAck: " + headerOf(progress, "RSeq") + " 1 INVITE\r\n");
    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKPRACK2;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 2 PRACK
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
Content-Length: 0

)",
              received("SIP/2.0 200"));
    EXPECT_TRUE(phone.session().answer());
    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
Session-Expires: 1800;refresher=uas
Content-Length: 0

)",
              received("SIP/2.0 200"));
}

TEST_F(WholeMessages, Prack_NamesTheResponse)
{
    phone.call(far.uri());
    far.answer(far.receive("INVITE "), "180 Ringing", "Require: 100rel\r\nRSeq: 7\r\n");

    EXPECT_EQ(R"(PRACK sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * PRACK
User-Agent: desk
RAck: 7 * INVITE
Content-Length: 0

)",
              received("PRACK "));
}

TEST_F(WholeMessages, Deflection_NamesTheTargetAndTheReason)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.redirect("sip:4713@exchange", "no-answer"));
    };

    takeCall();

    EXPECT_EQ(R"(SIP/2.0 302 Moved Temporarily
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Contact: <sip:4713@exchange>
Diversion: <sip:4711@PHONE>;reason=no-answer
Content-Length: 0

)",
              received("SIP/2.0 302"));
}

TEST_F(WholeMessages, DeflectionAfterRinging_NamesTheTarget)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.ring());
        EXPECT_TRUE(session.redirect("sip:4713@exchange"));
    };

    takeCall();

    EXPECT_EQ(R"(SIP/2.0 302 Moved Temporarily
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Contact: <sip:4713@exchange>
Content-Length: 0

)",
              received("SIP/2.0 302"));
}

TEST_F(WholeMessages, HangUpOfARingingCall_IsBusyWithItsReason)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) { session.hangUp("SIP;cause=600"); };

    takeCall();

    EXPECT_EQ(R"(SIP/2.0 486 Busy Here
Via: SIP/2.0/UDP FAR;branch=z9hG4bKasked1;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: 1@FAR
CSeq: 1 INVITE
Server: desk
Reason: SIP;cause=600
Content-Length: 0

)",
              received("SIP/2.0 486"));
}

TEST_F(WholeMessages, Hold_OffersToSendOnly)
{
    connect();

    ASSERT_TRUE(call->modify(sip::Direction::kSendOnly));

    EXPECT_EQ(R"(INVITE sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * INVITE
Allow: ALL
Supported: replaces, join, timer, 100rel
Session-Expires: 1800;refresher=uac
Min-SE: 90
User-Agent: desk
Content-Type: application/sdp
Content-Length: *

v=0
o=- * * IN IP4 127.0.0.1
s=-
c=IN IP4 127.0.0.1
t=0 0
m=audio * RTP/AVP 0
a=rtpmap:0 PCMU/8000
a=sendonly
a=ptime:20
)",
              received("INVITE "));
}

TEST_F(WholeMessages, AnswerToAHold_ReceivesOnly)
{
    connect();

    far.request("INVITE", invite, {}, ScriptedEnd::description() + "a=sendonly\r\n");

    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKINVITE2;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: 2 INVITE
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
Session-Expires: 1800;refresher=uas
Content-Type: application/sdp
Content-Length: *

v=0
o=- * * IN IP4 127.0.0.1
s=-
c=IN IP4 127.0.0.1
t=0 0
m=audio * RTP/AVP 0
a=rtpmap:0 PCMU/8000
a=recvonly
a=ptime:20
)",
              received("SIP/2.0 200"));
}

TEST_F(WholeMessages, Refresh_AsksForTheIntervalAgain)
{
    connect();

    ASSERT_TRUE(call->refresh());

    EXPECT_EQ(R"(UPDATE sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Contact: <sip:4711@PHONE>
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * UPDATE
User-Agent: desk
Allow: ALL
Supported: replaces, join, timer, 100rel
Session-Expires: 1800;refresher=uac
Min-SE: 90
Content-Length: 0

)",
              received("UPDATE "));
}

TEST_F(WholeMessages, AnswerToAnUpdate_AnswersItsOffer)
{
    connect();

    far.request("UPDATE", invite, {}, ScriptedEnd::description());

    EXPECT_EQ(R"(SIP/2.0 200 OK
Via: SIP/2.0/UDP FAR;branch=z9hG4bKUPDATE2;rport=*;received=127.0.0.1
From: <sip:far@FAR>;tag=far
To: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: 2 UPDATE
Server: desk
Contact: <sip:4711@PHONE>
Allow: ALL
Supported: replaces, join, timer, 100rel
Session-Expires: 1800;refresher=uas
Content-Type: application/sdp
Content-Length: *

v=0
o=- * * IN IP4 127.0.0.1
s=-
c=IN IP4 127.0.0.1
t=0 0
m=audio * RTP/AVP 0
a=rtpmap:0 PCMU/8000
a=sendrecv
a=ptime:20
)",
              received("SIP/2.0 200"));
}

TEST_F(WholeMessages, DigitByInfo_HasItsDuration)
{
    connect();

    ASSERT_TRUE(call->sendDigits("d", 160ms));

    EXPECT_EQ(R"(INFO sip:far@FAR SIP/2.0
Via: SIP/2.0/UDP PHONE;branch=z9hG4bK*;rport
Max-Forwards: 70
To: <sip:far@FAR>;tag=far
From: <sip:4711@PHONE>;tag=*
Call-ID: *
CSeq: * INFO
User-Agent: desk
Content-Type: application/dtmf-relay
Content-Length: 24

Signal=D
Duration=160
)",
              received("INFO "));
}

}  // namespace telephone::test

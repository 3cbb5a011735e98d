// Calls with a far end that is written message by message.
#include "FarEnd.h"

namespace telephone::test {

TEST_F(FarEnd, Ringing_MakesTheDialogKnown)
{
    call();
    EXPECT_EQ("", session_->dialogId().remoteTag);

    far_.answer(invite_, "180 Ringing");

    ASSERT_TRUE(phone_.waitFor("progress 180")) << phone_.events();
    EXPECT_EQ("far", session_->dialogId().remoteTag);
    EXPECT_EQ(headerOf(invite_, "Call-ID"), session_->dialogId().callId);
    EXPECT_EQ(far_.uri(), session_->remoteContact());
    EXPECT_EQ(sip::SessionState::kEarly, session_->state());
}

TEST_F(FarEnd, Trying_IsNoProgress)
{
    call();

    far_.answer(invite_, "100 Trying");
    far_.answer(invite_, "181 Call Is Being Forwarded");

    ASSERT_TRUE(phone_.waitFor("progress 181")) << phone_.events();
    EXPECT_EQ("", phone_.events());
}

TEST_F(FarEnd, DescriptionWhileRinging_IsEarlyMedia)
{
    call();

    far_.answer(invite_, "180 Ringing", "Content-Type: text/plain\r\n", "hello");
    far_.answer(invite_, "183 Session Progress", {}, ScriptedEnd::description());

    EXPECT_TRUE(phone_.waitFor("progress 180")) << phone_.events();
    EXPECT_TRUE(phone_.waitFor("progress 183 early")) << phone_.events();
}

TEST_F(FarEnd, TextWhileRinging_IsNoEarlyMedia)
{
    call();

    far_.answer(invite_, "183 Session Progress", "Content-Type: text/plain\r\n", far_.description());

    EXPECT_TRUE(phone_.waitFor("progress 183")) << phone_.events();
}

TEST_F(FarEnd, AnswerWithoutADescription_UsesThatOfTheRinging)
{
    call();
    far_.answer(invite_, "183 Session Progress", {}, ScriptedEnd::description());

    far_.answer(invite_, "200 OK");

    EXPECT_TRUE(phone_.waitFor("established")) << phone_.events();
}

TEST_F(FarEnd, AnswerWithoutAnyDescription_EndsTheCall)
{
    call();

    far_.answer(invite_, "200 OK");

    EXPECT_TRUE(phone_.waitFor("closed failed 488")) << phone_.events();
}

TEST_F(FarEnd, IdentityThatTheServerAsserts_ReplacesTheDialledOne)
{
    registerHere();
    call();

    far_.answer(invite_, "180 Ringing", "P-Asserted-Identity: \"Seven\" <sip:7777@127.0.0.1>\r\n");

    EXPECT_TRUE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>")) << phone_.events();
}

TEST_F(FarEnd, IdentityThatAnotherFarEndAsserts_IsIgnored)
{
    ScriptedEnd server(loop);
    registerAt(server);
    call();

    far_.answer(invite_, "180 Ringing", "P-Asserted-Identity: \"Seven\" <sip:7777@127.0.0.1>\r\n");

    EXPECT_TRUE(phone_.waitFor("progress 180")) << phone_.events();
    EXPECT_FALSE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>", 1s));
    EXPECT_EQ(session_->remoteParty().uri.user, "far");
}

TEST_F(FarEnd, IdentityThatAFormerServerAsserts_IsIgnored)
{
    registerHere();
    phone_.registration.reset();
    far_.answer(far_.receive("REGISTER"), "200 OK");
    call();

    far_.answer(invite_, "180 Ringing", "P-Asserted-Identity: \"Seven\" <sip:7777@127.0.0.1>\r\n");

    EXPECT_TRUE(phone_.waitFor("progress 180")) << phone_.events();
    EXPECT_FALSE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>", 1s));
}

TEST_F(FarEnd, SameIdentityAgain_IsNoNews)
{
    registerHere();
    call();
    std::string const identity = "P-Asserted-Identity: \"Seven\" <sip:7777@127.0.0.1>\r\n";

    far_.answer(invite_, "180 Ringing", identity);
    far_.answer(invite_, "183 Session Progress", identity);

    EXPECT_TRUE(phone_.waitFor("progress 183")) << phone_.events();
    EXPECT_TRUE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>")) << phone_.events();
    EXPECT_FALSE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>", 1s));
}

TEST_F(FarEnd, Refusal_ClosesTheCallWithItsStatusAndReason)
{
    call();

    far_.answer(invite_, "486 Busy Here", "Reason: Q.850;cause=17\r\n");

    ASSERT_TRUE(phone_.waitFor("closed rejected 486")) << phone_.events();
    EXPECT_EQ("Busy Here", phone_.lastClosing.text);
    EXPECT_EQ("Q.850;cause=17", phone_.lastClosing.reasonHeader);
}

TEST_F(FarEnd, RedirectionWithoutAContact_RefusesTheCall)
{
    call();

    far_.answer(invite_, "399 Elsewhere");

    EXPECT_TRUE(phone_.waitFor("closed rejected 399")) << phone_.events();
}

TEST_F(FarEnd, Redirection_IsFollowedToItsContact)
{
    ScriptedEnd other(loop);
    call();

    far_.answer(invite_, "302 Moved Temporarily",
                "Contact: <" + other.uri() + ">\r\nDiversion: <sip:raw@127.0.0.1>;reason=unconditional\r\n");

    ASSERT_TRUE(phone_.waitFor("redirected " + other.uri())) << phone_.events();
    std::string const second = other.receive("INVITE");
    EXPECT_EQ("<sip:raw@127.0.0.1>;reason=unconditional", headerOf(second, "Diversion"));
    other.accept(second);
    EXPECT_TRUE(phone_.waitFor("established")) << phone_.events();
    EXPECT_EQ(other.uri(), session_->remoteContact());
}

TEST_F(FarEnd, ConnectionThatIsRefused_IsServiceUnavailable)
{
    phone_.call(far_.uri(), [](sip::CallRequest& request) { request.account.transport = sip::Transport::kTcp; });
    EXPECT_TRUE(phone_.waitFor("closed failed 503")) << phone_.events();

    phone_.registerAt(far_.hostPort(), "secret",
                      [](sip::Account& account) { account.transport = sip::Transport::kTcp; });
    EXPECT_TRUE(phone_.waitFor("unregistered 503")) << phone_.events();
}

TEST_F(FarEnd, RegistrationThatIsNotAnswered_Is408)
{
    phone_.registerAt(far_.hostPort());

    EXPECT_TRUE(phone_.waitFor("unregistered 408", 40s)) << phone_.events();
}

TEST_F(FarEnd, NoAnswerAtAll_IsATimeout)
{
    call();

    ASSERT_TRUE(phone_.waitFor("closed timeout 408", 40s)) << phone_.events();
    EXPECT_EQ("Request Timeout", phone_.lastClosing.text);
}

TEST_F(FarEnd, Bye_ClosesTheCallWithItsReason)
{
    connect();

    far_.request("BYE", invite_, "Reason: SIP;cause=200;text=\"elsewhere\"\r\n");

    ASSERT_TRUE(phone_.waitFor("closed remote")) << phone_.events();
    EXPECT_EQ("SIP;cause=200;text=\"elsewhere\"", phone_.lastClosing.reasonHeader);
}

TEST_F(FarEnd, HoldThatIsRefused_LeavesTheCallAsItWas)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));

    far_.answer(far_.receive("INVITE"), "488 Not Acceptable Here");

    EXPECT_TRUE(phone_.waitFor("refused 488")) << phone_.events();
    EXPECT_EQ(sip::SessionState::kEstablished, session_->state());
}

TEST_F(FarEnd, HoldThatIsRedirected_IsRefusedAndRedirectsNothing)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));

    far_.answer(far_.receive("INVITE"), "302 Moved Temporarily", "Contact: <sip:other@127.0.0.1:5999>\r\n");

    EXPECT_TRUE(phone_.waitFor("refused 302", 1s)) << phone_.events();
    EXPECT_EQ("", phone_.events());
    EXPECT_EQ(sip::Direction::kSendReceive, session_->localDirection());
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));
    EXPECT_NE("", far_.receive("INVITE", 1s));
}

TEST_F(FarEnd, HoldOfACallThatIsGone_ClosesIt)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));

    far_.answer(far_.receive("INVITE"), "481 Call Does Not Exist");

    EXPECT_TRUE(phone_.waitFor("closed failed 481")) << phone_.events();
}

TEST_F(FarEnd, HoldThatTimesOutThere_ClosesTheCall)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));

    far_.answer(far_.receive("INVITE"), "408 Request Timeout");

    EXPECT_TRUE(phone_.waitFor("closed timeout 408")) << phone_.events();
}

TEST_F(FarEnd, HoldAnsweredWithoutADescription_IsRefused)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));

    far_.answer(far_.receive("INVITE"), "200 OK");

    EXPECT_TRUE(phone_.waitFor("refused 488")) << phone_.events();
}

TEST_F(FarEnd, InviteWithoutADescription_IsAnsweredWithAnOffer)
{
    connect();

    far_.request("INVITE", invite_);

    std::string const answer = far_.receive("SIP/2.0 200");
    EXPECT_NE(std::string::npos, answer.find("\r\nm=audio ")) << answer;
}

TEST_F(FarEnd, DigitByInfo_IsReadInBothForms)
{
    connect();

    EXPECT_EQ("[digit 5] ", info("application/dtmf-relay", "Signal=5\r\nDuration=160\r\n"));
    EXPECT_EQ("[digit #] ", info("application/dtmf-relay; charset=utf-8", "Duration=160\r\nSignal= #\r\n"));
    EXPECT_EQ("[digit 7] ", info("APPLICATION/DTMF", "7"));
    EXPECT_EQ("", info("application/dtmf", "x"));
    EXPECT_EQ("", info("application/dtmf", " \r\n"));
}

TEST_F(FarEnd, OtherInfo_IsPassedOn)
{
    connect();

    EXPECT_EQ("[info] ", info("text/plain", "Signal=5"));
    EXPECT_EQ("text/plain", phone_.lastInfo.type);
    EXPECT_EQ("Signal=5", phone_.lastInfo.body);
}

TEST_F(FarEnd, InfoThatIsNotAnswered_FailsWithTheCall)
{
    connect();
    int status = 0;
    ASSERT_TRUE(
        session_->sendInfo({"text/plain", "x"}, [&status](sip::Response const& answer) { status = answer.status; }));

    far_.request("BYE", invite_);

    ASSERT_TRUE(phone_.waitFor("closed remote")) << phone_.events();
    EXPECT_EQ(481, status);
}

TEST_F(FarEnd, InfoThatIsRefused_SaysSo)
{
    connect();
    sip::Response received;
    ASSERT_TRUE(session_->sendInfo({"text/plain", "x"}, [&](sip::Response const& answer) { received = answer; }));

    far_.answer(far_.receive("INFO"), "415 Unsupported Media Type");

    EXPECT_TRUE(phone_.waitUntil([&] { return received.status == 415; }));
    EXPECT_EQ("Unsupported Media Type", received.reason);
}

}  // namespace telephone::test

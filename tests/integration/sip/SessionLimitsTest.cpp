// What a session refuses to do, and how it goes on after a far end that refuses, repeats itself or falls silent.
#include "FarEnd.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class SessionLimits : public FarEnd
{
protected:
    static std::string reasonOf(Outcome<> const& result) { return result ? "not refused" : result.error().reason; }
    // Asks for a hold, which the far end answers so.
    void refuseHold(std::string const& status, std::string const& headers = {})
    {
        ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));
        far_.answer(far_.receive("INVITE"), status, headers);
        far_.receive("ACK");
    }
    // A far end that has called, and whose call nobody has answered yet.
    sip::Session& takeCall(std::string const& headers = {}, std::string const& body = ScriptedEnd::description())
    {
        phone_.whenCalled = [](SipPeer&, sip::Session&) {};
        asked_ = far_.ask("INVITE", "4711", phone_.agent->hostPort(), headers, body);
        EXPECT_TRUE(phone_.waitFor("called")) << phone_.events();
        return phone_.session();
    }
    // The response to an INVITE that never becomes a call.
    std::string refusalOf(SipPeer& phone, std::string const& headers, std::string const& body)
    {
        far_.ask("INVITE", "4711", phone.agent->hostPort(), headers, body);
        EXPECT_EQ("SIP/2.0 100 Trying", firstLineOf(far_.receive("SIP/2.0 ")));
        std::string const refusal = far_.receive("SIP/2.0 ");
        EXPECT_EQ(0U, phone.sessionCount());
        return refusal;
    }

    std::string asked_;
};

TEST_F(SessionLimits, OperationsBeforeTheAnswer_AreRefusedWithTheReason)
{
    call();

    EXPECT_EQ("the call is not established", reasonOf(session_->modify(sip::Direction::kSendOnly)));
    EXPECT_EQ("the call is not established", reasonOf(session_->refresh()));
    EXPECT_EQ("the call is not established", reasonOf(session_->sendInfo({"text/plain", "x"})));
    EXPECT_EQ("the call is not established", reasonOf(session_->sendDigits("1")));
    EXPECT_EQ("the call is not established", reasonOf(session_->transfer("sip:100@127.0.0.1")));
    EXPECT_EQ("the call is not waiting for an answer", reasonOf(session_->ring()));
    EXPECT_EQ("the call is not waiting for an answer", reasonOf(session_->progress()));
    EXPECT_EQ("the call is not waiting for an answer", reasonOf(session_->answer()));
    EXPECT_EQ("the call is not waiting for an answer", reasonOf(session_->redirect("sip:100@127.0.0.1")));
}

TEST_F(SessionLimits, MalformedArguments_AreRefusedWithTheReason)
{
    connect();

    EXPECT_EQ("INFO needs a content type", reasonOf(session_->sendInfo({"", "x"})));
    EXPECT_EQ("\"1x\" are not digits (0-9 * # A-D)", reasonOf(session_->sendDigits("1x")));
    EXPECT_EQ("\"\" are not digits (0-9 * # A-D)", reasonOf(session_->sendDigits("")));
    EXPECT_EQ("\"nowhere\" is not a URI", reasonOf(session_->transfer("nowhere")));
    EXPECT_EQ("\"nowhere\" is not a URI", reasonOf(session_->redirect("nowhere")));
    EXPECT_TRUE(far_.hearsNothingOf("", 1s));
}

TEST_F(SessionLimits, SecondTransfer_WaitsForTheEndOfTheFirst)
{
    connect();
    ASSERT_TRUE(session_->transfer("sip:100@127.0.0.1"));

    EXPECT_EQ("the call is being transferred already", reasonOf(session_->transfer("sip:101@127.0.0.1")));

    far_.answer(far_.receive("REFER"), "603 Decline");
    ASSERT_TRUE(phone_.waitFor("transfer 603 ended")) << phone_.events();
    EXPECT_TRUE(session_->transfer("sip:101@127.0.0.1"));
}

TEST_F(SessionLimits, TransferTargetWithHeaders_KeepsThemBeforeReplaces)
{
    connect();

    ASSERT_TRUE(session_->transfer("sip:100@127.0.0.1?Subject=x", sip::Replaces{"c", "t", "f", false}));

    EXPECT_EQ("<sip:100@127.0.0.1?Subject=x&Replaces=c%3Bto-tag%3Dt%3Bfrom-tag%3Df>",
              headerOf(far_.receive("REFER"), "Refer-To"));
}

TEST_F(SessionLimits, Rejection_TakesFinalRefusalsOnly)
{
    sip::Session& call = takeCall();

    call.reject(299, "No");
    call.reject(700, "No");
    EXPECT_EQ(sip::SessionState::kIncoming, call.state());
    call.reject(699, "No");

    EXPECT_EQ("SIP/2.0 100 Trying", firstLineOf(far_.receive("SIP/2.0 ")));
    EXPECT_EQ("SIP/2.0 699 No", firstLineOf(far_.receive("SIP/2.0 ")));
    EXPECT_EQ(sip::SessionState::kClosed, call.state());
}

TEST_F(SessionLimits, RejectionWithTheFirstFinalRefusal_IsSent)
{
    takeCall().reject(300, "Multiple Choices");

    EXPECT_EQ("SIP/2.0 300 Multiple Choices", firstLineOf(far_.receive("SIP/2.0 3")));
}

TEST_F(SessionLimits, HangUpOfACallThatRings_IsBusyWithoutAReason)
{
    sip::Session& call = takeCall();

    call.hangUp();

    std::string const refusal = far_.receive("SIP/2.0 4");
    EXPECT_EQ("SIP/2.0 486 Busy Here", firstLineOf(refusal));
    EXPECT_EQ("", headerOf(refusal, "Reason"));
}

TEST_F(SessionLimits, HangUpAfterTheEnd_SendsNothing)
{
    connect();
    session_->hangUp();
    far_.answer(far_.receive("BYE"), "200 OK");

    session_->hangUp("Q.850;cause=16");

    EXPECT_TRUE(far_.hearsNothingOf("", 40s));
}

TEST_F(SessionLimits, InviteWithoutAContact_IsABadRequest)
{
    far_.sendTo(phone_.agent->hostPort(), "INVITE sip:4711@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP " + far_.hostPort() +
                                              ";branch=z9hG4bK1;rport\r\nMax-Forwards: 70\r\n"
                                              "From: <sip:far@127.0.0.1>;tag=far\r\nTo: <sip:4711@127.0.0.1>\r\n"
                                              "Call-ID: 1\r\nCSeq: 1 INVITE\r\nContent-Length: 0\r\n\r\n");

    EXPECT_EQ("SIP/2.0 100 Trying", firstLineOf(far_.receive("SIP/2.0 ")));
    EXPECT_EQ("SIP/2.0 400 Missing Contact", firstLineOf(far_.receive("SIP/2.0 ")));
    EXPECT_EQ(0U, phone_.sessionCount());
}

TEST_F(SessionLimits, InviteWithAnotherBody_IsAnUnsupportedType)
{
    std::string const refusal = refusalOf(phone_, "Content-Type: text/plain\r\n", "hello");

    EXPECT_EQ("SIP/2.0 415 Unsupported Media Type", firstLineOf(refusal));
    EXPECT_EQ("application/sdp", headerOf(refusal, "Accept"));
}

TEST_F(SessionLimits, PlainInviteWhereEncryptionIsRequired_IsRefusedWithAWarning)
{
    sip::UserAgentConfig config;
    config.encryption = sip::Encryption::kRequired;
    SipPeer strict(loop, "4711", config);
    config.keysWithoutTls = true;
    SipPeer lenient(loop, "4711", config);

    std::string const withoutTls = refusalOf(strict, {}, ScriptedEnd::description());
    std::string const withoutKeys = refusalOf(lenient, {}, ScriptedEnd::description());

    EXPECT_EQ("SIP/2.0 488 Not Acceptable Here", firstLineOf(withoutTls));
    EXPECT_EQ("399 " + strict.agent->hostPort() +
                  " \"encrypted audio is required, but its keys would travel without TLS\"",
              headerOf(withoutTls, "Warning"));
    EXPECT_EQ("SIP/2.0 488 Not Acceptable Here", firstLineOf(withoutKeys));
    EXPECT_EQ("399 " + lenient.agent->hostPort() + " \"encrypted audio is required\"",
              headerOf(withoutKeys, "Warning"));
}

TEST_F(SessionLimits, CallWhereEncryptionIsRequired_NeedsTls)
{
    sip::UserAgentConfig config;
    config.encryption = sip::Encryption::kRequired;
    SipPeer strict(loop, "4711", config);
    sip::CallRequest request;
    request.account = strict.account;
    request.target = far_.uri();

    auto const call = strict.agent->call(request, strict);

    ASSERT_FALSE(call);
    EXPECT_EQ(
        (Refusal{RefusalKind::kNotSupported, "encrypted audio is required, but its keys would travel without TLS"}),
        call.error());
    EXPECT_TRUE(far_.hearsNothingOf("", 1s));
}

TEST_F(SessionLimits, EarlyMediaOfACallWithoutAnOffer_NeedsACallerThatAcknowledges)
{
    EXPECT_EQ("a call without an offer cannot have early media", reasonOf(takeCall({}, {}).progress()));
}

TEST_F(SessionLimits, RefusedChange_LeavesTheDirection)
{
    connect();

    refuseHold("500 Server Internal Error");

    ASSERT_TRUE(phone_.waitFor("refused 500")) << phone_.events();
    EXPECT_EQ(sip::Direction::kSendReceive, session_->localDirection());
    EXPECT_TRUE(far_.hearsNothingOf("INVITE", 20s));
}

TEST_F(SessionLimits, ChangeThatIsRefusedForNow_IsRepeated)
{
    connect();

    refuseHold("500 Server Internal Error", "Retry-After: 3\r\n");

    EXPECT_TRUE(far_.hearsNothingOf("INVITE", 2900ms));
    std::string const again = far_.receive("INVITE", 200ms);
    EXPECT_NE(std::string::npos, again.find("\r\na=sendonly\r\n")) << again;
    far_.accept(again);
    EXPECT_TRUE(phone_.waitFor("modified 200")) << phone_.events();
    EXPECT_EQ("", phone_.events());
}

TEST_F(SessionLimits, ChangeThatCrossesOneOfTheFarEnd_IsRepeated)
{
    connect();

    refuseHold("491 Request Pending");

    far_.accept(far_.receive("INVITE", 5s));
    EXPECT_TRUE(phone_.waitFor("modified 200")) << phone_.events();
    EXPECT_EQ("", phone_.events());
}

TEST_F(SessionLimits, ChallengedChange_IsRefusedWithoutAPassword)
{
    connect();

    refuseHold("401 Unauthorized", "WWW-Authenticate: Digest realm=\"pbx\", nonce=\"n\"\r\n");

    EXPECT_TRUE(phone_.waitFor("refused 401")) << phone_.events();
}

TEST_F(SessionLimits, ChallengedChange_IsRepeatedWithThePassword)
{
    phone_.account.password = "secret";
    connect();

    refuseHold("407 Proxy Authentication Required", "Proxy-Authenticate: Digest realm=\"pbx\", nonce=\"n\"\r\n");

    std::string const again = far_.receive("INVITE");
    EXPECT_NE("", headerOf(again, "Proxy-Authorization"));
    far_.accept(again);
    EXPECT_TRUE(phone_.waitFor("modified 200")) << phone_.events();
    EXPECT_EQ("", phone_.events());
}

TEST_F(SessionLimits, ChangeThatFollowsARefusedOne_IsSent)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));
    ASSERT_TRUE(session_->modify(sip::Direction::kInactive));
    far_.answer(far_.receive("INVITE"), "488 Not Acceptable Here");
    ASSERT_TRUE(phone_.waitFor("refused 488")) << phone_.events();

    std::string const next = far_.receive("INVITE");
    EXPECT_NE(std::string::npos, next.find("\r\na=inactive\r\n")) << next;
    far_.accept(next);
    EXPECT_TRUE(phone_.waitFor("modified 200")) << phone_.events();
}

TEST_F(SessionLimits, RefreshDuringAChange_SendsNothingMore)
{
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));
    std::string const change = far_.receive("INVITE");

    EXPECT_TRUE(session_->refresh());

    far_.accept(change);
    EXPECT_TRUE(phone_.waitFor("modified 200")) << phone_.events();
    EXPECT_TRUE(far_.hearsNothingOf("INVITE", 10s));
}

TEST_F(SessionLimits, RefreshByInviteThatIsRefused_IsRepeatedAfterTenSeconds)
{
    connect();
    ASSERT_TRUE(session_->refresh());

    far_.answer(far_.receive("INVITE"), "503 Service Unavailable");

    far_.receive("ACK");
    EXPECT_TRUE(far_.hearsNothingOf("INVITE", 9900ms));
    far_.accept(far_.receive("INVITE", 200ms));
    EXPECT_FALSE(phone_.waitFor("modified 200", 1s)) << "nobody has asked for a change";
    EXPECT_EQ("", phone_.events());
    EXPECT_EQ(sip::SessionState::kEstablished, session_->state());
}

TEST_F(SessionLimits, FarEndThatDropsUpdateFromItsMethods_IsRefreshedByInvite)
{
    call();
    far_.accept(invite_, "Allow: INVITE, UPDATE\r\n");
    ASSERT_TRUE(phone_.waitFor("established")) << phone_.events();
    ASSERT_TRUE(session_->refresh());
    far_.answer(far_.receive("UPDATE"), "200 OK", "Allow: INVITE\r\n");
    sleepFor(1s);

    ASSERT_TRUE(session_->refresh());

    EXPECT_NE("", far_.receive("INVITE"));
}

TEST_F(SessionLimits, UpdateThatIsNotImplemented_IsNotSentAgain)
{
    call();
    far_.accept(invite_, "Allow: UPDATE\r\n");
    ASSERT_TRUE(phone_.waitFor("established")) << phone_.events();
    ASSERT_TRUE(session_->refresh());
    far_.answer(far_.receive("UPDATE"), "501 Not Implemented");
    far_.answer(far_.receive("INVITE"), "501 Not Implemented");
    far_.receive("ACK");

    EXPECT_TRUE(far_.hearsNothingOf("INVITE", 9s)) << "only UPDATE is replaced by another method";
    EXPECT_NE("", far_.receive("INVITE", 2s));
}

TEST_F(SessionLimits, SilentCall_EndsFortySecondsAfterTheFarEndHasTried)
{
    connect();
    ASSERT_TRUE(session_->fallSilent());
    sleepFor(60s);
    far_.request("INFO", invite_, "Content-Type: text/plain\r\n", "hello");
    far_.request("BYE", invite_);
    sleepFor(30s);
    far_.request("BYE", invite_);

    EXPECT_FALSE(phone_.waitFor("closed timeout 408", 9900ms));
    EXPECT_TRUE(phone_.waitFor("closed timeout 408", 200ms)) << phone_.events();
    EXPECT_EQ("Request Timeout", phone_.lastClosing.text);
    EXPECT_EQ("", phone_.events());
    EXPECT_EQ("", far_.receive("", 40s)) << "a silent end answers nothing";
    EXPECT_EQ("the call has ended", reasonOf(session_->fallSilent()));
}

TEST_F(SessionLimits, SilentCallThatIsHungUp_IsNotEndedAgain)
{
    connect();
    ASSERT_TRUE(session_->fallSilent());
    far_.request("BYE", invite_);
    sleepFor(10s);

    session_->hangUp();

    EXPECT_FALSE(phone_.waitFor("closed timeout 408", 60s));
}

TEST_F(SessionLimits, CallOverAConnection_CannotFallSilent)
{
    SipPeer other(loop, "4712");
    sip::Session& call = phone_.call("sip:4712@" + other.agent->hostPort(sip::Transport::kTcp) + ";transport=tcp");
    ASSERT_TRUE(phone_.waitFor("established")) << phone_.events();

    EXPECT_EQ("only a call over UDP can fall silent", reasonOf(call.fallSilent()));
    EXPECT_EQ("only a call over UDP can fall silent", reasonOf(other.session().fallSilent()));
}

TEST_F(SessionLimits, Redirections_AreFollowedTenTimes)
{
    call();
    for (int i = 1; i <= 10; ++i) {
        far_.answer(invite_, "302 Moved Temporarily",
                    "Contact: <" + far_.uri() + ">\r\nHistory-Info: <sip:" + std::to_string(i) +
                        "@127.0.0.1>;index=1\r\n");
        ASSERT_TRUE(phone_.waitFor("redirected " + far_.uri())) << i << ": " << phone_.events();
        invite_ = far_.receive("INVITE");
        ASSERT_EQ(static_cast<std::size_t>(i), headersOf(invite_, "History-Info").size()) << invite_;
    }

    far_.answer(invite_, "302 Moved Temporarily",
                "Contact: <" + far_.uri() + ">\r\nHistory-Info: <sip:11@127.0.0.1>;index=1\r\n");

    EXPECT_TRUE(far_.hearsNothingOf("INVITE sip:11", 1s));
    EXPECT_EQ("<sip:10@127.0.0.1>;index=1", headersOf(invite_, "History-Info").back());
}

TEST_F(SessionLimits, RedirectionToNowhere_RefusesTheCall)
{
    call();

    far_.answer(invite_, "302 Moved Temporarily",
                "Contact: <tel:+4930>\r\nDiversion: <sip:raw@127.0.0.1>;reason=unknown\r\n");

    EXPECT_TRUE(phone_.waitFor("closed rejected 302")) << phone_.events();
}

TEST_F(SessionLimits, DigitsByInfo_FollowEachOtherWhenTheOneBeforeIsAnswered)
{
    connect();
    ASSERT_FALSE(session_->supportsTelephoneEvents());
    ASSERT_TRUE(session_->sendDigits("1", 160ms));
    ASSERT_TRUE(session_->sendDigits("2", 40ms));
    std::string const first = far_.receive("INFO");
    EXPECT_TRUE(first.ends_with("\r\n\r\nSignal=1\r\nDuration=160\r\n")) << first;
    EXPECT_TRUE(far_.hearsNothingOf("INFO sip:far@" + far_.hostPort() + " SIP/2.0\r\nx", 400ms));

    far_.answer(first, "415 Unsupported Media Type");
    std::string second = far_.receive("INFO");
    while (second.ends_with("Duration=160\r\n")) {
        second = far_.receive("INFO");
    }
    EXPECT_TRUE(second.ends_with("\r\n\r\nSignal=2\r\nDuration=40\r\n")) << second;
    far_.answer(second, "200 OK");
    sleepFor(1s);
    ASSERT_TRUE(session_->sendDigits("3"));
    EXPECT_TRUE(far_.receive("INFO").ends_with("\r\n\r\nSignal=3\r\nDuration=100\r\n"));
}

TEST_F(SessionLimits, DigitsOfAnEndedCall_AreForgotten)
{
    connect();
    ASSERT_TRUE(session_->sendDigits("12"));
    std::string const first = far_.receive("INFO");

    far_.request("BYE", invite_);

    ASSERT_TRUE(phone_.waitFor("closed remote")) << phone_.events();
    far_.answer(first, "200 OK");
    EXPECT_TRUE(far_.hearsNothingOf("INFO", 40s));
}

TEST_F(SessionLimits, DigitsByInfo_AreThoseOfTheKeypadOnly)
{
    connect();

    EXPECT_EQ("[digit A] ", info("application/dtmf-relay", "Signal=A"));
    EXPECT_EQ("[digit d] ", info("application/dtmf-relay", "Signal=d"));
    EXPECT_EQ("[digit *] ", info("application/dtmf-relay", "Signal=*"));
    EXPECT_EQ("", info("application/dtmf-relay", "Signal=E"));
    EXPECT_EQ("", info("application/dtmf-relay", "Signal="));
}

TEST_F(SessionLimits, IdentityInAnAnswerToAHold_ReplacesTheDialledOne)
{
    registerHere();
    connect();
    ASSERT_TRUE(session_->modify(sip::Direction::kSendOnly));

    far_.accept(far_.receive("INVITE"), "P-Asserted-Identity: \"Seven\" <sip:7777@127.0.0.1>\r\n");

    EXPECT_TRUE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>")) << phone_.events();
    EXPECT_TRUE(phone_.waitFor("modified 200")) << phone_.events();
}

TEST_F(SessionLimits, IdentityAndPrecedenceInAReInvite_AreReported)
{
    registerHere();
    connect();

    far_.request("INVITE", invite_,
                 "P-Asserted-Identity: \"Eight\" <sip:7778@127.0.0.1>\r\nResource-Priority: dsn.flash\r\n",
                 ScriptedEnd::description());

    EXPECT_TRUE(phone_.waitFor("identity Eight <sip:7778@127.0.0.1>")) << phone_.events();
    EXPECT_TRUE(phone_.waitFor("precedence dsn.flash")) << phone_.events();
    EXPECT_TRUE(phone_.waitFor("resumed")) << phone_.events();
}

TEST_F(SessionLimits, NewNameOfTheSameParty_IsReported)
{
    registerHere();
    call();
    far_.answer(invite_, "180 Ringing", "P-Asserted-Identity: \"Seven\" <sip:7777@127.0.0.1>\r\n");
    ASSERT_TRUE(phone_.waitFor("identity Seven <sip:7777@127.0.0.1>")) << phone_.events();

    far_.accept(invite_, "P-Asserted-Identity: \"Seven B\" <sip:7777@127.0.0.1>\r\n");

    EXPECT_TRUE(phone_.waitFor("identity Seven B <sip:7777@127.0.0.1>")) << phone_.events();
}

TEST_F(SessionLimits, FarEndThatMoves_GetsTheByeThere)
{
    connect();
    ScriptedEnd elsewhere(loop);

    far_.request("INVITE", invite_, "Contact: <" + elsewhere.uri() + ">\r\n", ScriptedEnd::description());
    far_.acknowledge(far_.receive("SIP/2.0 200"));
    sleepFor(100ms);

    EXPECT_EQ(elsewhere.uri(), session_->remoteContact());
    session_->hangUp();
    EXPECT_NE("", elsewhere.receive("BYE"));
}

TEST_F(SessionLimits, UnacceptableAnswer_EndsTheCallWithTheReason)
{
    sip::UserAgentConfig config;
    config.encryption = sip::Encryption::kRequired;
    config.keysWithoutTls = true;
    SipPeer strict(loop, "4711", config);
    strict.call(far_.uri());

    far_.accept(far_.receive("INVITE"));

    ASSERT_TRUE(strict.waitFor("closed failed 488")) << strict.events();
    EXPECT_EQ("encrypted audio is required", strict.lastClosing.text);
}

}  // namespace telephone::test

// Calls between two user agents.
#include "SipFixture.h"

namespace telephone::test {

class FrameCounter : public sip::AudioSink
{
public:
    void writeFrame(sip::AudioFrame const&) override { ++frames; }

    std::size_t frames = 0;
};

class Sessions : public SipTest
{
protected:
    std::string toSecond() const { return "sip:4712@" + second.agent->hostPort(); }
    sip::Session& connect(std::function<void(sip::CallRequest&)> const& change = {})
    {
        sip::Session& call = first.call(toSecond(), change);
        EXPECT_TRUE(first.waitFor("established")) << first.events();
        EXPECT_TRUE(second.waitFor("established")) << second.events();
        return call;
    }

    SipPeer first{loop, "4711"};
    SipPeer second{loop, "4712"};
};

TEST_F(Sessions, EstablishedCall_HasTheSameDialogAtBothEnds)
{
    sip::Session& call = connect();

    sip::DialogId const here = call.dialogId();
    sip::DialogId const there = second.session().dialogId();
    EXPECT_EQ(here.callId, there.callId);
    EXPECT_EQ(here.localTag, there.remoteTag);
    EXPECT_EQ(here.remoteTag, there.localTag);
    EXPECT_TRUE(there.matches(here.replaces()));
    EXPECT_EQ("sip:4712@" + second.agent->hostPort(), call.remoteContact());
    EXPECT_EQ("sip:4711@" + first.agent->hostPort(), second.session().remoteContact());
}

TEST_F(Sessions, Invitation_TellsWhoCallsAndHow)
{
    connect([](sip::CallRequest& request) {
        request.account.displayName = "Al \"the\" Caller";
        request.headers = {{"Diversion", "<sip:4720@example.com>;reason=user-busy, <sip:4721@example.com>"},
                           {"P-Asserted-Identity", "\"Alice\" <sip:+4989@example.com>"},
                           {"Alert-Info", "<http://example.com>;info=alert-autoanswer"},
                           {"Resource-Priority", "ets.0"}};
        request.referredBy = "<sip:4730@example.com>";
    });

    sip::Invitation const& invitation = second.lastInvitation;
    EXPECT_EQ("Al \"the\" Caller", invitation.from.displayName);
    EXPECT_EQ("4711", invitation.from.uri.user);
    EXPECT_EQ("4711", invitation.caller().uri.user);  // only the line's server can assert another
    ASSERT_EQ(2U, invitation.diversions.size());
    EXPECT_EQ("4720", invitation.diversions[0].party.uri.user);
    EXPECT_EQ("user-busy", invitation.diversions[0].reason);
    EXPECT_TRUE(invitation.answerAutomatically);
    EXPECT_EQ("ets.0", invitation.resourcePriority);
    EXPECT_EQ("<sip:4730@example.com>", invitation.referredBy);
}

TEST_F(Sessions, EarlyMedia_IsHeardBeforeTheAnswer)
{
    second.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.progress()); };
    FrameCounter heard;

    sip::Session& call = first.call(toSecond());
    call.audio().setSink(&heard);

    EXPECT_TRUE(first.waitFor("progress 183 early")) << first.events();
    EXPECT_TRUE(first.waitUntil([&heard] { return heard.frames > 0; }));
    EXPECT_TRUE(second.session().answer());
    EXPECT_TRUE(first.waitFor("established")) << first.events();
    call.audio().setSink(nullptr);
}

TEST_F(Sessions, CancelledCall_IsToldToTheCalledParty)
{
    second.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    sip::Session& call = first.call(toSecond());
    ASSERT_TRUE(first.waitFor("progress 180"));

    call.hangUp();

    EXPECT_TRUE(second.waitFor("closed cancelled")) << second.events();
}

TEST_F(Sessions, CallCancelledBeforeAnyDecision_IsToldToTheCalledParty)
{
    second.whenCalled = [](SipPeer&, sip::Session&) {};
    sip::Session& call = first.call(toSecond());
    ASSERT_TRUE(second.waitFor("called"));

    call.hangUp();

    EXPECT_TRUE(second.waitFor("closed cancelled")) << second.events();
}

TEST_F(Sessions, Refusal_CarriesItsHeaders)
{
    second.whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.ring());
        session.reject(480, "Not now", {{"Retry-After", "120"}});
    };

    first.call(toSecond());

    EXPECT_TRUE(first.waitFor("closed rejected 480")) << first.events();
    EXPECT_EQ("Not now", first.lastClosing.text);
    EXPECT_EQ("120", first.lastClosing.headers.value("Retry-After"));
}

TEST_F(Sessions, CallThatNobodyKeeps_IsTemporarilyUnavailable)
{
    second.whenCalled = [](SipPeer& phone, sip::Session&) { phone.dropSession(0); };

    first.call(toSecond());

    EXPECT_TRUE(first.waitFor("closed rejected 480")) << first.events();
}

TEST_F(Sessions, UnknownUser_IsNotFound)
{
    first.call("sip:unknown@" + second.agent->hostPort());

    EXPECT_TRUE(first.waitFor("closed rejected 404")) << first.events();
}

TEST_F(Sessions, Deflection_IsFollowedAndCarriesItsReason)
{
    SipPeer third(loop, "4713");
    second.whenCalled = [&third](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.redirect("sip:4713@" + third.agent->hostPort(), "user-busy"));
    };

    first.call(toSecond());

    EXPECT_TRUE(first.waitFor("redirected sip:4713@" + third.agent->hostPort())) << first.events();
    EXPECT_TRUE(first.waitFor("established")) << first.events();
    EXPECT_TRUE(third.waitFor("established")) << third.events();
    ASSERT_EQ(1U, third.lastInvitation.diversions.size());
    EXPECT_EQ("4712", third.lastInvitation.diversions[0].party.uri.user);
    EXPECT_EQ("user-busy", third.lastInvitation.diversions[0].reason);
    EXPECT_EQ(first.session().dialogId().callId, third.session().dialogId().callId);
    first.session().hangUp();
    EXPECT_TRUE(third.waitFor("closed remote")) << third.events();
}

TEST_F(Sessions, DeflectionAfterRinging_IsFollowedToo)
{
    SipPeer third(loop, "4713");
    second.whenCalled = [&third](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.ring());
        EXPECT_TRUE(session.redirect("sip:4713@" + third.agent->hostPort(), "no-answer"));
    };

    first.call(toSecond());

    EXPECT_TRUE(first.waitFor("progress 180")) << first.events();
    EXPECT_TRUE(first.waitFor("established")) << first.events();
    EXPECT_TRUE(third.waitFor("established")) << third.events();
    EXPECT_EQ("no-answer", third.lastInvitation.diversions.at(0).reason);
}

TEST_F(Sessions, DeflectionInACircle_EndsWithTheRedirection)
{
    second.whenCalled = [this](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.redirect(toSecond(), "unconditional"));
    };

    first.call(toSecond());

    EXPECT_TRUE(first.waitFor("closed rejected 302")) << first.events();
}

TEST_F(Sessions, DeflectionToNowhere_FailsWithTheRedirection)
{
    second.whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.redirect("sip:1@host.invalid", "user-busy"));
    };

    first.call(toSecond());

    EXPECT_TRUE(first.waitUntil([this] { return first.session().state() == sip::SessionState::kClosed; }));
}

TEST_F(Sessions, HangUp_CarriesItsReason)
{
    sip::Session& call = connect();

    call.hangUp("Q.850;cause=16;text=\"Terminated\"");

    EXPECT_TRUE(second.waitFor("closed remote")) << second.events();
    EXPECT_EQ("Q.850;cause=16;text=\"Terminated\"", second.lastClosing.reasonHeader);
    EXPECT_EQ(sip::SessionState::kClosed, call.state());
}

TEST_F(Sessions, CancelForACallAnsweredElsewhere_SaysSo)
{
    sip::Closing closing;
    closing.reasonHeader = "SIP;cause=200;text=\"Call completed elsewhere\"";

    EXPECT_TRUE(closing.answeredElsewhere());
    closing.reasonHeader = "SIP;cause=487";
    EXPECT_FALSE(closing.answeredElsewhere());
}

TEST_F(Sessions, HoldAndRetrieve_ChangeTheDirectionAtBothEnds)
{
    sip::Session& call = connect();

    EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));
    EXPECT_TRUE(first.waitFor("modified 200")) << first.events();
    EXPECT_TRUE(second.waitFor("held")) << second.events();
    EXPECT_TRUE(second.session().isHeldByRemote());
    EXPECT_FALSE(call.isHeldByRemote());
    EXPECT_EQ(sip::Direction::kSendOnly, call.audio().direction());

    EXPECT_TRUE(call.modify(sip::Direction::kSendReceive));
    EXPECT_TRUE(first.waitFor("modified 200")) << first.events();
    EXPECT_TRUE(second.waitFor("resumed")) << second.events();
    EXPECT_EQ(sip::Direction::kSendReceive, second.session().audio().direction());
}

TEST_F(Sessions, HoldFromBothEnds_StopsTheAudioUntilBothRetrieve)
{
    sip::Session& call = connect();
    EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));
    ASSERT_TRUE(first.waitFor("modified 200"));
    EXPECT_TRUE(second.session().modify(sip::Direction::kSendOnly));
    ASSERT_TRUE(second.waitFor("modified 200")) << second.events();

    EXPECT_EQ(sip::Direction::kInactive, second.session().audio().direction());
    EXPECT_TRUE(call.modify(sip::Direction::kSendReceive));
    ASSERT_TRUE(first.waitFor("modified 200")) << first.events();
    EXPECT_TRUE(call.isHeldByRemote());
    EXPECT_EQ(sip::Direction::kReceiveOnly, call.audio().direction());
}

TEST_F(Sessions, TwoChangesAtOnce_FollowEachOther)
{
    sip::Session& call = connect();

    {
        std::lock_guard guard(loop);
        EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));
        EXPECT_TRUE(call.modify(sip::Direction::kSendReceive));
    }

    EXPECT_TRUE(second.waitFor("held")) << second.events();
    EXPECT_TRUE(second.waitFor("resumed")) << second.events();
    EXPECT_TRUE(first.waitFor("modified 200"));
    EXPECT_TRUE(first.waitFor("modified 200"));
}

TEST_F(Sessions, GlareOfTwoHolds_EndsWithBothHolding)
{
    sip::Session& call = connect();

    {
        std::lock_guard guard(loop);
        EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));
        EXPECT_TRUE(second.session().modify(sip::Direction::kSendOnly));
    }

    EXPECT_TRUE(first.waitFor("modified 200")) << first.events();
    EXPECT_TRUE(second.waitFor("modified 200")) << second.events();
    EXPECT_EQ(sip::Direction::kInactive, call.audio().direction());
    EXPECT_EQ(sip::Direction::kInactive, second.session().audio().direction());
}

TEST_F(Sessions, Digits_GoByTelephoneEventsOnce)
{
    sip::Session& call = connect();
    ASSERT_TRUE(call.supportsTelephoneEvents());

    EXPECT_TRUE(call.sendDigits("1*#d", 60ms));

    for (char const* digit : {"digit 1", "digit *", "digit #", "digit D"}) {
        EXPECT_TRUE(second.waitFor(digit)) << digit << " of " << second.events();
    }
    EXPECT_FALSE(second.waitFor("digit 1", 100ms));
    EXPECT_FALSE(call.sendDigits("x"));
}

TEST_F(SipTest, DigitsForAFarEndWithoutTelephoneEvents_GoByInfo)
{
    sip::UserAgentConfig plain;
    plain.telephoneEvents = false;
    SipPeer first(loop);
    SipPeer second(loop, "4712", plain);
    sip::Session& call = first.call("sip:4712@" + second.agent->hostPort());
    ASSERT_TRUE(first.waitFor("established"));
    ASSERT_TRUE(second.waitFor("established"));

    EXPECT_FALSE(call.supportsTelephoneEvents());
    EXPECT_TRUE(call.sendDigits("57"));

    EXPECT_TRUE(second.waitFor("digit 5")) << second.events();
    EXPECT_TRUE(second.waitFor("digit 7")) << second.events();
}

TEST_F(SipTest, NoCodecInCommon_IsNotAcceptable)
{
    sip::UserAgentConfig uLaw;
    uLaw.codecs = {"PCMU"};
    sip::UserAgentConfig aLaw;
    aLaw.codecs = {"PCMA"};
    SipPeer first(loop, "4711", uLaw);
    SipPeer second(loop, "4712", aLaw);

    first.call("sip:4712@" + second.agent->hostPort());

    EXPECT_TRUE(first.waitFor("closed rejected 488")) << first.events();
}

TEST_F(Sessions, InfoWithAnyContent_ArrivesAndIsAnswered)
{
    sip::Session& call = connect();
    int status = 0;

    EXPECT_TRUE(call.sendInfo({"text/plain", "hello"}, [&status](sip::Response const& r) { status = r.status; }));

    EXPECT_TRUE(second.waitFor("info")) << second.events();
    EXPECT_EQ("text/plain", second.lastInfo.type);
    EXPECT_EQ("hello", second.lastInfo.body);
    EXPECT_TRUE(first.waitUntil([&status] { return status == 200; }));
}

TEST_F(Sessions, SessionDestroyedInItsOwnCallback_IsFine)
{
    second.whenCalled = [](SipPeer& phone, sip::Session& session) {
        EXPECT_TRUE(session.answer());
        phone.loop.post([&phone] { phone.dropSession(0); });
    };

    first.call(toSecond());

    EXPECT_TRUE(first.waitFor("established")) << first.events();
    EXPECT_TRUE(first.waitFor("closed remote")) << first.events();
}

TEST_F(Sessions, OperationsThatDoNotFitTheState_ChangeNothing)
{
    second.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    sip::Session& call = first.call(toSecond());
    ASSERT_TRUE(first.waitFor("progress 180"));

    EXPECT_FALSE(call.answer());
    EXPECT_FALSE(call.ring());
    EXPECT_FALSE(call.modify(sip::Direction::kSendOnly));
    EXPECT_FALSE(call.sendInfo({"text/plain", "early"}));
    EXPECT_FALSE(call.transfer("sip:100@127.0.0.1"));
    second.session().reject(200, "OK");
    EXPECT_EQ(sip::SessionState::kEarly, second.session().state());
}

TEST_F(Sessions, TargetThatIsNoUri_IsRefusedWithTheReason)
{
    sip::CallRequest request;
    request.account = first.account;
    request.target = "sip:somebody@";

    auto const malformed = first.agent->call(request, first);
    request.target = "sip:1@host.invalid";
    auto const unresolved = first.agent->call(request, first);

    ASSERT_FALSE(malformed);
    EXPECT_EQ((Refusal{RefusalKind::kBadInput, "\"sip:somebody@\" is not a SIP URI"}), malformed.error());
    ASSERT_FALSE(unresolved);
    EXPECT_EQ((Refusal{RefusalKind::kUnavailable,
                       "in virtual time names are not looked up: \"host.invalid\" must be an IP address"}),
              unresolved.error());
}

}  // namespace telephone::test

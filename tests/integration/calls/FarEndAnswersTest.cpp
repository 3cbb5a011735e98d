// What a call makes of far ends that refuse, repeat, or say something new about themselves: the far end is written
// message by message.
#include "ExchangePhones.h"
#include "telephone/base/Touched.h"
#include "telephone/calls/EstablishedCalls.h"
#include "tests/helpers/LogFile.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

// A telephone without a call server, and call 1 to a far end that has accepted it.
class FarEndAnswers : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, 1, far_.uri()));
        invite_ = far_.receive("INVITE");
        far_.accept(invite_);
        ASSERT_NE(far_.receive("ACK"), "");
        ASSERT_TRUE(phone_.events().waitFor("state 4711 1 connected normal far"));
        phone_.events().rest();
    }

    // The far end reports the progress of the transfer that it was asked for.
    void report(std::string const& refer, std::string const& subscription, std::string const& status)
    {
        far_.request("NOTIFY", refer,
                     "Event: refer\r\nSubscription-State: " + subscription + "\r\nContent-Type: message/sipfrag\r\n",
                     "SIP/2.0 " + status + "\r\n");
        EXPECT_NE(far_.receive("SIP/2.0 200"), "");
    }

    // What this telephone reports next of a transfer.
    std::string nextReport()
    {
        std::string const notify = far_.receive("NOTIFY");
        far_.answer(notify, "200 OK");
        return firstLineOf(notify.substr(notify.find("\r\n\r\n") + 4));
    }

    sfiCallState state() { return phone_.engine().call(1).value_or(CallSnapshot()).state; }

    EnginePhone phone_{EnginePhone::optionsOf("4711")};
    ScriptedEnd far_{eventLoop()};
    std::string invite_;
};

}  // namespace

TEST_F(FarEndAnswers, HoldThatIsRefused_FailsAndTheCallGoesOn)
{
    struct Case
    {
        char const* status;
        char const* failure;
    };
    for (Case const& each :
         {Case{"403 Forbidden", "failed 4711 1 hold 1"}, Case{"480 Unavailable", "failed 4711 1 hold 2"},
          Case{"604 Nowhere", "failed 4711 1 hold 4"}, Case{"486 Busy Here", "failed 4711 1 hold 5"}}) {
        ASSERT_TRUE(phone_.engine().hold(1)) << each.status;
        far_.answer(far_.receive("INVITE"), each.status);
        EXPECT_TRUE(phone_.events().waitFor(each.failure)) << each.status;
        EXPECT_EQ(state(), sfiCallStateConnected) << each.status;
        phone_.events().rest();
    }
}

// RFC 3261 section 12.2.1.2.
TEST_F(FarEndAnswers, HoldOfACallThatTheFarEndDoesNotKnow_EndsIt)
{
    ASSERT_TRUE(phone_.engine().hold(1));
    far_.answer(far_.receive("INVITE"), "481 Call/Transaction Does Not Exist");

    EXPECT_TRUE(eventually([this] { return state() == sfiCallStateIdle; }));
    EXPECT_NE(far_.receive("BYE"), "");
}

TEST_F(FarEndAnswers, RetrieveOfACallThatIsNotHeld_IsRefused)
{
    EXPECT_EQ(phone_.engine().retrieve(1).error().reason,
              "call 1 cannot be retrieved: this telephone does not hold it");
}

TEST_F(FarEndAnswers, FeatureThatTheServiceReportsAsFailed_IsToldForTheCallOfTheLine)
{
    phone_.engine().featureFailed(1, sfiFeatureConference, sfiFeatureFailureRefused);
    phone_.engine().featureFailed(0, sfiFeatureDeflect, sfiFeatureFailureTimeout);

    phone_.expect({"failed 4711 1 conference 1", "failed 4711 1 deflect 2"});
}

TEST_F(FarEndAnswers, FeatureThatFailsWithoutACall_IsToldForTheLine)
{
    ASSERT_TRUE(phone_.engine().clear(1));
    far_.answer(far_.receive("BYE"), "200 OK");
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 idle normal far"));
    phone_.events().rest();

    phone_.engine().featureFailed(1, sfiFeatureConference, sfiFeatureFailureRefused);

    phone_.expect({"failed 4711 0 conference 1"});
}

TEST_F(FarEndAnswers, AnswerTwice_IsOneAnswer)
{
    far_.ask("INVITE", "4711", phone_.engine().userAgent().hostPort(), "", ScriptedEnd::description());
    ASSERT_TRUE(eventually([this] { return phone_.alerts(); }));

    EXPECT_TRUE(phone_.engine().answer(1001));
    EXPECT_TRUE(phone_.engine().answer(1001));
    EXPECT_EQ(phone_.engine().deflect(1001, "100").error().reason,
              "call 1001 cannot be deflected: it is being answered");
}

TEST_F(FarEndAnswers, CallThatDoesNotRing_CannotBeAnsweredOrDeflected)
{
    EXPECT_EQ(phone_.engine().answer(1).error().reason, "call 1 cannot be answered: it is not ringing here");
    EXPECT_EQ(phone_.engine().deflect(1, "100").error().reason, "call 1 cannot be deflected: it is not ringing here");
}

TEST_F(FarEndAnswers, Alternating_NeedsAHeldAndAnActiveCall)
{
    EXPECT_EQ(phone_.engine().established().alternate(1).error().reason, "calls cannot be alternated: no call is held");

    ASSERT_TRUE(phone_.engine().hold(1));
    far_.answer(far_.receive("INVITE"), "200 OK", "", ScriptedEnd::description());
    ASSERT_TRUE(phone_.events().waitFor("held 4711 1"));
    EXPECT_EQ(phone_.engine().established().alternate(1).error().reason,
              "calls cannot be alternated: no call is active beside the held one");
}

TEST_F(FarEndAnswers, PrecedenceOfALaterInvite_IsTold)
{
    far_.request("INVITE", invite_, "Resource-Priority: dsn.flash\r\n", ScriptedEnd::description());

    EXPECT_TRUE(phone_.events().waitFor("preemption 4711 1 4 0 -"));
}

TEST_F(FarEndAnswers, HoldThatIsNotAnswered_EndsTheCallWhenItsTimeIsOver)
{
    keepTouched();
    ASSERT_TRUE(phone_.engine().hold(1));

    EXPECT_EQ(phone_.events().next(7900ms), "nothing came");
    phone_.expect({"failed 4711 1 hold 2", "state 4711 1 failed timeout far"});
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("hold or retrieval is not answered"));
}

TEST_F(FarEndAnswers, RetrieveDuringTheHold_HasATimeOfItsOwn)
{
    ASSERT_TRUE(phone_.engine().hold(1));
    std::string const hold = far_.receive("INVITE");
    ASSERT_TRUE(phone_.engine().retrieve(1));
    EXPECT_EQ(phone_.events().next(5s), "nothing came");

    far_.answer(hold, "200 OK", "", ScriptedEnd::description());
    phone_.expect({"held 4711 1"});
    EXPECT_EQ(phone_.events().next(7900ms), "nothing came");

    phone_.expect({"failed 4711 1 retrieve 2", "state 4711 1 failed timeout far"});
}

TEST_F(FarEndAnswers, HoldOfAHeldCall_SendsNothing)
{
    ASSERT_TRUE(phone_.engine().hold(1));
    std::string const hold = far_.receive("INVITE");
    EXPECT_NE(hold.find("a=sendonly"), std::string::npos) << hold;
    EXPECT_TRUE(phone_.engine().hold(1));
    far_.answer(hold, "200 OK", "", ScriptedEnd::description());
    phone_.expect({"held 4711 1"});

    EXPECT_TRUE(phone_.engine().hold(1));

    EXPECT_TRUE(far_.hearsNothingOf("INVITE", 10s));
    EXPECT_EQ(state(), sfiCallStateHeld);
    EXPECT_TRUE(phone_.events().rest().empty());
}

// The INVITE of the second call waits for the answer to the hold of the first.
TEST_F(FarEndAnswers, ConsultationWhoseHoldIsRefused_Fails)
{
    ScriptedEnd other(eventLoop());
    ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, 2, other.uri(), CallPurpose::kConsultation));
    phone_.expect({"state 4711 2 dialling normal far"});
    std::string const hold = far_.receive("INVITE");
    EXPECT_TRUE(other.hearsNothingOf("INVITE", 1s));

    far_.answer(hold, "488 Not Acceptable Here");

    phone_.expect({"failed 4711 1 consultation hold 1", "state 4711 2 failed refused far"});
    EXPECT_TRUE(other.hearsNothingOf("INVITE", 1s));
    EXPECT_FALSE(phone_.engine().call(1)->held);
    EXPECT_FALSE(phone_.engine().call(1)->heldForConsultation);
}

// --- transfers that this telephone asks for

TEST_F(FarEndAnswers, TransferWithoutAnOutcome_FailsAfterThreeMinutes)
{
    ASSERT_TRUE(phone_.engine().blindTransfer(1, "sip:100@127.0.0.1:9"));
    std::string const refer = far_.receive("REFER");
    EXPECT_EQ(headerOf(refer, "Refer-To"), "<sip:100@127.0.0.1:9>");
    far_.answer(refer, "202 Accepted");
    phone_.expect({"state 4711 1 transferring normal far"});
    EXPECT_EQ(phone_.engine().blindTransfer(1, "sip:100@127.0.0.1:9").error().reason,
              "call 1 cannot be transferred: it is being transferred already");

    report(refer, "active", "180 Ringing");
    keepTouched();
    EXPECT_EQ(phone_.events().next(179s), "nothing came");

    phone_.expect({"failed 4711 1 blind transfer 2", "state 4711 1 connected normal far"});
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("transfer has no result"));
}

TEST_F(FarEndAnswers, TransferThatFails_LeavesTheCallAsTheFarEndHasItThen)
{
    ASSERT_TRUE(phone_.engine().blindTransfer(1, "sip:100@127.0.0.1:9"));
    std::string const refer = far_.receive("REFER");
    far_.answer(refer, "202 Accepted");
    phone_.expect({"state 4711 1 transferring normal far"});
    far_.request("INVITE", invite_, "", ScriptedEnd::description() + "a=sendonly\r\n");
    ASSERT_NE(far_.receive("SIP/2.0 200"), "");
    EXPECT_EQ(phone_.events().next(100ms), "nothing came");

    report(refer, "terminated;reason=noresource", "486 Busy Here");

    phone_.expect({"failed 4711 1 blind transfer 5", "state 4711 1 remotely held normal far"});
}

TEST_F(FarEndAnswers, TransferWhoseOutcomeIsTheEndOfTheCall_Succeeds)
{
    ASSERT_TRUE(phone_.engine().blindTransfer(1, "sip:100@127.0.0.1:9"));
    std::string const refer = far_.receive("REFER");
    far_.answer(refer, "202 Accepted");
    phone_.expect({"state 4711 1 transferring normal far"});

    far_.request("BYE", invite_);

    phone_.expect({"success 4711 1 blind transfer", "state 4711 1 idle transferred far"});
    EXPECT_NE(far_.receive("SIP/2.0 200"), "");
}

// A call whose far end falls silent ends after a minute, whatever is being done with it.
TEST(SilentFarEndOfATransfer, EndsTheCallAndTheTransferHasFailed)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.agent.audioTimeout = 60s;
    EnginePhone phone(options);
    ScriptedEnd far(eventLoop());
    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 1, far.uri()));
    far.accept(far.receive("INVITE"));
    ASSERT_TRUE(phone.events().waitFor("state 4711 1 connected normal far"));
    ASSERT_TRUE(phone.engine().blindTransfer(1, "sip:100@127.0.0.1:9"));
    far.answer(far.receive("REFER"), "202 Accepted");
    phone.expect({"state 4711 1 transferring normal far"});

    EXPECT_EQ(phone.events().next(59s), "nothing came");

    EXPECT_EQ(phone.events().next(2s), "failed 4711 1 blind transfer 3");
    EXPECT_TRUE(phone.events().waitFor("state 4711 1 failed timeout far"));
}

// What a person would not expect of a call is in the log, and nothing else is.
TEST(EndOfACall, IsLoggedIfTheFarEndIsGone)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.agent.audioTimeout = 60s;
    EnginePhone phone(options);
    ScriptedEnd far(eventLoop());
    LogFile const log(kLogWarning);
    auto const call = [&](int id) {
        EXPECT_TRUE(phone.engine().outgoing().make(1, 0, id, far.uri()));
        return far.receive("INVITE");
    };

    far.answer(call(1), "486 Busy Here");
    ASSERT_TRUE(phone.events().waitFor("state 4711 1 busy busy far"));
    std::string const invite = call(2);
    far.accept(invite);
    ASSERT_TRUE(phone.events().waitFor("state 4711 2 connected normal far"));
    far.request("BYE", invite);
    ASSERT_TRUE(phone.events().waitFor("state 4711 2 idle normal far"));
    EXPECT_EQ(log.written(), "");

    far.accept(call(3));
    ASSERT_TRUE(phone.events().waitFor("state 4711 3 connected normal far"));
    EXPECT_EQ(phone.events().next(62s), "state 4711 3 failed timeout far");
    EXPECT_EQ(log.written(), "warning [calls] call 3 has ended: the far end sends no audio\n");
}

TEST(EndOfACall, IsLoggedIfTheFarEndDoesNotAnswerItsRefresh)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.agent.sessionExpires = 90s;
    EnginePhone phone(options);
    ScriptedEnd far(eventLoop());
    LogFile const log(kLogWarning);
    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 1, far.uri()));
    far.accept(far.receive("INVITE"), "Require: timer\r\nSession-Expires: 90;refresher=uac\r\n");
    ASSERT_TRUE(phone.events().waitFor("state 4711 1 connected normal far"));

    EXPECT_EQ(phone.events().next(100s), "state 4711 1 failed timeout far");

    EXPECT_EQ(log.written(), "warning [calls] call 1 has ended: the far end does not answer the refresh of the call\n");
}

// RFC 3261 section 12.2.1.2, here of an INFO.
TEST_F(FarEndAnswers, DigitThatIsNotAnswered_EndsTheCallAndIsLogged)
{
    LogFile const log(kLogWarning);

    ASSERT_TRUE(phone_.engine().established().sendDigits(1, "5"));
    ASSERT_NE(far_.receive("INFO"), "");

    EXPECT_EQ(phone_.events().next(31s), "nothing came");
    EXPECT_EQ(phone_.events().next(2s), "state 4711 1 failed timeout far");
    EXPECT_EQ(log.written(), "warning [calls] call 1 has ended: the far end no longer answers\n");
}

TEST_F(FarEndAnswers, TransferThatTheFarEndRefuses_HasFailed)
{
    ASSERT_TRUE(phone_.engine().blindTransfer(1, "sip:100@127.0.0.1:9"));

    far_.answer(far_.receive("REFER"), "603 Decline");

    phone_.expect({"state 4711 1 transferring normal far", "failed 4711 1 blind transfer 1",
                   "state 4711 1 connected normal far"});
}

// --- transfers that the far end asks for

TEST_F(FarEndAnswers, TransferHere_TellsTheFarEndItsProgress)
{
    ScriptedEnd target(eventLoop());
    far_.request("REFER", invite_, "Refer-To: <" + target.uri() + ">\r\n");
    ASSERT_NE(far_.receive("SIP/2.0 202"), "");
    std::string const invite = target.receive("INVITE");

    target.answer(invite, "180 Ringing");
    EXPECT_EQ(nextReport(), "SIP/2.0 100 Trying");
    EXPECT_EQ(nextReport(), "SIP/2.0 180 Ringing");
    target.answer(invite, "486 Busy Here");
    EXPECT_EQ(nextReport(), "SIP/2.0 486 Busy Here");

    EXPECT_EQ(state(), sfiCallStateConnected);
    EXPECT_TRUE(phone_.events().rest().empty());
}

TEST_F(FarEndAnswers, TransferHereOfAHeldCall_LeavesItHeld)
{
    ASSERT_TRUE(phone_.engine().hold(1));
    far_.answer(far_.receive("INVITE"), "200 OK", "", ScriptedEnd::description());
    phone_.expect({"held 4711 1"});
    ScriptedEnd target(eventLoop());
    far_.request("REFER", invite_, "Refer-To: <sip:target@" + target.hostPort() + ">\r\n");
    std::string const invite = target.receive("INVITE");
    EXPECT_NE(invite.find("a=sendonly"), std::string::npos) << invite;

    target.answer(invite, "200 OK", "", ScriptedEnd::description() + "a=recvonly\r\n", "target");

    phone_.expect({"party 4711 1 target 0 0"});
    EXPECT_NE(far_.receive("BYE"), "");
    EXPECT_EQ(state(), sfiCallStateHeld);
    EXPECT_TRUE(phone_.engine().call(1)->held);
    EXPECT_TRUE(target.hearsNothingOf("INVITE", 1s));
}

TEST_F(FarEndAnswers, TransferHereWhoseAskerHangsUp_GoesOn)
{
    ScriptedEnd target(eventLoop());
    far_.request("REFER", invite_, "Refer-To: <sip:target@" + target.hostPort() + ">\r\n");
    std::string const invite = target.receive("INVITE");
    far_.request("BYE", invite_);
    ASSERT_NE(far_.receive("SIP/2.0 200"), "");
    EXPECT_EQ(phone_.events().next(1s), "nothing came");

    target.accept(invite, "", "target");

    phone_.expect({"party 4711 1 target 0 0"});
    EXPECT_EQ(state(), sfiCallStateConnected);
    ASSERT_TRUE(phone_.engine().clear(1));
    EXPECT_NE(target.receive("BYE"), "");
}

// The hold that the asker has not answered is over with its call, not when its time is over.
TEST_F(FarEndAnswers, TransferHereWhoseAskerHangsUpDuringAHold_GoesOn)
{
    ScriptedEnd target(eventLoop());
    ASSERT_TRUE(phone_.engine().hold(1));
    ASSERT_NE(far_.receive("INVITE"), "");
    far_.request("REFER", invite_, "Refer-To: <sip:target@" + target.hostPort() + ">\r\n");
    std::string const invite = target.receive("INVITE");
    far_.request("BYE", invite_);
    ASSERT_NE(far_.receive("SIP/2.0 200"), "");
    EXPECT_EQ(phone_.events().next(10s), "nothing came");

    target.answer(invite, "200 OK", "", ScriptedEnd::description() + "a=recvonly\r\n", "target");

    phone_.expect({"party 4711 1 target 0 0"});
    EXPECT_EQ(state(), sfiCallStateHeld);
}

TEST_F(FarEndAnswers, TransferHereThatIsRedirected_IsToldWhenTheOtherPartyAnswers)
{
    ScriptedEnd target(eventLoop());
    ScriptedEnd other(eventLoop());
    far_.request("REFER", invite_, "Refer-To: <sip:target@" + target.hostPort() + ">\r\n");
    target.answer(target.receive("INVITE"), "302 Moved Temporarily",
                  "Contact: <sip:other@" + other.hostPort() + ">\r\n");
    std::string const invite = other.receive("INVITE");
    EXPECT_EQ(phone_.events().next(1s), "nothing came");
    EXPECT_EQ(phone_.engine().call(1)->remoteURI, far_.uri());

    other.accept(invite, "", "other");

    phone_.expect({"party 4711 1 target 0 0"});
}

TEST_F(FarEndAnswers, TransferHereWhoseAskerHangsUp_EndsWithTheNewCall)
{
    ScriptedEnd target(eventLoop());
    far_.request("REFER", invite_, "Refer-To: <sip:target@" + target.hostPort() + ">\r\n");
    std::string const invite = target.receive("INVITE");
    far_.request("BYE", invite_);
    ASSERT_NE(far_.receive("SIP/2.0 200"), "");

    target.answer(invite, "486 Busy Here");

    phone_.expect({"state 4711 1 busy busy far"});
    EXPECT_TRUE(phone_.engine().calls().empty());
}

// --- two calls

namespace {

// Call 1 is held for call 2, which is connected to a far end of its own.
class TwoFarEnds : public FarEndAnswers
{
protected:
    void SetUp() override
    {
        FarEndAnswers::SetUp();
        ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, 2, other_.uri(), CallPurpose::kConsultation));
        far_.answer(far_.receive("INVITE"), "200 OK", "", ScriptedEnd::description() + "a=recvonly\r\n");
        second_ = other_.receive("INVITE");
        other_.accept(second_);
        ASSERT_TRUE(phone_.events().waitFor("state 4711 2 connected normal far"));
        phone_.events().rest();
    }

    ScriptedEnd other_{eventLoop()};
    std::string second_;
};

}  // namespace

TEST_F(TwoFarEnds, AttendedTransfer_NamesTheDialogToReplace)
{
    ASSERT_TRUE(phone_.engine().joined().attendedTransfer(1));

    std::string const refer = far_.receive("REFER");
    std::string const target = headerOf(refer, "Refer-To");
    EXPECT_EQ(target.find("<" + other_.uri() + "?Replaces="), 0U) << target;
    EXPECT_NE(target.find("to-tag%3Dfar"), std::string::npos) << target;
    phone_.expect({"state 4711 1 transferring normal far", "state 4711 2 transferring normal far"});
    far_.answer(refer, "202 Accepted");
    report(refer, "terminated;reason=noresource", "200 OK");
    phone_.expect(
        {"success 4711 1 attended transfer", "state 4711 1 idle transferred far", "state 4711 2 idle transferred far"});
    EXPECT_NE(far_.receive("BYE"), "");
    EXPECT_NE(other_.receive("BYE"), "");
}

TEST_F(TwoFarEnds, AttendedTransferThatFails_LeavesBothCallsAsTheyWere)
{
    ASSERT_TRUE(phone_.engine().joined().attendedTransfer(1));
    std::string const refer = far_.receive("REFER");
    far_.answer(refer, "202 Accepted");
    phone_.expect({"state 4711 1 transferring normal far", "state 4711 2 transferring normal far"});

    report(refer, "terminated;reason=noresource", "603 Decline");

    phone_.expect(
        {"failed 4711 1 attended transfer 1", "state 4711 1 held normal far", "state 4711 2 connected normal far"});
    ASSERT_TRUE(phone_.engine().joined().attendedTransfer(1));
}

TEST_F(TwoFarEnds, CallThatEndsDuringItsTransfer_LeavesTheOther)
{
    ASSERT_TRUE(phone_.engine().joined().attendedTransfer(1));
    far_.answer(far_.receive("REFER"), "202 Accepted");
    phone_.expect({"state 4711 1 transferring normal far", "state 4711 2 transferring normal far"});

    ASSERT_TRUE(phone_.engine().clear(1));

    phone_.expect({"state 4711 1 idle normal far", "state 4711 2 connected normal far"});
}

TEST_F(TwoFarEnds, RetrieveWhoseOtherCallCannotBeHeld_Fails)
{
    ASSERT_TRUE(phone_.engine().retrieve(1));
    other_.answer(other_.receive("INVITE"), "488 Not Acceptable Here");

    phone_.expect({"failed 4711 2 hold 1", "failed 4711 1 retrieve 3"});
    EXPECT_EQ(phone_.engine().call(1)->state, sfiCallStateHeld);
    EXPECT_EQ(phone_.engine().call(2)->state, sfiCallStateConnected);
}

TEST_F(TwoFarEnds, AnswerWhoseOtherCallCannotBeHeld_FailsAndTheCallRingsOn)
{
    far_.ask("INVITE", "4711", phone_.engine().userAgent().hostPort(), "", ScriptedEnd::description());
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1001 ringing normal far"));

    ASSERT_TRUE(phone_.engine().answer(1001));
    other_.answer(other_.receive("INVITE"), "488 Not Acceptable Here");

    phone_.expect({"failed 4711 2 hold 1", "failed 4711 1001 hold 3"});
    EXPECT_EQ(phone_.engine().call(1001)->state, sfiCallStateRinging);
    EXPECT_EQ(phone_.engine().call(2)->state, sfiCallStateConnected);
}

TEST_F(TwoFarEnds, RetrieveWhoseOtherCallEndsMeanwhile_Succeeds)
{
    ASSERT_TRUE(phone_.engine().retrieve(1));
    ASSERT_NE(other_.receive("INVITE"), "");
    other_.request("BYE", second_);
    phone_.expect({"state 4711 2 idle normal far"});

    far_.answer(far_.receive("INVITE"), "200 OK", "", ScriptedEnd::description());

    phone_.expect({"retrieved 4711 1 far"});
    EXPECT_EQ(state(), sfiCallStateConnected);
}

}  // namespace telephone::test

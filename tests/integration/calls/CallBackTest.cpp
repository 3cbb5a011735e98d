// Call-backs: parties that were busy or did not answer.
#include "ExchangePhones.h"
#include "telephone/base/Touched.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

class CallBack : public ::testing::Test
{
protected:
    exchange::Exchange exchange_{eventLoop(), {}};
    std::unique_ptr<EnginePhone> phone_;

    void SetUp() override
    {
        EnginePhone::Options options = phoneAt(exchange_, {"4711"});
        options.engine.callBacks = 2;
        options.engine.settlingTime = std::chrono::milliseconds(200);
        phone_ = std::make_unique<EnginePhone>(options);
        ASSERT_TRUE(eventually([this] { return phone_->engine().registrations().isRegistered(1); }));
        phone_->events().rest();
        for (char const* number : {"111", "112", "113"}) {
            ASSERT_TRUE(exchange_.define(number, "busy"));
        }
    }

    void callBusy(int callID, std::string const& number)
    {
        ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, callID, number));
        ASSERT_TRUE(phone_->events().waitFor("state 4711 " + std::to_string(callID) + " busy busy " + number));
    }
};

TEST_F(CallBack, OnBusy_IsReadyWhenThePartyIsFree)
{
    callBusy(1, "111");

    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 111 1 0 1"});
    ASSERT_TRUE(exchange_.define("111", "ring, answer"));

    phone_->expect({"completion 4711 111 1 1 1"});
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 2, "111"));
    phone_->expect({"state 4711 2 dialling normal 111", "completion 4711 111 1 3 1"});
}

TEST_F(CallBack, EndsWithTheTelephone)
{
    callBusy(1, "111");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 111 1 0 1"});

    phone_->engine().deactivate();
    phone_->engine().activate();

    EXPECT_TRUE(eventually([this] { return exchange_.watcherCount("111", "dialog") == 0; }));
    EXPECT_EQ(phone_->engine().callBacks().cancel(-1, "111", sfiCancelCallBackAll, true).error().reason,
              "no such call-back to \"111\" is set");
}

TEST_F(CallBack, OnBusyOfARegisteredPhone_IsReadyWhenItsCallEnds)
{
    EnginePhone bob(phoneAt(exchange_, {"4722"}));
    ASSERT_TRUE(bob.events().waitFor("registration 4722 0 yes 0"));
    ASSERT_TRUE(bob.engine().outgoing().make(1, 0, 1, "100"));
    ASSERT_TRUE(bob.events().waitFor("state 4722 1 connected normal 100"));
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 1, "4722"));
    ASSERT_TRUE(bob.events().waitFor("state 4722 1001 ringing normal 4711"));
    ASSERT_TRUE(bob.engine().incoming().reject(1001, sfiRefuseCallBusy));
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 busy busy 4722"));

    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 4722 1 0 1"});
    ASSERT_TRUE(eventually([this] { return exchange_.watcherCount("4722", "dialog") == 1; }));
    ASSERT_TRUE(bob.engine().clear(1));

    phone_->expect({"completion 4711 4722 1 1 1"});
}

TEST_F(CallBack, OnNoReply_IsReadyAfterThePartyHasHadACall)
{
    EnginePhone bob(phoneAt(exchange_, {"4722"}));
    ASSERT_TRUE(bob.events().waitFor("registration 4722 0 yes 0"));
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 1, "4722"));
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 remote ringing normal 4722"));
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnNoReply));
    phone_->expect({"completion 4711 4722 0 0 1"});
    ASSERT_TRUE(phone_->engine().clear(1));
    phone_->expect({"state 4711 1 idle cancelled 4722"});
    EXPECT_EQ(phone_->events().next(std::chrono::milliseconds(500)), "nothing came");

    ASSERT_TRUE(bob.engine().outgoing().make(1, 0, 1, "100"));
    ASSERT_TRUE(bob.events().waitFor("state 4722 1 connected normal 100"));
    EXPECT_EQ(phone_->events().next(std::chrono::milliseconds(500)), "nothing came");
    ASSERT_TRUE(bob.engine().clear(1));

    phone_->expect({"completion 4711 4722 0 1 1"});
}

TEST_F(CallBack, Cancelled_IsTold)
{
    callBusy(1, "111");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 111 1 0 1"});

    ASSERT_TRUE(phone_->engine().callBacks().cancel(1, "", sfiCancelCallBackAll, false));

    phone_->expect({"completion 4711 111 1 2 0"});
    EXPECT_TRUE(eventually([this] { return exchange_.watcherCount("111", "dialog") == 0; }));
    EXPECT_EQ(kindOf(phone_->engine().callBacks().cancel(1, "", sfiCancelCallBackAll, false)), RefusalKind::kNotFound);
}

TEST_F(CallBack, CancelledByTarget_LeavesTheOthers)
{
    callBusy(1, "111");
    callBusy(2, "112");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 111 1 0 1"});
    ASSERT_TRUE(phone_->engine().callBacks().set(2, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 112 1 0 1"});

    ASSERT_TRUE(phone_->engine().callBacks().cancel(0, "112", sfiCancelCallBackAll, true));

    phone_->expect({"completion 4711 112 1 2 1"});
    EXPECT_EQ(exchange_.watcherCount("111", "dialog"), 1U);
}

TEST_F(CallBack, ForAnUnknownCall_AnswersNoCallInfo)
{
    EXPECT_EQ(kindOf(phone_->engine().callBacks().set(77, sfiCallCompletionOnBusy)), RefusalKind::kNotFound);
}

TEST_F(CallBack, OnBusyForACallThatRings_AnswersInvalidState)
{
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 1, "102"));
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 remote ringing normal 102"));

    EXPECT_EQ(kindOf(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy)), RefusalKind::kWrongState);
}

TEST_F(CallBack, TwiceToOneParty_AnswersAlreadyExists)
{
    callBusy(1, "111");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));

    EXPECT_EQ(kindOf(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy)), RefusalKind::kAlreadyExists);
}

TEST_F(CallBack, BeyondTheLimit_IsRefused)
{
    callBusy(1, "111");
    callBusy(2, "112");
    callBusy(3, "113");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    ASSERT_TRUE(phone_->engine().callBacks().set(2, sfiCallCompletionOnBusy));

    EXPECT_EQ(kindOf(phone_->engine().callBacks().set(3, sfiCallCompletionOnBusy)), RefusalKind::kLimit);
}

TEST_F(CallBack, IsPossibleForEndedCalls_WhileThereIsRoomAndTheTelephoneIsActive)
{
    auto const possible = [this] {
        std::lock_guard const guard(eventLoop());
        std::vector<int> calls;
        for (CallSnapshot const& each : phone_->engine().callBacks().endedAndPossible()) {
            calls.push_back(each.callID);
        }
        return calls;
    };
    int callID = 0;
    for (char const* number : {"111", "112", "113"}) {
        callBusy(++callID, number);
    }
    ASSERT_TRUE(eventually([this] { return phone_->engine().calls().empty(); }));
    EXPECT_EQ(possible(), (std::vector<int>{1, 2, 3}));

    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    EXPECT_EQ(possible(), (std::vector<int>{2, 3}));

    ASSERT_TRUE(phone_->engine().callBacks().set(2, sfiCallCompletionOnBusy));
    EXPECT_EQ(possible(), std::vector<int>());

    ASSERT_TRUE(phone_->engine().callBacks().cancel(0, "112", sfiCancelCallBackAll, true));
    EXPECT_EQ(possible(), (std::vector<int>{2, 3}));

    phone_->engine().deactivate();
    EXPECT_EQ(possible(), std::vector<int>());
}

TEST_F(CallBack, ToAnAbsentTelephone_Fails)
{
    callBusy(1, "111");
    exchange_.remove("111");

    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));

    phone_->expect({"completion-failed 4711 111 0"});
}

TEST_F(CallBack, CancelledByType_LeavesTheOtherType)
{
    callBusy(1, "111");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 111 1 0 1"});
    CallBacks& callBacks = phone_->engine().callBacks();

    EXPECT_EQ(kindOf(callBacks.cancel(0, "", sfiCancelCallBackOnNoReply, true)), RefusalKind::kNotFound);
    EXPECT_EQ(kindOf(callBacks.cancel(2, "", sfiCancelCallBackOnBusy, true)), RefusalKind::kNotFound);
    ASSERT_TRUE(callBacks.cancel(0, "", sfiCancelCallBackOnBusy, true));

    phone_->expect({"completion 4711 111 1 2 1"});
}

TEST_F(CallBack, OfAnEndedCall_IsPossibleForTheLatest32)
{
    for (int callID = 1; callID <= 33; ++callID) {
        callBusy(callID, "111");
    }

    EXPECT_EQ(kindOf(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy)), RefusalKind::kNotFound);
    EXPECT_TRUE(phone_->engine().callBacks().set(2, sfiCallCompletionOnBusy));
}

TEST_F(CallBack, PartyThatIsBusyAgainWithinTheSettlingTime_IsNotReady)
{
    callBusy(1, "111");
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnBusy));
    phone_->expect({"completion 4711 111 1 0 1"});
    ASSERT_TRUE(exchange_.define("111", "ring, answer"));
    EXPECT_EQ(phone_->events().next(100ms), "nothing came");
    ASSERT_TRUE(exchange_.define("111", "busy"));

    EXPECT_EQ(phone_->events().next(10s), "nothing came");
    ASSERT_TRUE(exchange_.define("111", "ring, answer"));

    phone_->expect({"completion 4711 111 1 1 1"});
    EXPECT_EQ(phone_->events().next(10s), "nothing came");
}

TEST_F(CallBack, IsOfferedWithTheStateOfACall_OnceForAPartyAndWhileThereIsRoom)
{
    ASSERT_TRUE(exchange_.define("114", "ring 1s, busy"));
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 1, "114"));
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 proceeding normal 114"));
    EXPECT_FALSE(phone_->events().lastCallBackPossible());
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 remote ringing normal 114"));
    EXPECT_TRUE(phone_->events().lastCallBackPossible());
    ASSERT_TRUE(phone_->engine().callBacks().set(1, sfiCallCompletionOnNoReply));
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 busy busy 114"));
    EXPECT_FALSE(phone_->events().lastCallBackPossible());

    callBusy(2, "112");
    EXPECT_TRUE(phone_->events().lastCallBackPossible());
    ASSERT_TRUE(phone_->engine().callBacks().set(2, sfiCallCompletionOnBusy));
    callBusy(3, "113");
    EXPECT_FALSE(phone_->events().lastCallBackPossible());
}

namespace {

// A telephone without a call server, and a busy far end that is written message by message.
class ScriptedCallBack : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, 1, far_.uri()));
        far_.answer(far_.receive("INVITE"), "486 Busy Here");
        ASSERT_TRUE(phone_.events().waitFor("state 4711 1 busy busy far"));
        ASSERT_TRUE(phone_.engine().callBacks().set(1, sfiCallCompletionOnBusy));
        subscribe_ = far_.receive("SUBSCRIBE");
    }

    // The far end tells its dialogs: "confirmed"; empty: it has none.
    void tellDialogs(std::string const& state, std::string const& subscription = "active;expires=1800")
    {
        std::string const dialog = state.empty() ? "" : "<dialog id=\"1\"><state>" + state + "</state></dialog>";
        far_.request("NOTIFY", subscribe_,
                     "Event: dialog\r\nSubscription-State: " + subscription +
                         "\r\nContent-Type: application/dialog-info+xml\r\n",
                     "<?xml version=\"1.0\"?><dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"" +
                         std::to_string(version_++) + "\" state=\"full\" entity=\"" + far_.uri() + "\">" + dialog +
                         "</dialog-info>");
        EXPECT_EQ(firstLineOf(far_.receive("SIP/2.0")), "SIP/2.0 200 OK");
    }

    EnginePhone phone_{EnginePhone::optionsOf("4711")};
    ScriptedEnd far_{eventLoop()};
    SteadyClock::time_point const began_ = SteadyClock::now();
    std::string subscribe_;
    int version_ = 0;
};

}  // namespace

TEST_F(ScriptedCallBack, ThatIsRefused_HasFailed)
{
    EXPECT_EQ(headerOf(subscribe_, "Event"), "dialog");
    EXPECT_EQ(headerOf(subscribe_, "Expires"), "1800");

    far_.answer(subscribe_, "403 Forbidden");

    phone_.expect({"completion-failed 4711 far 0"});
}

TEST_F(ScriptedCallBack, ThatIsNotAnswered_HasTimedOut)
{
    far_.answer(subscribe_, "408 Request Timeout");

    phone_.expect({"completion-failed 4711 far 1"});
}

TEST_F(ScriptedCallBack, ThatThePartyEnds_HasEnded)
{
    far_.answer(subscribe_, "200 OK", "Expires: 1800\r\n");
    tellDialogs("confirmed");
    phone_.expect({"completion 4711 far 1 0 1"});

    tellDialogs("confirmed", "terminated;reason=noresource");

    phone_.expect({"completion-failed 4711 far 2"});
}

TEST_F(ScriptedCallBack, IsReadyHalfASecondAfterTheLastDialogEnds)
{
    far_.answer(subscribe_, "200 OK", "Expires: 1800\r\n");
    for (char const* state : {"confirmed", "early", "trying"}) {
        tellDialogs(state);
    }
    phone_.expect({"completion 4711 far 1 0 1"});
    EXPECT_EQ(phone_.events().next(5s), "nothing came");

    keepTouched();
    tellDialogs("terminated");
    EXPECT_EQ(phone_.events().next(400ms), "nothing came");

    phone_.expect({"completion 4711 far 1 1 1"});
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("party of a call-back stays free"));
}

TEST_F(ScriptedCallBack, WaitsHalfAnHourAtMost)
{
    far_.answer(subscribe_, "200 OK", "Expires: 1800\r\n");
    tellDialogs("confirmed");
    phone_.expect({"completion 4711 far 1 0 1"});
    // The subscription is renewed meanwhile.
    far_.answer(far_.receive("SUBSCRIBE", 1790s), "200 OK", "Expires: 1800\r\n");

    auto const left = 1800s - std::chrono::duration_cast<std::chrono::seconds>(SteadyClock::now() - began_);
    keepTouched();
    EXPECT_EQ(phone_.events().next(left - 1s), "nothing came");

    EXPECT_EQ(phone_.events().next(2s), "completion-failed 4711 far 1");
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("call-back expires"));
}

}  // namespace telephone::test

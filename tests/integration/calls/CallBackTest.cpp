// Call-backs: parties that were busy or did not answer.
#include "ExchangePhones.h"

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
        options.engine.settlingTime = std::chrono::milliseconds(50);
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
    EXPECT_EQ(phone_->events().next(std::chrono::milliseconds(200)), "nothing came");

    ASSERT_TRUE(bob.engine().outgoing().make(1, 0, 1, "100"));
    ASSERT_TRUE(bob.events().waitFor("state 4722 1 connected normal 100"));
    EXPECT_EQ(phone_->events().next(std::chrono::milliseconds(200)), "nothing came");
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

}  // namespace telephone::test

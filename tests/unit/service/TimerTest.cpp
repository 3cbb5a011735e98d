// Timer expiries: of the service's own timer, and of all others.
#include "ServiceTest.h"

namespace {

constexpr int kSubscriptionTimer = 77;

class TimerTest : public ServiceTest
{
protected:
    void expectOfferedToAll(int timerId)
    {
        EXPECT_CALL(sfi_, TimerExpired(timerId));
        EXPECT_CALL(keyset_, timerExpired(timerId));
        EXPECT_CALL(pickup_, timerExpired(timerId));
        EXPECT_CALL(features_, timerExpired(timerId));
    }

    void expectSubscription(PhysDefs::plugStatus headset, bool plugged)
    {
        MgmtAgentIfc* const agent = service_.get();
        EXPECT_CALL(physical_, subscribePhysicalEvents(_, _));
        EXPECT_CALL(physical_, subscribeFunctionalEvents(_, _));
        EXPECT_CALL(localMgmt_, registerForTag(agent, StrEq("interface-status")));
        EXPECT_CALL(localMgmt_, registerForTag(agent, StrEq("wlan-link-status")));
        EXPECT_CALL(physical_, getHeadsetJackStatus()).WillOnce(Return(headset));
        EXPECT_CALL(sfi_, SetHeadsetPlugged(plugged));
        EXPECT_CALL(features_, Activate());
        EXPECT_CALL(sipConfig_, switchOnLampsForForwarding());
        EXPECT_CALL(sipConfig_, checkDhcpProxyAddr());
    }
};

TEST_F(TimerTest, AnyId_IsOfferedToTheFourOwnersInTheirOrder)
{
    initialise();
    InSequence order;
    expectOfferedToAll(5);

    service_->timerEvent(5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 timerEvent(timerId = 5)"));
}

TEST_F(TimerTest, SubscriptionTimer_CompletesTheStartAndIsOfferedToo)
{
    initialise();
    InSequence order;
    expectSubscription(PhysDefs::plugIn, true);
    expectOfferedToAll(kSubscriptionTimer);

    service_->timerEvent(kSubscriptionTimer);

    EXPECT_THAT(log_.texts(), ElementsAre("5 timerEvent(timerId = 77)", "5 timerEvent: Comms subscription timer"));
}

TEST_F(TimerTest, SubscriptionTimer_WithTheHeadsetOut_SaysSo)
{
    initialise();
    InSequence order;
    expectSubscription(PhysDefs::plugOut, false);
    expectOfferedToAll(kSubscriptionTimer);

    service_->timerEvent(kSubscriptionTimer);
}

TEST_F(TimerTest, SubscriptionTimer_WithAnUnknownJackStatus_SaysNotPlugged)
{
    initialise();
    InSequence order;
    expectSubscription(static_cast<PhysDefs::plugStatus>(2), false);
    expectOfferedToAll(kSubscriptionTimer);

    service_->timerEvent(kSubscriptionTimer);
}

TEST_F(TimerTest, SubscriptionTimer_ASecondTime_IsAnOrdinaryId)
{
    initialise();
    InSequence order;
    expectSubscription(PhysDefs::plugIn, true);
    expectOfferedToAll(kSubscriptionTimer);
    expectOfferedToAll(kSubscriptionTimer);

    service_->timerEvent(kSubscriptionTimer);
    service_->timerEvent(kSubscriptionTimer);

    EXPECT_THAT(log_.texts(), ElementsAre("5 timerEvent(timerId = 77)", "5 timerEvent: Comms subscription timer",
                                          "5 timerEvent(timerId = 77)"));
}

TEST_F(TimerTest, SubscriptionTimer_IsForgottenOnlyWhenItsWorkIsDone)
{
    initialise();
    EXPECT_CALL(physical_, subscribePhysicalEvents(_, _)).Times(2);
    EXPECT_CALL(physical_, subscribeFunctionalEvents(_, _)).Times(2);
    EXPECT_CALL(localMgmt_, registerForTag(_, _)).Times(4);
    EXPECT_CALL(physical_, getHeadsetJackStatus()).WillRepeatedly(Return(PhysDefs::plugIn));
    EXPECT_CALL(sfi_, SetHeadsetPlugged(true)).Times(2);
    EXPECT_CALL(features_, Activate()).Times(2);
    EXPECT_CALL(sipConfig_, switchOnLampsForForwarding()).Times(2);
    bool again = true;
    EXPECT_CALL(sipConfig_, checkDhcpProxyAddr()).Times(2).WillRepeatedly([this, &again] {
        if (again) {
            again = false;
            service_->timerEvent(kSubscriptionTimer);
        }
    });
    EXPECT_CALL(sfi_, TimerExpired(kSubscriptionTimer)).Times(2);
    EXPECT_CALL(keyset_, timerExpired(kSubscriptionTimer)).Times(2);
    EXPECT_CALL(pickup_, timerExpired(kSubscriptionTimer)).Times(2);
    EXPECT_CALL(features_, timerExpired(kSubscriptionTimer)).Times(2);

    service_->timerEvent(kSubscriptionTimer);
}

TEST_F(TimerTest, SubscriptionTimer_WithoutInterfaces_ActivatesTheFeaturesAndTheLamps)
{
    ON_CALL(context_, findExecutable(_)).WillByDefault(Return(nullptr));
    ON_CALL(context_, findExecutable("AuditoryDeviceIfc")).WillByDefault(Return(nullptr));
    ON_CALL(context_, findExecutable("PhysicalInterfaceServiceIfc")).WillByDefault(Return(nullptr));
    ON_CALL(context_, findExecutable("LocalMgmtIfc")).WillByDefault(Return(nullptr));
    initialise();
    InSequence order;
    EXPECT_CALL(features_, Activate());
    EXPECT_CALL(sipConfig_, switchOnLampsForForwarding());
    EXPECT_CALL(sipConfig_, checkDhcpProxyAddr());
    expectOfferedToAll(kSubscriptionTimer);

    service_->timerEvent(kSubscriptionTimer);
}

TEST_F(TimerTest, WithoutInit_IdZeroRunsTheSubscriptionWorkOnWhatThereIs)
{
    InSequence order;
    EXPECT_CALL(features_, Activate());
    expectOfferedToAll(0);

    service_->timerEvent(0);
}

TEST_F(TimerTest, InitWithoutCallControl_LogsItAndStartsNoTimer)
{
    std::unique_ptr<RecordingConfigManager> configuration;
    EXPECT_CALL(recordingConfig_, created(_));
    EXPECT_CALL(recording_, init(_, _, _, _)).WillOnce([&configuration](auto&, auto*, auto*, auto* handed) {
        configuration.reset(handed);
    });
    EXPECT_CALL(sipConfig_, created(_, _));
    EXPECT_CALL(pickup_, setCommsSrv(_, _));
    EXPECT_CALL(pickup_, Initialise());
    EXPECT_CALL(lines_, setPhysicalInterface(&physical_));
    EXPECT_CALL(lines_, initialise());
    EXPECT_CALL(lines_, setDigitAnalysisService(&digits_));
    EXPECT_CALL(keyset_, setCommsSrv(_, _));
    EXPECT_CALL(keyset_, init());
    EXPECT_CALL(features_, setLocalMgmtInterface(_));
    EXPECT_CALL(features_, setCertMgmtInterface(_));
    EXPECT_CALL(features_, setPhysicalInterface(_));
    EXPECT_CALL(features_, setCommsSrv(_, _));
    EXPECT_CALL(toggle_, ftInitialise(_, _, _));

    {
        NoDouble<CSfi> const withoutCallControl;
        service_->init(context_);
    }

    EXPECT_THAT(log_.texts(), ElementsAre("5 init start", "2 Failed to find Sfi", "5 init end"));
}

TEST_F(TimerTest, TraceOff_WritesNothing)
{
    initialise();
    log_.setLevel(4);
    InSequence order;
    expectOfferedToAll(5);

    service_->timerEvent(5);

    EXPECT_THAT(log_.texts(), IsEmpty());
    EXPECT_THAT(log_.questions(), ElementsAre(testing::Pair("SIP Communications Service", 5)));
}

}  // namespace

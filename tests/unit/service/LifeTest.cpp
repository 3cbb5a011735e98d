// Creation, wiring, timers and end of the service object.
#include <type_traits>

#include "ServiceTest.h"

namespace {

class LifeTest : public ServiceTest
{
protected:
    // Expects everything that init does, in order, on a telephone with every interface.
    void expectWiring();
    MgmtAgentIfc* agent() { return service_.get(); }
    Executable* executable() { return service_.get(); }

    std::unique_ptr<RecordingConfigManager> handedConfiguration_;
};

void LifeTest::expectWiring()
{
    EXPECT_CALL(recordingConfig_, created(&context_));
    EXPECT_CALL(recording_, init(Ref(context_), executable(), agent(), testing::NotNull()))
        .WillOnce([this](auto&, auto*, auto*, auto* configuration) { handedConfiguration_.reset(configuration); });
    EXPECT_CALL(sipConfig_, created(&context_, agent()));
    EXPECT_CALL(context_, findExecutable("AuditoryDeviceIfc"));
    EXPECT_CALL(context_, findExecutable("PhysicalInterfaceServiceIfc"));
    EXPECT_CALL(pickup_, setCommsSrv(&context_, executable()));
    EXPECT_CALL(pickup_, Initialise());
    EXPECT_CALL(lines_, setPhysicalInterface(&physical_));
    EXPECT_CALL(sfi_, SetPhysicalInterface(&physical_));
    EXPECT_CALL(sipConfig_, initialise(true));
    EXPECT_CALL(sfi_, Initialise(&context_));
    EXPECT_CALL(sfi_, SetCommsService(executable()));
    EXPECT_CALL(sfi_, SetAuditoryDevice(&auditory_));
    EXPECT_CALL(sfi_, Startup());
    EXPECT_CALL(lines_, initialise());
    EXPECT_CALL(keyset_, setCommsSrv(&context_, executable()));
    EXPECT_CALL(keyset_, init());
    EXPECT_CALL(context_, findExecutable("LocalMgmtIfc"));
    EXPECT_CALL(context_, findExecutable("CertificateMgmtSvcIfc"));
    EXPECT_CALL(features_, setLocalMgmtInterface(&localMgmt_));
    EXPECT_CALL(features_, setCertMgmtInterface(&certificates_));
    EXPECT_CALL(features_, setPhysicalInterface(&physical_));
    EXPECT_CALL(features_, setCommsSrv(&context_, executable()));
    EXPECT_CALL(context_, findExecutable("DigitAnalysisServiceIfc"));
    EXPECT_CALL(lines_, setDigitAnalysisService(&digits_));
    EXPECT_CALL(toggle_, ftInitialise(&physical_, &localMgmt_, agent()));
    EXPECT_CALL(sfi_, StartTimer(1000)).WillOnce(Return(31));
    EXPECT_CALL(sfi_, Start());
}

TEST_F(LifeTest, Factory_GivesANewServiceEachTime)
{
    EXPECT_CALL(semaphores_, created(_, _, _)).Times(4);

    std::unique_ptr<Executable> const first(createCommunicationsService());
    std::unique_ptr<Executable> const second(createCommunicationsService());

    EXPECT_NE(first, nullptr);
    EXPECT_NE(first, second);
}

TEST_F(LifeTest, Construction_BuildsBothLocksFreeAndTouchesNothingElse)
{
    InSequence order;
    EXPECT_CALL(semaphores_, created(1, 1, false));
    EXPECT_CALL(semaphores_, created(1, 1, true));

    CommunicationsService const service;
}

TEST_F(LifeTest, Destruction_DeletesTheConfigurationManagerFirstThenBothLocks)
{
    initialise();
    InSequence order;
    EXPECT_CALL(sipConfig_, destroyed());
    EXPECT_CALL(semaphores_, destroyed(true));
    EXPECT_CALL(semaphores_, destroyed(false));

    service_.reset();

    testing::Mock::VerifyAndClearExpectations(&sipConfig_);
    testing::Mock::VerifyAndClearExpectations(&semaphores_);
}

TEST_F(LifeTest, Destruction_WithoutInit_DeletesNoConfigurationManager)
{
    EXPECT_CALL(sipConfig_, destroyed()).Times(0);

    service_.reset();

    testing::Mock::VerifyAndClearExpectations(&sipConfig_);
}

TEST_F(LifeTest, Destruction_ThroughAgentInterface_IsVirtual)
{
    EXPECT_CALL(semaphores_, destroyed(_)).Times(2);

    MgmtAgentIfc* const agent = service_.release();
    delete agent;
}

TEST_F(LifeTest, Init_WiresThePlatformInItsOrder)
{
    listenToLog();
    {
        InSequence order;
        EXPECT_CALL(logListener_, written(5, "init start"));
        expectWiring();
        EXPECT_CALL(logListener_, written(5, "init end"));
    }

    service_->init(context_);

    EXPECT_THAT(log_.texts(), ElementsAre("5 init start", "5 init end"));
}

TEST_F(LifeTest, Init_Twice_KeepsTheFirstConfigurationManagerAndRepeatsTheRest)
{
    initialise();
    InSequence order;
    EXPECT_CALL(recordingConfig_, created(&context_));
    EXPECT_CALL(recording_, init(Ref(context_), executable(), agent(), testing::NotNull()))
        .WillOnce([this](auto&, auto*, auto*, auto* configuration) { handedConfiguration_.reset(configuration); });
    EXPECT_CALL(sipConfig_, created(_, _)).Times(0);
    EXPECT_CALL(pickup_, setCommsSrv(&context_, executable()));
    EXPECT_CALL(pickup_, Initialise());
    EXPECT_CALL(lines_, setPhysicalInterface(&physical_));
    EXPECT_CALL(sfi_, SetPhysicalInterface(&physical_));
    EXPECT_CALL(sipConfig_, initialise(true));
    EXPECT_CALL(sfi_, Initialise(&context_));
    EXPECT_CALL(sfi_, SetCommsService(executable()));
    EXPECT_CALL(sfi_, SetAuditoryDevice(&auditory_));
    EXPECT_CALL(sfi_, Startup());
    EXPECT_CALL(lines_, initialise());
    EXPECT_CALL(keyset_, setCommsSrv(&context_, executable()));
    EXPECT_CALL(keyset_, init());
    EXPECT_CALL(features_, setLocalMgmtInterface(&localMgmt_));
    EXPECT_CALL(features_, setCertMgmtInterface(&certificates_));
    EXPECT_CALL(features_, setPhysicalInterface(&physical_));
    EXPECT_CALL(features_, setCommsSrv(&context_, executable()));
    EXPECT_CALL(lines_, setDigitAnalysisService(&digits_));
    EXPECT_CALL(toggle_, ftInitialise(&physical_, &localMgmt_, agent()));
    EXPECT_CALL(sfi_, StartTimer(1000)).WillOnce(Return(32));
    EXPECT_CALL(sfi_, Start());

    service_->init(context_);
}

TEST_F(LifeTest, Init_WithNothingRegistered_LogsEachMissingNameAndHandsNullOn)
{
    ON_CALL(context_, findExecutable(_)).WillByDefault(Return(nullptr));
    EXPECT_CALL(context_, findExecutable(_)).WillRepeatedly(Return(nullptr));
    EXPECT_CALL(recordingConfig_, created(_));
    EXPECT_CALL(recording_, init(_, _, _, _)).WillOnce([this](auto&, auto*, auto*, auto* configuration) {
        handedConfiguration_.reset(configuration);
    });
    EXPECT_CALL(sipConfig_, created(_, _));
    EXPECT_CALL(sipConfig_, initialise(true));
    EXPECT_CALL(pickup_, setCommsSrv(_, _));
    EXPECT_CALL(pickup_, Initialise());
    EXPECT_CALL(lines_, setPhysicalInterface(nullptr));
    EXPECT_CALL(lines_, initialise());
    EXPECT_CALL(lines_, setDigitAnalysisService(nullptr));
    EXPECT_CALL(sfi_, SetPhysicalInterface(nullptr));
    EXPECT_CALL(sfi_, Initialise(_));
    EXPECT_CALL(sfi_, SetCommsService(_));
    EXPECT_CALL(sfi_, SetAuditoryDevice(nullptr));
    EXPECT_CALL(sfi_, Startup());
    EXPECT_CALL(sfi_, StartTimer(1000)).WillOnce(Return(31));
    EXPECT_CALL(sfi_, Start());
    EXPECT_CALL(keyset_, setCommsSrv(_, _));
    EXPECT_CALL(keyset_, init());
    EXPECT_CALL(features_, setLocalMgmtInterface(nullptr));
    EXPECT_CALL(features_, setCertMgmtInterface(nullptr));
    EXPECT_CALL(features_, setPhysicalInterface(nullptr));
    EXPECT_CALL(features_, setCommsSrv(_, _));
    EXPECT_CALL(toggle_, ftInitialise(nullptr, nullptr, agent()));

    service_->init(context_);

    EXPECT_THAT(log_.texts(), ElementsAre("5 init start", "2 find \"AuditoryDeviceIfc\" failed",
                                          "2 find \"PhysicalInterfaceServiceIfc\" failed",
                                          "2 find \"LocalMgmtIfc\" failed", "2 find \"CertificateMgmtSvcIfc\" failed",
                                          "2 find \"DigitAnalysisServiceIfc\" failed", "5 init end"));
}

TEST_F(LifeTest, Init_WithAnExecutableOfAnotherKind_TakesItAsMissingWithoutALogLine)
{
    ON_CALL(context_, findExecutable("AuditoryDeviceIfc")).WillByDefault(Return(&digits_));
    EXPECT_CALL(sfi_, SetAuditoryDevice(nullptr)).RetiresOnSaturation();
    EXPECT_CALL(sfi_, SetAuditoryDevice(testing::NotNull())).Times(0);
    EXPECT_CALL(recordingConfig_, created(_));
    EXPECT_CALL(recording_, init(_, _, _, _)).WillOnce([this](auto&, auto*, auto*, auto* configuration) {
        handedConfiguration_.reset(configuration);
    });
    EXPECT_CALL(sipConfig_, created(_, _));
    EXPECT_CALL(sipConfig_, initialise(_));
    EXPECT_CALL(pickup_, setCommsSrv(_, _));
    EXPECT_CALL(pickup_, Initialise());
    EXPECT_CALL(lines_, setPhysicalInterface(_));
    EXPECT_CALL(lines_, initialise());
    EXPECT_CALL(lines_, setDigitAnalysisService(_));
    EXPECT_CALL(sfi_, SetPhysicalInterface(_));
    EXPECT_CALL(sfi_, Initialise(_));
    EXPECT_CALL(sfi_, SetCommsService(_));
    EXPECT_CALL(sfi_, Startup());
    EXPECT_CALL(sfi_, StartTimer(_)).WillOnce(Return(31));
    EXPECT_CALL(sfi_, Start());
    EXPECT_CALL(keyset_, setCommsSrv(_, _));
    EXPECT_CALL(keyset_, init());
    EXPECT_CALL(features_, setLocalMgmtInterface(_));
    EXPECT_CALL(features_, setCertMgmtInterface(_));
    EXPECT_CALL(features_, setPhysicalInterface(_));
    EXPECT_CALL(features_, setCommsSrv(_, _));
    EXPECT_CALL(toggle_, ftInitialise(_, _, _));

    service_->init(context_);

    EXPECT_THAT(log_.texts(), ElementsAre("5 init start", "5 init end"));
}

TEST_F(LifeTest, FindIfc_AnswersTheExecutableItself)
{
    initialise();

    EXPECT_EQ(service_->findIfc("LocalMgmtIfc"), static_cast<Executable*>(&localMgmt_));
    EXPECT_EQ(service_->findIfc("NobodyIfc"), nullptr);

    EXPECT_THAT(log_.texts(), ElementsAre("2 find \"NobodyIfc\" failed"));
}

TEST_F(LifeTest, CallsGoToTheInstanceThatTheAccessorGivesAtTheTime)
{
    initialise();
    StrictMock<MockCSfi> other;
    CurrentDouble<CSfi> const current(other);
    EXPECT_CALL(other, SetMicrophoneMute(true)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->setMicrophoneMute(true), sfiSuccess);
}

TEST_F(LifeTest, Activate_BracketsTheCallWithTheLock)
{
    InSequence order;
    EXPECT_CALL(sfi_, Lock());
    EXPECT_CALL(sfi_, Activate()).WillOnce(Return(sfiFailureCallBackToMany));
    EXPECT_CALL(sfi_, Unlock());

    EXPECT_EQ(service_->activate(), sfiFailureCallBackToMany);

    EXPECT_THAT(log_.texts(), ElementsAre("5 activate"));
}

TEST_F(LifeTest, Deactivate_IsNotFinalAndPassesItsFlag)
{
    for (bool const allowed : {true, false}) {
        InSequence order;
        EXPECT_CALL(sfi_, Lock());
        EXPECT_CALL(sfi_, Deactivate(false, allowed)).WillOnce(Return(sfiFailureCallBackNoCallInfo));
        EXPECT_CALL(sfi_, Unlock());

        EXPECT_EQ(service_->deactivate(allowed), sfiFailureCallBackNoCallInfo);
    }

    EXPECT_THAT(log_.texts(), ElementsAre("5 deactivate", "5 deactivate"));
}

TEST_F(LifeTest, Shutdown_EndsCallControlForGoodWithoutTheLock)
{
    listenToLog();
    InSequence order;
    EXPECT_CALL(logListener_, written(5, "shutdown BEGIN."));
    EXPECT_CALL(sfi_, Deactivate(true, true)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(logListener_, written(5, "shutdown END."));

    service_->shutdown();
}

TEST_F(LifeTest, Subscribe_PassesTheSubscriberBetweenItsTwoLines)
{
    NiceMock<MockExecutable> subscriber;
    listenToLog();
    InSequence order;
    EXPECT_CALL(logListener_, written(5, "subscribe start"));
    EXPECT_CALL(sfi_, Subscribe(&subscriber)).WillOnce(Return(sfiFailureCallBackAllreadyExists));
    EXPECT_CALL(logListener_, written(5, "subscribe end"));

    EXPECT_EQ(service_->subscribe(&subscriber), sfiFailureCallBackAllreadyExists);
}

TEST_F(LifeTest, Observe_GoesToTheLineManagerAndLogsNothing)
{
    NiceMock<MockExecutable> observer;
    EXPECT_CALL(lines_, observe(&observer)).WillOnce(Return(true)).WillOnce(Return(false));

    EXPECT_TRUE(service_->observe(&observer));
    EXPECT_FALSE(service_->observe(&observer));

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(LifeTest, Run_ReturnsAtOnce)
{
    service_->run();

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(LifeTest, ThreadAndMessageDefaults_AreTheFrameworks)
{
    static_assert(std::is_same_v<decltype(&CommunicationsService::handleMsg), decltype(&Service::handleMsg)>);
    static_assert(std::is_same_v<decltype(&CommunicationsService::type), int (Threadable::*)()>);
    static_assert(
        std::is_same_v<decltype(&CommunicationsService::getThreadPriorityForPlatform), int (Threadable::*)()>);

    EXPECT_EQ(service_->type(), 0);
    EXPECT_EQ(service_->getThreadPriorityForPlatform(), 0);
}

TEST_F(LifeTest, OperationsWithoutEffect_CallAndLogNothing)
{
    EXPECT_EQ(service_->csCommunicationsService("anything"), "");
    EXPECT_EQ(service_->csCommunicationsService(nullptr), "");
    service_->processSignallingComponentEvent("payload", 7);
    service_->processSignallingComponentEvent(nullptr, 0);
    service_->activateStoredFwd();
    service_->hookswitchEvent(PhysDefs::actionPressed);
    EXPECT_EQ(service_->getWarmLine(), "");

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(LifeTest, BothObserverFaces_NameTheServiceAsSubscriber)
{
    physicalEventObserver* const physical = service_.get();
    functionalEventObserver* const functional = service_.get();

    EXPECT_EQ(physical->getSubscribingService(), executable());
    EXPECT_EQ(functional->getSubscribingService(), executable());
}

TEST_F(LifeTest, BothObserverFaces_LeaveTheChannelNameAsItIs)
{
    physicalEventObserver* const physical = service_.get();
    functionalEventObserver* const functional = service_.get();
    std::string name = "unchanged";

    physical->getDestinationChannelName(name);
    functional->getDestinationChannelName(name);

    EXPECT_EQ(name, "unchanged");
}

}  // namespace

#include "ServiceTest.h"

ServiceTest::ServiceTest()
{
    ON_CALL(clientUtils_, splitMCADeviceIndex(_, _, _)).WillByDefault([](auto const& lineURI, auto& baseURI, int&) {
        baseURI = lineURI;
    });
    ON_CALL(context_, findExecutable("AuditoryDeviceIfc")).WillByDefault(Return(&auditory_));
    ON_CALL(context_, findExecutable("PhysicalInterfaceServiceIfc")).WillByDefault(Return(&physical_));
    ON_CALL(context_, findExecutable("LocalMgmtIfc")).WillByDefault(Return(&localMgmt_));
    ON_CALL(context_, findExecutable("CertificateMgmtSvcIfc")).WillByDefault(Return(&certificates_));
    ON_CALL(context_, findExecutable("DigitAnalysisServiceIfc")).WillByDefault(Return(&digits_));
    EXPECT_CALL(semaphores_, created(_, _, _)).Times(AnyNumber());
    service_ = std::make_unique<CommunicationsService>();
    forgetExpectations();
}

ServiceTest::~ServiceTest()
{
    forgetExpectations();
    service_.reset();
    for (auto* const configuration : recordingConfigurations_) {
        delete configuration;
    }
}

void ServiceTest::TearDown()
{
    std::vector<int> traces;
    for (auto const& line : log_.lines()) {
        EXPECT_EQ(line.component, "SIP Communications Service") << line;
        EXPECT_EQ(line.source, "src/CommunicationsService") << line;
        EXPECT_GT(line.line, 0) << line;
        if (line.level != 2) {
            traces.push_back(line.level);
        }
    }
    std::vector<int> asked;
    for (auto const& [component, level] : log_.questions()) {
        EXPECT_EQ(component, "SIP Communications Service");
        asked.push_back(level);
    }
    if (log_.level() >= 6) {
        EXPECT_EQ(traces, asked) << "a trace queries its level once, a failure does not";
    }
}

void ServiceTest::forgetExpectations()
{
    Mock::VerifyAndClearExpectations(&sfi_);
    Mock::VerifyAndClearExpectations(&lines_);
    Mock::VerifyAndClearExpectations(&keyset_);
    Mock::VerifyAndClearExpectations(&features_);
    Mock::VerifyAndClearExpectations(&pickup_);
    Mock::VerifyAndClearExpectations(&toggle_);
    Mock::VerifyAndClearExpectations(&recording_);
    Mock::VerifyAndClearExpectations(&sipConfig_);
    Mock::VerifyAndClearExpectations(&recordingConfig_);
    Mock::VerifyAndClearExpectations(&semaphores_);
    EXPECT_CALL(semaphores_, destroyed(_)).Times(AnyNumber());
    EXPECT_CALL(sipConfig_, destroyed()).Times(AnyNumber());
    EXPECT_CALL(recordingConfig_, destroyed()).Times(AnyNumber());
}

void ServiceTest::initialise()
{
    EXPECT_CALL(recordingConfig_, created(_)).Times(AnyNumber());
    EXPECT_CALL(recording_, init(_, _, _, _)).WillRepeatedly([this](auto&, auto*, auto*, auto* configuration) {
        recordingConfigurations_.push_back(configuration);
    });
    EXPECT_CALL(sipConfig_, created(_, _)).Times(AnyNumber());
    EXPECT_CALL(sipConfig_, initialise(_)).Times(AnyNumber());
    EXPECT_CALL(pickup_, setCommsSrv(_, _)).Times(AnyNumber());
    EXPECT_CALL(pickup_, Initialise()).Times(AnyNumber());
    EXPECT_CALL(lines_, setPhysicalInterface(_)).Times(AnyNumber());
    EXPECT_CALL(lines_, setDigitAnalysisService(_)).Times(AnyNumber());
    EXPECT_CALL(lines_, initialise()).Times(AnyNumber());
    EXPECT_CALL(sfi_, SetPhysicalInterface(_)).Times(AnyNumber());
    EXPECT_CALL(sfi_, Initialise(_)).Times(AnyNumber());
    EXPECT_CALL(sfi_, SetCommsService(_)).Times(AnyNumber());
    EXPECT_CALL(sfi_, SetAuditoryDevice(_)).Times(AnyNumber());
    EXPECT_CALL(sfi_, Startup()).Times(AnyNumber());
    EXPECT_CALL(sfi_, StartTimer(_)).WillRepeatedly(Return(77));
    EXPECT_CALL(sfi_, Start()).Times(AnyNumber());
    EXPECT_CALL(keyset_, setCommsSrv(_, _)).Times(AnyNumber());
    EXPECT_CALL(keyset_, init()).Times(AnyNumber());
    EXPECT_CALL(features_, setLocalMgmtInterface(_)).Times(AnyNumber());
    EXPECT_CALL(features_, setCertMgmtInterface(_)).Times(AnyNumber());
    EXPECT_CALL(features_, setPhysicalInterface(_)).Times(AnyNumber());
    EXPECT_CALL(features_, setCommsSrv(_, _)).Times(AnyNumber());
    EXPECT_CALL(toggle_, ftInitialise(_, _, _)).Times(AnyNumber());
    service_->init(context_);
    forgetExpectations();
    log_.clear();
}

void ServiceTest::isSingleLinePhone()
{
    EXPECT_CALL(lines_, getKeysetType()).WillRepeatedly(Return(""));
}

void ServiceTest::isKeyset()
{
    EXPECT_CALL(lines_, getKeysetType()).WillRepeatedly(Return("keyset"));
}

void ServiceTest::keysetIsActive(bool active)
{
    EXPECT_CALL(keyset_, isKeysetActive()).WillRepeatedly(Return(active));
}

void ServiceTest::lineExists(std::string const& lineURI, MockLine& line, int lineID)
{
    EXPECT_CALL(lines_, getLine(lineURI)).WillRepeatedly(Return(&line));
    EXPECT_CALL(line, getLineID()).WillRepeatedly(Return(static_cast<unsigned char>(lineID)));
    EXPECT_CALL(line, getLineData()).WillRepeatedly(Return(&data_));
}

void ServiceTest::expectTeamLockTaken()
{
    EXPECT_CALL(semaphores_, taken(true, -1));
}

void ServiceTest::expectTeamLockGiven()
{
    EXPECT_CALL(semaphores_, given(true));
}

void ServiceTest::expectPublicationLockTaken()
{
    EXPECT_CALL(semaphores_, taken(false, -1));
}

void ServiceTest::expectPublicationLockGiven()
{
    EXPECT_CALL(semaphores_, given(false));
}

void ServiceTest::listenToLog()
{
    log_.setListener(&logListener_);
}

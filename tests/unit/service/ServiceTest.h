// The service among mocks of everything it calls. The mocks are strict, except for plain reads of the configuration: a
// call that a test does not expect fails it. In every test the log lines bear the service's name, and each trace
// queries its level exactly once.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "src/CommunicationsService.h"
#include "tests/doubles/Doubles.h"

using testing::_;
using testing::AnyNumber;
using testing::DoAll;
using testing::ElementsAre;
using testing::Eq;
using testing::InSequence;
using testing::InvokeWithoutArgs;
using testing::IsEmpty;
using testing::IsNull;
using testing::Mock;
using testing::NiceMock;
using testing::Pointee;
using testing::Ref;
using testing::Return;
using testing::ReturnRef;
using testing::SaveArg;
using testing::SetArgReferee;
using testing::StrEq;
using testing::StrictMock;

// The four values of a call's record.
MATCHER_P4(IsRecord, lineID, primary, callID, appearanceIndex, "")
{
    *result_listener << "lineID " << int{arg.lineID} << ", primary " << arg.primary << ", callID " << arg.callID
                     << ", appearanceIndex " << int{arg.appearanceIndex};
    return arg.lineID == lineID && arg.primary == primary && arg.callID == callID &&
           arg.appearanceIndex == appearanceIndex;
}

class ServiceTest : public testing::Test
{
protected:
    ServiceTest();
    ~ServiceTest() override;

    void TearDown() override;

    // Initialises the service with every interface found, and forgets the calls and lines of that.
    void initialise();
    void forgetExpectations();

    // The default kind of telephone.
    void isSingleLinePhone();
    void isKeyset();
    void keysetIsActive(bool active);

    // A line as the line manager finds it. Its configuration is `data_`.
    void lineExists(std::string const& lineURI, MockLine& line, int lineID);

    // Expects the service's locks in the sequence.
    void expectTeamLockTaken();
    void expectTeamLockGiven();
    void expectPublicationLockTaken();
    void expectPublicationLockGiven();
    // Adds the log lines to a test of order.
    void listenToLog();

    StrictMock<MockCSfi> sfi_;
    StrictMock<MockSfiMCAMapper> mapper_;
    StrictMock<MockLineManager> lines_;
    StrictMock<MockLine> line_;
    StrictMock<MockLineData> data_;
    StrictMock<MockTeamServiceKeyset> keyset_;
    StrictMock<MockTeamServiceFeatures> features_;
    StrictMock<MockDirectedPickupHandler> pickup_;
    StrictMock<MockFeatureToggle> toggle_;
    StrictMock<MockMediaRecordingService> recording_;
    StrictMock<MockSIPConfigManager> sipConfig_;
    StrictMock<MockRecordingConfigManager> recordingConfig_;
    StrictMock<MockUtility> utility_;
    StrictMock<MockSemaphore> semaphores_;
    NiceMock<MockSfiConfiguration> configuration_;
    NiceMock<MockClientUtils> clientUtils_;

    FoundExecutable<StrictMock<MockAuditoryDeviceIfc>> auditory_;
    FoundExecutable<StrictMock<MockPhysicalInterfaceServiceIfc>> physical_;
    FoundExecutable<StrictMock<MockLocalMgmtIfc>> localMgmt_;
    FoundExecutable<StrictMock<MockCertificateMgmtSvcIfc>> certificates_;
    FoundExecutable<StrictMock<MockDigitAnalysisServiceIfc>> digits_;
    NiceMock<MockSvcRTEContext> context_;

    LogDouble log_;
    StrictMock<MockLogListener> logListener_;

    std::unique_ptr<CommunicationsService> service_;

private:
    CurrentDouble<CSfi> currentSfi_{sfi_};
    CurrentDouble<LineManager> currentLines_{lines_};
    CurrentDouble<TeamServiceKeyset> currentKeyset_{keyset_};
    CurrentDouble<TeamServiceFeatures> currentFeatures_{features_};
    CurrentDouble<DirectedPickupHandler> currentPickup_{pickup_};
    CurrentDouble<FeatureToggle> currentToggle_{toggle_};
    CurrentDouble<MediaRecordingService> currentRecording_{recording_};
    CurrentDouble<MockSIPConfigManager> currentSipConfig_{sipConfig_};
    CurrentDouble<MockRecordingConfigManager> currentRecordingConfig_{recordingConfig_};
    CurrentDouble<MockUtility> currentUtility_{utility_};
    CurrentDouble<MockSemaphore> currentSemaphores_{semaphores_};
    CurrentDouble<MockSfiConfiguration> currentConfiguration_{configuration_};
    CurrentDouble<MockClientUtils> currentClientUtils_{clientUtils_};
    CurrentDouble<LogDouble> currentLog_{log_};

    std::vector<RecordingConfigManager*> recordingConfigurations_;
};

// Every operation that traces, with the trace switched off: each queries the level once for each line and writes only
// its failures. The mocks allow everything here; other tests check the calls.
#include <functional>

#include "ServiceTest.h"

namespace {

struct Operation
{
    char const* name;
    std::function<void(CommunicationsService&)> run;
};

void PrintTo(Operation const& operation, std::ostream* out)
{
    *out << operation.name;
}

class QuietTest : public testing::TestWithParam<Operation>
{
protected:
    void SetUp() override
    {
        ON_CALL(context_, findExecutable("DigitAnalysisServiceIfc")).WillByDefault(Return(&digits_));
        ON_CALL(sfi_, StartTimer(_)).WillByDefault(Return(77));
        ON_CALL(sfi_, CallAnswer(_)).WillByDefault(Return(sfiSuccess));
        ON_CALL(sfi_, GetMCAMapper()).WillByDefault(Return(&mapper_));
        ON_CALL(lines_, getKeysetType()).WillByDefault(Return("keyset"));
        ON_CALL(lines_, isMCALine(_)).WillByDefault(Return(true));
        ON_CALL(lines_, getLine(_)).WillByDefault(Return(&line_));
        ON_CALL(line_, getLineState()).WillByDefault(Return(eLineStateSelected));
        ON_CALL(recording_, init(_, _, _, _)).WillByDefault([this](auto&, auto*, auto*, auto* configuration) {
            recordingConfiguration_.reset(configuration);
        });
        log_.setLevel(4);
    }

    NiceMock<MockCSfi> sfi_;
    NiceMock<MockSfiMCAMapper> mapper_;
    NiceMock<MockLineManager> lines_;
    NiceMock<MockLine> line_;
    NiceMock<MockTeamServiceKeyset> keyset_;
    NiceMock<MockTeamServiceFeatures> features_;
    NiceMock<MockDirectedPickupHandler> pickup_;
    NiceMock<MockFeatureToggle> toggle_;
    NiceMock<MockMediaRecordingService> recording_;
    NiceMock<MockSfiConfiguration> configuration_;
    NiceMock<MockSvcRTEContext> context_;
    FoundExecutable<NiceMock<MockDigitAnalysisServiceIfc>> digits_;
    LogDouble log_;

    CurrentDouble<CSfi> currentSfi_{sfi_};
    CurrentDouble<LineManager> currentLines_{lines_};
    CurrentDouble<TeamServiceKeyset> currentKeyset_{keyset_};
    CurrentDouble<TeamServiceFeatures> currentFeatures_{features_};
    CurrentDouble<DirectedPickupHandler> currentPickup_{pickup_};
    CurrentDouble<FeatureToggle> currentToggle_{toggle_};
    CurrentDouble<MediaRecordingService> currentRecording_{recording_};
    CurrentDouble<MockSfiConfiguration> currentConfiguration_{configuration_};
    CurrentDouble<LogDouble> currentLog_{log_};

    std::unique_ptr<RecordingConfigManager> recordingConfiguration_;
    CommunicationsService service_;
};

TEST_P(QuietTest, WithTheTraceOff_AsksAndWritesNothing)
{
    service_.init(context_);
    log_.clear();

    GetParam().run(service_);

    EXPECT_THAT(log_.texts(), IsEmpty());
    EXPECT_FALSE(log_.questions().empty());
}

using Object = CommunicationsService;

Operation const kOperations[] = {
    {"timerEvent", [](Object& s) { s.timerEvent(77); }},
    {"activate", [](Object& s) { s.activate(); }},
    {"deactivate", [](Object& s) { s.deactivate(true); }},
    {"shutdown", [](Object& s) { s.shutdown(); }},
    {"subscribe", [](Object& s) { s.subscribe(nullptr); }},
    {"callClear", [](Object& s) { s.callClear("4711", 7, CSTAEventCauseNone); }},
    {"outgoingCallMake", [](Object& s) { s.outgoingCallMake("4711", 7, "4712", true, true, true); }},
    {"acceptCall", [](Object& s) { s.acceptCall("4711", 7, false); }},
    {"answerCall", [](Object& s) { s.answerCall("4711", 7); }},
    {"deflectCall", [](Object& s) { s.deflectCall("4711", 7, "4712"); }},
    {"holdCall", [](Object& s) { s.holdCall("4711", 7, sfiFeatureHold, true); }},
    {"retrieveCall", [](Object& s) { s.retrieveCall("4711", 7); }},
    {"attendedTransferCall", [](Object& s) { s.attendedTransferCall("4711", 7, 8); }},
    {"blindTransferCall", [](Object& s) { s.blindTransferCall("4711", 7, "4712"); }},
    {"activateCallbackRinging", [](Object& s) { s.activateCallbackRinging("4711", 7); }},
    {"activateCallbackBusy", [](Object& s) { s.activateCallbackBusy("4711", 7); }},
    {"cancelCallbacks", [](Object& s) { s.cancelCallbacks("4711", 7, "4712", sfiCancelCallBackAll, true); }},
    {"consultationCall", [](Object& s) { s.consultationCall("4711", 7, "4712"); }},
    {"refuseCall", [](Object& s) { s.refuseCall("4711", 7, sfiRefuseCallBusy); }},
    {"directedPickupCall", [](Object& s) { s.directedPickupCall("4711", 7, "4712", true); }},
    {"groupPickupCall", [](Object& s) { s.groupPickupCall("4711", 7); }},
    {"generateDigits", [](Object& s) { s.generateDigits("4711", 7, "1"); }},
    {"conferenceCall", [](Object& s) { s.conferenceCall("4711", 7, 8, sfiFeatureConference); }},
    {"getManualHoldIndication", [](Object& s) { s.getManualHoldIndication("4711", 7); }},
    {"alternateCalls", [](Object& s) { s.alternateCalls("4711"); }},
    {"makeSecurityChangeReinvite", [](Object& s) { s.makeSecurityChangeReinvite("4711", 7, true); }},
    {"bluetoothCall", [](Object& s) { s.answerCall("bluetoothDeviceID", 10000); }},
    {"reserveLine", [](Object& s) { s.reserveLine("4711"); }},
    {"setServiceState", [](Object& s) { s.setServiceState(sfiServiceInService); }},
    {"getServiceState",
     [](Object& s) {
         sfiServiceState state = sfiServiceInService;
         s.getServiceState(state);
     }},
    {"setMicrophoneMute", [](Object& s) { s.setMicrophoneMute(true); }},
    {"getMicrophoneMute",
     [](Object& s) {
         bool mute = false;
         s.getMicrophoneMute(mute);
     }},
    {"getDoNotDisturb",
     [](Object& s) {
         bool on = false;
         s.getDoNotDisturb("4711", on);
     }},
    {"SendCSTARequest", [](Object& s) { s.SendCSTARequest("4711", "body"); }},
    {"sendUACSTAServerMessage",
     [](Object& s) {
         std::string line;
         std::string body;
         s.sendUACSTAServerMessage(line, body);
     }},
    {"InitializeOrFinalizeServerFeatures", [](Object& s) { s.InitializeOrFinalizeServerFeatures("4711", true); }},
    {"isLocallyIdleLine", [](Object& s) { s.isLocallyIdleLine(); }},
    {"bridgeCall", [](Object& s) { s.bridgeCall("4711"); }},
    {"activateRecording", [](Object& s) { s.activateRecording("4711"); }},
    {"deactivateRecording", [](Object& s) { s.deactivateRecording("4711"); }},
    {"systemStatus", [](Object& s) { s.systemStatus("CallViewMWI-Normal", ""); }},
    {"setLampMode", [](Object& s) { s.setLampMode("4711", "Hold", 1); }},
    {"setDoNotDisturb", [](Object& s) { s.setDoNotDisturb("4711", true); }},
    {"setAgentState", [](Object& s) { s.setAgentState("4711", "busy"); }},
    {"setForwardingConfiguration",
     [](Object& s) { s.setForwardingConfiguration("4711", sfiForwardBusy, true, "4712", 1, true); }},
    {"setData",
     [](Object& s) {
         ManageableData data;
         data.setRootId("server-based-features", nullptr);
         s.setData(data);
     }},
    {"getEACockpitData", [](Object& s) { s.getEACockpitData("calls"); }},
    {"setEACockpitData", [](Object& s) { s.setEACockpitData("calls", "1"); }},
    {"lineKeyPressedFPK", [](Object& s) { s.lineKeyPressedFPK(4); }},
    {"lineKeyPressed", [](Object& s) { s.lineKeyPressed("4711"); }},
    {"dssKeyPressedFPK", [](Object& s) { s.dssKeyPressedFPK(4, eDSSContextNone, "", ""); }},
    {"blfKeyPressedFPK", [](Object& s) { s.blfKeyPressedFPK(4, true); }},
    {"setDNDStatusForBLF", [](Object& s) { s.setDNDStatusForBLF("4712", true); }},
    {"buttonPressedEvent",
     [](Object& s) { s.buttonPressedEvent(PhysDefs::keyFunctionNone, 4, PhysDefs::actionPressed, ""); }},
    {"functionPressedEvent",
     [](Object& s) { s.functionPressedEvent(PhysDefs::keyFunctionNone, 4, PhysDefs::actionPressed, ""); }},
    {"jackEvent", [](Object& s) { s.jackEvent(PhysDefs::plugHeadset, PhysDefs::plugIn); }},
    {"fpkAvailableEvent", [](Object& s) { s.fpkAvailableEvent(); }},
};

INSTANTIATE_TEST_SUITE_P(EveryOperation, QuietTest, testing::ValuesIn(kOperations),
                         [](auto const& operation) { return std::string(operation.param.name); });

TEST(QuietInitTest, Init_WithTheTraceOff_WritesFailuresOnly)
{
    NiceMock<MockLineManager> lines;
    NiceMock<MockTeamServiceKeyset> keyset;
    NiceMock<MockTeamServiceFeatures> features;
    NiceMock<MockDirectedPickupHandler> pickup;
    NiceMock<MockFeatureToggle> toggle;
    NiceMock<MockMediaRecordingService> recording;
    CurrentDouble<LineManager> const currentLines(lines);
    CurrentDouble<TeamServiceKeyset> const currentKeyset(keyset);
    CurrentDouble<TeamServiceFeatures> const currentFeatures(features);
    CurrentDouble<DirectedPickupHandler> const currentPickup(pickup);
    CurrentDouble<FeatureToggle> const currentToggle(toggle);
    CurrentDouble<MediaRecordingService> const currentRecording(recording);
    std::unique_ptr<RecordingConfigManager> recordingConfiguration;
    ON_CALL(recording, init(_, _, _, _)).WillByDefault([&](auto&, auto*, auto*, auto* configuration) {
        recordingConfiguration.reset(configuration);
    });
    LogDouble log;
    log.setLevel(4);
    CurrentDouble<LogDouble> const currentLog(log);
    SvcRTEContext context;
    CommunicationsService service;

    service.init(context);

    EXPECT_THAT(log.texts(),
                ElementsAre("2 find \"AuditoryDeviceIfc\" failed", "2 find \"PhysicalInterfaceServiceIfc\" failed",
                            "2 Failed to find Sfi", "2 find \"LocalMgmtIfc\" failed",
                            "2 find \"CertificateMgmtSvcIfc\" failed", "2 find \"DigitAnalysisServiceIfc\" failed"));
    EXPECT_EQ(log.questions().size(), 2U);
}

}  // namespace

// Views, service state, mute, message waiting, devices, lamps, recording and hot lines.
#include "ServiceTest.h"

namespace {

constexpr auto kAnyStatusResult = sfiFailureCallBackToMany;

class StatusTest : public ServiceTest
{
protected:
    void SetUp() override { initialise(); }

    void withoutPhysicalInterface()
    {
        EXPECT_CALL(semaphores_, created(_, _, _)).Times(AnyNumber());
        service_ = std::make_unique<CommunicationsService>();
    }
};

TEST_F(StatusTest, SetServiceState_PassesTheState)
{
    EXPECT_CALL(sfi_, SetServiceState(sfiServiceDoNotDisturb)).WillOnce(Return(kAnyStatusResult));

    EXPECT_EQ(service_->setServiceState(sfiServiceDoNotDisturb), kAnyStatusResult);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setServiceState (state = 2)"));
}

TEST_F(StatusTest, GetServiceState_FillsTheCallersState)
{
    sfiServiceState state = sfiServiceInService;
    EXPECT_CALL(sfi_, GetServiceState(Ref(state)))
        .WillOnce(DoAll(SetArgReferee<0>(sfiServiceOutOfService), Return(kAnyStatusResult)));

    EXPECT_EQ(service_->getServiceState(state), kAnyStatusResult);

    EXPECT_EQ(state, 1);
    EXPECT_THAT(log_.texts(), ElementsAre("5 getServiceState"));
}

TEST_F(StatusTest, SetMicrophoneMute_PassesTheFlag)
{
    EXPECT_CALL(sfi_, SetMicrophoneMute(true)).WillOnce(Return(kAnyStatusResult));
    EXPECT_CALL(sfi_, SetMicrophoneMute(false)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->setMicrophoneMute(true), kAnyStatusResult);
    EXPECT_EQ(service_->setMicrophoneMute(false), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setMicrophoneMute (1)", "5 setMicrophoneMute (0)"));
}

TEST_F(StatusTest, GetMicrophoneMute_FillsTheCallersFlag)
{
    bool mute = false;
    EXPECT_CALL(sfi_, GetMicrophoneMute(Ref(mute))).WillOnce(DoAll(SetArgReferee<0>(true), Return(kAnyStatusResult)));

    EXPECT_EQ(service_->getMicrophoneMute(mute), kAnyStatusResult);

    EXPECT_TRUE(mute);
    EXPECT_THAT(log_.texts(), ElementsAre("5 getMicrophoneMute"));
}

TEST_F(StatusTest, GetDoNotDisturb_AsksForThePhoneWhateverTheLine)
{
    bool on = true;
    EXPECT_CALL(sfi_, GetDoNotDisturb(0, Ref(on))).WillOnce(Return(kAnyStatusResult));

    EXPECT_EQ(service_->getDoNotDisturb("4711", on), kAnyStatusResult);

    EXPECT_TRUE(on);
    EXPECT_THAT(log_.texts(), ElementsAre("5 getDoNotDisturb(4711)"));
}

TEST_F(StatusTest, SendCSTARequest_PassesLineAndBody)
{
    EXPECT_CALL(sfi_, SendCSTARequest("4711", "<body/>")).WillOnce(Return(kAnyStatusResult));

    EXPECT_EQ(service_->SendCSTARequest("4711", "<body/>"), kAnyStatusResult);

    EXPECT_THAT(log_.texts(), ElementsAre("5 SendCSTARequest"));
}

TEST_F(StatusTest, SendUACSTAServerMessage_PassesTheBodyOnly)
{
    std::string line = "4711";
    std::string body = "<body/>";
    EXPECT_CALL(sfi_, SendUACSTAServerMessage(Ref(body))).WillOnce(Return(kAnyStatusResult));

    EXPECT_EQ(service_->sendUACSTAServerMessage(line, body), kAnyStatusResult);

    EXPECT_THAT(log_.texts(), ElementsAre("5 sendUACSTServerMesage"));
}

TEST_F(StatusTest, InitializeOrFinalizeServerFeatures_PassesLineAndFlag)
{
    EXPECT_CALL(sfi_, InitializeOrFinalizeServerFeatures("4711", true)).WillOnce(Return(kAnyStatusResult));
    EXPECT_CALL(sfi_, InitializeOrFinalizeServerFeatures("4711", false)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->InitializeOrFinalizeServerFeatures("4711", true), kAnyStatusResult);
    EXPECT_EQ(service_->InitializeOrFinalizeServerFeatures("4711", false), 5);

    EXPECT_THAT(log_.texts(),
                ElementsAre("5 InitializeOrFinalizeServerFeatures", "5 InitializeOrFinalizeServerFeatures"));
}

TEST_F(StatusTest, SetAssociatedCalls_AlwaysSucceedsWithoutALine)
{
    EXPECT_CALL(sfi_, SetAssociatedCalls(true));
    EXPECT_CALL(sfi_, SetAssociatedCalls(false));

    EXPECT_EQ(service_->setAssociatedCalls(true), 5);
    EXPECT_EQ(service_->setAssociatedCalls(false), 5);

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(StatusTest, GetLineHeadsetOverride_IsWhatCallControlSays)
{
    EXPECT_CALL(sfi_, GetLineHeadsetOverride()).WillOnce(Return(-4));

    EXPECT_EQ(service_->getLineHeadsetOverride(), -4);

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(StatusTest, IsLocallyIdleLine_IsWhatTheLineManagerSays)
{
    EXPECT_CALL(lines_, isLocallyIdleLine()).WillOnce(Return(true)).WillOnce(Return(false));

    EXPECT_TRUE(service_->isLocallyIdleLine());
    EXPECT_FALSE(service_->isLocallyIdleLine());

    EXPECT_THAT(log_.texts(), ElementsAre("5 isLocallyIdleLine ", "5 isLocallyIdleLine "));
}

TEST_F(StatusTest, BridgeCall_IsForTheLineOrForNone)
{
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    EXPECT_CALL(utility_, bridgeCall(&line_)).WillOnce(Return(true));
    EXPECT_CALL(utility_, bridgeCall(nullptr)).WillOnce(Return(false));

    EXPECT_TRUE(service_->bridgeCall("4711"));
    EXPECT_FALSE(service_->bridgeCall("4799"));

    EXPECT_THAT(log_.texts(), ElementsAre("5 bridgeCall lineURI=4711", "5 bridgeCall lineURI=4799"));
}

TEST_F(StatusTest, Recording_IsThatOfTheServiceThatInitKept)
{
    StrictMock<MockMediaRecordingService> other;
    CurrentDouble<MediaRecordingService> const current(other);
    EXPECT_CALL(recording_, activateRecording("4711")).WillOnce(Return(true)).WillOnce(Return(false));
    EXPECT_CALL(recording_, deactivateRecording("4711")).WillOnce(Return(true)).WillOnce(Return(false));

    EXPECT_TRUE(service_->activateRecording("4711"));
    EXPECT_FALSE(service_->activateRecording("4711"));
    EXPECT_TRUE(service_->deactivateRecording("4711"));
    EXPECT_FALSE(service_->deactivateRecording("4711"));

    EXPECT_EQ(service_->mediaRecordingSvc(), &recording_);
    EXPECT_THAT(log_.texts(),
                ElementsAre("5 activateRecording lineURI: 4711", "5 activateRecording lineURI: 4711",
                            "5 deactivateRecording lineURI: 4711", "5 deactivateRecording lineURI: 4711"));
}

TEST_F(StatusTest, Recording_BeforeInit_IsStartedOnceWithAnEmptyContext)
{
    withoutPhysicalInterface();
    Executable* const executable = service_.get();
    MgmtAgentIfc* const agent = service_.get();
    InSequence order;
    EXPECT_CALL(recording_, init(_, executable, agent)).WillOnce([this](Context& context, auto*, auto*) {
        EXPECT_NE(&context, &context_);
        EXPECT_EQ(context.findExecutable("LocalMgmtIfc"), nullptr);
    });
    EXPECT_CALL(recording_, activateRecording("4711")).WillOnce(Return(true));
    EXPECT_CALL(recording_, deactivateRecording("4711")).WillOnce(Return(true));

    EXPECT_TRUE(service_->activateRecording("4711"));
    EXPECT_TRUE(service_->deactivateRecording("4711"));
}

TEST_F(StatusTest, Recording_ThatInitDidNotFind_IsStartedWithTheStoredContext)
{
    withoutPhysicalInterface();
    EXPECT_CALL(recordingConfig_, created(_)).WillOnce(testing::Throw(std::runtime_error("no memory")));
    EXPECT_THROW(service_->init(context_), std::runtime_error);
    EXPECT_CALL(recording_, init(Ref(static_cast<Context&>(context_)), _, _));

    EXPECT_EQ(service_->mediaRecordingSvc(), &recording_);
}

TEST_F(StatusTest, SystemStatus_OfTheCallView_NotifiesItAlone)
{
    EXPECT_CALL(sfi_, NotifyViewState(6)).Times(2);

    EXPECT_EQ(service_->systemStatus("CallView-Normal", "info"), 5);
    EXPECT_EQ(service_->systemStatus("CallView-Normal", nullptr), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 systemStatus Status=CallView-Normal,StatusInfo=info",
                                          "5 systemStatus Status=CallView-Normal,StatusInfo=(null)"));
}

TEST_F(StatusTest, SystemStatus_OfTheMessages_IsPassedOn)
{
    EXPECT_CALL(sfi_, SystemStatus("MessagesPhonelet-Normal", "info", 0));

    EXPECT_EQ(service_->systemStatus("MessagesPhonelet-Normal", "info"), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 systemStatus Status=MessagesPhonelet-Normal,StatusInfo=info"));
}

TEST_F(StatusTest, SystemStatus_OfTheCallViewWithMessages_IsLoggedAndPassedOn)
{
    EXPECT_CALL(sfi_, SystemStatus("CallViewMWI-Normal", "info", 0));

    EXPECT_EQ(service_->systemStatus("CallViewMWI-Normal", "info"), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 systemStatus Status=CallViewMWI-Normal,StatusInfo=info",
                                          "5 systemStatus Status - CallViewMWI-Normal"));
}

TEST_F(StatusTest, SystemStatus_OfTheCallViewWithoutMessages_IsLoggedAndPassedOn)
{
    EXPECT_CALL(sfi_, SystemStatus("CallViewMWI-Normal-NoMessagesPhonelet", "", 0));

    EXPECT_EQ(service_->systemStatus("CallViewMWI-Normal-NoMessagesPhonelet", ""), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 systemStatus Status=CallViewMWI-Normal-NoMessagesPhonelet,StatusInfo=",
                                          "5 systemStatus Status - CallViewMWI-Normal-NoMessagesPhonelet"));
}

TEST_F(StatusTest, SystemStatus_OfAnythingElse_IsNotHandled)
{
    for (auto const* const status : {"callview-normal", "CallView-Normal ", "CallView", "CallViewMWI", ""}) {
        EXPECT_EQ(service_->systemStatus(status, "info"), 0) << status;
    }
    EXPECT_EQ(service_->systemStatus(nullptr, nullptr), 0);

    EXPECT_EQ(log_.texts().back(), "5 systemStatus Status=(null),StatusInfo=(null)");
}

TEST_F(StatusTest, SystemStatus_ThatIsPassedOnWithoutInformation_IsTheCallersError)
{
    EXPECT_THROW(service_->systemStatus("MessagesPhonelet-Normal", nullptr), std::logic_error);
    EXPECT_THROW(service_->systemStatus("CallViewMWI-Normal", nullptr), std::logic_error);
    EXPECT_THROW(service_->systemStatus("CallViewMWI-Normal-NoMessagesPhonelet", nullptr), std::logic_error);
}

TEST_F(StatusTest, SetLampMode_Hold_SetsLampTen)
{
    EXPECT_CALL(physical_, setLamp(10, 3, 2, 0));

    EXPECT_EQ(service_->setLampMode("4711", "Hold", 3), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setLampMode() lineURI=4711, lampId=Hold, lampMode=3",
                                          "5 setLampMode() setting LED for feature Hold to mode 3"));
}

TEST_F(StatusTest, SetLampMode_SecondAlert_SetsLampSixtyNine)
{
    EXPECT_CALL(physical_, setLamp(69, 1, 3, 0));

    EXPECT_EQ(service_->setLampMode("4711", "SecondAlert", 1), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setLampMode() lineURI=4711, lampId=SecondAlert, lampMode=1",
                                          "5 setLampMode() setting LED for feature Second Alert to mode 1"));
}

TEST_F(StatusTest, SetLampMode_OfAnotherLamp_IsLoggedAndSucceeds)
{
    EXPECT_EQ(service_->setLampMode("4711", "Mute", 1), 5);
    EXPECT_EQ(service_->setLampMode("4711", "hold", 1), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setLampMode() lineURI=4711, lampId=Mute, lampMode=1",
                                          "2 setLampMode() LED setting for lampId Mute not implemented",
                                          "5 setLampMode() lineURI=4711, lampId=hold, lampMode=1",
                                          "2 setLampMode() LED setting for lampId hold not implemented"));
}

TEST_F(StatusTest, SetLampMode_WithoutLamps_LogsAsUsualAndSucceeds)
{
    withoutPhysicalInterface();

    EXPECT_EQ(service_->setLampMode("4711", "Hold", 0), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setLampMode() lineURI=4711, lampId=Hold, lampMode=0",
                                          "5 setLampMode() setting LED for feature Hold to mode 0"));
}

TEST_F(StatusTest, GetMessageWaitingIndicator_CopiesTheRecordOfThePresentNumber)
{
    ON_CALL(configuration_, voiceMailDialUri()).WillByDefault(Return("999"));
    ON_CALL(configuration_, currentPhoneNumber()).WillByDefault(Return("4711"));
    EXPECT_CALL(sfi_, GetMessageWaitingIndicator("4711", _)).WillOnce([](auto const&, auto& record) {
        EXPECT_EQ(record.type, 0);
        EXPECT_EQ(record.newMessages, 0U);
        EXPECT_EQ(record.messagesWaiting, 0);
        record = {-1, 2, 3, 4, 5, -6, -7, -8};
        return sfiFailure;
    });
    int type = 90;
    unsigned int newMessages = 91;
    unsigned int oldMessages = 92;
    unsigned int newUrgent = 93;
    unsigned int oldUrgent = 94;
    int returnType = 95;
    int available = 96;
    int waiting = 97;
    std::string uri = "old";

    EXPECT_EQ(service_->getMessageWaitingIndicator(type, newMessages, oldMessages, newUrgent, oldUrgent, returnType,
                                                   available, waiting, uri),
              5);

    EXPECT_EQ(type, -1);
    EXPECT_EQ(newMessages, 2U);
    EXPECT_EQ(oldMessages, 3U);
    EXPECT_EQ(newUrgent, 4U);
    EXPECT_EQ(oldUrgent, 5U);
    EXPECT_EQ(returnType, -6);
    EXPECT_EQ(available, -7);
    EXPECT_EQ(waiting, -8);
    EXPECT_EQ(uri, "999");
    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(StatusTest, GetMessageWaitingIndicator_OfWhichNothingIsKnown_IsAllZero)
{
    EXPECT_CALL(sfi_, GetMessageWaitingIndicator("", _)).WillOnce(Return(sfiSuccess));
    int type = 90;
    unsigned int newMessages = 91;
    unsigned int oldMessages = 92;
    unsigned int newUrgent = 93;
    unsigned int oldUrgent = 94;
    int returnType = 95;
    int available = 96;
    int waiting = 97;
    std::string uri = "old";

    service_->getMessageWaitingIndicator(type, newMessages, oldMessages, newUrgent, oldUrgent, returnType, available,
                                         waiting, uri);

    EXPECT_EQ(type + returnType + available + waiting, 0);
    EXPECT_EQ(newMessages + oldMessages + newUrgent + oldUrgent, 0U);
    EXPECT_EQ(uri, "");
}

TEST_F(StatusTest, GetDevices_OfAKeyset_AreItsListAndTheGroup)
{
    isKeyset();
    ON_CALL(configuration_, cpuAddr()).WillByDefault(Return("10.0.0.1"));
    EXPECT_CALL(lines_, getDeviceList(_)).WillOnce([](auto& devices) { devices.push_back("<line:4711>"); });
    std::vector<std::string> devices{"first"};

    EXPECT_EQ(service_->getDevices(devices), 5);

    EXPECT_THAT(devices, ElementsAre("first", "<line:4711>", "<groupPickup:10.0.0.1>"));
    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(StatusTest, GetDevices_OfAKeysetWithoutAny_IsNotHandled)
{
    isKeyset();
    ON_CALL(configuration_, cpuAddr()).WillByDefault(Return("10.0.0.1"));
    EXPECT_CALL(lines_, getDeviceList(_)).Times(2);
    std::vector<std::string> none;
    std::vector<std::string> some{"first"};

    EXPECT_EQ(service_->getDevices(none), 0);
    EXPECT_EQ(service_->getDevices(some), 5);

    EXPECT_THAT(none, IsEmpty());
    EXPECT_THAT(some, ElementsAre("first", "<groupPickup:10.0.0.1>"));
}

TEST_F(StatusTest, GetDevices_OfASingleLinePhone_AreItsRegistrationAndTheGroup)
{
    isSingleLinePhone();
    ON_CALL(configuration_, registrationId(0)).WillByDefault(Return("4711"));
    ON_CALL(configuration_, cpuAddr()).WillByDefault(Return("10.0.0.1"));
    std::vector<std::string> devices;

    EXPECT_EQ(service_->getDevices(devices), 5);

    EXPECT_THAT(devices, ElementsAre("<prime:4711>", "<groupPickup:10.0.0.1>"));
}

TEST_F(StatusTest, GetDevices_WithoutCpuAddress_NameNoGroup)
{
    isSingleLinePhone();
    ON_CALL(configuration_, registrationId(0)).WillByDefault(Return("4711"));
    std::vector<std::string> devices;

    EXPECT_EQ(service_->getDevices(devices), 5);

    EXPECT_THAT(devices, ElementsAre("<prime:4711>"));
}

TEST_F(StatusTest, GetDevices_OfASingleLinePhoneThatIsNotRegistered_IsNotHandled)
{
    isSingleLinePhone();
    ON_CALL(configuration_, cpuAddr()).WillByDefault(Return("10.0.0.1"));
    std::vector<std::string> devices{"first"};

    EXPECT_EQ(service_->getDevices(devices), 0);

    EXPECT_THAT(devices, ElementsAre("first"));
}

}  // namespace

// CSfi as the service uses it: call records, features by number and destination, settings.
#include "telephone/sfi/Sfi.h"

#include "platform/framework/Executable.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/management/ManageableData.h"
#include "platform/physical/PhysDefs.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Refusals.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/LineTable.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/LocalManagement.h"
#include "telephone/management/Settings.h"
#include "telephone/sfi/SettingsCallPolicy.h"
#include "telephone/time/Gate.h"
#include "tests/helpers/EnginePhone.h"
#include "tests/helpers/EventRecorder.h"

namespace telephone::test {

namespace {

// Notes the timer that expires.
class Service final : public Executable
{
public:
    void init(Context&) override {}
    void shutdown() override {}
    void timerEvent(int timerId) override
    {
        expiredTimer = timerId;
        expired.open();
    }

    int expiredTimer = 0;
    Gate expired{"the timer of the service"};
};

class SfiTest : public ::testing::Test
{
protected:
    Configuration configuration_ = twoLines();
    Settings settings_{ConfigurationStore::open({}).value(), configuration_};
    LineTable lineTable_{configuration_};
    SettingsCallPolicy policy_{settings_, lineTable_};
    EventRecorder recorder_;
    EventDispatcher dispatcher_;
    TimerService timers_;
    CallEngine engine_{eventLoop(), silent(), lineTable_, policy_, recorder_.poster()};
    Lines lines_{lineTable_, configuration_, settings_, engine_, timers_};
    Sfi sfi_{{engine_, lines_, policy_, settings_, dispatcher_, timers_, nullptr}};
    EnginePhone bob_{bobsOptions()};

    static Configuration twoLines()
    {
        Configuration configuration;
        configuration.lines.resize(2);
        configuration.lines[0].id = "4711";
        configuration.lines[1].id = "4712";
        for (LineConfiguration& line : configuration.lines) {
            line.registers = false;
        }
        return configuration;
    }
    static EngineConfiguration silent()
    {
        EngineConfiguration configuration;
        configuration.audio.source = "silence";
        configuration.ringTime = std::chrono::milliseconds(50);
        return configuration;
    }
    static EnginePhone::Options bobsOptions()
    {
        EnginePhone::Options options;
        options.lines = {"4722", "4723"};
        return options;
    }

    void SetUp() override
    {
        lineTable_.setServer({"", engine_.userAgent().hostPort(), ""});
        ASSERT_EQ(sfi_.Activate(), sfiSuccess);
    }

    std::string uri(char const* line) { return "sip:" + std::string(line) + '@' + hostPort(); }
    std::string hostPort() { return engine_.userAgent().hostPort(); }

    static sfiCallInfo record(std::uint8_t line, int callID) { return {line, 1, callID, 0}; }

    sfiResult make(int callID, std::string const& to, bool flags = true)
    {
        sfiCallInfo call = record(1, callID);
        return sfi_.CallMake(&call, to, 1, 0, flags, flags, flags, false);
    }

    // A call to one of bob's lines, connected.
    void connect(int callID, std::string const& line, bool flags = true)
    {
        std::string const id = std::to_string(callID);
        ASSERT_EQ(make(callID, bob_.uri(line), flags), sfiSuccess);
        ASSERT_TRUE(recorder_.waitFor("state 4711 " + id + " remote ringing normal " + line));
        for (CallSnapshot const& call : bob_.engine().calls()) {
            if (call.alerting()) {
                ASSERT_TRUE(bob_.engine().answer(call.callID));
            }
        }
        ASSERT_TRUE(recorder_.waitFor("state 4711 " + id + " connected normal " + line));
    }

    sfiResult hold(int callID, int feature, bool manual)
    {
        sfiCallInfo call = record(1, callID);
        std::lock_guard const guard(engine_);
        sfi_.SetManualHoldIndication(&call, manual);
        return sfi_.CallFeature(&call, static_cast<sfiFeature>(feature), "", 1);
    }
};

}  // namespace

TEST_F(SfiTest, Instance_IsThisObject)
{
    EXPECT_EQ(CSfi::GetInstance(), &sfi_);
}

TEST_F(SfiTest, HoldWithAnyReason_Holds)
{
    connect(1, "4722");

    ASSERT_EQ(hold(1, -1, true), sfiSuccess);

    ASSERT_TRUE(recorder_.waitFor("held 4711 1"));
    sfiCallInfo call = record(1, 1);
    EXPECT_NE(sfi_.GetManualHoldIndication(&call), 0);
    ASSERT_EQ(sfi_.CallRetrieve(&call), sfiSuccess);
    ASSERT_TRUE(recorder_.waitFor("retrieved 4711 1 4722"));
    ASSERT_EQ(hold(1, sfiFeatureDeflect, false), sfiSuccess);
    EXPECT_TRUE(recorder_.waitFor("held 4711 1"));
    EXPECT_EQ(sfi_.GetManualHoldIndication(&call), 0);
}

TEST_F(SfiTest, HoldOfAHeldCall_SucceedsAndIsReported)
{
    connect(1, "4722");
    ASSERT_EQ(hold(1, sfiFeatureHold, true), sfiSuccess);
    RefusalCollector refusals;

    EXPECT_EQ(hold(1, sfiFeatureHold, true), sfiSuccess);

    EXPECT_EQ(refusals.take(), (std::vector<Refusal>{{RefusalKind::kAlreadyExists, "call 1 is on hold already"}}));
}

TEST_F(SfiTest, HoldOfCallZero_IsRefusedAsUnknown)
{
    RefusalCollector refusals;

    EXPECT_EQ(hold(0, sfiFeatureHold, true), sfiFailure);

    EXPECT_EQ(refusals.take(), (std::vector<Refusal>{{RefusalKind::kNotFound, "there is no call 0"}}));
}

TEST_F(SfiTest, EmptyDestinationWithoutAHoldIndication_IsRefused)
{
    connect(1, "4722");
    sfiCallInfo call = record(1, 1);

    EXPECT_EQ(sfi_.CallFeature(&call, sfiFeatureHold, "", 1), sfiFailure);
    EXPECT_EQ(sfi_.CallFeature(&call, sfiFeatureBlindTransfer, "", 1), sfiFailure);
}

TEST_F(SfiTest, ConsultationWithoutFlags_WaitsForTheFirstCall)
{
    connect(1, "4722");

    connect(2, "4723", false);

    EXPECT_TRUE(engine_.call(1)->heldForConsultation);
    EXPECT_TRUE(engine_.call(2)->consultation);
}

TEST_F(SfiTest, AlternateWithCallIdZero_ExchangesTheCalls)
{
    connect(1, "4722");
    connect(2, "4723", false);
    sfiCallInfo call = record(1, 0);

    ASSERT_EQ(sfi_.CallFeature(&call, sfiFeatureAlternate, nullptr, 1), sfiSuccess);

    EXPECT_TRUE(recorder_.waitFor("success 4711 1 alternate"));
}

TEST_F(SfiTest, FeatureWithoutDestination_JoinsAConference)
{
    connect(1, "4722");
    connect(2, "4723", false);
    sfiCallInfo call = record(1, 1);

    ASSERT_EQ(sfi_.CallFeature(&call, static_cast<sfiFeature>(-1), nullptr, 1), sfiSuccess);

    EXPECT_TRUE(recorder_.waitFor("success 4711 1 conference"));
}

TEST_F(SfiTest, AttendedTransferFeature_TransfersToTheOtherCall)
{
    connect(1, "4722");
    connect(2, "4723", false);
    sfiCallInfo call = record(1, 1);

    ASSERT_EQ(sfi_.CallFeature(&call, sfiFeatureAttendedTransfer, nullptr, 1), sfiSuccess);

    EXPECT_TRUE(recorder_.waitFor("success 4711 1 attended transfer"));
}

TEST_F(SfiTest, UnknownLine_IsRefused)
{
    sfiCallInfo call = record(0, 1);

    EXPECT_EQ(sfi_.CallMake(&call, bob_.uri(), 1, 0, true, true, true, false), sfiFailure);
    EXPECT_EQ(sfi_.GroupPickup(&call), sfiFailure);
}

TEST_F(SfiTest, DoNotDisturbOfALine_IsThePhonesUntilItIsSwitchedOff)
{
    bool on = false;

    ASSERT_EQ(sfi_.SetDoNotDisturb(1, true), sfiSuccess);
    sfi_.GetDoNotDisturb(0, on);
    EXPECT_TRUE(on);
    sfi_.GetDoNotDisturb(2, on);
    EXPECT_FALSE(on);
    ASSERT_EQ(sfi_.SetDoNotDisturb(0, false), sfiSuccess);

    sfi_.GetDoNotDisturb(0, on);
    EXPECT_FALSE(on);
    sfi_.GetDoNotDisturb(1, on);
    EXPECT_FALSE(on);
}

TEST_F(SfiTest, DoNotDisturb_RefusesCalls)
{
    ASSERT_EQ(sfi_.SetDoNotDisturb(1, true), sfiSuccess);

    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, uri("4711")));

    EXPECT_TRUE(recorder_.waitFor("missed 4711 1001 4722 busy - 0"));
    EXPECT_TRUE(bob_.events().waitFor("state 4722 1 busy busy 4711"));
}

TEST_F(SfiTest, ForwardingOfTheStore_ForwardsTheOwnLineAlone)
{
    ASSERT_TRUE(settings_.setAll({{"cfu-activated", "true"}, {"cfu-address", bob_.uri("4723")}}));

    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, uri("4711")));
    EXPECT_TRUE(recorder_.waitFor("forwarded 4711 1001 4722 4723 1"));
    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 2, uri("4712")));

    EXPECT_TRUE(recorder_.waitFor("state 4712 1002 ringing normal 4722"));
}

TEST_F(SfiTest, RingsBeforeNoReply_AreTheLinesOwn)
{
    lines_.getLine("4712")->setForwardingConfiguration(sfiForwardNoReply, true, "103", 4);

    EXPECT_EQ(policy_.ringsBeforeNoReply(2), 4);
    EXPECT_EQ(policy_.ringsBeforeNoReply(1), 3);
}

TEST_F(SfiTest, RingsBeforeNoReply_OfALineWithoutNumber_AreTheTelephones)
{
    ASSERT_TRUE(settings_.set("cfnr-delay", "5"));
    EXPECT_EQ(policy_.ringsBeforeNoReply(2), 5);

    lines_.getLine("4712")->setForwardingConfiguration(sfiForwardNoReply, true, "103", -1);

    EXPECT_EQ(policy_.ringsBeforeNoReply(2), 5);
}

TEST_F(SfiTest, RingsBeforeNoReply_OfTheUsersLine_AreTheTelephones)
{
    ASSERT_TRUE(settings_.set(SettingNames::kCurrentMultiUser, "4712"));
    lines_.getLine("4711")->setForwardingConfiguration(sfiForwardNoReply, true, "103", 4);
    lines_.getLine("4712")->setForwardingConfiguration(sfiForwardNoReply, true, "103", 4);

    EXPECT_EQ(policy_.ringsBeforeNoReply(1), 4);
    EXPECT_EQ(policy_.ringsBeforeNoReply(2), 3);
}

TEST_F(SfiTest, NoReply_ForwardsAfterTheLinesOwnRings)
{
    ASSERT_TRUE(settings_.set(SettingNames::kNoReplyDelay, "0"));
    lines_.getLine("4712")->setForwardingConfiguration(sfiForwardNoReply, true, bob_.uri("4723"), 1);

    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, uri("4712")));

    EXPECT_TRUE(recorder_.waitFor("forwarded 4712 1001 4722 4723 3"));
}

TEST_F(SfiTest, ServiceState_IsKept)
{
    sfiServiceState state = sfiServiceInService;

    ASSERT_EQ(sfi_.SetServiceState(sfiServiceOutOfService), sfiSuccess);

    ASSERT_EQ(sfi_.GetServiceState(state), sfiSuccess);
    EXPECT_EQ(state, sfiServiceOutOfService);
    EXPECT_EQ(make(1, bob_.uri()), sfiFailure);
    EXPECT_EQ(sfi_.SetServiceState(static_cast<sfiServiceState>(9)), sfiFailure);
}

TEST_F(SfiTest, HoldKey_HoldsAndRetrieves)
{
    connect(1, "4722");

    sfi_.HandleKeyFunction(57);
    ASSERT_TRUE(recorder_.waitFor("held 4711 1"));
    sfi_.HandleKeyFunction(57);

    EXPECT_TRUE(recorder_.waitFor("retrieved 4711 1 4722"));
}

TEST_F(SfiTest, Timer_ExpiresAtTheService)
{
    Service service;
    sfi_.SetCommsService(&service);

    int const timer = sfi_.StartTimer(1);

    ASSERT_TRUE(service.expired.waitFor(EventRecorder::kDeadline));
    EXPECT_EQ(service.expiredTimer, timer);
    EXPECT_NE(timer, 0);
    timers_.deliverTo(nullptr);
}

TEST_F(SfiTest, ManageableData_IsStored)
{
    ManageableData data;
    putItem(data, "phone-locked", "true");

    EXPECT_EQ(sfi_.ApplyManageableData(data, false), 1);

    EXPECT_TRUE(sfi_.IsPhoneLocked());
}

TEST_F(SfiTest, ManageableDataWithARefusedItem_IsRefusedWhole)
{
    ManageableData data;
    putItem(data, "phone-locked", "true");
    putItem(data, "coffee", "strong");

    EXPECT_EQ(sfi_.ApplyManageableData(data, false), 0);

    EXPECT_FALSE(sfi_.IsPhoneLocked());
}

TEST_F(SfiTest, NoticeOfTheStore_WritesNothing)
{
    ManageableData data;
    putItem(data, "phone-locked", "true");

    EXPECT_EQ(sfi_.ApplyManageableData(data, true), 1);

    EXPECT_FALSE(sfi_.IsPhoneLocked());
}

TEST_F(SfiTest, MessageWaitingThatIsNotKnown_LeavesTheRecordAsItIs)
{
    sfiMessageWaitingRecord waiting{};

    EXPECT_EQ(sfi_.GetMessageWaitingIndicator("4711", waiting), sfiFailure);

    EXPECT_EQ(waiting.newMessages, 0U);
}

TEST_F(SfiTest, FinalDeactivation_CannotBeUndone)
{
    ASSERT_EQ(sfi_.Deactivate(false, true), sfiSuccess);
    ASSERT_EQ(sfi_.Activate(), sfiSuccess);

    ASSERT_EQ(sfi_.Deactivate(true, true), sfiSuccess);

    EXPECT_EQ(sfi_.Activate(), sfiFailure);
}

TEST_F(SfiTest, DigitsOfNoText_AreRefused)
{
    connect(1, "4722");
    sfiCallInfo call = record(1, 1);

    EXPECT_EQ(sfi_.GenerateDigits(&call, nullptr), sfiFailure);
    EXPECT_EQ(sfi_.GenerateDigits(&call, "123#"), sfiSuccess);
}

TEST_F(SfiTest, IncomingCall_IsAcceptedAnsweredAndRefused)
{
    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, uri("4711")));
    ASSERT_TRUE(recorder_.waitFor("state 4711 1001 ringing normal 4722"));
    sfiCallInfo first = record(1, 1001);
    EXPECT_EQ(sfi_.CallAccept(&first), sfiSuccess);
    ASSERT_EQ(sfi_.CallAnswer(&first), sfiSuccess);
    ASSERT_TRUE(recorder_.waitFor("state 4711 1001 connected normal 4722"));
    EXPECT_EQ(sfi_.CallAnswer(&first), sfiFailure);
    ASSERT_TRUE(bob_.engine().outgoing().make(2, 0, 2, uri("4712")));
    ASSERT_TRUE(recorder_.waitFor("state 4712 1002 ringing normal 4723"));
    sfiCallInfo second = record(2, 1002);

    EXPECT_EQ(sfi_.CallRefuse(&second, sfiRefuseCallBusy), sfiSuccess);

    EXPECT_TRUE(bob_.events().waitFor("state 4723 2 busy busy 4712"));
    EXPECT_EQ(sfi_.CallRefuse(&second, sfiRefuseCallBusy), sfiFailure);
}

TEST_F(SfiTest, FeatureWithADestination_DeflectsOrTransfers)
{
    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, uri("4711")));
    ASSERT_TRUE(recorder_.waitFor("state 4711 1001 ringing normal 4722"));
    sfiCallInfo call = record(1, 1001);
    EXPECT_EQ(sfi_.CallFeature(&call, sfiFeatureConference, "4712", 1), sfiFailure);

    EXPECT_EQ(sfi_.CallFeature(&call, sfiFeatureDeflect, bob_.uri("4723").c_str(), 1), sfiSuccess);

    EXPECT_TRUE(recorder_.waitFor("forwarded 4711 1001 4722 4723 4"));
    connect(2, "4722");
    call = record(1, 2);
    EXPECT_EQ(sfi_.CallFeature(&call, sfiFeatureBlindTransfer, bob_.uri("4723").c_str(), 1), sfiSuccess);
    EXPECT_TRUE(recorder_.waitFor("state 4711 2 transferring normal 4722"));
}

TEST_F(SfiTest, HoldKeyWithoutACall_IsRefusedAndOtherKeysAreNotForIt)
{
    RefusalCollector refusals;

    sfi_.HandleKeyFunction(PhysDefs::keyFunctionHold);
    sfi_.HandleKeyFunction(PhysDefs::keyFunctionMute);

    auto const taken = refusals.take();
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0], (Refusal{RefusalKind::kWrongState, "there is no call to hold or to retrieve"}));
    EXPECT_EQ(taken[1].kind, RefusalKind::kNotSupported);
}

TEST_F(SfiTest, FailureOfAFeature_IsToldForItsLine)
{
    sfi_.SendFeatureFailureNotification(1, sfiFeatureConference, sfiFeatureFailureRefused);

    EXPECT_TRUE(recorder_.waitFor("failed 4711 0 conference 1"));
}

TEST_F(SfiTest, TelephoneWithoutBluetooth_NamesNoLine)
{
    std::string lineURI = "before";
    std::string name = "before";

    sfi_.GetBluetoothLineURI(0, lineURI, name);

    EXPECT_EQ(lineURI + name, "");
}

TEST_F(SfiTest, ReadersOfSettings_ReadThem)
{
    EXPECT_EQ(sfi_.GetDialRestrictionMode(), 0);
    EXPECT_EQ(sfi_.GetLineHeadsetOverride(), 0);
    ASSERT_TRUE(settings_.set("dial-restriction-mode", "1"));
    ASSERT_TRUE(settings_.set("headset-override", "1"));

    EXPECT_EQ(sfi_.GetDialRestrictionMode(), 1);
    EXPECT_EQ(sfi_.GetLineHeadsetOverride(), 1);
    EXPECT_EQ(sfi_.GetHotWarmLineStatus(1), 0);
    EXPECT_EQ(sfi_.GetHotWarmLineStatus(99), 0);
}

TEST_F(SfiTest, DoNotDisturbOfTheManagement_IsTold)
{
    ManageableData data;
    putItem(data, "call-dnd-activated", "true");
    EXPECT_EQ(sfi_.ApplyManageableData(data, false), 1);

    EXPECT_TRUE(policy_.doNotDisturb(1));
}

}  // namespace telephone::test

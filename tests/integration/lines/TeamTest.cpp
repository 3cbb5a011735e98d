// The keyset, the ringing, and what the team features' keys do.
#include <gmock/gmock.h>

#include "KeysFixture.h"
#include "ManualWatch.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/sfi/SfiTypes.h"
#include "telephone/team/FeatureToggles.h"
#include "telephone/team/Keyset.h"
#include "telephone/team/PickupHandler.h"
#include "telephone/team/Ringer.h"
#include "telephone/team/TeamFeatures.h"

namespace telephone {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

class Bell final : public AuditoryDeviceIfc
{
public:
    void useHeadset(bool) override {}
    void setRinging(bool on) override
    {
        std::lock_guard const lock(mutex);
        ringing = on;
        changed.notify_all();
    }
    bool isRinging()
    {
        std::lock_guard const lock(mutex);
        return ringing;
    }
    bool waitForRinging()
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), [this] { return ringing; });
    }
    std::mutex mutex;
    std::condition_variable changed;
    bool ringing = false;
};

class TeamTest : public KeysFixture
{
protected:
    ~TeamTest() override
    {
        if (features_) {
            features_->stop();
        }
        if (ringer_) {
            ringer_->stop();
        }
    }

    void buildTeam()
    {
        buildKeys();
        keyset_ = std::make_unique<Keyset>(*lines_, *settings_);
        ringer_ = std::make_unique<Ringer>(*lines_, *keyset_, bell_);
        ringer_->start();
        pickup_ = std::make_unique<PickupHandler>(*lines_);
        toggles_ = std::make_unique<FeatureToggles>(physical_->layout(), *settings_);
        features_ = std::make_unique<TeamFeatures>(configuration_, *lines_, *keyset_, *toggles_, *physical_, *settings_,
                                                   watch_);
        features_->setCommsSrv(nullptr, &service_);
        features_->Activate();
    }

    ManualWatch watch_;
    Bell bell_;
    std::unique_ptr<Keyset> keyset_;
    std::unique_ptr<Ringer> ringer_;
    std::unique_ptr<PickupHandler> pickup_;
    std::unique_ptr<FeatureToggles> toggles_;
    std::unique_ptr<TeamFeatures> features_;
};

TEST_F(TeamTest, Instances_AreTheOnesThatLive)
{
    buildTeam();
    EXPECT_EQ(TeamServiceKeyset::Instance(), keyset_.get());
    EXPECT_EQ(TeamServiceFeatures::Instance(), features_.get());
    EXPECT_EQ(DirectedPickupHandler::Instance(), pickup_.get());
    EXPECT_EQ(FeatureToggle::Instance(), toggles_.get());
}

TEST_F(TeamTest, Keyset_IsActiveOnATelephoneOfSeveralLinesOnly)
{
    buildTeam();
    EXPECT_TRUE(keyset_->isKeysetActive());
}

TEST_F(TeamTest, Keyset_OfASingleLineTelephone_IsNotActive)
{
    configuration_.keyset = false;
    configuration_.lines.resize(1);
    configuration_.keys.clear();
    buildTeam();

    EXPECT_FALSE(keyset_->isKeysetActive());
    EXPECT_FALSE(keyset_->isSpoofedDummyLine("anyLine"));
    EXPECT_FALSE(keyset_->changeMultiUser("4711"));
}

TEST_F(TeamTest, AnswerCall_AnswersWhatRingsOnTheLine)
{
    buildTeam();
    offer(130, 1001);

    EXPECT_EQ(keyset_->answerCall("4713"), sfiSuccess);
    EXPECT_EQ(keyset_->answerCall("4713#2"), sfiSuccess);
    EXPECT_EQ(keyset_->answerCall("4713#1"), sfiFailure);
    EXPECT_EQ(keyset_->answerCall("4711"), sfiFailure);
    EXPECT_EQ(keyset_->answerCall("4799"), sfiFailure);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("answer 1001", "answer 1001"));
}

TEST_F(TeamTest, RetrieveCall_TakesTheCallItNames_ElseTheOneOnHold)
{
    buildTeam();
    changeCall(1, 5, sfiCallStateHeld);

    EXPECT_EQ(keyset_->retrieveCall("4711", 5), sfiSuccess);
    EXPECT_EQ(keyset_->retrieveCall("4711", 77), sfiSuccess);
    EXPECT_EQ(keyset_->retrieveCall("4712", 5), sfiFailure);
    EXPECT_EQ(keyset_->retrieveCall("4799", 5), sfiFailure);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("retrieve 5", "retrieve 5"));
}

TEST_F(TeamTest, MakeCall_SelectsTheLine_AndUnreserveGivesItBack)
{
    buildTeam();
    keyset_->makeCall("4712");
    EXPECT_EQ(stateOf("4712"), 21);
    EXPECT_TRUE(keyset_->unreserveLine("4712"));
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    EXPECT_FALSE(keyset_->unreserveLine("4799"));

    changeCall(2, 5, sfiCallStateConnected);
    keyset_->makeCall("4712");
    EXPECT_EQ(stateOf("4712"), eLineStateActive);
}

TEST_F(TeamTest, ReserveNextAppearance_IsUsedByTheNextCall)
{
    buildTeam();
    changeCall(129, 5, sfiCallStateConnected);

    EXPECT_TRUE(keyset_->reserveNextSCA("4713"));
    EXPECT_EQ(stateOf("4713#2"), 24);
    EXPECT_EQ(lines_->getLine("4713")->getChildBCALineIdReservedForConsultationCall(), 130);
    EXPECT_EQ(lines_->appearanceMap().findFirstFreeVirtualLine(3), 130);
    EXPECT_EQ(lines_->seizeForIncoming(3, 1001)->recordLine, 131);

    changeCall(130, 6, sfiCallStateDialling);
    EXPECT_EQ(stateOf("4713#2"), eLineStateDialling);
    EXPECT_EQ(lines_->getLine("4713")->getChildBCALineIdReservedForConsultationCall(), 0);
}

TEST_F(TeamTest, ReserveNextAppearance_OfALineThatIsFull_Fails)
{
    buildTeam();
    changeCall(1, 1, sfiCallStateConnected);
    for (int const line : {129, 130, 131}) {
        changeCall(line, line, sfiCallStateHeld);
    }

    EXPECT_FALSE(keyset_->reserveNextSCA("4711"));
    EXPECT_FALSE(keyset_->reserveNextSCA("4713"));
    EXPECT_FALSE(keyset_->reserveNextSCA("4799"));
}

TEST_F(TeamTest, BridgedOutgoingCall_ReservesAndDials_OrGivesTheLineBack)
{
    buildTeam();
    keyset_->initiateBCAOutgoingCall("4713", "103");
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4713#1 1001 103"));

    calls_.answerWith(sfiFailure);
    keyset_->initiateBCAOutgoingCall("4712", "103");
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    keyset_->initiateBCAOutgoingCall("4799", "103");
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4712 1002 103"));
}

TEST_F(TeamTest, AnyLine_StandsForTheFirstThatIsFree)
{
    buildTeam();
    EXPECT_TRUE(keyset_->isSpoofedDummyLine("anyLine"));
    EXPECT_FALSE(keyset_->isSpoofedDummyLine("4711"));
    EXPECT_FALSE(keyset_->isSpoofedDummyLine(""));

    changeCall(1, 5, sfiCallStateConnected);
    EXPECT_TRUE(keyset_->dummyLine_reserve());
    EXPECT_EQ(stateOf("4712"), eLineStateSelected);
}

TEST_F(TeamTest, CallOnTheKeysetOnly_IsRememberedWhileItAlerts)
{
    buildTeam();
    offer(1, 1001);
    keyset_->callStateChanged("4711", static_cast<sfiCallState>(17), 1001, 0);
    keyset_->callStateChanged("4711", static_cast<sfiCallState>(17), 1002, 0);
    keyset_->callStateChanged("4711", sfiCallStateConnected, 1003, 0);
    EXPECT_TRUE(keyset_->alertsOnKeysetOnly(1001));
    EXPECT_FALSE(keyset_->alertsOnKeysetOnly(1002));
    EXPECT_FALSE(keyset_->alertsOnKeysetOnly(1003));

    changeCall(1, 1001, sfiCallStateConnected);
    EXPECT_FALSE(keyset_->alertsOnKeysetOnly(1001));
}

TEST_F(TeamTest, IncomingCallPriority_CountsTheLinesThatRing_PrimaryFirst_IgnoredLast)
{
    buildTeam();
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 0);
    offer(129, 1001);
    offer(2, 1002);
    offer(1, 1003);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 1);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4712"), 2);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4713"), 3);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4799"), 0);

    keyset_->callIgnored("4711");
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 3);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4712"), 1);
}

TEST_F(TeamTest, MultiUser_IsThePrimaryLineUntilAnotherIsChosen)
{
    buildTeam();
    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4711");
    EXPECT_TRUE(keyset_->changeMultiUser("4713#2"));
    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4713");
    EXPECT_EQ(settings_->text("current-multi-user"), "4713");
    EXPECT_FALSE(keyset_->changeMultiUser("4799"));
    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4713");
}

TEST_F(TeamTest, ServiceInitiatedLine_IsSelectedAsLongAsItIsSo)
{
    buildTeam();
    keyset_->setIsInServiceInitiatedState("4712", true);
    EXPECT_EQ(stateOf("4712"), eLineStateSelected);
    keyset_->setIsInServiceInitiatedState("4712", false);
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    keyset_->setIsInServiceInitiatedState("4799", true);
}

TEST_F(TeamTest, PreviewKey_ShowsOneCallAfterTheOther_AndIgnoreSilencesTheOneShown)
{
    buildTeam();
    offer(1, 1001);
    offer(2, 1002);
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4712"));
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionIgnoreCall);
    EXPECT_TRUE(lines_->find("4712")->silenced());
    EXPECT_FALSE(lines_->find("4711")->silenced());
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), nullptr);

    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));
    changeCall(1, 1001, sfiCallStateIdle);
    EXPECT_EQ(keyset_->preview(), nullptr);
    keyset_->terminatePreview();
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionHold);
}

TEST_F(TeamTest, Telephone_RingsWhileACallIsToBeHeard)
{
    configuration_.lines[1].ring = 0;
    buildTeam();
    offer(2, 1002);
    EXPECT_FALSE(bell_.isRinging());
    offer(1, 1001);
    EXPECT_TRUE(bell_.isRinging());
    keyset_->callIgnored("4711");
    EXPECT_FALSE(bell_.isRinging());
    offer(130, 1003);
    EXPECT_TRUE(bell_.isRinging());
    changeCall(130, 1003, sfiCallStateConnected);
    EXPECT_FALSE(bell_.isRinging());
}

TEST_F(TeamTest, IsolatedLine_IsTheOnlyOneThatIsHeard)
{
    buildTeam();
    keyset_->callIsolation("4712", true);
    offer(1, 1001);
    EXPECT_FALSE(bell_.isRinging());
    keyset_->callIsolation("4711", false);
    EXPECT_FALSE(bell_.isRinging());
    keyset_->callIsolation("4712", false);
    EXPECT_TRUE(bell_.isRinging());
}

TEST_F(TeamTest, RingDelay_IsWaitedFor_UnlessImmediateRingIsOn)
{
    configuration_.lines[0].ringDelay = 1;
    buildTeam();
    offer(1, 1001);
    EXPECT_FALSE(bell_.isRinging());
    EXPECT_TRUE(bell_.waitForRinging());
    changeCall(1, 1001, sfiCallStateIdle);
    EXPECT_FALSE(bell_.isRinging());

    std::string outcome;
    keyset_->setImmediateRing(true, outcome);
    EXPECT_EQ(outcome, "immediate ring is on");
    EXPECT_TRUE(keyset_->getImmediateRing());
    offer(1, 1002);
    EXPECT_TRUE(bell_.isRinging());
}

TEST_F(TeamTest, ForwardingKey_SwitchesTheServicesForwarding)
{
    buildTeam();
    EXPECT_CALL(service_, setForwardingConfiguration("4711", sfiForwardUnconditional, true, "100", 0, false))
        .WillOnce([this](auto&&...) {
            service_.note("forward");
            return sfiSuccess;
        });
    std::lock_guard const lock(calls_);
    features_->HandleButtonPressedEvent(7, PhysDefs::keyFunctionForwarding, PhysDefs::actionPressed);
    features_->flush();
    EXPECT_THAT(service_.takeNoted(), IsEmpty());

    ASSERT_TRUE(settings_->set("cfu-address", "100"));
    features_->HandleButtonPressedEvent(7, PhysDefs::keyFunctionForwarding, PhysDefs::actionPressed);
    features_->HandleButtonPressedEvent(7, PhysDefs::keyFunctionForwarding, PhysDefs::actionReleased);
    features_->flush();
    EXPECT_THAT(service_.takeNoted(), ElementsAre("forward"));
}

TEST_F(TeamTest, ForwardingKey_WithADestinationOfItsOwn_UsesThat_AndSwitchesOffAgain)
{
    configuration_.keys[6].target = "103";
    buildTeam();
    EXPECT_CALL(service_, setForwardingConfiguration("4712", sfiForwardUnconditional, true, "103", 0, false))
        .WillOnce(Return(sfiSuccess));
    EXPECT_CALL(service_, setForwardingConfiguration("4712", sfiForwardUnconditional, false, "103", 0, false))
        .WillOnce(Return(sfiFailure));
    ASSERT_TRUE(keyset_->changeMultiUser("4712"));
    features_->HandleButtonPressedEvent(7, PhysDefs::keyFunctionForwarding, PhysDefs::actionPressed);
    features_->flush();
    ASSERT_TRUE(settings_->set("cfu-activated", "true"));
    features_->HandleButtonPressedEvent(7, PhysDefs::keyFunctionForwarding, PhysDefs::actionPressed);
    features_->flush();
}

TEST_F(TeamTest, DoNotDisturbKey_SwitchesTheServicesDoNotDisturb)
{
    buildTeam();
    testing::InSequence const order;
    EXPECT_CALL(service_, setDoNotDisturb("4711", true)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(service_, setDoNotDisturb("4711", false)).WillOnce(Return(sfiSuccess));
    features_->HandleButtonPressedEvent(6, PhysDefs::keyFunctionDoNotDisturb, PhysDefs::actionPressed);
    features_->flush();
    ASSERT_TRUE(settings_->set("call-dnd-activated", "true"));
    features_->HandleButtonPressedEvent(6, PhysDefs::keyFunctionDoNotDisturb, PhysDefs::actionPressed);
    features_->flush();
}

TEST_F(TeamTest, BusyLampField_ShowsItsParty)
{
    buildTeam();
    std::lock_guard const lock(calls_);
    EXPECT_EQ(lamp("5"), "off");
    watch_.tell("103", PartyStatus::kRinging);
    EXPECT_EQ(lamp("5"), "flashing");
    watch_.tell("103", PartyStatus::kBusy);
    EXPECT_EQ(lamp("5"), "steady");
    watch_.tell("103", PartyStatus::kIdle);
    EXPECT_EQ(lamp("5"), "off");
    features_->setDNDStatusForBLF("sip:103@127.0.0.1", true);
    EXPECT_EQ(lamp("5"), "fluttering");
    features_->setDNDStatusForBLF("103", false);
    EXPECT_EQ(lamp("5"), "off");
    features_->setDNDStatusForBLF("104", true);
}

TEST_F(TeamTest, BusyLampField_CallsPicksUpConsultsAndTransfers)
{
    buildTeam();
    features_->blfKeyPressedFPK(5, false);
    {
        std::lock_guard const lock(calls_);
        watch_.tell("103", PartyStatus::kRinging);
    }
    features_->blfKeyPressedFPK(5, false);
    {
        std::lock_guard const lock(calls_);
        watch_.tell("103", PartyStatus::kIdle);
    }
    changeCall(1, 5, sfiCallStateConnected);
    features_->blfKeyPressedFPK(5, false);
    features_->blfKeyPressedFPK(5, true);
    features_->blfKeyPressedFPK(1, false);
    features_->blfKeyPressedFPK(99, false);

    EXPECT_THAT(calls_.takeAsked(),
                ElementsAre("make 4711 1001 103", "pickup 4711 1002 103", "consult 4711 1003 103", "transfer 5 103"));
}

TEST_F(TeamTest, BusyLampField_ThatOnlyShows_NeverActs)
{
    configuration_.keys[4].monitorOnly = true;
    buildTeam();
    features_->blfKeyPressedFPK(5, false);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(TeamTest, PickupRequests_NameTheCallAndItsLine)
{
    buildTeam();
    sfiCallInfo call{131, 0, 42, 3};
    std::string target = "102";
    EXPECT_EQ(pickup_->directedPickupRequest(&call, target), sfiSuccess);
    EXPECT_EQ(features_->BLFPickupRequest(&call, target), sfiSuccess);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("pickup 4713#3 42 102", "pickup 4713#3 42 102"));

    std::string empty;
    sfiCallInfo nowhere{0, 1, 42, 0};
    EXPECT_EQ(pickup_->directedPickupRequest(&call, empty), sfiFailure);
    EXPECT_EQ(pickup_->directedPickupRequest(nullptr, target), sfiFailure);
    EXPECT_EQ(features_->BLFPickupRequest(&nowhere, target), sfiFailure);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(TeamTest, ToggleKey_SwitchesItsFeatureAndLamp)
{
    buildTeam();
    toggles_->ftToggleKeyPressed(11);
    EXPECT_TRUE(settings_->flag("feature-toggle/11"));
    EXPECT_EQ(lamp("11"), "steady");
    toggles_->ftToggleKeyPressed(11);
    EXPECT_EQ(lamp("11"), "off");

    toggles_->ftToggleKeyPressed(1);
    toggles_->ftToggleKeyPressed(99);
    EXPECT_FALSE(settings_->flag("feature-toggle/1"));
    EXPECT_FALSE(settings_->flag("feature-toggle/99"));
}

TEST_F(TeamTest, FeatureActions_SwitchWhatTheKeysSwitch)
{
    buildTeam();
    EXPECT_CALL(service_, setDoNotDisturb("4711", true)).Times(2).WillRepeatedly(Return(sfiSuccess));
    EXPECT_CALL(service_, setForwardingConfiguration("4711", sfiForwardUnconditional, true, "100", 0, false))
        .WillOnce(Return(sfiSuccess));
    using namespace ZEBLocalFeaturesDefs;
    features_->processInvokeDOAction(58, 0, true, "");
    features_->processInvokeDOAction(43, 0, true, "100");
    features_->processInvokeDOAction(47, 11, true, "");
    features_->processInvokeDOAction(99, 0, true, "");
    features_->processInvokeDVAction(LF_NOTIFICATION_STATE_CHANGED, 58, 0, eActionToggle);
    features_->processInvokeDVAction(LF_NOTIFICATION_NONE, 58, 0, eActionNone);
    features_->flush();
    EXPECT_TRUE(settings_->flag("feature-toggle/11"));
    features_->processInvokeDVAction(LF_NOTIFICATION_NONE, 47, 11, eActionToggle);
    features_->flush();
    EXPECT_FALSE(settings_->flag("feature-toggle/11"));

    features_->callbackDOFeatureCallID("77", 3);
    EXPECT_EQ(features_->featureCall(3), "77");
    EXPECT_EQ(features_->featureCall(4), "");
}

TEST_F(TeamTest, AlternativeForwardingAndCockpit_AreKeptInTheStore)
{
    buildTeam();
    features_->HandleForwardingAlternative("105");
    EXPECT_EQ(settings_->text("forwarding-alternative"), "105");
    EXPECT_EQ(lamp("forwarding"), "steady");
    features_->HandleForwardingAlternative("");
    EXPECT_EQ(lamp("forwarding"), "off");

    auto* const cockpit = features_->getEACockpitHandler();
    EXPECT_EQ(cockpit->getEACockpitData("queue"), "");
    EXPECT_TRUE(cockpit->setEACockpitData("queue", "12 callers"));
    EXPECT_EQ(cockpit->getEACockpitData("queue"), "12 callers");
    EXPECT_EQ(settings_->text("agent-cockpit/queue"), "12 callers");
    EXPECT_FALSE(cockpit->setEACockpitData("", "x"));
    EXPECT_EQ(cockpit->getEACockpitData(""), "");
}

}  // namespace
}  // namespace telephone

#include "telephone/team/TeamFeatures.h"

#include <gmock/gmock.h>

#include "TeamFixture.h"
#include "platform/sfi/SfiTypes.h"
#include "telephone/sfi/SfiReaders.h"
#include "tests/helpers/LogFile.h"

namespace telephone {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

class TeamFeaturesTest : public TeamFixture
{};

TEST_F(TeamFeaturesTest, ForwardingKey_SwitchesTheServicesForwarding)
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

TEST_F(TeamFeaturesTest, ForwardingKey_WithItsOwnDestination_UsesIt_AndSwitchesOffAgain)
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

TEST_F(TeamFeaturesTest, DoNotDisturbKey_SwitchesTheServicesDoNotDisturb)
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

TEST_F(TeamFeaturesTest, BusyLampField_ShowsTheStateOfItsParty)
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

TEST_F(TeamFeaturesTest, BusyLampField_CallsPicksUpConsultsAndTransfers)
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

TEST_F(TeamFeaturesTest, MonitorOnlyBusyLampField_NeverActs)
{
    configuration_.keys[4].monitorOnly = true;
    buildTeam();
    features_->blfKeyPressedFPK(5, false);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(TeamFeaturesTest, PickupRequests_NameTheCallAndItsLine)
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

TEST_F(TeamFeaturesTest, ToggleKey_TogglesItsFeatureAndLamp)
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

TEST_F(TeamFeaturesTest, FeatureActions_SwitchTheSameFeaturesAsTheKeys)
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
}

TEST_F(TeamFeaturesTest, AlternativeForwardingAndCockpit_AreKeptInTheStore)
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

TEST_F(TeamFeaturesTest, FeatureActions_SwitchOnAndOff)
{
    buildTeam();
    using namespace ZEBLocalFeaturesDefs;
    auto const act = [this](int feature, int instance, eActionType action) {
        features_->processInvokeDVAction(LF_NOTIFICATION_NONE, feature, instance, action);
        features_->flush();
    };
    testing::InSequence const order;
    EXPECT_CALL(service_, setDoNotDisturb("4711", true)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(service_, setDoNotDisturb("4711", false)).WillOnce(Return(sfiSuccess));
    EXPECT_CALL(service_, setForwardingConfiguration("4711", sfiForwardUnconditional, false, "", 0, false))
        .WillOnce(Return(sfiSuccess));
    act(58, 0, eActionOn);
    act(58, 0, eActionOff);
    act(43, 0, eActionOff);
    act(47, 11, eActionOn);
    EXPECT_TRUE(settings_->flag("feature-toggle/11"));
    act(47, 11, eActionOff);
    EXPECT_FALSE(settings_->flag("feature-toggle/11"));
    act(47, 11, static_cast<eActionType>(99));
    EXPECT_FALSE(settings_->flag("feature-toggle/11"));
}

TEST_F(TeamFeaturesTest, MessagesKey_CallsTheMailbox)
{
    configuration_.server.voiceMail = "500";
    buildTeam();
    SfiReaders const readers{*settings_, configuration_, *table_};
    auto const press = [this] {
        features_->HandleButtonPressedEvent(8, PhysDefs::keyFunctionMessages, PhysDefs::actionPressed);
        features_->flush();
    };
    EXPECT_CALL(service_, outgoingCallMake("4712", 1001, testing::StrEq("500"), false, false, false))
        .WillOnce(Return(sfiSuccess));
    changeCall(1, 5, sfiCallStateConnected);

    press();
    configuration_.server.voiceMail.clear();
    press();
}

TEST_F(TeamFeaturesTest, KeysOfOtherFunctions_DoNothing)
{
    buildTeam();
    features_->HandleButtonPressedEvent(9, PhysDefs::keyFunctionHold, PhysDefs::actionPressed);
    features_->flush();

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
    EXPECT_THAT(service_.takeNoted(), IsEmpty());
}

TEST_F(TeamFeaturesTest, SecondActivation_WatchesNothingTwice)
{
    configuration_.keys[3].target = "102";
    buildTeam();

    features_->Activate();

    EXPECT_EQ(watch_.listeners["103"].size(), 1U);
    EXPECT_EQ(watch_.listeners["102"].size(), 1U);
}

TEST_F(TeamFeaturesTest, AfterTheEnd_NothingIsPushedAndNoKeyActs)
{
    test::LogFile const log;
    buildTeam("http://127.0.0.1:1/nobody");
    features_->stop();
    std::string url = "http://host/";
    std::string data = "data";

    features_->sendURLPushRequest(url, data);
    features_->HandleButtonPressedEvent(6, PhysDefs::keyFunctionDoNotDisturb, PhysDefs::actionPressed);

    EXPECT_NE(log.written().find("[team] push requests have stopped because the telephone is ending\n"),
              std::string::npos)
        << log.written();
    EXPECT_NE(log.written().find("[team] the team features have stopped because the telephone is ending\n"),
              std::string::npos)
        << log.written();
}

}  // namespace
}  // namespace telephone

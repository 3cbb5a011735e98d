// Do-not-disturb, agent state and the user of a keyset.
#include "PublicationTest.h"

namespace {

class SettingsTest : public PublicationTest
{
protected:
    void dndIsEnabled(bool enabled) { EXPECT_CALL(sfi_, GetDNDEnabled(Eq(true))).WillOnce(SetArgReferee<0>(enabled)); }

    void agentFeatureIsEnabled(bool enabled)
    {
        EXPECT_CALL(sfi_, GetAgentFeatureEnabled(Eq(true))).WillOnce(SetArgReferee<0>(enabled));
    }

    void lineHasNumber(std::string const& lineURI, int number)
    {
        EXPECT_CALL(lines_, getLine(lineURI)).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineID()).WillOnce(Return(static_cast<unsigned char>(number)));
    }
};

TEST_F(SettingsTest, SetDoNotDisturb_PublishesAndThenTellsThePlatform)
{
    keysetIsActive(false);
    for (bool const on : {true, false}) {
        InSequence order;
        dndIsEnabled(true);
        expectPublicationLockTaken();
        expectWritten("call-dnd-activated", on ? "true" : "false", -1);
        lineHasNumber("4711", 200);
        EXPECT_CALL(sfi_, SetDoNotDisturb(200, on)).WillOnce([this] {
            EXPECT_TRUE(isPublishing());
            return sfiFailure;
        });
        expectPublicationLockGiven();

        EXPECT_EQ(service_->setDoNotDisturb("4711", on), 5);

        EXPECT_FALSE(isPublishing());
    }

    EXPECT_EQ(log_.texts().front(), "5 setDoNotDisturb (4711, 1)");
}

TEST_F(SettingsTest, SetDoNotDisturb_OfAnUnknownLine_IsForThePhone)
{
    keysetIsActive(false);
    InSequence order;
    dndIsEnabled(true);
    expectPublicationLockTaken();
    expectWritten("call-dnd-activated", "true");
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    EXPECT_CALL(sfi_, SetDoNotDisturb(0, true));
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setDoNotDisturb("4799", true), 5);
}

TEST_F(SettingsTest, SetDoNotDisturb_ThatTheStoreRefuses_SucceedsWithoutThePlatform)
{
    keysetIsActive(false);
    InSequence order;
    dndIsEnabled(true);
    expectPublicationLockTaken();
    expectWritten("call-dnd-activated", "true", 0);
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setDoNotDisturb("4711", true), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setDoNotDisturb (4711, 1)"));
}

TEST_F(SettingsTest, SetDoNotDisturb_OnWhileDisabled_IsRefused)
{
    dndIsEnabled(false);

    EXPECT_EQ(service_->setDoNotDisturb("4711", true), 0);

    EXPECT_THAT(log_.texts(),
                ElementsAre("5 setDoNotDisturb (4711, 1)", "5 setDoNotDisturb can't set, call-dnd-enabled is false"));
}

TEST_F(SettingsTest, SetDoNotDisturb_OffWhileDisabled_IsAllowed)
{
    keysetIsActive(false);
    InSequence order;
    dndIsEnabled(false);
    expectPublicationLockTaken();
    expectWritten("call-dnd-activated", "false");
    lineHasNumber("4711", 3);
    EXPECT_CALL(sfi_, SetDoNotDisturb(3, false));
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setDoNotDisturb("4711", false), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 setDoNotDisturb (4711, 0)"));
}

TEST_F(SettingsTest, SetDoNotDisturb_OnAPlatformThatDoesNotSay_IsAllowed)
{
    keysetIsActive(false);
    EXPECT_CALL(sfi_, GetDNDEnabled(_));
    expectPublicationLockTaken();
    expectWritten("call-dnd-activated", "true", 0);
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setDoNotDisturb("4711", true), 5);
}

TEST_F(SettingsTest, SetDoNotDisturb_WithoutAStore_SucceedsUnpublished)
{
    withoutStore();
    keysetIsActive(false);
    dndIsEnabled(true);

    EXPECT_EQ(service_->setDoNotDisturb("4711", true), 5);
}

TEST_F(SettingsTest, SetDoNotDisturb_ForTheUserOfAKeyset_UpdatesTheLineThenPublishes)
{
    isMultiUserKeyset();
    InSequence order;
    dndIsEnabled(true);
    EXPECT_CALL(lines_, getLine("4711:2")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, setDNDConfiguration(true));
    expectPublicationLockTaken();
    expectWritten("call-dnd-activated", "true");
    lineHasNumber("4711:2", 3);
    EXPECT_CALL(sfi_, SetDoNotDisturb(3, true));
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setDoNotDisturb("4711:2", true), 5);
}

TEST_F(SettingsTest, SetDoNotDisturb_ForTheUserOfAKeysetWhoseLineIsMissing_PublishesAllTheSame)
{
    isMultiUserKeyset();
    EXPECT_CALL(lines_, getLine("4711")).WillRepeatedly(Return(nullptr));
    InSequence order;
    dndIsEnabled(true);
    expectPublicationLockTaken();
    expectWritten("call-dnd-activated", "true");
    EXPECT_CALL(sfi_, SetDoNotDisturb(0, true));
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setDoNotDisturb("4711", true), 5);
}

TEST_F(SettingsTest, SetDoNotDisturb_ForAnotherUserOfAKeyset_UpdatesTheLineOnly)
{
    isMultiUserKeyset();
    for (std::string const user : {"4712", "471", "47111"}) {
        dndIsEnabled(true);
        EXPECT_CALL(lines_, getLine(user)).WillOnce(Return(&line_));
        EXPECT_CALL(line_, setDNDConfiguration(true));

        EXPECT_EQ(service_->setDoNotDisturb(user, true), 5);
    }
}

TEST_F(SettingsTest, RemoveDND_EndsItForThePhoneWithoutTheStore)
{
    InSequence order;
    EXPECT_CALL(sfi_, GetDoNotDisturb(0, Eq(false))).WillOnce(DoAll(SetArgReferee<1>(true), Return(sfiFailure)));
    EXPECT_CALL(sfi_, SetDoNotDisturb(0, false));

    service_->removeDNDIfSet();

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(SettingsTest, RemoveDND_ThatIsNotSet_LeavesIt)
{
    EXPECT_CALL(sfi_, GetDoNotDisturb(0, Eq(false))).WillOnce(Return(sfiSuccess));

    service_->removeDNDIfSet();
}

TEST_F(SettingsTest, SetAgentState_PublishesEachStateAndThenTellsThePlatform)
{
    for (std::string const state : {"loggedOn", "loggedOff", "notReady", "ready", "workingAfterCall"}) {
        log_.clear();
        InSequence order;
        agentFeatureIsEnabled(true);
        expectPublicationLockTaken();
        expectWritten("agent-state", state, -1);
        lineHasNumber("4711", 200);
        EXPECT_CALL(sfi_, SetAgentState(200, state)).WillOnce([this] {
            EXPECT_TRUE(isPublishing());
            return sfiFailure;
        });
        expectPublicationLockGiven();

        EXPECT_EQ(service_->setAgentState("4711", state), 5);

        EXPECT_THAT(log_.texts(), ElementsAre("5 setAgentState(4711, " + state + ")"));
        EXPECT_FALSE(isPublishing());
    }
}

TEST_F(SettingsTest, SetAgentState_OfAnUnknownLine_IsForThePhone)
{
    InSequence order;
    agentFeatureIsEnabled(true);
    expectPublicationLockTaken();
    expectWritten("agent-state", "ready");
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    EXPECT_CALL(sfi_, SetAgentState(0, "ready"));
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setAgentState("4799", "ready"), 5);
}

TEST_F(SettingsTest, SetAgentState_ThatTheStoreRefuses_SucceedsWithoutThePlatform)
{
    InSequence order;
    agentFeatureIsEnabled(true);
    expectPublicationLockTaken();
    expectWritten("agent-state", "ready", 0);
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setAgentState("4711", "ready"), 5);
}

TEST_F(SettingsTest, SetAgentState_WhileDisabled_IsRefusedButForLoggingOff)
{
    for (std::string const state : {"loggedOn", "notReady", "ready", "workingAfterCall", "LoggedOff"}) {
        log_.clear();
        agentFeatureIsEnabled(false);

        EXPECT_EQ(service_->setAgentState("4711", state), 0);

        EXPECT_THAT(log_.texts(), ElementsAre("5 setAgentState(4711, " + state + ")",
                                              "5 setAgentState can't set, agent-feature-enabled is false"));
    }
}

TEST_F(SettingsTest, SetAgentState_LoggingOffWhileDisabled_IsAllowed)
{
    agentFeatureIsEnabled(false);
    InSequence order;
    expectPublicationLockTaken();
    expectWritten("agent-state", "loggedOff", 0);
    expectPublicationLockGiven();

    EXPECT_EQ(service_->setAgentState("4711", "loggedOff"), 5);
}

TEST_F(SettingsTest, SetAgentState_OfAnyOtherText_IsInvalid)
{
    for (std::string const state : {"", "Ready", "READY", "ready ", "busy", "workingaftercall"}) {
        log_.clear();
        agentFeatureIsEnabled(true);

        EXPECT_EQ(service_->setAgentState("4711", state), 0);

        EXPECT_THAT(log_.texts(), ElementsAre("5 setAgentState(4711, " + state + ")", "5 setAgentState invalid state"));
    }
}

TEST_F(SettingsTest, SetAgentState_WithoutAStore_SucceedsUnpublishedButRefusesAllTheSame)
{
    withoutStore();
    agentFeatureIsEnabled(true);
    EXPECT_EQ(service_->setAgentState("4711", "ready"), 5);

    agentFeatureIsEnabled(true);
    EXPECT_EQ(service_->setAgentState("4711", "busy"), 0);
}

class MultiUserTest : public SettingsTest
{
protected:
    void SetUp() override
    {
        SettingsTest::SetUp();
        ON_CALL(clientUtils_, splitMCADeviceIndex("4711:2", _, _)).WillByDefault(SetArgReferee<1>("4711"));
        ON_CALL(configuration_, serverBasedFeaturesEnabled()).WillByDefault(Return(true));
    }

    void expectUserChanged(bool changed) { EXPECT_CALL(keyset_, changeMultiUser("4711:2")).WillOnce(Return(changed)); }

    void expectPublication(std::function<void()> const& writes)
    {
        EXPECT_CALL(sfi_, setCFChangesPending(true));
        expectPublicationLockTaken();
        writes();
        expectPublicationLockGiven();
        EXPECT_CALL(sfi_, setCFChangesPending(false));
    }

    void expectStored(std::string const& key, std::string const& value)
    {
        EXPECT_CALL(localMgmt_, setManageableData(HoldsOnly(key, value))).WillOnce(Return(1));
    }

    static void nothing() {}
};

TEST_F(MultiUserTest, Change_ThatTheKeysetRefuses_EndsThere)
{
    expectUserChanged(false);

    service_->changeMultiUser("4711:2");

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(MultiUserTest, Change_ToAUserWithoutLine_PublishesNothing)
{
    expectUserChanged(true);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(nullptr));

    service_->changeMultiUser("4711:2");
}

TEST_F(MultiUserTest, Change_WithoutServerBasedFeatures_PublishesNothing)
{
    ON_CALL(configuration_, serverBasedFeaturesEnabled()).WillByDefault(Return(false));
    expectUserChanged(true);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));

    service_->changeMultiUser("4711:2");
}

TEST_F(MultiUserTest, Change_ToAUserWithoutRules_PublishesEveryRuleAsOff)
{
    auto& c = configuration_;
    ON_CALL(c, unconditionalEnable()).WillByDefault(Return(1));
    ON_CALL(c, unconditionalUri()).WillByDefault(Return("4712"));
    ON_CALL(c, noReplyTime()).WillByDefault(Return(4));
    ON_CALL(c, noReplyIntEnable()).WillByDefault(Return(1));
    InSequence order;
    expectUserChanged(true);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, getServerFeaturesSettings(_));
    expectPublication([this] {
        expectStored("cfu-address", "");
        expectStored("cfu-activated", "false");
    });
    for (int type = 1; type <= 5; ++type) {
        expectPublication(nothing);
    }
    expectPublication([this] { expectStored("cfnr-delay", "0"); });
    expectPublication(nothing);
    expectPublication([this] { expectStored("cfnr-int-activated", "false"); });
    expectPublication([this] { EXPECT_CALL(features_, HandleForwardingAlternative("")); });
    expectPublicationLockTaken();
    expectStored("call-dnd-activated", "false");
    lineHasNumber("4711", 3);
    EXPECT_CALL(sfi_, SetDoNotDisturb(3, false));
    expectPublicationLockGiven();

    service_->changeMultiUser("4711:2");
}

TEST_F(MultiUserTest, Change_ToAUserWithRules_PublishesThem)
{
    InSequence order;
    expectUserChanged(true);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, getServerFeaturesSettings(_)).WillOnce([](Line::serverFeaturesSettings& settings) {
        EXPECT_TRUE(settings.forwarding.empty());
        EXPECT_FALSE(settings.dnd);
        settings.forwarding[sfiForwardUnconditional] = {true, "4712", 9};
        settings.forwarding[sfiForwardNoReply] = {false, "4713", 6};
        settings.forwarding[sfiForwardAlternative] = {true, "4714", 0};
        settings.dnd = true;
    });
    expectPublication([this] {
        expectStored("cfu-address", "4712");
        expectStored("cfu-activated", "true");
    });
    for (int type = 1; type <= 5; ++type) {
        expectPublication(nothing);
    }
    expectPublication([this] {
        expectStored("cfnr-address", "4713");
        expectStored("cfnr-delay", "6");
    });
    expectPublication(nothing);
    expectPublication(nothing);
    expectPublication([this] { EXPECT_CALL(features_, HandleForwardingAlternative("4714")); });
    expectPublicationLockTaken();
    expectStored("call-dnd-activated", "true");
    lineHasNumber("4711", 3);
    EXPECT_CALL(sfi_, SetDoNotDisturb(3, true));
    expectPublicationLockGiven();

    service_->changeMultiUser("4711:2");
}

}  // namespace

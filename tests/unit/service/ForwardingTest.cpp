// Call forwarding: reading, setting and publishing a rule, and clearing all rules.
#include "PublicationTest.h"

namespace {

class ForwardingTest : public PublicationTest
{
protected:
    void expectPending(bool pending) { EXPECT_CALL(sfi_, setCFChangesPending(pending)); }

    void expectPublicationStarts()
    {
        expectPending(true);
        expectPublicationLockTaken();
    }

    void expectPublicationEnds()
    {
        expectPublicationLockGiven();
        expectPending(false);
    }

    void publish(int type, bool on, std::string const& destination, int ringCount, bool force)
    {
        service_->publishForwardingConfigurationViaQORA(static_cast<sfiForwardingType>(type), on, destination,
                                                        ringCount, force);
    }

    sfiResult set(std::string const& lineURI, bool on, std::string const& destination, bool force = false)
    {
        return service_->setForwardingConfiguration(lineURI, sfiForwardBusy, on, destination, 3, force);
    }
};

class RuleTest : public ForwardingTest, public testing::WithParamInterface<int>
{
protected:
    // The platform's rule of the type under test is on, to "old"; every other rule is off, to "other".
    void platformHas(int enable, std::string const& uri)
    {
        int const type = GetParam();
        auto& c = configuration_;
        ON_CALL(c, unconditionalEnable()).WillByDefault(Return(type == 0 ? enable : 0));
        ON_CALL(c, unconditionalExtEnable()).WillByDefault(Return(type == 1 ? enable : 0));
        ON_CALL(c, unconditionalIntEnable()).WillByDefault(Return(type == 2 ? enable : 0));
        ON_CALL(c, busyEnable()).WillByDefault(Return(type == 3 ? enable : 0));
        ON_CALL(c, busyExtEnable()).WillByDefault(Return(type == 4 ? enable : 0));
        ON_CALL(c, busyIntEnable()).WillByDefault(Return(type == 5 ? enable : 0));
        ON_CALL(c, noReplyEnable()).WillByDefault(Return(type == 6 ? enable : 0));
        ON_CALL(c, noReplyExtEnable()).WillByDefault(Return(type == 7 ? enable : 0));
        ON_CALL(c, noReplyIntEnable()).WillByDefault(Return(type == 8 ? enable : 0));
        ON_CALL(c, unconditionalUri()).WillByDefault(Return(type == 0 ? uri : "other"));
        ON_CALL(c, unconditionalExtUri()).WillByDefault(Return(type == 1 ? uri : "other"));
        ON_CALL(c, unconditionalIntUri()).WillByDefault(Return(type == 2 ? uri : "other"));
        ON_CALL(c, busyUri()).WillByDefault(Return(type == 3 ? uri : "other"));
        ON_CALL(c, busyExtUri()).WillByDefault(Return(type == 4 ? uri : "other"));
        ON_CALL(c, busyIntUri()).WillByDefault(Return(type == 5 ? uri : "other"));
        ON_CALL(c, noReplyUri()).WillByDefault(Return(type == 6 ? uri : "other"));
        ON_CALL(c, noReplyExtUri()).WillByDefault(Return(type == 7 ? uri : "other"));
        ON_CALL(c, noReplyIntUri()).WillByDefault(Return(type == 8 ? uri : "other"));
        ON_CALL(c, noReplyTime()).WillByDefault(Return(4));
    }

    static std::string activationKey()
    {
        std::vector<std::string> const keys{
            "cfu-activated",     "cfu-ext-activated", "cfu-int-activated",  "cfb-activated",      "cfb-ext-activated",
            "cfb-int-activated", "cfnr-activated",    "cfnr-ext-activated", "cfnr-int-activated",
        };
        return keys.at(static_cast<std::size_t>(GetParam()));
    }

    static std::string addressKey()
    {
        std::vector<std::string> const keys{
            "cfu-address",     "cfu-ext-address", "cfu-int-address",  "cfb-address",      "cfb-ext-address",
            "cfb-int-address", "cfnr-address",    "cfnr-ext-address", "cfnr-int-address",
        };
        return keys.at(static_cast<std::size_t>(GetParam()));
    }
};

INSTANTIATE_TEST_SUITE_P(EveryType, RuleTest, testing::Range(0, 9));

TEST_P(RuleTest, Publish_WhatIsInForce_WritesNothing)
{
    platformHas(1, "old");
    InSequence order;
    expectPublicationStarts();
    expectPublicationEnds();

    publish(GetParam(), true, "old", 4, false);

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_P(RuleTest, Publish_AnotherDestination_WritesTheAddressAlone)
{
    platformHas(1, "old");
    InSequence order;
    expectPublicationStarts();
    expectWritten(addressKey(), "new");
    expectPublicationEnds();

    publish(GetParam(), true, "new", 4, false);

    EXPECT_FALSE(isPublishing());
}

TEST_P(RuleTest, Publish_SwitchingOff_WritesTheActivationAlone)
{
    platformHas(7, "old");
    InSequence order;
    expectPublicationStarts();
    expectWritten(activationKey(), "false");
    expectPublicationEnds();

    publish(GetParam(), false, "old", 4, false);
}

TEST_P(RuleTest, Publish_SwitchingOn_WritesTheActivationAlone)
{
    platformHas(0, "old");
    InSequence order;
    expectPublicationStarts();
    expectWritten(activationKey(), "true");
    expectPublicationEnds();

    publish(GetParam(), true, "old", 4, false);
}

TEST_P(RuleTest, Publish_AnyEnableButZero_CountsAsOn)
{
    platformHas(-2, "old");
    InSequence order;
    expectPublicationStarts();
    expectPublicationEnds();

    publish(GetParam(), true, "old", 4, false);
}

TEST_P(RuleTest, Publish_AnotherRingCount_MattersToNoReplyOnly)
{
    platformHas(1, "old");
    InSequence order;
    expectPublicationStarts();
    if (GetParam() == 6) {
        expectWritten("cfnr-delay", "-5");
    }
    expectPublicationEnds();

    publish(GetParam(), true, "old", -5, false);
}

TEST_P(RuleTest, Publish_ByForce_WritesAddressActivationAndDelayInThisOrder)
{
    platformHas(1, "old");
    InSequence order;
    expectPublicationStarts();
    expectWritten(addressKey(), "old");
    expectWritten(activationKey(), "true");
    if (GetParam() == 6) {
        expectWritten("cfnr-delay", "4");
    }
    expectPublicationEnds();

    publish(GetParam(), true, "old", 4, true);

    EXPECT_FALSE(isPublishing());
}

TEST_P(RuleTest, Publish_WhatTheStoreRefuses_DoesNotStopTheRest)
{
    platformHas(1, "old");
    InSequence order;
    expectPublicationStarts();
    expectWritten(addressKey(), "new", 0);
    expectWritten(activationKey(), "false", 0);
    if (GetParam() == 6) {
        expectWritten("cfnr-delay", "12", 0);
    }
    expectPublicationEnds();

    publish(GetParam(), false, "new", 12, false);
}

TEST_P(RuleTest, Get_ReadsTheRuleInForce)
{
    platformHas(3, "sip:4712");
    EXPECT_CALL(configuration_, builtInForwardingEnabled()).WillOnce(Return(true));
    bool on = false;
    std::string destination = "before";
    int ringCount = 99;

    EXPECT_EQ(
        service_->getForwardingConfiguration(static_cast<sfiForwardingType>(GetParam()), on, destination, ringCount),
        5);

    EXPECT_TRUE(on);
    EXPECT_EQ(destination, "sip:4712");
    EXPECT_EQ(ringCount, GetParam() == 6 ? 4 : 99);
    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_P(RuleTest, Get_OfARuleThatIsOff_SaysSo)
{
    platformHas(0, "");
    bool on = true;
    std::string destination = "before";
    int ringCount = 99;

    EXPECT_EQ(
        service_->getForwardingConfiguration(static_cast<sfiForwardingType>(GetParam()), on, destination, ringCount),
        5);

    EXPECT_FALSE(on);
    EXPECT_EQ(destination, "");
}

TEST_F(ForwardingTest, Get_OfATypeWithoutRule_IsLoggedAndTouchesNoOutput)
{
    for (int const type : {9, 10, -1}) {
        log_.clear();
        EXPECT_CALL(configuration_, builtInForwardingEnabled()).WillOnce(Return(true));
        bool on = true;
        std::string destination = "before";
        int ringCount = 99;

        EXPECT_EQ(
            service_->getForwardingConfiguration(static_cast<sfiForwardingType>(type), on, destination, ringCount), 0);

        EXPECT_TRUE(on);
        EXPECT_EQ(destination, "before");
        EXPECT_EQ(ringCount, 99);
        EXPECT_THAT(log_.texts(), ElementsAre("2 getForwardingConfiguration - unhandled forwarding type (" +
                                              std::to_string(type) + ")"));
    }
}

TEST_F(ForwardingTest, Publish_TheAlternative_IsForTheTeamFeatures)
{
    InSequence order;
    expectPublicationStarts();
    EXPECT_CALL(features_, HandleForwardingAlternative("4712")).WillOnce([this](auto const&) {
        EXPECT_TRUE(isPublishing());
    });
    expectPublicationEnds();

    publish(9, true, "4712", 4, true);

    EXPECT_FALSE(isPublishing());
}

TEST_F(ForwardingTest, Publish_AnUnknownType_IsLoggedAndGivesEverythingBack)
{
    for (int const type : {10, -1}) {
        log_.clear();
        listenToLog();
        InSequence order;
        expectPublicationStarts();
        EXPECT_CALL(logListener_, written(2, "publishForwardingConfigurationViaQORA - unhandled forwarding type (" +
                                                 std::to_string(type) + ")"));
        expectPublicationEnds();

        publish(type, true, "4712", 4, true);
        log_.setListener(nullptr);

        EXPECT_FALSE(isPublishing());
    }
}

TEST_F(ForwardingTest, Publish_WithoutAStore_OnlyRaisesAndClearsTheNotice)
{
    withoutStore();
    InSequence order;
    expectPending(true);
    expectPending(false);

    publish(9, true, "4712", 4, true);
}

TEST_F(ForwardingTest, Set_WithoutAStore_IsRefusedAfterItsLine)
{
    withoutStore();
    ON_CALL(configuration_, cfPrivacyMode()).WillByDefault(Return(1));

    EXPECT_EQ(set("4711", false, "4712", true), 0);

    EXPECT_THAT(log_.texts(), ElementsAre("6 setForwardingConfiguration: line(4711), type(3), status(0), "
                                          "destination(4712), cfnrRingCount(3), forceQORAUpdate(1), privacy(1)"));
}

TEST_F(ForwardingTest, Set_WithoutActiveKeyset_PublishesTheRule)
{
    keysetIsActive(false);
    InSequence order;
    expectPublicationStarts();
    expectWritten("cfb-address", "4712");
    expectWritten("cfb-activated", "true");
    expectPublicationEnds();

    EXPECT_EQ(set("4711", true, "4712"), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("6 setForwardingConfiguration: line(4711), type(3), status(1), "
                                          "destination(4712), cfnrRingCount(3), forceQORAUpdate(0), privacy(0)"));
}

TEST_F(ForwardingTest, Set_OffWithPrivacy_PublishesAnEmptyAddress)
{
    keysetIsActive(false);
    ON_CALL(configuration_, cfPrivacyMode()).WillByDefault(Return(2));
    InSequence order;
    expectPublicationStarts();
    expectWritten("cfb-address", "");
    expectWritten("cfb-activated", "false");
    expectPublicationEnds();

    EXPECT_EQ(set("4711", false, "4712", true), 5);
}

TEST_F(ForwardingTest, Set_OnWithPrivacyOrOffWithout_KeepsTheDestination)
{
    keysetIsActive(false);
    for (bool const on : {true, false}) {
        ON_CALL(configuration_, cfPrivacyMode()).WillByDefault(Return(on ? 1 : 0));
        InSequence order;
        expectPublicationStarts();
        expectWritten("cfb-address", "4712");
        expectWritten("cfb-activated", on ? "true" : "false");
        expectPublicationEnds();

        EXPECT_EQ(set("4711", on, "4712", true), 5);
    }
}

TEST_F(ForwardingTest, Set_NoReply_PublishesTheRingCountOfTheCaller)
{
    keysetIsActive(false);
    ON_CALL(configuration_, noReplyTime()).WillByDefault(Return(2));
    ON_CALL(configuration_, noReplyUri()).WillByDefault(Return("4712"));
    ON_CALL(configuration_, noReplyEnable()).WillByDefault(Return(1));
    InSequence order;
    expectPublicationStarts();
    expectWritten("cfnr-delay", "5");
    expectPublicationEnds();

    EXPECT_EQ(service_->setForwardingConfiguration("4711", sfiForwardNoReply, true, "4712", 5, false), 5);
}

TEST_F(ForwardingTest, Set_ForTheUserOfAKeyset_UpdatesTheLineThenPublishes)
{
    isMultiUserKeyset();
    InSequence order;
    EXPECT_CALL(lines_, getLine("4711:2")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, setForwardingConfiguration(sfiForwardBusy, true, "4712", 3));
    expectPublicationStarts();
    expectWritten("cfb-address", "4712");
    expectWritten("cfb-activated", "true");
    expectPublicationEnds();

    EXPECT_EQ(set("4711:2", true, "4712"), 5);
}

TEST_F(ForwardingTest, Set_ForTheUserOfAKeysetWhoseLineIsMissing_PublishesAllTheSame)
{
    isMultiUserKeyset();
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(nullptr));
    InSequence order;
    expectPublicationStarts();
    expectWritten("cfb-address", "4712");
    expectWritten("cfb-activated", "true");
    expectPublicationEnds();

    EXPECT_EQ(set("4711", true, "4712"), 5);
}

TEST_F(ForwardingTest, Set_ForAnotherUserOfAKeyset_UpdatesTheLineOnly)
{
    isMultiUserKeyset();
    ON_CALL(configuration_, cfPrivacyMode()).WillByDefault(Return(1));
    for (std::string const user : {"4712", "471", "47111", ""}) {
        EXPECT_CALL(lines_, getLine(user)).WillOnce(Return(&line_));
        EXPECT_CALL(line_, setForwardingConfiguration(sfiForwardBusy, false, "", 3));

        EXPECT_EQ(set(user, false, "4713", true), 5);
    }
}

TEST_F(ForwardingTest, Set_WithTheDetailOff_WritesNoLine)
{
    log_.setLevel(5);
    keysetIsActive(false);
    ON_CALL(configuration_, busyUri()).WillByDefault(Return("4712"));
    InSequence order;
    expectPublicationStarts();
    expectPublicationEnds();

    EXPECT_EQ(set("4711", false, "4712"), 5);

    EXPECT_THAT(log_.texts(), IsEmpty());
    EXPECT_THAT(log_.questions(), ElementsAre(testing::Pair("SIP Communications Service", 6)));
}

TEST_F(ForwardingTest, SetQORAValue_AnswersWhatTheStoreAnswers)
{
    EXPECT_CALL(localMgmt_, setManageableData(HoldsOnly("key", "value"))).WillOnce(Return(4));

    EXPECT_EQ(service_->setQORAValue("key", "value"), 4);
    EXPECT_EQ(service_->setQORAValue("", "value"), 0);

    withoutStore();
    EXPECT_EQ(service_->setQORAValue("key", "value"), 0);
}

TEST_F(ForwardingTest, Remove_SwitchesTheThreeBaseRulesOff)
{
    ON_CALL(configuration_, unconditionalEnable()).WillByDefault(Return(1));
    ON_CALL(configuration_, busyEnable()).WillByDefault(Return(1));
    ON_CALL(configuration_, noReplyEnable()).WillByDefault(Return(1));
    ON_CALL(configuration_, unconditionalExtEnable()).WillByDefault(Return(1));
    ON_CALL(configuration_, busyIntEnable()).WillByDefault(Return(1));
    InSequence order;
    expectPublicationStarts();
    expectWritten("cfu-activated", "false");
    expectWritten("cfb-activated", "false");
    expectWritten("cfnr-activated", "false");
    expectPublicationLockGiven();
    EXPECT_CALL(physical_, forwardingCleared()).WillOnce([this] { EXPECT_FALSE(isPublishing()); });
    expectPending(false);

    service_->removeForwardingIfSet();
}

TEST_F(ForwardingTest, Remove_LeavesARuleThatIsNotExactlyOn)
{
    ON_CALL(configuration_, unconditionalEnable()).WillByDefault(Return(2));
    ON_CALL(configuration_, busyEnable()).WillByDefault(Return(1));
    InSequence order;
    expectPublicationStarts();
    expectWritten("cfb-activated", "false");
    expectPublicationLockGiven();
    EXPECT_CALL(physical_, forwardingCleared());
    expectPending(false);

    service_->removeForwardingIfSet();
}

TEST_F(ForwardingTest, Remove_WithoutAStore_DoesNothing)
{
    withoutStore();

    service_->removeForwardingIfSet();
}

TEST_F(ForwardingTest, Remove_WithoutLamps_TellsNobodyThatItIsCleared)
{
    withoutStore();
    ON_CALL(context_, findExecutable("PhysicalInterfaceServiceIfc")).WillByDefault(Return(nullptr));
    initialise();
    InSequence order;
    expectPublicationStarts();
    expectPublicationEnds();

    service_->removeForwardingIfSet();
}

TEST_F(ForwardingTest, SetCFChangesPending_IsPassedOn)
{
    InSequence order;
    expectPending(true);
    expectPending(false);

    service_->setCFChangesPending(true);
    service_->setCFChangesPending(false);
}

TEST_F(ForwardingTest, APublicationThatFailsByException_GivesEverythingBack)
{
    InSequence order;
    expectPublicationStarts();
    EXPECT_CALL(localMgmt_, setManageableData(_)).WillOnce(testing::Throw(std::runtime_error("store lost")));
    expectPublicationEnds();

    EXPECT_THROW(publish(3, true, "4712", 4, true), std::runtime_error);

    EXPECT_FALSE(isPublishing());
}

}  // namespace

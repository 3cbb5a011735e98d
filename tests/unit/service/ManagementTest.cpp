// Management data: items that pass, items that the call server holds, and the items of the agent cockpit.
#include "ServiceTest.h"

namespace {

class ManagementTest : public ServiceTest
{
protected:
    void SetUp() override { initialise(); }

    static ManageableData dataOf(std::vector<std::pair<std::string, std::string>> const& items)
    {
        ManageableData data;
        for (auto const& [id, value] : items) {
            DataNode node;
            node.setValue(value.c_str());
            data.setRootId(id, nullptr);
            data.populate(id, node);
        }
        return data;
    }

    static std::vector<std::string> idsOf(ManageableData const& data)
    {
        DxlCollection rows;
        data.getRootIds(rows);
        std::vector<std::string> ids;
        for (std::size_t row = 0; row < rows.size(); ++row) {
            ids.push_back(rows.value(row, "rootId"));
        }
        return ids;
    }

    void serverHoldsFeatures(bool on)
    {
        ON_CALL(configuration_, serverBasedFeaturesEnabled()).WillByDefault(Return(on));
    }

    void withoutInit()
    {
        EXPECT_CALL(semaphores_, created(_, _, _)).Times(AnyNumber());
        service_ = std::make_unique<CommunicationsService>();
    }
};

TEST_F(ManagementTest, SetData_WithoutServerBasedFeatures_AppliesEverything)
{
    serverHoldsFeatures(false);
    auto data = dataOf({{"cfu-address", "4712"}, {"cfnr-delay", "3"}});
    EXPECT_CALL(sfi_, ApplyManageableData(Ref(data), false)).WillOnce(Return(-7));

    EXPECT_EQ(service_->setData(data), -7);

    EXPECT_THAT(idsOf(data), ElementsAre("cfu-address", "cfnr-delay"));
    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(ManagementTest, SetData_WithServerBasedFeatures_AppliesTheRest)
{
    serverHoldsFeatures(true);
    auto data = dataOf({{"cfu-address", "4712"}, {"cfu-ext-address", "4713"}});
    EXPECT_CALL(sfi_, ApplyManageableData(Ref(data), false)).WillOnce(Return(3));

    EXPECT_EQ(service_->setData(data), 3);

    EXPECT_THAT(idsOf(data), ElementsAre("cfu-ext-address"));
    EXPECT_THAT(log_.texts(),
                ElementsAre("2 failed to set data due to server based features being enabled cfu-address"));
}

TEST_F(ManagementTest, SetData_OfRefusedItemsOnly_AppliesNothing)
{
    serverHoldsFeatures(true);
    auto data = dataOf({{"cfu-address", "4712"}, {"call-dnd-activated", "true"}});

    EXPECT_EQ(service_->setData(data), 0);

    EXPECT_THAT(idsOf(data), IsEmpty());
    EXPECT_THAT(log_.texts(),
                ElementsAre("2 failed to set data due to server based features being enabled cfu-address",
                            "2 failed to set data due to server based features being enabled call-dnd-activated"));
}

TEST_F(ManagementTest, SetData_WithoutItems_IsRefusedOnlyByTheFilter)
{
    ManageableData none;
    serverHoldsFeatures(true);
    EXPECT_EQ(service_->setData(none), 0);

    serverHoldsFeatures(false);
    EXPECT_CALL(sfi_, ApplyManageableData(Ref(none), false)).WillOnce(Return(1));
    EXPECT_EQ(service_->setData(none), 1);
}

TEST_F(ManagementTest, SetData_ThatSwitchesTheModeOn_IsFilteredItself)
{
    serverHoldsFeatures(false);
    for (std::string const value : {"true", "False", "", "0"}) {
        log_.clear();
        auto data = dataOf({{"cfb-address", "4712"}, {"server-based-features", value}});
        EXPECT_CALL(sfi_, ApplyManageableData(Ref(data), false)).WillOnce(Return(1));

        EXPECT_EQ(service_->setData(data), 1);

        EXPECT_THAT(idsOf(data), ElementsAre("server-based-features"));
        EXPECT_THAT(log_.texts(),
                    ElementsAre("5 received server-based-features=" + value + ":",
                                "2 failed to set data due to server based features being enabled cfb-address"));
    }
}

TEST_F(ManagementTest, SetData_ThatSwitchesTheModeOff_IsStillFiltered)
{
    serverHoldsFeatures(true);
    auto data = dataOf({{"server-based-features", "false"}, {"cfb-address", "4712"}});
    EXPECT_CALL(sfi_, ApplyManageableData(Ref(data), false)).WillOnce(Return(1));

    EXPECT_EQ(service_->setData(data), 1);

    EXPECT_THAT(idsOf(data), ElementsAre("server-based-features"));
}

TEST_F(ManagementTest, SetData_ThatKeepsTheModeOff_IsNotFiltered)
{
    serverHoldsFeatures(false);
    auto data = dataOf({{"server-based-features", "false"}, {"cfb-address", "4712"}});
    EXPECT_CALL(sfi_, ApplyManageableData(Ref(data), false)).WillOnce(Return(1));

    EXPECT_EQ(service_->setData(data), 1);

    EXPECT_THAT(idsOf(data), ElementsAre("server-based-features", "cfb-address"));
    EXPECT_THAT(log_.texts(), ElementsAre("5 received server-based-features=false:"));
}

TEST_F(ManagementTest, TheMode_IsTakenFromItsExactItemOnly)
{
    serverHoldsFeatures(false);
    auto data = dataOf({{"server-based-feature", "true"}, {"Server-based-features", "true"}});

    EXPECT_FALSE(service_->extractNewValueForServerBasedFeatures(data));

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(ManagementTest, TheItemsThatTheServerHolds_AreTheseSeven)
{
    for (auto const* const id : {"call-dnd-activated", "cfu-activated", "cfu-address", "cfb-activated", "cfb-address",
                                 "cfnr-activated", "cfnr-address"}) {
        EXPECT_FALSE(service_->isValidWhilstServerBasedFeaturesEnabled(id)) << id;
    }
}

TEST_F(ManagementTest, EveryOtherItem_MayBeSet)
{
    for (auto const* const id :
         {"cfu-ext-activated", "cfu-int-activated", "cfb-ext-address", "cfb-int-address", "cfnr-ext-activated",
          "cfnr-int-address", "server-based-features", "agent-state", "CFU-address", "cfu-address ", "cfu", ""}) {
        EXPECT_TRUE(service_->isValidWhilstServerBasedFeaturesEnabled(id)) << id;
    }
}

TEST_F(ManagementTest, TheNoReplyDelay_MayBeSetWithServerTypeTwoOnly)
{
    for (int const server : {0, 1, 2, 3, 7}) {
        ON_CALL(configuration_, serverType()).WillByDefault(Return(server));

        EXPECT_EQ(service_->isValidWhilstServerBasedFeaturesEnabled("cfnr-delay"), server == 2);
    }
}

TEST_F(ManagementTest, ExtractInvalidDataItems_SaysWhetherAnythingStayed)
{
    auto some = dataOf({{"cfu-activated", "true"}, {"ring", "1"}, {"cfb-activated", "true"}, {"volume", "2"}});
    auto none = dataOf({{"cfnr-activated", "true"}});

    EXPECT_TRUE(service_->extractInvalidDataItems(some));
    EXPECT_FALSE(service_->extractInvalidDataItems(none));

    EXPECT_THAT(idsOf(some), ElementsAre("ring", "volume"));
    EXPECT_THAT(idsOf(none), IsEmpty());
}

TEST_F(ManagementTest, SetCentralisedFeatureData_OnlyFiltersInServerBasedMode)
{
    auto data = dataOf({{"cfnr-activated", "true"}});
    serverHoldsFeatures(false);
    EXPECT_TRUE(service_->setCentralisedFeatureData(data));
    EXPECT_THAT(idsOf(data), ElementsAre("cfnr-activated"));

    serverHoldsFeatures(true);
    EXPECT_FALSE(service_->setCentralisedFeatureData(data));
    EXPECT_THAT(idsOf(data), IsEmpty());
}

TEST_F(ManagementTest, GetData_IsWhatTheConfigurationManagerAnswers)
{
    ManageableData data;
    EXPECT_CALL(sipConfig_, getData(Ref(data))).WillOnce(Return(9));

    EXPECT_EQ(service_->getData(data), 9);

    withoutInit();
    EXPECT_EQ(service_->getData(data), 0);
}

TEST_F(ManagementTest, ResetUserData_IsForTheConfigurationManager)
{
    EXPECT_CALL(sipConfig_, resetUserData());

    service_->resetUserData();

    withoutInit();
    service_->resetUserData();
}

TEST_F(ManagementTest, ManageableDataChanged_GoesToCallControlThenToRecording)
{
    auto data = dataOf({{"cfu-address", "4712"}});
    serverHoldsFeatures(true);
    InSequence order;
    EXPECT_CALL(sfi_, ApplyManageableData(Ref(data), true)).WillOnce(Return(0));
    EXPECT_CALL(recording_, dataChangedEvent(Ref(data)));

    service_->manageableDataChanged(data);

    EXPECT_THAT(idsOf(data), ElementsAre("cfu-address"));
    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(ManagementTest, ManageableDataChanged_BeforeInit_StartsTheRecordingService)
{
    withoutInit();
    ManageableData data;
    InSequence order;
    EXPECT_CALL(recording_, init(_, _, _));
    EXPECT_CALL(recording_, dataChangedEvent(Ref(data)));

    service_->manageableDataChanged(data);
}

TEST_F(ManagementTest, GetEACockpitData_IsWhatTheCockpitAnswers)
{
    StrictMock<MockEACockpitHandler> cockpit;
    EXPECT_CALL(features_, getEACockpitHandler()).WillRepeatedly(Return(&cockpit));
    EXPECT_CALL(cockpit, getEACockpitData("calls")).WillOnce(Return("3"));
    EXPECT_CALL(cockpit, getEACockpitData("nothing")).WillOnce(Return(""));

    EXPECT_EQ(service_->getEACockpitData("calls"), "3");
    EXPECT_EQ(service_->getEACockpitData("nothing"), "??");

    EXPECT_THAT(log_.texts(), ElementsAre("5 getEACockpitData('calls')='3'", "5 getEACockpitData('nothing')=''"));
}

TEST_F(ManagementTest, GetEACockpitData_WithoutACockpit_IsUnknown)
{
    EXPECT_CALL(features_, getEACockpitHandler()).WillRepeatedly(Return(nullptr));

    EXPECT_EQ(service_->getEACockpitData("calls"), "??");

    EXPECT_THAT(log_.texts(), ElementsAre("5 getEACockpitData('calls')=''"));
}

TEST_F(ManagementTest, SetEACockpitData_IsWhatTheCockpitAnswers)
{
    StrictMock<MockEACockpitHandler> cockpit;
    EXPECT_CALL(features_, getEACockpitHandler()).WillRepeatedly(Return(&cockpit));
    EXPECT_CALL(cockpit, setEACockpitData("calls", "3")).WillOnce(Return(true)).WillOnce(Return(false));

    EXPECT_TRUE(service_->setEACockpitData("calls", "3"));
    EXPECT_FALSE(service_->setEACockpitData("calls", "3"));

    EXPECT_THAT(log_.texts(), ElementsAre("5 setEACockpitData(item='calls', value='3')='true'",
                                          "5 setEACockpitData(item='calls', value='3')='false'"));
}

TEST_F(ManagementTest, SetEACockpitData_WithoutACockpit_IsRefused)
{
    EXPECT_CALL(features_, getEACockpitHandler()).WillRepeatedly(Return(nullptr));

    EXPECT_FALSE(service_->setEACockpitData("calls", "3"));

    EXPECT_THAT(log_.texts(), ElementsAre("5 setEACockpitData(item='calls', value='3')='false'"));
}

}  // namespace

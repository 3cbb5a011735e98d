// The store as the framework's services see it: management data, notices of changes, and the SIP configuration manager.
#include "telephone/management/LocalManagement.h"

#include <algorithm>
#include <filesystem>

#include "ManagementDoubles.h"
#include "StoreFixture.h"
#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/management/SIPConfigManager.h"
#include "telephone/framework/Refusals.h"

namespace telephone {
namespace {

using Items = std::vector<Settings::Item>;

// As the service does: filters the data and passes them to the call control, which stores them.
class FilteringAgent : public MgmtAgentIfc
{
public:
    explicit FilteringAgent(Settings& settings)
        : settings_(settings)
    {}

    int setData(ManageableData& data) override
    {
        for (auto refused : refusedIds) {
            data.removeRootId(refused);
        }
        handed = itemsOf(data);
        return handed.empty() || reportIfRefused("agent", settings_.setAll(handed)) ? 0 : 1;
    }
    int getData(ManageableData&) override { return 0; }
    void manageableDataChanged(ManageableData& data) override { notices.push_back(itemsOf(data)); }
    void resetUserData() override {}

    std::vector<std::string> refusedIds;
    Items handed;
    std::vector<Items> notices;

private:
    Settings& settings_;
};

class LocalManagementTest : public StoreFixture
{
protected:
    std::unique_ptr<Settings> const settings = open();
    LocalManagement management{*settings};
    FilteringAgent agent{*settings};
    ContextWith context{&management};
};

TEST_F(LocalManagementTest, AcceptedItem_IsStoredAndInForce)
{
    auto data = dataOf({{"cfu-address", "102"}});

    EXPECT_NE(management.setManageableData(data), 0);

    EXPECT_EQ(settings->text("cfu-address"), "102");
    EXPECT_EQ(open()->text("cfu-address"), "102");
}

TEST_F(LocalManagementTest, OneRefusedItem_StoresNone)
{
    auto data = dataOf({{"cfu-address", "102"}, {"cfu-activated", "maybe"}});

    EXPECT_EQ(management.setManageableData(data), 0);

    EXPECT_EQ(settings->text("cfu-address"), "");
}

TEST_F(LocalManagementTest, DataWithoutItems_IsRefused)
{
    ManageableData data;

    EXPECT_EQ(management.setManageableData(data), 0);
}

TEST_F(LocalManagementTest, AgentRegisteredForATag_ReceivesOnlyItsChanges)
{
    management.registerForTag(&agent, "forwarding");
    auto data = dataOf({{"cfu-address", "102"}, {"call-dnd-activated", "true"}});

    EXPECT_NE(management.setManageableData(data), 0);

    EXPECT_EQ(agent.notices, (std::vector<Items>{{{"cfu-address", "102"}}}));
}

TEST_F(LocalManagementTest, NullAgentOrTag_IsIgnored)
{
    management.registerForTag(nullptr, "forwarding");
    management.registerForTag(&agent, nullptr);
    auto data = dataOf({{"cfu-address", "102"}});

    EXPECT_NE(management.setManageableData(data), 0);

    EXPECT_TRUE(agent.notices.empty());
}

TEST_F(LocalManagementTest, ForgottenAgent_ReceivesNothing)
{
    management.registerForTag(&agent, "forwarding");
    management.forgetAgent(&agent);
    auto data = dataOf({{"cfu-address", "102"}});

    EXPECT_NE(management.setManageableData(data), 0);

    EXPECT_TRUE(agent.notices.empty());
}

TEST_F(LocalManagementTest, Shutdown_EndsAllNotices)
{
    management.registerForTag(&agent, "forwarding");
    management.shutdown();

    EXPECT_TRUE(settings->set("cfu-address", "102"));

    EXPECT_TRUE(agent.notices.empty());
}

TEST_F(LocalManagementTest, OfferedData_GoesThroughTheAgentIntoTheStore)
{
    SIPConfigManager const manager(&context, &agent);

    EXPECT_TRUE(management.offerManagementData({{"cfu-address", "102"}, {"cfu-activated", "true"}}));

    EXPECT_EQ(agent.handed, (Items{{"cfu-address", "102"}, {"cfu-activated", "true"}}));
    EXPECT_EQ(open()->text("cfu-address"), "102");
}

TEST_F(LocalManagementTest, OfferedData_LoseTheItemsThatTheAgentRemoves)
{
    SIPConfigManager const manager(&context, &agent);
    agent.refusedIds = {"cfu-address"};

    EXPECT_TRUE(management.offerManagementData({{"cfu-address", "102"}, {"cfu-ext-address", "103"}}));

    EXPECT_EQ(settings->text("cfu-address"), "");
    EXPECT_EQ(settings->text("cfu-ext-address"), "103");
}

TEST_F(LocalManagementTest, OfferedDataThatTheAgentRefuses_AreRefusedWithAReason)
{
    SIPConfigManager const manager(&context, &agent);
    agent.refusedIds = {"cfu-address"};

    EXPECT_EQ(management.offerManagementData({{"cfu-address", "102"}}).error().reason,
              "the service refused the data: the call server controls these settings");
}

TEST_F(LocalManagementTest, OfferedDataThatTheStoreRefuses_GetTheReasonOfTheStore)
{
    SIPConfigManager const manager(&context, &agent);
    std::filesystem::permissions(storePath(), std::filesystem::perms::owner_read);

    EXPECT_EQ(management.offerManagementData({{"cfu-address", "102"}}).error().reason,
              "the store \"" + storePath() + "\" is read-only: give this user the right to write it");
}

TEST_F(LocalManagementTest, WrongOfferedData_IsRefusedBeforeTheAgentSeesIt)
{
    SIPConfigManager const manager(&context, &agent);

    EXPECT_EQ(management.offerManagementData({}).error().reason, "the management data contain no items");
    EXPECT_EQ(management.offerManagementData({{"cfnr-delay", "x"}}).error().reason,
              "\"cfnr-delay\" takes a number from 0 to 99, not \"x\"");
    EXPECT_EQ(management.offerManagementData({{"server-type", "1"}}).error().reason, "\"server-type\" is read-only");
    EXPECT_TRUE(agent.handed.empty());
}

TEST_F(LocalManagementTest, OfferedDataWithoutAnAgent_IsRefused)
{
    {
        SIPConfigManager const manager(&context, &agent);
    }

    EXPECT_EQ(management.offerManagementData({{"cfu-address", "102"}}).error().reason,
              "no service takes management data: start the service first");
}

TEST_F(LocalManagementTest, ManagerAskedForItems_FillsInTheValuesInForce)
{
    SIPConfigManager manager(&context, &agent);
    EXPECT_TRUE(settings->set("cfu-address", "102"));
    auto data = dataOf({{"cfu-address", ""}, {"cfnr-delay", ""}, {"coffee", "strong"}});

    EXPECT_NE(manager.getData(data), 0);

    EXPECT_EQ(itemsOf(data), (Items{{"cfu-address", "102"}, {"cfnr-delay", "3"}, {"coffee", "strong"}}));
}

TEST_F(LocalManagementTest, ManagerAskedForNothing_FillsInEverything)
{
    SIPConfigManager manager(&context, &agent);
    ManageableData data;

    EXPECT_NE(manager.getData(data), 0);

    EXPECT_EQ(itemsOf(data), settings->all());
}

TEST_F(LocalManagementTest, ManagerAskedForUnknownItems_AnswersZero)
{
    SIPConfigManager manager(&context, &agent);
    auto data = dataOf({{"coffee", "strong"}});

    EXPECT_EQ(manager.getData(data), 0);
}

TEST_F(LocalManagementTest, ManagerReset_RestoresTheUserSettings)
{
    SIPConfigManager manager(&context, &agent);
    EXPECT_TRUE(settings->setAll({{"cfu-address", "102"}, {"call-dnd-enabled", "false"}}));

    manager.resetUserData();

    EXPECT_EQ(open()->text("cfu-address"), "");
    EXPECT_FALSE(open()->flag("call-dnd-enabled"));
}

TEST_F(LocalManagementTest, ManagerInitialised_TakesOverValuesOfOtherPrograms)
{
    SIPConfigManager manager(&context, &agent);
    EXPECT_TRUE(open()->set("cfu-address", "102"));

    manager.initialise(true);

    EXPECT_EQ(settings->text("cfu-address"), "102");
}

TEST(SIPConfigManagerAlone, WithoutAStore_AnswersZero)
{
    SvcRTEContext empty;
    for (auto* const context : {static_cast<SvcRTEContext*>(nullptr), &empty}) {
        SIPConfigManager manager(context, nullptr);
        ManageableData data;

        manager.initialise(true);
        manager.switchOnLampsForForwarding();
        manager.checkDhcpProxyAddr();
        manager.resetUserData();

        EXPECT_EQ(manager.getData(data), 0);
    }
}

}  // namespace
}  // namespace telephone

// Publication of settings to the configuration store: the writes, their order, and the state meanwhile.
#pragma once

#include "ServiceTest.h"

// Matches management data of exactly one item.
MATCHER_P2(HoldsOnly, key, value, "")
{
    DxlCollection ids;
    arg.getRootIds(ids);
    std::string found;
    arg.interogate(key, "", found);
    *result_listener << "holds " << ids.size() << " items, " << ids.value(0, "rootId") << " = " << found;
    return ids.size() == 1 && ids.value(0, "rootId") == key && found == value;
}

class PublicationTest : public ServiceTest
{
protected:
    void SetUp() override
    {
        initialise();
        EXPECT_CALL(sfi_, ApplyManageableData(_, false)).WillRepeatedly(Return(1));
    }

    // Expects one write at this point of the sequence, during which the service is publishing.
    void expectWritten(std::string const& key, std::string const& value, int answer = 1)
    {
        EXPECT_CALL(localMgmt_, setManageableData(HoldsOnly(key, value))).WillOnce([this, answer](auto&) {
            EXPECT_TRUE(isPublishing());
            return answer;
        });
    }

    // Observed from outside: while the service publishes, data that the call server holds passes its filter.
    bool isPublishing()
    {
        ON_CALL(configuration_, serverBasedFeaturesEnabled()).WillByDefault(Return(true));
        ManageableData data;
        data.setRootId("cfu-address", nullptr);
        bool const passed = service_->setData(data) == 1;
        ON_CALL(configuration_, serverBasedFeaturesEnabled()).WillByDefault(Return(false));
        return passed;
    }

    // An active keyset whose present user has line 4711; "4711:2" is an appearance of that line.
    void isMultiUserKeyset()
    {
        keysetIsActive(true);
        EXPECT_CALL(keyset_, getCurrentMultiUser()).WillRepeatedly(Return("4711"));
        ON_CALL(clientUtils_, splitMCADeviceIndex("4711:2", _, _)).WillByDefault(SetArgReferee<1>("4711"));
    }

    void withoutStore()
    {
        EXPECT_CALL(semaphores_, created(_, _, _)).Times(AnyNumber());
        service_ = std::make_unique<CommunicationsService>();
    }
};

#include "telephone/services/AuditoryDevice.h"

#include <gtest/gtest.h>

#include "telephone/framework/Log.h"
#include "tests/doubles/TemporaryFolder.h"

namespace telephone {
namespace {

class AuditoryDeviceTest : public testing::Test
{
protected:
    AuditoryDeviceTest() { EXPECT_TRUE(openLog(kLogInfo, folder_.file("log"))); }
    ~AuditoryDeviceTest() override { EXPECT_TRUE(openLog(kLogInfo, "")); }

    int timesLogged(std::string const& text) const
    {
        flushLog();
        auto const log = contentOf(folder_.file("log"));
        int times = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
            ++times;
        }
        return times;
    }

    TemporaryFolder folder_;
    AuditoryDevice device_;
};

TEST_F(AuditoryDeviceTest, Headset_IsLoggedWhenItChanges)
{
    device_.useHeadset(false);
    EXPECT_EQ(timesLogged("sound goes to"), 0);
    device_.useHeadset(true);
    device_.useHeadset(true);
    EXPECT_EQ(timesLogged("sound goes to the headset"), 1);
    device_.useHeadset(false);
    EXPECT_EQ(timesLogged("sound goes to the handset"), 1);
}

TEST_F(AuditoryDeviceTest, Ringing_IsLoggedWhenItChanges_AndEndsWithTheDevice)
{
    device_.setRinging(true);
    device_.setRinging(true);
    EXPECT_EQ(timesLogged("the telephone rings"), 1);
    device_.shutdown();
    device_.shutdown();
    EXPECT_EQ(timesLogged("the telephone is silent"), 1);
}

}  // namespace
}  // namespace telephone

#include "telephone/management/SettingListeners.h"

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

namespace telephone {
namespace {

using Keys = std::vector<std::string>;
using By = SettingListeners::By;

class SettingListenersTest : public testing::Test
{
protected:
    SettingListeners::Id listen(By by, std::string_view subject)
    {
        return listeners_.add(by, subject,
                              [this](Keys const& keys) { told_.insert(told_.end(), keys.begin(), keys.end()); });
    }
    Keys told() { return std::exchange(told_, {}); }

    SettingListeners listeners_;
    Keys told_;
};

TEST_F(SettingListenersTest, ListenerToAKey_HearsOfIt)
{
    listen(By::kKey, "cfu-address");

    listeners_.tell({"cfu-activated", "cfu-address", "cfu-address-2"});

    EXPECT_EQ(told(), Keys{"cfu-address"});
}

TEST_F(SettingListenersTest, ListenerToAFamily_HearsOfEachMember)
{
    listen(By::kKey, "line/4711/");

    listeners_.tell({"line/4711/dnd", "line/4712/dnd", "line/4711/cfu-address"});

    EXPECT_EQ(told(), (Keys{"line/4711/dnd", "line/4711/cfu-address"}));
}

TEST_F(SettingListenersTest, ListenerToATag_HearsOfItsSettings)
{
    listen(By::kTag, "recording");

    listeners_.tell({"recording", "recording-enabled", "no-such-setting", "cfu-address"});

    EXPECT_EQ(told(), Keys{"recording-enabled"});
}

TEST_F(SettingListenersTest, RemovedListener_HearsNothingAndKeepsNothing)
{
    auto const kept = std::make_shared<int>(0);
    std::weak_ptr<int> const held = kept;
    auto const id = listeners_.add(By::kKey, "cfu-address", [kept](Keys const&) { ++*kept; });
    EXPECT_EQ(held.use_count(), 2);

    listeners_.remove(id);
    listeners_.remove(id);
    listeners_.tell({"cfu-address"});

    EXPECT_EQ(*kept, 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(SettingListenersTest, ListenerThatFails_LeavesTheOthersTheirNews)
{
    listeners_.add(By::kKey, "cfu-address", [](Keys const&) { throw std::runtime_error("full"); });
    listen(By::kKey, "cfu-address");

    listeners_.tell({"cfu-address"});

    EXPECT_EQ(told(), Keys{"cfu-address"});
}

TEST_F(SettingListenersTest, ListenerThatEndsItself_DoesNotWaitForItself)
{
    SettingListeners::Id id = 0;
    int calls = 0;
    id = listeners_.add(By::kKey, "cfu-address", [&](Keys const&) {
        ++calls;
        listeners_.remove(id);
    });

    listeners_.tell({"cfu-address"});
    listeners_.tell({"cfu-address"});

    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace telephone

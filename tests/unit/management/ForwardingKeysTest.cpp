#include "telephone/management/ForwardingKeys.h"

#include "StoreFixture.h"

namespace telephone {
namespace {

class ForwardingKeysTest : public StoreFixture
{
protected:
    std::unique_ptr<Settings> const settings = open("");
};

TEST_F(ForwardingKeysTest, EachRule_IsFoundByItsType)
{
    EXPECT_EQ(findForwardingKeys(sfiForwardBusyInternal)->activated, "cfb-int-activated");
    EXPECT_EQ(findForwardingKeys(sfiForwardNoReply)->address, "cfnr-address");
    EXPECT_EQ(findForwardingKeys(sfiForwardAlternative), nullptr);
    EXPECT_EQ(findForwardingKeys(static_cast<sfiForwardingType>(-1)), nullptr);
}

TEST_F(ForwardingKeysTest, AnyActiveRule_ForwardsCalls)
{
    EXPECT_FALSE(isForwarding(*settings));
    for (auto const& rule : kForwardingKeys) {
        EXPECT_TRUE(settings->set(rule.activated, "true"));
        EXPECT_TRUE(isForwarding(*settings)) << rule.activated;
        EXPECT_TRUE(settings->set(rule.activated, "false"));
    }
    EXPECT_FALSE(isForwarding(*settings));
}

TEST_F(ForwardingKeysTest, AlternativeDestination_ForwardsCalls)
{
    EXPECT_TRUE(settings->set("forwarding-alternative", "102"));

    EXPECT_TRUE(isForwarding(*settings));
}

}  // namespace
}  // namespace telephone

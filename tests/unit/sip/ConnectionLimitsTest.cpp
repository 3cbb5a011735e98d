#include "telephone/sip/ConnectionLimits.h"

#include <gtest/gtest.h>

namespace telephone::sip {

namespace {

class ConnectionLimitsTest : public ::testing::Test
{
protected:
    // Whether a connection from that address is admitted; it stays open until open_ says otherwise.
    bool admits(char const* address)
    {
        sa peer{};
        sa_set_str(&peer, address, 5060);
        open_.push_back(std::make_shared<bool>(true));
        return limits_.admit(peer, [isOpen = open_.back()] { return *isOpen; });
    }
    void end(std::size_t index) { *open_.at(index) = false; }

    std::vector<std::shared_ptr<bool>> open_;
    std::vector<std::string> logged_;
    ConnectionLimits limits_{Limits{.connections = 3, .sourceConnections = 2},
                             [this](LogLevel, std::string const& line) { logged_.push_back(line); }};
};

}  // namespace

TEST_F(ConnectionLimitsTest, Source_HasItsShare)
{
    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_FALSE(admits("192.0.2.1"));
    EXPECT_TRUE(admits("192.0.2.2"));
}

TEST_F(ConnectionLimitsTest, AllSources_ShareTheTotal)
{
    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_TRUE(admits("192.0.2.2"));
    EXPECT_TRUE(admits("2001:db8::1"));
    EXPECT_FALSE(admits("192.0.2.3"));
}

TEST_F(ConnectionLimitsTest, EndedConnection_MakesRoom)
{
    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_TRUE(admits("192.0.2.1"));
    end(0);

    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_FALSE(admits("192.0.2.1"));
}

TEST_F(ConnectionLimitsTest, Refusals_AreLoggedOnceUntilOneIsAdmitted)
{
    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_TRUE(admits("192.0.2.1"));
    EXPECT_FALSE(admits("192.0.2.1"));
    EXPECT_FALSE(admits("192.0.2.1"));
    EXPECT_EQ(logged_, std::vector<std::string>{
                           "Connection from 192.0.2.1:5060 is refused: too many are open (limits.connections, "
                           "limits.connections-per-address)"});

    EXPECT_TRUE(admits("192.0.2.2"));
    EXPECT_FALSE(admits("192.0.2.1"));
    EXPECT_EQ(logged_.size(), 2U);
}

TEST_F(ConnectionLimitsTest, WithoutLimits_EveryConnectionIsAdmitted)
{
    ConnectionLimits none({}, {});
    sa peer{};
    sa_set_str(&peer, "192.0.2.1", 5060);

    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(none.admit(peer, [] { return true; }));
    }
}

}  // namespace telephone::sip

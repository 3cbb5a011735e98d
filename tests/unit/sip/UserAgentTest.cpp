#include "telephone/sip/UserAgent.h"

#include <stdexcept>

#include "LoopFixture.h"

namespace telephone::sip {

class UserAgentTest : public LoopFixture
{
protected:
    // "bound", or the reason of the refusal.
    std::string bind(UserAgentConfig const& config)
    {
        try {
            UserAgent agent(loop, config, observer_);
        } catch (std::runtime_error const& error) {
            return error.what();
        }
        return "bound";
    }

    UserAgentObserver observer_;
};

TEST_F(UserAgentTest, PortInUse_IsRefusedWithTheReason)
{
    UserAgent const first(loop, {}, observer_);
    UserAgentConfig config;
    config.udpPort = first.udpPort();

    EXPECT_EQ(bind(config), "UDP port " + std::to_string(config.udpPort) + " of 127.0.0.1: Address already in use");
}

TEST_F(UserAgentTest, AddressThatCannotBeUsed_IsRefusedWithTheReason)
{
    UserAgentConfig config;
    config.address = "here";
    EXPECT_EQ(bind(config), "\"here\" is neither an IP address nor a network interface of this machine");
    config.address = "0.0.0.0";
    EXPECT_EQ(bind(config), "the SIP address must be one of this machine's, not 0.0.0.0");
}

}  // namespace telephone::sip

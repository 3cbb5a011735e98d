// Sessions against SIPp's built-in scenarios.
#include <fstream>
#include <sstream>

#include "SipFixture.h"
#include "telephone/sip/StackTimers.h"
#include "tests/helpers/ChildProcess.h"

namespace telephone::test {

namespace {

class SippPeer : public ExchangeTest
{
protected:
    void startSipp(std::vector<std::string> arguments)
    {
        std::vector<std::string> const common{"-i",       "127.0.0.1", "-p", std::to_string(port_),
                                              "-nostdin", "-timeout",  "40", "-timeout_error"};
        arguments.insert(arguments.end(), common.begin(), common.end());
        sipp_.emplace("sipp", arguments, ::testing::TempDir());
    }
    // Starts SIPp as a server, and waits until it has bound its port.
    bool startServer(SipPeer& phone, std::vector<std::string> arguments)
    {
        startSipp(std::move(arguments));
        return phone.waitUntil([this] {
            std::ifstream table("/proc/net/udp");
            std::ostringstream wanted;
            wanted << "0100007F:" << std::hex << std::uppercase << port_;
            std::stringstream all;
            all << table.rdbuf();
            return all.str().find(wanted.str()) != std::string::npos;
        });
    }
    std::string server() const { return "sip:service@127.0.0.1:" + std::to_string(port_); }

    int const port_ = freeUdpPort();
    std::optional<ChildProcess> sipp_;
};

}  // namespace

TEST_F(SippPeer, HundredCallsOfItsClientToANumber_NoneFails)
{
    startSipp({"-sn", "uac", "-s", "100", "-m", "100", "-r", "50", "-d", "100", exchange.hostPort()});

    EXPECT_EQ(0, sipp_->wait(50s));
    EXPECT_EQ(0U, exchange.callCount());
}

TEST_F(SippPeer, HundredCallsToItsServer_NoneFails)
{
    SipPeer phone(loop);
    ASSERT_TRUE(startServer(phone, {"-sn", "uas", "-m", "100"}));

    for (int i = 0; i < 100; ++i) {
        sip::Session& call = phone.call(server());
        ASSERT_TRUE(phone.waitFor("established")) << i << ": " << phone.events();
        call.hangUp();
    }

    EXPECT_EQ(0, sipp_->wait(50s));
}

// The interval of 90 seconds passes in five.
TEST_F(SippPeer, ServerThatRingsReliably_IsRefreshedByUpdate)
{
    SipPeer phone(loop);
    ASSERT_TRUE(startServer(phone, {"-sf", SCENARIOS "/reliable-and-refreshed.xml", "-m", "1"}));
    sip::accelerateTimers(20);
    sip::Session& call = phone.call(server());
    ASSERT_TRUE(phone.waitFor("progress 180")) << phone.events();
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_FALSE(phone.waitFor("closed abandoned 408", 3500ms)) << "it takes the refresh";
    call.hangUp();

    EXPECT_EQ(0, sipp_->wait(20s));
    sip::accelerateTimers(1);
}

TEST_F(SippPeer, ClientWithoutAnOffer_GetsOursAndAnswersIt)
{
    SipPeer phone(loop);
    startSipp({"-sf", SCENARIOS "/delayed-offer.xml", "-m", "1", phone.agent->hostPort()});

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(sip::Direction::kSendReceive, phone.session().audio().direction());

    EXPECT_EQ(0, sipp_->wait(20s));
    EXPECT_TRUE(phone.waitFor("closed remote")) << phone.events();
}

// Without an answer the re-INVITE ends after 64 times T1, half a minute.
TEST_F(SippPeer, ServerThatIsKilledInTheCall_IsNoticedByTheNextReInvite)
{
    SipPeer phone(loop);
    ASSERT_TRUE(startServer(phone, {"-sn", "uas"}));
    sip::Session& call = phone.call(server());
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    sipp_->kill();

    sip::accelerateTimers(20);
    EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));

    EXPECT_TRUE(phone.waitFor("closed timeout 408", 40s)) << phone.events();
    sip::accelerateTimers(1);
}

}  // namespace telephone::test

// What the call engine makes of the configuration.
#include "telephone/calls/EngineConfiguration.h"

#include <functional>

#include <gtest/gtest.h>

#include "telephone/configuration/Configuration.h"

namespace telephone::test {

namespace {

using sip::RequestKind;
using sip::Sender;

EngineConfiguration engineWith(std::function<void(Configuration&)> const& change)
{
    Configuration configuration = Configuration::standard();
    change(configuration);
    return EngineConfiguration::from(configuration);
}

}  // namespace

TEST(EngineConfigurationTest, PortOfTls_IsTheNextOne)
{
    auto const chosen = engineWith([](Configuration& configuration) { configuration.sip.port = 5070; });
    EXPECT_EQ(chosen.agent.udpPort, 5070);
    EXPECT_EQ(chosen.agent.tcpPort, 5070);
    EXPECT_EQ(chosen.agent.tlsPort, 5071);

    EXPECT_EQ(engineWith([](Configuration&) {}).agent.tlsPort, 0);
}

TEST(EngineConfigurationTest, Tls_IsThereFromTheStartIfTheTelephoneUsesItOrHasACertificate)
{
    EXPECT_FALSE(engineWith([](Configuration&) {}).agent.tlsFromTheStart);
    EXPECT_FALSE(engineWith([](Configuration& configuration) {
                     configuration.sip.transport = Transport::kTcp;
                 }).agent.tlsFromTheStart);
    EXPECT_TRUE(engineWith([](Configuration& configuration) {
                    configuration.sip.transport = Transport::kTls;
                }).agent.tlsFromTheStart);
    EXPECT_TRUE(engineWith([](Configuration& configuration) {
                    configuration.sip.certificate = "desk.pem";
                }).agent.tlsFromTheStart);
}

// Each choice is one more than the sender; 0 is the default, here that of a line that registers.
TEST(EngineConfigurationTest, Permissions_AreOfTheirOwnRequests)
{
    auto const permissions =
        engineWith([](Configuration& configuration) {
            configuration.permissions = {
                .calls = 3, .takeOvers = 1, .subscriptions = 2, .notifications = 3, .control = 2, .transfers = 3};
        }).permissions;
    EXPECT_EQ(permissions.of(RequestKind::kCall, true), Sender::kAnybody);
    EXPECT_EQ(permissions.of(RequestKind::kTakeOver, true), Sender::kServer);
    EXPECT_EQ(permissions.of(RequestKind::kSubscription, true), Sender::kAuthenticated);
    EXPECT_EQ(permissions.of(RequestKind::kNotification, true), Sender::kAnybody);
    EXPECT_EQ(permissions.of(RequestKind::kControl, true), Sender::kAuthenticated);
    EXPECT_EQ(permissions.of(RequestKind::kTransfer, true), Sender::kAnybody);

    auto const standard = engineWith([](Configuration&) {}).permissions;
    EXPECT_EQ(standard.of(RequestKind::kCall, true), Sender::kServer);
    EXPECT_EQ(standard.of(RequestKind::kTakeOver, true), Sender::kAuthenticated);
    EXPECT_EQ(standard.of(RequestKind::kCall, false), Sender::kAnybody);
}

TEST(EngineConfigurationTest, Times_AreInTheirUnits)
{
    auto const engine = engineWith([](Configuration& configuration) {
        configuration.calls.reinviteTimeout = 9;
        configuration.calls.sessionExpires = 600;
        configuration.calls.audioTimeout = 30;
    });
    EXPECT_EQ(engine.reinviteTimeout, std::chrono::seconds(9));
    EXPECT_EQ(engine.agent.sessionExpires, std::chrono::minutes(10));
    EXPECT_EQ(engine.agent.audioTimeout, std::chrono::seconds(30));
    EXPECT_EQ(engine.ringTime, std::chrono::seconds(5));
    EXPECT_EQ(engine.dialogAnswerTime, std::chrono::seconds(2));
    EXPECT_EQ(engine.settlingTime, std::chrono::milliseconds(500));
    EXPECT_EQ(engine.callBackTime, std::chrono::minutes(30));
}

}  // namespace telephone::test

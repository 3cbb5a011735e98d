#include "SipFixture.h"

namespace telephone::test {

using Registration = ExchangeTest;

TEST_F(Registration, RightPassword_IsRegisteredAtItsContact)
{
    SipPeer phone(loop);

    phone.registerAt(exchange.hostPort());

    EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_EQ("sip:4711@" + phone.agent->hostPort() + ";line=***", contactOf(exchange, "4711"));
}

TEST_F(Registration, WrongPassword_IsForbiddenAndNotTriedAgain)
{
    SipPeer phone(loop);

    phone.registerAt(exchange.hostPort(), "guess", [](sip::Account& account) { account.retryFirst = 10ms; });

    EXPECT_TRUE(phone.waitFor("unregistered 403")) << phone.events();
    EXPECT_FALSE(phone.waitFor("unregistered 403", 200ms));
    EXPECT_FALSE(exchange.isRegistered("4711"));
}

TEST_F(Registration, PasswordOfAnotherNumber_IsForbidden)
{
    SipPeer phone(loop);

    phone.registerAt(exchange.hostPort(), "secret", [](sip::Account& account) { account.authUser = "4799"; });

    EXPECT_TRUE(phone.waitFor("unregistered 403")) << phone.events();
}

TEST_F(Registration, Destruction_TakesTheBindingBack)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();

    phone.registration.reset();

    EXPECT_TRUE(phone.waitUntil([this] { return !exchange.isRegistered("4711"); }));
}

TEST_F(Registration, DestructionOfTheWholeUserAgent_TakesTheBindingBack)
{
    {
        SipPeer phone(loop);
        phone.registerAt(exchange.hostPort());
        ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    }
    EXPECT_FALSE(exchange.isRegistered("4711"));
}

TEST_F(Registration, ShortExpiry_IsRefreshedBeforeItEnds)
{
    SipPeer phone(loop);

    phone.registerAt(exchange.hostPort(), "secret", [](sip::Account& account) { account.expires = 1; });

    EXPECT_TRUE(phone.waitFor("registered 1")) << phone.events();
    EXPECT_TRUE(phone.waitFor("registered 1")) << phone.events();
    EXPECT_TRUE(phone.waitFor("registered 1")) << phone.events();
    EXPECT_TRUE(exchange.isRegistered("4711"));
}

TEST_F(Registration, BindingThatNobodyRefreshes_Ends)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort(), "secret", [](sip::Account& account) { account.expires = 1; });
    ASSERT_TRUE(phone.waitFor("registered 1")) << phone.events();

    // As if its cable were pulled: it cannot unregister.
    phone.agent.reset();

    EXPECT_TRUE(exchange.isRegistered("4711"));
    EXPECT_TRUE(phone.waitUntil([this] { return !exchange.isRegistered("4711"); }));
}

TEST_F(Registration, OverTcp_BindsATcpContact)
{
    SipPeer phone(loop);

    phone.registerAt("127.0.0.1:" + std::to_string(exchange.tcpPort()), "secret",
                     [](sip::Account& account) { account.transport = sip::Transport::kTcp; });

    EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_EQ("sip:4711@" + phone.agent->hostPort(sip::Transport::kTcp) + ";line=***;transport=tcp",
              contactOf(exchange, "4711"));
}

TEST_F(Registration, TwoTelephonesOfOneNumber_AreBothBound)
{
    SipPeer first(loop);
    SipPeer second(loop);
    first.registerAt(exchange.hostPort());
    ASSERT_TRUE(first.waitFor("registered 3600"));
    second.registerAt(exchange.hostPort());
    ASSERT_TRUE(second.waitFor("registered 3600"));

    EXPECT_EQ(2U, exchange.contactsOf("4711").size());
}

TEST_F(SipTest, RegistrarThatGoesAwayAndReturns_IsFoundAgain)
{
    exchange::ExchangeConfig config;
    auto exchange = std::make_unique<exchange::Exchange>(loop, config);
    config.port = exchange->port();
    std::string const domain = exchange->hostPort();
    SipPeer phone(loop);
    phone.registerAt(domain, "secret", [](sip::Account& account) {
        account.expires = 1;
        account.answerTimeout = 200ms;
        account.retryFirst = 50ms;
        account.retryMax = 100ms;
    });
    ASSERT_TRUE(phone.waitFor("registered 1")) << phone.events();

    exchange.reset();
    EXPECT_TRUE(phone.waitFor("unregistered 408")) << phone.events();
    exchange = std::make_unique<exchange::Exchange>(loop, config);

    EXPECT_TRUE(phone.waitUntil([&exchange] { return exchange->isRegistered("4711"); })) << phone.events();
}

TEST_F(Registration, RegistrarThatIsSwitchedOff_KeepsBindingsAndCallsButAnswersNobody)
{
    auto const impatient = [](sip::Account& account) {
        account.answerTimeout = 200ms;
        account.retryFirst = 50ms;
    };
    SipPeer phone(loop);
    SipPeer late(loop, "4712");
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();

    exchange.setRegistrar({.kind = exchange::RegistrarConduct::Kind::kAway});
    late.registerAt(exchange.hostPort(), "secret", impatient);

    EXPECT_TRUE(late.waitFor("unregistered 408")) << late.events();
    EXPECT_FALSE(exchange.isRegistered("4712"));
    EXPECT_TRUE(exchange.isRegistered("4711"));
    EXPECT_TRUE(exchange.callNumber("555", "4711"));
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    exchange.setRegistrar({});
    EXPECT_TRUE(late.waitFor("registered 3600")) << late.events();
}

TEST_F(Registration, BindingThatExpiresWhileTheRegistrarIsOff_Ends)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort(), "secret", [](sip::Account& account) { account.expires = 1; });
    ASSERT_TRUE(phone.waitFor("registered 1")) << phone.events();

    exchange.setRegistrar({.kind = exchange::RegistrarConduct::Kind::kAway});

    EXPECT_TRUE(exchange.isRegistered("4711"));
    EXPECT_TRUE(phone.waitUntil([this] { return !exchange.isRegistered("4711"); }));
}

TEST_F(SipTest, ListedUsersOnly_OthersAreForbidden)
{
    exchange::ExchangeConfig config;
    config.users = {{"4711", "one"}};
    config.anyPassword.reset();
    exchange::Exchange exchange(loop, config);
    SipPeer listed(loop, "4711");
    SipPeer other(loop, "4712");

    listed.registerAt(exchange.hostPort(), "one");
    other.registerAt(exchange.hostPort(), "one");

    EXPECT_TRUE(listed.waitFor("registered 3600")) << listed.events();
    EXPECT_TRUE(other.waitFor("unregistered 403")) << other.events();
}

TEST_F(SipTest, RegistrarNameThatCannotBeResolved_FailsAtOnce)
{
    SipPeer phone(loop);

    phone.registerAt("registrar.invalid");

    EXPECT_TRUE(phone.waitFor("unregistered 503")) << phone.events();
}

}  // namespace telephone::test

// The built-in exchange as the configuration describes it, and the addresses of a call server.
#include "telephone/CallServer.h"

#include <gtest/gtest.h>

#include "platform/lines/LineData.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {
namespace {

Configuration withNumber(ExchangeNumberConfiguration number)
{
    Configuration configuration = Configuration::standard();
    configuration.exchangeNumbers = {std::move(number)};
    return configuration;
}

std::string refusalOf(ExchangeNumberConfiguration number)
{
    auto const made = exchangeConfigOf(withNumber(std::move(number)));
    return made ? "no refusal" : made.error().reason;
}

TEST(CallServer, Exchange_IsInTheFamilyOfTheTelephonesAddress)
{
    Configuration configuration = Configuration::standard();
    configuration.sip.address = "127.0.0.1";
    EXPECT_EQ(exchangeConfigOf(configuration)->address, "127.0.0.1");
    configuration.sip.address = "::1";
    EXPECT_EQ(exchangeConfigOf(configuration)->address, "::1");
}

TEST(CallServer, Exchange_HasTheConfiguredRealmPasswordAndDigests)
{
    using sip::DigestAlgorithm;
    Configuration configuration = Configuration::standard();
    configuration.exchange.realm = "office";
    configuration.exchange.password = "hush";
    configuration.exchange.port = 5070;
    auto const made = exchangeConfigOf(configuration);
    EXPECT_EQ(made->realm, "office");
    EXPECT_EQ(made->anyPassword, "hush");
    EXPECT_EQ(made->port, 5070);
    EXPECT_FALSE(made->tls);

    EXPECT_EQ(made->digests, (std::vector{DigestAlgorithm::kSha256, DigestAlgorithm::kMd5}));
    configuration.exchange.digests = 1;
    EXPECT_EQ(exchangeConfigOf(configuration)->digests, std::vector{DigestAlgorithm::kSha256});
    configuration.exchange.digests = 2;
    EXPECT_EQ(exchangeConfigOf(configuration)->digests, std::vector{DigestAlgorithm::kMd5});
}

TEST(CallServer, Exchange_HasTlsAtTheNextPortIfItHasACertificate)
{
    Configuration configuration = Configuration::standard();
    configuration.exchange.certificate = "cert.pem";
    configuration.exchange.key = "key.pem";
    configuration.exchange.port = 5070;
    EXPECT_EQ(exchangeConfigOf(configuration)->tlsPort, 5071);
    EXPECT_TRUE(exchangeConfigOf(configuration)->tls);
    configuration.exchange.port = 0;
    EXPECT_EQ(exchangeConfigOf(configuration)->tlsPort, 0);
}

TEST(CallServer, Exchange_TakesEncryptedCallsIfTheTelephoneMakesThem)
{
    Configuration configuration = Configuration::standard();
    EXPECT_EQ(exchangeConfigOf(configuration)->encryption, sip::Encryption::kNone);
    EXPECT_FALSE(exchangeConfigOf(configuration)->keysWithoutTls);
    configuration.media.keysWithoutTls = true;
    for (int const encryption : {1, 2}) {
        configuration.media.encryption = encryption;
        EXPECT_EQ(exchangeConfigOf(configuration)->encryption, sip::Encryption::kOptional) << encryption;
        EXPECT_TRUE(exchangeConfigOf(configuration)->keysWithoutTls);
    }
}

TEST(CallServer, LinesWithAPassword_AreUsersOfTheExchange)
{
    Configuration configuration = Configuration::standard();
    ASSERT_EQ(configuration.lines.size(), 2U);
    EXPECT_TRUE(exchangeConfigOf(configuration)->users.empty());
    configuration.lines[1].password = "own";
    configuration.lines[1].authUser = "desk";
    auto const users = exchangeConfigOf(configuration)->users;
    ASSERT_EQ(users.size(), 1U);
    EXPECT_EQ(users[0].number, "4712");
    EXPECT_EQ(users[0].password, "own");
    EXPECT_EQ(users[0].authUser, "desk");
}

TEST(CallServer, ConfiguredNumber_HasWhatItsKeysSay)
{
    ExchangeNumberConfiguration number;
    number.number = "107";
    number.name = "Example";
    number.does.list = {"ring 1s, answer"};
    number.forwardAlways = "101";
    number.forwardOnBusy = "102";
    number.forwardOnNoReply = "103";
    number.noReplyAfter = 7;
    number.newMessages = 3;
    number.oldMessages = 1;
    number.pickupGroup = "sales";
    number.appearances = 2;
    number.lamp = 1;
    auto const made = exchangeConfigOf(withNumber(number));
    ASSERT_TRUE(made) << made.error().reason;
    ASSERT_EQ(made->numbers.size(), 1U);
    exchange::ExchangeNumber const& found = made->numbers.front();
    EXPECT_EQ(found.number, "107");
    EXPECT_EQ(found.name, "Example");
    EXPECT_EQ(found.steps.size(), 2U);
    EXPECT_EQ(found.forwarding.always, "101");
    EXPECT_EQ(found.forwarding.onBusy, "102");
    EXPECT_EQ(found.forwarding.onNoReply, "103");
    EXPECT_EQ(found.forwarding.noReplyAfter, std::chrono::seconds(7));
    EXPECT_EQ(found.messages.fresh, 3U);
    EXPECT_EQ(found.messages.old, 1U);
    EXPECT_EQ(found.messages.urgentFresh, 0U);
    EXPECT_EQ(found.messages.urgentOld, 0U);
    EXPECT_EQ(found.pickupGroup, "sales");
    EXPECT_EQ(found.appearances, 2);
    EXPECT_EQ(static_cast<int>(found.lamp), 1);
}

TEST(CallServer, StepsInSeveralTexts_AreOneSequence)
{
    ExchangeNumberConfiguration number;
    number.number = "107";
    EXPECT_TRUE(exchangeConfigOf(withNumber(number))->numbers.front().steps.empty());
    number.does.list = {"ring 1s", "answer", "hang-up"};
    EXPECT_EQ(exchangeConfigOf(withNumber(number))->numbers.front().steps.size(), 3U);
}

TEST(CallServer, WrongNumbers_AreRefusedWithTheirKey)
{
    ExchangeNumberConfiguration number;
    number.number = "one two";
    EXPECT_TRUE(refusalOf(number).starts_with("exchange.number \"one two\": number")) << refusalOf(number);
    for (auto const& [key, member] :
         {std::pair("forward-always", &ExchangeNumberConfiguration::forwardAlways),
          std::pair("forward-on-busy", &ExchangeNumberConfiguration::forwardOnBusy),
          std::pair("forward-on-no-reply", &ExchangeNumberConfiguration::forwardOnNoReply)}) {
        ExchangeNumberConfiguration forwarding;
        forwarding.number = "107";
        EXPECT_EQ(refusalOf(forwarding), "no refusal");
        forwarding.*member = "one two";
        EXPECT_TRUE(refusalOf(forwarding).starts_with("exchange.number \"107\": " + std::string(key)))
            << refusalOf(forwarding);
    }
    ExchangeNumberConfiguration steps;
    steps.number = "107";
    steps.does.list = {"juggle"};
    EXPECT_TRUE(refusalOf(steps).starts_with("exchange.number \"107\": does: ")) << refusalOf(steps);
}

TEST(CallServer, SharedLine_HasItsAppearancesAtTheExchange)
{
    Configuration configuration = Configuration::standard();
    EXPECT_TRUE(exchangeConfigOf(configuration)->numbers.empty());
    configuration.lines[0].sharedLineType = LineData::kSharedLine;
    configuration.lines[0].appearances = 3;
    auto const made = exchangeConfigOf(configuration);
    ASSERT_EQ(made->numbers.size(), 1U);
    EXPECT_EQ(made->numbers[0].number, "4711");
    EXPECT_EQ(made->numbers[0].appearances, 3);

    // A number that says how many it has keeps them.
    ExchangeNumberConfiguration number;
    number.number = "4711";
    configuration.exchangeNumbers = {number};
    EXPECT_EQ(exchangeConfigOf(configuration)->numbers.at(0).appearances, 3);
    configuration.exchangeNumbers[0].appearances = 5;
    ASSERT_EQ(exchangeConfigOf(configuration)->numbers.size(), 1U);
    EXPECT_EQ(exchangeConfigOf(configuration)->numbers[0].appearances, 5);
}

TEST(CallServer, Exchange_IsMadeOnlyWithoutARegistrar)
{
    sip::EventLoop loop;
    Configuration configuration = Configuration::standard();
    configuration.server.registrar = "sip:192.0.2.1";
    EXPECT_EQ(makeExchange(loop, configuration), nullptr);
    configuration.server.registrar.clear();
    configuration.exchange.enabled = false;
    EXPECT_EQ(makeExchange(loop, configuration), nullptr);
}

TEST(CallServer, Domain_IsThatOfTheRegistrarUnlessItIsConfigured)
{
    Configuration configuration = Configuration::standard();
    EXPECT_EQ(withServer(configuration, nullptr)->server.domain, "");
    configuration.server.registrar = "sip:someone@192.0.2.1:5070";
    EXPECT_EQ(withServer(configuration, nullptr)->server.domain, "192.0.2.1:5070");
    configuration.server.registrar = "sips:example.com";
    EXPECT_EQ(withServer(configuration, nullptr)->server.domain, "example.com");
    configuration.server.domain = "example.org";
    EXPECT_EQ(withServer(configuration, nullptr)->server.domain, "example.org");
    configuration.server.domain.clear();
    configuration.server.registrar = "example.com";
    EXPECT_EQ(withServer(configuration, nullptr).error().reason,
              "server.registrar: \"example.com\" is not a sip: address");
}

TEST(CallServer, Lines_AreAtTheDomainOrAtTheTelephoneItself)
{
    Configuration configuration = Configuration::standard();
    configuration.exchange.password = "hush";
    ServerAddress server = serverAddressOf(configuration, false, "192.0.2.7:5060");
    EXPECT_EQ(server.registrar, "");
    EXPECT_EQ(server.domain, "192.0.2.7:5060");
    EXPECT_EQ(server.defaultPassword, "");
    configuration.server.registrar = "sip:127.0.0.1:5070";
    configuration.server.domain = "127.0.0.1:5070";
    server = serverAddressOf(configuration, true, "192.0.2.7:5060");
    EXPECT_EQ(server.registrar, "sip:127.0.0.1:5070");
    EXPECT_EQ(server.domain, "127.0.0.1:5070");
    EXPECT_EQ(server.defaultPassword, "hush");
}

}  // namespace
}  // namespace telephone

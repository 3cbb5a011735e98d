// Call servers and destinations by their names, as applications see them.
#include "ExchangePhones.h"
#include "tests/helpers/DnsTable.h"

namespace telephone::test {

namespace {

class Names : public ::testing::Test
{
protected:
    Names()
    {
        auto const port = sip::Uri::parse("sip:" + exchange_.hostPort())->port;
        dns_->address("exchange.test", "127.0.0.1");
        dns_->service("_sip._udp.pbx.test", 10, 0, 5060, "nobody.test");
        dns_->service("_sip._udp.pbx.test", 20, 0, port, "exchange.test");
        dns_->address("nobody.test", "127.0.0.9");
    }

    EnginePhone::Options at(std::string const& registrar) const
    {
        EnginePhone::Options options = EnginePhone::optionsOf("4711");
        options.registrar = registrar;
        options.answerTimeout = std::chrono::seconds(8);
        options.engine.agent.dns = dns_;
        return options;
    }

    exchange::Exchange exchange_{eventLoop(), {}};
    std::shared_ptr<DnsTable> const dns_ = std::make_shared<DnsTable>(&eventLoop());
};

}  // namespace

TEST_F(Names, RegistrarWhoseFirstServerIsDead_RegistersAndConnects)
{
    EnginePhone phone(at("pbx.test"));
    phone.expect({"registration 4711 0 yes 0"});

    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 1, "100"));

    EXPECT_TRUE(phone.events().waitFor("state 4711 1 connected normal 100"));
}

TEST_F(Names, RegistrarThatDnsDoesNotKnow_LeavesTheLineUnregistered)
{
    EnginePhone phone(at("nowhere.test"));

    phone.expect({"registration 4711 0 no 3"});
}

TEST_F(Names, DestinationThatDnsDoesNotKnow_FailsAndIsThenRefusedWithTheReason)
{
    EnginePhone phone(at(""));

    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 1, "sip:100@nowhere.test"));
    EXPECT_TRUE(phone.events().waitFor("state 4711 1 failed server failure 100"));
    auto const again = phone.engine().outgoing().make(1, 0, 2, "sip:100@nowhere.test");

    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().reason, "DNS knows no server \"nowhere.test\"");
}

}  // namespace telephone::test

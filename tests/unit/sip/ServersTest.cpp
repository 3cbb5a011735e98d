#include "telephone/sip/Servers.h"

#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/Waiting.h"
#include "tests/helpers/DnsTable.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

Destination const kExchange{"pbx.test", 0, Transport::kUdp};
Place const kFirst{"192.0.2.1", 5060, Transport::kUdp};
Place const kSecond{"192.0.2.2", 5060, Transport::kUdp};

class ServersTest : public ::testing::Test
{
protected:
    ServersTest()
    {
        dns_->service("_sip._udp.pbx.test", 10, 0, 5060, "first.test", 20);
        dns_->service("_sip._udp.pbx.test", 20, 0, 5060, "second.test", 20);
        dns_->address("first.test", "192.0.2.1");
        dns_->address("second.test", "192.0.2.2");
        loop_.start();
    }

    // The addresses in their order, or the reason of the refusal; empty: none yet.
    Texts find(Destination const& destination = kExchange, Servers::Use use = Servers::Use::kOther)
    {
        std::lock_guard const guard(loop_);
        found_.clear();
        servers_.find(destination, use, token_, [this](Outcome<Servers::Places> const& places) {
            if (!places) {
                found_ = {places.error().reason};
                return;
            }
            for (auto const& place : *places) {
                found_.push_back(place.address);
            }
        });
        return found_;
    }
    void answers(Place const& place)
    {
        std::lock_guard const guard(loop_);
        servers_.noteAnswer(kExchange, place);
    }
    void fails(Place const& place)
    {
        std::lock_guard const guard(loop_);
        servers_.noteFailure(kExchange, place);
    }
    std::size_t questions()
    {
        std::lock_guard const guard(loop_);
        return std::exchange(dns_->asked, {}).size();
    }

    EventLoop loop_;
    std::shared_ptr<test::DnsTable> const dns_ = std::make_shared<test::DnsTable>();
    std::shared_ptr<char> const token_ = std::make_shared<char>();
    Servers servers_{loop_,
                     dns_,
                     {{Transport::kUdp, Transport::kTcp}, {AddressFamily::kIpv4}, [](std::uint32_t) { return 0U; }},
                     {}};
    Texts found_;
};

TEST_F(ServersTest, Answer_IsKeptForItsTimeToLive)
{
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 3U);

    sleepFor(19s);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 0U);

    sleepFor(2s);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 3U);
}

TEST_F(ServersTest, UnknownName_IsKnownForTenSeconds)
{
    EXPECT_EQ(find({"nobody.test", 5060}), (Texts{"DNS knows no server \"nobody.test\""}));
    {
        std::lock_guard const guard(loop_);
        EXPECT_EQ(servers_.check({"nobody.test", 5060}).error(),
                  (Refusal{RefusalKind::kNotFound, "DNS knows no server \"nobody.test\""}));
    }
    dns_->address("nobody.test", "192.0.2.9");
    EXPECT_EQ(find({"nobody.test", 5060}), (Texts{"DNS knows no server \"nobody.test\""}));

    sleepFor(11s);
    EXPECT_EQ(find({"nobody.test", 5060}), (Texts{"192.0.2.9"}));
}

TEST_F(ServersTest, ServerThatFails_ComesLastForTenMinutes)
{
    find();
    fails(kFirst);
    answers(kSecond);

    EXPECT_EQ(find(), (Texts{"192.0.2.2", "192.0.2.1"}));
    sleepFor(599s);
    EXPECT_EQ(find(), (Texts{"192.0.2.2", "192.0.2.1"}));
    sleepFor(2s);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
}

TEST_F(ServersTest, LineThatRegisters_TriesTheServerAgainWithItsRegistrationFirst)
{
    find(kExchange, Servers::Use::kRegistration);
    fails(kFirst);
    answers(kSecond);
    sleepFor(601s);

    EXPECT_EQ(find(), (Texts{"192.0.2.2", "192.0.2.1"}));
    EXPECT_EQ(find(kExchange, Servers::Use::kRegistration), (Texts{"192.0.2.1", "192.0.2.2"}));

    answers(kFirst);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
}

TEST_F(ServersTest, ServerThatAnswers_IsKeptAmongThoseOfItsPriority)
{
    Destination const destination{"twin.test", 5060};
    dns_->address("twin.test", "192.0.2.7", 20);
    dns_->address("twin.test", "192.0.2.8", 20);
    EXPECT_EQ(find(destination), (Texts{"192.0.2.7", "192.0.2.8"}));
    {
        std::lock_guard const guard(loop_);
        servers_.noteAnswer(destination, {"192.0.2.8", 5060, Transport::kUdp});
    }

    sleepFor(3600s);

    EXPECT_EQ(find(destination), (Texts{"192.0.2.8", "192.0.2.7"}));
}

TEST_F(ServersTest, DnsThatFallsSilent_LeavesTheServersThatItNamed)
{
    find();
    questions();
    dns_->fallSilent();
    sleepFor(21s);

    EXPECT_EQ(find(), Texts());
    sleepFor(5s);
    {
        std::lock_guard const guard(loop_);
        EXPECT_EQ(found_, (Texts{"192.0.2.1", "192.0.2.2"}));
    }
    EXPECT_EQ(questions(), 1U);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 0U);
}

TEST_F(ServersTest, DnsThatForgetsTheName_TakesItsServersAway)
{
    find();
    dns_->forget("_sip._udp.pbx.test");
    sleepFor(21s);

    EXPECT_EQ(find(), (Texts{"DNS knows no server \"pbx.test\""}));
}

TEST_F(ServersTest, TwoRequestsAtOnce_AskOnce)
{
    dns_->fallSilent();
    find();
    find();

    EXPECT_EQ(questions(), 1U);
}

TEST(NamedDestination, HasItsNameInSmallLetters)
{
    EXPECT_EQ(namedDestination("PBX.Test", 5070, "TCP"), (Destination{"pbx.test", 5070, Transport::kTcp}));
}

TEST(NamedDestination, AddressOrUnknownTransport_IsNone)
{
    EXPECT_EQ(namedDestination("192.0.2.1", 0, std::nullopt), std::nullopt);
    EXPECT_EQ(namedDestination("2001:db8::1", 0, std::nullopt), std::nullopt);
    EXPECT_EQ(namedDestination("pbx.test", 0, "sctp"), std::nullopt);
}

}  // namespace
}  // namespace telephone::sip

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

    // Whether the destination is known to have no server.
    bool isRefused(Destination const& destination)
    {
        std::lock_guard const guard(loop_);
        return !servers_.check(destination);
    }
    // Where a request would go now; empty: DNS has to be asked.
    std::string known(Destination const& destination = kExchange)
    {
        std::lock_guard const guard(loop_);
        auto const place = servers_.known(destination);
        return place ? placeText(*place) : std::string();
    }
    Texts logged()
    {
        std::lock_guard const guard(loop_);
        return std::exchange(log_, {});
    }

    EventLoop loop_;
    std::shared_ptr<test::DnsTable> const dns_ = std::make_shared<test::DnsTable>();
    std::shared_ptr<char> token_ = std::make_shared<char>();
    Servers servers_{loop_,
                     dns_,
                     {{Transport::kUdp, Transport::kTcp}, {AddressFamily::kIpv4}, [](std::uint32_t) { return 0U; }},
                     [this](LogLevel level, std::string const& line) {
                         log_.push_back((level == LogLevel::kWarning ? "warning: " : "") + line);
                     }};
    Texts found_;
    Texts log_;
};

TEST_F(ServersTest, Answer_IsKeptForItsTimeToLive)
{
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 3U);

    sleepFor(19'999ms);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 0U);

    sleepFor(1ms);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
    EXPECT_EQ(questions(), 3U);
}

TEST_F(ServersTest, AnswerThatSetsNoTime_IsKeptForFiveSeconds)
{
    dns_->address("brief.test", "192.0.2.3", 0);
    find({"brief.test", 5060});
    questions();

    sleepFor(4'999ms);
    EXPECT_EQ(find({"brief.test", 5060}), Texts{"192.0.2.3"});
    EXPECT_EQ(questions(), 0U);
    sleepFor(1ms);
    EXPECT_EQ(find({"brief.test", 5060}), Texts{"192.0.2.3"});
    EXPECT_EQ(questions(), 1U);
}

TEST_F(ServersTest, PlaceOfTheNextRequest_IsKnownWhileTheAnswerIsKept)
{
    EXPECT_EQ(known(), "");
    find();
    EXPECT_EQ(known(), "udp 192.0.2.1:5060");
    fails(kFirst);
    EXPECT_EQ(known(), "udp 192.0.2.2:5060");

    sleepFor(20s);

    EXPECT_EQ(known(), "");
}

TEST_F(ServersTest, RefusalOfAName_IsForgottenWithItsAnswer)
{
    Destination const nobody{"nobody.test", 5060};
    EXPECT_FALSE(isRefused(nobody));
    find(nobody);
    EXPECT_TRUE(isRefused(nobody));
    EXPECT_EQ(known(nobody), "");
    find();
    EXPECT_FALSE(isRefused(kExchange));

    sleepFor(10s);

    EXPECT_FALSE(isRefused(nobody));
}

TEST_F(ServersTest, Log_NamesTheServersWhenTheyChangeAndWhyThereAreNone)
{
    find();
    EXPECT_EQ(logged(), Texts{"pbx.test has the servers udp 192.0.2.1:5060, udp 192.0.2.2:5060"});
    sleepFor(20s);
    find();
    EXPECT_EQ(logged(), Texts());
    sleepFor(20s);
    dns_->forget("second.test");
    find();
    EXPECT_EQ(logged(), Texts{"pbx.test has the servers udp 192.0.2.1:5060"});

    find({"nobody.test", 5060});
    EXPECT_EQ(logged(), Texts{"warning: DNS knows no server \"nobody.test\""});
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
    sleepFor(9'999ms);
    EXPECT_EQ(find({"nobody.test", 5060}), (Texts{"DNS knows no server \"nobody.test\""}));

    sleepFor(1ms);
    EXPECT_EQ(find({"nobody.test", 5060}), (Texts{"192.0.2.9"}));
}

TEST_F(ServersTest, ServerThatFails_ComesLastForTenMinutes)
{
    find();
    fails(kFirst);
    answers(kSecond);

    EXPECT_EQ(find(), (Texts{"192.0.2.2", "192.0.2.1"}));
    sleepFor(599'999ms);
    EXPECT_EQ(find(), (Texts{"192.0.2.2", "192.0.2.1"}));
    sleepFor(1ms);
    EXPECT_EQ(find(), (Texts{"192.0.2.1", "192.0.2.2"}));
}

TEST_F(ServersTest, ServerThatDnsNamesAnew_StartsAfresh)
{
    find();
    fails(kFirst);
    dns_->forget("first.test");
    sleepFor(20s);
    EXPECT_EQ(find(), Texts{"192.0.2.2"});

    dns_->address("first.test", "192.0.2.1");
    sleepFor(60s);

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

    // The search took 4.5 of the 5 seconds.
    sleepFor(29'499ms);
    find();
    EXPECT_EQ(questions(), 0U);
    sleepFor(1ms);
    find();
    EXPECT_EQ(questions(), 1U);
}

TEST_F(ServersTest, WhoeverGoesDuringTheSearch_IsNotCalled)
{
    dns_->fallSilent();
    find();
    std::size_t called = 0;
    auto const other = std::make_shared<char>();
    {
        std::lock_guard const guard(loop_);
        servers_.find(kExchange, Servers::Use::kOther, other, [&called](auto const&) { ++called; });
    }

    token_.reset();
    sleepFor(5s);

    std::lock_guard const guard(loop_);
    EXPECT_EQ(found_, Texts());
    EXPECT_EQ(called, 1U);
}

TEST_F(ServersTest, ManyNames_PushOutThoseOfWhichNoLineNeedsToKnow)
{
    auto const name = [](int number) { return Destination{"n" + std::to_string(number) + ".test", 5060}; };
    dns_->address("line.test", "192.0.2.10", 3600);
    find({"line.test", 5060}, Servers::Use::kRegistration);
    for (int number = 2; number <= 256; ++number) {
        dns_->address(name(number).host, "192.0.2.11", 3600);
        find(name(number));
    }
    questions();
    find(name(2));
    EXPECT_EQ(questions(), 0U) << "256 names have room";

    find({"another.test", 5060});
    questions();

    find({"line.test", 5060});
    EXPECT_EQ(questions(), 0U);
    find(name(2));
    find(name(256));
    EXPECT_EQ(questions(), 2U);
}

TEST_F(ServersTest, ManyNames_DoNotPushOutOneThatIsLookedUp)
{
    dns_->fallSilent();
    find();
    for (int number = 1; number <= 300; ++number) {
        find({"n" + std::to_string(number) + ".test", 5060});
    }
    sleepFor(5s);

    find();

    std::lock_guard const guard(loop_);
    EXPECT_EQ(found_,
              Texts{"the server \"pbx.test\" cannot be looked up: no DNS server answers (asked 192.0.2.53:53)"});
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

TEST(NamedDestination, Transport_IsAnyThatTheTelephoneMayHave)
{
    EXPECT_EQ(namedDestination("pbx.test", 0, std::nullopt), (Destination{"pbx.test", 0, std::nullopt}));
    EXPECT_EQ(namedDestination("pbx.test", 0, "udp"), (Destination{"pbx.test", 0, Transport::kUdp}));
    EXPECT_EQ(namedDestination("pbx.test", 0, "Tls"), (Destination{"pbx.test", 0, Transport::kTls}));
}

TEST(NamedDestination, AddressOrUnknownTransport_IsNone)
{
    EXPECT_EQ(namedDestination("192.0.2.1", 0, std::nullopt), std::nullopt);
    EXPECT_EQ(namedDestination("2001:db8::1", 0, std::nullopt), std::nullopt);
    EXPECT_EQ(namedDestination("pbx.test", 0, "sctp"), std::nullopt);
}

}  // namespace
}  // namespace telephone::sip

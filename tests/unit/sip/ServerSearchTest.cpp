#include "telephone/sip/ServerSearch.h"

#include <deque>
#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/Waiting.h"
#include "tests/helpers/DnsTable.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

DnsRecord service(char const* host, std::uint16_t priority, std::uint16_t weight)
{
    return {.target = host, .order = priority, .weight = weight, .port = 5060};
}

Texts hostsOf(std::vector<DnsRecord> const& records)
{
    Texts hosts;
    for (auto const& record : records) {
        hosts.push_back(record.target);
    }
    return hosts;
}

// Draws these numbers, and notes from how many.
struct Numbers
{
    std::deque<std::uint32_t> drawn;
    std::vector<std::uint32_t> greatest;

    std::uint32_t operator()(std::uint32_t most)
    {
        greatest.push_back(most);
        std::uint32_t const next = drawn.empty() ? 0 : drawn.front();
        if (!drawn.empty()) {
            drawn.pop_front();
        }
        return next;
    }
};

TEST(InServiceOrder, OfOnePriority_DrawsByRunningSumsOfTheWeights)
{
    Numbers numbers{{70, 10, 0}, {}};

    auto const order =
        inServiceOrder({service("a", 1, 60), service("b", 1, 20), service("c", 1, 20)}, std::ref(numbers));

    EXPECT_EQ(hostsOf(order), (Texts{"b", "a", "c"}));
    EXPECT_EQ(numbers.greatest, (std::vector<std::uint32_t>{100, 80, 20}));
}

TEST(InServiceOrder, OfSeveralPriorities_PutsTheLowestNumberFirst)
{
    Numbers numbers;

    auto const order =
        inServiceOrder({service("c", 30, 0), service("a", 10, 5), service("b", 20, 9)}, std::ref(numbers));

    EXPECT_EQ(hostsOf(order), (Texts{"a", "b", "c"}));
}

TEST(InServiceOrder, WithoutWeight_ComesFirstOnlyIfZeroIsDrawn)
{
    Numbers zero{{0}, {}};
    Numbers one{{1}, {}};

    EXPECT_EQ(hostsOf(inServiceOrder({service("heavy", 1, 8), service("none", 1, 0)}, std::ref(zero))),
              (Texts{"none", "heavy"}));
    EXPECT_EQ(hostsOf(inServiceOrder({service("heavy", 1, 8), service("none", 1, 0)}, std::ref(one))),
              (Texts{"heavy", "none"}));
}

class ServerSearchTest : public ::testing::Test
{
protected:
    ServerSearchTest() { loop_.start(); }

    // "udp 192.0.2.1:5060 rank 0", or the reason of the refusal; empty: none yet.
    Texts find(Destination const& destination)
    {
        std::lock_guard const guard(loop_);
        found_.clear();
        search_ = std::make_shared<ServerSearch>(loop_, dns_, destination, settings_, [this](auto const& result) {
            if (!result) {
                found_ = {result.error().reason};
                return;
            }
            ttl_ = result->ttl;
            for (auto const& each : result->places) {
                found_.push_back(placeText(each.place) + " rank " + std::to_string(each.rank));
            }
        });
        search_->start();
        return found_;
    }

    EventLoop loop_;
    test::DnsTable dns_;
    ServerSearch::Settings settings_{
        {Transport::kUdp, Transport::kTcp}, {AddressFamily::kIpv4}, [](std::uint32_t) { return 0U; }};
    Texts found_;
    std::chrono::seconds ttl_{};
    std::shared_ptr<ServerSearch> search_;
};

TEST_F(ServerSearchTest, NameWithPort_NeedsItsAddressAlone)
{
    dns_.address("pbx.test", "192.0.2.1", 30);
    dns_.address("pbx.test", "192.0.2.2", 40);

    EXPECT_EQ(find({"pbx.test", 5070}), (Texts{"udp 192.0.2.1:5070 rank 0", "udp 192.0.2.2:5070 rank 0"}));
    EXPECT_EQ(dns_.asked, (Texts{"A pbx.test"}));
    EXPECT_EQ(ttl_, 30s);
}

TEST_F(ServerSearchTest, NameWithTransport_AsksForItsServices)
{
    dns_.service("_sip._tcp.pbx.test", 20, 0, 5080, "second.test");
    dns_.service("_sip._tcp.pbx.test", 10, 0, 5070, "first.test");
    dns_.address("first.test", "192.0.2.1");
    dns_.address("second.test", "192.0.2.2");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kTcp}),
              (Texts{"tcp 192.0.2.1:5070 rank 0", "tcp 192.0.2.2:5080 rank 1"}));
    EXPECT_EQ(dns_.asked, (Texts{"SRV _sip._tcp.pbx.test", "A first.test", "A second.test"}));
}

TEST_F(ServerSearchTest, NameOverTls_HasItsTlsServicesAlone)
{
    dns_.preference("pbx.test", 10, 10, "SIP+D2T", "tcp.pbx.test");
    dns_.preference("pbx.test", 20, 10, "SIPS+D2T", "tls.pbx.test");
    dns_.service("tls.pbx.test", 1, 0, 5071, "a.test");
    dns_.address("a.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kTls}), (Texts{"tls 192.0.2.1:5071 rank 0"}));
    EXPECT_EQ(dns_.asked, (Texts{"NAPTR pbx.test", "SRV tls.pbx.test", "A a.test"}));
}

TEST_F(ServerSearchTest, NameOverTlsWithoutPreferences_HasTheUsualServicesAndPort)
{
    dns_.preference("pbx.test", 10, 10, "SIP+D2T", "tcp.pbx.test");
    dns_.address("pbx.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kTls}), (Texts{"tls 192.0.2.1:5061 rank 0"}));
    EXPECT_EQ(dns_.asked, (Texts{"NAPTR pbx.test", "SRV _sips._tcp.pbx.test", "A pbx.test"}));
}

TEST_F(ServerSearchTest, NameAlone_FollowsThePreferencesOfItsDomain)
{
    dns_.preference("pbx.test", 20, 10, "SIP+D2U", "udp.pbx.test");
    dns_.preference("pbx.test", 10, 10, "SIPS+D2X", "other.pbx.test");
    dns_.preference("pbx.test", 10, 20, "sip+d2t", "tcp.pbx.test");
    dns_.service("udp.pbx.test", 1, 0, 5060, "a.test");
    dns_.service("tcp.pbx.test", 1, 0, 5062, "a.test");
    dns_.address("a.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test"}), (Texts{"tcp 192.0.2.1:5062 rank 0", "udp 192.0.2.1:5060 rank 1"}));
    EXPECT_EQ(dns_.asked, (Texts{"NAPTR pbx.test", "SRV tcp.pbx.test", "SRV udp.pbx.test", "A a.test", "A a.test"}));
}

TEST_F(ServerSearchTest, WithoutPreferences_AsksForTheServicesOfEachTransport)
{
    dns_.service("_sip._tcp.pbx.test", 1, 0, 5062, "a.test");
    dns_.address("a.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test"}), (Texts{"tcp 192.0.2.1:5062 rank 0"}));
    EXPECT_EQ(dns_.asked, (Texts{"NAPTR pbx.test", "SRV _sip._udp.pbx.test", "SRV _sip._tcp.pbx.test", "A a.test"}));
}

TEST_F(ServerSearchTest, WithoutServices_TakesTheAddressOfTheNameAndTheUsualPort)
{
    dns_.address("pbx.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test"}), (Texts{"udp 192.0.2.1:5060 rank 0"}));
}

TEST_F(ServerSearchTest, BothFamilies_TakeThePreferredOneFirst)
{
    settings_.families = {AddressFamily::kIpv6, AddressFamily::kIpv4};
    dns_.address("pbx.test", "192.0.2.1");
    dns_.address("pbx.test", "2001:db8::1");

    EXPECT_EQ(find({"pbx.test", 5060}), (Texts{"udp [2001:db8::1]:5060 rank 0", "udp 192.0.2.1:5060 rank 0"}));
}

TEST_F(ServerSearchTest, UnknownName_IsRefusedAtOnce)
{
    EXPECT_EQ(find({"pbx.test"}), (Texts{"DNS knows no server \"pbx.test\""}));
}

TEST_F(ServerSearchTest, NameOfTheOtherFamily_IsRefusedWithTheFamily)
{
    dns_.address("pbx.test", "2001:db8::1");

    EXPECT_EQ(find({"pbx.test"}), (Texts{"\"pbx.test\" has no IPv4 address in DNS"}));
}

TEST_F(ServerSearchTest, ServiceThatIsSwitchedOff_IsRefused)
{
    dns_.service("_sip._udp.pbx.test", 0, 0, 0, ".");
    dns_.address("pbx.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kUdp}), (Texts{"\"pbx.test\" offers no SIP service in DNS"}));
}

TEST_F(ServerSearchTest, SilentDns_IsRefusedWithinFiveSeconds)
{
    dns_.fallSilent();

    EXPECT_EQ(find({"pbx.test"}), Texts());
    sleepFor(5s);

    std::lock_guard const guard(loop_);
    EXPECT_EQ(found_, (Texts{"the server \"pbx.test\" cannot be looked up: "
                             "no DNS server answers (asked 192.0.2.53:53)"}));
}

}  // namespace
}  // namespace telephone::sip

#include "telephone/sip/ServerSearch.h"

#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/SteadyClock.h"
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
    EXPECT_EQ(numbers.greatest, (std::vector<std::uint32_t>{5, 9, 0}));
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
        auto const begin = SteadyClock::now();
        search_ = std::make_shared<ServerSearch>(loop_, *asked_, destination, settings_, [=, this](auto const& result) {
            taken_ = SteadyClock::now() - begin;
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
    Dns* asked_ = &dns_;
    ServerSearch::Settings settings_{
        {Transport::kUdp, Transport::kTcp}, {AddressFamily::kIpv4}, [](std::uint32_t) { return 0U; }};
    Texts found_;
    std::chrono::seconds ttl_{};
    SteadyClock::duration taken_{};
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

TEST_F(ServerSearchTest, NameWithPortAndTransport_IsReachedOverIt)
{
    dns_.address("pbx.test", "192.0.2.1", 100'000);

    EXPECT_EQ(find({"pbx.test", 5071, Transport::kTls}), Texts{"tls 192.0.2.1:5071 rank 0"});
    EXPECT_EQ(find({"pbx.test", 5071, Transport::kTcp}), Texts{"tcp 192.0.2.1:5071 rank 0"});
    EXPECT_EQ(ttl_, 24h);
}

TEST_F(ServerSearchTest, NameWithTransportAndNoServices_HasItsUsualPort)
{
    dns_.address("pbx.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kTcp}), Texts{"tcp 192.0.2.1:5060 rank 0"});
    EXPECT_EQ(dns_.asked, (Texts{"SRV _sip._tcp.pbx.test", "A pbx.test"}));
}

TEST_F(ServerSearchTest, ServicesOfOnePriority_ShareTheirRank)
{
    dns_.service("_sip._udp.pbx.test", 10, 0, 5060, "a.test");
    dns_.service("_sip._udp.pbx.test", 10, 0, 5061, "a.test");
    dns_.service("_sip._udp.pbx.test", 11, 0, 5062, "a.test");
    dns_.service("_sip._tcp.pbx.test", 11, 0, 5063, "a.test");
    dns_.address("a.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test"}), (Texts{"udp 192.0.2.1:5060 rank 0", "udp 192.0.2.1:5061 rank 0",
                                         "udp 192.0.2.1:5062 rank 1", "tcp 192.0.2.1:5063 rank 2"}));
}

TEST_F(ServerSearchTest, ManyServices_AreLookedUpToTheSixteenth)
{
    dns_.address("a.test", "192.0.2.1");
    for (std::uint16_t number = 1; number <= 17; ++number) {
        dns_.service("_sip._udp.pbx.test", number, 0, number, "a.test");
    }

    auto const found = find({"pbx.test", 0, Transport::kUdp});

    ASSERT_EQ(found.size(), 16U);
    EXPECT_EQ(found.back(), "udp 192.0.2.1:16 rank 15");
    EXPECT_EQ(dns_.asked.size(), 17U);
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

TEST_F(ServerSearchTest, PreferenceForATransportThatIsMissing_IsPassedOver)
{
    dns_.preference("pbx.test", 10, 10, "SIPS+D2T", "tls.pbx.test");
    dns_.preference("pbx.test", 20, 10, "SIP+D2U", "udp.pbx.test");
    dns_.service("tls.pbx.test", 1, 0, 5061, "a.test");
    dns_.service("udp.pbx.test", 1, 0, 5060, "a.test");
    dns_.address("a.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test"}), Texts{"udp 192.0.2.1:5060 rank 0"});
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

TEST_F(ServerSearchTest, NameWithoutAnyAddress_IsRefusedWithTheFamiliesThatWereAskedFor)
{
    dns_.service("pbx.test", 1, 0, 5060, "a.test");  // so that the name exists
    settings_.families = {AddressFamily::kIpv6};
    EXPECT_EQ(find({"pbx.test", 5060}), Texts{"\"pbx.test\" has no IPv6 address in DNS"});
    settings_.families = {AddressFamily::kIpv6, AddressFamily::kIpv4};
    EXPECT_EQ(find({"pbx.test", 5060}), Texts{"\"pbx.test\" has no address in DNS"});
}

TEST_F(ServerSearchTest, ServiceWhoseHostIsUnknown_IsRefused)
{
    dns_.service("_sip._udp.pbx.test", 1, 0, 5060, "a.test");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kUdp}), Texts{"DNS knows no server \"pbx.test\""});
}

TEST_F(ServerSearchTest, ServiceThatIsSwitchedOffForOneTransport_IsThatOfTheOthers)
{
    dns_.service("_sip._udp.pbx.test", 0, 0, 0, "");
    dns_.service("_sip._tcp.pbx.test", 0, 0, 5060, "a.test");
    dns_.address("pbx.test", "192.0.2.1");
    dns_.address("a.test", "192.0.2.2");

    EXPECT_EQ(find({"pbx.test"}), Texts{"tcp 192.0.2.2:5060 rank 0"});
    EXPECT_EQ(find({"pbx.test", 0, Transport::kUdp}), Texts{"\"pbx.test\" offers no SIP service in DNS"});
}

TEST_F(ServerSearchTest, ServiceThatIsSwitchedOff_IsRefused)
{
    dns_.service("_sip._udp.pbx.test", 0, 0, 0, ".");
    dns_.address("pbx.test", "192.0.2.1");

    EXPECT_EQ(find({"pbx.test", 0, Transport::kUdp}), (Texts{"\"pbx.test\" offers no SIP service in DNS"}));
}

TEST_F(ServerSearchTest, SilentDns_IsRefusedAfterFourAndAHalfSeconds)
{
    dns_.fallSilent();

    EXPECT_EQ(find({"pbx.test"}), Texts());
    sleepFor(5s);

    std::lock_guard const guard(loop_);
    EXPECT_EQ(taken_, 4'500ms);
    EXPECT_EQ(found_, (Texts{"the server \"pbx.test\" cannot be looked up: "
                             "no DNS server answers (asked 192.0.2.53:53)"}));
}

// Keeps the questions; the test answers them.
class PatientDns final : public Dns
{
public:
    void ask(std::string const& name, DnsType type, Answered answered) override
    {
        asked_[{name, type}] = std::move(answered);
    }
    std::string silence() const override { return "silent"; }

    void answer(std::string const& name, DnsType type, DnsAnswer const& answer)
    {
        auto const question = asked_.extract({name, type});
        ASSERT_FALSE(question.empty()) << name;
        question.mapped()(answer);
    }

private:
    std::map<std::pair<std::string, DnsType>, Answered> asked_;
};

class ServerSearchStep : public ServerSearchTest
{
protected:
    ServerSearchStep() { asked_ = &patient_; }

    void answer(std::string const& name, DnsType type, DnsAnswer const& answer)
    {
        std::lock_guard const guard(loop_);
        patient_.answer(name, type, answer);
    }
    void refuse(std::string const& name, DnsType type) { answer(name, type, {DnsStatus::kFailed, {}, "refused"}); }
    Texts found()
    {
        std::lock_guard const guard(loop_);
        return found_;
    }

    PatientDns patient_;
};

TEST_F(ServerSearchStep, ThatIsRefused_LeadsToTheAddressOfTheName)
{
    find({"pbx.test"});
    refuse("pbx.test", DnsType::kNaptr);
    refuse("_sip._udp.pbx.test", DnsType::kSrv);
    refuse("_sip._tcp.pbx.test", DnsType::kSrv);

    answer("pbx.test", DnsType::kA, {.records = {{.ttl = 7s, .target = "192.0.2.1"}}});

    EXPECT_EQ(found(), Texts{"udp 192.0.2.1:5060 rank 0"});
    EXPECT_EQ(ttl_, 7s);
}

TEST_F(ServerSearchStep, ThatIsRefusedBeforeTheAddressIsUnknown_IsNotTheReason)
{
    find({"pbx.test", 0, Transport::kUdp});
    refuse("_sip._udp.pbx.test", DnsType::kSrv);

    answer("pbx.test", DnsType::kA, {DnsStatus::kUnknownName});

    EXPECT_EQ(found(), Texts{"DNS knows no server \"pbx.test\""});
}

TEST_F(ServerSearchStep, ForTheAddressThatIsRefused_IsTheReason)
{
    find({"pbx.test", 5060});

    refuse("pbx.test", DnsType::kA);

    EXPECT_EQ(found(), Texts{"the server \"pbx.test\" cannot be looked up: refused"});
}

TEST_F(ServerSearchStep, WithSeveralQuestions_WaitsForEachAnswer)
{
    find({"pbx.test"});
    answer("pbx.test", DnsType::kNaptr, {});
    answer("_sip._tcp.pbx.test", DnsType::kSrv, {.records = {{.ttl = 9s, .target = "a.test", .port = 5062}}});
    answer("_sip._udp.pbx.test", DnsType::kSrv, {.records = {{.ttl = 8s, .target = "b.test", .port = 5061}}});
    answer("a.test", DnsType::kA, {.records = {{.ttl = 10s, .target = "192.0.2.1"}}});
    EXPECT_EQ(found(), Texts());

    answer("b.test", DnsType::kA, {.records = {{.ttl = 10s, .target = "192.0.2.2"}}});

    EXPECT_EQ(found(), (Texts{"udp 192.0.2.2:5061 rank 0", "tcp 192.0.2.1:5062 rank 1"}));
    EXPECT_EQ(ttl_, 8s);
}

TEST_F(ServerSearchStep, PreferenceThatNamesNoService_IsPassedOver)
{
    auto const preference = [](std::uint16_t order, char const* flags) {
        return DnsRecord{
            .ttl = 6s, .target = std::to_string(order) + ".test", .order = order, .service = "SIP+D2U", .flags = flags};
    };
    find({"pbx.test"});
    answer("pbx.test", DnsType::kNaptr, {.records = {preference(1, "u"), preference(2, "S"), preference(3, "")}});
    answer("2.test", DnsType::kSrv, {.records = {{.ttl = 9s, .target = "a.test", .port = 5062}}});
    answer("a.test", DnsType::kA, {.records = {{.ttl = 10s, .target = "192.0.2.1"}}});

    EXPECT_EQ(found(), Texts{"udp 192.0.2.1:5062 rank 0"});
    EXPECT_EQ(ttl_, 6s);
}

TEST_F(ServerSearchStep, ThatIsAnsweredTooLate_ChangesNothing)
{
    find({"pbx.test", 5060});
    sleepFor(5s);
    EXPECT_EQ(found(), Texts{"the server \"pbx.test\" cannot be looked up: silent"});

    answer("pbx.test", DnsType::kA, {.records = {{.ttl = 10s, .target = "192.0.2.1"}}});

    EXPECT_EQ(found(), Texts{"the server \"pbx.test\" cannot be looked up: silent"});
}

TEST_F(ServerSearchStep, OfASearchThatIsDestroyed_CallsNobody)
{
    find({"pbx.test", 5060});
    {
        std::lock_guard const guard(loop_);
        search_.reset();
    }

    answer("pbx.test", DnsType::kA, {.records = {{.ttl = 10s, .target = "192.0.2.1"}}});
    sleepFor(5s);

    EXPECT_EQ(found(), Texts());
}

}  // namespace
}  // namespace telephone::sip

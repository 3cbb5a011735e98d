// Finds the servers of a name by RFC 3263: which transports its domain prefers (NAPTR), the hosts of each (SRV, by
// priority and weight as RFC 2782 draws them), and their addresses (A and AAAA). Servers starts a search and owns it;
// used under the loop's lock.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Account.h"
#include "telephone/sip/Dns.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

// What a URI says of its server.
struct Destination
{
    std::string host;        // a name, in small letters
    std::uint16_t port = 0;  // 0: not given
    std::optional<Transport> transport = {};

    auto operator<=>(Destination const&) const = default;
};

// A server, as a request reaches it.
struct Place
{
    std::string address;  // numeric, without brackets
    std::uint16_t port = 0;
    Transport transport = Transport::kUdp;

    auto operator<=>(Place const&) const = default;
};

// "udp", "tcp": the parameter of a URI.
char const* transportText(Transport transport);
std::optional<Transport> transportNamed(std::string_view text);

// "udp 192.0.2.1:5060", "tcp [2001:db8::1]:5060".
std::string placeText(Place const& place);

struct RankedPlace
{
    Place place;
    int rank = 0;  // from 0; places of the same rank share the load, those of the next stand in for them

    bool operator==(RankedPlace const&) const = default;
};

enum class AddressFamily : int
{
    kIpv4,
    kIpv6,
};

// A number from 0 to the greatest, the two included.
using Draw = std::function<std::uint32_t(std::uint32_t greatest)>;

// SRV records by priority; those of one priority in an order drawn by their weights.
std::vector<DnsRecord> inServiceOrder(std::vector<DnsRecord> records, Draw const& draw);

class ServerSearch : public std::enable_shared_from_this<ServerSearch>
{
public:
    struct Settings
    {
        std::vector<Transport> transports;    // that this end has, the one it prefers first
        std::vector<AddressFamily> families;  // the same
        Draw draw;
    };
    struct Result
    {
        std::vector<RankedPlace> places;  // never empty
        std::chrono::seconds ttl{};       // for so long they stay the servers of the name
    };
    // kNotFound: DNS knows no such server. kUnavailable: DNS does not answer, or refuses.
    using Done = std::function<void(Outcome<Result>)>;

    // `dns` must live until the search is done or destroyed. It is done after kLongestSearch at the latest; a search
    // that is destroyed calls nobody.
    ServerSearch(EventLoop& loop, Dns& dns, Destination destination, Settings const& settings, Done done);
    void start();

private:
    // Hosts of one service, before their addresses are known.
    struct Host
    {
        std::string name;
        std::uint16_t port = 0;
        Transport transport = Transport::kUdp;
        int rank = 0;
        std::vector<std::vector<std::string>> addresses = {};  // of each family
    };
    struct Service
    {
        std::string name;  // "_sip._udp.example.com"
        Transport transport = Transport::kUdp;
        std::vector<DnsRecord> records = {};
    };

    // Asks all questions of a step; `next` follows when each is answered.
    void ask(std::string const& name, DnsType type, std::function<void(DnsAnswer const&)> take);
    void whenAnswered(void (ServerSearch::*next)());
    void noteAnswer();

    // Those over which the destination may be reached.
    std::vector<Transport> transports() const;
    void onPreferences(DnsAnswer const& answer);
    void askServices();
    void onServices();
    void askAddresses();
    void onAddresses();
    void note(DnsAnswer const& answer);
    void finish(Outcome<Result> result);
    [[nodiscard]] Refusal refusal() const;

    Dns& dns_;
    Destination const destination_;
    Settings const& settings_;
    Done done_;
    Timer deadline_;
    std::vector<Service> services_;
    std::vector<Host> hosts_;
    std::chrono::seconds ttl_;
    std::string failure_;  // why a question had no answer
    bool refusesService_ = false;
    bool unknown_ = false;  // nothing has the name
    int unanswered_ = 0;
    void (ServerSearch::*next_)() = nullptr;
};

}  // namespace telephone::sip

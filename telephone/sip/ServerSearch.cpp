#include "telephone/sip/ServerSearch.h"

#include <algorithm>
#include <array>
#include <utility>

#include "telephone/sip/Uri.h"

namespace telephone::sip {

namespace {

// Somebody waits at the telephone: a search that takes longer than this has failed. The stack would go on for 214 s.
constexpr std::chrono::milliseconds kLongestSearch{4500};
// The most servers of a name that are looked up, so that no answer makes a thousand questions.
constexpr std::size_t kMostHosts = 16;
constexpr std::chrono::seconds kLongestTtl = std::chrono::hours(24);

struct ServiceRow
{
    Transport transport;
    char const* name;     // of the parameter "transport"
    char const* service;  // in NAPTR
    char const* prefix;   // of the name that has the SRV records
    std::uint16_t port;
};

// RFC 3263 section 4.1 and 4.2.
constexpr std::array kServices{
    ServiceRow{Transport::kUdp, "udp", "SIP+D2U", "_sip._udp.", 5060},
    ServiceRow{Transport::kTcp, "tcp", "SIP+D2T", "_sip._tcp.", 5060},
    ServiceRow{Transport::kTls, "tls", "SIPS+D2T", "_sips._tcp.", 5061},
};

ServiceRow const& rowOf(Transport transport)
{
    return *std::ranges::find(kServices, transport, &ServiceRow::transport);
}

char const* familyText(std::vector<AddressFamily> const& families)
{
    if (families.size() != 1) {
        return "";
    }
    return families.front() == AddressFamily::kIpv4 ? "IPv4 " : "IPv6 ";
}

}  // namespace

char const* transportText(Transport transport)
{
    return rowOf(transport).name;
}

std::optional<Transport> transportNamed(std::string_view text)
{
    auto const row =
        std::ranges::find_if(kServices, [text](ServiceRow const& each) { return equalsIgnoringCase(each.name, text); });
    return row == kServices.end() ? std::nullopt : std::optional(row->transport);
}

std::string placeText(Place const& place)
{
    bool const isIpv6 = place.address.find(':') != std::string::npos;
    return std::string(transportText(place.transport)) + " " + (isIpv6 ? "[" + place.address + "]" : place.address) +
           ":" + std::to_string(place.port);
}

// RFC 2782: those without a weight first, so that they have a small chance; then by running sums of the weights.
std::vector<DnsRecord> inServiceOrder(std::vector<DnsRecord> records, Draw const& draw)
{
    std::ranges::stable_sort(records, [](DnsRecord const& left, DnsRecord const& right) {
        return std::pair(left.order, left.weight != 0) < std::pair(right.order, right.weight != 0);
    });
    for (auto next = records.begin(); next != records.end(); ++next) {
        auto const end = std::find_if(next, records.end(), [&](auto const& each) { return each.order != next->order; });
        std::uint32_t sum = 0;
        std::for_each(next, end, [&sum](auto const& each) { sum += each.weight; });
        std::uint32_t const drawn = draw(sum);
        std::uint32_t running = 0;
        auto const chosen =
            std::find_if(next, end, [&](auto const& each) { return (running += each.weight) >= drawn; });
        std::rotate(next, chosen, chosen + 1);
    }
    return records;
}

ServerSearch::ServerSearch(EventLoop& loop, Dns& dns, Destination destination, Settings const& settings, Done done)
    : dns_(dns)
    , destination_(std::move(destination))
    , settings_(settings)
    , done_(std::move(done))
    , deadline_(loop)
    , ttl_(kLongestTtl)
{}

void ServerSearch::start()
{
    deadline_.start(kLongestSearch, [this] {
        failure_ = dns_.silence();
        finish(tl::unexpected(refusal()));
    });
    if (destination_.port != 0) {
        hosts_ = {{destination_.host, destination_.port, destination_.transport.value_or(Transport::kUdp)}};
        askAddresses();
    } else if (destination_.transport && destination_.transport != Transport::kTls) {
        services_ = {{rowOf(*destination_.transport).prefix + destination_.host, *destination_.transport}};
        askServices();
    } else {
        auto const self = weak_from_this();
        dns_.ask(destination_.host, DnsType::kNaptr, [self](DnsAnswer const& answer) {
            if (auto const search = self.lock()) {
                search->onPreferences(answer);
            }
        });
    }
}

void ServerSearch::ask(std::string const& name, DnsType type, std::function<void(DnsAnswer const&)> take)
{
    ++unanswered_;
    dns_.ask(name, type, [self = weak_from_this(), take = std::move(take)](DnsAnswer const& answer) {
        if (auto const search = self.lock()) {
            search->note(answer);
            take(answer);
            search->noteAnswer();
        }
    });
}

// The step has one more answer to wait for until here, so that it does not go on while it still asks.
void ServerSearch::whenAnswered(void (ServerSearch::*next)())
{
    next_ = next;
    ++unanswered_;
    noteAnswer();
}

void ServerSearch::noteAnswer()
{
    if (--unanswered_ == 0 && next_ && done_) {
        (this->*std::exchange(next_, nullptr))();
    }
}

void ServerSearch::note(DnsAnswer const& answer)
{
    failure_ = answer.status == DnsStatus::kFailed ? answer.reason : failure_;
    for (auto const& record : answer.records) {
        ttl_ = std::min(ttl_, record.ttl);
    }
}

std::vector<Transport> ServerSearch::transports() const
{
    return destination_.transport ? std::vector<Transport>{*destination_.transport} : settings_.transports;
}

// The services that the domain names, else those of every transport. A server that refuses the question is no reason
// to give up: some know neither type of record.
void ServerSearch::onPreferences(DnsAnswer const& answer)
{
    auto const usable = transports();
    auto records = answer.records;
    std::ranges::stable_sort(records, {}, [](DnsRecord const& each) { return std::pair(each.order, each.weight); });
    for (auto const& record : records) {
        auto const row = std::ranges::find_if(
            kServices, [&record](ServiceRow const& each) { return equalsIgnoringCase(each.service, record.service); });
        bool const isUsable = row != kServices.end() && equalsIgnoringCase(record.flags, "s") &&
                              std::ranges::find(usable, row->transport) != usable.end();
        if (isUsable) {
            services_.push_back({record.target, row->transport});
            ttl_ = std::min(ttl_, record.ttl);
        }
    }
    if (services_.empty()) {
        for (Transport const transport : usable) {
            services_.push_back({rowOf(transport).prefix + destination_.host, transport});
        }
    }
    askServices();
}

void ServerSearch::askServices()
{
    for (std::size_t i = 0; i < services_.size(); ++i) {
        ask(services_[i].name, DnsType::kSrv,
            [this, i](DnsAnswer const& answer) { services_[i].records = answer.records; });
    }
    whenAnswered(&ServerSearch::onServices);
}

void ServerSearch::onServices()
{
    int rank = -1;
    for (auto const& service : services_) {
        std::optional<std::uint16_t> order;
        for (auto const& record : inServiceOrder(service.records, settings_.draw)) {
            // "." says that there is no such service (RFC 2782).
            if (record.target.empty() || record.target == ".") {
                refusesService_ = true;
                continue;
            }
            rank += order == record.order ? 0 : 1;
            order = record.order;
            hosts_.push_back({record.target, record.port, service.transport, rank});
        }
    }
    if (hosts_.empty() && refusesService_) {
        return finish(refuse(RefusalKind::kNotFound, "\"" + destination_.host + "\" offers no SIP service in DNS"));
    }
    if (hosts_.empty()) {
        Transport const transport = transports().front();
        hosts_ = {{destination_.host, rowOf(transport).port, transport}};
    }
    hosts_.resize(std::min(hosts_.size(), kMostHosts));
    askAddresses();
}

void ServerSearch::askAddresses()
{
    failure_.clear();  // without NAPTR and SRV a name has a server at its own address
    for (std::size_t host = 0; host < hosts_.size(); ++host) {
        hosts_[host].addresses.resize(settings_.families.size());
        for (std::size_t family = 0; family < settings_.families.size(); ++family) {
            auto const type = settings_.families[family] == AddressFamily::kIpv4 ? DnsType::kA : DnsType::kAaaa;
            ask(hosts_[host].name, type, [this, host, family](DnsAnswer const& answer) {
                unknown_ = unknown_ || answer.status == DnsStatus::kUnknownName;
                for (auto const& record : answer.records) {
                    hosts_[host].addresses[family].push_back(record.target);
                }
            });
        }
    }
    whenAnswered(&ServerSearch::onAddresses);
}

void ServerSearch::onAddresses()
{
    Result found;
    for (auto const& host : hosts_) {
        for (auto const& addresses : host.addresses) {
            for (auto const& address : addresses) {
                found.places.push_back({{address, host.port, host.transport}, host.rank});
            }
        }
    }
    if (found.places.empty()) {
        return finish(tl::unexpected(refusal()));
    }
    found.ttl = ttl_;
    finish(std::move(found));
}

Refusal ServerSearch::refusal() const
{
    std::string const name = "\"" + destination_.host + "\"";
    if (!failure_.empty()) {
        return {RefusalKind::kUnavailable, "the server " + name + " cannot be looked up: " + failure_};
    }
    if (unknown_) {
        return {RefusalKind::kNotFound, "DNS knows no server " + name};
    }
    return {RefusalKind::kNotFound, name + " has no " + familyText(settings_.families) + "address in DNS"};
}

void ServerSearch::finish(Outcome<Result> result)
{
    deadline_.cancel();
    if (auto const done = std::exchange(done_, nullptr)) {
        done(std::move(result));
    }
}

}  // namespace telephone::sip

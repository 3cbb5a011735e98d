#include "telephone/sip/DnsClient.h"

#include <array>
#include <optional>
#include <utility>

#include "telephone/sip/LocalAddresses.h"

namespace telephone::sip {

namespace {

constexpr std::uint16_t kDnsPort = 53;
constexpr std::uint32_t kMostDnsServers = 8;

std::vector<sa> systemServers()
{
    std::array<char, 256> domain{};
    std::array<sa, kMostDnsServers> servers{};
    std::uint32_t count = kMostDnsServers;
    if (dns_srv_get(domain.data(), domain.size(), servers.data(), &count) != 0) {
        return {};
    }
    return {servers.begin(), servers.begin() + count};
}

std::string orEmpty(char const* text)
{
    return text ? text : "";
}

DnsRecord recordOf(dnsrr const& record)
{
    DnsRecord read;
    read.ttl = std::chrono::seconds(std::max<std::int64_t>(0, record.ttl));
    sa address{};
    switch (static_cast<DnsType>(record.type)) {
    case DnsType::kA:
        sa_set_in(&address, record.rdata.a.addr, 0);
        read.target = hostText(address);
        break;
    case DnsType::kAaaa:
        sa_set_in6(&address, record.rdata.aaaa.addr, 0);
        read.target = hostText(address);
        break;
    case DnsType::kSrv:
        read.target = orEmpty(record.rdata.srv.target);
        read.order = record.rdata.srv.pri;
        read.weight = record.rdata.srv.weight;
        read.port = record.rdata.srv.port;
        break;
    case DnsType::kNaptr:
        read.target = orEmpty(record.rdata.naptr.replace);
        read.order = record.rdata.naptr.order;
        read.weight = record.rdata.naptr.pref;
        read.service = orEmpty(record.rdata.naptr.services);
        read.flags = orEmpty(record.rdata.naptr.flags);
        break;
    }
    return read;
}

DnsAnswer answerOf(DnsType type, dnshdr const& header, list const* answers)
{
    if (header.rcode == DNS_RCODE_NAME_ERR) {
        return {DnsStatus::kUnknownName};
    }
    if (header.rcode != DNS_RCODE_OK) {
        return {DnsStatus::kFailed, {}, std::string("the DNS server refuses: ") + dns_hdr_rcodename(header.rcode)};
    }
    DnsAnswer answer;
    for (le const* element = answers->head; element; element = element->next) {
        auto const* record = static_cast<dnsrr const*>(element->data);
        if (record->type == static_cast<std::uint16_t>(type) && record->dnsclass == DNS_CLASS_IN) {
            answer.records.push_back(recordOf(*record));
        }
    }
    return answer;
}

}  // namespace

DnsClient::DnsClient(std::vector<std::string> servers)
    : configured_(std::move(servers))
{}

DnsClient::~DnsClient() = default;

int DnsClient::prepare()
{
    servers_ = configured_.empty() ? systemServers() : std::vector<sa>();
    for (auto const& text : configured_) {
        if (auto const server = dnsServerOf(text)) {
            servers_.push_back(*server);
        }
    }
    auto const count = static_cast<std::uint32_t>(servers_.size());
    if (count == 0) {
        return ENOENT;
    }
    return client_ ? dnsc_srv_set(client_.get(), servers_.data(), count)
                   : dnsc_alloc(client_.out(), nullptr, servers_.data(), count);
}

void DnsClient::ask(std::string const& name, DnsType type, Answered answered)
{
    if (prepare() != 0) {
        return answered({DnsStatus::kFailed, {}, silence()});
    }
    auto question = std::make_unique<Question>();
    question->client = this;
    question->type = type;
    question->answered = std::move(answered);
    int const error = dnsc_query(question->query.out(), client_.get(), name.c_str(), static_cast<std::uint16_t>(type),
                                 DNS_CLASS_IN, true, onAnswer, question.get());
    if (error) {
        return question->answered({DnsStatus::kFailed, {}, "the question cannot be sent: " + errorText(error)});
    }
    questions_.emplace(question.get(), std::move(question));
}

void DnsClient::onAnswer(int error, dnshdr const* header, list* answers, list* /*authorities*/, list* /*additional*/,
                         void* object)
{
    auto* const asked = static_cast<Question*>(object);
    DnsClient& client = *asked->client;
    DnsAnswer const answer = error || !header ? DnsAnswer{DnsStatus::kFailed, {}, client.silence()}
                                              : answerOf(asked->type, *header, answers);
    auto const question = std::move(client.questions_.extract(asked).mapped());
    question->answered(answer);  // may destroy the client
}

std::string DnsClient::silence() const
{
    if (servers_.empty()) {
        return "this machine has no DNS server; name one in dns.servers";
    }
    std::string asked;
    for (auto const& server : servers_) {
        asked += (asked.empty() ? "" : ", ") + addressText(server);
    }
    return "no DNS server answers (asked " + asked + ")";
}

std::optional<sa> dnsServerOf(std::string const& text)
{
    sa address{};
    if (sa_set_str(&address, text.c_str(), kDnsPort) == 0 || sa_decode(&address, text.c_str(), text.size()) == 0) {
        return address;
    }
    return std::nullopt;
}

}  // namespace telephone::sip

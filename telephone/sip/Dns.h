// What the telephone asks DNS about servers, as plain values, and the interface through which it asks: DnsClient sends
// questions to DNS servers; tests answer them from a table. Used under the loop's lock.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace telephone::sip {

// With their numbers in DNS.
enum class DnsType : std::uint16_t
{
    kA = 1,
    kAaaa = 28,
    kSrv = 33,    // RFC 2782
    kNaptr = 35,  // RFC 3403
};

struct DnsRecord
{
    std::chrono::seconds ttl{};
    std::string target;        // A and AAAA: the address; SRV: the host; NAPTR: the replacement
    std::uint16_t order = 0;   // SRV: the priority; NAPTR: the order; the lowest comes first
    std::uint16_t weight = 0;  // SRV: the weight; NAPTR: the preference, of which the lowest comes first
    std::uint16_t port = 0;    // SRV
    std::string service = {};  // NAPTR: "SIP+D2U"
    std::string flags = {};    // NAPTR: "s" for a replacement that has SRV records
};

enum class DnsStatus : int
{
    kAnswered,     // there may still be no record of the type
    kUnknownName,  // nothing has that name
    kFailed,       // no answer, or a refusal; `reason` says which
};

struct DnsAnswer
{
    DnsStatus status = DnsStatus::kAnswered;
    std::vector<DnsRecord> records = {};  // all of the type asked for
    std::string reason = {};              // "no DNS server answers (asked 192.0.2.1:53)"
};

class Dns
{
public:
    using Answered = std::function<void(DnsAnswer const&)>;

    virtual ~Dns() = default;

    // Calls back once, possibly from within, with the lock held; never after the destructor.
    virtual void ask(std::string const& name, DnsType type, Answered answered) = 0;
    // What a question without an answer in time says: whom it went to, or that there is nobody to ask.
    virtual std::string silence() const = 0;
};

}  // namespace telephone::sip

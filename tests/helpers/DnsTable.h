// DNS for tests: answers from a table, at once or as DNS does, on the loop; and notes what it was asked. A name that is
// not in the table is unknown; a silent one gets no answer.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "telephone/sip/Dns.h"
#include "telephone/sip/EventLoop.h"

namespace telephone::test {

class DnsTable final : public sip::Dns
{
public:
    using Type = sip::DnsType;

    // loop: where answers come; null: at once.
    explicit DnsTable(sip::EventLoop* loop = nullptr)
        : loop_(loop)
    {}

    void address(std::string const& name, std::string const& address, int ttl = 60)
    {
        bool const isIpv6 = address.find(':') != std::string::npos;
        add(name, isIpv6 ? Type::kAaaa : Type::kA, {.ttl = std::chrono::seconds(ttl), .target = address});
    }
    void service(std::string const& name, std::uint16_t priority, std::uint16_t weight, std::uint16_t port,
                 std::string const& host, int ttl = 60)
    {
        add(name, Type::kSrv,
            {.ttl = std::chrono::seconds(ttl), .target = host, .order = priority, .weight = weight, .port = port});
    }
    void preference(std::string const& name, std::uint16_t order, std::uint16_t preference, std::string const& service,
                    std::string const& replacement)
    {
        add(name, Type::kNaptr,
            {.ttl = std::chrono::seconds(60),
             .target = replacement,
             .order = order,
             .weight = preference,
             .service = service,
             .flags = "s"});
    }
    void forget(std::string const& name)
    {
        std::erase_if(records_, [&name](auto const& each) { return each.first.first == name; });
    }
    void fallSilent() { silent_ = true; }

    void ask(std::string const& name, Type type, Answered answered) override
    {
        constexpr auto kTypes = std::to_array<std::pair<Type, char const*>>(
            {{Type::kA, "A"}, {Type::kAaaa, "AAAA"}, {Type::kSrv, "SRV"}, {Type::kNaptr, "NAPTR"}});
        for (auto const& [each, text] : kTypes) {
            if (each == type) {
                asked.push_back(text + (" " + name));
            }
        }
        if (silent_) {
            return;
        }
        auto answer = answerTo(name, type);
        if (loop_ == nullptr) {
            return answered(answer);
        }
        loop_->post([answer = std::move(answer), answered = std::move(answered)] { answered(answer); });
    }
    std::string silence() const override { return "no DNS server answers (asked 192.0.2.53:53)"; }

    std::vector<std::string> asked;  // "SRV _sip._udp.pbx.test"

private:
    sip::DnsAnswer answerTo(std::string const& name, Type type) const
    {
        auto const hasName = [&name](auto const& each) { return each.first.first == name; };
        auto const found = records_.find({name, type});
        if (found != records_.end()) {
            return {sip::DnsStatus::kAnswered, found->second};
        }
        bool const isKnown = std::ranges::any_of(records_, hasName);
        return {isKnown ? sip::DnsStatus::kAnswered : sip::DnsStatus::kUnknownName};
    }
    void add(std::string const& name, Type type, sip::DnsRecord record)
    {
        records_[{name, type}].push_back(std::move(record));
    }

    sip::EventLoop* const loop_;
    std::map<std::pair<std::string, Type>, std::vector<sip::DnsRecord>> records_;
    bool silent_ = false;
};

}  // namespace telephone::test

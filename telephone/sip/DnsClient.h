// Asks DNS servers: those of the configuration, else those of the system, which are read anew for each question, since
// a telephone moves between networks. The stack's client sends the questions, repeats them and turns to the next
// server; it is made for the first question. It does not give up for a minute: whoever asks keeps a timer. Owned by an
// element; used under the lock.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Dns.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

class DnsClient final : public Dns
{
public:
    // servers: "address" or "address:port"; empty: those of the system.
    explicit DnsClient(std::vector<std::string> servers);
    ~DnsClient() override;

    void ask(std::string const& name, DnsType type, Answered answered) override;
    std::string silence() const override;

private:
    struct Question
    {
        DnsClient* client = nullptr;
        DnsType type{};
        Answered answered;
        Ref<dns_query> query;
    };

    // 0, or an error of errno.
    int prepare();
    static void onAnswer(int error, dnshdr const* header, list* answers, list* authorities, list* additional,
                         void* object);

    std::vector<std::string> const configured_;
    std::vector<sa> servers_;
    Ref<dnsc> client_;
    std::map<Question*, std::unique_ptr<Question>> questions_;
};

// The address of a DNS server: "192.0.2.1", "192.0.2.1:5353", "2001:db8::1" or "[2001:db8::1]:5353". Without a port it
// is 53. Nothing if it is not such an address.
std::optional<sa> dnsServerOf(std::string const& text);

}  // namespace telephone::sip

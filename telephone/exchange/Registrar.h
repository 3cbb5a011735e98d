// Who is registered at the exchange and where (RFC 3261 section 10.3), with digest authentication. Owned by the
// exchange; used under the lock.
#pragma once

#include "Exchange.h"
#include "sip/Digest.h"
#include "sip/Message.h"

#include <functional>
#include <map>

namespace telephone::exchange {

class Registrar
{
public:
    // changed: a number got its first contact or lost its last; told after the answer is sent.
    Registrar(const ExchangeConfig& config, std::function<void(const std::string& number)> changed);

    void handle(sip::IncomingRequest& request);
    // The latest first; those whose time is up are not among them.
    std::vector<std::string> contactsOf(const std::string& number);
    // All that are or once were registered.
    std::vector<std::string> numbers() const;
    // Whether that number may be, or once was, registered here.
    bool knows(const std::string& number) const;

private:
    using Clock = std::chrono::steady_clock;
    struct Binding
    {
        std::string contact;  // URI
        std::string callId;
        std::uint32_t sequence = 0;
        Clock::time_point end;
    };

    std::optional<std::string> passwordOf(const std::string& user) const;
    bool authenticate(sip::IncomingRequest& request, const std::string& number);
    bool update(sip::IncomingRequest& request, std::vector<Binding>& bindings);
    bool bind(const sip::IncomingRequest& request, const sip::NameAddr& contact, std::vector<Binding>& bindings);
    void answer(sip::IncomingRequest& request, const std::vector<Binding>& bindings);
    static void forgetExpired(std::vector<Binding>& bindings);

    const ExchangeConfig& config_;
    sip::DigestServer digest_;
    std::function<void(const std::string& number)> changed_;
    std::map<std::string, std::vector<Binding>> bindings_;
};

}  // namespace telephone::exchange

// Who is registered at the exchange and where (RFC 3261 section 10.3), with digest authentication. Owned by the
// exchange; used under the lock.
#pragma once

#include <functional>
#include <map>

#include "telephone/exchange/Exchange.h"
#include "telephone/sip/Digest.h"
#include "telephone/sip/Message.h"

namespace telephone::exchange {

class Registrar
{
public:
    // changed: a number got its first contact or lost its last; told after the answer is sent.
    Registrar(ExchangeConfig const& config, std::function<void(std::string const& number)> changed);

    void handle(sip::IncomingRequest& request);
    // The latest first; those whose time is up are not among them.
    std::vector<std::string> contactsOf(std::string const& number);
    // All that are or once were registered.
    std::vector<std::string> numbers() const;
    // Whether that number may be, or once was, registered here.
    bool knows(std::string const& number) const;

private:
    using Clock = std::chrono::steady_clock;
    struct Binding
    {
        std::string contact;  // URI
        std::string callId;
        std::uint32_t sequence = 0;
        Clock::time_point end;
    };

    std::optional<std::string> passwordOf(std::string const& user) const;
    bool authenticate(sip::IncomingRequest& request, std::string const& number);
    bool update(sip::IncomingRequest& request, std::vector<Binding>& bindings);
    bool bind(sip::IncomingRequest const& request, sip::NameAddr const& contact, std::vector<Binding>& bindings);
    void answer(sip::IncomingRequest& request, std::vector<Binding> const& bindings);
    static void forgetExpired(std::vector<Binding>& bindings);

    ExchangeConfig const& config_;
    sip::DigestServer digest_;
    std::function<void(std::string const& number)> changed_;
    std::map<std::string, std::vector<Binding>> bindings_;
};

}  // namespace telephone::exchange

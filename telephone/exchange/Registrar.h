// The registrar of the exchange (RFC 3261 section 10.3), with digest authentication. Owned by the exchange; used under
// the lock.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/exchange/ExchangeConfig.h"
#include "telephone/sip/Digest.h"
#include "telephone/sip/Message.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::exchange {

// What the registrar does with every REGISTER.
struct RegistrarConduct
{
    enum class Kind
    {
        kAccept,
        kRefuse,
        kRedirect,
        kAway,
        kForget,  // once: then as before
    };
    Kind kind = Kind::kAccept;
    int status = 0;           // of kRefuse
    std::string target = {};  // URI, of kRedirect

    // "refuse 403". kBadInput: the reason names what is possible.
    [[nodiscard]] static Outcome<RegistrarConduct> read(std::string_view text);
    std::string format() const;
};

class Registrar
{
public:
    // changed: the first contact of a number was added or its last one removed; called after the answer is sent.
    Registrar(ExchangeConfig const& config, std::function<void(std::string const& number)> changed);

    void handle(sip::IncomingRequest& request);
    // Accepts at first.
    void setConduct(RegistrarConduct conduct);
    // URIs of all current contacts, the latest first.
    std::vector<std::string> contactsOf(std::string const& number) const;
    std::vector<std::string> registeredNumbers() const;
    // Whether the number is configured or has ever registered.
    bool knows(std::string const& number) const;

private:
    using Clock = SteadyClock;
    struct Binding
    {
        std::string contact;  // URI
        std::string callId;
        std::uint32_t sequence = 0;
        Clock::time_point end;
    };

    void forget();
    // Whether the request is left for the registrar; false: the conduct has dealt with it.
    bool passesConduct(sip::IncomingRequest& request) const;
    // Of the number, for the user named in the credentials; nothing: not the number's user, or it cannot register.
    std::optional<std::string> passwordFor(std::string const& number, std::string const& user) const;
    bool authenticate(sip::IncomingRequest& request, std::string const& number);
    bool update(sip::IncomingRequest& request, std::vector<Binding>& bindings);
    bool bind(sip::IncomingRequest& request, sip::NameAddr const& contact, std::vector<Binding>& bindings);
    void answer(sip::IncomingRequest& request, std::vector<Binding> const& bindings);

    ExchangeConfig const& config_;
    sip::DigestServer digest_;
    std::function<void(std::string const& number)> changed_;
    std::map<std::string, std::vector<Binding>> bindings_;
    RegistrarConduct conduct_;
};

}  // namespace telephone::exchange

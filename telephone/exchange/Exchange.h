// A small call server on loopback, for people who have none: a registrar with digest authentication, redirection
// between the numbers that are registered, numbers that behave in a fixed way (NumberBehaviour.h), pick-up, message
// waiting and the dialogs of a party as event packages. Its owner makes it on the loop that the telephone uses and
// destroys it before that loop ends. Operations may be called on any thread.
//
//     sip::EventLoop loop;  loop.start();
//     Exchange exchange(loop, {});
//     ... register at "sip:" + exchange.hostPort() ...
//
// How the event package "dialog" is served: for its own numbers the exchange tells their calls itself (a number that is
// busy shows one call for as long as it is). Calls between registered numbers do not pass here, since they are
// redirected; so for those it subscribes at the telephone itself and passes on what that tells.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/exchange/NumberBehaviour.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Log.h"

namespace telephone::sip {
class EventLoop;
}

namespace telephone::exchange {

// Prefix of a number whose ringing call is to be picked up, and the number that picks up any ringing call.
constexpr char const* kDirectedPickup = "*97";
constexpr char const* kGroupPickup = "*98";

struct ExchangeUser
{
    std::string number;
    std::string password;
};

struct ExchangeConfig
{
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;  // UDP, and TCP where it is free; 0: chosen
    std::string realm = "exchange";
    std::vector<ExchangeUser> users;                    // who may register
    std::optional<std::string> anyPassword = "secret";  // where set, any other number may, with this password
    std::uint32_t longestExpires = 3600;                // seconds that a registration is granted at most
    std::chrono::seconds nonceLifetime{300};
    sip::Logger log;
};

class Exchange
{
public:
    // Throws std::runtime_error when it cannot bind its port, saying why.
    Exchange(sip::EventLoop& loop, ExchangeConfig config);
    ~Exchange();
    Exchange(Exchange const&) = delete;
    Exchange& operator=(Exchange const&) = delete;

    std::string hostPort() const;  // domain of its numbers, "127.0.0.1:5060"
    std::uint16_t port() const;    // UDP
    std::uint16_t tcpPort() const;

    // Gives a number another behaviour, or makes a new number; std::nullopt takes the number away. Calls that are up go
    // on as they began. Watchers of the number are told when it becomes busy or free by it.
    void setBehaviour(std::string const& number, std::optional<NumberBehaviour> const& behaviour);
    std::optional<NumberBehaviour> behaviourOf(std::string const& number) const;

    // How many messages wait for a number; its subscribers are told. unsolicited: its telephones too, unasked.
    void setMessages(std::string const& number, sip::MessageCounts const& counts, bool unsolicited = false);

    bool isRegistered(std::string const& number) const;
    std::vector<std::string> contactsOf(std::string const& number) const;
    // Calls of its own numbers that ring or talk.
    std::size_t callCount() const;
    // How many watch a number (event package "dialog" or "message-summary").
    std::size_t watcherCount(std::string const& number, std::string const& event) const;
    // Calls a registered number (or any SIP URI) as one of its own numbers and echoes; the call stays until the far end
    // ends it. False, with the reason in the log, when there is nobody to call.
    bool callNumber(std::string const& from, std::string const& to);

    struct Impl;

private:
    std::shared_ptr<Impl> impl_;
};

}  // namespace telephone::exchange

// A small call server on loopback for people who have none: a registrar with digest authentication, redirection between
// registered numbers, numbers that it plays itself (ExchangeNumber.h), pick-up, and the event packages "dialog" and
// "message-summary". Its owner makes it on the telephone's event loop and destroys it while that loop exists.
// Operations may be called on any thread.
//
//     sip::EventLoop loop;  loop.start();
//     Exchange exchange(loop, {});
//     ... register at "sip:" + exchange.hostPort() ...
//
// Event package "dialog": the exchange reports the calls of its own numbers itself; a number that is always busy shows
// one call. Calls between registered numbers are redirected and do not pass through the exchange, so for those it
// subscribes at the telephone and passes on what that reports.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "telephone/exchange/Appearances.h"
#include "telephone/exchange/DeferredWork.h"
#include "telephone/exchange/ExchangeCalls.h"
#include "telephone/exchange/ExchangeConfig.h"
#include "telephone/exchange/ExchangeNumber.h"
#include "telephone/exchange/MessageBoxes.h"
#include "telephone/exchange/Pickups.h"
#include "telephone/exchange/Registrar.h"
#include "telephone/exchange/TelephoneDialogs.h"
#include "telephone/exchange/Watchers.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::exchange {

// The prefix that picks up the call ringing at a number, and the number that picks up any ringing call.
constexpr char const* kDirectedPickup = "*97";
constexpr char const* kGroupPickup = "*98";

class Exchange final : public sip::UserAgentObserver
{
public:
    // Throws std::runtime_error, naming the port and the error, if it cannot bind its port.
    Exchange(sip::EventLoop& loop, ExchangeConfig config);
    ~Exchange() override;
    Exchange(Exchange const&) = delete;
    Exchange& operator=(Exchange const&) = delete;

    // The domain of its numbers, "127.0.0.1:5060".
    std::string hostPort(sip::Transport transport = sip::Transport::kUdp) const { return agent_->hostPort(transport); }
    std::uint16_t port() const { return agent_->udpPort(); }
    std::uint16_t tcpPort() const { return agent_->tcpPort(); }

    // Defines a number, or redefines it. Present calls continue. Watchers of the number are notified.
    void define(ExchangeNumber number);
    void remove(std::string const& number);
    // Defines the steps of a number, which keeps everything else. kBadInput, kNotFound: as readSteps and checkOrder.
    [[nodiscard]] Outcome<> define(std::string const& number, std::string_view steps);
    // Plays steps at once: in a new call if they begin with "seize" or "call" or the number has none, else in its
    // latest call, instead of what is left of that one's steps. Refused as define, and if the first step cannot begin:
    // kLimit without a free appearance.
    [[nodiscard]] Outcome<> play(std::string const& number, std::string_view steps);
    // One row for each number: "107 ring 2s, answer", or its description in place of the steps.
    std::vector<std::string> numbers() const;

    // Sets the number of waiting messages, 0 to 9999 of each kind, and notifies the subscribers. unsolicited: also
    // notifies the number's telephones.
    // kBadInput: a malformed number, or a count out of range; kNotFound: the number is neither configured nor has it
    // ever registered.
    [[nodiscard]] Outcome<> setMessages(std::string const& number, sip::MessageCounts const& counts,
                                        bool unsolicited = false);

    // While the registrar does not accept, the exchange still routes calls, and present registrations last until they
    // expire. A telephone notices when it next registers.
    void setRegistrar(RegistrarConduct conduct);

    bool isRegistered(std::string const& number) const { return !contactsOf(number).empty(); }
    // The latest registration first.
    std::vector<std::string> contactsOf(std::string const& number) const;
    // Ringing and established calls of its own numbers.
    std::size_t callCount() const;
    // Subscribers of a number, for the event package "dialog" or "message-summary".
    std::size_t watcherCount(std::string const& number, std::string const& event) const;
    // Calls the latest telephone of a registered number. The caller may be any other number, also an unknown one, and
    // echoes until the far end hangs up; a call that is not answered ends after ExchangeConfig::longestRinging.
    // displayName: of the caller, UTF-8, at most 255 bytes; may be empty.
    // kBadInput: a malformed number or name, or a number that calls itself; kNotFound: the called number is not
    // registered; kUnavailable: the stack cannot send.
    [[nodiscard]] Outcome<> callNumber(std::string const& from, std::string const& to,
                                       std::string const& displayName = {});

private:
    // No request must be handled before the last member is made.
    Exchange(sip::EventLoop& loop, ExchangeConfig config, std::lock_guard<sip::EventLoop> const& locked);

    bool knowsUser(std::string const& user) override;
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;

    // Whether the caller, a telephone on a shared line, has an appearance for the call; else refuses it.
    bool admit(sip::Session& session);
    void route(std::unique_ptr<sip::Session> session);
    // In the place of a present call, or as the third party in it.
    void takeForCall(std::unique_ptr<sip::Session> session, ExchangeCall& present, bool joins);
    void takeCall(std::unique_ptr<sip::Session> session, std::string const& number);
    void echoInfo(sip::IncomingRequest& request);
    // Null: the exchange does not know it.
    ExchangeNumber const* find(std::string const& number) const;
    // Whether the exchange plays the number itself.
    bool isPlayed(std::string const& number) const;
    // The present call in which steps with this first one are played; null: a new one.
    ExchangeCall* callFor(StepKind first, std::string const& number) const;
    std::string nameOf(std::string const& number) const;
    std::string groupOf(std::string const& number) const;
    std::optional<sip::DialogEntry> lampOf(std::string const& number) const;
    void pickUp(std::unique_ptr<sip::Session> session, std::string const& dialled);
    void registrationChanged(std::string const& number);
    void dialogsChanged(std::string const& number);
    void updateFollowing(std::string const& number);
    std::string dialogDocument(std::string const& number);

    sip::EventLoop& loop_;
    ExchangeConfig config_;
    bool closed_ = false;
    std::unique_ptr<sip::UserAgent> agent_;
    DeferredWork deferred_;
    std::map<std::string, ExchangeNumber> numbers_;
    Registrar registrar_;
    Watchers dialogWatchers_;
    std::map<std::string, std::uint32_t> dialogVersions_;
    MessageBoxes messages_;
    TelephoneDialogs telephoneDialogs_;
    Appearances appearances_;
    ExchangeCalls calls_;
    Pickups pickups_;
};

}  // namespace telephone::exchange

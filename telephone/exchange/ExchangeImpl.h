// The inside of the exchange: it takes what comes to its user agent, finds what the number asks for, and keeps the
// calls, the watchers and the registrations.
#pragma once

#include <list>
#include <map>

#include "telephone/exchange/DialogWatch.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/exchange/ExchangeCall.h"
#include "telephone/exchange/ExchangeCore.h"
#include "telephone/exchange/PendingPickup.h"
#include "telephone/exchange/Registrar.h"
#include "telephone/exchange/Watchers.h"
#include "telephone/sip/EventLoop.h"

namespace telephone::exchange {

struct Exchange::Impl final : ExchangeCore, sip::UserAgentObserver, std::enable_shared_from_this<Exchange::Impl>
{
    Impl(sip::EventLoop& loop, ExchangeConfig settings);
    void close();

    NumberBehaviour const* behaviourOf(std::string const& number) const;
    void setBehaviour(std::string const& number, std::optional<NumberBehaviour> const& behaviour);
    void setMessages(std::string const& number, sip::MessageCounts const& counts, bool unsolicited);
    bool callOut(std::string const& from, std::string const& target, std::optional<sip::Replaces> const& replaces,
                 std::string const& referredBy, std::unique_ptr<sip::Transfer> askedBy);
    std::string resolve(std::string const& target);

    sip::EventLoop& loop() override { return loop_; }
    sip::UserAgent& agent() override { return *agent_; }
    sip::Account accountOf(std::string const& number) const override;
    void changed(std::string const& number) override;
    void drop(ExchangeCall& call) override;
    void transfer(std::string const& number, std::unique_ptr<sip::Transfer> transfer) override;
    void callBack(std::string const& number, sip::NameAddr const& caller, std::string const& contact) override;
    void say(sip::LogLevel level, std::string const& line) const override;

    bool knowsUser(std::string const& user) override;
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;

    ExchangeCall& add(std::string const& number, NumberBehaviour const& behaviour);
    ExchangeCall* findCall(sip::Replaces const& wanted);
    ExchangeCall* findRinging(std::string const& number);
    void replace(std::unique_ptr<sip::Session> session, sip::Replaces const& wanted);
    void pickUp(std::unique_ptr<sip::Session> session, std::string const& number);
    void searchRinging(std::unique_ptr<sip::Session> session, std::vector<std::string> numbers);
    void checkPickups(std::string const& number);
    void takeFound(PendingPickup& pickup, std::string const& number, sip::DialogEntry const& found);
    void forget(PendingPickup& pickup);
    void refuseUnknown(std::unique_ptr<sip::Session> session, std::string const& number);
    void echoInfo(sip::IncomingRequest& request);

    void registrationChanged(std::string const& number);
    void updateWatch(std::string const& number);
    void dropWatch(std::string const& number);
    bool isWatched(std::string const& number) const;
    std::string dialogDocument(std::string const& number);
    std::string messageDocument(std::string const& number) const;
    std::vector<std::string> registeredNumbers();
    void post(std::function<void(Impl&)> work);

    sip::EventLoop& loop_;
    ExchangeConfig config_;
    bool closed_ = false;
    std::map<std::string, NumberBehaviour> behaviours_;
    Registrar registrar_;
    Watchers dialogWatchers_;
    Watchers messageWatchers_;
    std::map<std::string, std::uint32_t> dialogVersions_;
    std::map<std::string, sip::MessageCounts> messages_;
    std::map<std::string, std::unique_ptr<DialogWatch>> watches_;
    std::list<std::unique_ptr<PendingPickup>> pickups_;
    std::list<std::unique_ptr<ExchangeCall>> calls_;
    std::unique_ptr<sip::UserAgent> agent_;
};

}  // namespace telephone::exchange

// The inside of the exchange: it takes what comes to its user agent, finds what the number asks for, and keeps the
// calls, the watchers and the registrations.
#pragma once

#include "DialogWatch.h"
#include "Exchange.h"
#include "ExchangeCall.h"
#include "ExchangeCore.h"
#include "PendingPickup.h"
#include "Registrar.h"
#include "Watchers.h"
#include "sip/EventLoop.h"

#include <list>
#include <map>

namespace telephone::exchange {

struct Exchange::Impl final : ExchangeCore, sip::UserAgentObserver, std::enable_shared_from_this<Exchange::Impl>
{
    Impl(sip::EventLoop& loop, ExchangeConfig settings);
    void close();

    const NumberBehaviour* behaviourOf(const std::string& number) const;
    void setBehaviour(const std::string& number, const std::optional<NumberBehaviour>& behaviour);
    void setMessages(const std::string& number, const sip::MessageCounts& counts, bool unsolicited);
    bool callOut(const std::string& from, const std::string& target, const std::optional<sip::Replaces>& replaces,
                 const std::string& referredBy, std::unique_ptr<sip::Transfer> askedBy);
    std::string resolve(const std::string& target);

    sip::EventLoop& loop() override { return loop_; }
    sip::UserAgent& agent() override { return *agent_; }
    sip::Account accountOf(const std::string& number) const override;
    void changed(const std::string& number) override;
    void drop(ExchangeCall& call) override;
    void transfer(const std::string& number, std::unique_ptr<sip::Transfer> transfer) override;
    void callBack(const std::string& number, const sip::NameAddr& caller, const std::string& contact) override;
    void say(sip::LogLevel level, const std::string& line) const override;

    bool knowsUser(const std::string& user) override;
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;

    ExchangeCall& add(const std::string& number, const NumberBehaviour& behaviour);
    ExchangeCall* findCall(const sip::Replaces& wanted);
    ExchangeCall* findRinging(const std::string& number);
    void replace(std::unique_ptr<sip::Session> session, const sip::Replaces& wanted);
    void pickUp(std::unique_ptr<sip::Session> session, const std::string& number);
    void searchRinging(std::unique_ptr<sip::Session> session, std::vector<std::string> numbers);
    void checkPickups(const std::string& number);
    void takeFound(PendingPickup& pickup, const std::string& number, const sip::DialogEntry& found);
    void forget(PendingPickup& pickup);
    void refuseUnknown(std::unique_ptr<sip::Session> session, const std::string& number);
    void echoInfo(sip::IncomingRequest& request);

    void registrationChanged(const std::string& number);
    void updateWatch(const std::string& number);
    void dropWatch(const std::string& number);
    bool isWatched(const std::string& number) const;
    std::string dialogDocument(const std::string& number);
    std::string messageDocument(const std::string& number) const;
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

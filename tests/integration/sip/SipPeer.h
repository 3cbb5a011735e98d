// A user agent that records its events as short texts, in order, and lets a test wait for them.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::test {

using namespace std::chrono_literals;

constexpr std::chrono::seconds kDeadline{10};

class SipPeer final : public sip::UserAgentObserver,
                      public sip::SessionObserver,
                      public sip::RegistrationObserver,
                      public sip::SubscriptionObserver
{
public:
    explicit SipPeer(sip::EventLoop& loop, std::string number = "4711", sip::UserAgentConfig config = {});
    ~SipPeer() override;

    // Whether the event ("progress 180", "established", "held", "closed rejected 486" ...) occurs within the deadline.
    // It is removed from the record.
    bool waitFor(std::string const& event, std::chrono::milliseconds within = kDeadline);
    // The same for any condition, checked under the lock.
    bool waitUntil(std::function<bool()> const& condition, std::chrono::milliseconds within = kDeadline);
    // The recorded events, for messages of failed tests.
    std::string events() const;
    // Removes all events from the record.
    void forget();

    sip::Session& call(std::string const& target, std::function<void(sip::CallRequest&)> const& change = {});
    sip::Session& session(std::size_t index = 0) const { return *sessions_.at(index); }
    std::size_t sessionCount() const { return sessions_.size(); }
    void dropSession(std::size_t index);
    void registerAt(std::string const& domain, std::string const& password = "secret",
                    std::function<void(sip::Account&)> const& change = {});
    void subscribe(std::string const& target, std::string const& event, std::string const& accept,
                   std::uint32_t expires = 3600);

    sip::EventLoop& loop;
    sip::Account account;
    std::unique_ptr<sip::UserAgent> agent;
    std::unique_ptr<sip::Registration> registration;
    std::unique_ptr<sip::Subscription> subscription;
    std::vector<std::unique_ptr<sip::Transfer>> transfers;
    std::vector<std::unique_ptr<sip::Notifier>> notifiers;
    std::vector<sip::Notification> notifications;
    sip::Closing lastClosing;
    std::string lastFailure;  // of the registration
    sip::Content lastInfo;
    sip::Invitation lastInvitation;
    // Handles an incoming call; by default it rings and is answered.
    std::function<void(SipPeer&, sip::Session&)> whenCalled;

private:
    void note(std::string event) { events_.push_back(std::move(event)); }
    bool takeEvent(std::string const& event);

    bool knowsUser(std::string const& user) override { return user != "unknown"; }
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onUnsolicitedNotify(sip::NameAddr const&, sip::NameAddr const&, sip::Notification const&) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;
    void onProgress(sip::Session&, sip::Response const& response, bool earlyMedia) override;
    void onRemoteIdentity(sip::Session&, sip::NameAddr const& party) override;
    void onRedirected(sip::Session&, std::string const& contact, sip::Response const&) override;
    void onEstablished(sip::Session&) override;
    void onRemoteHold(sip::Session&, bool held, sip::Direction) override;
    void onModified(sip::Session&, bool accepted, int status, std::string const&) override;
    void onPrecedence(sip::Session&, std::string const& resourcePriority) override;
    void onInfo(sip::Session&, sip::Content const& content) override;
    void onDigit(sip::Session&, char digit) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferProgress(sip::Session&, int status, std::string const&, bool ended) override;
    void onClosed(sip::Session&, sip::Closing const& closing) override;
    void onRegistered(sip::Registration&, unsigned expires) override;
    void onRegistrationFailed(sip::Registration&, int status, std::string const&) override;
    void onNotify(sip::Subscription&, sip::Notification const& notification) override;
    void onTerminated(sip::Subscription&, int status, std::string const& reason) override;

    std::vector<std::unique_ptr<sip::Session>> sessions_;
    std::vector<std::string> events_;
};

}  // namespace telephone::test

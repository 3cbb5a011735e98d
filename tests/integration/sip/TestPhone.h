// A bare user agent for the tests: it keeps what happens to it as short texts, in order, and lets a test wait for one.
#pragma once

#include "sip/EventLoop.h"
#include "sip/UserAgent.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace telephone::test {

using namespace std::chrono_literals;

constexpr std::chrono::seconds kDeadline{10};

class TestPhone final : public sip::UserAgentObserver,
                        public sip::SessionObserver,
                        public sip::RegistrationObserver,
                        public sip::SubscriptionObserver
{
public:
    explicit TestPhone(sip::EventLoop& loop, std::string number = "4711", sip::UserAgentConfig config = {});
    ~TestPhone() override;

    // "progress 180", "established", "held", "closed rejected 486" ... True when it happens within the deadline; each
    // event is used up by the wait that finds it.
    bool waitFor(const std::string& event, std::chrono::milliseconds within = kDeadline);
    // The same for any condition, looked at whenever something happens and every few milliseconds.
    bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds within = kDeadline);
    // All that happened and was not waited for, for messages of failed tests.
    std::string events() const;

    sip::Session& call(const std::string& target, const std::function<void(sip::CallRequest&)>& change = {});
    sip::Session& session(std::size_t index = 0) const { return *sessions_.at(index); }
    std::size_t sessionCount() const { return sessions_.size(); }
    void dropSession(std::size_t index);
    void registerAt(const std::string& domain, const std::string& password = "secret",
                    const std::function<void(sip::Account&)>& change = {});
    void subscribe(const std::string& target, const std::string& event, const std::string& accept);

    sip::EventLoop& loop;
    sip::Account account;
    std::unique_ptr<sip::UserAgent> agent;
    std::unique_ptr<sip::Registration> registration;
    std::unique_ptr<sip::Subscription> subscription;
    std::vector<std::unique_ptr<sip::Transfer>> transfers;
    std::vector<std::unique_ptr<sip::Notifier>> notifiers;
    std::vector<sip::Notification> notifications;
    sip::Closing lastClosing;
    sip::Content lastInfo;
    sip::Invitation lastInvitation;
    // What an incoming call meets; by default it rings and is answered.
    std::function<void(TestPhone&, sip::Session&)> whenCalled;

private:
    void note(std::string event);
    bool takeEvent(const std::string& event);

    bool knowsUser(const std::string& user) override { return user != "unknown"; }
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onUnsolicitedNotify(const sip::NameAddr&, const sip::NameAddr&, const sip::Notification&) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;
    void onProgress(sip::Session&, const sip::Response& response, bool earlyMedia) override;
    void onRedirected(sip::Session&, const std::string& contact, const sip::Response&) override;
    void onEstablished(sip::Session&) override;
    void onRemoteHold(sip::Session&, bool held, sip::Direction) override;
    void onModified(sip::Session&, bool accepted, int status, const std::string&) override;
    void onInfo(sip::Session&, const sip::Content& content) override;
    void onDigit(sip::Session&, char digit) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferProgress(sip::Session&, int status, const std::string&, bool ended) override;
    void onClosed(sip::Session&, const sip::Closing& closing) override;
    void onRegistered(sip::Registration&, unsigned expires) override;
    void onRegistrationFailed(sip::Registration&, int status, const std::string&) override;
    void onUnregistered(sip::Registration&) override;
    void onNotify(sip::Subscription&, const sip::Notification& notification) override;
    void onTerminated(sip::Subscription&, int status, const std::string& reason) override;

    std::vector<std::unique_ptr<sip::Session>> sessions_;
    std::vector<std::string> events_;
    std::condition_variable_any happened_;
};

}  // namespace telephone::test

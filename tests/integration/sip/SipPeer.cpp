#include "SipPeer.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

char const* nameOf(sip::CloseCause cause)
{
    switch (cause) {
    case sip::CloseCause::kRemoteHangUp:
        return "remote";
    case sip::CloseCause::kCancelled:
        return "cancelled";
    case sip::CloseCause::kRejected:
        return "rejected";
    case sip::CloseCause::kTimeout:
        return "timeout";
    case sip::CloseCause::kAbandoned:
        return "abandoned";
    case sip::CloseCause::kFailed:
        return "failed";
    }
    return "?";
}

}  // namespace

SipPeer::SipPeer(sip::EventLoop& eventLoop, std::string number, sip::UserAgentConfig config)
    : loop(eventLoop)
{
    std::lock_guard const guard(loop);  // requests may arrive as soon as the agent exists
    agent = std::make_unique<sip::UserAgent>(eventLoop, std::move(config), *this);
    account.user = std::move(number);
    account.domain = agent->hostPort();
    whenCalled = [](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.ring());
        EXPECT_TRUE(session.answer());
    };
}

SipPeer::~SipPeer()
{
    {
        std::lock_guard guard(loop);
        sessions_.clear();
        transfers.clear();
        notifiers.clear();
        subscription.reset();
        registration.reset();
    }
    agent.reset();
}

bool SipPeer::takeEvent(std::string const& event)
{
    auto const found = std::find(events_.begin(), events_.end(), event);
    if (found == events_.end()) {
        return false;
    }
    events_.erase(found);
    return true;
}

bool SipPeer::waitFor(std::string const& event, std::chrono::milliseconds within)
{
    return waitUntil([this, &event] { return takeEvent(event); }, within);
}

bool SipPeer::waitUntil(std::function<bool()> const& condition, std::chrono::milliseconds within)
{
    auto const check = [this, &condition] {
        std::lock_guard const guard(loop);
        return condition();
    };
    return eventually(check, within);
}

std::string SipPeer::events() const
{
    std::lock_guard guard(loop);
    std::string all;
    for (auto const& event : events_) {
        all += "[" + event + "] ";
    }
    return all;
}

void SipPeer::forget()
{
    std::lock_guard const guard(loop);
    events_.clear();
}

sip::Session& SipPeer::call(std::string const& target, std::function<void(sip::CallRequest&)> const& change)
{
    sip::CallRequest request;
    request.account = account;
    request.target = target;
    if (change) {
        change(request);
    }
    std::lock_guard guard(loop);
    auto session = agent->call(request, *this);
    if (!session) {
        throw std::runtime_error(session.error().reason);
    }
    sessions_.push_back(std::move(*session));
    return *sessions_.back();
}

void SipPeer::dropSession(std::size_t index)
{
    std::lock_guard guard(loop);
    sessions_.at(index).reset();
}

void SipPeer::registerAt(std::string const& domain, std::string const& password,
                         std::function<void(sip::Account&)> const& change)
{
    account.domain = domain;
    account.password = password;
    if (change) {
        change(account);
    }
    registration = agent->registerAccount(account, *this);
}

void SipPeer::subscribe(std::string const& target, std::string const& event, std::string const& accept,
                        std::uint32_t expires)
{
    sip::SubscriptionRequest request;
    request.target = target;
    request.event = event;
    request.accept = accept;
    request.expires = expires;
    subscription = agent->subscribe(account, request, *this).value();
}

void SipPeer::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    session->setObserver(this);
    lastInvitation = session->invitation();
    sessions_.push_back(std::move(session));
    note("called");
    whenCalled(*this, *sessions_.back());
}

void SipPeer::onSubscribe(std::unique_ptr<sip::Notifier> notifier)
{
    notifiers.push_back(std::move(notifier));
    note("subscribe");
}

void SipPeer::onUnsolicitedNotify(sip::NameAddr const&, sip::NameAddr const&, sip::Notification const& notification)
{
    notifications.push_back(notification);
    note("unsolicited " + notification.event);
}

void SipPeer::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
{
    if (request->method() != "INFO") {
        return;
    }
    lastInfo = request->content();
    request->reply(200, "OK");
    request.reset();
    note("request INFO");
}

void SipPeer::onProgress(sip::Session&, sip::Response const& response, bool earlyMedia)
{
    note("progress " + std::to_string(response.status) + (earlyMedia ? " early" : ""));
}

void SipPeer::onRemoteIdentity(sip::Session&, sip::NameAddr const& party)
{
    note("identity " + party.displayName + " <" + party.uri.format() + ">");
}

void SipPeer::onRedirected(sip::Session&, std::string const& contact, sip::Response const&)
{
    note("redirected " + contact);
}

void SipPeer::onEstablished(sip::Session&)
{
    note("established");
}

void SipPeer::onRemoteHold(sip::Session&, bool held, sip::Direction)
{
    note(held ? "held" : "resumed");
}

void SipPeer::onModified(sip::Session&, bool accepted, int status, std::string const&)
{
    note((accepted ? "modified " : "refused ") + std::to_string(status));
}

void SipPeer::onPrecedence(sip::Session&, std::string const& resourcePriority)
{
    note("precedence " + resourcePriority);
}

void SipPeer::onInfo(sip::Session&, sip::Content const& content)
{
    lastInfo = content;
    note("info");
}

void SipPeer::onDigit(sip::Session&, char digit)
{
    note(std::string("digit ") + digit);
}

void SipPeer::onTransferRequested(std::unique_ptr<sip::Transfer> transfer)
{
    transfers.push_back(std::move(transfer));
    note("transfer outside a call");
}

void SipPeer::onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer)
{
    transfers.push_back(std::move(transfer));
    note("transfer");
}

void SipPeer::onTransferProgress(sip::Session&, int status, std::string const&, bool ended)
{
    note("transfer " + std::to_string(status) + (ended ? " ended" : ""));
}

void SipPeer::onClosed(sip::Session&, sip::Closing const& closing)
{
    lastClosing = closing;
    std::string const status = closing.status ? " " + std::to_string(closing.status) : "";
    note(std::string("closed ") + nameOf(closing.cause) + status);
}

void SipPeer::onRegistered(sip::Registration&, unsigned expires)
{
    note("registered " + std::to_string(expires));
}

void SipPeer::onRegistrationFailed(sip::Registration&, int status, std::string const& reason)
{
    lastFailure = reason;
    note("unregistered " + std::to_string(status));
}

void SipPeer::onNotify(sip::Subscription&, sip::Notification const& notification)
{
    notifications.push_back(notification);
    note("notify " + notification.event);
}

void SipPeer::onTerminated(sip::Subscription&, int status, std::string const& reason)
{
    note("terminated " + std::to_string(status) + (reason.empty() ? "" : " " + reason));
}

}  // namespace telephone::test

#include "TestPhone.h"

#include <algorithm>

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
    case sip::CloseCause::kFailed:
        return "failed";
    }
    return "?";
}

}  // namespace

TestPhone::TestPhone(sip::EventLoop& eventLoop, std::string number, sip::UserAgentConfig config)
    : loop(eventLoop)
{
    const std::lock_guard guard(loop);  // requests come as soon as there is an agent
    agent = std::make_unique<sip::UserAgent>(eventLoop, std::move(config), *this);
    account.user = std::move(number);
    account.domain = agent->hostPort();
    whenCalled = [](TestPhone&, sip::Session& session) {
        EXPECT_TRUE(session.ring());
        EXPECT_TRUE(session.answer());
    };
}

TestPhone::~TestPhone()
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

void TestPhone::note(std::string event)
{
    events_.push_back(std::move(event));
    happened_.notify_all();
}

bool TestPhone::takeEvent(std::string const& event)
{
    auto const found = std::find(events_.begin(), events_.end(), event);
    if (found == events_.end()) {
        return false;
    }
    events_.erase(found);
    return true;
}

bool TestPhone::waitFor(std::string const& event, std::chrono::milliseconds within)
{
    return waitUntil([this, &event] { return takeEvent(event); }, within);
}

bool TestPhone::waitUntil(std::function<bool()> const& condition, std::chrono::milliseconds within)
{
    auto const deadline = std::chrono::steady_clock::now() + within;
    std::unique_lock lock(loop);
    while (!condition()) {
        auto const now = std::chrono::steady_clock::now();
        if (now >= deadline) {
            return false;
        }
        happened_.wait_until(lock, std::min(deadline, now + 5ms));
    }
    return true;
}

std::string TestPhone::events() const
{
    std::lock_guard guard(loop);
    std::string all;
    for (auto const& event : events_) {
        all += "[" + event + "] ";
    }
    return all;
}

sip::Session& TestPhone::call(std::string const& target, std::function<void(sip::CallRequest&)> const& change)
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

void TestPhone::dropSession(std::size_t index)
{
    std::lock_guard guard(loop);
    sessions_.at(index).reset();
}

void TestPhone::registerAt(std::string const& domain, std::string const& password,
                           std::function<void(sip::Account&)> const& change)
{
    account.domain = domain;
    account.password = password;
    if (change) {
        change(account);
    }
    registration = agent->registerAccount(account, *this);
}

void TestPhone::subscribe(std::string const& target, std::string const& event, std::string const& accept)
{
    sip::SubscriptionRequest request;
    request.target = target;
    request.event = event;
    request.accept = accept;
    subscription = agent->subscribe(account, request, *this).value();
}

void TestPhone::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    session->setObserver(this);
    lastInvitation = session->invitation();
    sessions_.push_back(std::move(session));
    note("called");
    whenCalled(*this, *sessions_.back());
}

void TestPhone::onSubscribe(std::unique_ptr<sip::Notifier> notifier)
{
    notifiers.push_back(std::move(notifier));
    note("subscribe");
}

void TestPhone::onUnsolicitedNotify(sip::NameAddr const&, sip::NameAddr const&, sip::Notification const& notification)
{
    notifications.push_back(notification);
    note("unsolicited " + notification.event);
}

void TestPhone::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
{
    if (request->method() != "INFO") {
        return;
    }
    lastInfo = request->content();
    request->reply(200, "OK");
    request.reset();
    note("request INFO");
}

void TestPhone::onProgress(sip::Session&, sip::Response const& response, bool earlyMedia)
{
    note("progress " + std::to_string(response.status) + (earlyMedia ? " early" : ""));
}

void TestPhone::onRedirected(sip::Session&, std::string const& contact, sip::Response const&)
{
    note("redirected " + contact);
}

void TestPhone::onEstablished(sip::Session&)
{
    note("established");
}

void TestPhone::onRemoteHold(sip::Session&, bool held, sip::Direction)
{
    note(held ? "held" : "resumed");
}

void TestPhone::onModified(sip::Session&, bool accepted, int status, std::string const&)
{
    note((accepted ? "modified " : "refused ") + std::to_string(status));
}

void TestPhone::onInfo(sip::Session&, sip::Content const& content)
{
    lastInfo = content;
    note("info");
}

void TestPhone::onDigit(sip::Session&, char digit)
{
    note(std::string("digit ") + digit);
}

void TestPhone::onTransferRequested(std::unique_ptr<sip::Transfer> transfer)
{
    transfers.push_back(std::move(transfer));
    note("transfer outside a call");
}

void TestPhone::onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer)
{
    transfers.push_back(std::move(transfer));
    note("transfer");
}

void TestPhone::onTransferProgress(sip::Session&, int status, std::string const&, bool ended)
{
    note("transfer " + std::to_string(status) + (ended ? " ended" : ""));
}

void TestPhone::onClosed(sip::Session&, sip::Closing const& closing)
{
    lastClosing = closing;
    const std::string status = closing.status ? " " + std::to_string(closing.status) : "";
    note(std::string("closed ") + nameOf(closing.cause) + status);
}

void TestPhone::onRegistered(sip::Registration&, unsigned expires)
{
    note("registered " + std::to_string(expires));
}

void TestPhone::onRegistrationFailed(sip::Registration&, int status, std::string const&)
{
    note("unregistered " + std::to_string(status));
}

void TestPhone::onUnregistered(sip::Registration&)
{
    note("unregistered");
}

void TestPhone::onNotify(sip::Subscription&, sip::Notification const& notification)
{
    notifications.push_back(notification);
    note("notify " + notification.event);
}

void TestPhone::onTerminated(sip::Subscription&, int status, std::string const& reason)
{
    note("terminated " + std::to_string(status) + (reason.empty() ? "" : " " + reason));
}

}  // namespace telephone::test

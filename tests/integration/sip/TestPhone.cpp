#include "TestPhone.h"

#include <algorithm>

namespace telephone::test {

namespace {

const char* nameOf(sip::CloseCause cause)
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
        session.ring();
        session.answer();
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

bool TestPhone::takeEvent(const std::string& event)
{
    const auto found = std::find(events_.begin(), events_.end(), event);
    if (found == events_.end())
        return false;
    events_.erase(found);
    return true;
}

bool TestPhone::waitFor(const std::string& event, std::chrono::milliseconds within)
{
    return waitUntil([this, &event] { return takeEvent(event); }, within);
}

bool TestPhone::waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds within)
{
    const auto deadline = std::chrono::steady_clock::now() + within;
    std::unique_lock lock(loop);
    while (!condition()) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline)
            return false;
        happened_.wait_until(lock, std::min(deadline, now + 5ms));
    }
    return true;
}

std::string TestPhone::events() const
{
    std::lock_guard guard(loop);
    std::string all;
    for (const auto& event : events_)
        all += "[" + event + "] ";
    return all;
}

sip::Session& TestPhone::call(const std::string& target, const std::function<void(sip::CallRequest&)>& change)
{
    sip::CallRequest request;
    request.account = account;
    request.target = target;
    if (change)
        change(request);
    std::lock_guard guard(loop);
    std::string whyNot;
    auto session = agent->call(request, *this, &whyNot);
    if (!session)
        throw std::runtime_error(whyNot);
    sessions_.push_back(std::move(session));
    return *sessions_.back();
}

void TestPhone::dropSession(std::size_t index)
{
    std::lock_guard guard(loop);
    sessions_.at(index).reset();
}

void TestPhone::registerAt(const std::string& domain, const std::string& password,
                           const std::function<void(sip::Account&)>& change)
{
    account.domain = domain;
    account.password = password;
    if (change)
        change(account);
    registration = agent->registerAccount(account, *this);
}

void TestPhone::subscribe(const std::string& target, const std::string& event, const std::string& accept)
{
    sip::SubscriptionRequest request;
    request.target = target;
    request.event = event;
    request.accept = accept;
    subscription = agent->subscribe(account, request, *this);
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

void TestPhone::onUnsolicitedNotify(const sip::NameAddr&, const sip::NameAddr&, const sip::Notification& notification)
{
    notifications.push_back(notification);
    note("unsolicited " + notification.event);
}

void TestPhone::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
{
    if (request->method() != "INFO")
        return;
    lastInfo = request->content();
    request->reply(200, "OK");
    request.reset();
    note("request INFO");
}

void TestPhone::onProgress(sip::Session&, const sip::Response& response, bool earlyMedia)
{
    note("progress " + std::to_string(response.status) + (earlyMedia ? " early" : ""));
}

void TestPhone::onRedirected(sip::Session&, const std::string& contact, const sip::Response&)
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

void TestPhone::onModified(sip::Session&, bool accepted, int status, const std::string&)
{
    note((accepted ? "modified " : "refused ") + std::to_string(status));
}

void TestPhone::onInfo(sip::Session&, const sip::Content& content)
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

void TestPhone::onTransferProgress(sip::Session&, int status, const std::string&, bool ended)
{
    note("transfer " + std::to_string(status) + (ended ? " ended" : ""));
}

void TestPhone::onClosed(sip::Session&, const sip::Closing& closing)
{
    lastClosing = closing;
    const std::string status = closing.status ? " " + std::to_string(closing.status) : "";
    note(std::string("closed ") + nameOf(closing.cause) + status);
}

void TestPhone::onRegistered(sip::Registration&, unsigned expires)
{
    note("registered " + std::to_string(expires));
}

void TestPhone::onRegistrationFailed(sip::Registration&, int status, const std::string&)
{
    note("unregistered " + std::to_string(status));
}

void TestPhone::onUnregistered(sip::Registration&)
{
    note("unregistered");
}

void TestPhone::onNotify(sip::Subscription&, const sip::Notification& notification)
{
    notifications.push_back(notification);
    note("notify " + notification.event);
}

void TestPhone::onTerminated(sip::Subscription&, int status, const std::string& reason)
{
    note("terminated " + std::to_string(status) + (reason.empty() ? "" : " " + reason));
}

}  // namespace telephone::test

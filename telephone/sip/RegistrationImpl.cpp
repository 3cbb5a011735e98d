#include "telephone/sip/RegistrationImpl.h"

#include <algorithm>
#include <charconv>
#include <mutex>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/trace/TimerStep.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kUsualRegistration = 3600;

std::uint32_t number(std::string const& text, std::uint32_t otherwise)
{
    std::uint32_t value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? value : otherwise;
}

// The stack ends a connection over which nothing has come for 900 seconds, and a server need not answer keep-alives.
constexpr std::chrono::milliseconds kLongestOverConnection{840'000};

// A connection that lasts so long has not been refused.
constexpr std::chrono::seconds kLasting{10};

// Before the registration expires, and never at once.
std::chrono::milliseconds refreshAfter(std::uint32_t expires)
{
    return std::chrono::milliseconds(std::max<std::uint64_t>(500, std::uint64_t{expires} * (expires < 20 ? 500 : 900)));
}

// The addresses of a Service-Route (RFC 3608), without the "lr" that the stack adds itself.
std::vector<std::string> serviceRouteOf(sip_msg const& message)
{
    std::vector<std::string> proxies;
    for (auto const& value : headersOf(message).list("Service-Route")) {
        if (auto proxy = NameAddr::parse(value)) {
            std::erase_if(proxy->uri.parameters, [](auto const& each) { return equalsIgnoringCase(each.first, "lr"); });
            proxies.push_back(proxy->uri.format());
        }
    }
    return proxies;
}

bool isPermanent(int status)
{
    return status == 401 || status == 403 || status == 404 || status == 407;
}

}  // namespace

RegistrationImpl::RegistrationImpl(std::shared_ptr<Element> element, Account account, RegistrationObserver& observer)
    : element_(std::move(element))
    , account_(std::move(account))
    , observer_(observer)
    , due_(element_->loop())
    , silence_(element_->loop())
    , wait_(account_.retryFirst)
    , asked_(account_.expires)
{
    element_->registrations().insert(this);
    element_->lineServers().add(*this, account_.user);
    // Later, because the caller does not hold the registration yet.
    due_.start(std::chrono::milliseconds(0), [this] { send(); });
}

RegistrationImpl::~RegistrationImpl()
{
    std::lock_guard guard(element_->loop());
    connection_.reset();
    element_->registrations().erase(this);
    element_->lineServers().remove(*this);
    element_->distrusted().erase(host_);
    element_->setServiceRoute(account_, {});
    if (request_) {
        request_->abandon();
    }
    if (registered_ && request_ && !element_->isClosed()) {
        (void)request_->send("REGISTER", replyTail({}, {}), 0, {});
    }
}

Outcome<> RegistrationImpl::prepare()
{
    if (request_) {
        return {};
    }
    auto route =
        element_->routeTo(account_, account_.registrar.empty() ? "sip:" + account_.domain : account_.registrar);
    if (!route) {
        return tl::unexpected(route.error());
    }
    route->contactParameters = element_->lineServers().contactParameter(*this);
    auto const made = ClientRequest::make(element_, account_, *route, account_.addressOfRecord());
    if (!made) {
        return tl::unexpected(made.error());
    }
    request_ = *made;
    host_ = route->host;
    if (element_->tls() != nullptr) {
        element_->tls()->addServer(host_);
    }
    return {};
}

void RegistrationImpl::send()
{
    if (auto const prepared = prepare(); !prepared) {
        fail(503, prepared.error().reason);
        return;
    }
    request_->abandon();
    auto const answered = [this](int error, sip_msg const* message) { onAnswer(error, message); };
    Headers const headers = element_->capabilities();
    if (auto const started = request_->send("REGISTER", replyTail(headers, {}), asked_, answered); !started) {
        fail(started.error().kind == RefusalKind::kNotPermitted ? kTlsFailed : 503, started.error().reason);
        return;
    }
    waits_ = true;
    awaitAnswer(account_.answerTimeout);
}

// The time counts from the last server to which the request went.
void RegistrationImpl::awaitAnswer(std::chrono::milliseconds limit)
{
    silence_.start(limit, [this] {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(request_->lastSent() + account_.answerTimeout -
                                                                       SteadyClock::now());
        if (left > std::chrono::milliseconds::zero()) {
            return awaitAnswer(left);
        }
        timerRanOut(PhoneTimer::kRegistrarSilent);
        waits_ = false;
        request_->abandon();
        fail(408, "Request Timeout");
    });
}

// Later, because the stack is in the middle of it. A request to a name may have gone to the next server by then.
void RegistrationImpl::onConnectionEnded(std::string const& host)
{
    if (!waits_ || host != host_) {
        return;
    }
    due_.start(std::chrono::milliseconds(0), [this, sent = request_->lastSent()] {
        if (waits_ && request_->lastSent() == sent) {
            request_->abandon();
            onAnswer(ECONNRESET, nullptr);
        }
    });
}

void RegistrationImpl::onAnswer(int error, sip_msg const* message)
{
    silence_.cancel();
    waits_ = false;
    if (error || !message) {
        Response const failure = request_->failureOf(error);
        fail(failure.status, failure.reason);
        return;
    }
    if (message->scode < 300) {
        onAccepted(*message);
        return;
    }
    std::uint32_t const least = number(headerValue(*message, "Min-Expires"), 0);
    if (message->scode == 423 && least > asked_) {
        asked_ = least;
        send();
        return;
    }
    fail(message->scode, text(message->reason), std::chrono::seconds(number(headerValue(*message, "Retry-After"), 0)));
}

std::uint32_t RegistrationImpl::grantedBy(sip_msg const& message) const
{
    std::uint32_t const usual = number(text(message.expires), kUsualRegistration);
    for (auto const& value : headersOf(message).list("Contact")) {
        auto const contact = NameAddr::parse(value);
        if (contact && contact->uri == Uri::parse(request_->contact())) {
            return number(contact->parameter("expires").value_or(""), usual);
        }
    }
    return number(text(message.expires), asked_);
}

void RegistrationImpl::onAccepted(sip_msg const& message)
{
    element_->distrusted().erase(host_);
    std::uint32_t const granted = grantedBy(message);
    if (granted == 0) {
        fail(503, "the registrar granted 0 seconds");
        return;
    }
    registered_ = true;
    element_->lineServers().answered(*this, message.src);
    element_->setServiceRoute(account_, serviceRouteOf(message));
    watchConnection(message);
    auto const refresh = refreshAfter(granted);
    due_.start(connection_->exists() ? std::min(refresh, kLongestOverConnection) : refresh, [this] {
        timerRanOut(PhoneTimer::kRegistrationRefresh);
        send();
    });
    observer_.onRegistered(*this, granted);
}

void RegistrationImpl::watchConnection(sip_msg const& message)
{
    bool const isNew = !connection_ || !connection_->carried(message);
    connection_.emplace(*element_, message, account_.keepAlive, [this] { onConnectionLost(); });
    if (isNew) {
        connected_ = SteadyClock::now();
    }
    // The pauses go on growing with a server that accepts and then ends each connection at once.
    if (!isNew || !connection_->exists()) {
        wait_ = account_.retryFirst;
    }
}

void RegistrationImpl::onConnectionLost()
{
    connection_.reset();
    element_->log(LogLevel::kInfo, "The connection to the registrar of " + account_.addressOfRecord() +
                                       " has ended; the telephone connects again");
    bool const lasted = SteadyClock::now() - connected_ >= kLasting;
    if (lasted) {
        wait_ = account_.retryFirst;
    }
    silence_.cancel();  // an answer that was due will not come
    waits_ = false;
    retryAfter(lasted ? std::chrono::milliseconds(0) : nextPause());
}

// Between half of the upper limit and all of it, so that telephones do not come back together; the limit doubles.
std::chrono::milliseconds RegistrationImpl::nextPause()
{
    auto const half = wait_ / 2;
    wait_ = std::min(wait_ * 2, account_.retryMax);
    return half + std::chrono::milliseconds(randomNumber() % static_cast<std::uint64_t>(half.count() + 1));
}

void RegistrationImpl::retryAfter(std::chrono::milliseconds pause)
{
    due_.start(pause, [this] {
        timerRanOut(PhoneTimer::kRegistrationRetry);
        send();
    });
}

void RegistrationImpl::fail(int status, std::string const& reason, std::chrono::seconds wanted)
{
    registered_ = false;
    if (status == kTlsFailed) {
        element_->distrusted()[host_] = reason;
    }
    element_->log(LogLevel::kWarning, "Registration of " + account_.addressOfRecord() +
                                          " failed: " + std::to_string(status) + " " + reason);
    if (!isPermanent(status)) {
        auto const pause = nextPause();
        retryAfter(wanted.count() > 0 ? std::chrono::milliseconds(wanted) : pause);
    }
    observer_.onRegistrationFailed(*this, status, reason);
}

}  // namespace telephone::sip

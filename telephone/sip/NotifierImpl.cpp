#include "telephone/sip/NotifierImpl.h"

#include <array>
#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kUsualSubscription = 3600;  // seconds
constexpr std::uint32_t kLongestExpires = 86400;

struct ReasonName
{
    std::string_view name;
    sipevent_reason reason;
};

constexpr auto kReasons = std::to_array<ReasonName>({
    {"deactivated", SIPEVENT_DEACTIVATED},
    {"probation", SIPEVENT_PROBATION},
    {"rejected", SIPEVENT_REJECTED},
    {"timeout", SIPEVENT_TIMEOUT},
    {"giveup", SIPEVENT_GIVEUP},
});

// Any other name, such as "noresource": the state is no longer there.
sipevent_reason reasonOf(std::string_view name)
{
    for (auto const& row : kReasons) {
        if (equalsIgnoringCase(row.name, name)) {
            return row.reason;
        }
    }
    return SIPEVENT_NORESOURCE;
}

sipevent_subst toStack(SubscriptionState state)
{
    switch (state) {
    case SubscriptionState::kPending:
        return SIPEVENT_PENDING;
    case SubscriptionState::kActive:
        return SIPEVENT_ACTIVE;
    case SubscriptionState::kTerminated:
        return SIPEVENT_TERMINATED;
    }
    return SIPEVENT_TERMINATED;
}

}  // namespace

NotifierImpl::NotifierImpl(std::shared_ptr<Element> element, sip_msg const& subscribe, sipevent_event const& event)
    : element_(std::move(element))
    , transaction_(element_, subscribe)
    , event_(text(event.event))
    , headers_(headersOf(subscribe))
{}

NotifierImpl::~NotifierImpl()
{
    std::lock_guard guard(element_->loop());
    if (transaction_.isOpen()) {
        transaction_.answer(489, "Bad Event");
    }
    element_->notifiers().erase(this);
    notifier_.reset();
    dialog_.reset();
    content_.reset();
}

Outcome<> NotifierImpl::accept(std::string const& contentType)
{
    std::lock_guard guard(element_->loop());
    if (!transaction_.isOpen()) {
        return refuse(RefusalKind::kWrongState, "the subscription to " + event_ + " is already answered");
    }
    transaction_.handOver();
    sip_msg const& subscribe = transaction_.request();
    int const error = acceptBy(subscribe, contentType);
    active_ = error == 0;
    if (active_) {
        element_->notifiers().insert(this);
    } else {
        element_->answer(subscribe, 500, "Server Internal Error");
    }
    return sent(error, "the answer to a subscription to " + event_);
}

int NotifierImpl::acceptBy(sip_msg const& subscribe, std::string const& contentType)
{
    std::string const header = headers_.value("Event");
    pl const value = slice(header);
    sipevent_event event{};
    if (int const error = sipevent_event_decode(&event, &value)) {
        return error;
    }
    if (int const error = sip_dialog_accept(dialog_.out(), &subscribe)) {
        return error;
    }
    return sipevent_accept(notifier_.out(), element_->eventSocket(), &subscribe, dialog_.get(), &event, 200, "OK", 0,
                           kUsualSubscription, kLongestExpires, element_->contactUserFor(subscribe).c_str(),
                           contentType.c_str(), answerChallenge, nullptr, false, handlerOf<&NotifierImpl::onClose>,
                           this, nullptr);
}

void NotifierImpl::reject(int status, std::string const& reason, Headers const& headers)
{
    std::lock_guard guard(element_->loop());
    transaction_.answer(status, reason, headers);
}

void NotifierImpl::notify(std::string const& body, SubscriptionState state, std::string const& reason)
{
    std::lock_guard guard(element_->loop());
    if (!active_) {
        return;
    }
    content_.reset();
    if (!body.empty() && !fill(content_, body)) {
        return;
    }
    active_ = state != SubscriptionState::kTerminated;
    element_->logRefusal(sent(sipevent_notify(notifier_.get(), content_.get(), toStack(state), reasonOf(reason), 0),
                              "NOTIFY for " + event_));
}

void NotifierImpl::prepareRefresh(sip_msg const& subscribe)
{
    if (!active_ || !content_ || !refreshed_ || !isOf(subscribe)) {
        return;
    }
    std::string const body = refreshed_();
    mbuf_rewind(content_.get());
    if (mbuf_write_mem(content_.get(), reinterpret_cast<std::uint8_t const*>(body.data()), body.size()) != 0) {
        element_->log(LogLevel::kError, "no memory for the NOTIFY for " + event_);
    }
    mbuf_set_pos(content_.get(), 0);
}

void NotifierImpl::onClose(int /*error*/, sip_msg const* /*message*/)
{
    active_ = false;
    auto const closed = std::exchange(closed_, nullptr);
    if (closed) {
        closed(*this);
    }
}

}  // namespace telephone::sip

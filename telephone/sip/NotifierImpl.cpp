#include "telephone/sip/NotifierImpl.h"

#include <array>
#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kUsualExpires = 3600;  // seconds
constexpr std::uint32_t kLongestExpires = 86400;

struct ReasonName
{
    std::string_view name;
    sipevent_reason reason;
};

constexpr std::array<ReasonName, 6> kReasons{{
    {"deactivated", SIPEVENT_DEACTIVATED},
    {"probation", SIPEVENT_PROBATION},
    {"rejected", SIPEVENT_REJECTED},
    {"timeout", SIPEVENT_TIMEOUT},
    {"giveup", SIPEVENT_GIVEUP},
    {"noresource", SIPEVENT_NORESOURCE},
}};

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

NotifierImpl::NotifierImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& subscribe,
                           sipevent_event const& event)
    : agent_(std::move(agent))
    , event_(text(event.event))
    , headers_(headersOf(subscribe))
{
    subscribe_.share(&subscribe);
    makeCredentials(credentials_, "", "");
    (void)sip_strans_alloc(&transaction_, agent_->stack, &subscribe, nullptr, nullptr);
}

NotifierImpl::~NotifierImpl()
{
    std::lock_guard guard(agent_->loop);
    if (!answered_) {
        (void)reject(489, "Bad Event", {});
    }
}

std::uint32_t NotifierImpl::expires() const
{
    pl const& value = subscribe_.get()->expires;
    return value.p ? pl_u32(&value) : kUsualExpires;
}

bool NotifierImpl::accept(std::string const& contentType)
{
    std::lock_guard guard(agent_->loop);
    if (answered_) {
        return false;
    }
    answered_ = true;
    transaction_ = static_cast<sip_strans*>(mem_deref(transaction_));
    const std::string header = headers_.value("Event");
    const pl value = slice(header);
    sipevent_event event{};
    auto const closed = [](int, sip_msg const*, void* notifier) { static_cast<NotifierImpl*>(notifier)->close(); };
    std::string user = text(subscribe_.get()->uri.user);
    if (user.empty()) {
        user = agent_->config.name;
    }
    int error = sipevent_event_decode(&event, &value);
    if (!error) {
        error = sipevent_accept(notifier_.out(), agent_->eventSocket.get(), subscribe_.get(), nullptr, &event, 200,
                                "OK", 0, kUsualExpires, kLongestExpires, user.c_str(), contentType.c_str(),
                                answerChallenge, credentials_.get(), true, closed, this, nullptr);
    }
    active_ = error == 0;
    if (error) {
        (void)sip_treply(nullptr, agent_->stack, subscribe_.get(), 500, "Server Internal Error");
    }
    return active_;
}

bool NotifierImpl::reject(int status, std::string const& reason, Headers const& headers)
{
    std::lock_guard guard(agent_->loop);
    if (answered_ || status < 300 || status > 699) {
        return false;
    }
    answered_ = true;
    return sip_treplyf(&transaction_, nullptr, agent_->stack, subscribe_.get(), false,
                       static_cast<std::uint16_t>(status), reason.c_str(), "%s", replyTail(headers, {}).c_str()) == 0;
}

bool NotifierImpl::notify(std::string const& body, SubscriptionState state, std::string const& reason)
{
    std::lock_guard guard(agent_->loop);
    Ref<mbuf> content;
    if (!active_ || (!body.empty() && !fill(content, body))) {
        return false;
    }
    if (state == SubscriptionState::kTerminated) {
        active_ = false;
    }
    return sipevent_notify(notifier_.get(), content.get(), toStack(state), reasonOf(reason), 0) == 0;
}

void NotifierImpl::close()
{
    active_ = false;
    auto const closed = std::exchange(closed_, nullptr);
    if (closed) {
        closed(*this);
    }
}

}  // namespace telephone::sip

#include "telephone/sip/TransferImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kShortestNotices = 1;  // seconds
constexpr std::uint32_t kUsualNotices = 180;
constexpr std::uint32_t kLongestNotices = 3600;

}  // namespace

std::unique_ptr<TransferImpl> TransferImpl::read(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& refer,
                                                 sip_dialog* dialog, std::string const& contactUser)
{
    auto const referTo = NameAddr::parse(headerValue(refer, "Refer-To"));
    if (!referTo) {
        (void)sip_treply(nullptr, agent->stack, &refer, 400, "Bad Refer-To");
        return nullptr;
    }
    return std::make_unique<TransferImpl>(std::move(agent), refer, dialog, contactUser, referTo->uri);
}

TransferImpl::TransferImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& refer, sip_dialog* dialog,
                           std::string contactUser, Uri const& referTo)
    : agent_(std::move(agent))
    , contactUser_(std::move(contactUser))
    , referredBy_(headerValue(refer, "Referred-By"))
    , from_(nameAddrOf(refer.from))
    , to_(nameAddrOf(refer.to))
{
    Uri plain = referTo;
    plain.headers.clear();
    target_ = plain.format();
    if (auto const replaces = referTo.header("Replaces")) {
        replaces_ = Replaces::parse(*replaces);
    }
    refer_.share(&refer);
    if (dialog) {
        dialog_.share(dialog);
    }
    makeCredentials(credentials_, "", "");
    (void)sip_strans_alloc(&transaction_, agent_->stack, &refer, nullptr, nullptr);
}

TransferImpl::~TransferImpl()
{
    std::lock_guard guard(agent_->loop);
    if (!answered_) {
        (void)reject(603, "Decline");
    } else if (!ended_) {
        (void)notify(503, "Service Unavailable");
    }
}

bool TransferImpl::accept()
{
    std::lock_guard guard(agent_->loop);
    if (answered_) {
        return false;
    }
    transaction_ = static_cast<sip_strans*>(mem_deref(transaction_));
    auto const closed = [](int, sip_msg const*, void* transfer) {
        static_cast<TransferImpl*>(transfer)->ended_ = true;
    };
    int const error = sipevent_accept(notifier_.out(), agent_->eventSocket.get(), refer_.get(), dialog_.get(), nullptr,
                                      202, "Accepted", kShortestNotices, kUsualNotices, kLongestNotices,
                                      contactUser_.c_str(), "message/sipfrag;version=2.0", answerChallenge,
                                      credentials_.get(), true, closed, this, nullptr);
    answered_ = true;
    ended_ = error != 0;
    if (error) {
        (void)sip_treply(nullptr, agent_->stack, refer_.get(), 500, "Server Internal Error");
        return false;
    }
    return notify(100, "Trying");
}

bool TransferImpl::reject(int status, std::string const& reason)
{
    std::lock_guard guard(agent_->loop);
    if (answered_ || status < 300 || status > 699) {
        return false;
    }
    answered_ = true;
    ended_ = true;
    return sip_treply(&transaction_, agent_->stack, refer_.get(), static_cast<std::uint16_t>(status), reason.c_str()) ==
           0;
}

bool TransferImpl::notify(int status, std::string const& reason)
{
    std::lock_guard guard(agent_->loop);
    if (!answered_ || ended_ || status < 100 || status > 699) {
        return false;
    }
    ended_ = status >= 200;
    return sipevent_notifyf(notifier_.get(), nullptr, ended_ ? SIPEVENT_TERMINATED : SIPEVENT_ACTIVE,
                            SIPEVENT_NORESOURCE, 0, "SIP/2.0 %d %s\r\n", status, reason.c_str()) == 0;
}

}  // namespace telephone::sip

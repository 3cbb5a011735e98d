#include "telephone/sip/TransferImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kShortestNotices = 1;  // seconds
constexpr std::uint32_t kUsualNotices = 180;
constexpr std::uint32_t kLongestNotices = 3600;

}  // namespace

std::unique_ptr<TransferImpl> TransferImpl::read(std::shared_ptr<Element> element, sip_msg const& refer,
                                                 sip_dialog* dialog, std::string const& contactUser)
{
    auto const referTo = NameAddr::parse(headerValue(refer, "Refer-To"));
    if (!referTo) {
        element->answer(refer, 400, "Bad Refer-To");
        return nullptr;
    }
    return std::make_unique<TransferImpl>(std::move(element), refer, dialog, contactUser, referTo->uri);
}

TransferImpl::TransferImpl(std::shared_ptr<Element> element, sip_msg const& refer, sip_dialog* dialog,
                           std::string contactUser, Uri const& referTo)
    : element_(std::move(element))
    , transaction_(element_, refer)
    , contactUser_(std::move(contactUser))
    , referredBy_(headerValue(refer, "Referred-By"))
{
    Uri plain = referTo;
    plain.headers.clear();
    target_ = plain.format();
    if (auto const replaces = referTo.header("Replaces")) {
        replaces_ = Replaces::parse(*replaces);
    }
    if (dialog) {
        dialog_.share(dialog);
    }
}

TransferImpl::~TransferImpl()
{
    std::lock_guard guard(element_->loop());
    if (transaction_.isOpen()) {
        transaction_.answer(603, "Decline");
    } else {
        notify(503, "Service Unavailable");
    }
    notifier_.reset();
    dialog_.reset();
}

Outcome<> TransferImpl::accept()
{
    std::lock_guard guard(element_->loop());
    if (!transaction_.isOpen()) {
        return refuse(RefusalKind::kWrongState, "the transfer to " + target_ + " is already answered");
    }
    transaction_.handOver();
    sip_msg const& refer = transaction_.request();
    auto const closed = [](int, sip_msg const*, void* transfer) {
        static_cast<TransferImpl*>(transfer)->active_ = false;
    };
    int const error =
        sipevent_accept(notifier_.out(), element_->eventSocket(), &refer, dialog_.get(), nullptr, 202, "Accepted",
                        kShortestNotices, kUsualNotices, kLongestNotices, contactUser_.c_str(),
                        "message/sipfrag;version=2.0", answerChallenge, nullptr, false, closed, this, nullptr);
    if (error) {
        element_->answer(refer, 500, "Server Internal Error");
        return sent(error, "the answer to a transfer to " + target_);
    }
    active_ = true;
    notify(100, "Trying");
    return {};
}

void TransferImpl::reject(int status, std::string const& reason)
{
    std::lock_guard guard(element_->loop());
    transaction_.answer(status, reason);
}

void TransferImpl::notify(int status, std::string const& reason)
{
    std::lock_guard guard(element_->loop());
    if (!active_ || status < 100 || status > 699) {
        return;
    }
    active_ = status < 200;
    element_->logRefusal(
        sent(sipevent_notifyf(notifier_.get(), nullptr, active_ ? SIPEVENT_ACTIVE : SIPEVENT_TERMINATED,
                              SIPEVENT_NORESOURCE, 0, "SIP/2.0 %d %s\r\n", status, reason.c_str()),
             "NOTIFY of the transfer to " + target_));
}

}  // namespace telephone::sip

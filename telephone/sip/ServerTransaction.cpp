#include "telephone/sip/ServerTransaction.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

ServerTransaction::ServerTransaction(std::shared_ptr<Element> element, sip_msg const& request, sip_cancel_h* cancelled,
                                     void* argument)
    : element_(std::move(element))
{
    request_.share(&request);
    (void)sip_strans_alloc(&transaction_, element_->stack(), &request, cancelled, argument);
}

ServerTransaction::~ServerTransaction()
{
    std::lock_guard guard(element_->loop());
    handOver();
    request_.reset();
}

void ServerTransaction::answer(int status, std::string const& reason, Headers const& headers, Content const& content)
{
    std::string const what = text(request().met) + " from " + text(request().from.auri) + ": ";
    if (answered_ || status < 100 || status > 699) {
        element_->log(LogLevel::kWarning, what + "answer " + std::to_string(status) + " is ignored");
        return;
    }
    answered_ = status >= 200;
    element_->logRefusal(
        sent(sip_treplyf(&transaction_, nullptr, element_->stack(), request_.get(), false,
                         static_cast<std::uint16_t>(status), reason.c_str(), "%s", replyTail(headers, content).c_str()),
             what + "answer " + std::to_string(status)));
}

void ServerTransaction::handOver()
{
    answered_ = true;
    transaction_ = static_cast<sip_strans*>(mem_deref(transaction_));
}

}  // namespace telephone::sip

#include "telephone/sip/IncomingRequestImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

IncomingRequestImpl::IncomingRequestImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& request)
    : agent_(std::move(agent))
    , headers_(headersOf(request))
    , content_(contentOf(request))
{
    request_.share(&request);
    (void)sip_strans_alloc(&transaction_, agent_->stack, &request, nullptr, nullptr);
}

IncomingRequestImpl::~IncomingRequestImpl()
{
    std::lock_guard guard(agent_->loop);
    if (!answered_) {
        (void)reply(500, "Server Internal Error", {}, {});
    }
    request_.reset();
}

bool IncomingRequestImpl::reply(int status, std::string const& reason, Headers const& headers, Content const& content)
{
    std::lock_guard guard(agent_->loop);
    if (answered_ || status < 200 || status > 699) {
        return false;
    }
    answered_ = true;
    return sip_treplyf(&transaction_, nullptr, agent_->stack, request_.get(), false, static_cast<std::uint16_t>(status),
                       reason.c_str(), "%s", replyTail(headers, content).c_str()) == 0;
}

}  // namespace telephone::sip

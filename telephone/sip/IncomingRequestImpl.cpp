#include "IncomingRequestImpl.h"

#include "EventLoop.h"

#include <mutex>

namespace telephone::sip {

IncomingRequestImpl::IncomingRequestImpl(std::shared_ptr<UserAgent::Impl> agent, const sip_msg& request)
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
    if (!answered_)
        (void)reply(500, "Server Internal Error", {}, {});
    request_.reset();
}

bool IncomingRequestImpl::reply(int status, const std::string& reason, const Headers& headers, const Content& content)
{
    std::lock_guard guard(agent_->loop);
    if (answered_ || status < 200 || status > 699)
        return false;
    answered_ = true;
    return sip_treplyf(&transaction_, nullptr, agent_->stack, request_.get(), false, static_cast<std::uint16_t>(status),
                       reason.c_str(), "%s", replyTail(headers, content).c_str()) == 0;
}

}  // namespace telephone::sip

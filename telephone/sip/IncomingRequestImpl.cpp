#include "telephone/sip/IncomingRequestImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

IncomingRequestImpl::IncomingRequestImpl(std::shared_ptr<Element> element, sip_msg const& request)
    : loop_(element->loop())
    , transaction_(std::move(element), request)
    , headers_(headersOf(request))
    , content_(contentOf(request))
{}

IncomingRequestImpl::~IncomingRequestImpl()
{
    std::lock_guard guard(loop_);
    if (transaction_.isOpen()) {
        transaction_.answer(500, "Server Internal Error");
    }
}

void IncomingRequestImpl::reply(int status, std::string const& reason, Headers const& headers, Content const& content)
{
    std::lock_guard guard(loop_);
    transaction_.answer(status, reason, headers, content);
}

void IncomingRequestImpl::ignore()
{
    std::lock_guard guard(loop_);
    transaction_.handOver();
}

}  // namespace telephone::sip

#include "telephone/sip/IncomingRequestImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/TlsTransport.h"

namespace telephone::sip {

IncomingRequestImpl::IncomingRequestImpl(std::shared_ptr<Element> element, sip_msg const& request)
    : element_(element)
    , transaction_(std::move(element), request)
    , headers_(headersOf(request))
    , content_(contentOf(request))
{}

IncomingRequestImpl::~IncomingRequestImpl()
{
    std::lock_guard guard(element_->loop());
    if (transaction_.isOpen()) {
        transaction_.answer(500, "Server Internal Error");
    }
}

void IncomingRequestImpl::reply(int status, std::string const& reason, Headers const& headers, Content const& content)
{
    std::lock_guard guard(element_->loop());
    transaction_.answer(status, reason, headers, content);
}

void IncomingRequestImpl::useConnectionFor(Uri const& contact)
{
    std::lock_guard guard(element_->loop());
    sa address{};
    auto const port = contact.port == 0 ? std::uint16_t{SIP_PORT_TLS} : contact.port;
    bool const isAddress = sa_set_str(&address, contact.host.c_str(), port) == 0;
    if (isAddress && transaction_.request().tp == SIP_TRANSP_TLS && element_->tls() != nullptr) {
        element_->tls()->addClient(address, transaction_.request().src);
    }
}

void IncomingRequestImpl::ignore()
{
    std::lock_guard guard(element_->loop());
    transaction_.handOver();
}

}  // namespace telephone::sip

// IncomingRequest on a server transaction.
#pragma once

#include "telephone/sip/Message.h"
#include "telephone/sip/ServerTransaction.h"

namespace telephone::sip {

class IncomingRequestImpl final : public IncomingRequest
{
public:
    IncomingRequestImpl(std::shared_ptr<Element> element, sip_msg const& request);
    ~IncomingRequestImpl() override;

    std::string method() const override { return text(transaction_.request().met); }
    std::string requestUri() const override { return text(transaction_.request().ruri); }
    NameAddr from() const override { return nameAddrOf(transaction_.request().from); }
    NameAddr to() const override { return nameAddrOf(transaction_.request().to); }
    std::string callId() const override { return text(transaction_.request().callid); }
    Headers const& headers() const override { return headers_; }
    Content const& content() const override { return content_; }
    void reply(int status, std::string const& reason, Headers const& headers, Content const& content) override;
    void useConnectionFor(Uri const& contact) override;
    void ignore() override;

private:
    std::shared_ptr<Element> element_;
    ServerTransaction transaction_;
    Headers headers_;
    Content content_;
};

}  // namespace telephone::sip

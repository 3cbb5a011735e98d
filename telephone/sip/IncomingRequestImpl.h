// A request outside every dialog, behind the interface.
#pragma once

#include "telephone/sip/Message.h"
#include "telephone/sip/UserAgentImpl.h"

namespace telephone::sip {

class IncomingRequestImpl final : public IncomingRequest
{
public:
    IncomingRequestImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& request);
    ~IncomingRequestImpl() override;

    std::string method() const override { return text(request_.get()->met); }
    std::string requestUri() const override { return text(request_.get()->ruri); }
    NameAddr from() const override { return nameAddrOf(request_.get()->from); }
    NameAddr to() const override { return nameAddrOf(request_.get()->to); }
    std::string callId() const override { return text(request_.get()->callid); }
    Headers const& headers() const override { return headers_; }
    Content const& content() const override { return content_; }
    std::string source() const override { return addressText(request_.get()->src); }
    bool reply(int status, std::string const& reason, Headers const& headers, Content const& content) override;

private:
    std::shared_ptr<UserAgent::Impl> agent_;
    Ref<sip_msg> request_;
    sip_strans* transaction_ = nullptr;
    Headers headers_;
    Content content_;
    bool answered_ = false;
};

}  // namespace telephone::sip

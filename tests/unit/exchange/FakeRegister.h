// A REGISTER that keeps what it was answered with.
#pragma once

#include <string>
#include <utility>

#include "telephone/sip/Message.h"

namespace telephone::exchange {

class FakeRegister final : public sip::IncomingRequest
{
public:
    FakeRegister(std::string const& number, sip::Headers headers, std::string callId = "call")
        : headers_(std::move(headers))
        , callId_(std::move(callId))
    {
        address_.uri.user = number;
        address_.uri.host = "127.0.0.1";
    }

    std::string method() const override { return "REGISTER"; }
    std::string requestUri() const override { return "sip:127.0.0.1"; }
    sip::NameAddr from() const override { return address_; }
    sip::NameAddr to() const override { return address_; }
    std::string callId() const override { return callId_; }
    sip::Headers const& headers() const override { return headers_; }
    sip::Content const& content() const override { return content_; }
    void reply(int status, std::string const& reason, sip::Headers const& headers, sip::Content const&) override
    {
        replied = status;
        replyReason = reason;
        replyHeaders = headers;
    }
    void useConnectionFor(sip::Uri const& contact) override { reachedHere = contact.format(); }
    void ignore() override { ignored = true; }

    int replied = 0;
    std::string replyReason;
    bool ignored = false;
    std::string reachedHere;  // the contact that is reached over the connection of this request
    sip::Headers replyHeaders;

private:
    sip::NameAddr address_;
    sip::Headers headers_;
    sip::Content content_;
    std::string callId_;
};

}  // namespace telephone::exchange

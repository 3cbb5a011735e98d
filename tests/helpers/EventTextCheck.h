// Writes events as applications receive them and compares the texts with the description of the protocol: a
// contradiction fails the test. An event recorder owns one and passes it every event that a test reads.
#pragma once

#include "CommunicationsServiceEventProxy.h"

#include "platform/framework/FrameworkContext.h"
#include "platform/framework/ProxyRequest.h"
#include "telephone/calls/EventPoster.h"

namespace telephone::test {

class EventTextCheck final : private ProxyRequest
{
public:
    EventTextCheck();

    void check(Event const& event);

private:
    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override;
    FrameworkContext& context() override { return context_; }

    FrameworkContext context_;
    CommunicationsServiceEventProxy proxy_;
};

}  // namespace telephone::test

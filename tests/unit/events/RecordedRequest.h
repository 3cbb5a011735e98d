// A proxy request that records its calls.
#pragma once

#include <string>
#include <vector>

#include "platform/framework/FrameworkContext.h"
#include "platform/framework/ProxyRequest.h"

class RecordedRequest : public ProxyRequest
{
public:
    void setProtocol(std::string const& protocolName) override { protocols.push_back(protocolName); }
    void sendEvent(std::string const& message) override { messages.push_back(message); }
    FrameworkContext& context() override { return emptyContext; }

    std::vector<std::string> protocols;
    std::vector<std::string> messages;
    FrameworkContext emptyContext;
};

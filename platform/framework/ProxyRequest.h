// The road from an event proxy to its application. The framework implements and owns it.
#pragma once

#include <string>

class FrameworkContext;

class ProxyRequest
{
public:
    virtual ~ProxyRequest() = default;

    // Binds the request to the protocol of that name; called once, before the first event.
    virtual void setProtocol(std::string const& protocolName) = 0;
    // Delivers one message to the application. MUST NOT block and may be called from any thread; messages arrive in
    // the order of the calls. A message that cannot be delivered is lost without a report.
    virtual void sendEvent(std::string const& message) = 0;
    // The context that the request was made in.
    virtual FrameworkContext& context() = 0;
};

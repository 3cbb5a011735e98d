/// @file
/// The way from an event proxy to its application.
#pragma once

#include <string>

class FrameworkContext;

/// Carries the messages of one proxy. The framework implements and owns it.
class ProxyRequest
{
public:
    /// Destroyed by the framework, after the proxy.
    virtual ~ProxyRequest() = default;

    /// Binds the request to the protocol of that name. Called once, before the first event.
    virtual void setProtocol(std::string const& protocolName) = 0;
    /// Delivers one message to the application. Thread: any; messages arrive in the order of the calls. MUST NOT block:
    /// a message that cannot be delivered is lost without a report.
    virtual void sendEvent(std::string const& message) = 0;
    /// The context that the request was made in.
    /// @return The framework's; valid as long as the request.
    virtual FrameworkContext& context() = 0;
};

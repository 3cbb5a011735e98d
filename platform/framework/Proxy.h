/// @file
/// The base of an event proxy.
#pragma once

#include "platform/framework/Executable.h"

class ProxyRequest;

/// Stands for one subscribed application and turns events into messages. The framework creates one for each interface
/// that an application asks for, with the library's factory, and owns it.
class Proxy : public Executable
{
public:
    /// Does nothing; a proxy is bound by initProxy.
    void init(Context& /*context*/) override {}
    /// Does nothing.
    void shutdown() override {}

    /// Binds the proxy to the request that carries its messages. Called once, before any event; `request` outlives the
    /// use of the proxy.
    virtual void initProxy(ProxyRequest& request) = 0;
};

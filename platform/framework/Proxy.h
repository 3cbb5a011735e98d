// The base of an event proxy: the object that stands for one subscribed application and turns events into messages.
// The framework creates one for each interface that an application asks for, and owns it.
#pragma once

#include "platform/framework/Executable.h"

class ProxyRequest;

class Proxy : public Executable
{
public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}

    // Binds the proxy to the request that carries its messages. Called once, before any event; the request outlives
    // the proxy's use.
    virtual void initProxy(ProxyRequest& request) = 0;
};

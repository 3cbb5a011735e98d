// A proxy that sends callHeld as the real one does and ignores all other events, and a service without operations.
#pragma once

#include "platform/framework/Executable.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/ProxyRequest.h"
#include "tests/doubles/IgnoredEvents.h"

class ProxyDouble : public Proxy, public IgnoredEvents
{
public:
    void initProxy(ProxyRequest& request) override
    {
        request_ = &request;
        request.setProtocol("a protocol");
    }

    void callHeld(std::string const& lineURI, int callID) override
    {
        request_->sendEvent("<Method>CallHeldEvent</Method><LineID>" + lineURI + "</LineID><CallID>" +
                            std::to_string(callID) + "</CallID>");
    }

private:
    ProxyRequest* request_ = nullptr;
};

class ExecutableDouble : public Executable
{
public:
    void init(Context&) override {}
    void shutdown() override {}
};

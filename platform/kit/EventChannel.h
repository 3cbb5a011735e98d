/// @file
/// The way of events to one application.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/framework/Proxy.h"
#include "platform/framework/ProxyRequest.h"

namespace kit {

/// Hands the event texts of one proxy to a function. ServiceHost owns one for each application. Thread: any.
class EventChannel final : public ProxyRequest
{
public:
    /// Takes one event, on the thread that sends it. It must not block and must not throw.
    using Receiver = std::function<void(std::string const& event)>;

    /// Binds a proxy to this channel.
    /// @param context the framework's; outlives the channel
    /// @param proxy carries the events; not null
    /// @param receiver takes them
    EventChannel(FrameworkContext& context, std::unique_ptr<Proxy> proxy, Receiver receiver)
        : context_(context)
        , receiver_(std::move(receiver))
        , proxy_(std::move(proxy))
    {
        proxy_->initProxy(*this);
    }

    /// Nothing depends on the name here.
    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override { receiver_(message); }
    FrameworkContext& context() override { return context_; }

    /// The proxy.
    /// @return Valid as long as the channel.
    Proxy& proxy() { return *proxy_; }

private:
    FrameworkContext& context_;
    Receiver receiver_;
    // Destroyed first: it refers to this object.
    std::unique_ptr<Proxy> proxy_;
};

}  // namespace kit

// One application as the framework knows it: a name, the events that wait for it, and the event proxy that writes them.
// The console, the script player and each connection of the application socket has one, opened at TelephoneContext.
//
// The proxy is made when the channel first subscribes; its messages arrive here, on the event dispatcher's thread, and
// wait in the queue until the owner takes them.
#pragma once

#include <memory>
#include <string>

#include "platform/framework/ProxyRequest.h"
#include "telephone/framework/EventQueue.h"

class Proxy;

namespace telephone {

class Channel : public ProxyRequest
{
public:
    Channel(std::string name, FrameworkContext& context, std::size_t queueLimit, std::function<void()> wake);
    ~Channel() override;

    [[nodiscard]] std::string const& name() const { return name_; }
    [[nodiscard]] EventQueue& events() { return events_; }
    // The protocol that the proxy named; empty before there is a proxy.
    [[nodiscard]] std::string const& protocol() const { return protocol_; }

    void setProtocol(std::string const& protocolName) override { protocol_ = protocolName; }
    void sendEvent(std::string const& message) override { events_.put(message); }
    FrameworkContext& context() override { return context_; }

private:
    friend class TelephoneContext;  // makes and ends the proxy

    std::string const name_;
    FrameworkContext& context_;
    EventQueue events_;
    std::string protocol_;
    std::unique_ptr<Proxy> proxy_;
};

}  // namespace telephone

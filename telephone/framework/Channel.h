// The framework's view of one application: a name, a queue of events, and the event proxy that writes them. The console
// and each connection of the application socket have one; TelephoneContext opens it.
//
// The first subscription creates the proxy. Its messages arrive on the event dispatcher's thread and wait in the queue
// until the owner takes them.
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

    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override { events_.put(message); }
    FrameworkContext& context() override { return context_; }

private:
    friend class TelephoneContext;  // creates and destroys the proxy

    std::string const name_;
    FrameworkContext& context_;
    EventQueue events_;
    std::unique_ptr<Proxy> proxy_;
};

}  // namespace telephone

// The framework's view of one application: a name and a queue of events. The console and each connection of the
// application socket have one; TelephoneContext opens it.
//
// The channel's event proxy writes on the event dispatcher's thread; its messages wait in the queue until the owner
// takes them.
#pragma once

#include <string>
#include <utility>

#include "platform/framework/ProxyRequest.h"
#include "telephone/framework/EventQueue.h"

namespace telephone {

class Channel : public ProxyRequest
{
public:
    Channel(std::string name, FrameworkContext& context, std::size_t queueLimit, std::function<void()> wake)
        : name_(std::move(name))
        , context_(context)
        , events_(queueLimit, std::move(wake))
    {}

    [[nodiscard]] std::string const& name() const { return name_; }
    [[nodiscard]] EventQueue& events() { return events_; }

    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override { events_.put(message); }
    FrameworkContext& context() override { return context_; }

private:
    std::string const name_;
    FrameworkContext& context_;
    EventQueue events_;
};

}  // namespace telephone

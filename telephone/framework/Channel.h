// The framework's view of one application: a name, and a queue of the events that wait for it. The console and each
// connection of the application socket have a channel; TelephoneContext opens it.
//
// The channel's event proxy writes on the event dispatcher's thread; the owner takes the events on its own. The queue
// is bounded, and writing never blocks: when it is full, the oldest event is dropped, which leaves a gap in the
// numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/framework/ProxyRequest.h"

namespace telephone {

struct NumberedEvent
{
    std::uint64_t number = 0;  // from 1
    std::string text;
};

class Channel : public ProxyRequest
{
public:
    // `wake` is called on the writing thread after an event came into the empty queue; it must not block.
    Channel(std::string name, FrameworkContext& context, std::size_t queueLimit, std::function<void()> wake);

    [[nodiscard]] std::string const& name() const { return name_; }
    // Takes the oldest events, at most `most`.
    std::vector<NumberedEvent> take(std::size_t most);
    // The number of events dropped so far.
    [[nodiscard]] std::uint64_t dropped() const;

    void setProtocol(std::string const& /*protocolName*/) override {}
    void sendEvent(std::string const& message) override;
    FrameworkContext& context() override { return context_; }

private:
    std::string const name_;
    FrameworkContext& context_;
    std::size_t const limit_;
    std::function<void()> const wake_;
    mutable std::mutex mutex_;
    std::deque<NumberedEvent> events_;
    std::uint64_t lastNumber_ = 0;
    std::uint64_t dropped_ = 0;
};

}  // namespace telephone

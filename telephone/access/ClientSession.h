// One application's dealings with a telephone, as a way in needs them. Session is that of a telephone; PlayedSession
// that of a recording which stands in for one. One thread uses it; it calls its `wake` on any.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "telephone/access/Message.h"

namespace telephone {

class ClientSession
{
public:
    virtual ~ClientSession() = default;

    // Handles a request, in full or short, or a command, and passes the replies to the sink: to a request its answer,
    // the reasons and the end; to a command its result; or an error. A NUL must follow the text.
    virtual void handle(std::string_view text, MessageSink const& sink) = 0;
    // Passes the events that came to the sink, at most `most`. False: none is left.
    virtual bool takeEvents(std::size_t most, MessageSink const& sink) = 0;
    // Events that were dropped because the session did not take them.
    [[nodiscard]] virtual std::uint64_t dropped() const = 0;
    // Bytes that the application reads a second, while a fault makes it slow; 0: as fast as it does.
    [[nodiscard]] virtual int readingRate() const { return 0; }
    // For the log.
    [[nodiscard]] virtual std::string const& name() const = 0;
};

// Makes a session. The name is unique at every moment. `wake` is called on any thread after events came; it must not
// block. `queuedEvents` limits those of Subscribe that wait.
using SessionFactory = std::function<std::unique_ptr<ClientSession>(std::string name, std::size_t queuedEvents,
                                                                    std::function<void()> wake)>;

}  // namespace telephone

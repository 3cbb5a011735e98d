/// @file
/// The answer of one request, collected.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "platform/framework/InvokerResponse.h"

namespace kit {

/// Keeps the answer of one request. Whoever sends the request owns it. Thread: that of Invoker::handleMessage.
class CollectedAnswer final : public InvokerResponse
{
public:
    /// The answer of a request that comes from the application of that channel.
    explicit CollectedAnswer(std::string channel)
        : channel_(std::move(channel))
    {}

    void finish() override {}
    void sendResponse(char const* answer, int length) override
    {
        text_.assign(answer, static_cast<std::size_t>(length));
    }
    std::string const& channelName() override { return channel_; }

    /// The answer.
    /// @return Empty for a request that has none.
    std::string const& text() const { return text_; }

private:
    std::string channel_;
    std::string text_;
};

}  // namespace kit

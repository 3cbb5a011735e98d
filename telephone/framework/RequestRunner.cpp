#include "telephone/framework/RequestRunner.h"

#include <exception>
#include <limits>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/Refusals.h"

namespace telephone {

namespace {

// The response to one request, alive while the request runs.
class Response : public InvokerResponse
{
public:
    Response(std::string const& channelName, RequestRunner::Reply& reply)
        : channelName_(channelName)
        , reply_(reply)
    {}

    void finish() override { reply_.finished = true; }

    void sendResponse(char const* answer, int length) override
    {
        if (answer != nullptr && length >= 0) {
            reply_.answer.emplace(answer, static_cast<std::size_t>(length));
        }
    }

    std::string const& channelName() override { return channelName_; }

private:
    std::string const& channelName_;
    RequestRunner::Reply& reply_;
};

constexpr char const* kFailure = "sfiFailure";

}  // namespace

RequestRunner::RequestRunner(Executable& service, Invoker& invoker)
    : service_(service)
    , invoker_(invoker)
{}

void RequestRunner::watch(Watcher watcher)
{
    watcher_ = std::move(watcher);
}

void RequestRunner::whenDone(std::function<void()> done)
{
    done_ = std::move(done);
}

RequestRunner::Reply RequestRunner::run(Channel const& channel, std::string_view request)
{
    if (watcher_) {
        watcher_(request);
    }
    Reply reply = invoke(channel, request);
    if (done_) {
        done_();
    }
    return reply;
}

RequestRunner::Reply RequestRunner::invoke(Channel const& channel, std::string_view request)
{
    Reply reply;
    RefusalCollector refusals;
    if (request.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        reportRefusal("requests", {RefusalKind::kLimit, fmt::format("a request of {} bytes is too long: {} are allowed",
                                                                    request.size(), std::numeric_limits<int>::max())});
        return {kFailure, true, refusals.take()};
    }
    Response response(channel.name(), reply);
    try {
        invoker_.handleMessage(&service_, request.data(), static_cast<int>(request.size()), &response);
    } catch (std::exception const& error) {
        reportRefusal("requests", {RefusalKind::kUnavailable, fmt::format("the request failed: {}", error.what())});
        return {kFailure, true, refusals.take()};
    }
    reply.refusals = refusals.take();
    return reply;
}

}  // namespace telephone

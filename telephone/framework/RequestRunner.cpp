#include "framework/RequestRunner.h"

#include <exception>
#include <limits>

#include "framework/Channel.h"
#include "framework/Invoker.h"
#include "framework/InvokerResponse.h"
#include "framework/Log.h"

namespace telephone {

namespace {

// The response of one request, alive while the request runs.
class Response : public InvokerResponse
{
public:
    Response(std::string const& channelName, RequestRunner::Outcome& outcome)
        : channelName_(channelName)
        , outcome_(outcome)
    {}

    void finish() override { outcome_.finished = true; }

    void sendResponse(char const* answer, int length) override
    {
        if (answer != nullptr && length >= 0)
            outcome_.answer.emplace(answer, static_cast<std::size_t>(length));
    }

    std::string const& channelName() override { return channelName_; }

private:
    std::string const& channelName_;
    RequestRunner::Outcome& outcome_;
};

constexpr char const* kFailure = "sfiFailure";

}  // namespace

RequestRunner::RequestRunner(Executable& service, Invoker& invoker)
    : service_(service)
    , invoker_(invoker)
{}

RequestRunner::Outcome RequestRunner::run(Channel const& channel, std::string_view request)
{
    if (request.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        log(kLogFailure, "requests", "a request of {} bytes is refused", request.size());
        return {kFailure, true};
    }
    Outcome outcome;
    Response response(channel.name(), outcome);
    try {
        invoker_.handleMessage(&service_, request.data(), static_cast<int>(request.size()), &response);
    } catch (std::exception const& error) {
        log(kLogFailure, "requests", "a request failed: {}", error.what());
        return {kFailure, true};
    }
    return outcome;
}

}  // namespace telephone

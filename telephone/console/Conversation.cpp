#include "telephone/console/Conversation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>

#include <poll.h>

#include "telephone/console/Transcript.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/TelephoneContext.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kQueuedEvents = 100000;
constexpr std::size_t kEventsAtOnce = 256;
constexpr auto kQuiet = 100ms;
constexpr auto kLongestUnrest = 1000ms;

}  // namespace

Conversation::Conversation(std::string const& name, TelephoneContext& context, RequestRunner& runner,
                           TelephoneControls& controls, Transcript& transcript, int stop)
    : context_(context)
    , controls_(controls)
    , transcript_(transcript)
    , stop_(stop)
    , channel_(context.openChannel(name, kQueuedEvents, [this] { wakeUp_.signal(); }))
    , interpreter_(*channel_, runner, controls, transcript)
{
    auto const reply = runner.run(*channel_, "<Method>Subscribe</Method>");
    if (reply.answer != "sfiSuccess") {
        context_.closeChannel(channel_);
        throw std::runtime_error("the service refuses a subscription to its events; the log says why");
    }
}

Conversation::~Conversation()
{
    context_.closeChannel(channel_);
}

bool Conversation::takeEvents()
{
    wakeUp_.clear();
    bool some = false;
    while (true) {
        auto const events = channel_->take(kEventsAtOnce);
        if (events.empty()) {
            return some;
        }
        some = true;
        lastActivity_ = Clock::now();
        for (NumberedEvent const& each : events) {
            transcript_.event(each.number, each.text);
            if (listener_) {
                listener_(each.text);
            }
        }
    }
}

bool Conversation::waitForEvents(Clock::time_point deadline)
{
    while (!takeEvents()) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left <= 0ms || isStopped()) {
            return false;
        }
        std::array<pollfd, 2> waited{{{wakeUp_.descriptor(), POLLIN, 0}, {stop_, POLLIN, 0}}};
        poll(waited.data(), waited.size(), static_cast<int>(left.count()));
    }
    return true;
}

void Conversation::settle()
{
    auto const end = Clock::now() + kLongestUnrest;
    while (waitForEvents(std::min(end, lastActivity_ + kQuiet))) {
    }
}

bool Conversation::isStopped() const
{
    pollfd query{stop_, POLLIN, 0};
    return poll(&query, 1, 0) > 0;
}

}  // namespace telephone

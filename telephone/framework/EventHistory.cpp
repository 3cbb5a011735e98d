#include "telephone/framework/EventHistory.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "telephone/framework/Channel.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/TelephoneContext.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

constexpr char const* kHistoryChannel = "history";

}  // namespace

EventHistory::EventHistory(TelephoneContext& context, RequestRunner& requests, EventDispatcher const& dispatcher,
                           std::size_t kept)
    : context_(context)
    , dispatcher_(dispatcher)
    , kept_(std::max<std::size_t>(kept, 1))
    , channel_(context.openChannel(kHistoryChannel, 1, [this] { take(); }))
{
    if (requests.run(*channel_, "<Method>Subscribe</Method>").answer != "sfiSuccess") {
        context_.closeChannel(channel_);
        throw std::runtime_error("the service refuses a subscription to its events; the log says why");
    }
}

EventHistory::~EventHistory()
{
    context_.closeChannel(channel_);
}

// Runs as each event arrives, so the channel holds exactly one.
void EventHistory::take()
{
    for (NumberedEvent& each : channel_->take(1)) {
        traceStep("event", [&](TraceStep& step) {
            step.add("number", static_cast<std::int64_t>(dispatcher_.delivering())).add("text", each.text);
        });
        auto event =
            std::make_shared<PastEvent const>(PastEvent{dispatcher_.delivering(), wallTime(), std::move(each.text)});
        std::lock_guard const lock(mutex_);
        events_.push_back(std::move(event));
        if (events_.size() > kept_) {
            forgotten_ = events_.front()->number;
            events_.pop_front();
        }
    }
    std::lock_guard const lock(listening_);
    for (auto const& [id, listener] : listeners_) {
        listener();
    }
}

std::string const& EventHistory::start() const
{
    return dispatcher_.start();
}

std::uint64_t EventHistory::latest() const
{
    return dispatcher_.posted();
}

EventHistory::Portion EventHistory::after(std::uint64_t number, std::size_t most) const
{
    std::lock_guard const lock(mutex_);
    auto const first = std::partition_point(events_.begin(), events_.end(),
                                            [number](auto const& each) { return each->number <= number; });
    auto const count = std::min(static_cast<std::ptrdiff_t>(most), std::distance(first, events_.end()));
    return {forgotten_ > number ? forgotten_ - number : 0, Events(first, first + count)};
}

EventHistory::ListenerId EventHistory::listen(std::function<void()> listener)
{
    std::lock_guard const lock(listening_);
    listeners_.emplace(++lastListener_, std::move(listener));
    return lastListener_;
}

void EventHistory::endListening(ListenerId id)
{
    std::lock_guard const lock(listening_);
    listeners_.erase(id);
}

}  // namespace telephone

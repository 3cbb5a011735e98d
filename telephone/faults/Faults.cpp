#include "telephone/faults/Faults.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/TimerService.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "faults";
constexpr std::size_t kEventsAtOnce = 256;

TraceCause causeOf(FaultOrder const& order, std::string_view state)
{
    return traceStep("fault", [&](TraceStep& step) { step.add("fault", order.text).add("state", state); });
}

}  // namespace

Outcome<> Faults::start(EventHistory& history, std::vector<FaultConfiguration> const& configured)
{
    std::vector<FaultOrder> orders;
    for (auto const& each : configured) {
        auto order = FaultOrder::of(each, targets_);
        if (!order) {
            return tl::unexpected(std::move(order.error()));
        }
        orders.push_back(*std::move(order));
    }
    history_ = &history;
    listener_ = history.listen([this] { noteEvents(); });
    for (FaultOrder& each : orders) {
        arm(std::move(each));
    }
    return {};
}

void Faults::stop()
{
    if (history_ != nullptr) {
        history_->endListening(listener_);
    }
    {
        std::lock_guard const lock(mutex_);
        stopped_ = true;
    }
    end(take([](Fault const&) { return true; }));
}

Outcome<> Faults::add(std::string const& order)
{
    return FaultOrder::read(order, targets_).map([this](FaultOrder read) { arm(std::move(read)); });
}

void Faults::arm(FaultOrder order)
{
    auto const at = order.at;
    bool const waits = at || order.on || order.afterRequests > 0;
    Id id = 0;
    {
        std::lock_guard const lock(mutex_);
        if (stopped_) {
            return;
        }
        id = ++lastId_;
        faults_.push_back({.id = id, .order = std::move(order), .lastSeen = history_->latest()});
    }
    if (!waits) {
        begin(id);
    } else if (at) {
        time(id, *at, &Faults::begin);
    }
}

Faults::Fault* Faults::find(Id id)
{
    auto const found = std::ranges::find(faults_, id, &Fault::id);
    return found == faults_.end() ? nullptr : &*found;
}

void Faults::time(Id id, std::chrono::milliseconds after, void (Faults::*run)(Id))
{
    std::lock_guard const lock(mutex_);
    if (Fault* const fault = find(id)) {
        fault->timer = timers_.start(after, [this, id, run] { (this->*run)(id); });
    }
}

void Faults::begin(Id id)
{
    std::unique_lock lock(mutex_);
    Fault* const fault = find(id);
    if (fault == nullptr || fault->isActive) {
        return;
    }
    fault->isActive = true;
    FaultOrder const order = fault->order;
    lock.unlock();
    end(take([&](Fault const& each) { return each.isActive && each.id != id && each.order.kind == order.kind; }));
    log(kLogInfo, kComponent, "{} begins", order.text);
    TraceScope const scope(causeOf(order, "begins"));
    order.effect.begin(
        {[](std::string const& what) { log(kLogInfo, kComponent, "{}", what); }, [this, id] { endNow(id); }});
    if (wasEnded(id)) {
        order.effect.end();  // on another thread, which may have ended it before it began
    } else if (order.lasts) {
        time(id, *order.lasts, &Faults::endNow);
    }
}

bool Faults::wasEnded(Id id)
{
    std::lock_guard const lock(mutex_);
    return find(id) == nullptr;
}

void Faults::endNow(Id id)
{
    end(take([id](Fault const& each) { return each.id == id; }));
}

template <typename Predicate>
Faults::Taken Faults::take(Predicate isMeant)
{
    std::lock_guard const lock(mutex_);
    Taken taken;
    for (auto each = faults_.begin(); each != faults_.end();) {
        auto const next = std::next(each);
        if (isMeant(*each)) {
            taken.splice(taken.end(), faults_, each);
        }
        each = next;
    }
    return taken;
}

void Faults::end(Taken faults)
{
    for (Fault const& each : faults) {
        if (each.timer != 0) {
            timers_.cancel(each.timer);
        }
        if (each.isActive) {
            TraceScope const scope(causeOf(each.order, "ends"));
            auto const did = each.order.effect.end();
            log(kLogInfo, kComponent, "{} ends{}{}", each.order.text, did.empty() ? "" : "; ", did);
        } else {
            log(kLogInfo, kComponent, "{} is called off", each.order.text);
        }
    }
}

Outcome<> Faults::end(std::string const& name)
{
    auto taken =
        take([&name](Fault const& each) { return name.empty() || equalIgnoringCase(each.order.kind->name, name); });
    if (taken.empty() && !name.empty()) {
        auto const names = namesOf(faultKinds(), &FaultKind::name);
        return refuse(RefusalKind::kNotFound,
                      fmt::format("no fault \"{}\" is active or waiting{}", name,
                                  findFaultKind(name) == nullptr ? suggestion(name, names) : std::string()));
    }
    end(std::move(taken));
    return {};
}

std::vector<std::string> Faults::rows() const
{
    std::lock_guard const lock(mutex_);
    std::vector<std::string> rows;
    for (Fault const& each : faults_) {
        rows.push_back((each.isActive ? "active: " : "waiting: ") + each.order.text);
    }
    return rows;
}

void Faults::noteActivity()
{
    std::vector<Id> due;
    {
        std::lock_guard const lock(mutex_);
        for (Fault& each : faults_) {
            if (each.order.afterRequests > 0 && --each.order.afterRequests == 0) {
                due.push_back(each.id);
            }
        }
    }
    std::ranges::for_each(due, [this](Id id) { begin(id); });
}

std::optional<std::uint64_t> Faults::eventsSeen() const
{
    std::lock_guard const lock(mutex_);
    std::optional<std::uint64_t> seen;
    for (Fault const& each : faults_) {
        if (each.order.on && !each.isActive) {
            seen = std::min(seen.value_or(each.lastSeen), each.lastSeen);
        }
    }
    return seen;
}

// Under the lock of the listeners, so the timers' thread does the rest.
void Faults::noteEvents()
{
    if (eventsSeen()) {
        timers_.start(std::chrono::milliseconds(0), [this] { readEvents(); });
    }
}

void Faults::readEvents()
{
    auto const seen = eventsSeen();
    if (!seen) {
        return;
    }
    auto const events = history_->after(*seen, kEventsAtOnce).events;
    std::vector<Id> due;
    {
        std::lock_guard const lock(mutex_);
        for (Fault& each : faults_) {
            for (auto const& event : events) {
                // One that is active does not begin again.
                if (each.order.on && event->number > each.lastSeen && each.order.on->matches(event->text)) {
                    due.push_back(each.id);
                }
            }
            each.lastSeen = events.empty() ? each.lastSeen : std::max(each.lastSeen, events.back()->number);
        }
    }
    std::ranges::for_each(due, [this](Id id) { begin(id); });
}

}  // namespace telephone

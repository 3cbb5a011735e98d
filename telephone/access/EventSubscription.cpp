#include "telephone/access/EventSubscription.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/EventPattern.h"
#include "telephone/base/Names.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

bool isOnLine(std::string_view place, std::string const& line)
{
    return place.starts_with(line) && (place.size() == line.size() || place[line.size()] == '#');
}

}  // namespace

EventSubscription::EventSubscription(EventHistory const& history, EventSelection selection)
    : history_(history)
    , selection_(std::move(selection))
{}

bool EventSubscription::take(std::size_t most, StateSource const& state, MessageSink const& sink)
{
    // A number that this telephone has not reached yet is one of an earlier start.
    bool const isOfAnotherStart = selection_.after > history_.latest();
    EventHistory::Portion const portion = history_.after(isOfAnotherStart ? 0 : selection_.after, most);
    if (isOfAnotherStart || portion.missed > 0) {
        reportGap(portion.missed, state, sink);
        return true;
    }
    for (auto const& event : portion.events) {
        selection_.after = event->number;
        if (wants(event->text)) {
            sink({MessageKind::kEvent, event->text, event->number, event->time});
        }
    }
    return !portion.events.empty();
}

void EventSubscription::reportGap(std::uint64_t missed, StateSource const& state, MessageSink const& sink)
{
    State const now = state();
    sink({MessageKind::kGap, missed > 0 ? fmt::format(R"({{"first":{},"last":{}}})", selection_.after + 1, now.event)
                                        : std::string(R"({"first":1,"last":)") + std::to_string(now.event) + "}"});
    sink({MessageKind::kState, now.json, now.event});
    selection_.after = now.event;
}

bool EventSubscription::wants(std::string_view event) const
{
    if (selection_.names.empty() && selection_.lines.empty()) {
        return true;
    }
    auto const read = readEvent(event);
    if (!read) {
        return true;
    }
    auto const& names = selection_.names;
    auto const& lines = selection_.lines;
    std::string_view const place = read->line();
    return (names.empty() || std::find(names.begin(), names.end(), read->description->method) != names.end()) &&
           (lines.empty() || std::any_of(lines.begin(), lines.end(),
                                         [place](std::string const& line) { return isOnLine(place, line); }));
}

Outcome<std::vector<std::string>> eventMethods(std::vector<std::string> const& names)
{
    std::vector<std::string> methods;
    for (std::string const& name : names) {
        EventDescription const* const event = findEvent(name);
        if (event == nullptr) {
            return refuse(RefusalKind::kNotFound, "no event " + name + suggestion(name, eventNames()));
        }
        methods.emplace_back(event->method);
    }
    return methods;
}

}  // namespace telephone

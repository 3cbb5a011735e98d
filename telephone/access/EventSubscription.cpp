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

bool selects(EventSelection const& selection, std::string_view event)
{
    auto const& names = selection.names;
    auto const& lines = selection.lines;
    if (names.empty() && lines.empty()) {
        return true;
    }
    auto const read = readEvent(event);
    if (!read) {
        return true;
    }
    std::string_view const place = read->line();
    return (names.empty() || std::find(names.begin(), names.end(), read->description->method) != names.end()) &&
           (lines.empty() || std::any_of(lines.begin(), lines.end(),
                                         [place](std::string const& line) { return isOnLine(place, line); }));
}

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
        if (selects(selection_, event->text)) {
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

std::vector<std::string> commaSeparated(std::string_view names)
{
    std::vector<std::string> list;
    while (!names.empty()) {
        auto const comma = std::min(names.find(','), names.size());
        if (comma > 0) {
            list.emplace_back(names.substr(0, comma));
        }
        names.remove_prefix(std::min(names.size(), comma + 1));
    }
    return list;
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

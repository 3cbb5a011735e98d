#include "telephone/access/EventPattern.h"

#include <algorithm>
#include <array>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/RequestShorthand.h"
#include "telephone/base/Names.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

constexpr std::array<std::string_view, 4> kLineTags{"LineID", "lineURI", "deviceId", "Line"};

std::string flagNumber(std::string const& value)
{
    if (equalIgnoringCase(value, "true")) {
        return "1";
    }
    return equalIgnoringCase(value, "false") ? "0" : value;
}

// The value as an event carries it. The service passes every number on, so a number needs no name.
Outcome<std::string> carriedValue(EventElement const& element, std::string const& typed)
{
    if (element.kind == EventElementKind::flag) {
        return flagNumber(typed);
    }
    bool const isNumber = element.kind == EventElementKind::integer && wholeNumber(typed);
    if (element.values == nullptr || isNumber) {
        return typed;
    }
    return findValue(*element.values, typed).map([&](EnumerationValue const* value) {
        return textOfValue(*element.values, *value);
    });
}

bool namesLine(std::string_view tag)
{
    return std::any_of(kLineTags.begin(), kLineTags.end(),
                       [&](std::string_view each) { return equalIgnoringCase(each, tag); });
}

bool isMeant(EventElement const& element, std::string_view name)
{
    return equalIgnoringCase(element.tag, name) || (namesLine(element.tag) && namesLine(name)) ||
           (element.tag == "CallState" && equalIgnoringCase(name, "State"));
}

}  // namespace

EventDescription const* findEvent(std::string_view name)
{
    for (EventDescription const& each : kEventDescriptions) {
        std::string const suffixed = std::string(name) + "Event";
        bool const isNamed = equalIgnoringCase(each.method, name) || equalIgnoringCase(each.operation, name) ||
                             equalIgnoringCase(each.method, suffixed);
        if (!each.method.empty() && isNamed) {
            return &each;
        }
    }
    return nullptr;
}

std::vector<std::string_view> eventNames()
{
    auto names = namesOf(kEventDescriptions, &EventDescription::method);
    std::erase(names, "");
    return names;
}

Outcome<EventPattern> EventPattern::parse(Words const& words, std::size_t first)
{
    if (first >= words.size()) {
        return refuse(RefusalKind::kBadInput, "the name of an event is missing");
    }
    EventDescription const* const event = findEvent(words[first]);
    if (event == nullptr) {
        return refuse(RefusalKind::kNotFound, "no event " + words[first] + suggestion(words[first], eventNames()));
    }
    EventPattern pattern(*event);
    for (std::size_t i = first + 1; i < words.size(); ++i) {
        auto const assignment = splitAssignment(words[i]);
        if (!assignment) {
            return refuse(RefusalKind::kBadInput,
                          "\"" + words[i] + "\" is not understood: write Tag=value, or within SECONDS");
        }
        if (auto required = pattern.require(assignment->name, assignment->value); !required) {
            return tl::unexpected(std::move(required.error()));
        }
    }
    return pattern;
}

Outcome<> EventPattern::require(std::string const& name, std::string const& value)
{
    for (EventElement const& each : event_->elements) {
        if (isMeant(each, name)) {
            return carriedValue(each, value).map([&](std::string const& carried) {
                required_.push_back({std::string(each.tag), carried});
            });
        }
    }
    auto const tags = namesOf(event_->elements, &EventElement::tag);
    return refuse(RefusalKind::kBadInput,
                  fmt::format("{} has no {}; it has {}", event_->method, name,
                              tags.empty() ? "nothing" : fmt::format("{}", fmt::join(tags, ", "))));
}

bool EventPattern::matches(std::string_view event) const
{
    return elementValue(event, "Method") == event_->method &&
           std::all_of(required_.begin(), required_.end(),
                       [&](Assignment const& each) { return elementValue(event, each.name) == each.value; });
}

}  // namespace telephone

#include "telephone/access/EventPattern.h"

#include <algorithm>
#include <array>

#include <spdlog/fmt/fmt.h>

#include "platform/sfi/SfiTypes.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/base/Names.h"

namespace telephone {

namespace {

struct StateName
{
    int state;
    std::string_view name;
};

constexpr std::array<StateName, 16> kStateNames{{
    {sfiCallStateIdle, "idle"},
    {sfiCallStateDialling, "dialling"},
    {sfiCallStateProceeding, "proceeding"},
    {sfiCallStateRemoteRinging, "remoteRinging"},
    {sfiCallStateIncoming, "incoming"},
    {sfiCallStateRinging, "ringing"},
    {sfiCallStateConnected, "connected"},
    {sfiCallStateHeld, "held"},
    {sfiCallStateRemotelyHeld, "remotelyHeld"},
    {sfiCallStateHeldByBoth, "heldByBoth"},
    {sfiCallStateConference, "conference"},
    {sfiCallStateTransferring, "transferring"},
    {sfiCallStateClearing, "clearing"},
    {sfiCallStateBusy, "busy"},
    {sfiCallStateFailed, "failed"},
    {sfiCallStateAccepted, "accepted"},
}};

constexpr std::array<std::string_view, 4> kLineTags{"LineID", "lineURI", "deviceId", "Line"};

constexpr std::string_view kStatePrefix = "sfiCallState";

std::string stateNumber(std::string const& value)
{
    std::string_view name = value;
    if (name.starts_with(kStatePrefix)) {
        name.remove_prefix(kStatePrefix.size());
    }
    for (StateName const& each : kStateNames) {
        if (equalIgnoringCase(each.name, name)) {
            return std::to_string(each.state);
        }
    }
    return value;
}

std::string flagNumber(std::string const& value)
{
    if (equalIgnoringCase(value, "true")) {
        return "1";
    }
    return equalIgnoringCase(value, "false") ? "0" : value;
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
            bool const isFlag = each.kind == EventElementKind::flag;
            required_.push_back({std::string(each.tag), each.tag == "CallState" ? stateNumber(value)
                                                        : isFlag                ? flagNumber(value)
                                                                                : value});
            return {};
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

std::string_view callStateName(int state)
{
    auto const found = std::find_if(kStateNames.begin(), kStateNames.end(),
                                    [&](StateName const& each) { return each.state == state; });
    return found == kStateNames.end() ? std::string_view() : found->name;
}

}  // namespace telephone

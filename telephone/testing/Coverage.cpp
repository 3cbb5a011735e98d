#include "telephone/testing/Coverage.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>

#include <nlohmann/json.hpp>
#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"
#include "telephone/access/RequestReasons.h"
#include "telephone/base/Touched.h"
#include "telephone/physical/KeyLayout.h"
#include "telephone/physical/LampBoard.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

using NameSet = std::set<std::string>;

constexpr char const* kRequests = "requests";
constexpr char const* kEvents = "events";
constexpr char const* kValues = "values";

// --- what there is

NameSet allRequests()
{
    NameSet names;
    for (RequestDescription const& each : kRequestDescriptions) {
        names.emplace(each.name);
    }
    return names;
}

NameSet allEvents()
{
    NameSet names;
    for (EventDescription const& each : kEventDescriptions) {
        if (each.source == EventSource::telephone) {
            names.emplace(each.method);
        }
    }
    return names;
}

std::string nameOf(Enumeration const& values, EnumerationValue const& value)
{
    return fmt::format("{} {}", values.name, value.name);
}

NameSet allValues()
{
    NameSet names;
    for (Enumeration const* const each : kEnumerations) {
        for (EnumerationValue const& value : *each) {
            names.insert(nameOf(*each, value));
        }
    }
    return names;
}

NameSet allKeys()
{
    NameSet names;
    for (KeyFunctionRow const& each : keyFunctionRows()) {
        names.emplace(each.name);
    }
    return names;
}

NameSet allLamps()
{
    auto const names = lampModes();
    return {names.begin(), names.end()};
}

NameSet allTimers()
{
    return {kPhoneTimerNames.begin(), kPhoneTimerNames.end()};
}

NameSet allReasons()
{
    auto const names = reasonRules();
    return {names.begin(), names.end()};
}

struct KindRow
{
    char const* name;
    NameSet (*all)();
    std::optional<Touched> place;  // nothing: seen in the messages
};

// In the order of the table.
constexpr std::array kKinds{
    KindRow{kRequests, allRequests, {}},
    KindRow{kEvents, allEvents, {}},
    KindRow{kValues, allValues, {}},
    KindRow{"keys", allKeys, Touched::kKey},
    KindRow{"lamps", allLamps, Touched::kLamp},
    KindRow{"timers", allTimers, Touched::kTimer},
    KindRow{"reasons", allReasons, Touched::kReason},
};

Coverage::Names everything()
{
    Coverage::Names names;
    for (KindRow const& kind : kKinds) {
        names[kind.name] = kind.all();
    }
    return names;
}

// --- how it is written

constexpr std::string_view kIndent = "    ";

// "    a, b,\n    c\n"
std::string wrapped(NameSet const& names, std::size_t width)
{
    std::string text;
    std::string line;
    for (std::string const& name : names) {
        bool const fits = kIndent.size() + line.size() + name.size() + 2 < width;
        if (!line.empty() && !fits) {
            text += fmt::format("{}{}\n", kIndent, line.substr(0, line.size() - 1));
            line.clear();
        }
        line += name + ", ";
    }
    return line.empty() ? text : text + fmt::format("{}{}\n", kIndent, line.substr(0, line.size() - 2));
}

}  // namespace

Coverage::Coverage()
    : all_(everything())
{}

void Coverage::note(Message const& message)
{
    switch (message.kind) {
    case MessageKind::kRequest:
        return noteRequest(message.text);
    case MessageKind::kAnswer:
        return noteAnswer(message.text);
    case MessageKind::kEvent:
        return noteEvent(message.text);
    case MessageKind::kFinished:
    case MessageKind::kError:
    case MessageKind::kResult:
    case MessageKind::kReason:
    case MessageKind::kGap:
    case MessageKind::kState:
        return;
    }
}

void Coverage::noteRequest(std::string_view text)
{
    request_.clear();
    RequestDescription const* request = nullptr;
    while (auto const element = takeElement(text)) {
        if (request == nullptr) {
            request = findRequestDescription(element->value);
            continue;
        }
        for (RequestParameter const& each : request->parameters) {
            if (each.tag == element->name) {
                noteValue(each.values, element->value);
            }
        }
    }
    if (request != nullptr) {
        request_ = request->name;
        touched_[kRequests].insert(request_);
    }
}

void Coverage::noteAnswer(std::string_view text)
{
    RequestDescription const* const request = findRequestDescription(request_);
    if (request == nullptr) {
        return;
    }
    auto const comma = text.find(',');
    noteValue(&enumerations::kResult, text.substr(0, comma));
    if (comma != std::string_view::npos && request->answerElements.size() == 1) {
        noteValue(request->answerElements.begin()->values, text.substr(comma + 1));
    }
    while (auto const element = takeElement(text)) {
        for (EventElement const& each : request->answerElements) {
            if (each.tag == element->name) {
                noteValue(each.values, element->value);
            }
        }
    }
}

void Coverage::noteEvent(std::string_view text)
{
    auto const event = readEvent(text);
    if (!event) {
        return;
    }
    touched_[kEvents].emplace(event->description->method);
    for (EventValue const& each : event->values) {
        noteValue(each.element->values, each.value);
    }
}

void Coverage::noteValue(Enumeration const* values, std::string_view value)
{
    if (values == nullptr) {
        return;
    }
    auto const number = wholeNumber(value);
    bool const isNumber = number && std::in_range<int>(*number);
    EnumerationValue const* const found = values->isOfWords() ? values->findWord(value)
                                          : isNumber          ? values->find(static_cast<int>(*number))
                                                              : nullptr;
    if (found != nullptr) {
        touched_[kValues].insert(nameOf(*values, *found));
    }
}

void Coverage::add(Names const& touched)
{
    for (auto const& [kind, names] : touched) {
        touched_[kind].insert(names.begin(), names.end());
    }
}

Coverage::Names Coverage::touched() const
{
    Names result;
    for (KindRow const& kind : kKinds) {
        NameSet names = kind.place ? touchedNames(*kind.place) : NameSet();
        if (auto const noted = touched_.find(kind.name); noted != touched_.end()) {
            names.insert(noted->second.begin(), noted->second.end());
        }
        NameSet const& all = all_.at(kind.name);
        std::ranges::set_intersection(names, all, std::inserter(result[kind.name], result[kind.name].end()));
    }
    return result;
}

NameSet Coverage::untouched(std::string const& kind) const
{
    NameSet names;
    std::ranges::set_difference(all_.at(kind), touched().at(kind), std::inserter(names, names.end()));
    return names;
}

std::string Coverage::table(std::size_t width) const
{
    std::string text;
    for (KindRow const& kind : kKinds) {
        NameSet const others = untouched(kind.name);
        std::size_t const count = all_.at(kind.name).size();
        text += fmt::format("{:<9} {:>3} of {:>3}{}\n", kind.name, count - others.size(), count,
                            others.empty() ? "" : "; not touched:");
        text += wrapped(others, width);
    }
    return text;
}

std::string Coverage::json() const
{
    nlohmann::ordered_json document;
    Names const found = touched();
    for (KindRow const& kind : kKinds) {
        document[kind.name] = {{"touched", found.at(kind.name)}, {"untouched", untouched(kind.name)}};
    }
    return document.dump(4) + "\n";
}

}  // namespace telephone

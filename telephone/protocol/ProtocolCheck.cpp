#include "telephone/protocol/ProtocolCheck.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Names.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

tl::unexpected<Refusal> bad(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

std::string quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

// --- requests

RequestParameter const* findParameter(RequestDescription const& request, std::string_view tag)
{
    auto const* const found = std::find_if(request.parameters.begin(), request.parameters.end(),
                                           [tag](auto const& parameter) { return parameter.tag == tag; });
    return found == request.parameters.end() ? nullptr : found;
}

Outcome<> checkNumber(RequestParameter const& parameter, std::string_view value)
{
    std::string const what = std::string(parameter.tag) + " " + quoted(value);
    auto const number = wholeNumber(value);
    if (!number) {
        return bad(what + " is not a number");
    }
    bool const isInRange = *number >= -RequestRange::kNoLimit && *number <= RequestRange::kNoLimit &&
                           parameter.range.holds(static_cast<int>(*number));
    if (isInRange) {
        return {};
    }
    std::string const range = rangeText(parameter.range);
    return bad(what + " is out of range" + (range.empty() ? "" : " (" + range + ")"));
}

Outcome<> checkWord(RequestParameter const& parameter, std::string_view value)
{
    if (parameter.values == nullptr || parameter.values->findWord(value) != nullptr) {
        return {};
    }
    return bad(std::string(parameter.tag) + " " + quoted(value) + " is not a word of " +
               std::string(parameter.values->name) +
               suggestion(value, namesOf(*parameter.values, &EnumerationValue::word)));
}

Outcome<> checkValue(RequestParameter const& parameter, std::string_view value)
{
    switch (parameter.kind) {
    case RequestParameterKind::integer:
        return checkNumber(parameter, value);
    case RequestParameterKind::flag:
        return wholeNumber(value) ? Outcome<>()
                                  : bad(std::string(parameter.tag) + " " + quoted(value) + " is neither 1 nor 0");
    case RequestParameterKind::text:
    case RequestParameterKind::serviceState:
        return checkWord(parameter, value);
    case RequestParameterKind::word:
    case RequestParameterKind::body:
        break;
    }
    return {};
}

Outcome<> checkParameter(RequestDescription const& request, TextElement const& element,
                         std::vector<std::string_view>& present)
{
    std::string const what = std::string(request.name) + " has ";
    RequestParameter const* const parameter = findParameter(request, element.name);
    if (parameter == nullptr || parameter->kind == RequestParameterKind::body) {
        return bad(what + "no parameter " + std::string(element.name) +
                   suggestion(element.name, namesOf(request.parameters, &RequestParameter::tag)));
    }
    if (std::find(present.begin(), present.end(), element.name) != present.end()) {
        return bad(what + "the parameter " + std::string(element.name) + " twice; the first one counts");
    }
    present.push_back(element.name);
    return checkValue(*parameter, element.value);
}

// The parameters that a request must have and does not.
Outcome<> checkPresence(RequestDescription const& request, std::vector<std::string_view> const& present, bool hasBody)
{
    for (auto const& parameter : request.parameters) {
        bool const isThere = parameter.kind == RequestParameterKind::body
                                 ? hasBody
                                 : std::find(present.begin(), present.end(), parameter.tag) != present.end();
        if (parameter.need == RequestNeed::required && !isThere) {
            return bad(std::string(request.name) + " lacks " + std::string(parameter.tag) + ", which is read as " +
                       std::string(missingValue(parameter.kind)));
        }
    }
    return {};
}

Outcome<RequestDescription const*> findMethod(std::string_view& text)
{
    auto const method = takeElement(text);
    if (!method || method->name != "Method") {
        return bad("a request begins with <Method>, the name of the request and </Method>");
    }
    if (RequestDescription const* const request = findRequestDescription(method->value)) {
        return request;
    }
    return bad("there is no request " + std::string(method->value) +
               suggestion(method->value, namesOf(kRequestDescriptions, &RequestDescription::name)));
}

// --- events

Outcome<> checkElement(EventElement const& element, std::string_view value)
{
    bool const isNumber = element.kind == EventElementKind::integer || element.kind == EventElementKind::count;
    if (isNumber && !wholeNumber(value)) {
        return bad(std::string(element.tag) + " " + quoted(value) + " is not a number");
    }
    if (element.kind == EventElementKind::flag && value != "0" && value != "1") {
        return bad(std::string(element.tag) + " " + quoted(value) + " is neither 1 nor 0");
    }
    if (element.values != nullptr && nameOfValue(*element.values, value).back() == '?') {
        return bad(std::string(element.tag) + " " + quoted(value) + " is not a value of " +
                   std::string(element.values->name));
    }
    return {};
}

}  // namespace

Outcome<> checkRequest(std::string_view text)
{
    if (text.substr(0, 8) == "SigEvent") {
        return {};
    }
    auto const request = findMethod(text);
    if (!request) {
        return tl::make_unexpected(request.error());
    }
    auto const& parameters = (*request)->parameters;
    bool const takesBody = std::any_of(parameters.begin(), parameters.end(), [](auto const& parameter) {
        return parameter.kind == RequestParameterKind::body;
    });
    std::vector<std::string_view> present;
    while (!text.empty()) {
        if (takesBody && std::find(present.begin(), present.end(), "Line") != present.end()) {
            return checkPresence(**request, present, true);
        }
        auto const element = takeElement(text);
        if (!element) {
            return bad(quoted(text.substr(0, 40)) + " is not an element with a closing tag");
        }
        if (auto const checked = checkParameter(**request, *element, present); !checked) {
            return checked;
        }
    }
    return checkPresence(**request, present, false);
}

Outcome<> checkEvent(std::string_view text)
{
    auto const method = takeElement(text);
    EventDescription const* const event =
        method && method->name == "Method" ? findEventDescription(method->value) : nullptr;
    if (event == nullptr) {
        return bad("there is no event " + quoted(method ? method->value : text.substr(0, 40)));
    }
    for (auto const& expected : event->elements) {
        if (expected.kind == EventElementKind::body) {
            return {};
        }
        auto const element = takeElement(text);
        if (!element || element->name != expected.tag) {
            return bad(std::string(event->method) + " lacks " + std::string(expected.tag) + " in its place");
        }
        if (auto const checked = checkElement(expected, element->value); !checked) {
            return checked;
        }
    }
    return text.empty() ? Outcome<>() : bad(std::string(event->method) + " ends with " + quoted(text.substr(0, 40)));
}

}  // namespace telephone

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
    return wholeNumber(value) ? Outcome<>()
                              : bad(std::string(parameter.tag) + " " + quoted(value) + " is not a number");
}

Outcome<> checkRange(RequestParameter const& parameter, std::string_view value)
{
    auto const number = parameter.kind == RequestParameterKind::integer ? wholeNumber(value) : std::nullopt;
    bool const isInRange = !number || (*number >= -RequestRange::kNoLimit && *number <= RequestRange::kNoLimit &&
                                       parameter.range.holds(static_cast<int>(*number)));
    if (isInRange) {
        return {};
    }
    std::string const range = rangeText(parameter.range);
    return bad(std::string(parameter.tag) + " " + quoted(value) + " is out of range" +
               (range.empty() ? "" : " (" + range + ")"));
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

// What is in a request, read as far as it is well formed.
struct RequestReading
{
    RequestDescription const* request;
    std::vector<TextElement> elements;  // each a parameter of the request
    bool hasBody = false;

    bool has(std::string_view tag) const
    {
        return std::any_of(elements.begin(), elements.end(), [tag](auto const& each) { return each.name == tag; });
    }
};

Outcome<> checkElement(RequestReading const& reading, TextElement const& element)
{
    RequestDescription const& request = *reading.request;
    std::string const what = std::string(request.name) + " has ";
    RequestParameter const* const parameter = findParameter(request, element.name);
    if (parameter == nullptr || parameter->kind == RequestParameterKind::body) {
        return bad(what + "no parameter " + std::string(element.name) +
                   suggestion(element.name, namesOf(request.parameters, &RequestParameter::tag)));
    }
    if (reading.has(element.name)) {
        return bad(what + "the parameter " + std::string(element.name) + " twice; the first one counts");
    }
    return checkValue(*parameter, element.value);
}

Outcome<> checkRanges(RequestReading const& reading)
{
    for (auto const& element : reading.elements) {
        if (auto checked = checkRange(*findParameter(*reading.request, element.name), element.value); !checked) {
            return checked;
        }
    }
    return {};
}

// The parameters that a request must have and does not.
Outcome<> checkPresence(RequestReading const& reading)
{
    for (auto const& parameter : reading.request->parameters) {
        bool const isThere =
            parameter.kind == RequestParameterKind::body ? reading.hasBody : reading.has(parameter.tag);
        if (parameter.need == RequestNeed::required && !isThere) {
            return bad(std::string(reading.request->name) + " lacks " + std::string(parameter.tag) +
                       ", which is read as " + std::string(missingValue(parameter.kind)));
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

bool takesBody(RequestDescription const& request)
{
    return std::any_of(request.parameters.begin(), request.parameters.end(),
                       [](auto const& parameter) { return parameter.kind == RequestParameterKind::body; });
}

Outcome<RequestReading> readRequest(std::string_view text)
{
    auto const request = findMethod(text);
    if (!request) {
        return tl::make_unexpected(request.error());
    }
    RequestReading reading{*request, {}};
    while (!text.empty()) {
        if (takesBody(**request) && reading.has("Line")) {
            reading.hasBody = true;
            return reading;
        }
        auto const element = takeElement(text);
        if (!element) {
            return bad(quoted(text.substr(0, 40)) + " is not an element with a closing tag");
        }
        if (auto const checked = checkElement(reading, *element); !checked) {
            return tl::make_unexpected(checked.error());
        }
        reading.elements.push_back(*element);
    }
    return reading;
}

// A notice of the signalling component is not a request.
bool isNotice(std::string_view text)
{
    return text.substr(0, 8) == "SigEvent";
}

// --- events

Outcome<> checkEventElement(EventElement const& element, std::string_view value)
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
    if (isNotice(text)) {
        return {};
    }
    auto const reading = readRequest(text);
    if (!reading) {
        return tl::make_unexpected(reading.error());
    }
    auto const inRange = checkRanges(*reading);
    return inRange ? checkPresence(*reading) : inRange;
}

Outcome<> checkForm(std::string_view text)
{
    return isNotice(text) ? Outcome<>() : readRequest(text).map([](RequestReading const&) {});
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
        if (auto const checked = checkEventElement(expected, element->value); !checked) {
            return checked;
        }
    }
    return text.empty() ? Outcome<>() : bad(std::string(event->method) + " ends with " + quoted(text.substr(0, 40)));
}

}  // namespace telephone

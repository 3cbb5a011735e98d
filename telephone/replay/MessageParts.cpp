#include "telephone/replay/MessageParts.h"

#include <algorithm>

#include "CommunicationsServiceRequests.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

constexpr std::string_view kCallForm = "call id";

// Ids from 1 on; 0 and -1 mean that there is no call.
bool isCallID(std::string_view form, std::string_view value)
{
    return form.starts_with(kCallForm) && wholeNumber(value).value_or(0) > 0;
}

MessageParts unreadable(std::string_view text)
{
    return {{}, {{{}, std::string(text)}}};
}

RequestParameter const* parameterNamed(RequestDescription const* request, std::string_view tag)
{
    if (request == nullptr) {
        return nullptr;
    }
    auto const* const found = std::find_if(request->parameters.begin(), request->parameters.end(),
                                           [tag](RequestParameter const& each) { return each.tag == tag; });
    return found == request->parameters.end() ? nullptr : found;
}

// What follows the element `Line` of such a request may be anything.
bool hasBodyBehind(RequestDescription const* request, std::string_view tag)
{
    return tag == "Line" && request != nullptr &&
           std::any_of(request->parameters.begin(), request->parameters.end(),
                       [](RequestParameter const& each) { return each.kind == RequestParameterKind::body; });
}

}  // namespace

std::string MessageParts::call() const
{
    auto const found = std::find_if(parts.begin(), parts.end(), [](MessagePart const& each) { return each.isCall; });
    return found == parts.end() ? std::string() : found->value;
}

std::string MessageParts::value(std::string_view tag) const
{
    auto const found = std::find_if(parts.begin(), parts.end(), [tag](auto const& each) { return each.tag == tag; });
    return found == parts.end() ? std::string() : found->value;
}

MessageParts eventParts(std::string_view text)
{
    auto const event = readEvent(text);
    if (!event) {
        return unreadable(text);
    }
    MessageParts message{std::string(event->description->method), {}};
    for (EventValue const& each : event->values) {
        bool const isBody = each.element->kind == EventElementKind::body;
        message.parts.push_back({isBody ? std::string() : std::string(each.element->tag), std::string(each.value),
                                 isCallID(each.element->form, each.value), each.element->values});
    }
    return message;
}

MessageParts requestParts(std::string_view text)
{
    std::string_view rest = text;
    auto const method = takeElement(rest);
    if (!method || method->name != "Method" || method->value.empty()) {
        return unreadable(text);
    }
    RequestDescription const* const request = findRequestDescription(method->value);
    MessageParts message{std::string(method->value), {}};
    for (bool isBody = false; !rest.empty();) {
        auto const element = isBody ? std::nullopt : takeElement(rest);
        if (!element) {
            message.parts.push_back({{}, std::string(rest)});
            return message;
        }
        RequestParameter const* const parameter = parameterNamed(request, element->name);
        message.parts.push_back({std::string(element->name), std::string(element->value),
                                 parameter != nullptr && isCallID(parameter->form, element->value),
                                 parameter == nullptr ? nullptr : parameter->values});
        isBody = hasBodyBehind(request, element->name);
    }
    return message;
}

std::string textOf(MessageParts const& message)
{
    std::string text = message.method.empty() ? "" : "<Method>" + message.method + "</Method>";
    for (MessagePart const& each : message.parts) {
        text += each.tag.empty() ? each.value : "<" + each.tag + ">" + each.value + "</" + each.tag + ">";
    }
    return text;
}

}  // namespace telephone

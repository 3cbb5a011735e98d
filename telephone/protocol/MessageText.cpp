#include "telephone/protocol/MessageText.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace telephone {

namespace {

constexpr std::array<std::string_view, 4> kLineElements{"LineID", "lineURI", "deviceId"};
constexpr std::array<std::string_view, 2> kResultElements{"sfiResult", "func_return_val"};
constexpr std::array<std::string_view, 2> kCallElements{"CallID", "callId"};

std::string opening(std::string_view tag)
{
    return "<" + std::string(tag) + ">";
}

std::string closing(std::string_view tag)
{
    return "</" + std::string(tag) + ">";
}

template <typename Tags>
std::string_view firstOf(EventText const& event, Tags const& tags)
{
    auto const found = std::find_if(event.values.begin(), event.values.end(), [&tags](EventValue const& each) {
        return std::find(tags.begin(), tags.end(), each.element->tag) != tags.end();
    });
    return found == event.values.end() ? std::string_view() : found->value;
}

// Takes the value of the element; `next` is the one after it, or null.
std::optional<std::string_view> takeValue(std::string_view& text, EventElement const& element, EventElement const* next)
{
    if (element.kind == EventElementKind::body) {
        return std::exchange(text, {});
    }
    std::string const begin = opening(element.tag);
    std::string const end = closing(element.tag);
    if (!text.starts_with(begin)) {
        return std::nullopt;
    }
    text.remove_prefix(begin.size());
    bool const isLast = next == nullptr;
    bool const isBeforeBody = !isLast && next->kind == EventElementKind::body;
    auto const at = isLast ? text.rfind(end) : isBeforeBody ? text.find(end) : text.find(end + opening(next->tag));
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view const value = text.substr(0, at);
    text.remove_prefix(at + end.size());
    return value;
}

// "sfiFailure" of "sfiFailure,false" and of "<sfiResult>sfiFailure</sfiResult>..."; empty: there is none.
std::string_view resultWordOf(std::string_view answer)
{
    if (!answer.starts_with('<')) {
        return answer.substr(0, answer.find(','));
    }
    while (auto const element = takeElement(answer)) {
        if (std::find(kResultElements.begin(), kResultElements.end(), element->name) != kResultElements.end()) {
            return element->value;
        }
    }
    return {};
}

}  // namespace

bool reportsFailure(std::string_view answer)
{
    EnumerationValue const* const result = enumerations::kResult.findWord(resultWordOf(answer));
    return result != nullptr && result->word != "sfiSuccess";
}

std::optional<TextElement> takeElement(std::string_view& text)
{
    auto const nameEnd = text.find('>');
    if (text.empty() || text.front() != '<' || nameEnd == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view const name = text.substr(1, nameEnd - 1);
    std::string const end = closing(name);
    auto const valueEnd = text.find(end, nameEnd + 1);
    if (valueEnd == std::string_view::npos) {
        return std::nullopt;
    }
    TextElement const element{name, text.substr(nameEnd + 1, valueEnd - nameEnd - 1)};
    text.remove_prefix(valueEnd + end.size());
    return element;
}

std::string_view EventText::value(std::string_view tag) const
{
    return firstOf(*this, std::array<std::string_view, 1>{tag});
}

std::string_view EventText::line() const
{
    return firstOf(*this, kLineElements);
}

std::string_view EventText::call() const
{
    std::string_view const id = firstOf(*this, kCallElements);
    return id == "0" ? std::string_view() : id;
}

std::optional<EventText> readEvent(std::string_view text)
{
    auto const method = takeElement(text);
    bool const isEvent = method && method->name == "Method";
    EventText event{isEvent ? findEventDescription(method->value) : nullptr, {}};
    if (event.description == nullptr) {
        return std::nullopt;
    }
    auto const& elements = event.description->elements;
    for (auto const* each = elements.begin(); each != elements.end(); ++each) {
        auto const value = takeValue(text, *each, each + 1 == elements.end() ? nullptr : each + 1);
        if (!value) {
            return std::nullopt;
        }
        event.values.push_back({each, *value});
    }
    return event;
}

}  // namespace telephone

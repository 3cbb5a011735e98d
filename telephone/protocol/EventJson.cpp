#include "telephone/protocol/EventJson.h"

#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"
#include "telephone/time/TimeText.h"

namespace telephone {

namespace {

// A text that should be a number and is not stays a text.
Json numberOr(std::string_view text)
{
    auto const number = wholeNumber(text);
    return number ? Json(*number) : Json(text);
}

Json plainValue(EventElementKind kind, std::string_view text)
{
    switch (kind) {
    case EventElementKind::integer:
    case EventElementKind::count:
        return numberOr(text);
    case EventElementKind::flag:
        return text == "1" ? Json(true) : text == "0" ? Json(false) : Json(text);
    case EventElementKind::text:
    case EventElementKind::cutText:
    case EventElementKind::list:
    case EventElementKind::body:
        return text;
    }
    return text;
}

Json jsonOf(EventValue const& value)
{
    Json plain = plainValue(value.element->kind, value.value);
    Enumeration const* const enumeration = value.element->values;
    if (enumeration == nullptr) {
        return plain;
    }
    return {{"value", std::move(plain)}, {"name", nameOfValue(*enumeration, value.value)}};
}

Json objectOrText(std::string_view text)
{
    constexpr bool kThrows = false;
    Json const object = text.starts_with('{') ? Json::parse(text, nullptr, kThrows) : Json();
    return object.is_object() ? object : Json(text);
}

}  // namespace

std::string eventJson(std::uint64_t number, std::chrono::system_clock::time_point time, std::string_view text)
{
    Json object{{"event", number}, {"time", timeText(time)}, {"name", nullptr}};
    if (auto const event = readEvent(text)) {
        object["name"] = event->description->method;
        object["line"] = textOrNull(event->line());
        object["call"] = event->call().empty() ? Json() : numberOr(event->call());
        Json& elements = object["elements"] = Json::object();
        for (EventValue const& each : event->values) {
            elements[std::string(each.element->tag)] = jsonOf(each);
        }
    }
    object["raw"] = text;
    return lineOf(object);
}

std::string messageJson(std::string_view kind, std::optional<std::string_view> text,
                        std::chrono::system_clock::time_point time, std::optional<double> seconds)
{
    Json object{{kind, text ? objectOrText(*text) : Json()}, {"time", timeText(time)}};
    if (seconds) {
        object["seconds"] = *seconds;
    }
    return lineOf(object);
}

}  // namespace telephone

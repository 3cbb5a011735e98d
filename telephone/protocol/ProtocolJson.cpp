// The description as JSON.
#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace telephone {

namespace {

// Absent where there is nothing to say, so that a reader sees what is there.
void addText(Json& object, char const* key, std::string_view text)
{
    if (!text.empty()) {
        object[key] = text;
    }
}

void addValues(Json& object, Enumeration const* values, std::string_view form)
{
    if (values != nullptr) {
        object["enumeration"] = values->name;
    }
    addText(object, "form", form);
}

Json jsonOf(Enumeration const& enumeration)
{
    Json values = Json::array();
    for (auto const& value : enumeration) {
        Json each;
        if (enumeration.isOfWords()) {
            each["word"] = value.word;
        } else {
            each["number"] = value.number;
        }
        each["name"] = value.name;
        each["meaning"] = value.meaning;
        values.push_back(std::move(each));
    }
    return {{"name", enumeration.name},
            {"meaning", enumeration.meaning},
            {"carries", enumeration.isOfWords() ? "words" : "numbers"},
            {"values", std::move(values)}};
}

Json jsonOf(EventElements const& elements)
{
    Json list = Json::array();
    for (auto const& element : elements) {
        Json each{{"tag", element.tag}, {"kind", kindName(element.kind)}};
        addValues(each, element.values, element.form);
        each["meaning"] = element.meaning;
        list.push_back(std::move(each));
    }
    return list;
}

void addRange(Json& object, RequestRange const& range)
{
    if (!range.isGiven()) {
        return;
    }
    object["minimum"] = range.least;
    if (range.most != RequestRange::kNoLimit) {
        object["maximum"] = range.most;
    }
}

// What the service reads for a missing element, as a JSON value.
Json missingJson(RequestParameterKind kind)
{
    switch (kind) {
    case RequestParameterKind::text:
    case RequestParameterKind::body:
        return "";
    case RequestParameterKind::integer:
        return -1;
    case RequestParameterKind::flag:
        return true;
    case RequestParameterKind::word:
        return false;
    case RequestParameterKind::serviceState:
        return missingValue(kind);
    }
    return {};
}

Json jsonOf(RequestParameters const& parameters)
{
    Json list = Json::array();
    for (auto const& parameter : parameters) {
        Json each{{"tag", parameter.tag}, {"kind", kindName(parameter.kind)}};
        addValues(each, parameter.values, parameter.form);
        addRange(each, parameter.range);
        each["need"] = needName(parameter.need);
        each["meaning"] = parameter.meaning;
        each["missing"] = Json{{"value", missingJson(parameter.kind)}};
        addText(each["missing"], "effect", parameter.missing);
        addText(each, "wrong", wrongText(parameter));
        each["sample"] = parameter.sample;
        list.push_back(std::move(each));
    }
    return list;
}

char const* nameOf(RequestAnswer answer)
{
    switch (answer) {
    case RequestAnswer::resultWord:
        return "result word";
    case RequestAnswer::wordAndValue:
        return "result word and value";
    case RequestAnswer::texts:
        return "texts";
    case RequestAnswer::truth:
        return "truth";
    case RequestAnswer::elements:
        return "elements";
    case RequestAnswer::fixedText:
        return "fixed text";
    case RequestAnswer::nothing:
        return "nothing";
    }
    return "";
}

Json jsonOf(RequestDescription const& request)
{
    Json answer{{"kind", nameOf(request.answer)}};
    addText(answer, "form", request.answerForm);
    answer["elements"] = jsonOf(request.answerElements);
    answer["promises"] = request.promise;
    addText(answer, "does_not_promise", request.noPromise);
    Json events = Json::array();
    for (auto const event : request.events) {
        events.push_back(event);
    }
    return {{"name", request.name},
            {"meaning", request.meaning},
            {"parameters", jsonOf(request.parameters)},
            {"what_counts", request.addressing},
            {"answer", std::move(answer)},
            {"events", std::move(events)},
            {"sample", sampleOf(request)}};
}

Json jsonOf(EventDescription const& event)
{
    Json object{{"operation", event.operation}};
    addText(object, "method", event.method);
    addText(object, "name", event.name);
    object["sent_by"] = sourceName(event.source);
    object["meaning"] = event.meaning;
    object["when"] = event.when;
    object["elements"] = jsonOf(event.elements);
    return object;
}

}  // namespace

std::string ProtocolDescription::json() const
{
    Json document{{"protocol", "CommunicationsServiceProtocol"}, {"format", kProtocolVersion}, {"telephone", version_}};
    for (char const* const list : {"requests", "events", "enumerations", "commands"}) {
        document[list] = Json::array();
    }
    for (auto const& request : kRequestDescriptions) {
        document["requests"].push_back(jsonOf(request));
    }
    for (auto const& event : kEventDescriptions) {
        document["events"].push_back(jsonOf(event));
    }
    for (auto const* const enumeration : kEnumerations) {
        document["enumerations"].push_back(jsonOf(*enumeration));
    }
    for (auto const& command : commands_) {
        document["commands"].push_back(
            {{"name", command.name}, {"arguments", command.arguments}, {"help", command.help}});
    }
    return document.dump(2) + "\n";
}

}  // namespace telephone

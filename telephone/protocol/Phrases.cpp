#include "telephone/protocol/Phrases.h"

namespace telephone {

namespace {

std::string joined(std::string_view first, std::string_view separator, std::string_view second)
{
    std::string text(first);
    if (!first.empty() && !second.empty()) {
        text += separator;
    }
    return text.append(second);
}

// "number of messages" says already that it is one.
std::string numberForm(std::string_view form)
{
    return form.substr(0, 6) == "number" ? std::string(form) : joined("number", ", ", form);
}

std::string enumeratedForm(bool isWord, std::string const& enumeration, std::string_view range)
{
    return joined((isWord ? "word of " : "number of ") + enumeration, ", ", range);
}

std::string element(std::string_view tag, std::string_view value)
{
    std::string const name(tag);
    return "<" + name + ">" + std::string(value) + "</" + name + ">";
}

}  // namespace

std::string_view kindName(EventElementKind kind)
{
    switch (kind) {
    case EventElementKind::text:
    case EventElementKind::cutText:
        return "text";
    case EventElementKind::integer:
    case EventElementKind::count:
        return "number";
    case EventElementKind::flag:
        return "flag";
    case EventElementKind::list:
        return "list";
    case EventElementKind::body:
        return "body";
    }
    return {};
}

std::string_view kindName(RequestParameterKind kind)
{
    switch (kind) {
    case RequestParameterKind::text:
        return "text";
    case RequestParameterKind::integer:
        return "number";
    case RequestParameterKind::flag:
        return "flag";
    case RequestParameterKind::word:
    case RequestParameterKind::serviceState:
        return "word";
    case RequestParameterKind::body:
        return "body";
    }
    return {};
}

std::string_view needName(RequestNeed need)
{
    switch (need) {
    case RequestNeed::required:
        return "required";
    case RequestNeed::optional:
        return "optional";
    case RequestNeed::unused:
        return "not used";
    }
    return {};
}

std::string_view sourceName(EventSource source)
{
    switch (source) {
    case EventSource::telephone:
        return "this telephone";
    case EventSource::otherTelephones:
        return "other telephones";
    case EventSource::nobody:
        return "nobody";
    }
    return {};
}

std::string valueForm(EventElement const& element, std::string const& enumeration)
{
    if (!enumeration.empty()) {
        return enumeratedForm(element.kind == EventElementKind::text, enumeration, {});
    }
    switch (element.kind) {
    case EventElementKind::text:
    case EventElementKind::list:
        return std::string(element.form);
    case EventElementKind::cutText:
        return std::string(element.form) + ", up to its first NUL";
    case EventElementKind::integer:
    case EventElementKind::count:
        return numberForm(element.form);
    case EventElementKind::flag:
        return "1 or 0";
    case EventElementKind::body:
        return std::string(element.form) + ", to the end of the event, without a tag";
    }
    return {};
}

std::string valueForm(RequestParameter const& parameter, std::string const& enumeration)
{
    if (!enumeration.empty()) {
        bool const isWord = parameter.kind != RequestParameterKind::integer;
        return enumeratedForm(isWord, enumeration, rangeText(parameter.range));
    }
    switch (parameter.kind) {
    case RequestParameterKind::integer:
        return joined(numberForm(parameter.form), ", ", rangeText(parameter.range));
    case RequestParameterKind::flag:
        return "1 or 0";
    case RequestParameterKind::text:
    case RequestParameterKind::word:
    case RequestParameterKind::serviceState:
    case RequestParameterKind::body:
        break;
    }
    return std::string(parameter.form);
}

std::string rangeText(RequestRange const& range)
{
    if (!range.isGiven()) {
        return {};
    }
    std::string const least = std::to_string(range.least);
    if (range.most == RequestRange::kNoLimit) {
        return least + " or more";
    }
    return least + (range.most - range.least == 1 ? " or " : " to ") + std::to_string(range.most);
}

std::string_view missingValue(RequestParameterKind kind)
{
    switch (kind) {
    case RequestParameterKind::text:
    case RequestParameterKind::body:
        return "empty";
    case RequestParameterKind::integer:
        return "-1";
    case RequestParameterKind::flag:
        return "true";
    case RequestParameterKind::word:
        return "false";
    case RequestParameterKind::serviceState:
        return "sfiServiceOutOfService";
    }
    return {};
}

std::string missingText(RequestParameter const& parameter)
{
    return joined(missingValue(parameter.kind), ": ", parameter.missing);
}

std::string wrongText(RequestParameter const& parameter)
{
    switch (parameter.kind) {
    case RequestParameterKind::integer:
        return joined("a non-number is 0", "; ", parameter.wrong);
    case RequestParameterKind::flag:
        return joined("every number but 0 is true, a non-number is false", "; ", parameter.wrong);
    case RequestParameterKind::text:
    case RequestParameterKind::word:
    case RequestParameterKind::serviceState:
    case RequestParameterKind::body:
        break;
    }
    return std::string(parameter.wrong);
}

std::string answerText(RequestDescription const& request)
{
    std::string const form = "`" + std::string(request.answerForm) + "`";
    switch (request.answer) {
    case RequestAnswer::resultWord:
        return "a result word";
    case RequestAnswer::wordAndValue:
        return "a result word and a value, " + form;
    case RequestAnswer::texts:
        return "texts run together, " + form + ", or a result word";
    case RequestAnswer::truth:
    case RequestAnswer::elements:
        return form;
    case RequestAnswer::fixedText:
        return "always " + form;
    case RequestAnswer::nothing:
        return "none, only the end of the request";
    }
    return {};
}

std::string sampleOf(RequestDescription const& request)
{
    std::string text = element("Method", request.name);
    for (auto const& parameter : request.parameters) {
        text += parameter.kind == RequestParameterKind::body ? std::string(parameter.sample)
                                                             : element(parameter.tag, parameter.sample);
    }
    return text;
}

std::string formOf(EventDescription const& event)
{
    std::string text = element("Method", event.method);
    for (auto const& each : event.elements) {
        text += each.kind == EventElementKind::body ? "..." : element(each.tag, "...");
    }
    return text;
}

}  // namespace telephone

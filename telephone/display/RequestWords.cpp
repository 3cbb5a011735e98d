#include "telephone/display/RequestWords.h"

#include <algorithm>
#include <utility>

#include "telephone/display/SafeText.h"
#include "telephone/display/XmlWords.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

bool isPlainWord(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char each) { return each > ' ' && each < '\x7f' && each != '"' && each != '\\'; });
}

bool hasBody(RequestDescription const* request)
{
    return request != nullptr &&
           std::any_of(request->parameters.begin(), request->parameters.end(),
                       [](RequestParameter const& each) { return each.kind == RequestParameterKind::body; });
}

void addParameter(RequestWords& words, TextElement const& element)
{
    if (element.name == "Line" && words.line.empty()) {
        words.line = safeWord(element.value);
        return;
    }
    if (element.name == "CallID" && words.call.empty()) {
        words.call = element.value == "0" ? "" : safeWord(element.value);
        return;
    }
    words.values.push_back(
        {safeWord(element.name), isPlainWord(element.value) ? std::string(element.value) : quotedText(element.value)});
}

}  // namespace

RequestWords requestWords(std::string_view text)
{
    std::string_view rest = text;
    auto const method = takeElement(rest);
    if (!method || method->name != "Method") {
        return {nullptr, safeText(text), {}, {}, {}, {}};
    }
    RequestWords words{findRequestDescription(method->value), safeText(method->value), {}, {}, {}, {}};
    bool bodyFollows = false;
    while (!rest.empty() && !bodyFollows) {
        auto const element = takeElement(rest);
        if (!element) {
            return {nullptr, safeText(text), {}, {}, {}, {}};
        }
        addParameter(words, *element);
        bodyFollows = element->name == "Line" && hasBody(words.description);
    }
    words.body = rest.empty() ? "" : bodyWords(rest);
    return words;
}

std::string requestInWords(std::string_view text)
{
    RequestWords const words = requestWords(text);
    std::string said = words.name;
    said += words.line.empty() ? "" : " " + words.line;
    said += words.call.empty() ? "" : " call " + words.call;
    for (RequestValue const& each : words.values) {
        said += " " + each.tag + "=" + each.text;
    }
    return said + (words.body.empty() ? "" : " " + words.body);
}

}  // namespace telephone

#include "telephone/console/RequestText.h"

#include "telephone/base/Names.h"
#include "telephone/console/CommandError.h"

namespace telephone {

namespace {

constexpr std::string_view kSignallingEvent = "SigEvent";

std::string element(std::string_view tag, std::string_view value)
{
    std::string const end = "</" + std::string(tag) + ">";
    if (value.find(end) != std::string_view::npos) {
        throw CommandError("the value of " + std::string(tag) + " cannot hold " + end + ", which would end it");
    }
    return "<" + std::string(tag) + ">" + std::string(value) + end;
}

RequestParameter const& parameterOf(RequestDescription const& request, std::string const& name)
{
    std::vector<std::string_view> tags;
    for (RequestParameter const& each : request.parameters) {
        if (equalIgnoringCase(each.tag, name)) {
            return each;
        }
        tags.push_back(each.tag);
    }
    std::string known;
    for (std::string_view const tag : tags) {
        known += (known.empty() ? "; it has " : ", ") + std::string(tag);
    }
    throw CommandError(std::string(request.name) + " has no parameter " + name + suggestion(name, tags) +
                       (known.empty() ? "; it has none" : known));
}

}  // namespace

bool isRequestText(std::string_view line)
{
    return line.starts_with('<') || line == kSignallingEvent || line.starts_with("SigEvent:");
}

RequestDescription const* findRequest(std::string_view name)
{
    for (RequestDescription const& each : kRequestDescriptions) {
        if (equalIgnoringCase(each.name, name)) {
            return &each;
        }
    }
    return nullptr;
}

std::vector<std::string_view> requestNames()
{
    std::vector<std::string_view> names;
    for (RequestDescription const& each : kRequestDescriptions) {
        names.push_back(each.name);
    }
    return names;
}

std::string requestText(Words const& words)
{
    RequestDescription const* const request = words.empty() ? nullptr : findRequest(words.front());
    if (request == nullptr) {
        throw CommandError("no request " + (words.empty() ? std::string() : words.front()));
    }
    std::string text = element("Method", request->name);
    std::string body;
    for (std::size_t i = 1; i < words.size(); ++i) {
        auto const assignment = splitAssignment(words[i]);
        if (!assignment) {
            throw CommandError("\"" + words[i] + "\" is no parameter: write it as Name=value");
        }
        RequestParameter const& parameter = parameterOf(*request, assignment->name);
        if (parameter.kind == RequestParameterKind::body) {
            body = assignment->value;
        } else {
            text += element(parameter.tag, assignment->value);
        }
    }
    return text + body;
}

std::optional<std::string> elementValue(std::string_view text, std::string_view tag)
{
    std::string const opening = "<" + std::string(tag) + ">";
    auto const start = text.find(opening);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    auto const value = start + opening.size();
    auto const end = text.find("</" + std::string(tag) + ">", value);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    return std::string(text.substr(value, end - value));
}

std::string methodOf(std::string_view text)
{
    return elementValue(text, "Method").value_or(std::string());
}

}  // namespace telephone

#include "telephone/access/RequestShorthand.h"

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"

namespace telephone {

namespace {

constexpr std::string_view kSignallingEvent = "SigEvent";

Outcome<std::string> element(std::string_view tag, std::string_view value)
{
    std::string const end = fmt::format("</{}>", tag);
    if (value.find(end) != std::string_view::npos) {
        return refuse(RefusalKind::kBadInput, fmt::format("the value of {} must not contain {}", tag, end));
    }
    return fmt::format("<{}>{}{}", tag, value, end);
}

Outcome<RequestParameter const*> parameterOf(RequestDescription const& request, std::string const& name)
{
    for (RequestParameter const& each : request.parameters) {
        if (equalIgnoringCase(each.tag, name)) {
            return &each;
        }
    }
    auto const tags = namesOf(request.parameters, &RequestParameter::tag);
    return refuse(RefusalKind::kBadInput,
                  fmt::format("{} has no parameter {}{}; it has {}", request.name, name, suggestion(name, tags),
                              tags.empty() ? "none" : fmt::format("{}", fmt::join(tags, ", "))));
}

// Appends a parameter to the request's elements or, where it follows them as it is, to its body.
Outcome<> append(RequestDescription const& request, std::string const& word, std::string& elements, std::string& body)
{
    auto const assignment = splitAssignment(word);
    if (!assignment) {
        return refuse(RefusalKind::kBadInput, "\"" + word + "\" is not a parameter: write it as Name=value");
    }
    return parameterOf(request, assignment->name).and_then([&](RequestParameter const* parameter) {
        if (parameter->kind == RequestParameterKind::body) {
            body = assignment->value;
            return Outcome<>();
        }
        return element(parameter->tag, assignment->value).map([&](std::string const& text) { elements += text; });
    });
}

}  // namespace

bool isRequestText(std::string_view line)
{
    return line.starts_with('<') || line.starts_with(kSignallingEvent);
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
    return namesOf(kRequestDescriptions, &RequestDescription::name);
}

Outcome<std::string> requestText(Words const& words)
{
    std::string const name = words.empty() ? std::string() : words.front();
    RequestDescription const* const request = findRequest(name);
    if (request == nullptr) {
        return refuse(RefusalKind::kNotFound, "no request " + name + suggestion(name, requestNames()));
    }
    std::string elements = "<Method>" + std::string(request->name) + "</Method>";
    std::string body;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (auto const appended = append(*request, words[i], elements, body); !appended) {
            return tl::unexpected(appended.error());
        }
    }
    return elements + body;
}

std::optional<std::string> elementValue(std::string_view text, std::string_view tag)
{
    std::string const opening = fmt::format("<{}>", tag);
    auto const start = text.find(opening);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    auto const value = start + opening.size();
    auto const end = text.find(fmt::format("</{}>", tag), value);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    return std::string(text.substr(value, end - value));
}

}  // namespace telephone

#include "telephone/console/Help.h"

#include <array>

namespace telephone {

namespace {

// Indexed by the kind of the parameter.
constexpr std::array<std::string_view, 6> kParameterKinds{
    "text; missing: empty",
    "number; missing: -1",
    "flag, 0 is false; missing: true",
    "TRUE is true; missing: false",
    "sfiServiceInService, sfiServiceOutOfService or sfiServiceDoNotDisturb; missing: out of service",
    "text that follows the parameters unchanged",
};

constexpr std::array<std::string_view, 7> kElementKinds{
    "text", "text", "number", "count", "flag, 1 or 0", "list", "text that follows unchanged",
};

std::string answerOf(RequestDescription const& request)
{
    switch (request.answer) {
    case RequestAnswer::resultWord:
        return "sfiSuccess, sfiFailure or another result word";
    case RequestAnswer::nothing:
        return "none";
    case RequestAnswer::wordAndValue:
    case RequestAnswer::texts:
    case RequestAnswer::truth:
    case RequestAnswer::elements:
    case RequestAnswer::fixedText:
        break;
    }
    return std::string(request.answerForm);
}

std::string padded(std::string_view text, std::size_t width)
{
    std::string result(text);
    result.resize(std::max(width, result.size() + 1), ' ');
    return result;
}

}  // namespace

std::vector<std::string> requestRows()
{
    std::vector<std::string> rows;
    for (RequestDescription const& each : kRequestDescriptions) {
        std::string row(each.name);
        for (RequestParameter const& parameter : each.parameters) {
            row += " " + std::string(parameter.tag) + "=";
        }
        rows.push_back(row);
    }
    return rows;
}

std::vector<std::string> eventRows()
{
    std::vector<std::string> rows;
    for (EventDescription const& each : kEventDescriptions) {
        if (each.method.empty()) {
            continue;
        }
        std::string row(each.method);
        for (EventElement const& element : each.elements) {
            row += " " + std::string(element.tag);
        }
        rows.push_back(row);
    }
    return rows;
}

std::vector<std::string> helpForRequest(RequestDescription const& request)
{
    std::vector<std::string> rows{std::string(request.name) + ": " + std::string(request.meaning)};
    for (RequestParameter const& each : request.parameters) {
        rows.push_back("  " + padded(std::string(each.tag) + "=", 28) +
                       std::string(kParameterKinds.at(static_cast<std::size_t>(each.kind))));
    }
    rows.push_back("  answer: " + answerOf(request));
    return rows;
}

std::vector<std::string> helpForEvent(EventDescription const& event)
{
    std::vector<std::string> rows{std::string(event.method) + ": " + std::string(event.meaning)};
    for (EventElement const& each : event.elements) {
        rows.push_back("  " + padded(each.tag, 28) +
                       std::string(kElementKinds.at(static_cast<std::size_t>(each.kind))));
    }
    return rows;
}

}  // namespace telephone

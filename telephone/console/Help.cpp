#include "telephone/console/Help.h"

#include <array>

#include <spdlog/fmt/fmt.h>

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

std::string_view answerOf(RequestDescription const& request)
{
    if (request.answer == RequestAnswer::resultWord) {
        return "sfiSuccess, sfiFailure or another result word";
    }
    return request.answer == RequestAnswer::nothing ? "none" : request.answerForm;
}

std::string rowOf(std::string_view name, std::string_view meaning)
{
    return fmt::format("  {:<27} {}", name, meaning);
}

}  // namespace

std::vector<std::string> requestRows()
{
    std::vector<std::string> rows;
    for (RequestDescription const& each : kRequestDescriptions) {
        std::string& row = rows.emplace_back(each.name);
        for (RequestParameter const& parameter : each.parameters) {
            row.append(" ").append(parameter.tag).append("=");
        }
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
        std::string& row = rows.emplace_back(each.method);
        for (EventElement const& element : each.elements) {
            row.append(" ").append(element.tag);
        }
    }
    return rows;
}

std::vector<std::string> helpForRequest(RequestDescription const& request)
{
    std::vector<std::string> rows{fmt::format("{}: {}", request.name, request.meaning)};
    for (RequestParameter const& each : request.parameters) {
        rows.push_back(rowOf(std::string(each.tag) + "=", kParameterKinds.at(static_cast<std::size_t>(each.kind))));
    }
    rows.push_back(fmt::format("  answer: {}", answerOf(request)));
    return rows;
}

std::vector<std::string> helpForEvent(EventDescription const& event)
{
    std::vector<std::string> rows{fmt::format("{}: {}", event.method, event.meaning)};
    for (EventElement const& each : event.elements) {
        rows.push_back(rowOf(each.tag, kElementKinds.at(static_cast<std::size_t>(each.kind))));
    }
    return rows;
}

}  // namespace telephone

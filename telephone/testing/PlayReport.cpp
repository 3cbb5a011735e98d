#include "telephone/testing/PlayReport.h"

#include <fstream>

#include <nlohmann/json.hpp>

namespace telephone {

namespace {

using nlohmann::json;

}  // namespace

void to_json(json& object, ScriptFailure const& failure)
{
    object = {{"line", failure.line}, {"step", failure.step}, {"reason", failure.reason}};
}

void from_json(json const& object, ScriptFailure& failure)
{
    failure = {object.at("line"), object.at("step"), object.at("reason")};
}

Outcome<> writePlayReport(PlayReport const& report, std::string const& file)
{
    json const object{{"steps", report.result.steps},
                      {"seconds", report.result.seconds},
                      {"failures", report.result.failures},
                      {"touched", report.touched}};
    std::ofstream stream(file);
    // Text from the network need not be UTF-8.
    stream << object.dump(-1, ' ', false, json::error_handler_t::replace) << std::endl;
    return stream ? Outcome<>() : refuse(RefusalKind::kUnavailable, file + ": cannot be written");
}

Outcome<PlayReport> readPlayReport(std::string const& file)
{
    std::ifstream stream(file);
    try {
        json const object = json::parse(stream);
        ScriptResult result{object.at("steps"), object.at("seconds"),
                            object.at("failures").get<std::vector<ScriptFailure>>()};
        return PlayReport{std::move(result), object.at("touched").get<Coverage::Names>()};
    } catch (json::exception const& error) {
        return refuse(RefusalKind::kUnavailable, file + ": " + error.what());
    }
}

}  // namespace telephone

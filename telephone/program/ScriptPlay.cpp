#include "telephone/program/ScriptPlay.h"

#include <csignal>
#include <filesystem>
#include <optional>
#include <sstream>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <sys/prctl.h>

#include "telephone/base/Touched.h"
#include "telephone/console/Conversation.h"
#include "telephone/console/ScriptOptions.h"
#include "telephone/console/ScriptPlayer.h"
#include "telephone/console/ScriptReport.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/ScriptText.h"
#include "telephone/testing/PlayReport.h"

namespace telephone {

namespace {

constexpr char const* kStandardInput = "-";

Outcome<CommandLine> withOptions(CommandLine line, ScriptOptions const& options)
{
    if (!options.check.empty()) {
        auto const checked = checkedTraffic(options.check);
        if (!checked) {
            return refuse(RefusalKind::kBadInput,
                          fmt::format("\"{}\" is not a value of the option check: none, events or all", options.check));
        }
        line.checked = *checked;
    }
    if (!options.time.empty()) {
        if (auto const set = line.setTime(options.time); !set) {
            return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is not a value of the option time: {}",
                                                              options.time, set.error().reason));
        }
    }
    if (!options.config.empty()) {
        line.configuration = std::filesystem::path(line.script).replace_filename(options.config).string();
    }
    return line;
}

Outcome<std::string> readFromInput(Conversation const& conversation)
{
    return readScriptText(kStandardInput, conversation.stopDescriptor())
        .and_then([](std::string const& text) -> Outcome<std::string> {
            if (scriptOptions(text) != ScriptOptions()) {
                return refuse(RefusalKind::kBadInput,
                              "a script from standard input has no options: give them on the command line");
            }
            return text;
        });
}

Outcome<> writeResult(ScriptResult const& result, std::string const& name, std::optional<Coverage> const& coverage,
                      CommandLine const& line)
{
    if (coverage) {
        return writePlayReport({result, coverage->touched()}, line.report);
    }
    if (line.junit.empty()) {
        return {};
    }
    ScriptCase played{"telephone", name, result.seconds, ScriptVerdict::kPassed, {}};
    for (ScriptFailure const& each : result.failures) {
        played.verdict = ScriptVerdict::kFailed;
        played.reasons.push_back(failureText(name, each));
    }
    return writeJUnit({played}, line.junit);
}

}  // namespace

Outcome<CommandLine> withScript(CommandLine line, StopSignal const& stop)
{
    if (!line.report.empty()) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);  // the test runner may be killed
    }
    if (line.action != Action::kPlay || line.script == kStandardInput) {
        return line;
    }
    auto text = readScriptText(line.script, stop.descriptor());
    if (!text) {
        return tl::unexpected(std::move(text.error()));
    }
    line.scriptText = *std::move(text);
    return scriptOptions(line.scriptText)
        .and_then([&line](ScriptOptions const& options) { return withOptions(line, options); })
        .map_error([&line](Refusal const& refusal) {
            return Refusal{refusal.kind, fmt::format("{}: {}", line.script, refusal.reason)};
        });
}

Outcome<bool> playScript(Conversation& conversation, CommandLine const& line)
{
    bool const isInput = line.script == kStandardInput;
    auto const text = isInput ? readFromInput(conversation) : Outcome<std::string>(line.scriptText);
    if (!text) {
        return tl::unexpected(text.error());
    }
    std::optional<Coverage> coverage;
    if (!line.report.empty()) {
        keepTouched();
        coverage.emplace();
        conversation.observe([&coverage](Message const& message) { coverage->note(message); });
    }
    std::string const name = isInput ? "standard input" : line.script;
    std::istringstream script(*text);
    ScriptResult const result = ScriptPlayer(conversation).play(script, name);
    conversation.observe(nullptr);
    if (result.passed()) {
        conversation.transcript().note(fmt::format("passed: {} steps in {:.1f} s", result.steps, result.seconds));
    }
    return writeResult(result, name, coverage, line).map([&result] { return result.passed(); });
}

}  // namespace telephone

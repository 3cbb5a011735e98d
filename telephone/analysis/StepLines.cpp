#include "telephone/analysis/StepLines.h"

#include <algorithm>
#include <array>
#include <chrono>

#include <spdlog/fmt/fmt.h>

#include "telephone/analysis/StepWords.h"
#include "telephone/display/AnswerWords.h"
#include "telephone/display/ElementWords.h"
#include "telephone/display/LampWords.h"
#include "telephone/display/Parties.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

std::chrono::microseconds durationOf(TracedStep const& step)
{
    return std::chrono::microseconds(std::max(0LL, step.wholeNumber("microseconds").value_or(0)));
}

std::string placeText(std::string_view line, std::string_view call)
{
    std::string text = safeWord(line);
    text += text.empty() || call.empty() ? "" : " ";
    return call.empty() ? text : text + "call " + safeWord(call);
}

}  // namespace

std::string StepLines::mark(TracedStep const& step) const
{
    switch (step.kind) {
    case StepKind::kRequest:
    case StepKind::kCommand:
        return options_.ascii ? ">" : "→";
    case StepKind::kAnswer:
        return options_.ascii ? "<" : "←";
    case StepKind::kReason:
        return options_.ascii ? "x" : "✕";
    case StepKind::kEvent:
        return step.text("number");
    case StepKind::kPlatform:
    case StepKind::kEngine:
    case StepKind::kKey:
    case StepKind::kLamp:
    case StepKind::kTimer:
    case StepKind::kStore:
    case StepKind::kFault:
    case StepKind::kSip:
        break;
    }
    return std::string(kStepKindNames.at(static_cast<std::size_t>(step.kind)));
}

Style StepLines::markStyle(TracedStep const& step) const
{
    bool const isInput = step.kind == StepKind::kRequest || step.kind == StepKind::kCommand;
    return isInput ? Style::kBlue : step.kind == StepKind::kReason ? Style::kMagenta : Style::kPlain;
}

StyledText StepLines::line(TracedStep const& step) const
{
    switch (step.kind) {
    case StepKind::kRequest:
        return request(step);
    case StepKind::kCommand:
        return StyledText()
            .add(safeText(step.text("text")), Style::kBlue)
            .add(", " + safeText(step.text("application")), Style::kDim);
    case StepKind::kAnswer:
        return answer(step);
    case StepKind::kReason:
        return StyledText().add(safeText(step.text("text")), Style::kMagenta);
    case StepKind::kEvent:
        return event(step);
    case StepKind::kPlatform:
        return platformCall(step);
    case StepKind::kEngine:
        return engineStep(step);
    case StepKind::kKey:
        return StyledText().add(keyInWords(step), Style::kBold);
    case StepKind::kLamp:
        return lamp(step);
    case StepKind::kTimer:
        return StyledText().add(safeText(step.text("name")), Style::kBold);
    case StepKind::kStore:
        return store(step);
    case StepKind::kFault:
        return StyledText().add(safeText(step.text("fault")), Style::kBold).add(" " + safeText(step.text("state")));
    case StepKind::kSip:
        return sipMessage(step);
    }
    return {};
}

StyledText StepLines::request(TracedStep const& step) const
{
    RequestWords const words = requestWords(step.text("text"));
    StyledText line;
    line.add(words.name, Style::kBlue);
    if (std::string const place = placeText(words.line, words.call); !place.empty()) {
        line.add("  " + place);
    }
    for (RequestValue const& each : words.values) {
        line.add("  " + each.tag + "=", Style::kDim).add(each.text);
    }
    return line.add(words.body.empty() ? "" : "  " + words.body)
        .add(", " + safeText(step.text("application")), Style::kDim);
}

StyledText StepLines::answer(TracedStep const& step) const
{
    TracedStep const* const cause = contents_.causeOf(step);
    bool const isToRequest = cause != nullptr && cause->kind == StepKind::kRequest;
    RequestDescription const* const description = isToRequest ? requestWords(cause->text("text")).description : nullptr;
    auto const text = step.has("text") ? std::optional<std::string_view>(step.text("text")) : std::nullopt;
    AnswerWords const words = answerWords(description, text, options_);
    StyledText line;
    line.add(words.text, words.isFailure ? Style::kMagenta : Style::kBold);
    if (step.has("microseconds")) {
        line.add("  " + durationText(durationOf(step)), Style::kDim);
    }
    return line;
}

StyledText StepLines::event(TracedStep const& step) const
{
    auto const event = readEvent(step.text("text"));
    if (!event) {
        return StyledText().add(safeText(step.text("text")));
    }
    EventWords const words = eventWords(*event, options_);
    StyledText line;
    line.add(words.words.what, Style::kBold);
    for (std::string const& each : {placeText(words.line, words.call), words.words.detailText()}) {
        line.add(each.empty() ? "" : "  " + each);
    }
    return line;
}

StyledText StepLines::platformCall(TracedStep const& step) const
{
    StyledText line;
    line.add(safeWord(step.text("name")), Style::kBold);
    std::string const place = placeText(lineOfPlatform(step), callOfPlatform(step));
    line.add(place.empty() ? "" : "  " + place);
    for (ArgumentWords const& each : argumentWords(step, options_)) {
        line.add("  " + each.name + "=", Style::kDim).add(each.value);
    }
    if (step.has("result")) {
        bool const isFailure = reportsFailure(step.text("result"));
        line.add("  " + enumeratorInWords(step.text("result")), isFailure ? Style::kMagenta : Style::kPlain);
    }
    if (durationOf(step) >= std::chrono::milliseconds(1)) {
        line.add("  " + durationText(durationOf(step)), Style::kDim);
    }
    return line;
}

StyledText StepLines::engineStep(TracedStep const& step) const
{
    StyledText line;
    line.add(placeText(step.text("line"), step.text("call")) + ": ");
    if (step.text("before") == step.text("state")) {
        line.add("still ");
    } else if (step.has("before")) {
        line.add(safeText(step.text("before")) + (options_.ascii ? " > " : " → "));
    }
    line.add(safeText(step.text("state")), Style::kBold);
    std::string const party = addressText(step.text("party"), options_);
    return line.add(party.empty() ? "" : "  " + party);
}

StyledText StepLines::lamp(TracedStep const& step) const
{
    LampState lamp;
    lamp.mode = step.text("mode");
    lamp.colour = step.text("colour");
    return StyledText().add(lampNameOf(step) + "  ").add(lampModeOf(step), lampStyle(lamp));
}

StyledText StepLines::store(TracedStep const& step) const
{
    StyledText line;
    line.add(safeText(step.text("settings")), Style::kBold);
    return step.has("reason") ? line.add("  not written: " + safeText(step.text("reason")), Style::kMagenta)
                              : line.add("  written");
}

StyledText StepLines::sipMessage(TracedStep const& step) const
{
    std::string const farEnd = farEndOf(step, calls_, options_);
    std::string const peer = safeWord(step.text("peer"));
    StyledText line;
    line.add(sipLabel(step), Style::kBold);
    line.add(isSipAnswer(step) ? " for " + safeWord(step.text("method")) : "");
    line.add(isSent(step) ? "  to " : "  from ").add(farEnd);
    bool const isShown = !peer.empty() && peer != farEnd;
    return line.add(isShown ? fmt::format("  {} {}", peer, safeWord(step.text("transport"))) : "", Style::kDim);
}

std::vector<StyledText> StepLines::rawLines(TracedStep const& step) const
{
    if (!step.has("text")) {
        return {line(step)};
    }
    std::vector<StyledText> lines;
    std::string_view rest = step.text("text");
    while (!rest.empty()) {
        auto const end = std::min(rest.find('\n'), rest.size());
        std::string_view const text = rest.substr(0, end);
        lines.push_back(StyledText().add(safeText(text.ends_with('\r') ? text.substr(0, text.size() - 1) : text)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return lines.empty() ? std::vector{line(step)} : lines;
}

}  // namespace telephone

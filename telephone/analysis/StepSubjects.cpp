#include "telephone/analysis/StepSubjects.h"

#include <string_view>
#include <utility>

#include "telephone/analysis/StepWords.h"
#include "telephone/display/RequestWords.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

StepSubject const& StepSubjects::note(TracedStep const& step)
{
    StepSubject subject = ownSubject(step);
    auto const cause = step.because < step.number ? subjects_.find(step.because) : subjects_.end();
    if (cause != subjects_.end()) {
        if (subject.call.empty() && (subject.line.empty() || subject.line == cause->second.line)) {
            subject.call = cause->second.call;
        }
        if (subject.line.empty()) {
            subject.line = cause->second.line;
        }
    }
    return subjects_[step.number] = std::move(subject);
}

StepSubject StepSubjects::ownSubject(TracedStep const& step) const
{
    switch (step.kind) {
    case StepKind::kRequest: {
        RequestWords const words = requestWords(step.text("text"));
        return {words.line, words.call};
    }
    case StepKind::kEvent: {
        std::string const& text = step.text("text");
        auto const event = readEvent(text);
        return event ? StepSubject{std::string(event->line()), std::string(event->call())} : StepSubject();
    }
    case StepKind::kEngine:
        return {step.text("line"), step.text("call")};
    case StepKind::kPlatform:
        return {lineOfPlatform(step), callOfPlatform(step)};
    case StepKind::kSip: {
        TracedCall const* const call = calls_.withDialog(step.text("dialog"));
        return call != nullptr ? StepSubject{call->line, call->id} : StepSubject();
    }
    case StepKind::kCommand:
    case StepKind::kAnswer:
    case StepKind::kReason:
    case StepKind::kKey:
    case StepKind::kLamp:
    case StepKind::kTimer:
    case StepKind::kStore:
    case StepKind::kFault:
        break;
    }
    return {};
}

}  // namespace telephone

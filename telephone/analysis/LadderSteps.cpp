#include "telephone/analysis/LadderSteps.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/analysis/StepWords.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

// Platform calls that do something to a call.
// clang-format off
constexpr std::string_view kActing[] = {
    "CSfi::CallMake",
    "CSfi::GroupPickup",
    "CSfi::CallClear",
    "CSfi::CallRetrieve",
    "CSfi::CallAccept",
    "CSfi::CallAnswer",
    "CSfi::CallRefuse",
    "CSfi::CallFeature",
    "CSfi::GenerateDigits",
    "CSfi::ActivateCallbackRinging",
    "CSfi::ActivateCallbackBusy",
    "CSfi::CancelCallbacks",
    "CSfi::SecurityChangeReinvite",
    "DirectedPickupHandler::directedPickupRequest",
    "TeamServiceFeatures::BLFPickupRequest",
    "TeamServiceKeyset::answerCall",
    "TeamServiceKeyset::makeCall",
    "TeamServiceKeyset::retrieveCall",
};
// clang-format on

bool isActing(TracedStep const& step)
{
    return std::find(std::begin(kActing), std::end(kActing), step.text("name")) != std::end(kActing);
}

constexpr long long kTrying = 100;

}  // namespace

Outcome<LadderSteps> LadderSteps::choose(TraceContents const& contents, TracedCalls const& calls,
                                         std::optional<std::string_view> call)
{
    std::vector<TracedCall const*> chosen;
    std::set<std::string> ids;
    for (TracedCall const& each : calls.all()) {
        ids.insert(safeWord(each.id));
        if (!call || each.id == *call) {
            chosen.push_back(&each);
        }
    }
    if (ids.empty()) {
        return refuse(RefusalKind::kNotFound, contents.name + " has no calls");
    }
    if (chosen.empty()) {
        return refuse(RefusalKind::kNotFound, fmt::format("{} has no call {}; it has: {}", contents.name,
                                                          safeWord(*call), fmt::join(ids, ", ")));
    }
    return LadderSteps(contents, calls, std::move(chosen));
}

LadderSteps::LadderSteps(TraceContents const& contents, TracedCalls const& calls, std::vector<TracedCall const*> chosen)
    : contents_(&contents)
    , calls_(&calls)
    , chosen_(std::move(chosen))
    , isChosen_(chosen_.begin(), chosen_.end())
{
    for (auto const& [number, step] : contents.steps) {
        if (step.kind != StepKind::kRequest && isAboutChosen(step)) {
            markCausesOf(step);
        }
    }
}

void LadderSteps::markCausesOf(TracedStep const& step)
{
    TracedStep const* cause = contents_->causeOf(step);
    while (cause != nullptr && leading_.insert(cause->number).second) {
        cause = contents_->causeOf(*cause);
    }
}

bool LadderSteps::isChosen(TracedCall const* call) const
{
    return isChosen_.contains(call);
}

bool LadderSteps::isAboutChosen(std::string_view call, TracedStep const& step) const
{
    return !call.empty() && isChosen(calls_->withId(call, step.number));
}

bool LadderSteps::isAboutChosen(TracedStep const& step) const
{
    switch (step.kind) {
    case StepKind::kRequest:
        return isAboutChosen(requestWords(step.text("text")).call, step);
    case StepKind::kEvent: {
        auto const event = readEvent(step.text("text"));
        return event && isAboutChosen(event->call(), step);
    }
    case StepKind::kPlatform:
        return isActing(step) && isAboutChosen(callOfPlatform(step), step);
    case StepKind::kEngine:
        return isAboutChosen(step.text("call"), step);
    case StepKind::kSip:
        return step.wholeNumber("status") != kTrying && isChosen(calls_->withDialog(step.text("dialog")));
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
    return false;
}

bool LadderSteps::contains(TracedStep const& step) const
{
    bool const hasLed = leading_.contains(step.number);
    switch (step.kind) {
    case StepKind::kRequest:
        return hasLed || isAboutChosen(step);
    case StepKind::kCommand:
    case StepKind::kKey:
    case StepKind::kTimer:
    case StepKind::kFault:
        return hasLed;
    case StepKind::kPlatform:
        return isAboutChosen(step) || (hasLed && isActing(step));
    case StepKind::kAnswer:
    case StepKind::kReason: {
        TracedStep const* const cause = contents_->causeOf(step);
        return cause != nullptr && contains(*cause);
    }
    case StepKind::kEvent:
    case StepKind::kEngine:
    case StepKind::kSip:
        return isAboutChosen(step);
    case StepKind::kLamp:
    case StepKind::kStore:
        break;
    }
    return false;
}

}  // namespace telephone

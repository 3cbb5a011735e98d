#include "telephone/analysis/TracedCalls.h"

#include <algorithm>

namespace telephone {

namespace {

bool isIncomingState(std::string_view state)
{
    return state == "incoming" || state == "ringing";
}

}  // namespace

TracedCalls::TracedCalls(TraceContents const& contents)
{
    for (auto const& [number, step] : contents.steps) {
        note(step);
    }
}

void TracedCalls::note(TracedStep const& step)
{
    if (step.kind != StepKind::kEngine) {
        return;
    }
    bool const isNew = !step.has("before");
    std::vector<TracedCall*>& sameId = byId_[step.text("call")];
    if (isNew || sameId.empty()) {
        bool const isIncoming = isNew && isIncomingState(step.text("state"));
        bool const isOutgoing = isNew && step.text("state") == "dialling";
        calls_.push_back({step.text("call"), step.text("line"), {}, step.number, isIncoming, isOutgoing});
        sameId.push_back(&calls_.back());
    }
    TracedCall& call = *sameId.back();
    if (step.has("party")) {
        call.party = step.text("party");
    }
    if (step.has("dialog")) {
        byDialog_[step.text("dialog")] = &call;
    }
}

TracedCall const* TracedCalls::withDialog(std::string_view dialog) const
{
    auto const found = byDialog_.find(dialog);
    return found != byDialog_.end() ? found->second : nullptr;
}

TracedCall const* TracedCalls::withId(std::string_view id, std::uint64_t step) const
{
    auto const found = byId_.find(id);
    if (found == byId_.end()) {
        return nullptr;
    }
    auto const& calls = found->second;
    auto const later =
        std::upper_bound(calls.begin(), calls.end(), step,
                         [](std::uint64_t number, TracedCall const* call) { return number < call->begin; });
    return later == calls.begin() ? calls.front() : *(later - 1);
}

}  // namespace telephone

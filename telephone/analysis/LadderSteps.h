// Which steps of a trace belong to a ladder. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "telephone/analysis/TracedCalls.h"
#include "telephone/analysis/TracedStep.h"
#include "telephone/base/Refusal.h"

namespace telephone {

class LadderSteps
{
public:
    // The calls with that id, or all calls. Both must live as long. Refused if there is none.
    [[nodiscard]] static Outcome<LadderSteps> choose(TraceContents const& contents, TracedCalls const& calls,
                                                     std::optional<std::string_view> call);

    // In the order in which they began.
    [[nodiscard]] std::vector<TracedCall const*> const& calls() const { return chosen_; }
    [[nodiscard]] bool isChosen(TracedCall const* call) const;

    // Whether the step has a row in the ladder, or decides what goes on there.
    [[nodiscard]] bool contains(TracedStep const& step) const;

private:
    LadderSteps(TraceContents const& contents, TracedCalls const& calls, std::vector<TracedCall const*> chosen);

    void markCausesOf(TracedStep const& step);
    // The step says itself that it is about a chosen call.
    [[nodiscard]] bool isAboutChosen(TracedStep const& step) const;
    [[nodiscard]] bool isAboutChosen(std::string_view call, TracedStep const& step) const;

    TraceContents const* contents_;
    TracedCalls const* calls_;
    std::vector<TracedCall const*> chosen_;
    std::unordered_set<TracedCall const*> isChosen_;
    std::unordered_set<std::uint64_t> leading_;  // steps that led to one about a chosen call
};

}  // namespace telephone

// Writes a step of a trace for people, in one readable line without its time: "CSfi::CallFeature  call=3 feature=hold
// success". One thread.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "telephone/analysis/TracedCalls.h"
#include "telephone/analysis/TracedStep.h"
#include "telephone/display/StyledText.h"

namespace telephone {

class StepLines
{
public:
    // Both must live as long.
    StepLines(TraceContents const& contents, TracedCalls const& calls, DisplayOptions options)
        : contents_(contents)
        , calls_(calls)
        , options_(std::move(options))
    {}

    // What stands before the step: the number of an event, an arrow, or its kind.
    [[nodiscard]] std::string mark(TracedStep const& step) const;
    [[nodiscard]] Style markStyle(TracedStep const& step) const;
    [[nodiscard]] StyledText line(TracedStep const& step) const;
    // The text of the step as it stands, made safe; without one, the readable line. A SIP message has several lines.
    [[nodiscard]] std::vector<StyledText> rawLines(TracedStep const& step) const;

private:
    [[nodiscard]] StyledText request(TracedStep const& step) const;
    [[nodiscard]] StyledText answer(TracedStep const& step) const;
    [[nodiscard]] StyledText event(TracedStep const& step) const;
    [[nodiscard]] StyledText platformCall(TracedStep const& step) const;
    [[nodiscard]] StyledText engineStep(TracedStep const& step) const;
    [[nodiscard]] StyledText lamp(TracedStep const& step) const;
    [[nodiscard]] StyledText store(TracedStep const& step) const;
    [[nodiscard]] StyledText sipMessage(TracedStep const& step) const;

    TraceContents const& contents_;
    TracedCalls const& calls_;
    DisplayOptions const options_;
};

}  // namespace telephone

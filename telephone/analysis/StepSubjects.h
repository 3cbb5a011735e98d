// Which line and call each step of a trace is about. A step that does not say it is about those of the step that caused
// it. One thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "telephone/analysis/TracedCalls.h"
#include "telephone/analysis/TracedStep.h"

namespace telephone {

struct StepSubject
{
    std::string line;  // "4711#2"; empty: none
    std::string call;  // empty: none
};

class StepSubjects
{
public:
    // The calls must live as long.
    explicit StepSubjects(TracedCalls const& calls)
        : calls_(calls)
    {}

    // To be called once for each step, a cause before its effects.
    StepSubject const& note(TracedStep const& step);

private:
    [[nodiscard]] StepSubject ownSubject(TracedStep const& step) const;

    TracedCalls const& calls_;
    std::map<std::uint64_t, StepSubject> subjects_;  // by the number of the step
};

}  // namespace telephone

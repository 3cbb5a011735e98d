// The results of scripts as JUnit XML, which CI systems read.
#pragma once

#include <string>
#include <vector>

#include "telephone/base/Refusal.h"

namespace telephone {

enum class ScriptVerdict
{
    kPassed,
    kFailed,  // a step did not hold, or the script has mistakes
    kBroken,  // the telephone ended in another way, or not in time
    kNotRun,
};

struct ScriptCase
{
    std::string suite;
    std::string name;
    double seconds = 0;
    ScriptVerdict verdict = ScriptVerdict::kPassed;
    std::vector<std::string> reasons;  // why it did not pass
};

// One suite for each run of cases that name the same one. Refused if the file cannot be written.
[[nodiscard]] Outcome<> writeJUnit(std::vector<ScriptCase> const& cases, std::string const& file);

}  // namespace telephone

// What the telephone that plays a script tells the test runner: a file with one JSON object.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/console/ScriptPlayer.h"
#include "telephone/testing/Coverage.h"

namespace telephone {

struct PlayReport
{
    ScriptResult result;
    Coverage::Names touched;
};

// Refused if the file cannot be written.
[[nodiscard]] Outcome<> writePlayReport(PlayReport const& report, std::string const& file);
// Refused if the file is missing or incomplete: the telephone has not come to the end of the script.
[[nodiscard]] Outcome<PlayReport> readPlayReport(std::string const& file);

}  // namespace telephone

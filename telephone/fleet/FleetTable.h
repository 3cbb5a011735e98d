// The telephones of a fleet at a glance: as a table for a terminal, and as JSON for the page. A row is a plain value.
#pragma once

#include <string>
#include <vector>

#include "telephone/display/DisplayOptions.h"
#include "telephone/fleet/Asking.h"
#include "telephone/fleet/ProcessUse.h"
#include "telephone/protocol/JsonText.h"

namespace telephone {

struct FleetRow
{
    int number = 0;
    FleetCondition condition = FleetCondition::kStarting;
    std::string reason = {};  // why it ended last; empty: it has not
    pid_t process = 0;        // 0: none
    int starts = 0;
    ProcessUse use = {};
    Json state = {};  // of the telephone, as it tells it; null while it does not run or does not answer
};

// With the lock of Members.
[[nodiscard]] std::vector<FleetRow> rowsOf(FleetTelephones const& telephones, int stop);

// A line for each, with a heading and the sums.
[[nodiscard]] std::vector<std::string> fleetTable(std::vector<FleetRow> const& rows, DisplayOptions const& options);

// Of each: {"number":7,"condition":"running","reason":null,"process":4242,"starts":1,"memory":3489792,"processor":0.31,
// "line":"1007","registration":"registered","state":"idle","lamp":{...},"calls":[...]}; from "line" on null without a
// state. Memory in bytes, processor time in seconds; lamp and calls as the state has them.
[[nodiscard]] Json fleetJson(std::vector<FleetRow> const& rows);

}  // namespace telephone

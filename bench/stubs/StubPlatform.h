// A platform that does nothing: a keyset of plain lines and a call control that answers every operation at once. It has
// only what holding a call needs; the other collaborators are null.
#pragma once

#include "platform/lines/LineManager.h"
#include "platform/sfi/CSfi.h"

namespace stub_platform {

// The platform's own operations, for direct calls.
CSfi& sfi();
LineManager& lines();
// Whether levels 5 and 6 are enabled; off at start.
void switchLog(bool on);

}  // namespace stub_platform

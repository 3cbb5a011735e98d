// A platform that does nothing: a keyset of plain lines and a call control that answers every operation at once. Only
// what holding a call needs is there; the other collaborators are null.
#pragma once

#include "platform/lines/LineManager.h"
#include "platform/sfi/CSfi.h"

namespace stub_platform {

// What the service is compared with: the platform's own operations, called directly.
CSfi& sfi();
LineManager& lines();
// Whether levels 5 and 6 are written; off at start.
void switchLog(bool on);

}  // namespace stub_platform

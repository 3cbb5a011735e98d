// A timer of the telephone has run out.
#pragma once

#include "telephone/base/Touched.h"

namespace telephone {

// Counted for the coverage of scripts, and a step of the trace, which causes what the thread does until its scope ends.
// Call it first in the work of a timer. Any thread.
void timerRanOut(PhoneTimer timer);

}  // namespace telephone

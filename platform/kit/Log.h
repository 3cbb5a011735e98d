/// @file
/// The log of the kit, on standard error.
#pragma once

namespace kit {

/// Sets which lines the kit's log writes: those whose level is this number or a smaller one, at first kLogFailure. No
/// effect once the program defines loggingOnAppUni itself. Thread: any.
void setLogLevel(int level);

}  // namespace kit

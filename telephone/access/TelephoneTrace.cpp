#include "telephone/access/TelephoneTrace.h"

#include "telephone/access/TelephoneControls.h"
#include "telephone/framework/Log.h"
#include "telephone/trace/Trace.h"

namespace telephone {

Outcome<> traceTo(std::string const& file, TelephoneControls& telephone)
{
    TelephoneState const state = telephone.state();
    return startTrace(file, {state.start, state.domain},
                      [](std::string const& reason) { log(kLogFailure, "trace", "{}", reason); });
}

}  // namespace telephone

// Explains in sentences what led to an event or to the light of a lamp: the chain of causes, back to the request, key
// or message that began it. Pure functions.
//
//     Event 9 says that call 3 to 100 is held.
//     The call engine had put call 3 to 100 on hold, because 100 answered the INVITE with 200 OK recvonly.
//     The telephone had sent this INVITE to 100, because the service called CSfi::CallFeature with feature hold.
//     It did so for the request HoldCall 4711 call 3 of console at 12:00:01.200.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/analysis/TracedStep.h"
#include "telephone/base/Refusal.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

using Sentences = std::vector<std::string>;

// Refused if the trace has no such event.
[[nodiscard]] Outcome<Sentences> explainEvent(TraceContents const& contents, std::uint64_t number,
                                              DisplayOptions const& options);
// The latest change of the lamp with that number or label. Refused if the trace has none.
[[nodiscard]] Outcome<Sentences> explainLamp(TraceContents const& contents, std::string_view lamp,
                                             DisplayOptions const& options);

}  // namespace telephone

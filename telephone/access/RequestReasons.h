// Why a request was refused, or had no effect although its answer is success. The service answers with bare words; each
// way in that is asked for reasons gives these beside the answer. Pure functions; any thread.
//
// A reason comes from one of three sources, and is given once: a rule for what the service itself does silently (an
// unknown line, a locked telephone, a word that does not exist), the description of the protocol for a text that is
// wrong, and the refusals that the telephone reported while the request ran.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/framework/RequestRunner.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

// The telephone's state when the request came. Called only for a request that a rule looks at, possibly after it ran;
// the state must live until reasonsOf returns.
using StateOfRequest = std::function<TelephoneState const&()>;

// One sentence each, without a full stop: "line 4711 has no call 7; it has calls 2 and 3". None for a request that did
// all it was asked to.
[[nodiscard]] std::vector<std::string> reasonsOf(std::string_view request, RequestRunner::Reply const& reply,
                                                 StateOfRequest const& before);

// The rules, each by its request and what it finds: "HoldCall: unknown call". What the coverage of scripts counts.
[[nodiscard]] std::vector<std::string> reasonRules();

}  // namespace telephone

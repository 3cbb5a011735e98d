// Where refusals of the call control become the bare numbers of the platform: each refusal is reported here, once.
#pragma once

#include "platform/sfi/SfiTypes.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// sfiSuccess, else sfiFailure.
sfiResult resultOf(Outcome<> const& outcome);

// For operations on call-backs: a refusal becomes sfiFailure or one of the four results of call-backs, by its kind.
sfiResult callBackResultOf(Outcome<> const& outcome);

}  // namespace telephone

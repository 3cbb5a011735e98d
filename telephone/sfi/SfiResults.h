// Where refusals of the call control become the bare numbers of the platform: each refusal is reported here, once.
#pragma once

#include "platform/sfi/SfiTypes.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// sfiSuccess, else sfiFailure.
sfiResult resultOf(Outcome<> const& outcome);

// Of an operation on call-backs: the kinds of refusal that have a result of their own become that.
sfiResult callBackResultOf(Outcome<> const& outcome);

}  // namespace telephone

#include "telephone/sfi/SfiResults.h"

#include "telephone/framework/Refusals.h"
#include "telephone/sfi/LogComponent.h"

namespace telephone {

namespace {

sfiResult callBackFailureOf(RefusalKind kind)
{
    switch (kind) {
    case RefusalKind::kWrongState:
        return sfiFailureCallBackInvalidState;
    case RefusalKind::kNotFound:
        return sfiFailureCallBackNoCallInfo;
    case RefusalKind::kLimit:
        return sfiFailureCallBackToMany;
    case RefusalKind::kAlreadyExists:
        return sfiFailureCallBackAllreadyExists;
    case RefusalKind::kBadInput:
    case RefusalKind::kNotPermitted:
    case RefusalKind::kNotSupported:
    case RefusalKind::kUnavailable:
        break;
    }
    return sfiFailure;
}

}  // namespace

sfiResult resultOf(Outcome<> const& outcome)
{
    return reportIfRefused(kComponent, outcome) ? sfiFailure : sfiSuccess;
}

sfiResult callBackResultOf(Outcome<> const& outcome)
{
    return resultOf(outcome) == sfiSuccess ? sfiSuccess : callBackFailureOf(outcome.error().kind);
}

}  // namespace telephone

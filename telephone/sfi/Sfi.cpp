#include "telephone/sfi/Sfi.h"

#include <mutex>
#include <utility>

#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/AppearanceMap.h"
#include "telephone/sfi/LogComponent.h"
#include "telephone/sfi/SfiResults.h"
#include "telephone/traced/TracedPlatform.h"

namespace telephone {

Sfi::Sfi(Parts const& parts)
    : engine_(parts.engine)
    , lines_(parts.lines)
    , policy_(parts.policy)
    , settings_(parts.settings)
    , events_(parts.events)
    , timers_(parts.timers)
    , appearances_(parts.appearances)
{}

SfiMCAMapper* Sfi::GetMCAMapper()
{
    return appearances_;
}

// --- life

void Sfi::Initialise(SvcRTEContext*)
{
    log(kLogInfo, kComponent, "the service has found the call control");
}

void Sfi::SetCommsService(Executable* service)
{
    timers_.deliverTo(service);
}

sfiResult Sfi::Activate()
{
    if (ended_) {
        return resultOf(refuse(RefusalKind::kWrongState, "the call control has ended for good"));
    }
    engine_.activate();
    return sfiSuccess;
}

sfiResult Sfi::Deactivate(bool final, bool)
{
    if (final) {
        ended_ = true;
    }
    engine_.deactivate();
    return sfiSuccess;
}

void Sfi::Startup()
{
    log(kLogInfo, kComponent, "starting");
}

void Sfi::Start()
{
    log(kLogInfo, kComponent, "started");
}

sfiResult Sfi::Subscribe(Executable* subscriber)
{
    return resultOf(events_.subscribe(subscriber));
}

// --- calls

// The service puts a call on an appearance before it asks for it here: a call that does not exist gives it back.
void Sfi::releaseUnlessExists(sfiCallInfo const& call)
{
    if (appearances_ != nullptr && !engine_.call(call.callID)) {
        appearances_->callUnknown(call.callID);
    }
}

sfiResult Sfi::resultFor(sfiCallInfo const& call, Outcome<> const& outcome)
{
    releaseUnlessExists(call);
    return resultOf(outcome);
}

sfiResult Sfi::callBackResultFor(sfiCallInfo const& call, Outcome<> const& outcome)
{
    releaseUnlessExists(call);
    return callBackResultOf(outcome);
}

sfiResult Sfi::CallMake(sfiCallInfo* call, std::string const& destination, int, int, bool dssDirectCall,
                        bool bridgeCall, bool callCompletionCall, bool)
{
    // A request that carries no flags sets them all; a consultation and a pick-up set none.
    bool const asked = dssDirectCall || bridgeCall || callCompletionCall;
    return resultFor(*call, engine_.outgoing().make(call->lineID, call->appearanceIndex, call->callID, destination,
                                                    asked ? CallPurpose::kOrdinary : CallPurpose::kConsultation));
}

sfiResult Sfi::GroupPickup(sfiCallInfo* call)
{
    return resultFor(*call, engine_.pickups().group(call->lineID, call->appearanceIndex, call->callID));
}

sfiResult Sfi::CallClear(sfiCallInfo* call, CSTAEventCause cause)
{
    return resultFor(*call, engine_.list().clear(call->callID, cause));
}

sfiResult Sfi::CallRetrieve(sfiCallInfo* call)
{
    return resultFor(*call, engine_.established().retrieve(call->callID));
}

sfiResult Sfi::CallAccept(sfiCallInfo* call)
{
    return resultFor(*call, engine_.incoming().ring(call->callID));
}

sfiResult Sfi::CallAnswer(sfiCallInfo* call)
{
    return resultFor(*call, engine_.incoming().answer(call->callID));
}

sfiResult Sfi::CallRefuse(sfiCallInfo* call, sfiRefuseCall reason)
{
    return resultFor(*call, engine_.incoming().reject(call->callID, reason));
}

sfiResult Sfi::CallFeature(sfiCallInfo* call, sfiFeature feature, char const* destination, int)
{
    std::lock_guard const guard(engine_);
    auto const holdAsked = std::exchange(holdAsked_, std::nullopt);
    if (destination == nullptr) {
        return otherCallFeature(*call, feature);
    }
    // A hold is recognised by its announcement, whatever feature the application names.
    if (*destination == '\0' && holdAsked == call->callID) {
        return resultFor(*call, engine_.established().hold(call->callID, feature < 0 ? sfiFeatureHold : feature));
    }
    if (feature == sfiFeatureDeflect) {
        return resultFor(*call, engine_.incoming().deflect(call->callID, destination));
    }
    if (feature == sfiFeatureBlindTransfer) {
        return resultFor(*call, engine_.joined().blindTransfer(call->callID, destination));
    }
    return resultFor(
        *call, refuse(RefusalKind::kNotSupported, fmt::format("call {}: there is no feature {} with a destination",
                                                              call->callID, static_cast<int>(feature))));
}

// Features that join a call with the telephone's other call.
sfiResult Sfi::otherCallFeature(sfiCallInfo const& call, sfiFeature feature)
{
    if (feature == sfiFeatureAlternate && call.callID == 0) {
        return resultFor(call, engine_.established().alternate(call.lineID));
    }
    return resultFor(call, feature == sfiFeatureAttendedTransfer ? engine_.joined().attendedTransfer(call.callID)
                                                                 : engine_.joined().conference(call.callID));
}

void Sfi::SetManualHoldIndication(sfiCallInfo* call, bool manual)
{
    std::lock_guard const guard(engine_);
    holdAsked_ = call->callID;
    engine_.established().setHeldByHand(call->callID, manual);
    releaseUnlessExists(*call);
}

sfiResult Sfi::GetManualHoldIndication(sfiCallInfo* call)
{
    auto const found = engine_.call(call->callID);
    releaseUnlessExists(*call);
    return found && found->held && found->heldByHand ? sfiSuccess : sfiFailure;
}

sfiResult Sfi::SetServiceState(sfiServiceState state)
{
    if (state < sfiServiceInService || state > sfiServiceDoNotDisturb) {
        return resultOf(
            refuse(RefusalKind::kBadInput, fmt::format("there is no service state {}", static_cast<int>(state))));
    }
    engine_.setServiceState(state);
    return sfiSuccess;
}

sfiResult Sfi::GetServiceState(sfiServiceState& state)
{
    state = engine_.serviceState();
    return sfiSuccess;
}

sfiResult Sfi::GenerateDigits(sfiCallInfo* call, char const* digits)
{
    return resultFor(*call, engine_.established().sendDigits(call->callID, digits != nullptr ? digits : ""));
}

sfiResult Sfi::InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize)
{
    return resultOf(engine_.server().requestFeatures(lineURI, initialize));
}

sfiResult Sfi::SendCSTARequest(std::string const& lineURI, std::string const& body)
{
    return resultOf(engine_.server().send(lineURI, body));
}

sfiResult Sfi::SendUACSTAServerMessage(std::string& body)
{
    return resultOf(engine_.server().send({}, body));
}

sfiResult Sfi::ActivateCallbackRinging(sfiCallInfo* call)
{
    return callBackResultFor(*call, engine_.callBacks().set(call->callID, sfiCallCompletionOnNoReply));
}

sfiResult Sfi::ActivateCallbackBusy(sfiCallInfo* call)
{
    return callBackResultFor(*call, engine_.callBacks().set(call->callID, sfiCallCompletionOnBusy));
}

sfiResult Sfi::CancelCallbacks(sfiCallInfo* call, std::string& target, sfiCancelCallBackType type, bool displayOutcome)
{
    return callBackResultFor(*call, engine_.callBacks().cancel(call->callID, target, type, displayOutcome));
}

sfiResult Sfi::SecurityChangeReinvite(sfiCallInfo* call, bool secure)
{
    return resultFor(*call, engine_.established().changeSecurity(call->callID, secure));
}

}  // namespace telephone

CSfi* CSfi::GetInstance()
{
    return telephone::traced<CSfi>(telephone::OnlyObject<telephone::Sfi>::get());
}

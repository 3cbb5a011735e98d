#include "telephone/sfi/Sfi.h"

#include <mutex>
#include <utility>

#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/TimerService.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "sfi";

std::atomic<Sfi*> instance{nullptr};

sfiResult refuse(std::string const& reason)
{
    log(kLogFailure, kComponent, "{}", reason);
    return sfiFailure;
}

}  // namespace

Sfi::Sfi(Parts const& parts)
    : engine_(parts.engine)
    , lines_(parts.lines)
    , policy_(parts.policy)
    , settings_(parts.settings)
    , events_(parts.events)
    , timers_(parts.timers)
    , appearances_(parts.appearances)
{
    instance = this;
}

Sfi::~Sfi()
{
    instance = nullptr;
}

// --- life

void Sfi::Initialise(SvcRTEContext*)
{
    log(kLogInfo, kComponent, "The service has found the call control");
}

void Sfi::SetCommsService(Executable* service)
{
    timers_.deliverTo(service);
}

sfiResult Sfi::Activate()
{
    if (ended_) {
        return refuse("activate: the call control has ended for good");
    }
    return engine_.activate();
}

sfiResult Sfi::Deactivate(bool final, bool)
{
    if (final) {
        ended_ = true;
    }
    return engine_.deactivate();
}

void Sfi::Startup()
{
    log(kLogInfo, kComponent, "Starting");
}

void Sfi::Start()
{
    log(kLogInfo, kComponent, "Started");
}

sfiResult Sfi::Subscribe(Executable* subscriber)
{
    return events_.subscribe(subscriber) ? sfiSuccess : refuse("subscribe: not a receiver of events");
}

// --- calls

sfiResult Sfi::CallMake(sfiCallInfo* call, std::string const& destination, int, int, bool dssDirectCall,
                        bool bridgeCall, bool callCompletionCall, bool)
{
    // A request that carries no flags sets them all; a consultation and a pick-up set none.
    bool const asked = dssDirectCall || bridgeCall || callCompletionCall;
    return engine_.make(call->lineID, call->appearanceIndex, call->callID, destination,
                        asked ? CallPurpose::kOrdinary : CallPurpose::kConsultation);
}

sfiResult Sfi::GroupPickup(sfiCallInfo* call)
{
    return engine_.groupPickup(call->lineID, call->appearanceIndex, call->callID);
}

sfiResult Sfi::CallClear(sfiCallInfo* call, CSTAEventCause cause)
{
    return engine_.clear(call->callID, cause);
}

sfiResult Sfi::CallRetrieve(sfiCallInfo* call)
{
    return engine_.retrieve(call->callID);
}

sfiResult Sfi::CallAccept(sfiCallInfo* call)
{
    return engine_.ring(call->callID);
}

sfiResult Sfi::CallAnswer(sfiCallInfo* call)
{
    return engine_.answer(call->callID);
}

sfiResult Sfi::CallRefuse(sfiCallInfo* call, sfiRefuseCall reason)
{
    return engine_.refuse(call->callID, reason);
}

sfiResult Sfi::CallFeature(sfiCallInfo* call, sfiFeature feature, char const* destination, int)
{
    std::lock_guard const guard(engine_);
    int const holdAsked = std::exchange(holdAsked_, 0);
    if (destination == nullptr) {
        return otherCallFeature(*call, feature);
    }
    // Whatever reason an application gives for a hold, the announcement before it tells it apart.
    if (*destination == '\0' && holdAsked == call->callID && holdAsked != 0) {
        return engine_.hold(call->callID, feature < 0 ? sfiFeatureHold : feature);
    }
    if (feature == sfiFeatureDeflect) {
        return engine_.deflect(call->callID, destination);
    }
    if (feature == sfiFeatureBlindTransfer) {
        return engine_.blindTransfer(call->callID, destination);
    }
    return refuse("call " + std::to_string(call->callID) + ": there is no feature " + std::to_string(feature) +
                  " with a destination");
}

// Features between a call and the telephone's other one.
sfiResult Sfi::otherCallFeature(sfiCallInfo const& call, sfiFeature feature)
{
    if (feature == sfiFeatureAlternate && call.callID == 0) {
        return engine_.alternate(call.lineID);
    }
    return feature == sfiFeatureAttendedTransfer ? engine_.attendedTransfer(call.callID)
                                                 : engine_.conference(call.callID);
}

void Sfi::SetManualHoldIndication(sfiCallInfo* call, bool manual)
{
    std::lock_guard const guard(engine_);
    holdAsked_ = call->callID;
    engine_.setHeldByHand(call->callID, manual);
}

sfiResult Sfi::GetManualHoldIndication(sfiCallInfo* call)
{
    auto const found = engine_.call(call->callID);
    return found && found->held && found->heldByHand ? sfiSuccess : sfiFailure;
}

sfiResult Sfi::SetServiceState(sfiServiceState state)
{
    if (state < sfiServiceInService || state > sfiServiceDoNotDisturb) {
        return refuse("there is no service state " + std::to_string(state));
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
    return engine_.sendDigits(call->callID, digits != nullptr ? digits : "");
}

sfiResult Sfi::InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize)
{
    return engine_.serverFeatures(lineURI, initialize);
}

sfiResult Sfi::SendCSTARequest(std::string const& lineURI, std::string const& body)
{
    return engine_.sendCsta(lineURI, body);
}

sfiResult Sfi::SendUACSTAServerMessage(std::string& body)
{
    return engine_.sendCsta({}, body);
}

sfiResult Sfi::ActivateCallbackRinging(sfiCallInfo* call)
{
    return engine_.callBackOnNoReply(call->callID);
}

sfiResult Sfi::ActivateCallbackBusy(sfiCallInfo* call)
{
    return engine_.callBackOnBusy(call->callID);
}

sfiResult Sfi::CancelCallbacks(sfiCallInfo* call, std::string& target, sfiCancelCallBackType type, bool displayOutcome)
{
    return engine_.cancelCallBacks(call->callID, target, type, displayOutcome);
}

sfiResult Sfi::SecurityChangeReinvite(sfiCallInfo* call, bool secure)
{
    return engine_.changeSecurity(call->callID, secure);
}

void Sfi::Lock()
{
    engine_.lock();
}

void Sfi::Unlock()
{
    engine_.unlock();
}

SfiMCAMapper* Sfi::GetMCAMapper()
{
    return appearances_;
}

}  // namespace telephone

CSfi* CSfi::GetInstance()
{
    return telephone::instance;
}

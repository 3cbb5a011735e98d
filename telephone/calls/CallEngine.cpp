#include "telephone/calls/CallEngine.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/CallEngineImpl.h"

namespace telephone {

namespace {
using Guard = std::lock_guard<sip::EventLoop>;
}

CallEngine::CallEngine(sip::EventLoop& loop, EngineConfiguration configuration, LineDirectory& lines,
                       CallPolicy& policy, EventPoster post)
{
    impl_ = std::make_unique<Impl>(loop, std::move(configuration), lines, policy, std::move(post));
}

CallEngine::~CallEngine() = default;

void CallEngine::lock()
{
    impl_->loop_.lock();
}

void CallEngine::unlock()
{
    impl_->loop_.unlock();
}

bool CallEngine::try_lock()
{
    return impl_->loop_.try_lock();
}

sfiResult CallEngine::activate()
{
    const Guard guard(impl_->loop_);
    return impl_->activate();
}

sfiResult CallEngine::deactivate()
{
    const Guard guard(impl_->loop_);
    return impl_->deactivate();
}

bool CallEngine::isActive() const
{
    const Guard guard(impl_->loop_);
    return impl_->active_;
}

void CallEngine::setServiceState(sfiServiceState state)
{
    const Guard guard(impl_->loop_);
    impl_->setServiceState(state);
}

sfiServiceState CallEngine::serviceState() const
{
    return impl_->serviceState_;
}

void CallEngine::refreshRegistrations()
{
    const Guard guard(impl_->loop_);
    if (impl_->active_) {
        impl_->registrations_->refresh(impl_->lines_.accounts());
    }
}

sip::UserAgent& CallEngine::userAgent()
{
    return *impl_->agent_;
}

std::optional<sip::Account> CallEngine::accountOfLine(int lineNumber) const
{
    const Guard guard(impl_->loop_);
    auto const line = impl_->accountOf(lineNumber);
    return line ? std::optional(line->account) : std::nullopt;
}

void CallEngine::addObserver(CallObserver& observer)
{
    const Guard guard(impl_->loop_);
    auto& observers = impl_->observers_;
    if (std::find(observers.begin(), observers.end(), &observer) == observers.end()) {
        observers.push_back(&observer);
    }
}

void CallEngine::removeObserver(CallObserver& observer)
{
    const Guard guard(impl_->loop_);
    std::erase(impl_->observers_, &observer);
}

std::vector<CallSnapshot> CallEngine::calls() const
{
    const Guard guard(impl_->loop_);
    std::vector<CallSnapshot> snapshots;
    for (auto const& call : impl_->calls_) {
        snapshots.push_back(call->snapshot());
    }
    return snapshots;
}

std::optional<CallSnapshot> CallEngine::call(int callID) const
{
    const Guard guard(impl_->loop_);
    Call const* found = impl_->find(callID);
    return found != nullptr ? std::optional(found->snapshot()) : std::nullopt;
}

std::vector<CallSnapshot> CallEngine::callsOnLine(int recordLine) const
{
    std::vector<CallSnapshot> snapshots = calls();
    std::erase_if(snapshots, [recordLine](CallSnapshot const& call) {
        return call.line.recordLine != recordLine && call.line.lineNumber != recordLine;
    });
    return snapshots;
}

std::optional<CallSnapshot> CallEngine::callOnLineInState(int recordLine, sfiCallState state) const
{
    for (CallSnapshot& call : callsOnLine(recordLine)) {
        if (call.state == state) {
            return std::move(call);
        }
    }
    return std::nullopt;
}

std::optional<CallSnapshot> CallEngine::alertingCallOnLine(int recordLine) const
{
    for (CallSnapshot& call : callsOnLine(recordLine)) {
        if (call.alerting()) {
            return std::move(call);
        }
    }
    return std::nullopt;
}

std::optional<CallSnapshot> CallEngine::activeCall() const
{
    const Guard guard(impl_->loop_);
    auto const speaking = impl_->speakingCalls(nullptr);
    return speaking.empty() ? std::nullopt : std::optional(speaking.front()->snapshot());
}

std::optional<CallSnapshot> CallEngine::lastHeldCall() const
{
    const Guard guard(impl_->loop_);
    return impl_->holdOrder_.empty() ? std::nullopt : call(impl_->holdOrder_.back());
}

bool CallEngine::isRegistered(int lineNumber) const
{
    const Guard guard(impl_->loop_);
    return impl_->registrations_->isRegistered(lineNumber);
}

int CallEngine::freeCallID()
{
    const Guard guard(impl_->loop_);
    return impl_->freeCallID();
}

sfiResult CallEngine::make(int recordLine, int appearance, int callID, std::string const& destination,
                           CallPurpose purpose)
{
    const Guard guard(impl_->loop_);
    return impl_->make(recordLine, appearance, callID, destination, purpose);
}

sfiResult CallEngine::ring(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->ring(callID);
}

sfiResult CallEngine::answer(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->answer(callID);
}

sfiResult CallEngine::refuse(int callID, sfiRefuseCall reason)
{
    const Guard guard(impl_->loop_);
    return impl_->refuse(callID, reason);
}

sfiResult CallEngine::deflect(int callID, std::string const& destination)
{
    const Guard guard(impl_->loop_);
    return impl_->deflect(callID, destination);
}

sfiResult CallEngine::clear(int callID, CSTAEventCause cause)
{
    const Guard guard(impl_->loop_);
    return impl_->clear(callID, cause);
}

sfiResult CallEngine::hold(int callID, sfiFeature feature)
{
    const Guard guard(impl_->loop_);
    return impl_->hold(callID, feature);
}

sfiResult CallEngine::retrieve(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->retrieve(callID, sfiFeatureRetrieve);
}

void CallEngine::setHeldByHand(int callID, bool manual)
{
    const Guard guard(impl_->loop_);
    if (Call* call = impl_->require(callID, "hold")) {
        call->setHeldByHand(manual);
    }
}

sfiResult CallEngine::alternate(int recordLine)
{
    const Guard guard(impl_->loop_);
    return impl_->alternate(recordLine);
}

sfiResult CallEngine::blindTransfer(int callID, std::string const& destination)
{
    const Guard guard(impl_->loop_);
    return impl_->blindTransfer(callID, destination);
}

sfiResult CallEngine::attendedTransfer(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->attendedTransfer(callID);
}

sfiResult CallEngine::conference(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->conference(callID);
}

sfiResult CallEngine::sendDigits(int callID, std::string const& digits)
{
    const Guard guard(impl_->loop_);
    return impl_->sendDigits(callID, digits);
}

sfiResult CallEngine::changeSecurity(int callID, bool secure)
{
    const Guard guard(impl_->loop_);
    return impl_->changeSecurity(callID, secure);
}

sfiResult CallEngine::pickup(int recordLine, int appearance, int callID, PickupTarget const& target)
{
    const Guard guard(impl_->loop_);
    return impl_->pickup(recordLine, appearance, callID, target);
}

sfiResult CallEngine::directedPickup(int recordLine, int appearance, int callID, std::string const& number)
{
    const Guard guard(impl_->loop_);
    return impl_->directedPickup(recordLine, appearance, callID, number);
}

sfiResult CallEngine::groupPickup(int recordLine, int appearance, int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->groupPickup(recordLine, appearance, callID);
}

sfiResult CallEngine::callBackOnNoReply(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->callBack(callID, sfiCallCompletionOnNoReply);
}

sfiResult CallEngine::callBackOnBusy(int callID)
{
    const Guard guard(impl_->loop_);
    return impl_->callBack(callID, sfiCallCompletionOnBusy);
}

sfiResult CallEngine::cancelCallBacks(int callID, std::string const& target, sfiCancelCallBackType type,
                                      bool displayOutcome)
{
    const Guard guard(impl_->loop_);
    return impl_->cancelCallBacks(callID, target, type, displayOutcome);
}

std::optional<sfiMessageWaitingRecord> CallEngine::messageWaiting(std::string const& phoneNumber) const
{
    const Guard guard(impl_->loop_);
    return impl_->messageWaiting(phoneNumber);
}

sfiResult CallEngine::sendCsta(std::string const& lineURI, std::string const& body)
{
    const Guard guard(impl_->loop_);
    return impl_->sendCsta(lineURI, body);
}

sfiResult CallEngine::serverFeatures(std::string const& lineURI, bool initialize)
{
    const Guard guard(impl_->loop_);
    return impl_->serverFeatures(lineURI, initialize);
}

void CallEngine::tellAgentState(std::string const& lineURI, std::string const& state)
{
    const Guard guard(impl_->loop_);
    impl_->tellAgentState(lineURI, state);
}

void CallEngine::setMicrophoneMute(bool mute)
{
    const Guard guard(impl_->loop_);
    impl_->setMicrophoneMute(mute);
}

bool CallEngine::microphoneMute() const
{
    const Guard guard(impl_->loop_);
    return impl_->muted_;
}

void CallEngine::setAssociatedCalls(bool associated)
{
    const Guard guard(impl_->loop_);
    impl_->associatedCalls_ = associated;
}

void CallEngine::featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure)
{
    const Guard guard(impl_->loop_);
    impl_->featureFailed(recordLine, feature, failure);
}

bool CallEngine::addTap(int callID, AudioTap& tap)
{
    const Guard guard(impl_->loop_);
    Call* call = impl_->require(callID, "listen");
    if (call != nullptr) {
        call->audio().addTap(tap);
    }
    return call != nullptr;
}

void CallEngine::removeTap(int callID, AudioTap& tap)
{
    const Guard guard(impl_->loop_);
    if (Call* call = impl_->find(callID)) {
        call->audio().removeTap(tap);
    }
}

}  // namespace telephone

#include "telephone/calls/EstablishedCalls.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "calls";

tl::unexpected<Refusal> notConnected(int callID, char const* operation)
{
    return refuse(RefusalKind::kWrongState, fmt::format("call {} cannot {}: it is not connected", callID, operation));
}

}  // namespace

EstablishedCalls::EstablishedCalls(sip::EventLoop& loop, CallList& calls, LineDirectory const& lines)
    : loop_(loop)
    , calls_(calls)
    , lines_(lines)
{}

Outcome<> EstablishedCalls::hold(int callID, sfiFeature feature)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    // A conference is held and retrieved as a whole.
    Call* const other = calls_.otherInConference(*call);
    if (!call->hold(feature)) {
        return notConnected(callID, "be held");
    }
    if (other != nullptr) {
        other->hold(feature);
    }
    return {};
}

Outcome<> EstablishedCalls::retrieve(int callID)
{
    return retrieve(callID, sfiFeatureRetrieve);
}

Outcome<> EstablishedCalls::retrieve(int callID, sfiFeature feature)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    if (!call->isEstablished() || !call->snapshot().held) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("call {} cannot be retrieved: this telephone does not hold it", callID));
    }
    afterHoldingOthers(*call, sfiFeatureHold, [this, feature](Call& waiting, bool alone) {
        if (alone) {
            retrieveAlone(waiting, feature);
            return;
        }
        log(kLogWarning, kComponent, "call {} cannot be retrieved: the other call could not be held", waiting.id());
        waiting.postFeatureFailed(feature, sfiFeatureFailureNotPossible);
    });
    return {};
}

void EstablishedCalls::retrieveAlone(Call& call, sfiFeature feature)
{
    auto const done = [this, feature, callID = call.id()](bool retrieved) {
        Call* const now = calls_.find(callID);
        if (retrieved && now != nullptr && feature == sfiFeatureAlternate) {
            now->postFeatureSuccess(feature);
        }
    };
    if (!call.retrieve(feature, done)) {
        log(kLogWarning, kComponent, "call {} cannot be retrieved: it is not held", call.id());
        call.postFeatureFailed(feature, sfiFeatureFailureNotPossible);
        return;
    }
    if (Call* const other = calls_.otherInConference(call); other != nullptr && other->snapshot().held) {
        other->retrieve(feature);
    }
}

void EstablishedCalls::setHeldByHand(int callID, bool byHand)
{
    std::lock_guard const guard(loop_);
    if (Call* const call = calls_.find(callID)) {
        call->setHeldByHand(byHand);
    }
}

Outcome<> EstablishedCalls::alternate(int recordLine)
{
    std::lock_guard const guard(loop_);
    auto const place = lines_.addressOf(recordLine, 0);
    if (!place) {
        return refuse(RefusalKind::kNotFound, fmt::format("there is no line {}", recordLine));
    }
    auto held = std::find_if(holdOrder_.rbegin(), holdOrder_.rend(), [this, &place](int callID) {
        Call const* const call = calls_.find(callID);
        return call != nullptr && call->line().lineNumber == place->lineNumber;
    });
    if (held == holdOrder_.rend()) {
        held = holdOrder_.rbegin();
    }
    if (held == holdOrder_.rend()) {
        return refuse(RefusalKind::kWrongState, "calls cannot be alternated: no call is held");
    }
    if (calls_.speaking().empty()) {
        return refuse(RefusalKind::kWrongState, "calls cannot be alternated: no call is active beside the held one");
    }
    return retrieve(*held, sfiFeatureAlternate);
}

std::optional<CallSnapshot> EstablishedCalls::lastHeldCall() const
{
    std::lock_guard const guard(loop_);
    return holdOrder_.empty() ? std::nullopt : calls_.call(holdOrder_.back());
}

Outcome<> EstablishedCalls::sendDigits(int callID, std::string const& digits)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    if (digits.empty() || digits.find_first_not_of("0123456789*#ABCD") != std::string::npos) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" cannot be sent: digits are 0-9 * # A-D", digits));
    }
    if (!call->sendDigits(digits)) {
        return notConnected(callID, "take digits");
    }
    return {};
}

Outcome<> EstablishedCalls::changeSecurity(int callID, bool secure)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    if (secure) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("call {} cannot be secured: this telephone has no encrypted audio", callID));
    }
    if (!call->renewMedia()) {
        return notConnected(callID, "be negotiated again");
    }
    return {};
}

void EstablishedCalls::afterHoldingOthers(Call& call, sfiFeature feature, Continuation const& continuation)
{
    std::vector<Call*> const others = calls_.speaking(&call);
    if (others.empty()) {
        continuation(call, true);
        return;
    }
    struct Wait
    {
        std::size_t left;
        bool allHeld = true;
    };
    auto const wait = std::make_shared<Wait>(Wait{others.size()});
    auto const oneDone = [this, wait, callID = call.id(), continuation](bool held) {
        wait->allHeld = wait->allHeld && held;
        if (--wait->left > 0) {
            return;
        }
        if (Call* const waiting = calls_.find(callID)) {
            continuation(*waiting, wait->allHeld);
        }
    };
    for (Call* const other : others) {
        // A call that ends instead of being held is out of the way too.
        auto const done = [this, oneDone, otherID = other->id()](bool held) {
            oneDone(held || calls_.find(otherID) == nullptr);
        };
        bool const forCall =
            feature == sfiFeatureConsultationHold && other->line().lineNumber == call.line().lineNumber;
        if (!other->hold(forCall ? feature : sfiFeatureHold, done)) {
            oneDone(false);
        }
    }
}

void EstablishedCalls::follow(CallSnapshot const& now)
{
    auto const known = std::find(holdOrder_.begin(), holdOrder_.end(), now.callID);
    bool const held = now.held && !now.ended();
    if (held && known == holdOrder_.end()) {
        holdOrder_.push_back(now.callID);
    } else if (!held && known != holdOrder_.end()) {
        holdOrder_.erase(known);
    }
}

}  // namespace telephone

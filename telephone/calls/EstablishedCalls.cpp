#include "telephone/calls/EstablishedCalls.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

tl::unexpected<Refusal> otherNotHeld(int callID)
{
    return refuse(RefusalKind::kUnavailable,
                  fmt::format("call {} cannot become active: the other call could not be held", callID));
}

}  // namespace

EstablishedCalls::EstablishedCalls(sip::EventLoop& loop, CallList& calls, LineDirectory const& lines)
    : loop_(loop)
    , calls_(calls)
    , lines_(lines)
{}

Outcome<> EstablishedCalls::hold(int callID, sfiFeature feature)
{
    return calls_.with(callID, [this, feature](Call& call) {
        if (call.snapshot().held) {
            reportRefusal(kComponent,
                          {RefusalKind::kAlreadyExists, fmt::format("call {} is on hold already", call.id())});
        }
        // A conference is held and retrieved as a whole.
        auto const others = calls_.othersInConference(call);
        auto held = call.hold(feature);
        if (held) {
            for (Call* const other : others) {
                reportIfRefused(kComponent, other->hold(feature));
            }
        }
        return held;
    });
}

Outcome<> EstablishedCalls::retrieve(int callID, sfiFeature feature)
{
    return calls_.with(callID, [this, feature](Call& call) -> Outcome<> {
        if (!call.isEstablished() || !call.snapshot().held) {
            return refuse(RefusalKind::kWrongState,
                          fmt::format("call {} cannot be retrieved: this telephone does not hold it", call.id()));
        }
        afterHoldingOthers(call, sfiFeatureHold, [this, feature](Call& waiting, Outcome<> const& alone) {
            auto const retrieved = alone.and_then([&] { return retrieveAlone(waiting, feature); });
            if (reportIfRefused(kComponent, retrieved)) {
                waiting.postFeatureFailed(feature, sfiFeatureFailureNotPossible);
            }
        });
        return {};
    });
}

Outcome<> EstablishedCalls::retrieveAlone(Call& call, sfiFeature feature)
{
    auto const done = [this, feature, callID = call.id()](bool retrieved) {
        Call* const now = calls_.find(callID);
        if (retrieved && now != nullptr && feature == sfiFeatureAlternate) {
            now->postFeatureSuccess(feature);
        }
    };
    auto begun = call.retrieve(feature, done);
    auto const others = begun ? calls_.othersInConference(call) : std::vector<Call*>();
    for (Call* const other : others) {
        if (other->snapshot().held) {
            reportIfRefused(kComponent, other->retrieve(feature));
        }
    }
    return begun;
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
    auto const place = lines_.placeOf(recordLine, 0);
    if (!place) {
        return tl::unexpected(place.error());
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
    return calls_.with(callID, [&digits](Call& call) -> Outcome<> {
        if (digits.empty() || digits.find_first_not_of("0123456789*#ABCD") != std::string::npos) {
            return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" cannot be sent: digits are 0-9 * # A-D", digits));
        }
        return call.sendDigits(digits);
    });
}

Outcome<> EstablishedCalls::changeSecurity(int callID, bool secure)
{
    return calls_.with(callID, [secure](Call& call) { return call.changeSecurity(secure); });
}

void EstablishedCalls::afterHoldingOthers(Call& call, sfiFeature feature, Continuation const& continuation)
{
    std::vector<Call*> const others = calls_.speaking(&call);
    if (others.empty()) {
        continuation(call, {});
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
            continuation(*waiting, wait->allHeld ? Outcome<>() : otherNotHeld(callID));
        }
    };
    for (Call* const other : others) {
        // A call that ends instead of being held is out of the way too.
        auto const done = [this, oneDone, otherID = other->id()](bool held) {
            oneDone(held || calls_.find(otherID) == nullptr);
        };
        bool const forCall =
            feature == sfiFeatureConsultationHold && other->line().lineNumber == call.line().lineNumber;
        if (auto const held = other->hold(forCall ? feature : sfiFeatureHold, done); !held) {
            reportIfRefused(kComponent, held);
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

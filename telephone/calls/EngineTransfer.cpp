// Calls that meet: transfer and conference.
#include <algorithm>
#include <memory>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/CallEngineImpl.h"
#include "telephone/calls/ConferenceDocument.h"

namespace telephone {

namespace {

std::string callText(int callID)
{
    return "call " + std::to_string(callID) + ": ";
}

}  // namespace

sfiResult CallEngine::Impl::blindTransfer(int callID, std::string const& destination)
{
    Call* call = require(callID, "transfer");
    auto const line = call != nullptr ? accountOf(call->line().lineNumber) : std::nullopt;
    if (!line) {
        return sfiFailure;
    }
    auto const target = targetOf(destination, line->account);
    if (!target) {
        return refused(callText(callID) + "\"" + destination + "\" is nowhere to transfer to");
    }
    if (!call->transfer(sfiFeatureBlindTransfer, *target, std::nullopt)) {
        return refused(callText(callID) + "cannot be transferred, it is not connected or is being transferred");
    }
    return sfiSuccess;
}

Call* CallEngine::Impl::partnerOf(Call const& call) const
{
    auto const usable = [&call](Call const* other) {
        return other != nullptr && other != &call && other->state() != sfiCallStateTransferring &&
               (other->isEstablished() || other->state() == sfiCallStateRemoteRinging);
    };
    for (Call* other : speakingCalls(&call)) {
        if (usable(other)) {
            return other;
        }
    }
    for (auto const& other : calls_) {
        if (usable(other.get()) && !other->isEstablished()) {
            return other.get();
        }
    }
    for (auto id = holdOrder_.rbegin(); id != holdOrder_.rend(); ++id) {
        if (Call* other = find(*id); usable(other)) {
            return other;
        }
    }
    return nullptr;
}

sfiResult CallEngine::Impl::attendedTransfer(int callID)
{
    Call* call = require(callID, "transfer");
    if (call == nullptr) {
        return sfiFailure;
    }
    Call* other = partnerOf(*call);
    if (other == nullptr) {
        return refused(callText(callID) + "there is no other call to transfer it to");
    }
    // A party that still rings has nothing that could be replaced: it is called anew by who is transferred.
    bool const rings = !other->isEstablished();
    const std::string contact = rings ? other->target() : other->session()->remoteContact();
    auto const replaces = rings ? std::nullopt : std::optional(other->session()->dialogId().replaces());
    if (!call->transfer(sfiFeatureAttendedTransfer, contact, replaces)) {
        return refused(callText(callID) + "cannot be transferred, it is not connected or is being transferred");
    }
    if (rings) {
        other->end({sfiCallStateIdle, sfiReasonTransferred});
        return sfiSuccess;
    }
    transferPeers_[callID] = other->id();
    other->beginTransferring();
    return sfiSuccess;
}

void CallEngine::Impl::transferEnded(Call& call, int status)
{
    auto const peer = transferPeers_.find(call.id());
    Call* other = peer == transferPeers_.end() ? nullptr : find(peer->second);
    if (peer != transferPeers_.end()) {
        transferPeers_.erase(peer);
    }
    if (status < 300) {
        call.end({sfiCallStateIdle, sfiReasonTransferred});
        if (other != nullptr) {
            other->end({sfiCallStateIdle, sfiReasonTransferred});
        }
        return;
    }
    call.endTransferring();
    if (other != nullptr) {
        other->endTransferring();
    }
}

void CallEngine::Impl::transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer)
{
    auto const line = accountOf(call.line().lineNumber);
    if (!line || !call.isEstablished()) {
        transfer->reject(603, "Decline");
        return;
    }
    sip::CallRequest request;
    request.account = line->account;
    request.target = transfer->target();
    request.replaces = transfer->replaces();
    request.referredBy = transfer->referredBy();
    log(sip::LogLevel::kInfo, callText(call.id()) + "the far end transfers it to " + request.target);
    sip::Transfer& asked = *transfer;
    if (!asked.accept() || !call.replaceWithCall(*agent_, request, std::move(transfer))) {
        log(sip::LogLevel::kWarning, callText(call.id()) + "the transfer could not be followed");
    }
}

sfiResult CallEngine::Impl::conference(int callID)
{
    Call* call = require(callID, "conference");
    if (call == nullptr) {
        return sfiFailure;
    }
    Call* other = partnerOf(*call);
    if (other == nullptr || !other->isEstablished() || !call->isEstablished()) {
        return refused(callText(callID) + "there are no two connected calls for a conference");
    }
    if (call->snapshot().inConference || other->snapshot().inConference) {
        return refused(callText(callID) + "a conference has three parties and no more");
    }
    struct Wait
    {
        int left = 1;
        bool together = true;
    };
    auto const wait = std::make_shared<Wait>();
    auto const done = [this, wait, callID, otherID = other->id()](bool retrieved) {
        wait->together = wait->together && retrieved;
        Call* first = find(callID);
        Call* second = find(otherID);
        if (--wait->left == 0 && wait->together && first != nullptr && second != nullptr) {
            joinConference(*first, *second);
        }
    };
    for (Call* each : {call, other}) {
        if (!each->snapshot().held) {
            continue;
        }
        ++wait->left;
        if (!each->retrieve(sfiFeatureConference, done)) {
            return refused(callText(each->id()) + "cannot be retrieved for the conference");
        }
    }
    done(true);
    return sfiSuccess;
}

void CallEngine::Impl::joinConference(Call& first, Call& second)
{
    CallAudio::join(first.audio(), second.audio());
    first.enterConference();
    second.enterConference();
    first.postFeatureSuccess(sfiFeatureConference);
    postConferenceStatus();
}

Call* CallEngine::Impl::otherInConference(Call const& call) const
{
    for (auto const& other : calls_) {
        if (other.get() != &call && call.snapshot().inConference && other->snapshot().inConference) {
            return other.get();
        }
    }
    return nullptr;
}

void CallEngine::Impl::endConferenceOfOne()
{
    Call* left = nullptr;
    for (auto const& call : calls_) {
        if (call->snapshot().inConference && std::exchange(left, call.get()) != nullptr) {
            return;
        }
    }
    if (left == nullptr) {
        return;
    }
    postConferenceStatus();
    left->leaveConference();
}

void CallEngine::Impl::postConferenceStatus()
{
    std::vector<CallSnapshot> legs;
    for (auto const& call : calls_) {
        if (call->snapshot().inConference) {
            legs.push_back(call->snapshot());
        }
    }
    auto const line = accountOf(legs.front().line.lineNumber);
    const std::string focus = line ? line->account.addressOfRecord() : legs.front().line.lineURI;
    const std::string document = formatConference(focus, ++conferenceVersion_, legs);
    for (CallSnapshot const& leg : legs) {
        post([line = leg.line.lineURI, callID = leg.callID, document](CommunicationsServiceEventIfc& event) {
            event.conferenceStatusEvent(line, callID, document);
        });
    }
}

}  // namespace telephone

#include "telephone/calls/JoinedCalls.h"

#include <algorithm>
#include <mutex>
#include <sstream>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

void addUser(pugi::xml_node users, std::string const& uri, std::string const& name, char const* status)
{
    pugi::xml_node user = users.append_child("user");
    user.append_attribute("entity") = uri.c_str();
    user.append_attribute("state") = "full";
    if (!name.empty()) {
        user.append_child("display-text").text() = name.c_str();
    }
    pugi::xml_node endpoint = user.append_child("endpoint");
    endpoint.append_attribute("entity") = uri.c_str();
    endpoint.append_child("status").text() = status;
}

// The conference-info document (RFC 4575) of a conference of this telephone. focus: the address of its line. The
// telephone itself is the first user; each call is another.
std::string formatConference(std::string const& focus, int version, std::vector<CallSnapshot> const& calls)
{
    pugi::xml_document document;
    pugi::xml_node info = document.append_child("conference-info");
    info.append_attribute("xmlns") = "urn:ietf:params:xml:ns:conference-info";
    info.append_attribute("entity") = focus.c_str();
    info.append_attribute("state") = "full";
    info.append_attribute("version") = version;
    pugi::xml_node state = info.append_child("conference-state");
    state.append_child("user-count").text() = static_cast<unsigned>(calls.size() + 1);
    state.append_child("active").text() = calls.size() > 1;
    pugi::xml_node users = info.append_child("users");
    addUser(users, focus, {}, "connected");
    for (CallSnapshot const& call : calls) {
        addUser(users, call.remoteURI, call.remoteName, call.held || call.heldByRemote ? "on-hold" : "connected");
    }
    std::ostringstream text;
    document.save(text, "", pugi::format_raw | pugi::format_no_declaration);
    return text.str();
}

}  // namespace

JoinedCalls::JoinedCalls(sip::UserAgent& agent, LineDirectory const& lines, EventPoster const& post, CallList& calls,
                         EstablishedCalls& established, IncomingCalls& incoming)
    : agent_(agent)
    , lines_(lines)
    , post_(post)
    , calls_(calls)
    , established_(established)
    , incoming_(incoming)
    , joinTimer_(agent.loop())
{}

// --- transfer

Outcome<> JoinedCalls::blindTransfer(int callID, std::string const& destination)
{
    return calls_.with(callID, [this, &destination](Call& call) {
        return lines_.targetFrom(call.line().lineNumber, destination).and_then([&call](std::string const& target) {
            return call.transfer(sfiFeatureBlindTransfer, target, std::nullopt);
        });
    });
}

Outcome<> JoinedCalls::attendedTransfer(Call& call)
{
    Call* const other = partnerOf(call, false);
    if (other == nullptr) {
        return refuse(RefusalKind::kWrongState, fmt::format("call {} cannot be transferred: there is no other call to "
                                                            "transfer it to",
                                                            call.id()));
    }
    // A party that is still ringing has no dialog to replace: the transferred party calls it anew.
    bool const rings = !other->isEstablished();
    std::string const contact = rings ? other->target() : other->session()->remoteContact();
    auto const replaces = rings ? std::nullopt : std::optional(other->session()->dialogId().replaces());
    if (auto asked = call.transfer(sfiFeatureAttendedTransfer, contact, replaces); !asked) {
        return asked;
    }
    if (rings) {
        other->end({sfiCallStateIdle, sfiReasonTransferred});
        return {};
    }
    transferPeers_[call.id()] = other->id();
    other->beginTransferring();
    return {};
}

// The call that speaks, else one ringing at its far end, else the one held last.
Call* JoinedCalls::partnerOf(Call const& call, bool outside) const
{
    std::vector<Call*> candidates = calls_.speaking(&call);
    for (auto const& other : calls_.all()) {
        if (other.get() != &call && other->state() == sfiCallStateRemoteRinging) {
            candidates.push_back(other.get());
        }
    }
    auto const& held = established_.holdOrder();
    std::transform(held.rbegin(), held.rend(), std::back_inserter(candidates),
                   [this](int callID) { return calls_.find(callID); });
    auto const usable = std::ranges::find_if(candidates, [&call, outside](Call const* other) {
        bool const isTogether =
            outside && other != nullptr && other->snapshot().inConference && call.snapshot().inConference;
        return other != nullptr && other != &call && other->state() != sfiCallStateTransferring && !isTogether;
    });
    return usable == candidates.end() ? nullptr : *usable;
}

void JoinedCalls::transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer)
{
    auto line = lines_.accountOfLine(call.line().lineNumber);
    if (!line || !call.isEstablished()) {
        transfer->reject(603, "Decline");
        return;
    }
    sip::CallRequest request;
    request.account = std::move(line->account);
    request.target = transfer->target();
    request.replaces = transfer->replaces();
    request.referredBy = transfer->referredBy();
    log(kLogInfo, kComponent, "call {}: the far end transfers it to {}", call.id(), request.target);
    auto const followed =
        transfer->accept().and_then([&] { return call.replaceWithCall(agent_, request, std::move(transfer)); });
    reportIfRefused(kComponent, followed);
}

Call* JoinedCalls::takePeer(Call const& call)
{
    auto const peer = transferPeers_.extract(call.id());
    return peer ? calls_.find(peer.mapped()) : nullptr;
}

void JoinedCalls::transferEnded(Call& call, int status)
{
    Call* const other = takePeer(call);
    for (Call* const each : {&call, other}) {
        if (each == nullptr) {
            continue;
        }
        if (status < 300) {
            each->end({sfiCallStateIdle, sfiReasonTransferred});
        } else {
            each->endTransferring();
        }
    }
}

void JoinedCalls::callEnded(Call const& call)
{
    joining_.erase(call.id());
    noteConferenceOfLess();
    if (Call* const other = takePeer(call)) {
        other->endTransferring();
    }
}

Call* JoinedCalls::callOf(sip::Replaces const& dialog) const
{
    auto const found = std::ranges::find_if(calls_.all(), [&dialog](auto const& call) {
        return call->session() != nullptr && call->session()->dialogId().matches(dialog);
    });
    return found == calls_.all().end() ? nullptr : found->get();
}

void JoinedCalls::replaceCall(std::unique_ptr<sip::Session> session)
{
    sip::Replaces const wanted = *session->invitation().replaces;
    Call* const call = callOf(wanted);
    bool const early = call != nullptr && !call->isEstablished();
    if (call == nullptr || (early && call->snapshot().incoming)) {
        session->reject(481, "Call/Transaction Does Not Exist");
        return;
    }
    if (wanted.earlyOnly && !early) {
        session->reject(486, "Busy Here");
        return;
    }
    log(kLogInfo, kComponent, "call {} continues with {}", call->id(), displayUri(session->invitation().caller()));
    reportIfRefused(kComponent, call->replaceWith(std::move(session)));
}

void JoinedCalls::joinCall(std::unique_ptr<sip::Session> session, LineAccount const& line)
{
    Call const* const present = callOf(*session->invitation().joins);
    if (present == nullptr) {
        session->reject(481, "Call/Transaction Does Not Exist");
    } else if (!present->isEstablished()) {
        session->reject(488, "Not Acceptable Here");
    } else if (line.isPrivate) {
        session->reject(603, "Decline");
    } else if (Call* const joining = incoming_.takeToJoin(std::move(session), line)) {
        log(kLogInfo, kComponent, "call {} joins call {}", joining->id(), present->id());
        joining_[joining->id()] = present->id();
        reportIfRefused(kComponent, joining->answer());
    }
}

void JoinedCalls::follow(CallSnapshot const& now)
{
    if (joining_.contains(now.callID) && now.active()) {
        joinTimer_.start(std::chrono::milliseconds(0), [this] { joinEstablished(); });
    }
}

void JoinedCalls::joinEstablished()
{
    for (auto const& [joiningID, presentID] : std::map(joining_)) {
        Call* const joining = calls_.find(joiningID);
        if (joining == nullptr || !joining->isEstablished()) {
            continue;
        }
        joining_.erase(joiningID);
        Call* const present = calls_.find(presentID);
        if (present != nullptr && present->isEstablished()) {
            reportIfRefused(kComponent, joinRetrieved(*present, *joining));
        }
    }
}

// --- conference

Outcome<> JoinedCalls::conference(Call& call)
{
    Call* const other = partnerOf(call, true);
    if (other == nullptr || !other->isEstablished() || !call.isEstablished()) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("call {} cannot be joined: a conference needs two connected calls", call.id()));
    }
    return joinRetrieved(call, *other);
}

// Joins the calls, and the conference that one of them may be in, once all are retrieved.
Outcome<> JoinedCalls::joinRetrieved(Call& first, Call& second)
{
    struct Wait
    {
        int left = 1;
        bool together = true;
    };
    auto const wait = std::make_shared<Wait>();
    auto const done = [this, wait, firstID = first.id(), secondID = second.id()](bool retrieved) {
        wait->together = wait->together && retrieved;
        Call* const one = calls_.find(firstID);
        Call* const other = calls_.find(secondID);
        if (--wait->left == 0 && wait->together && one != nullptr && other != nullptr) {
            join(*one, *other);
        }
    };
    std::vector<Call*> all = calls_.inConference();
    for (Call* const each : {&first, &second}) {
        if (std::ranges::find(all, each) == all.end()) {
            all.push_back(each);
        }
    }
    for (Call* const each : all) {
        if (!each->snapshot().held) {
            continue;
        }
        ++wait->left;
        if (auto begun = each->retrieve(sfiFeatureConference, done); !begun) {
            return begun;
        }
    }
    done(true);
    return {};
}

void JoinedCalls::join(Call& first, Call& second)
{
    CallAudio::join(first.audio(), second.audio());
    for (Call* const member : calls_.inConference()) {
        for (Call* const each : {&first, &second}) {
            if (each != member) {
                CallAudio::join(each->audio(), member->audio());
            }
        }
    }
    first.enterConference();
    second.enterConference();
    first.postFeatureSuccess(sfiFeatureConference);
    postConferenceStatus();
}

// A call has left: the conference goes on without it, or its last call leaves it, too.
void JoinedCalls::noteConferenceOfLess()
{
    auto const left = calls_.inConference();
    if (left.empty() || left.size() == conferenceSize_) {
        return;
    }
    postConferenceStatus();
    if (left.size() == 1) {
        conferenceSize_ = 0;
        left.front()->leaveConference();
    }
}

void JoinedCalls::postConferenceStatus()
{
    std::vector<CallSnapshot> legs;
    for (Call const* const call : calls_.inConference()) {
        legs.push_back(call->snapshot());
    }
    conferenceSize_ = legs.size();
    auto const line = lines_.accountOfLine(legs.front().line.lineNumber);
    std::string const focus = line ? line->account.addressOfRecord() : legs.front().line.lineURI;
    std::string const document = formatConference(focus, ++conferenceVersion_, legs);
    for (CallSnapshot const& leg : legs) {
        post_([line = leg.line.lineURI, callID = leg.callID, document](CommunicationsServiceEventIfc& event) {
            event.conferenceStatusEvent(line, callID, document);
        });
    }
}

}  // namespace telephone

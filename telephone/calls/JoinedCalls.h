// Operations on two calls: transfer, conference, and the replacement of a call by another one (RFC 3891). Owned by
// CallEngine.
//
// Operations by call id may be called from any thread and take the phone lock; the others are called with it held.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/EstablishedCalls.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class JoinedCalls
{
public:
    JoinedCalls(sip::UserAgent& agent, LineDirectory const& lines, EventPoster const& post, CallList& calls,
                EstablishedCalls& established);

    // --- any thread
    [[nodiscard]] Outcome<> blindTransfer(int callID, std::string const& destination);
    // Connects the party of that call with the party of the telephone's other call.
    [[nodiscard]] Outcome<> attendedTransfer(int callID)
    {
        return calls_.with(callID, [this](Call& call) { return attendedTransfer(call); });
    }
    // Joins that call and the telephone's other one, which puts both into the state Conference.
    [[nodiscard]] Outcome<> conference(int callID)
    {
        return calls_.with(callID, [this](Call& call) { return conference(call); });
    }

    // --- lock held
    // The far end asks to be connected with another party.
    void transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer);
    void transferEnded(Call& call, int status);
    void callEnded(Call const& call);
    // An INVITE that takes the place of a call: a transfer or a pick-up that another telephone makes.
    void replaceCall(std::unique_ptr<sip::Session> session);

private:
    Outcome<> attendedTransfer(Call& call);
    Outcome<> conference(Call& call);
    Call* partnerOf(Call const& call) const;
    Outcome<> retrieveBoth(Call& first, Call& second);
    void join(Call& first, Call& second);
    void endConferenceOfOne();
    void postConferenceStatus();
    Call* takePeer(Call const& call);

    sip::UserAgent& agent_;
    LineDirectory const& lines_;
    EventPoster const& post_;
    CallList& calls_;
    EstablishedCalls& established_;
    std::map<int, int> transferPeers_;  // the other call of an attended transfer, by call id
    int conferenceVersion_ = 0;
};

}  // namespace telephone

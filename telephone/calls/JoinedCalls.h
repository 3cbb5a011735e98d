// Operations on several calls: transfer, conference, and calls of other telephones that replace one here (RFC 3891) or
// join it (RFC 3911). Owned by
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
#include "telephone/calls/IncomingCalls.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class JoinedCalls
{
public:
    JoinedCalls(sip::UserAgent& agent, LineDirectory const& lines, EventPoster const& post, CallList& calls,
                EstablishedCalls& established, IncomingCalls& incoming);

    // --- any thread
    [[nodiscard]] Outcome<> blindTransfer(int callID, std::string const& destination);
    // Connects the party of that call with the party of the telephone's other call.
    [[nodiscard]] Outcome<> attendedTransfer(int callID)
    {
        return calls_.with(callID, [this](Call& call) { return attendedTransfer(call); });
    }
    // Joins that call and the telephone's other one, or its conference, which puts all into the state Conference.
    [[nodiscard]] Outcome<> conference(int callID)
    {
        return calls_.with(callID, [this](Call& call) { return conference(call); });
    }

    // --- lock held
    // The far end asks to be connected with another party.
    void transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer);
    void transferEnded(Call& call, int status);
    void callEnded(Call const& call);
    void follow(CallSnapshot const& now);
    // An INVITE that takes the place of a call: a transfer or a pick-up that another telephone makes.
    void replaceCall(std::unique_ptr<sip::Session> session);
    // An INVITE that makes a conference with a call here: another telephone bridges into it. It is answered at once.
    void joinCall(std::unique_ptr<sip::Session> session, LineAccount const& line);

private:
    Outcome<> attendedTransfer(Call& call);
    Outcome<> conference(Call& call);
    // The call that is joined, or connected, with this one; null: none. outside: not one of its own conference.
    Call* partnerOf(Call const& call, bool outside) const;
    Outcome<> joinRetrieved(Call& first, Call& second);
    void join(Call& first, Call& second);
    void joinEstablished();
    void noteConferenceOfLess();
    void postConferenceStatus();
    Call* takePeer(Call const& call);
    // The call with that dialog; null: none.
    Call* callOf(sip::Replaces const& dialog) const;

    sip::UserAgent& agent_;
    LineDirectory const& lines_;
    EventPoster const& post_;
    CallList& calls_;
    EstablishedCalls& established_;
    IncomingCalls& incoming_;
    std::map<int, int> transferPeers_;  // the other call of an attended transfer, by call id
    std::map<int, int> joining_;        // the call to join, by the id of a call that bridges into it
    sip::Timer joinTimer_;              // until the events of such a call's answer are posted
    std::size_t conferenceSize_ = 0;    // calls
    int conferenceVersion_ = 0;
};

}  // namespace telephone

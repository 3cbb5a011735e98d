// Incoming calls until they are answered: refused, forwarded, or offered to the applications. Owned by CallEngine.
//
//     take -> Incoming -> Ringing -> Connected -> ... -> Idle
//
// Operations by call id may be called from any thread and take the phone lock; the others are called with it held.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/calls/Availability.h"
#include "telephone/calls/CallForwarding.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/CallPolicy.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/EstablishedCalls.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/Timer.h"

namespace telephone {

class IncomingCalls
{
public:
    IncomingCalls(sip::EventLoop& loop, EngineConfiguration const& configuration, LineDirectory& lines,
                  CallPolicy const& policy, Availability const& availability, EventPoster const& post, CallList& calls,
                  EstablishedCalls& established);

    // --- any thread
    // Answers 180. A call that is already ringing is a success.
    [[nodiscard]] Outcome<> ring(int callID) { return calls_.with(callID, &Call::ring); }
    [[nodiscard]] Outcome<> answer(int callID);
    [[nodiscard]] Outcome<> reject(int callID, sfiRefuseCall reason);
    [[nodiscard]] Outcome<> deflect(int callID, std::string const& destination);
    // Whether a second call on a busy line is announced as associated with the first.
    void setAssociatedCalls(bool associated);

    // --- lock held
    void take(std::unique_ptr<sip::Session> session, LineAccount const& line);
    // A call that joins another here: neither forwarded nor turned away, and nobody is asked. Null: there is no room
    // for it, which has refused it.
    Call* takeToJoin(std::unique_ptr<sip::Session> session, LineAccount const& line);
    void follow(CallSnapshot const& now);

private:
    bool turnAway(sip::Session& session, LineAccount const& line);
    void rejectUndisturbed(sip::Session& session, LineAccount const& line);
    Call& offer(std::unique_ptr<sip::Session> session, LineAccount const& line, int callID, LineAddress const& place);
    void alert(Call& call, LineAccount const& line);
    Outcome<> redirect(Call& call, std::string const& target, sip::NameAddr const& caller, sfiForwardReason reason);
    void startNoReplyTimer(Call const& call, LineAccount const& line);
    void forwardUnanswered(int callID, LineAccount const& line);

    sip::EventLoop& loop_;
    EngineConfiguration const& configuration_;
    LineDirectory& lines_;
    CallPolicy const& policy_;
    Availability const& availability_;
    EventPoster const& post_;
    CallList& calls_;
    EstablishedCalls& established_;
    CallForwarding forwarding_;
    std::map<int, sip::Timer> noReplyTimers_;  // by call id
    bool associatedCalls_ = false;
};

}  // namespace telephone

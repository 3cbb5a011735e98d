// Call-backs (call completion): watches the dialogs (RFC 4235) of parties that were busy or did not answer, until they
// are free. Owned by CallEngine.
//
//     set -> Activated (the dialogs are known) -> Ready (the party is free) -> Done (the party was called) or Cancelled
//
// A party that was busy is ready when it has no call; one that did not answer, when it has had a call that has ended.
// A party that is busy again before it is called is waited for again.
#pragma once

#include <deque>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "platform/sfi/SfiTypes.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/Availability.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/DialogSubscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

struct EngineConfiguration;

class CallBacks
{
public:
    CallBacks(sip::UserAgent& agent, EngineConfiguration const& configuration, LineDirectory const& lines,
              Availability const& availability, CallList const& calls, EventPoster const& post);

    // --- any thread
    // For a call that is ringing at its far end or has just ended. kNotFound: there was no such call. kWrongState: its
    // party is not busy, or did not ring. kAlreadyExists: the party is waited for already. kLimit: there are too many
    // call-backs. kUnavailable: the telephone is not active, or nothing can be sent.
    [[nodiscard]] Outcome<> set(int callID, sfiCallCompletionType type);
    // Cancels the call-back to a target; without a target, the one for a call, or all of that type for call id 0.
    // kNotFound: there is none.
    [[nodiscard]] Outcome<> cancel(int callID, std::string const& target, sfiCancelCallBackType type,
                                   bool displayOutcome);

    // --- lock held
    bool isPossible(Call const& call) const;
    // The calls that are over and for which a call-back can be set, the latest last.
    std::vector<CallSnapshot> endedAndPossible() const;
    // A call to that target, which completes a call-back to it.
    void called(std::string const& target);
    // Remembers calls that end, because a call-back to their party may be requested afterwards.
    void follow(Call const& call, CallSnapshot const& before);
    void clear() { entries_.clear(); }

private:
    // A call that did not succeed.
    struct Attempt
    {
        CallSnapshot call;
        std::string target;  // URI
        bool busy = false;
        bool rang = false;
    };

    struct Entry
    {
        int callID;  // of the call that did not succeed
        LineAccount line;
        std::string target;
        sfiCallCompletionType type;
        sip::Timer longest;
        sip::Timer settling;
        std::unique_ptr<sip::DialogSubscription> subscription{};
        bool activated = false;
        bool seenActive = false;
        bool ready = false;
    };

    Outcome<Attempt> attempt(int callID) const;
    static bool allows(Attempt const& attempt, sfiCallCompletionType type);
    Outcome<> begin(int callID, LineAccount line, std::string const& target, sfiCallCompletionType type);
    void followDialogs(Entry& entry, std::vector<sip::DialogEntry> const& dialogs);
    void fail(Entry const& entry, sfiCallCompletionFailureType failure);
    void remove(Entry const& entry);
    bool isFull() const;
    bool isWaitingFor(std::string const& target) const;
    void tell(Entry const& entry, sfiCallCompletionState state, bool displayOutcome);

    sip::UserAgent& agent_;
    EngineConfiguration const& configuration_;
    LineDirectory const& lines_;
    Availability const& availability_;
    CallList const& calls_;
    EventPoster const& post_;
    std::deque<Attempt> attempts_;  // of ended calls, the latest at the end
    std::list<Entry> entries_;
};

}  // namespace telephone

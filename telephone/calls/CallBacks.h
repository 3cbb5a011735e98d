// Call-backs (call completion): parties that were busy or did not answer, watched by their dialogs (RFC 4235) until
// they are free. Owned by CallEngine.
//
//     set -> Activated (their dialogs can be seen) -> Ready (they are free) -> Done (somebody called them), or
//     Cancelled
//
// A party that was busy is ready when it has no call; one that did not answer, when it has had a call and has none any
// more. A party that is busy again before it is called is waited for again.
//
// The operations that applications ask for may be called from any thread and take the phone lock; the others are called
// with it held.
#pragma once

#include <chrono>
#include <deque>
#include <list>
#include <memory>
#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/Availability.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

struct EngineConfiguration;

class CallBacks final : private sip::SubscriptionObserver
{
public:
    CallBacks(sip::UserAgent& agent, EngineConfiguration const& configuration, LineDirectory const& lines,
              Availability const& availability, CallList const& calls, EventPoster const& post);

    // --- any thread
    // For a call that is ringing at its far end or has just ended. kNotFound: there was no such call. kWrongState: its
    // party is not busy, or did not ring. kAlreadyExists, kLimit: as they say. kUnavailable: nothing can be sent.
    [[nodiscard]] Outcome<> set(int callID, sfiCallCompletionType type);
    // Cancels the call-back for a call, or the one to a target where that is given, or all for call id 0. kNotFound:
    // there is none.
    [[nodiscard]] Outcome<> cancel(int callID, std::string const& target, sfiCancelCallBackType type,
                                   bool displayOutcome);

    // --- lock held
    bool isPossible(Call const& call) const;
    // A call goes out to that target, which completes a call-back to it.
    void called(std::string const& target);
    // Remembers calls that end, since a call-back to their party may be asked for afterwards.
    void follow(Call const& call, CallSnapshot const& before);
    void clear();

private:
    // A call that did not succeed.
    struct Attempt
    {
        int callID = 0;
        int lineNumber = 0;
        std::string target;  // URI
        bool busy = false;
        bool rang = false;
    };

    struct Entry
    {
        Entry(sip::EventLoop& loop, int call, LineAccount account, std::string uri, sfiCallCompletionType completion)
            : callID(call)
            , line(std::move(account))
            , target(std::move(uri))
            , type(completion)
            , longest(loop)
            , settling(loop)
        {}

        int const callID;  // of the call that did not succeed
        LineAccount const line;
        std::string const target;
        sfiCallCompletionType const type;
        std::unique_ptr<sip::Subscription> subscription;
        sip::Timer longest;
        sip::Timer settling;
        bool activated = false;
        bool seenActive = false;
        bool ready = false;
    };
    using Entries = std::list<std::unique_ptr<Entry>>;

    void onNotify(sip::Subscription& subscription, sip::Notification const& notification) override;
    void onTerminated(sip::Subscription& subscription, int status, std::string const& reason) override;
    Outcome<Attempt> attempt(int callID) const;
    Outcome<> begin(std::unique_ptr<Entry> entry);
    void followDialogs(Entry& entry, sip::DialogInfo const& dialogs);
    void becomeReady(Entry& entry);
    void fail(Entry& entry, sfiCallCompletionFailureType failure);
    void remove(Entry& entry);
    bool isFull() const;
    bool isWaitingFor(std::string const& target) const;
    Entry* find(sip::Subscription const& subscription);
    void tell(Entry const& entry, sfiCallCompletionState state, bool displayOutcome);

    sip::UserAgent& agent_;
    EngineConfiguration const& configuration_;
    LineDirectory const& lines_;
    Availability const& availability_;
    CallList const& calls_;
    EventPoster const& post_;
    std::deque<Attempt> attempts_;  // of ended calls, the latest at the end
    Entries entries_;
    Entries over_;  // until the running callback has returned
    sip::Timer burial_;
};

}  // namespace telephone

// Call-backs: parties that were busy or did not answer, watched by their dialogs (RFC 4235) until they are free. Owned
// by the engine; called with the phone lock held.
//
//     set -> Activated (their dialogs can be seen) -> Ready (they are free) -> Done (somebody called them), or
//     Cancelled
//
// A party that was busy is ready when it has no call; one that did not answer, when it has had a call and none any
// more. A party that is busy again before it is called is waited for again.
#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class CallBacks final : private sip::SubscriptionObserver
{
public:
    struct Limits
    {
        int most = 5;
        std::chrono::milliseconds longest{};   // how long one waits
        std::chrono::milliseconds settling{};  // how long a party must be free to count as free
    };

    // What a call-back is for.
    struct Wanted
    {
        int callID = 0;  // of the call that did not succeed
        LineAccount line;
        std::string target;  // URI
        sfiCallCompletionType type = sfiCallCompletionOnBusy;
    };

    CallBacks(CallHost& host, sip::UserAgent& agent, Limits limits);
    ~CallBacks() override;

    // sfiSuccess, ToMany, AllreadyExists, or sfiFailure when the question could not be sent.
    sfiResult set(Wanted const& wanted);
    bool isPossible(std::string const& target) const;
    // Those of a call (0: any), to a target (empty: any), of a type. sfiFailureCallBackNoCallInfo: there is none.
    sfiResult cancel(int callID, std::string const& target, sfiCancelCallBackType type, bool displayOutcome);
    // A call goes out: a call-back to that target is done by it.
    void called(std::string const& target);
    void clear();

private:
    struct Entry
    {
        explicit Entry(sip::EventLoop& loop)
            : longest(loop)
            , settling(loop)
        {}

        Wanted wanted;
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
    void follow(Entry& entry, sip::DialogInfo const& dialogs);
    void becomeReady(Entry& entry);
    void fail(Entry& entry, sfiCallCompletionFailureType failure);
    void remove(Entry& entry);
    Entry* find(sip::Subscription const& subscription);
    void tell(Entry const& entry, sfiCallCompletionState state, bool displayOutcome);

    CallHost& host_;
    sip::UserAgent& agent_;
    Limits limits_;
    Entries entries_;
    Entries over_;  // until the callback that runs is over
    sip::Timer burial_;
};

}  // namespace telephone

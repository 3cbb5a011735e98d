// The session timer of one call (RFC 4028), which finds out that a far end is gone. Both ends agree on an interval, and
// on who refreshes the call before it has passed; without a refresh in time, the call is over. Owned by its session;
// used under the lock.
//
//     our INVITE:    ofRequest -> accepted (2xx), or lengthen (422) -> ofRequest
//     their INVITE:  isTooBrief (422), or accept -> ...
//     afterwards:    refresh of ours -> ofRequest -> accepted; or theirs -> accept
//
// A far end that does not know the extension is refreshed all the same: its answer shows that it is there.
#pragma once

#include <chrono>
#include <functional>

#include "telephone/sip/Message.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

class EventLoop;

// The name of the extension in Supported and Require.
constexpr char const* kTimerExtension = "timer";

class SessionTimer
{
public:
    struct Actions
    {
        std::function<void()> refresh;  // it is time for one of ours
        std::function<void()> expired;  // the far end has not refreshed the call, or not accepted a refresh of ours
    };

    // interval: the one we ask for; 0: no session timer.
    SessionTimer(EventLoop& loop, std::chrono::seconds interval, Actions actions);

    // Headers of a request of ours: INVITE, re-INVITE or UPDATE.
    Headers ofRequest() const;
    // Whether the far end's request asks for a briefer interval than we permit.
    bool isTooBrief(Headers const& request) const;
    // Headers of the refusal of such a request.
    static Headers ofRefusal();
    // The far end's request is accepted: returns the headers of our answer. The interval begins anew.
    Headers accept(Headers const& request);
    // The far end has accepted a request of ours. The interval begins anew.
    void accepted(Headers const& answer);
    // The far end has refused a request of ours as too brief (422). True: ofRequest() now asks for as long as it wants.
    bool lengthen(Headers const& refusal);
    // A refresh of ours did not succeed and is to be repeated, at the latest until the interval has passed.
    void refreshIn(std::chrono::milliseconds delay);
    void stop();

private:
    bool isOn() const { return wanted_ > std::chrono::seconds(0); }
    void begin();

    Actions actions_;
    std::chrono::seconds wanted_;
    std::chrono::seconds shortest_{90};  // that we, or the servers on the way, permit
    std::chrono::seconds interval_{0};   // agreed; 0: not yet
    bool refreshesHere_ = false;
    Timer refresh_;
    Timer expiry_;
};

}  // namespace telephone::sip

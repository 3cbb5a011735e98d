// Takes over calls of other telephones: a known call, the one ringing at a number, or one of the pick-up group. Owned
// by CallEngine.
//
// Operations may be called from any thread and take the phone lock; follow and clear are called with it held.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/OutgoingCalls.h"
#include "telephone/calls/PhoneCalls.h"
#include "telephone/sip/DialogSubscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class Pickups
{
public:
    Pickups(sip::UserAgent& agent, EngineConfiguration const& configuration, CallList& calls, OutgoingCalls& outgoing);

    [[nodiscard]] Outcome<> takeOver(int recordLine, int appearance, int callID, PickupTarget const& target);
    // Asks the number for its dialogs and takes over the call ringing there. If none is, the event featureFailed and
    // the state Failed follow.
    [[nodiscard]] Outcome<> directed(int recordLine, int appearance, int callID, std::string const& number);
    [[nodiscard]] Outcome<> group(int recordLine, int appearance, int callID);

    void follow(CallSnapshot const& now);
    void clear() { searches_.clear(); }

private:
    // One search for the call ringing at a number.
    struct Search
    {
        std::unique_ptr<sip::DialogSubscription> dialogs;
        sip::Timer patience;
        sip::CallRequest request;  // for the call that takes over
    };

    [[nodiscard]] Outcome<> search(int callID, sip::CallRequest const& request);
    void found(int callID, PickupTarget const& target);
    void failed(int callID, int status);

    sip::UserAgent& agent_;
    EngineConfiguration const& configuration_;
    CallList& calls_;
    OutgoingCalls& outgoing_;
    std::map<int, Search> searches_;  // by call id
};

}  // namespace telephone

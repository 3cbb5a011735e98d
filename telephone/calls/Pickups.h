// Calls that are taken over from other telephones: a known one, one that rings at a number, or one of the pick-up
// group. Owned by CallEngine.
//
// Operations may be called from any thread and take the phone lock; follow and clear are called with it held.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/OutgoingCalls.h"
#include "telephone/calls/PickupSearch.h"
#include "telephone/calls/PickupTarget.h"
#include "telephone/sip/Timer.h"

namespace telephone {

class Pickups
{
public:
    Pickups(sip::UserAgent& agent, EngineConfiguration const& configuration, CallList& calls, OutgoingCalls& outgoing);

    [[nodiscard]] Outcome<> takeOver(int recordLine, int appearance, int callID, PickupTarget const& target);
    // Asks the number for its dialogs and takes over the call that rings there. featureFailed and Failed if none does.
    [[nodiscard]] Outcome<> directed(int recordLine, int appearance, int callID, std::string const& number);
    [[nodiscard]] Outcome<> group(int recordLine, int appearance, int callID);

    void follow(CallSnapshot const& now);
    void clear();

private:
    [[nodiscard]] Outcome<OutgoingCalls::Draft> draft(int recordLine, int appearance, int callID,
                                                      sfiFeature feature) const;
    void found(int callID, sip::CallRequest request, std::optional<PickupTarget> const& target, int status);
    void bury(int callID);

    sip::UserAgent& agent_;
    EngineConfiguration const& configuration_;
    CallList& calls_;
    OutgoingCalls& outgoing_;
    std::map<int, std::unique_ptr<PickupSearch>> searches_;  // by call id
    std::vector<std::unique_ptr<PickupSearch>> over_;        // until the running callback has returned
    sip::Timer burial_;
};

}  // namespace telephone

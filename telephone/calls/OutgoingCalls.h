// Calls that this telephone makes: from the destination to the INVITE. Owned by CallEngine.
//
//     Dialling -> Proceeding -> RemoteRinging -> Connected -> ... -> Idle | Busy | Failed
//
// make() may be called from any thread and takes the phone lock; the others are called with it held.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/calls/Availability.h"
#include "telephone/calls/CallBacks.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/EstablishedCalls.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/calls/PhoneCalls.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class OutgoingCalls
{
public:
    // A call that has not begun, and the request to begin it with.
    struct Draft
    {
        std::unique_ptr<Call> call;
        sip::CallRequest request;  // with the account of the line
    };

    OutgoingCalls(sip::UserAgent& agent, EngineConfiguration const& configuration, LineDirectory const& lines,
                  Availability const& availability, CallList& calls, EstablishedCalls& established,
                  CallBacks& callBacks);

    // recordLine: the line number, or the virtual line of an appearance.
    [[nodiscard]] Outcome<> make(int recordLine, int appearance, int callID, std::string const& destination,
                                 CallPurpose purpose = CallPurpose::kOrdinary);

    // The target of the request is still open.
    [[nodiscard]] Outcome<Draft> draft(int recordLine, int appearance, int callID) const;
    [[nodiscard]] Outcome<Draft> draft(int recordLine, int appearance, int callID,
                                       std::string const& destination) const;
    // Announces the call, holds any active call, and sends the INVITE.
    [[nodiscard]] Outcome<> begin(Draft draft);
    // Sends the INVITE of an announced call once no other call is active; the call ends if that fails.
    void dialWhenAlone(Call& call, sip::CallRequest request);

private:
    [[nodiscard]] Outcome<> mayBegin(int callID) const;
    std::optional<sfiFeature> pickupOf(std::string const& destination) const;

    sip::UserAgent& agent_;
    EngineConfiguration const& configuration_;
    LineDirectory const& lines_;
    Availability const& availability_;
    CallList& calls_;
    EstablishedCalls& established_;
    CallBacks& callBacks_;
};

}  // namespace telephone

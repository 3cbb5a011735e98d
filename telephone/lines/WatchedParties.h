// Watches parties through their dialogs (RFC 4235), with one subscription per party on behalf of one of the telephone's
// lines. A subscription that was refused or has ended is tried again later.
//
// Owned by the composition root; made after the call engine and destroyed before it. Listeners are called on the event
// loop with the phone lock held.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "telephone/calls/CallObserver.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/sip/DialogInfo.h"

namespace telephone {

class CallEngine;

// The status of a party, from its dialogs. A ringing call takes precedence over an active one, because it can be picked
// up, and an active call over one on hold.
WatchedParty partyOf(std::vector<sip::DialogEntry> const& dialogs);

class WatchedParties final : public PartyWatch, public CallObserver
{
public:
    // The time before a failed subscription is tried again.
    static constexpr std::chrono::seconds kRetry{30};

    // lineNumber: the line whose account subscribes.
    WatchedParties(CallEngine& engine, int lineNumber);
    ~WatchedParties() override;
    WatchedParties(WatchedParties const&) = delete;
    WatchedParties& operator=(WatchedParties const&) = delete;

    // Subscribes at once when started, otherwise on start().
    void watch(std::string const& number, Listener changed) override;
    // Subscribes to every party that has no subscription. The registration of the line does this; for a line that does
    // not register, the owner does.
    void start();
    // Ends all subscriptions; every party is then unknown.
    void stop();

    void callChanged(CallSnapshot const& /*now*/, CallSnapshot const* /*before*/) override {}
    void registrationChanged(int lineNumber, bool registered) override;

private:
    class Party;

    CallEngine& engine_;
    int lineNumber_;
    bool started_ = false;
    std::vector<std::unique_ptr<Party>> parties_;
};

}  // namespace telephone

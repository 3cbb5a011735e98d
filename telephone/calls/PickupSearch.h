// Asks a number for the call that rings there, once: subscribes to its dialogs and waits for one. Owned by the engine;
// called with the phone lock held.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "telephone/calls/CallEngine.h"
#include "telephone/sip/DialogSubscription.h"
#include "telephone/sip/Timer.h"

namespace telephone {

class PickupSearch final
{
public:
    // status: of the refusal, 408 when nothing rang in time, else 200. May destroy the search.
    using Found = std::function<void(std::optional<PickupTarget> const& target, int status)>;

    PickupSearch(sip::EventLoop& loop, Found found);

    // False: the question could not be sent.
    bool start(sip::UserAgent& agent, sip::Account const& account, std::string const& target,
               std::chrono::milliseconds patience, std::string& whyNot);

private:
    void finish(std::optional<PickupTarget> const& target, int status);

    Found found_;
    sip::Timer patience_;
    std::unique_ptr<sip::DialogSubscription> subscription_;
};

// The ringing call among the dialogs that a number told; nothing: none rings.
std::optional<PickupTarget> ringingCall(std::vector<sip::DialogEntry> const& dialogs);

}  // namespace telephone

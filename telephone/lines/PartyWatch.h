// Watching the calls of a party: of a busy-lamp field, of a direct-station key, or of the other telephones that share a
// line.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/CallEngine.h"

namespace telephone {

// In ascending order of precedence: the status of a party with several calls is that of the call that ranks highest.
enum class PartyStatus
{
    kUnknown,  // before the first notice, and when watching was refused
    kIdle,
    kHolding,  // its only call is on hold
    kBusy,
    kRinging,  // a call is offered to the party
};

struct WatchedParty
{
    PartyStatus status = PartyStatus::kUnknown;
    std::string remoteURI;               // the other end of its call; empty when not known
    std::optional<PickupTarget> dialog;  // the call, when it can be picked up or taken over
    std::optional<PickupTarget> join;    // the same at the party itself, when it can be joined
    bool isPrivate = false;              // the party keeps others from both
    // Of a party that names the appearances of its calls: those on each, the first appearance first.
    std::vector<WatchedParty> appearances = {};
};

class PartyWatch
{
public:
    using Listener = std::function<void(WatchedParty const&)>;

    virtual ~PartyWatch() = default;

    // Calls the listener at each change, with the phone lock held, until the watch ends. Any number of listeners may
    // watch one party.
    virtual void watch(std::string const& number, Listener changed) = 0;
};

}  // namespace telephone

// What is known of a party that a busy-lamp field or direct-station key watches, or of the other telephones of a shared
// line, and who watches: by the dialog event package (RFC 4235).
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "telephone/calls/CallEngine.h"

namespace telephone {

enum class PartyStatus
{
    kUnknown,  // nothing has come yet, or the watching was refused
    kIdle,
    kRinging,  // a call is offered to the party
    kBusy,
    kHolding,  // its only call is on hold
};

struct WatchedParty
{
    PartyStatus status = PartyStatus::kUnknown;
    std::string remoteURI;               // the other end of its call; empty: none, or not told
    std::optional<PickupTarget> dialog;  // that can be picked up or taken over
};

class PartyWatch
{
public:
    using Listener = std::function<void(WatchedParty const&)>;

    virtual ~PartyWatch() = default;

    // The listener is called with the phone lock held at each change, until the watch ends. Any number of watches of
    // one party share one subscription.
    virtual void watch(std::string const& number, Listener changed) = 0;
};

}  // namespace telephone

// The rules for incoming calls that a person or the management set: forwarding and do-not-disturb. Whoever composes the
// telephone implements it over the settings; called with the phone lock held, at every call, so that a changed setting
// holds for the next one.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"

namespace telephone {

struct ForwardingRule
{
    bool on = false;
    std::string destination;  // number or URI
};

class CallPolicy
{
public:
    virtual ~CallPolicy() = default;

    // False where the call server forwards: the rules are then its own and not applied here.
    virtual bool forwardsHere() const = 0;
    virtual ForwardingRule forwarding(int lineNumber, sfiForwardingType type) const = 0;
    // Rings until an unanswered call is forwarded.
    virtual int ringsBeforeNoReply() const = 0;
    // Of the line or of the whole phone.
    virtual bool doNotDisturb(int lineNumber) const = 0;
};

}  // namespace telephone

// The rules for incoming calls: forwarding and do-not-disturb. Asked for each call, with the phone lock held, so that a
// changed setting applies to the next call.
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

    // False if the call server forwards, by its own rules.
    virtual bool forwardsHere() const = 0;
    virtual ForwardingRule forwarding(int lineNumber, sfiForwardingType type) const = 0;
    // Number of rings after which an unanswered call to the line is forwarded; below 1: never.
    virtual int ringsBeforeNoReply(int lineNumber) const = 0;
    // Whether it is on for the line or for the whole telephone.
    virtual bool doNotDisturb(int lineNumber) const = 0;
};

}  // namespace telephone

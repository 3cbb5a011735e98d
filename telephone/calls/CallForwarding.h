// Forwards incoming calls by the rules of their line. Owned by IncomingCalls; called with the phone lock held.
#pragma once

#include <optional>
#include <string>

#include "telephone/calls/CallList.h"
#include "telephone/calls/CallPolicy.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/Session.h"

namespace telephone {

class CallForwarding
{
public:
    CallForwarding(CallPolicy const& policy, CallList& calls, EventPoster const& post);

    // Forwards a call that has not been offered yet. False: no rule applies.
    bool forward(sip::Session& session, LineAccount const& line, sfiForwardReason reason);
    // The target of calls of that caller in that case; nothing: no rule applies.
    std::optional<std::string> destination(LineAccount const& line, sip::NameAddr const& caller,
                                           sfiForwardReason reason) const;
    void postForwarded(std::string const& lineURI, int callID, sip::NameAddr const& caller,
                       std::string const& destination, sfiForwardReason reason);

private:
    CallPolicy const& policy_;
    CallList& calls_;
    EventPoster const& post_;
};

// Whether the caller belongs to the line's own call server.
bool isInternal(sip::NameAddr const& caller, LineAccount const& line);

}  // namespace telephone

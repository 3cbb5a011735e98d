// What the telephone says to its call server beside calls: computer-telephony bodies by INFO (application/csta+xml)
// outside dialogs, and what it is told the same way. Owned by the engine; called with the phone lock held.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class ServerLink
{
public:
    ServerLink(CallHost& host, sip::UserAgent& agent);

    // The answer comes as b2buaCSTAResponse.
    sfiResult send(LineAccount const& line, std::string const& body);
    // The answer comes as serverFeatureStatusChange.
    sfiResult serverFeatures(LineAccount const& line, bool initialize);
    // The answer is only logged.
    void tellAgentState(LineAccount const& line, std::string const& state);
    // A body that came in; false: it is none of these.
    bool receive(std::string const& lineURI, sip::Content const& content);

private:
    bool request(LineAccount const& line, std::string const& body, sip::ResponseHandler done);

    CallHost& host_;
    sip::UserAgent& agent_;
};

}  // namespace telephone

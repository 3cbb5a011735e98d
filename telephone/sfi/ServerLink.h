// What the telephone says to its call server beside calls: computer-telephony bodies by INFO (application/csta+xml)
// outside dialogs, and what it is told the same way. Owned by the engine; called with the phone lock held.
#pragma once

#include "CallHost.h"
#include "LineDirectory.h"
#include "sfi/SfiTypes.h"
#include "sip/UserAgent.h"

#include <string>

namespace telephone {

class ServerLink
{
public:
    ServerLink(CallHost& host, sip::UserAgent& agent);

    // The answer comes as b2buaCSTAResponse.
    sfiResult send(const LineAccount& line, const std::string& body);
    // The answer comes as serverFeatureStatusChange.
    sfiResult serverFeatures(const LineAccount& line, bool initialize);
    // The answer is only logged.
    void tellAgentState(const LineAccount& line, const std::string& state);
    // A body that came in; false: it is none of these.
    bool receive(const std::string& lineURI, const sip::Content& content);

private:
    bool request(const LineAccount& line, const std::string& body, sip::ResponseHandler done);

    CallHost& host_;
    sip::UserAgent& agent_;
};

}  // namespace telephone

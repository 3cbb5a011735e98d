// Exchanges computer-telephony bodies (application/csta+xml) with the call server, by INFO outside dialogs. Owned by
// CallEngine. A line is named by its number or address; an empty name is the first line.
//
// Any thread; takes the phone lock. receive() is called with it held.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/calls/Availability.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class ServerLink
{
public:
    ServerLink(sip::UserAgent& agent, LineDirectory const& lines, Availability const& availability,
               EventPoster const& post);

    // Sends a CSTA body. The answer comes as b2buaCSTAResponse.
    [[nodiscard]] Outcome<> send(std::string const& lineURI, std::string const& body);
    // Asks the server to begin or end its service for the line. The outcome comes as serverFeatureStatusChange.
    [[nodiscard]] Outcome<> requestFeatures(std::string const& lineURI, bool initialize);
    // Tells the server the state of the line's agent; does nothing without a server. The answer is only logged.
    void tellAgentState(std::string const& lineURI, std::string const& state);

    // A body from the server. False: not a CSTA body.
    bool receive(std::string const& lineURI, sip::Content const& content);

private:
    [[nodiscard]] Outcome<LineAccount> activeLine(std::string const& lineURI) const;
    [[nodiscard]] Outcome<> request(LineAccount const& line, std::string const& body, sip::ResponseHandler done);

    sip::UserAgent& agent_;
    LineDirectory const& lines_;
    Availability const& availability_;
    EventPoster const& post_;
};

}  // namespace telephone

// A far end that does exactly what a test says: a datagram socket on the loop, which keeps what it receives and sends
// what the test writes. In virtual time as in real time.
#pragma once

#include <chrono>
#include <deque>
#include <string>

#include "SipPeer.h"
#include "telephone/sip/Stack.h"

namespace telephone::test {

class ScriptedEnd
{
public:
    explicit ScriptedEnd(sip::EventLoop& loop);
    ~ScriptedEnd();

    std::string address() const;
    std::string uri(std::string const& user = "far") const { return "sip:" + user + "@" + address(); }

    // The next message whose first line begins like this; those before it are dropped. Empty: none came in time.
    std::string receive(std::string const& beginning, std::chrono::milliseconds within = kDeadline);
    // Whether no such message comes in that time.
    bool hearsNothingOf(std::string const& beginning, std::chrono::milliseconds within);

    // Sends this to where the last message came from, or to a given address.
    void send(std::string const& message);
    void sendTo(std::string const& hostPort, std::string const& message);

    // The response to a request. status: "180 Ringing". The tag is added to To if it has none.
    static std::string response(std::string const& request, std::string const& status, std::string const& tag,
                                std::string const& headers = {}, std::string const& body = {});
    // With our Contact.
    std::string accept(std::string const& request, std::string const& tag, std::string const& headers = {}) const;
    // The session description of this end.
    std::string description() const;

    // A request of this end in the dialog that a request or a response of the telephone shows. tag: ours.
    std::string inDialog(std::string const& method, std::string const& message, std::string const& tag, unsigned cseq,
                         std::string const& headers = {}, std::string const& body = {}) const;
    // The first request of a call to the telephone's user agent.
    std::string invite(sip::UserAgent const& agent, std::string const& headers, std::string const& body,
                       std::string const& callId = "scripted") const;

private:
    bool take(std::string const& beginning, std::string& message);
    void receive(sa const& from, mbuf* packet);

    sip::EventLoop& loop_;
    sip::Ref<udp_sock> socket_;
    sa local_{};
    sa far_{};  // whoever sent last
    std::deque<std::string> received_;
};

// The value of the first header of that name; empty: there is none.
std::string headerOf(std::string const& message, std::string const& name);
// All values of headers of that name.
std::vector<std::string> headersOf(std::string const& message, std::string const& name);

}  // namespace telephone::test

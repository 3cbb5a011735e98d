// A far end that does exactly what a test says, so that it can do what no stack does: a datagram socket on the loop,
// which keeps what it receives and sends what the test writes. In virtual time as in real time. Owned by a test; its
// operations take the lock of the loop.
#pragma once

#include <chrono>
#include <deque>
#include <string>
#include <vector>

#include "SipPeer.h"
#include "telephone/sip/Stack.h"

namespace telephone::test {

class ScriptedEnd
{
public:
    explicit ScriptedEnd(sip::EventLoop& loop);
    ~ScriptedEnd();
    ScriptedEnd(ScriptedEnd const&) = delete;
    ScriptedEnd& operator=(ScriptedEnd const&) = delete;

    std::string hostPort() const { return sip::addressText(local_); }
    std::string uri() const { return "sip:far@" + hostPort(); }

    // The next message whose first line begins like this; those before it are dropped. Empty: none came in time.
    std::string receive(std::string const& beginning, std::chrono::milliseconds within = kDeadline);
    // Whether no such message comes in that time; all that come are dropped.
    bool hearsNothingOf(std::string const& beginning, std::chrono::milliseconds within);

    // Sends this to where the last message came from, or to a given address.
    void send(std::string const& message);
    void sendTo(std::string const& hostPort, std::string const& message);

    // In all that follows, headers are whole lines, each with its end. A body without a Content-Type among them is a
    // session description. Requests and responses name this end as Contact, unless the headers do; a redirection has
    // none but theirs.

    // Answers a request: "180 Ringing". The tag is added to To if it has none.
    void answer(std::string const& request, std::string const& status, std::string const& headers = {},
                std::string const& body = {}, std::string const& tag = "far");
    // Accepts an INVITE with description().
    void accept(std::string const& invite, std::string const& headers = {}, std::string const& tag = "far");

    // Sends a request outside any dialog to a user at host:port, with the number 1 and a Call-ID that none had before.
    // Returns what was sent.
    std::string ask(std::string const& method, std::string const& user, std::string const& hostPort,
                    std::string const& headers = {}, std::string const& body = {});
    // Sends a request in the dialog that a request or a response of the telephone shows. Its number is one more than
    // that of the last request in any dialog.
    void request(std::string const& method, std::string const& message, std::string const& headers = {},
                 std::string const& body = {});
    // The same, to be changed or sent by the test, with a number of its choice.
    std::string inDialog(std::string const& method, std::string const& message, unsigned number,
                         std::string const& headers = {}, std::string const& body = {}) const;
    // Sends the ACK of a final response to an INVITE of this end.
    void acknowledge(std::string const& response, std::string const& body = {});

    // PCMU at a port where nobody listens.
    static std::string description();

private:
    bool take(std::string const& beginning, std::string& message);
    // The beginning of a request, up to CSeq; ends: From, To and Call-ID.
    std::string requestTo(std::string const& target, std::string const& method, unsigned number,
                          std::string const& branch, std::string const& ends) const;
    // This beginning of a message with all that follows.
    std::string completed(std::string const& head, std::string const& headers, std::string const& body) const;

    sip::EventLoop& loop_;
    sip::Ref<udp_sock> socket_;
    sa local_{};
    sa far_{};  // whoever sent last
    std::deque<std::string> received_;
    unsigned asked_ = 0;   // requests outside a dialog
    unsigned number_ = 1;  // of the last request
};

// The value of the first header of that name; empty: there is none.
std::string headerOf(std::string const& message, std::string const& name);
// All values of headers of that name.
std::vector<std::string> headersOf(std::string const& message, std::string const& name);
// That of CSeq.
unsigned numberOf(std::string const& message);
// "SIP/2.0 200 OK", or "BYE sip:... SIP/2.0".
std::string firstLineOf(std::string const& message);

}  // namespace telephone::test

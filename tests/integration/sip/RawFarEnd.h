// A far end that a test writes message by message, so that it can do what no stack does. It has one UDP port and one
// dialog at a time. Owned by a test; its operations take the lock of the loop.
#pragma once

#include <string>
#include <vector>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Stack.h"

namespace telephone::test {

class RawFarEnd
{
public:
    explicit RawFarEnd(sip::EventLoop& loop);
    ~RawFarEnd();
    RawFarEnd(RawFarEnd const&) = delete;
    RawFarEnd& operator=(RawFarEnd const&) = delete;

    std::string hostPort() const { return "127.0.0.1:" + std::to_string(port_); }
    std::string uri() const { return "sip:raw@" + hostPort(); }

    // The first message, not taken before, that begins with these characters; empty if none comes in ten seconds.
    std::string take(std::string const& beginning);
    // How many messages that begin so have not been taken.
    std::size_t count(std::string const& beginning) const;
    // "SIP/2.0 200 OK" or "BYE sip:... SIP/2.0".
    static std::string firstLine(std::string const& message) { return message.substr(0, message.find("\r\n")); }
    // The first header of that name; empty without one.
    static std::string header(std::string const& message, std::string const& name);

    // Sends to this host:port what has no request to answer to.
    void send(std::string const& hostPort, std::string const& message);
    // Sends a request outside any dialog to a user at host:port.
    void ask(std::string const& method, std::string const& user, std::string const& hostPort,
             std::string const& headers = {}, std::string const& body = {});
    // Sends the ACK of the final response to an INVITE that was sent with ask().
    void acknowledge(std::string const& response);
    // Answers a request: "200 OK". headers are whole lines, each with its end; a redirection needs a Contact among
    // them. A response to an INVITE with a final status below 300 makes the dialog that request() uses.
    void answer(std::string const& request, std::string const& status, std::string const& headers = {},
                std::string const& body = {});
    // Accepts an INVITE with an audio description.
    void accept(std::string const& invite);
    // Sends a request in the dialog.
    void request(std::string const& method, std::string const& headers = {}, std::string const& body = {});

    // PCMU at a port where nobody listens.
    static std::string description();

private:
    sip::EventLoop& loop_;
    sip::Ref<udp_sock> socket_;
    std::uint16_t port_ = 0;
    std::vector<std::string> received_;
    std::string invite_;  // what made the dialog
    int number_ = 0;      // of the last request
};

}  // namespace telephone::test

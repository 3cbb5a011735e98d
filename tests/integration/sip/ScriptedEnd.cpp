#include "ScriptedEnd.h"

#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

std::string tagOf(std::string const& nameAddr)
{
    auto const place = nameAddr.find(";tag=");
    return place == std::string::npos ? std::string() : nameAddr.substr(place + 5);
}

std::string withLength(std::string const& headers, std::string const& body)
{
    std::string const type = body.empty() ? "" : "Content-Type: application/sdp\r\n";
    return headers + type + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace

std::vector<std::string> headersOf(std::string const& message, std::string const& name)
{
    std::vector<std::string> values;
    std::string const wanted = "\r\n" + name + ": ";
    std::string const head = message.substr(0, message.find("\r\n\r\n") + 2);
    for (auto place = head.find(wanted); place != std::string::npos; place = head.find(wanted, place + 1)) {
        auto const begin = place + wanted.size();
        values.push_back(head.substr(begin, head.find("\r\n", begin) - begin));
    }
    return values;
}

std::string headerOf(std::string const& message, std::string const& name)
{
    auto const values = headersOf(message, name);
    return values.empty() ? std::string() : values.front();
}

ScriptedEnd::ScriptedEnd(sip::EventLoop& loop)
    : loop_(loop)
{
    std::lock_guard const guard(loop_);
    sa_set_str(&local_, "127.0.0.1", 0);
    auto const heard = [](sa const* from, mbuf* packet, void* self) {
        static_cast<ScriptedEnd*>(self)->receive(*from, packet);
    };
    EXPECT_EQ(0, udp_listen(socket_.out(), &local_, heard, this));
    EXPECT_EQ(0, udp_local_get(socket_.get(), &local_));
}

ScriptedEnd::~ScriptedEnd()
{
    std::lock_guard const guard(loop_);
    socket_.reset();
}

std::string ScriptedEnd::address() const
{
    return sip::addressText(local_);
}

void ScriptedEnd::receive(sa const& from, mbuf* packet)
{
    far_ = from;
    received_.push_back(sip::remainingText(packet));
}

bool ScriptedEnd::take(std::string const& beginning, std::string& message)
{
    std::lock_guard const guard(loop_);
    while (!received_.empty()) {
        message = received_.front();
        received_.pop_front();
        if (message.starts_with(beginning)) {
            return true;
        }
    }
    message.clear();
    return false;
}

std::string ScriptedEnd::receive(std::string const& beginning, std::chrono::milliseconds within)
{
    std::string message;
    eventually([&] { return take(beginning, message); }, within);
    return message;
}

bool ScriptedEnd::hearsNothingOf(std::string const& beginning, std::chrono::milliseconds within)
{
    std::string message;
    return !eventually([&] { return take(beginning, message); }, within);
}

void ScriptedEnd::send(std::string const& message)
{
    std::lock_guard const guard(loop_);
    sip::Ref<mbuf> packet;
    EXPECT_TRUE(sip::fill(packet, message));
    EXPECT_EQ(0, udp_send(socket_.get(), &far_, packet.get()));
}

void ScriptedEnd::sendTo(std::string const& hostPort, std::string const& message)
{
    EXPECT_EQ(0, sa_decode(&far_, hostPort.data(), hostPort.size()));
    send(message);
}

std::string ScriptedEnd::response(std::string const& request, std::string const& status, std::string const& tag,
                                  std::string const& headers, std::string const& body)
{
    std::string text = "SIP/2.0 " + status + "\r\n";
    for (auto const& via : headersOf(request, "Via")) {
        text += "Via: " + via + "\r\n";
    }
    std::string const to = headerOf(request, "To");
    text += "From: " + headerOf(request, "From") + "\r\nTo: " + to + (tagOf(to).empty() ? ";tag=" + tag : "") +
            "\r\nCall-ID: " + headerOf(request, "Call-ID") + "\r\nCSeq: " + headerOf(request, "CSeq") + "\r\n";
    return text + withLength(headers, body);
}

std::string ScriptedEnd::description() const
{
    return "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm=audio 4000 RTP/AVP 0\r\n"
           "a=rtpmap:0 PCMU/8000\r\n";
}

std::string ScriptedEnd::accept(std::string const& request, std::string const& tag, std::string const& headers) const
{
    return response(request, "200 OK", tag, "Contact: <" + uri() + ">\r\n" + headers, description());
}

std::string ScriptedEnd::inDialog(std::string const& method, std::string const& message, std::string const& tag,
                                  unsigned cseq, std::string const& headers, std::string const& body) const
{
    // Our identity is in From where we began the call, else in To.
    bool const ours = tagOf(headerOf(message, "From")) == tag;
    std::string const here = headerOf(message, ours ? "From" : "To");
    std::string const there = headerOf(message, ours ? "To" : "From");
    std::string contact = headerOf(message, "Contact");
    contact = contact.substr(1, contact.find('>') - 1);
    return method + " " + contact + " SIP/2.0\r\nVia: SIP/2.0/UDP " + address() + ";branch=z9hG4bK" + method +
           std::to_string(cseq) + ";rport\r\nMax-Forwards: 70\r\nFrom: " + here +
           (tagOf(here).empty() ? ";tag=" + tag : "") + "\r\nTo: " + there +
           "\r\nCall-ID: " + headerOf(message, "Call-ID") + "\r\nCSeq: " + std::to_string(cseq) + " " +
           (method == "ACK" ? "ACK" : method) + "\r\nContact: <" + uri() + ">\r\n" + withLength(headers, body);
}

std::string ScriptedEnd::invite(sip::UserAgent const& agent, std::string const& headers, std::string const& body,
                                std::string const& callId) const
{
    std::string const target = "sip:4711@" + agent.hostPort();
    return "INVITE " + target + " SIP/2.0\r\nVia: SIP/2.0/UDP " + address() + ";branch=z9hG4bK" + callId +
           ";rport\r\nMax-Forwards: 70\r\nFrom: <" + uri() + ">;tag=far\r\nTo: <" + target + ">\r\nCall-ID: " + callId +
           "\r\nCSeq: 1 INVITE\r\nContact: <" + uri() + ">\r\n" + withLength(headers, body);
}

}  // namespace telephone::test

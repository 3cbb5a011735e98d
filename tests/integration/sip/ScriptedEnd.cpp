#include "ScriptedEnd.h"

#include <cstdlib>
#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

std::string withTag(std::string const& nameAddr, std::string const& tag)
{
    return nameAddr.find(";tag=") == std::string::npos ? nameAddr + ";tag=" + tag : nameAddr;
}

// The headers that say between whom a message is.
std::string between(std::string const& from, std::string const& to, std::string const& callId)
{
    return "From: " + from + "\r\nTo: " + to + "\r\nCall-ID: " + callId + "\r\n";
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

unsigned numberOf(std::string const& message)
{
    return static_cast<unsigned>(std::strtoul(headerOf(message, "CSeq").c_str(), nullptr, 10));
}

std::string firstLineOf(std::string const& message)
{
    return message.substr(0, message.find("\r\n"));
}

ScriptedEnd::ScriptedEnd(sip::EventLoop& loop)
    : loop_(loop)
{
    std::lock_guard const guard(loop_);
    sa_set_str(&local_, "127.0.0.1", 0);
    auto const keep = [](sa const* from, mbuf* packet, void* object) {
        auto* const self = static_cast<ScriptedEnd*>(object);
        self->far_ = *from;
        self->received_.push_back(sip::remainingText(packet));
    };
    EXPECT_EQ(0, udp_listen(socket_.out(), &local_, keep, this));
    EXPECT_EQ(0, udp_local_get(socket_.get(), &local_));
}

ScriptedEnd::~ScriptedEnd()
{
    std::lock_guard const guard(loop_);
    socket_.reset();
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
    std::lock_guard const guard(loop_);
    EXPECT_EQ(0, sa_decode(&far_, hostPort.data(), hostPort.size()));
    send(message);
}

std::string ScriptedEnd::completed(std::string const& head, std::string const& headers, std::string const& body) const
{
    auto const lacks = [&headers](std::string const& name) {
        return ("\r\n" + headers).find("\r\n" + name + ": ") == std::string::npos;
    };
    bool const redirects = head.starts_with("SIP/2.0 3");
    return head + (!redirects && lacks("Contact") ? "Contact: <" + uri() + ">\r\n" : "") + headers +
           (!body.empty() && lacks("Content-Type") ? "Content-Type: application/sdp\r\n" : "") +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string ScriptedEnd::requestTo(std::string const& target, std::string const& method, unsigned number,
                                   std::string const& branch, std::string const& ends) const
{
    return method + " " + target + " SIP/2.0\r\nVia: SIP/2.0/UDP " + hostPort() + ";branch=z9hG4bK" + branch +
           ";rport\r\nMax-Forwards: 70\r\n" + ends + "CSeq: " + std::to_string(number) + " " + method + "\r\n";
}

void ScriptedEnd::answer(std::string const& request, std::string const& status, std::string const& headers,
                         std::string const& body, std::string const& tag)
{
    ASSERT_NE("", request) << "no request that " << status << " could answer";
    std::string text = "SIP/2.0 " + status + "\r\n";
    for (auto const& via : headersOf(request, "Via")) {
        text += "Via: " + via + "\r\n";
    }
    text += between(headerOf(request, "From"), withTag(headerOf(request, "To"), tag), headerOf(request, "Call-ID")) +
            "CSeq: " + headerOf(request, "CSeq") + "\r\n";
    send(completed(text, headers, body));
}

void ScriptedEnd::accept(std::string const& invite, std::string const& headers, std::string const& tag)
{
    answer(invite, "200 OK", headers, description(), tag);
}

std::string ScriptedEnd::ask(std::string const& method, std::string const& user, std::string const& hostPort,
                             std::string const& headers, std::string const& body)
{
    std::string const number = std::to_string(++asked_);
    std::string const target = "sip:" + user + "@" + hostPort;
    std::string const ends = between("<" + uri() + ">;tag=far", "<" + target + ">", number + "@" + this->hostPort());
    std::string message = completed(requestTo(target, method, 1, "asked" + number, ends), headers, body);
    sendTo(hostPort, message);
    return message;
}

void ScriptedEnd::request(std::string const& method, std::string const& message, std::string const& headers,
                          std::string const& body)
{
    send(inDialog(method, message, ++number_, headers, body));
}

std::string ScriptedEnd::inDialog(std::string const& method, std::string const& message, unsigned number,
                                  std::string const& headers, std::string const& body) const
{
    // This end is in To, except in responses to its requests.
    bool const asked = message.starts_with("SIP/2.0 ");
    std::string const contact = headerOf(message, "Contact");
    std::string const ends = between(withTag(headerOf(message, asked ? "From" : "To"), "far"),
                                     headerOf(message, asked ? "To" : "From"), headerOf(message, "Call-ID"));
    return completed(
        requestTo(contact.substr(1, contact.find('>') - 1), method, number, method + std::to_string(number), ends),
        headers, body);
}

void ScriptedEnd::acknowledge(std::string const& response, std::string const& body)
{
    ASSERT_NE("", response) << "no response to acknowledge";
    send(inDialog("ACK", response, numberOf(response), {}, body));
}

std::string ScriptedEnd::description()
{
    return "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm=audio 4000 RTP/AVP 0\r\n"
           "a=rtpmap:0 PCMU/8000\r\n";
}

}  // namespace telephone::test

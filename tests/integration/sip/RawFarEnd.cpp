#include "RawFarEnd.h"

#include <algorithm>
#include <mutex>

#include <gtest/gtest.h>

#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

constexpr char const* kOwnTag = ";tag=raw";

std::string withContentLength(std::string const& head, std::string const& body)
{
    return head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// All headers of that name, whole lines.
std::string linesOf(std::string const& message, std::string const& name)
{
    std::string lines;
    for (auto at = message.find("\r\n" + name + ": "); at != std::string::npos;) {
        auto const end = message.find("\r\n", at + 2);
        lines += message.substr(at + 2, end - at);
        at = message.find("\r\n" + name + ": ", end);
    }
    return lines;
}

// What is between < and >, else all before a parameter.
std::string addressIn(std::string const& header)
{
    auto const open = header.find('<');
    return open == std::string::npos ? header.substr(0, header.find(';'))
                                     : header.substr(open + 1, header.find('>') - open - 1);
}

}  // namespace

RawFarEnd::RawFarEnd(sip::EventLoop& loop)
    : loop_(loop)
{
    std::lock_guard const guard(loop_);
    sa address{};
    sa_set_str(&address, "127.0.0.1", 0);
    auto const receive = [](sa const*, mbuf* packet, void* object) {
        static_cast<RawFarEnd*>(object)->received_.emplace_back(reinterpret_cast<char const*>(mbuf_buf(packet)),
                                                                mbuf_get_left(packet));
    };
    EXPECT_EQ(udp_listen(socket_.out(), &address, receive, this), 0);
    EXPECT_EQ(udp_local_get(socket_.get(), &address), 0);
    port_ = sa_port(&address);
}

RawFarEnd::~RawFarEnd()
{
    std::lock_guard const guard(loop_);
    socket_.reset();
}

std::string RawFarEnd::take(std::string const& beginning)
{
    std::string taken;
    eventually(
        [&] {
            std::lock_guard const guard(loop_);
            auto const found =
                std::ranges::find_if(received_, [&](std::string const& each) { return each.starts_with(beginning); });
            if (found == received_.end()) {
                return false;
            }
            taken = *found;
            received_.erase(found);
            return true;
        },
        std::chrono::seconds(10));
    EXPECT_FALSE(taken.empty()) << beginning << " did not come";
    return taken;
}

std::size_t RawFarEnd::count(std::string const& beginning) const
{
    std::lock_guard const guard(loop_);
    return static_cast<std::size_t>(
        std::ranges::count_if(received_, [&](std::string const& each) { return each.starts_with(beginning); }));
}

std::string RawFarEnd::header(std::string const& message, std::string const& name)
{
    std::string const lines = linesOf(message, name);
    return lines.empty() ? "" : lines.substr(name.size() + 2, lines.find("\r\n") - name.size() - 2);
}

void RawFarEnd::send(std::string const& hostPort, std::string const& message)
{
    std::lock_guard const guard(loop_);
    sa address{};
    auto const colon = hostPort.find(':');
    ASSERT_EQ(sa_set_str(&address, hostPort.substr(0, colon).c_str(),
                         static_cast<std::uint16_t>(std::stoi(hostPort.substr(colon + 1)))),
              0);
    sip::Ref<mbuf> buffer;
    *buffer.out() = mbuf_alloc(message.size());
    ASSERT_EQ(mbuf_write_str(buffer.get(), message.c_str()), 0);
    mbuf_set_pos(buffer.get(), 0);
    EXPECT_EQ(udp_send(socket_.get(), &address, buffer.get()), 0);
}

void RawFarEnd::ask(std::string const& method, std::string const& user, std::string const& hostPort,
                    std::string const& headers, std::string const& body)
{
    std::string const number = std::to_string(++number_);
    std::string const to = "sip:" + user + "@" + hostPort;
    send(hostPort,
         withContentLength(method + " " + to + " SIP/2.0\r\nVia: SIP/2.0/UDP " + this->hostPort() +
                               ";branch=z9hG4bKraw" + number + ";rport\r\nMax-Forwards: 70\r\nFrom: <" + uri() +
                               ">;tag=raw\r\nTo: <" + to + ">\r\nCall-ID: raw" + number + "\r\nCSeq: " + number + " " +
                               method + "\r\nContact: <" + uri() + ">\r\n" + headers,
                           body));
}

void RawFarEnd::acknowledge(std::string const& response)
{
    std::string const target = addressIn(header(response, "Contact"));
    std::string const cseq = header(response, "CSeq");
    auto const at = target.find('@') + 1;
    send(target.substr(at, target.find(';', at) - at),
         withContentLength("ACK " + target + " SIP/2.0\r\nVia: SIP/2.0/UDP " + hostPort() + ";branch=z9hG4bKack" +
                               cseq + "\r\nMax-Forwards: 70\r\n" + linesOf(response, "From") + linesOf(response, "To") +
                               linesOf(response, "Call-ID") + "CSeq: " + cseq.substr(0, cseq.find(' ')) + " ACK\r\n",
                           ""));
}

void RawFarEnd::answer(std::string const& request, std::string const& status, std::string const& headers,
                       std::string const& body)
{
    std::string const via = header(request, "Via");
    auto const space = via.find(' ') + 1;
    std::string to = "To: " + header(request, "To");
    to += to.find(";tag=") == std::string::npos ? kOwnTag : "";
    send(via.substr(space, via.find(';') - space),
         withContentLength("SIP/2.0 " + status + "\r\n" + linesOf(request, "Via") + linesOf(request, "From") + to +
                               "\r\n" + linesOf(request, "Call-ID") + linesOf(request, "CSeq") +
                               (status.starts_with("3") ? "" : "Contact: <" + uri() + ">\r\n") + headers,
                           body));
    if (request.starts_with("INVITE") && status.starts_with("2")) {
        invite_ = request;
    }
}

void RawFarEnd::accept(std::string const& invite)
{
    answer(invite, "200 OK", "Content-Type: application/sdp\r\n", description());
}

void RawFarEnd::request(std::string const& method, std::string const& headers, std::string const& body)
{
    std::string const target = addressIn(header(invite_, "Contact"));
    std::string const number = std::to_string(++number_);
    auto const at = target.find('@') + 1;
    send(target.substr(at, target.find(';', at) - at),
         withContentLength(method + " " + target + " SIP/2.0\r\nVia: SIP/2.0/UDP " + hostPort() + ";branch=z9hG4bKraw" +
                               number + ";rport\r\nMax-Forwards: 70\r\nFrom: " + header(invite_, "To") + kOwnTag +
                               "\r\nTo: " + header(invite_, "From") + "\r\n" + linesOf(invite_, "Call-ID") +
                               "CSeq: " + number + " " + method + "\r\nContact: <" + uri() + ">\r\n" + headers,
                           body));
}

std::string RawFarEnd::description()
{
    return "v=0\r\no=raw 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\nm=audio 39998 RTP/AVP 0\r\n"
           "a=rtpmap:0 PCMU/8000\r\n";
}

}  // namespace telephone::test

// Unsolicited, malformed and hostile packets.
#include <cerrno>
#include <random>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SipFixture.h"
#include "tests/helpers/TestCertificates.h"
#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

// A raw datagram or stream socket on loopback.
class RawPeer
{
public:
    // from: our address; empty: any.
    RawPeer(int type, std::uint16_t port, char const* from = "")
        : socket_(::socket(AF_INET, type, 0))
    {
        sockaddr_in here{};
        here.sin_family = AF_INET;
        if (::inet_pton(AF_INET, from, &here.sin_addr) == 1) {
            ::bind(socket_, reinterpret_cast<sockaddr const*>(&here), sizeof here);
        }
        sockaddr_in far{};
        far.sin_family = AF_INET;
        far.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        far.sin_port = htons(port);
        timeval const patience{3, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        connected_ = ::connect(socket_, reinterpret_cast<sockaddr const*>(&far), sizeof far) == 0;
        socklen_t size = sizeof near_;
        ::getsockname(socket_, reinterpret_cast<sockaddr*>(&near_), &size);
    }
    ~RawPeer() { ::close(socket_); }

    bool isConnected() const { return connected_; }
    std::string address() const { return "127.0.0.1:" + std::to_string(ntohs(near_.sin_port)); }
    bool send(std::string const& data) { return ::send(socket_, data.data(), data.size(), MSG_NOSIGNAL) >= 0; }
    std::string receive()
    {
        std::array<char, 4096> buffer{};
        ssize_t const size = ::recv(socket_, buffer.data(), buffer.size(), 0);
        return size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : std::string();
    }
    // Whether the far end closes the connection.
    bool isClosed()
    {
        char byte = 0;
        return ::recv(socket_, &byte, 1, 0) == 0 || errno == ECONNRESET;
    }
    std::string ask(std::string const& data)
    {
        send(data);
        return receive();
    }

private:
    int socket_;
    bool connected_ = false;
    sockaddr_in near_{};
};

class Robustness : public ExchangeTest
{
protected:
    std::string request(std::string const& method, std::string const& user, std::string const& extra = {},
                        std::string const& body = {})
    {
        std::string const number = std::to_string(++count_);
        return method + " sip:" + user + "@" + exchange.hostPort() + " SIP/2.0\r\nVia: SIP/2.0/UDP " + peer.address() +
               ";branch=z9hG4bKraw" + number + ";rport\r\nMax-Forwards: 70\r\nFrom: <sip:raw@" + peer.address() +
               ">;tag=t" + number + "\r\nTo: <sip:" + user + "@" + exchange.hostPort() + ">\r\nCall-ID: raw" + number +
               "\r\nCSeq: 1 " + method + "\r\nContact: <sip:raw@" + peer.address() + ">\r\n" + extra +
               "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    }
    static std::string firstLine(std::string const& message) { return message.substr(0, message.find("\r\n")); }
    void expectAlive()
    {
        SipPeer phone(loop);
        phone.call(at("100"));
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    }

    RawPeer peer{SOCK_DGRAM, exchange.port()};
    int count_ = 0;
};

TEST_F(Robustness, GarbageOnUdp_HurtsNothing)
{
    std::mt19937 random(4711);
    std::string const seed =
        request("INVITE", "100", "Content-Type: application/sdp\r\n", "v=0\r\no=- 1 1 IN IP4 x\r\n");

    for (int i = 0; i < 2000; ++i) {
        std::string packet = seed;
        for (int changes = 0; changes < 8; ++changes) {
            packet[random() % packet.size()] = static_cast<char>(random());
        }
        if (i % 3 == 0) {
            packet.resize(random() % packet.size());
        }
        peer.send(packet);
    }
    peer.send(std::string(60000, 'A'));
    peer.send(std::string("\0\0\0\0\0\0", 6));

    expectAlive();
}

TEST_F(Robustness, GarbageOnTcp_HurtsNothing)
{
    for (std::string const& data : {std::string("GET / HTTP/1.1\r\n\r\n"), std::string(100000, 'x'),
                                    std::string("INVITE sip:100@x SIP/2.0\r\n\r\n"), std::string("\r\n\r\n\r\n"),
                                    std::string("SIP/2.0 200 OK\r\nContent-Length: 99999999\r\n\r\n")}) {
        RawPeer stream(SOCK_STREAM, exchange.tcpPort());
        ASSERT_TRUE(stream.isConnected());
        stream.send(data);
    }

    expectAlive();
}

TEST_F(Robustness, RegisterWhileTheRegistrarIsOff_GetsNoAnswerAtAll)
{
    exchange.setRegistrar({.kind = exchange::RegistrarConduct::Kind::kAway});
    peer.send(request("REGISTER", "4711"));
    EXPECT_EQ("SIP/2.0 200 OK", firstLine(peer.ask(request("OPTIONS", "100")))) << "the first answer to arrive";

    exchange.setRegistrar({});

    EXPECT_EQ("SIP/2.0 401 Unauthorized", firstLine(peer.ask(request("REGISTER", "4711"))));
}

TEST_F(Robustness, Options_AreAnsweredWithWhatIsSupported)
{
    std::string const answer = peer.ask(request("OPTIONS", "100"));

    EXPECT_EQ("SIP/2.0 200 OK", firstLine(answer));
    EXPECT_NE(std::string::npos,
              answer.find("Allow: INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE"));
    EXPECT_EQ("SIP/2.0 404 Not Found", firstLine(peer.ask(request("OPTIONS", "555"))));
}

TEST_F(Robustness, RequiredExtensionThatIsNotThere_IsABadExtension)
{
    std::string const answer = peer.ask(request("INVITE", "100", "Require: precondition, replaces\r\n"));

    EXPECT_EQ("SIP/2.0 420 Bad Extension", firstLine(answer));
    EXPECT_NE(std::string::npos, answer.find("Unsupported: precondition\r\n"));
}

TEST_F(Robustness, UnknownMethod_IsNotAllowed)
{
    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", firstLine(peer.ask(request("DANCE", "100"))));
    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", firstLine(peer.ask(request("PUBLISH", "100"))));
}

TEST_F(Robustness, ByeAndCancelOfNothing_DoNotExist)
{
    EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", firstLine(peer.ask(request("CANCEL", "100"))));
    EXPECT_EQ("SIP/2.0 481 Call Does Not Exist", firstLine(peer.ask(request("BYE", "100"))));
}

TEST_F(Robustness, InviteWithoutContact_IsABadRequest)
{
    std::string invite = request("INVITE", "100");
    invite.erase(invite.find("Contact:"), invite.find("Content-Length:") - invite.find("Contact:"));

    EXPECT_EQ("SIP/2.0 100 Trying", firstLine(peer.ask(invite)));
    EXPECT_EQ("SIP/2.0 400 Missing Contact", firstLine(peer.receive()));
}

TEST_F(Robustness, InviteWithABodyThatIsNoSdp_IsRefused)
{
    EXPECT_EQ("SIP/2.0 100 Trying",
              firstLine(peer.ask(request("INVITE", "100", "Content-Type: text/plain\r\n", "call me"))));
    EXPECT_EQ("SIP/2.0 415 Unsupported Media Type", firstLine(peer.receive()));
}

TEST_F(Robustness, InviteWithoutSdp_IsAnsweredWithAnOffer)
{
    EXPECT_EQ("SIP/2.0 100 Trying", firstLine(peer.ask(request("INVITE", "100"))));
    EXPECT_EQ("SIP/2.0 180 Ringing", firstLine(peer.receive()));
    std::string const answer = peer.receive();

    EXPECT_EQ("SIP/2.0 200 OK", firstLine(answer));
    EXPECT_NE(std::string::npos, answer.find("m=audio "));
    EXPECT_NE(std::string::npos, answer.find("a=rtpmap:0 PCMU/8000"));
    EXPECT_NE(std::string::npos, answer.find("a=sendrecv"));
}

TEST_F(Robustness, AnswerThatIsNeverAcknowledged_DoesNotKeepThePortBound)
{
    auto second = std::make_unique<exchange::Exchange>(loop, exchange::ExchangeConfig{});
    exchange::ExchangeConfig again;
    again.port = second->port();
    RawPeer silent(SOCK_DGRAM, second->port());
    silent.send(request("INVITE", "100"));
    for (int i = 0; i < 3; ++i) {
        ASSERT_NE("", silent.receive());
    }

    second.reset();

    EXPECT_NO_THROW(exchange::Exchange(loop, again));
}

TEST_F(Robustness, ReferOutsideACall_IsOffered)
{
    SipPeer phone(loop);
    RawPeer other(SOCK_DGRAM, phone.agent->udpPort());

    other.send(request("REFER", "4711", "Refer-To: <sip:100@127.0.0.1>\r\n"));

    ASSERT_TRUE(phone.waitFor("transfer outside a call")) << phone.events();
    EXPECT_EQ("sip:100@127.0.0.1", phone.transfers.at(0)->target());
    phone.transfers.at(0)->reject(603, "Decline");
    EXPECT_EQ("SIP/2.0 603 Decline", firstLine(other.receive()));
}

// A telephone that lets others open three connections, two of them from one address.
class ConnectionsOfOthers : public SipTest
{
protected:
    ConnectionsOfOthers()
    {
        auto const own = certificates_.make();
        sip::UserAgentConfig config;
        config.limits = {.connections = 3, .sourceConnections = 2};
        config.tls = sip::TlsConfig{own.certificate, own.key, {}};
        config.tlsFromTheStart = true;
        phone_ = std::make_unique<SipPeer>(loop, "4711", config);
    }

    std::unique_ptr<RawPeer> connect(char const* from) const
    {
        return std::make_unique<RawPeer>(SOCK_STREAM, phone_->agent->tcpPort(), from);
    }
    static bool isAnswered(RawPeer& peer)
    {
        return peer
            .ask("OPTIONS sip:4711@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/TCP " + peer.address() +
                 ";branch=z9hG4bKraw\r\nMax-Forwards: 70\r\nFrom: <sip:raw@127.0.0.1>;tag=t\r\n"
                 "To: <sip:4711@127.0.0.1>\r\nCall-ID: raw\r\nCSeq: 1 OPTIONS\r\nContent-Length: 0\r\n\r\n")
            .starts_with("SIP/2.0 200 OK\r\n");
    }

    TestCertificates certificates_;
    std::unique_ptr<SipPeer> phone_;
};

TEST_F(ConnectionsOfOthers, OneTooManyFromAnAddress_IsClosed)
{
    auto const first = connect("127.0.0.1");
    auto const second = connect("127.0.0.1");
    EXPECT_TRUE(isAnswered(*first));
    EXPECT_TRUE(isAnswered(*second));

    EXPECT_TRUE(connect("127.0.0.1")->isClosed());
    EXPECT_TRUE(isAnswered(*connect("127.0.0.2")));
}

TEST_F(ConnectionsOfOthers, OneTooManyInAll_IsClosedUntilAnotherHasEnded)
{
    auto first = connect("127.0.0.1");
    auto const second = connect("127.0.0.2");
    auto const third = connect("127.0.0.3");
    EXPECT_TRUE(isAnswered(*third));

    EXPECT_TRUE(connect("127.0.0.4")->isClosed());
    first.reset();

    EXPECT_TRUE(eventually([this] { return isAnswered(*connect("127.0.0.4")); }));
    EXPECT_TRUE(isAnswered(*second));
}

TEST_F(ConnectionsOfOthers, ConnectionsOverTls_AreCountedWithTheOthers)
{
    RawPeer const first(SOCK_STREAM, phone_->agent->tlsPort());
    auto const second = connect("127.0.0.1");
    EXPECT_TRUE(isAnswered(*second));

    EXPECT_TRUE(RawPeer(SOCK_STREAM, phone_->agent->tlsPort()).isClosed());
}

TEST_F(Robustness, MessageWithoutFromTag_IsABadRequest)
{
    std::string options = request("OPTIONS", "100");
    options.erase(options.find(";tag="), 3 + 3);

    EXPECT_EQ("SIP/2.0 400 Bad Request", firstLine(peer.ask(options)));
}

}  // namespace

}  // namespace telephone::test

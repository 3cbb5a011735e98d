#include "telephone/sip/MemoryNetwork.h"

#include <array>
#include <cerrno>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/sip/DatagramFaults.h"
#include "telephone/sip/MemorySockets.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

// The functions of the stack that virtual time replaces, as the stack itself calls them.
namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

sa addressOf(char const* host, std::uint16_t port = 0)
{
    sa address{};
    sa_set_str(&address, host, port);
    return address;
}

std::string textOf(mbuf const& buffer)
{
    return {reinterpret_cast<char const*>(mbuf_buf(&buffer)), mbuf_get_left(&buffer)};
}

void fill(mbuf& buffer, std::string const& text)
{
    mbuf_rewind(&buffer);
    (void)mbuf_write_str(&buffer, text.c_str());
    mbuf_set_pos(&buffer, 0);
}

class MemoryNetworkTest : public testing::Test
{
protected:
    explicit MemoryNetworkTest(std::uint64_t seed = 0)
        : time_({.seed = seed})
    {
        *buffer_.out() = mbuf_alloc(64);
    }

    // Everything that arrives within a second.
    static void deliverAll()
    {
        for (int i = 0; i < 100; ++i) {
            memoryNetwork().deliver();
            sleepFor(10ms);
        }
    }

    VirtualTime const time_;
    Ref<mbuf> buffer_;
};

// A datagram socket that keeps what it received.
struct DatagramReader
{
    explicit DatagramReader(std::uint16_t port = 0)
    {
        sa wanted = addressOf("127.0.0.1", port);
        error = udp_listen(
            socket.out(), &wanted,
            [](sa const* from, mbuf* packet, void* object) {
                static_cast<DatagramReader*>(object)->received.push_back(textOf(*packet) + " from " +
                                                                         std::to_string(sa_port(from)));
            },
            this);
        if (error == 0) {
            (void)udp_local_get(socket.get(), &address);
        }
    }

    void send(sa const& to, mbuf& buffer, std::string const& text)
    {
        fill(buffer, text);
        EXPECT_EQ(udp_send(socket.get(), &to, &buffer), 0);
    }

    int error = 0;
    Ref<udp_sock> socket;
    sa address{};
    std::vector<std::string> received;
};

TEST_F(MemoryNetworkTest, Datagrams_ArriveInTheirOrderWithTheirSender)
{
    DatagramReader one(5001);
    DatagramReader two(5002);

    one.send(two.address, *buffer_.get(), "first");
    one.send(two.address, *buffer_.get(), "second");
    memoryNetwork().deliver();

    EXPECT_EQ(two.received, (std::vector<std::string>{"first from 5001", "second from 5001"}));
    EXPECT_TRUE(one.received.empty());
}

TEST_F(MemoryNetworkTest, Datagram_ToNobodyIsLost)
{
    DatagramReader one(5001);

    one.send(addressOf("127.0.0.1", 5999), *buffer_.get(), "hello");
    memoryNetwork().deliver();

    EXPECT_EQ(memoryNetwork().nextArrival(), kNoDeadline);
}

TEST_F(MemoryNetworkTest, Datagram_ToAnotherAddressWithTheSamePortIsLost)
{
    DatagramReader one(5001);

    one.send(addressOf("127.0.0.2", 5001), *buffer_.get(), "hello");
    memoryNetwork().deliver();

    EXPECT_TRUE(one.received.empty());
}

TEST_F(MemoryNetworkTest, DatagramThatIsTooLong_IsRefused)
{
    DatagramReader one(5001);
    fill(*buffer_.get(), std::string(65508, 'x'));

    EXPECT_EQ(udp_send(one.socket.get(), &one.address, buffer_.get()), EMSGSIZE);

    one.send(one.address, *buffer_.get(), std::string(65507, 'x'));
    memoryNetwork().deliver();
    ASSERT_EQ(one.received.size(), 1U);
    EXPECT_EQ(one.received[0].size(), 65507 + std::string(" from 5001").size());
}

TEST_F(MemoryNetworkTest, EmptyDatagram_Arrives)
{
    DatagramReader one(5001);

    one.send(one.address, *buffer_.get(), "");
    memoryNetwork().deliver();

    EXPECT_EQ(one.received, std::vector<std::string>{" from 5001"});
}

TEST_F(MemoryNetworkTest, ReceiverThatEndsWhileItReceives_FreesItsPort)
{
    Ref<udp_sock> socket;
    sa wanted = addressOf("127.0.0.1", 5001);
    auto const end = [](sa const*, mbuf*, void* object) { static_cast<Ref<udp_sock>*>(object)->reset(); };
    ASSERT_EQ(udp_listen(socket.out(), &wanted, end, &socket), 0);
    DatagramReader two(5002);

    two.send(wanted, *buffer_.get(), "hello");
    two.send(wanted, *buffer_.get(), "again");
    memoryNetwork().deliver();

    EXPECT_FALSE(isInMemory(wanted));
    EXPECT_EQ(DatagramReader(5001).error, 0);
}

TEST_F(MemoryNetworkTest, SocketWithAnotherHandler_CallsThatOne)
{
    DatagramReader one(5001);
    DatagramReader two(5002);
    auto const count = [](sa const*, mbuf*, void* object) { ++*static_cast<int*>(object); };
    int received = 0;

    udp_handler_set(one.socket.get(), count, &received);
    two.send(one.address, *buffer_.get(), "hello");
    memoryNetwork().deliver();
    udp_handler_set(one.socket.get(), nullptr, nullptr);
    two.send(one.address, *buffer_.get(), "again");
    memoryNetwork().deliver();

    EXPECT_EQ(received, 1);
    EXPECT_TRUE(one.received.empty());
}

TEST_F(MemoryNetworkTest, Port_CanBeTakenOnce)
{
    DatagramReader one(5001);

    EXPECT_EQ(DatagramReader(5001).error, EADDRINUSE);
    EXPECT_TRUE(isInMemory(one.address));
    one.socket.reset();
    EXPECT_FALSE(isInMemory(one.address));
    EXPECT_EQ(DatagramReader(5001).error, 0);
}

TEST_F(MemoryNetworkTest, ChosenPorts_AreEvenAndDiffer)
{
    DatagramReader one;
    DatagramReader two;

    EXPECT_EQ(sa_port(&one.address) % 2, 0);
    EXPECT_EQ(sa_port(&two.address), sa_port(&one.address) + 2);
}

TEST_F(MemoryNetworkTest, ChosenPort_IsNotOneThatIsTaken)
{
    DatagramReader const one;
    auto const next = static_cast<std::uint16_t>(sa_port(&one.address) + 2);
    DatagramReader const taken(next);

    DatagramReader const two;

    EXPECT_EQ(two.error, 0);
    EXPECT_EQ(sa_port(&two.address), next + 2);
}

TEST_F(MemoryNetworkTest, ChosenPorts_BeginAnewBehindTheLast)
{
    std::uint16_t last = memoryNetwork().freePort();
    std::uint16_t next = memoryNetwork().freePort();
    while (next > last) {
        last = std::exchange(next, memoryNetwork().freePort());
    }

    EXPECT_EQ(last, 65534);
    EXPECT_EQ(next, 40000);
}

class DelayingNetworkTest : public MemoryNetworkTest
{
protected:
    DelayingNetworkTest()
        : MemoryNetworkTest(7)
    {}
};

TEST_F(DelayingNetworkTest, Datagrams_TakeTimeAndKeepTheirOrder)
{
    DatagramReader one(5001);
    DatagramReader two(5002);

    for (char name = 'a'; name <= 'e'; ++name) {
        one.send(two.address, *buffer_.get(), std::string(1, name));
    }
    memoryNetwork().deliver();
    auto const soon = SteadyClock::now();
    bool const arrivesLater = memoryNetwork().nextArrival() > soon && memoryNetwork().nextArrival() <= soon + 30ms;
    deliverAll();

    EXPECT_TRUE(arrivesLater);
    EXPECT_EQ(two.received,
              (std::vector<std::string>{"a from 5001", "b from 5001", "c from 5001", "d from 5001", "e from 5001"}));
}

// One end of a connection, which writes down what happens.
struct End
{
    static void established(void* object) { static_cast<End*>(object)->log += "established;"; }
    static void received(mbuf* data, void* object) { static_cast<End*>(object)->log += textOf(*data) + ";"; }
    static void closed(int error, void* object)
    {
        static_cast<End*>(object)->log += "closed " + std::to_string(error) + ";";
    }

    void connect(sa const& peer)
    {
        EXPECT_EQ(tcp_connect(connection.out(), &peer, established, received, closed, this), 0);
    }

    std::string log;
    Ref<tcp_conn> connection;
};

// Accepts everybody, or nobody.
struct Acceptor
{
    Acceptor()
    {
        sa wanted = addressOf("127.0.0.1");
        auto const called = [](sa const*, void* object) {
            auto& self = *static_cast<Acceptor*>(object);
            self.whenCalled();
            if (self.accepts) {
                EXPECT_EQ(tcp_accept(self.end.connection.out(), self.socket.get(), End::established, End::received,
                                     End::closed, &self.end),
                          0);
            } else {
                tcp_reject(self.socket.get());
            }
        };
        EXPECT_EQ(tcp_listen(socket.out(), &wanted, called, this), 0);
        EXPECT_EQ(tcp_sock_local_get(socket.get(), &address), 0);
    }

    bool accepts = true;
    std::function<void()> whenCalled = [] {};
    Ref<tcp_sock> socket;
    sa address{};
    End end;
};

TEST_F(MemoryNetworkTest, Connection_CarriesBytesBothWays)
{
    Acceptor server;
    End client;
    client.connect(server.address);
    deliverAll();
    fill(*buffer_.get(), "request");
    EXPECT_EQ(tcp_send(client.connection.get(), buffer_.get()), 0);
    fill(*buffer_.get(), "response");
    EXPECT_EQ(tcp_send(server.end.connection.get(), buffer_.get()), 0);
    deliverAll();

    EXPECT_EQ(client.log, "established;response;");
    EXPECT_EQ(server.end.log, "established;request;");
}

TEST_F(MemoryNetworkTest, Connection_KnowsItsAddresses)
{
    Acceptor server;
    End client;
    client.connect(server.address);
    deliverAll();
    sa local{};
    sa servers{};

    EXPECT_EQ(tcp_conn_local_get(client.connection.get(), &local), 0);
    EXPECT_EQ(tcp_conn_local_get(server.end.connection.get(), &servers), 0);

    EXPECT_NE(sa_port(&local), 0);
    EXPECT_NE(sa_port(&local), sa_port(&server.address));
    EXPECT_TRUE(sa_cmp(&servers, &server.address, SA_ALL));
}

TEST_F(MemoryNetworkTest, ConnectionToNobody_IsRefused)
{
    End client;
    client.connect(addressOf("127.0.0.1", 5999));
    deliverAll();

    EXPECT_EQ(client.log, "closed " + std::to_string(ECONNREFUSED) + ";");
}

TEST_F(MemoryNetworkTest, ConnectionThatIsNotAccepted_IsRefused)
{
    Acceptor server;
    server.accepts = false;
    End client;
    client.connect(server.address);
    deliverAll();

    EXPECT_EQ(client.log, "closed " + std::to_string(ECONNREFUSED) + ";");
}

TEST_F(MemoryNetworkTest, ConnectionThatIsDropped_EndsAtTheOtherSide)
{
    Acceptor server;
    End client;
    client.connect(server.address);
    deliverAll();
    server.end.connection.reset();
    deliverAll();

    fill(*buffer_.get(), "too late");
    EXPECT_EQ(tcp_send(client.connection.get(), buffer_.get()), ENOTCONN);
    EXPECT_EQ(client.log, "established;closed 0;");
}

TEST_F(MemoryNetworkTest, ConnectionThatEndsBeforeItsCallerKnowsOfIt_IsNotEstablished)
{
    Acceptor server;
    End client;
    client.connect(server.address);
    memoryNetwork().deliver();

    client.connection.reset();
    deliverAll();

    EXPECT_EQ(client.log, "");
    EXPECT_EQ(server.end.log, "established;closed 0;");
}

TEST_F(MemoryNetworkTest, CallerThatGoesWhileItIsOffered_IsNotToldOfARefusal)
{
    Acceptor server;
    End client;
    server.accepts = false;
    server.whenCalled = [&client] { client.connection.reset(); };
    client.connect(server.address);
    deliverAll();

    EXPECT_EQ(client.log, "");
}

TEST_F(MemoryNetworkTest, ConnectionThatNobodyOffers_CannotBeAccepted)
{
    Acceptor server;
    End client;
    client.connect(server.address);
    deliverAll();

    EXPECT_EQ(
        tcp_accept(client.connection.out(), server.socket.get(), End::established, End::received, End::closed, &client),
        EINVAL);
}

TEST_F(MemoryNetworkTest, Listener_IsInMemoryUntilItEnds)
{
    Acceptor server;
    EXPECT_TRUE(isInMemory(server.address));
    sa taken = server.address;
    Ref<tcp_sock> second;
    EXPECT_EQ(tcp_listen(second.out(), &taken, nullptr, nullptr), EADDRINUSE);

    server.socket.reset();

    EXPECT_FALSE(isInMemory(server.address));
}

TEST_F(MemoryNetworkTest, Liveness_OutlivesTheConnection)
{
    Acceptor server;
    End client;
    client.connect(server.address);
    auto const isAlive = livenessOf(*client.connection.get());
    EXPECT_TRUE(isAlive());
    EXPECT_TRUE(sa_cmp(&peerOf(*client.connection.get()), &server.address, SA_ALL));

    client.connection.reset();

    EXPECT_FALSE(isAlive());
}

TEST_F(MemoryNetworkTest, CallerThatHasGone_IsNotAccepted)
{
    Acceptor server;
    {
        End client;
        client.connect(server.address);
    }
    deliverAll();

    EXPECT_EQ(server.end.log, "");
}

class DatagramFaultsTest : public MemoryNetworkTest
{
protected:
    ~DatagramFaultsTest() override
    {
        for (auto const id : begun_) {
            datagramFaults().end(id);
        }
    }

    void begin(DatagramFault fault)
    {
        fault.concerns = [](Datagram const& datagram) { return !datagram.isRtp(); };
        fault.befell = [this](Datagram const& datagram) { told_.push_back(datagram.describe()); };
        fault.ended = [this] { told_.emplace_back("ended"); };
        begun_.push_back(datagramFaults().begin(std::move(fault)));
    }
    void send(std::initializer_list<char const*> texts)
    {
        for (char const* const text : texts) {
            one_.send(two_.address, *buffer_.get(), text);
        }
    }

    DatagramReader one_{5001};
    DatagramReader two_{5002};
    std::vector<std::string> told_;
    std::vector<DatagramFaults::Id> begun_;
};

TEST_F(DatagramFaultsTest, LostDatagrams_DoNotArriveAndAreToldOf)
{
    begin({.fate = DatagramFate::kLost, .count = 2});

    send({"INVITE x\r\nFrom: y", "ACK", "BYE"});
    deliverAll();

    EXPECT_EQ(two_.received, (std::vector<std::string>{"BYE from 5001"}));
    EXPECT_EQ(told_, (std::vector<std::string>{"from 127.0.0.1:5001 to 127.0.0.1:5002 (INVITE x)",
                                               "from 127.0.0.1:5001 to 127.0.0.1:5002 (ACK)", "ended"}));
    EXPECT_TRUE(datagramFaults().isEmpty());
}

TEST_F(DatagramFaultsTest, RtpAndOtherDatagrams_AreToldApart)
{
    begin({.fate = DatagramFate::kLost});

    send({"\x80\x08", "\xbf", "OK", "\x7f", "\xc0"});
    deliverAll();

    EXPECT_EQ(two_.received, (std::vector<std::string>{"\x80\x08 from 5001", "\xbf from 5001"}));
    EXPECT_EQ((Datagram{"a", "b", "\x80"}).describe(), "from a to b (RTP)");
    EXPECT_EQ((Datagram{"a", "b", "\x80\xc8"}).describe(), "from a to b (RTCP)");
    EXPECT_FALSE((Datagram{"a", "b", ""}).isRtp());
    EXPECT_FALSE((Datagram{"a", "b", "\x81\xc9"}).isRtp());
    EXPECT_TRUE((Datagram{"a", "b", "\x81\xc9"}).isMedia());
    EXPECT_TRUE((Datagram{"a", "b", "\x80\xbf"}).isRtp());
    EXPECT_FALSE((Datagram{"a", "b", "\x80\xc0"}).isRtp());
    EXPECT_FALSE((Datagram{"a", "b", "\x80\xdf"}).isRtp());
    EXPECT_TRUE((Datagram{"a", "b", "\x80\xe0"}).isRtp());
    EXPECT_EQ((Datagram{"a", "b", "BYE sip:x SIP/2.0\r\nVia: y"}).describe(), "from a to b (BYE sip:x SIP/2.0)");
}

TEST_F(DatagramFaultsTest, DoubledDatagram_ComesTwice)
{
    begin({.fate = DatagramFate::kDoubled, .count = 1});

    send({"1", "2"});
    deliverAll();

    EXPECT_EQ(two_.received, (std::vector<std::string>{"1 from 5001", "1 from 5001", "2 from 5001"}));
}

TEST_F(DatagramFaultsTest, LateDatagram_ComesAfterItsDelayAndHoldsNobodyUp)
{
    begin({.fate = DatagramFate::kLate, .count = 1, .delay = 40ms});

    send({"1", "2"});
    memoryNetwork().deliver();
    EXPECT_EQ(two_.received, (std::vector<std::string>{"2 from 5001"}));
    EXPECT_EQ(memoryNetwork().nextArrival() - SteadyClock::now(), 40ms);
    deliverAll();

    EXPECT_EQ(two_.received, (std::vector<std::string>{"2 from 5001", "1 from 5001"}));
}

TEST_F(DatagramFaultsTest, OvertakenDatagram_ComesAfterTheNextOneToTheSameReceiver)
{
    DatagramReader three(5003);
    begin({.fate = DatagramFate::kOvertaken, .count = 1});

    send({"1"});
    one_.send(three.address, *buffer_.get(), "other");
    send({"2", "3"});
    deliverAll();

    EXPECT_EQ(three.received, (std::vector<std::string>{"other from 5001"}));
    EXPECT_EQ(two_.received, (std::vector<std::string>{"2 from 5001", "1 from 5001", "3 from 5001"}));
}

TEST_F(DatagramFaultsTest, OvertakenDatagram_WithNoneBehindItComesAfterASecond)
{
    begin({.fate = DatagramFate::kOvertaken, .count = 1});

    send({"1"});
    EXPECT_EQ(memoryNetwork().nextArrival() - SteadyClock::now(), 1s);
    deliverAll();
    memoryNetwork().deliver();
    EXPECT_EQ(two_.received, (std::vector<std::string>{"1 from 5001"}));
    send({"2"});
    deliverAll();

    EXPECT_EQ(two_.received, (std::vector<std::string>{"1 from 5001", "2 from 5001"}));
}

TEST_F(DatagramFaultsTest, OneFault_BefallsADatagram)
{
    begin({.fate = DatagramFate::kDoubled, .count = 1});
    begin({.fate = DatagramFate::kLost, .count = 1});

    send({"1", "2", "3"});
    deliverAll();

    EXPECT_EQ(two_.received, (std::vector<std::string>{"1 from 5001", "1 from 5001", "3 from 5001"}));
}

TEST_F(DatagramFaultsTest, PercentOfLoss_IsDrawn)
{
    begin({.fate = DatagramFate::kLost, .percent = 20});

    for (int i = 0; i < 1000; ++i) {
        send({"1"});
    }
    deliverAll();

    EXPECT_GT(two_.received.size(), 750U);
    EXPECT_LT(two_.received.size(), 850U);
}

}  // namespace
}  // namespace telephone::sip

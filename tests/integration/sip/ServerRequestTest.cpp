// Requests of a bare stack to a name with two servers, which answer what a test says.
#include "telephone/sip/ServerRequest.h"

#include <cerrno>
#include <mutex>

#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"
#include "tests/helpers/DnsTable.h"
#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

using Texts = std::vector<std::string>;

// A server that takes connections and never answers.
class SilentTcpServer
{
public:
    explicit SilentTcpServer(sip::EventLoop& loop)
        : loop_(loop)
    {
        std::lock_guard const guard(loop_);
        sa_set_str(&local_, "127.0.0.1", 0);
        EXPECT_EQ(0, tcp_listen(listener_.out(), &local_, sip::handlerOf<&SilentTcpServer::onCall>, this));
        EXPECT_EQ(0, tcp_sock_local_get(listener_.get(), &local_));
    }
    ~SilentTcpServer()
    {
        std::lock_guard const guard(loop_);
        connection_.reset();
        listener_.reset();
    }

    sa const& address() const { return local_; }
    // Whether a request comes within a second; it counts once.
    bool isAsked()
    {
        auto const take = [this] {
            std::lock_guard const guard(loop_);
            return std::exchange(asked_, false);
        };
        return eventually(take, 1s);
    }

private:
    void onCall(sa const*)
    {
        EXPECT_EQ(0, tcp_accept(
                         connection_.out(), listener_.get(), [](void*) {}, sip::handlerOf<&SilentTcpServer::onReceived>,
                         [](int, void*) {}, this));
    }
    void onReceived(mbuf*) { asked_ = true; }

    sip::EventLoop& loop_;
    sip::Ref<tcp_sock> listener_;
    sip::Ref<tcp_conn> connection_;
    sa local_{};
    bool asked_ = false;
};

class ServerRequests : public SipTest
{
protected:
    ServerRequests()
    {
        std::lock_guard const guard(loop);
        open(stack);
        serve("udp", portOf(first), portOf(second));
        dns.address("server.test", "127.0.0.1");
        servers = std::make_unique<sip::Servers>(
            loop, std::shared_ptr<sip::Dns>(&dns, [](sip::Dns*) {}), settings,
            [this](sip::LogLevel, std::string const& line) {
                auto const after = std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin);
                log += std::to_string(after.count()) + " ms: " + line + "\n";
            });
        sip::setServers(stack.get(), servers.get());
    }
    ~ServerRequests() override
    {
        std::lock_guard const guard(loop);
        mem_deref(request);
        sip::setServers(stack.get(), nullptr);
        sip_close(stack.get(), true);
        stack.reset();
    }

    static void open(sip::Ref<::sip>& made)
    {
        EXPECT_EQ(0, sip_alloc(made.out(), nullptr, 16, 16, 16, "test", nullptr, nullptr));
        sa local{};
        sa_set_str(&local, "127.0.0.1", 0);
        EXPECT_EQ(0, sip_transp_add(made.get(), SIP_TRANSP_UDP, &local));
        EXPECT_EQ(0, sip_transp_add(made.get(), SIP_TRANSP_TCP, &local));
    }
    static sa addressOf(ScriptedEnd const& end)
    {
        sa address{};
        std::string const text = end.hostPort();
        EXPECT_EQ(0, sa_decode(&address, text.data(), text.size()));
        return address;
    }
    static std::uint16_t portOf(ScriptedEnd const& end)
    {
        sa const address = addressOf(end);
        return sa_port(&address);
    }

    // The servers of pbx.test over that transport, in their order.
    void serve(std::string const& transport, std::uint16_t preferred, std::uint16_t other)
    {
        dns.service("_sip._" + transport + ".pbx.test", 10, 0, preferred, "server.test", 3600);
        dns.service("_sip._" + transport + ".pbx.test", 20, 0, other, "server.test", 3600);
    }

    int send(std::string const& method = "MESSAGE", std::string const& transport = "udp", bool stateful = true)
    {
        std::lock_guard const guard(loop);
        mem_deref(request);
        std::string const parameters = ";transport=" + transport;
        uri route{};
        route.scheme = sip::slice("sip");
        route.host = sip::slice("pbx.test");
        route.params = sip::slice(parameters);
        std::string const number = std::to_string(++sent);
        sip::Ref<mbuf> message;
        EXPECT_TRUE(sip::fill(message, "Max-Forwards: 70\r\nFrom: <sip:1@a.test>;tag=1\r\nTo: <sip:2@pbx.test>\r\n"
                                       "Call-ID: " +
                                           number + "\r\nCSeq: 1 " + method + "\r\nContent-Length: 0\r\n\r\n"));
        begin = SteadyClock::now();
        log.clear();
        answers.clear();
        return sip_request(stateful ? &request : nullptr, stack.get(), stateful, method.c_str(), -1, "sip:pbx.test", -1,
                           &route, message.get(), 0, nullptr, sip::handlerOf<&ServerRequests::onAnswer>, this);
    }
    void onAnswer(int error, sip_msg const* message)
    {
        answers.push_back(error ? sip::errorText(error) : std::to_string(message->scode));
        if (whenAnswered) {
            std::exchange(whenAnswered, nullptr)();
        }
    }
    void cancel()
    {
        std::lock_guard const guard(loop);
        sip_request_cancel(request);
    }
    // What the sender of the request was told, once it has been told so much.
    Texts heard(std::size_t count)
    {
        auto const hasHeard = [&] {
            std::lock_guard const guard(loop);
            return answers.size() >= count;
        };
        eventually(hasHeard);
        std::lock_guard const guard(loop);
        return answers;
    }
    std::string logged()
    {
        std::lock_guard const guard(loop);
        return log;
    }
    bool isOver()
    {
        std::lock_guard const guard(loop);
        return request == nullptr;
    }
    std::string placeOf(ScriptedEnd const& end) const { return "udp " + end.hostPort(); }

    ScriptedEnd first{loop};
    ScriptedEnd second{loop};
    DnsTable dns;
    sip::ServerSearch::Settings settings{{sip::Transport::kUdp, sip::Transport::kTcp},
                                         {sip::AddressFamily::kIpv6, sip::AddressFamily::kIpv4},
                                         [](std::uint32_t) { return 0U; }};
    std::unique_ptr<sip::Servers> servers;
    sip::Ref<::sip> stack;
    struct sip_request* request = nullptr;
    Texts answers;
    std::function<void()> whenAnswered;
    std::string log;  // with the time since the request was sent
    SteadyClock::time_point begin;
    int sent = 0;
};

}  // namespace

TEST_F(ServerRequests, SilentServer_GivesWayAfter3800Milliseconds)
{
    if (!isTimeOfTestsVirtual()) {
        GTEST_SKIP() << "a millisecond counts";
    }
    ASSERT_EQ(0, send());

    std::string const atSecond = second.receive("MESSAGE");

    EXPECT_EQ("3800 ms: MESSAGE to pbx.test: " + placeOf(first) + ": does not answer; " + placeOf(second) +
                  " is next\n",
              logged().substr(logged().find('\n') + 1));
    second.answer(atSecond, "200 OK");
    EXPECT_EQ(Texts{"200"}, heard(1));
    EXPECT_TRUE(isOver());
}

TEST_F(ServerRequests, ServerThatIsTrying_HasAllTheTimeItNeeds)
{
    ASSERT_EQ(0, send());

    first.answer(first.receive("MESSAGE"), "100 Trying");

    EXPECT_TRUE(second.hearsNothingOf("", 20s));
    EXPECT_EQ(Texts{"100"}, heard(1));
    EXPECT_FALSE(isOver());
}

TEST_F(ServerRequests, UnavailableServerThatWasOnlyTrying_GivesWay)
{
    ASSERT_EQ(0, send("INVITE"));
    std::string const invite = first.receive("INVITE");
    first.answer(invite, "100 Trying");

    first.answer(invite, "503 Service Unavailable");

    second.answer(second.receive("INVITE"), "486 Busy Here");
    EXPECT_EQ((Texts{"100", "486"}), heard(2));
}

TEST_F(ServerRequests, UnavailableServerThatHasRungSomebody_HasTheLastWord)
{
    for (char const* progress : {"101 Dialog Establishment", "180 Ringing"}) {
        ASSERT_EQ(0, send("INVITE"));
        std::string const invite = first.receive("INVITE");
        first.answer(invite, progress);

        first.answer(invite, "503 Service Unavailable");

        EXPECT_EQ((Texts{std::string(progress, 3), "503"}), heard(2));
        EXPECT_TRUE(second.hearsNothingOf("", 10s));
        EXPECT_TRUE(isOver());
        // So that the first is not asked last.
        sleepFor(sip::kFailedServerRests);
    }
}

TEST_F(ServerRequests, SenderThatAsksAgainFromWithinTheAnswer_KeepsItsNewRequest)
{
    whenAnswered = [this] { EXPECT_EQ(0, send()); };
    ASSERT_EQ(0, send());
    first.answer(first.receive("MESSAGE"), "500 Server Internal Error");

    std::string const again = first.receive("MESSAGE");
    EXPECT_FALSE(isOver());

    first.answer(again, "200 OK");
    EXPECT_EQ(Texts{"200"}, heard(1));
    EXPECT_TRUE(isOver());
}

TEST_F(ServerRequests, RefusalOfAnotherKind_IsTheAnswer)
{
    for (char const* status : {"500 Server Internal Error", "504 Server Time-out", "404 Not Found"}) {
        ASSERT_EQ(0, send());
        first.answer(first.receive("MESSAGE"), status);

        EXPECT_EQ(Texts{std::string(status, 3)}, heard(1));
        EXPECT_TRUE(second.hearsNothingOf("", 5s)) << status;
    }
}

TEST_F(ServerRequests, LastServer_MayBeSilentForAsLongAsAnyOther)
{
    ASSERT_EQ(0, send());

    EXPECT_NE("", second.receive("MESSAGE"));
    sleepFor(31s);
    EXPECT_EQ(Texts(), heard(0));
    sleepFor(2s);

    EXPECT_EQ(Texts{"Connection timed out"}, heard(1));
    EXPECT_TRUE(isOver());
}

TEST_F(ServerRequests, ServerThatFailed_IsAskedLastByTheNextRequest)
{
    ASSERT_EQ(0, send());
    first.answer(first.receive("MESSAGE"), "503 Service Unavailable");
    second.answer(second.receive("MESSAGE"), "200 OK");
    ASSERT_EQ(Texts{"200"}, heard(1));

    ASSERT_EQ(0, send());
    second.answer(second.receive("MESSAGE"), "503 Service Unavailable");

    first.answer(first.receive("MESSAGE"), "200 OK");
    EXPECT_EQ(Texts{"200"}, heard(1));
}

TEST_F(ServerRequests, ServerThatCannotBeReached_IsPassedOverAndAskedLast)
{
    dns.address("unreachable.test", "2001:db8::1");
    dns.forget("_sip._udp.pbx.test");
    dns.service("_sip._udp.pbx.test", 10, 0, 5060, "unreachable.test", 3600);
    dns.service("_sip._udp.pbx.test", 20, 0, portOf(second), "server.test", 3600);

    ASSERT_EQ(0, send());
    second.answer(second.receive("MESSAGE"), "200 OK");
    ASSERT_EQ(Texts{"200"}, heard(1));
    EXPECT_NE(std::string::npos,
              logged().find("0 ms: pbx.test: udp [2001:db8::1]:5060 cannot be reached: Protocol not supported\n"))
        << logged();

    ASSERT_EQ(0, send());
    EXPECT_NE("", second.receive("MESSAGE", 100ms));
    EXPECT_EQ("", logged());
}

TEST_F(ServerRequests, WithoutAReachableServer_FailAtOnce)
{
    dns.forget("_sip._udp.pbx.test");
    dns.forget("server.test");
    dns.address("pbx.test", "2001:db8::1");

    for (bool const stateful : {true, false}) {
        EXPECT_EQ(EPROTONOSUPPORT, send("MESSAGE", "udp", stateful));
        EXPECT_TRUE(isOver());
        EXPECT_EQ(Texts(), heard(0)) << "whoever sends has been told by the result";
    }
}

TEST_F(ServerRequests, WithoutATransaction_EndWhenTheyAreSent)
{
    ASSERT_EQ(0, send("ACK", "udp", false));

    EXPECT_NE("", first.receive("ACK"));
    EXPECT_TRUE(second.hearsNothingOf("", 10s));
    EXPECT_EQ(Texts(), heard(0));
}

TEST_F(ServerRequests, CancelledDuringTheSearch_EndAndAreNeverSent)
{
    dns.fallSilent();
    ASSERT_EQ(0, send("INVITE"));

    cancel();

    EXPECT_EQ(Texts{"Operation canceled"}, heard(1));
    EXPECT_TRUE(isOver());
    EXPECT_TRUE(first.hearsNothingOf("", 10s));
    EXPECT_EQ(Texts{"Operation canceled"}, heard(1));
}

TEST_F(ServerRequests, CancelledWhileAServerRings_EndWithItsAnswer)
{
    ASSERT_EQ(0, send("INVITE"));
    std::string const invite = first.receive("INVITE");
    first.answer(invite, "180 Ringing");
    ASSERT_EQ(Texts{"180"}, heard(1));

    cancel();

    first.answer(first.receive("CANCEL"), "200 OK");
    first.answer(invite, "487 Request Terminated");
    EXPECT_EQ((Texts{"180", "487"}), heard(2));
    EXPECT_TRUE(isOver());
}

TEST_F(ServerRequests, CancelledBeforeAnyAnswer_GoNoFurtherAndCountAgainstNobody)
{
    ASSERT_EQ(0, send("INVITE"));
    ASSERT_NE("", first.receive("INVITE"));

    cancel();

    EXPECT_TRUE(second.hearsNothingOf("", 40s));
    EXPECT_EQ(Texts{"Connection timed out"}, heard(1));
    ASSERT_EQ(0, send());
    EXPECT_NE("", first.receive("MESSAGE", 100ms));
}

TEST_F(ServerRequests, ThatTheirHolderDrops_GoNoFurther)
{
    ASSERT_EQ(0, send());
    ASSERT_NE("", first.receive("MESSAGE"));
    {
        std::lock_guard const guard(loop);
        mem_deref(request);
        EXPECT_EQ(nullptr, request) << "the pointer is kept up to date";
    }

    EXPECT_TRUE(second.hearsNothingOf("", 40s));
    EXPECT_EQ(Texts(), heard(0));
}

TEST_F(ServerRequests, DuringASearch_EndWithTheServersOfTheirStack)
{
    sip::Ref<::sip> other;
    {
        std::lock_guard const guard(loop);
        open(other);
        sip::setServers(other.get(), servers.get());
    }
    dns.fallSilent();
    ASSERT_EQ(0, send());

    std::lock_guard const guard(loop);
    sip::setServers(other.get(), nullptr);
    EXPECT_EQ(Texts(), answers);
    EXPECT_NE(nullptr, request);
    sip::setServers(stack.get(), nullptr);
    EXPECT_EQ(Texts{"Software caused connection abort"}, answers);
    EXPECT_EQ(nullptr, request);
    sip_close(other.get(), true);
}

TEST_F(ServerRequests, UnderWayWhenTheServersGo_EndWithTheServerThatHasThem)
{
    ASSERT_EQ(0, send());
    std::string const asked = first.receive("MESSAGE");
    {
        std::lock_guard const guard(loop);
        sip::setServers(stack.get(), nullptr);
        uri later{};
        later.scheme = sip::slice("sip");
        later.host = sip::slice("pbx.test");
        EXPECT_EQ(sip::destinationOf(stack.get(), later), std::nullopt) << "none follows";
    }
    EXPECT_FALSE(isOver());

    first.answer(asked, "503 Service Unavailable");

    EXPECT_EQ(Texts{"503"}, heard(1));
    EXPECT_TRUE(second.hearsNothingOf("", 5s));
}

TEST_F(ServerRequests, ToAStackWithoutServersOrToAnAddress_HaveNoDestination)
{
    auto const destination = [](::sip const* of, std::string const& text) {
        uri decoded{};
        pl const written = sip::slice(text);
        EXPECT_EQ(0, uri_decode(&decoded, &written));
        return sip::destinationOf(of, decoded);
    };
    std::lock_guard const guard(loop);

    EXPECT_EQ(destination(stack.get(), "sip:PBX.test"), (sip::Destination{"pbx.test"}));
    EXPECT_EQ(destination(stack.get(), "sip:a@b.test:5070;transport=TCP;lr"),
              (sip::Destination{"b.test", 5070, sip::Transport::kTcp}));
    EXPECT_EQ(destination(stack.get(), "sip:127.0.0.1;maddr=c.test"), (sip::Destination{"c.test"}));
    EXPECT_EQ(destination(stack.get(), "sip:127.0.0.1"), std::nullopt);
    EXPECT_EQ(destination(stack.get(), "sip:pbx.test;maddr=127.0.0.1"), std::nullopt);
    EXPECT_EQ(destination(stack.get(), "tel:pbx.test"), std::nullopt);
    EXPECT_EQ(destination(nullptr, "sip:pbx.test"), std::nullopt);
}

// --- connections that end

class ConnectedRequests : public ServerRequests
{
protected:
    ConnectedRequests() { serve("tcp", sa_port(&preferred.address()), sa_port(&other.address())); }

    void end(sa const& peer, ::sip const* of)
    {
        std::lock_guard const guard(loop);
        sip::noteConnectionEnded(of, sip::SocketAddress(peer));
    }
    void end(sa const& peer) { end(peer, stack.get()); }

    SilentTcpServer preferred{loop};
    SilentTcpServer other{loop};
};

TEST_F(ConnectedRequests, WhoseConnectionEnds_GoToTheNextServerAtOnce)
{
    ASSERT_EQ(0, send("MESSAGE", "tcp"));
    ASSERT_TRUE(preferred.isAsked());

    end(preferred.address());

    EXPECT_TRUE(other.isAsked());
    EXPECT_NE(std::string::npos,
              logged().find(" ms: MESSAGE to pbx.test: tcp " + sip::addressText(preferred.address()) +
                            ": ended the connection before it answered; tcp " + sip::addressText(other.address()) +
                            " is next\n"))
        << logged();
    EXPECT_EQ(Texts(), heard(0));

    end(other.address());
    EXPECT_EQ(Texts{"Connection reset by peer"}, heard(1));
    EXPECT_TRUE(isOver());
}

TEST_F(ConnectedRequests, OfAnotherStackOrToAnotherServer_StayWhereTheyAre)
{
    ASSERT_EQ(0, send("MESSAGE", "tcp"));
    ASSERT_TRUE(preferred.isAsked());

    end(other.address());
    end(preferred.address(), nullptr);

    EXPECT_FALSE(other.isAsked());
    EXPECT_EQ(Texts(), heard(0));
}

TEST_F(ConnectedRequests, ThatAreCancelled_GoNoFurther)
{
    ASSERT_EQ(0, send("INVITE", "tcp"));
    ASSERT_TRUE(preferred.isAsked());
    cancel();

    end(preferred.address());

    EXPECT_FALSE(other.isAsked());
    EXPECT_EQ(Texts(), heard(0));
}

TEST_F(ConnectedRequests, WithoutAConnection_DoNotNoticeItsEnd)
{
    ASSERT_EQ(0, send("MESSAGE", "udp"));
    ASSERT_NE("", first.receive("MESSAGE"));

    end(addressOf(first));

    EXPECT_TRUE(second.hearsNothingOf("MESSAGE", 1s));
}

TEST_F(ConnectedRequests, DuringTheSearch_DoNotNoticeTheEndOfAnyConnection)
{
    dns.fallSilent();
    ASSERT_EQ(0, send("MESSAGE", "tcp"));

    end(preferred.address());

    EXPECT_EQ(Texts(), heard(0));
    EXPECT_FALSE(isOver());
}

}  // namespace telephone::test

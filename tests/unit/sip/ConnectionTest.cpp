// The TCP connection to a registrar that the test plays byte by byte: its end, keep-alives, the pauses between
// attempts, and what the registrar's answers say about later requests.
#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Stack.h"
#include "telephone/sip/UserAgent.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;
using Milliseconds = std::chrono::milliseconds;

struct ReceivedRequest
{
    std::string text;
    Milliseconds time;
    int connection;  // from 1
};

// Takes one connection at a time.
class TcpRegistrar
{
public:
    TcpRegistrar()
    {
        sa local{};
        sa_set_str(&local, "127.0.0.1", 5070);
        EXPECT_EQ(tcp_listen(listener_.out(), &local, handlerOf<&TcpRegistrar::onCall>, this), 0);
    }

    void drop() { connection_.reset(); }
    std::vector<Milliseconds> pauses() const
    {
        std::vector<Milliseconds> pauses;
        for (std::size_t i = 1; i < requests.size(); ++i) {
            pauses.push_back(requests[i].time - requests[i - 1].time);
        }
        return pauses;
    }

    std::vector<ReceivedRequest> requests;
    std::vector<Milliseconds> keepAlives;
    bool answersKeepAlives = true;
    bool dropsAfterAnswer = false;
    std::string status = "200 OK";
    std::string headers;  // of each answer
    int connections = 0;

private:
    static Milliseconds now()
    {
        return std::chrono::duration_cast<Milliseconds>(SteadyClock::now().time_since_epoch());
    }

    void onCall(sa const& /*peer*/)
    {
        ++connections;
        EXPECT_EQ(tcp_accept(connection_.out(), listener_.get(), handlerOf<&TcpRegistrar::onEstablished>,
                             handlerOf<&TcpRegistrar::onReceived>, handlerOf<&TcpRegistrar::onClosed>, this),
                  0);
    }
    void onEstablished() {}
    void onClosed(int /*error*/) { drop(); }
    void onReceived(mbuf& bytes)
    {
        std::string const text = remainingText(&bytes);
        if (text == "\r\n\r\n") {
            keepAlives.push_back(now());
            send(answersKeepAlives ? "\r\n" : "");
            return;
        }
        requests.push_back({text, now(), connections});
        send(answerTo(text));
        if (dropsAfterAnswer) {
            drop();
        }
    }
    std::string answerTo(std::string const& request) const
    {
        std::string answer = "SIP/2.0 " + status + "\r\n";
        for (char const* const name : {"Via: ", "From: ", "To: ", "Call-ID: ", "CSeq: ", "Contact: "}) {
            auto const begin = request.find(std::string("\r\n") + name) + 2;
            answer += request.substr(begin, request.find("\r\n", begin) - begin) +
                      (name == std::string("To: ") ? ";tag=far\r\n" : "\r\n");
        }
        return answer + headers + "Content-Length: 0\r\n\r\n";
    }
    void send(std::string const& text)
    {
        Ref<mbuf> bytes;
        if (!text.empty() && fill(bytes, text)) {
            EXPECT_EQ(tcp_send(connection_.get(), bytes.get()), 0);
        }
    }

    Ref<tcp_sock> listener_;
    Ref<tcp_conn> connection_;
};

class ConnectionTest : public ::testing::Test, public UserAgentObserver, public RegistrationObserver
{
protected:
    ConnectionTest()
    {
        loop_.start();
        std::lock_guard const guard(loop_);
        registrar_.emplace();
        UserAgentConfig config;
        config.instance = "urn:uuid:f81d4fae-7dec-41d0-a765-00a0c91e6bf6";
        phone_.emplace(loop_, config, *this);
        account_.user = "4711";
        account_.domain = "pbx.example";
        account_.registrar = "sip:127.0.0.1:5070";
        account_.transport = Transport::kTcp;
    }
    ~ConnectionTest() override
    {
        {
            std::lock_guard const guard(loop_);
            registration_.reset();
        }
        phone_.reset();
        std::lock_guard const guard(loop_);
        registrar_.reset();
    }

    void start() { registration_ = phone_->registerAccount(account_, *this); }
    template <typename Change>
    void withRegistrar(Change const& change)
    {
        std::lock_guard const guard(loop_);
        change(*registrar_);
    }

    void onRegistered(Registration&, unsigned) override { ++registered_; }
    void onRegistrationFailed(Registration&, int status, std::string const& reason) override
    {
        failure_ = std::to_string(status) + " " + reason;
    }

    VirtualTime const time_{{}};
    EventLoop loop_;
    std::optional<TcpRegistrar> registrar_;
    std::optional<UserAgent> phone_;
    Account account_;
    std::unique_ptr<Registration> registration_;
    int registered_ = 0;
    std::string failure_;
};

TEST_F(ConnectionTest, RegistrationNamesTheDevice)
{
    start();
    sleepFor(1s);

    ASSERT_EQ(registrar_->requests.size(), 1U);
    EXPECT_NE(registrar_->requests[0].text.find(
                  ";transport=tcp>;expires=3600;+sip.instance=\"<urn:uuid:f81d4fae-7dec-41d0-a765-00a0c91e6bf6>\"\r\n"),
              std::string::npos)
        << registrar_->requests[0].text;
    EXPECT_EQ(registered_, 1);
}

TEST_F(ConnectionTest, ConnectionThatEnds_IsReplacedAtOnceAndUsedToRegister)
{
    start();
    sleepFor(60s);
    withRegistrar([](TcpRegistrar& registrar) { registrar.drop(); });
    sleepFor(100ms);

    ASSERT_EQ(registrar_->requests.size(), 2U);
    EXPECT_EQ(registrar_->requests[1].connection, 2);
    EXPECT_EQ(registered_, 2);
    EXPECT_EQ(failure_, "");
}

TEST_F(ConnectionTest, ConnectionThatEndsAgainAndAgain_IsReplacedAfterGrowingPauses)
{
    registrar_->dropsAfterAnswer = true;
    start();
    sleepFor(10min);

    auto const pauses = registrar_->pauses();
    ASSERT_GE(pauses.size(), 8U);
    Milliseconds limit = 2s;
    for (auto const pause : pauses) {
        EXPECT_GE(pause, limit / 2);
        EXPECT_LE(pause, limit + 10ms);
        limit = std::min<Milliseconds>(limit * 2, 60s);
    }
}

TEST_F(ConnectionTest, RegistrarThatIsGone_IsTriedAfterGrowingPausesUntilItIsBack)
{
    start();
    sleepFor(60s);
    withRegistrar([this](TcpRegistrar&) { registrar_.reset(); });
    sleepFor(10s);
    EXPECT_EQ(failure_, "503 Connection refused");
    withRegistrar([this](auto&) { registrar_.emplace(); });
    sleepFor(30s);

    EXPECT_EQ(registrar_->requests.size(), 1U);
    EXPECT_EQ(registered_, 2);
}

TEST_F(ConnectionTest, ServerThatNeverAnswersKeepAlives_KeepsItsConnection)
{
    registrar_->answersKeepAlives = false;
    start();
    sleepFor(4h);

    EXPECT_EQ(registrar_->connections, 1);
    EXPECT_GE(registrar_->keepAlives.size(), 120U);
    // The stack would end a connection on which nothing came for 900 seconds.
    auto const pauses = registrar_->pauses();
    ASSERT_FALSE(pauses.empty());
    EXPECT_EQ(*std::ranges::max_element(pauses), 840s);
}

TEST_F(ConnectionTest, KeepAlives_ComeWithinTheirTimeAndNotTogether)
{
    start();
    sleepFor(10min);

    auto const& times = registrar_->keepAlives;
    ASSERT_GE(times.size(), 5U);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 96s);
        EXPECT_LE(times[i] - times[i - 1], 120s);
    }
    EXPECT_NE(times[1] - times[0], times[2] - times[1]);
}

TEST_F(ConnectionTest, FlowTimerOfTheServer_IsKept)
{
    registrar_->headers = "Flow-Timer: 30\r\n";
    start();
    sleepFor(10min);

    EXPECT_GE(registrar_->keepAlives.size(), 20U);
}

TEST_F(ConnectionTest, KeepAliveOfZero_SendsNone)
{
    account_.keepAlive = 0s;
    start();
    sleepFor(1h);

    EXPECT_TRUE(registrar_->keepAlives.empty());
    EXPECT_EQ(registrar_->connections, 1);
}

TEST_F(ConnectionTest, RetryAfter_IsObeyed)
{
    registrar_->status = "503 Service Unavailable";
    registrar_->headers = "Retry-After: 17 (maintenance)\r\n";
    start();
    sleepFor(40s);

    EXPECT_EQ(registrar_->pauses(), (std::vector<Milliseconds>{17s, 17s}));
    EXPECT_EQ(failure_, "503 Service Unavailable");
}

TEST_F(ConnectionTest, ServiceRoute_IsTakenByLaterRequests)
{
    registrar_->headers = "Service-Route: <sip:127.0.0.1:5070;lr>, <sip:core.example;lr;x=1>\r\n";
    start();
    sleepFor(1s);
    auto const sent = phone_->request(account_, "MESSAGE", "sip:100@pbx.example", {}, {"text/plain", "hello"}, {});
    sleepFor(1s);

    ASSERT_TRUE(sent) << sent.error().reason;
    ASSERT_EQ(registrar_->requests.size(), 2U);
    EXPECT_EQ(registrar_->requests[0].text.find("\r\nRoute:"), std::string::npos);
    std::string const& message = registrar_->requests[1].text;
    EXPECT_TRUE(message.starts_with("MESSAGE sip:100@pbx.example;transport=tcp SIP/2.0\r\n")) << message;
    EXPECT_NE(message.find("\r\nRoute: <sip:127.0.0.1:5070;transport=tcp;lr>\r\nRoute: <sip:core.example;x=1;lr>\r\n"),
              std::string::npos)
        << message;
}

TEST_F(ConnectionTest, ServiceRouteThatIsNotRepeated_IsForgotten)
{
    account_.expires = 20;
    registrar_->headers = "Service-Route: <sip:127.0.0.1:5070;lr>\r\n";
    start();
    sleepFor(1s);
    withRegistrar([](TcpRegistrar& registrar) { registrar.headers.clear(); });
    sleepFor(30s);

    auto const sent = phone_->request(account_, "MESSAGE", "sip:100@pbx.example", {}, {}, {});

    ASSERT_FALSE(sent);
    EXPECT_EQ(sent.error().reason, "in virtual time names are not looked up: \"pbx.example\" must be an IP address");
}

}  // namespace
}  // namespace telephone::sip

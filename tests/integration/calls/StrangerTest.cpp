// What somebody on the network may do to a telephone, who is neither its call server nor knows a password of it.
#include <map>
#include <mutex>

#include "ExchangePhones.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

namespace {

// Sends single requests to a telephone, and counts what comes to it.
class Stranger final : private sip::UserAgentObserver
{
public:
    explicit Stranger(std::string const& password = {})
        : agent_(eventLoop(), configuration(), *this)
    {
        account_.user = "mallory";
        account_.domain = agent_.hostPort();
        account_.password = password;
    }

    // The response; status 0: none.
    sip::Response ask(std::string const& method, std::string const& target, sip::Headers headers,
                      sip::Content const& content = {})
    {
        sip::Response response;
        headers.add("Contact", "<sip:mallory@" + contact + ">");
        bool answered = false;
        EXPECT_TRUE(agent_.request(account_, method, target, headers, content, [&](sip::Response const& received) {
            response = received;
            answered = true;
        }));
        EXPECT_TRUE(eventually([&answered] {
            std::lock_guard const guard(eventLoop());
            return answered;
        }));
        return response;
    }

    // Sends a request and counts its answer, whenever it comes.
    void send(std::string const& method, std::string const& target, sip::Headers const& headers = {})
    {
        EXPECT_TRUE(agent_.request(account_, method, target, headers, {},
                                   [this](sip::Response const& response) { ++answers_[response.status]; }));
    }
    int watch(std::string const& target) { return ask("SUBSCRIBE", target, {{"Event", "dialog"}}).status; }
    int call(std::string const& target, sip::Headers const& headers = {})
    {
        return ask("INVITE", target, headers,
                   {"application/sdp", "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
                                       "m=audio 40000 RTP/AVP 0\r\na=rtpmap:0 PCMU/8000\r\n"})
            .status;
    }
    int setMessages(std::string const& target)
    {
        return ask("NOTIFY", target, {{"Event", "message-summary"}, {"Subscription-State", "active"}},
                   {"application/simple-message-summary", "Messages-Waiting: yes\r\nVoice-Message: 7/0 (0/0)\r\n"})
            .status;
    }
    int control(std::string const& target)
    {
        return ask("INFO", target, {}, {"application/csta+xml", "<MakeCall/>"}).status;
    }

    sip::UserAgent& agent() { return agent_; }

    int notices() const
    {
        std::lock_guard const guard(eventLoop());
        return notices_;
    }
    // How many requests that were sent were answered so.
    int answers(int status)
    {
        std::lock_guard const guard(eventLoop());
        return answers_[status];
    }

    std::string contact = "127.0.0.1:9";

private:
    sip::UserAgentConfig configuration()
    {
        sip::UserAgentConfig config;
        config.traceMessages = [] { return true; };
        config.log = [this](sip::LogLevel, std::string const& text) {
            notices_ += text.starts_with("received from") && text.find("\nNOTIFY ") != std::string::npos ? 1 : 0;
        };
        return config;
    }

    int notices_ = 0;
    std::map<int, int> answers_;  // by status
    sip::UserAgent agent_;
    sip::Account account_;
};

EnginePhone::Options withPermission(std::string const& line, sip::RequestKind kind, sip::Sender sender)
{
    auto options = EnginePhone::optionsOf(line);
    options.engine.permissions.set(kind, sender);
    return options;
}

// Two telephones without a call server, in a call: 1 at alice, 1001 at bob.
class StrangerAtACall : public ::testing::Test
{
protected:
    EnginePhone alice_{EnginePhone::optionsOf("4711")};
    EnginePhone bob_{EnginePhone::optionsOf("4722")};
    Stranger stranger_;
    Stranger peer_{"secret"};

    void SetUp() override
    {
        ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, bob_.uri()));
        ASSERT_TRUE(eventually([this] { return bob_.alerts(); }));
        ASSERT_TRUE(bob_.engine().answer(1001));
        ASSERT_TRUE(eventually([this] { return stateAtBob() == sfiCallStateConnected; }));
        bob_.events().rest();
    }

    sfiCallState stateAtBob()
    {
        auto const call = bob_.engine().call(1001);
        return call ? call->state : sfiCallStateIdle;
    }

    // Names bob's call as its far end would.
    sip::Headers replaces()
    {
        std::lock_guard const guard(eventLoop());
        auto const& dialog = bob_.engine().list().find(1001)->session()->dialogId();
        return {{"Replaces", sip::Replaces{dialog.callId, dialog.localTag, dialog.remoteTag}.format()}};
    }
};

class CallWhileDoNotDisturb : public ::testing::Test
{
protected:
    static int statusWith(int configured)
    {
        auto options = EnginePhone::optionsOf("4711");
        options.engine.doNotDisturbStatus = configured;
        EnginePhone phone(options);
        phone.doNotDisturbOn = true;
        return Stranger().call(phone.uri());
    }
};

class StrangerAtTheExchange : public ::testing::Test
{
protected:
    exchange::Exchange exchange_{eventLoop(), {}};
    EnginePhone phone_{phoneAt(exchange_, {"4711"})};
    Stranger stranger_;
    Stranger peer_{"secret"};

    void SetUp() override { phone_.expect({"registration 4711 0 yes 0"}); }
};

}  // namespace

TEST_F(CallWhileDoNotDisturb, IsAnsweredWithTheConfiguredStatus)
{
    EXPECT_EQ(statusWith(486), 486);
    EXPECT_EQ(statusWith(480), 480);
}

TEST_F(StrangerAtACall, Watching_IsRefusedWithoutThePassword)
{
    EXPECT_EQ(stranger_.watch(bob_.uri()), 401);
    EXPECT_EQ(peer_.watch(bob_.uri()), 200);
}

TEST_F(StrangerAtACall, TakingOver_IsRefusedWithoutThePassword)
{
    EXPECT_EQ(stranger_.call(bob_.uri(), replaces()), 401);
    EXPECT_EQ(stateAtBob(), sfiCallStateConnected);

    EXPECT_EQ(peer_.call(bob_.uri(), replaces()), 200);
}

TEST_F(StrangerAtACall, Joining_IsRefusedWithoutThePassword)
{
    EXPECT_EQ(stranger_.call(bob_.uri(), {{"Join", replaces().value("Replaces")}}), 401);
    EXPECT_EQ(stateAtBob(), sfiCallStateConnected);
}

TEST_F(StrangerAtACall, MessagesAndControl_ReachNoApplicationWithoutThePassword)
{
    EXPECT_EQ(stranger_.setMessages(bob_.uri()), 401);
    EXPECT_EQ(stranger_.control(bob_.uri()), 401);
    EXPECT_EQ(bob_.events().next(std::chrono::milliseconds(200)), "nothing came");

    EXPECT_EQ(peer_.setMessages(bob_.uri()), 200);
    bob_.expect({"messages 4722 1 7 0 0 0 0 2 1 -"});
    EXPECT_EQ(peer_.control(bob_.uri()), 200);
    bob_.expect({"csta 4722"});
}

TEST_F(StrangerAtTheExchange, NothingIsPossibleEvenWithThePassword)
{
    for (Stranger* each : {&stranger_, &peer_}) {
        EXPECT_EQ(each->call(phone_.uri()), 403);
        EXPECT_EQ(each->watch(phone_.uri()), 403);
        EXPECT_EQ(each->setMessages(phone_.uri()), 403);
        EXPECT_EQ(each->control(phone_.uri()), 403);
        EXPECT_EQ(each->ask("REFER", phone_.uri(), {{"Refer-To", "<sip:100@127.0.0.1>"}}).status, 403);
    }
    EXPECT_EQ(phone_.events().next(std::chrono::milliseconds(200)), "nothing came");
}

TEST_F(StrangerAtTheExchange, TheExchangeIsNotHindered)
{
    ASSERT_TRUE(exchange_.setMessages("4711", {2, 8, 0, 2}, true));
    phone_.expect({"messages 4711 1 2 8 0 2 0 2 1 -"});

    ASSERT_TRUE(exchange_.callNumber("100", "4711"));
    EXPECT_TRUE(eventually([this] { return phone_.alerts(); }));
}

TEST(StrangerToAPassword, WithoutACallServer_AnybodyMayCall)
{
    EnginePhone bob(EnginePhone::optionsOf("4722"));
    auto options = EnginePhone::optionsOf("4711");
    options.password.clear();
    EnginePhone alice(options);

    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));

    EXPECT_TRUE(eventually([&bob] { return bob.alerts(); }));
}

// Telephones that the exchange redirects to each other have been given their contacts by it.
TEST(StrangerToAPassword, TelephonesWithPasswordsOfTheirOwn_CallEachOtherThroughTheExchange)
{
    exchange::ExchangeConfig config;
    config.users = {{"4711", "one"}, {"4722", "two"}};
    exchange::Exchange exchange(eventLoop(), config);
    auto const optionsOf = [&exchange](std::string const& line, std::string const& password) {
        auto options = phoneAt(exchange, {line});
        options.password = password;
        return options;
    };
    EnginePhone alice(optionsOf("4711", "one"));
    EnginePhone bob(optionsOf("4722", "two"));
    alice.expect({"registration 4711 0 yes 0"});
    bob.expect({"registration 4722 0 yes 0"});

    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, "4722"));

    EXPECT_TRUE(eventually([&bob] { return bob.alerts(); }));
}

TEST(Reflector, SubscriptionForAnotherAddress_IsRefusedAlsoWhereAnybodyMayWatch)
{
    EnginePhone phone(withPermission("4711", sip::RequestKind::kSubscription, sip::Sender::kAnybody));
    Stranger stranger;
    Stranger victim;

    stranger.contact = victim.agent().hostPort();
    EXPECT_EQ(stranger.watch(phone.uri()), 401);
    EXPECT_FALSE(eventually([&victim] { return victim.notices() > 0; }, std::chrono::seconds(40)));

    stranger.contact = stranger.agent().hostPort();
    EXPECT_EQ(stranger.watch(phone.uri()), 200);
    EXPECT_TRUE(eventually([&stranger] { return stranger.notices() > 0; }));
}

// A request is sent again after half a second without an answer, so what is dropped shows before.
TEST(Flood, RequestsBeyondTheRate_AreDroppedAndTheCallGoesOn)
{
    auto options = EnginePhone::optionsOf("4722");
    options.engine.agent.limits = {20, 1000, 100};
    EnginePhone bob(options);
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    Stranger stranger;
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
    ASSERT_TRUE(eventually([&bob] { return bob.alerts(); }));
    ASSERT_TRUE(bob.engine().answer(1001));
    ASSERT_TRUE(alice.events().waitFor("state 4711 1 connected normal 4722"));

    for (int i = 0; i < 2000; ++i) {
        stranger.send("OPTIONS", bob.uri());
    }
    EXPECT_FALSE(eventually([&stranger] { return stranger.answers(200) > 40 + 8; }, std::chrono::milliseconds(400)));

    // The call of alice took one of the 40 of the first moment.
    EXPECT_GE(stranger.answers(200), 39);
    EXPECT_LE(stranger.answers(200), 40 + 8);
    ASSERT_TRUE(alice.engine().hold(1));
    EXPECT_TRUE(bob.events().waitFor("state 4722 1001 remotely held normal 4711"));
}

TEST(Flood, TransactionsBeyondTheTotal_AreAnsweredWith503)
{
    auto options = EnginePhone::optionsOf("4722");
    options.engine.agent.limits = {0, 10, 100};
    EnginePhone bob(options);
    Stranger stranger;

    for (int i = 0; i < 50; ++i) {
        stranger.send("MESSAGE", bob.uri());
    }

    EXPECT_TRUE(eventually([&stranger] { return stranger.answers(503) == 40; }));
    EXPECT_EQ(stranger.answers(405), 10);
    sleepFor(std::chrono::seconds(33));
    stranger.send("MESSAGE", bob.uri());
    EXPECT_TRUE(eventually([&stranger] { return stranger.answers(405) == 11; }));
}

TEST(Flood, SubscriptionsBeyondTheTotal_AreAnsweredWith503)
{
    auto options = EnginePhone::optionsOf("4722");
    options.engine.agent.limits = {0, 0, 3};
    EnginePhone bob(options);
    Stranger peer("secret");

    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(peer.watch(bob.uri()), 200);
    }
    EXPECT_EQ(peer.watch(bob.uri()), 503);
}

TEST(Destination, WithHeaders_IsRefused)
{
    EnginePhone alice(EnginePhone::optionsOf("4711"));

    auto const refused = alice.engine().outgoing().make(1, 0, 1, "sip:4722@127.0.0.1?X=1");

    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().reason, "\"sip:4722@127.0.0.1?X=1\" cannot be called: leave out the headers after \"?\"");
}

}  // namespace telephone::test

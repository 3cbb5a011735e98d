// A call server that is written message by message: what the telephone sends it, and what it makes of any answer.
#include "ExchangePhones.h"
#include "telephone/base/Touched.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

class ScriptedServer : public ::testing::Test
{
protected:
    void start(bool subscribes = false, std::optional<sip::Sender> callers = {})
    {
        EnginePhone::Options options;
        options.engine.permissions.set(sip::RequestKind::kCall, callers);
        options.registrar = server_.hostPort();
        options.engine.messageWaiting = subscribes;
        options.engine.voiceMail = "600";
        phone_ = std::make_unique<EnginePhone>(options);
    }

    void startRegistered(bool subscribes = false, std::optional<sip::Sender> callers = {})
    {
        start(subscribes, callers);
        server_.answer(server_.receive("REGISTER"), "200 OK", "Expires: 300\r\n");
        phone_->expect({"registration 4711 0 yes 0"});
    }

    // The body of the next request of that method, which is answered with the status.
    std::string bodyOf(std::string const& method, std::string const& status = "200 OK")
    {
        std::string const request = server_.receive(method);
        server_.answer(request, status);
        return request.substr(request.find("\r\n\r\n") + 4);
    }

    // Ends the telephone while its server answers.
    void TearDown() override { phone_.reset(); }

    ScriptedEnd server_{eventLoop()};
    std::unique_ptr<EnginePhone> phone_;
};

}  // namespace

TEST_F(ScriptedServer, Registration_AsksForTheConfiguredTime)
{
    start();

    std::string const request = server_.receive("REGISTER");

    EXPECT_EQ("REGISTER sip:" + server_.hostPort() + " SIP/2.0", firstLineOf(request));
    EXPECT_EQ(0U, headerOf(request, "From").find("<sip:4711@" + server_.hostPort() + ">;tag="));
    std::string const contact = headerOf(request, "Contact");
    EXPECT_EQ(0U, contact.find("<sip:4711@"));
    EXPECT_NE(std::string::npos, contact.find(">;expires=300")) << contact;
}

TEST_F(ScriptedServer, Challenge_IsAnsweredOnce)
{
    start();
    std::string const challenge = "WWW-Authenticate: Digest realm=\"pbx\", nonce=\"n\"\r\n";
    server_.answer(server_.receive("REGISTER"), "401 Unauthorized", challenge);

    std::string const second = server_.receive("REGISTER");
    EXPECT_NE(std::string::npos, headerOf(second, "Authorization").find("username=\"4711\", realm=\"pbx\"")) << second;
    server_.answer(second, "401 Unauthorized", challenge);

    phone_->expect({"registration 4711 0 no 1"});
}

TEST_F(ScriptedServer, RefusedRegistration_HasItsResultAndIsTriedAgain)
{
    start();
    server_.answer(server_.receive("REGISTER"), "500 Server Internal Error");
    phone_->expect({"registration 4711 0 no 2"});

    server_.answer(server_.receive("REGISTER"), "503 Service Unavailable");
    phone_->expect({"registration 4711 0 no 3"});
    server_.answer(server_.receive("REGISTER"), "503 Service Unavailable");
    server_.answer(server_.receive("REGISTER"), "200 OK");

    phone_->expect({"registration 4711 0 yes 0"});
}

TEST_F(ScriptedServer, LineIsRegisteredOnce_UntilTheServiceEnds)
{
    startRegistered();
    phone_->engine().setServiceState(sfiServiceInService);
    EXPECT_TRUE(server_.hearsNothingOf("REGISTER", 10s));

    phone_->engine().setServiceState(sfiServiceOutOfService);
    std::string const last = server_.receive("REGISTER");
    EXPECT_NE(headerOf(last, "Contact").find(">;expires=0"), std::string::npos) << last;
    server_.answer(last, "200 OK");
    phone_->expect({"registration 4711 0 no 4"});
    EXPECT_FALSE(phone_->engine().registrations().isRegistered(1));
    phone_->engine().setServiceState(sfiServiceInService);
    server_.answer(server_.receive("REGISTER"), "200 OK", "Expires: 300\r\n");

    phone_->expect({"registration 4711 0 yes 0"});
    EXPECT_TRUE(phone_->engine().registrations().isRegistered(1));
}

TEST_F(ScriptedServer, IdentityThatTheServerAsserts_IsTheCallersName)
{
    startRegistered();

    server_.ask("INVITE", "4711", phone_->engine().userAgent().hostPort(),
                "P-Asserted-Identity: \"Real\" <sip:7777@example.org>\r\n", ScriptedEnd::description());

    phone_->expect({"incoming 4711 1001 7777 Real 2 - 0"});
}

TEST_F(ScriptedServer, IdentityThatTheServerAssertsInACall_IsTold)
{
    startRegistered();
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 1, "100"));
    std::string const invite = server_.receive("INVITE");
    server_.accept(invite);
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1 connected normal 100"));

    server_.request("INVITE", invite, "P-Asserted-Identity: \"Real\" <sip:7777@example.org>\r\n",
                    ScriptedEnd::description());

    phone_->expect({"party 4711 1 7777 0 0"});
    EXPECT_EQ(phone_->engine().call(1)->remoteName, "Real");
    server_.request("INVITE", invite, "P-Asserted-Identity: \"Real\" <sip:7777@example.org>\r\n",
                    ScriptedEnd::description());
    EXPECT_EQ(phone_->events().next(1s), "nothing came");
}

TEST_F(ScriptedServer, IdentityThatAStrangerAsserts_IsIgnored)
{
    ScriptedEnd stranger(eventLoop());
    startRegistered(false, sip::Sender::kAnybody);

    stranger.ask("INVITE", "4711", phone_->engine().userAgent().hostPort(),
                 "P-Asserted-Identity: \"Real\" <sip:7777@example.org>\r\n", ScriptedEnd::description());

    phone_->expect({"incoming 4711 1001 far - 2 - 0"});
}

TEST_F(ScriptedServer, FeaturesOfTheServer_AreAskedForByDocument)
{
    startRegistered();

    ASSERT_TRUE(phone_->engine().server().requestFeatures("4711", true));
    EXPECT_EQ(
        "<?xml version=\"1.0\"?><MonitorStart xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<monitorObject><deviceObject>sip:4711@" +
            server_.hostPort() + "</deviceObject></monitorObject></MonitorStart>",
        bodyOf("INFO", "299 Fine"));
    phone_->expect({"server 4711 initialized"});
    ASSERT_TRUE(phone_->engine().server().requestFeatures("4711", false));
    EXPECT_EQ(
        "<?xml version=\"1.0\"?><MonitorStop xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<monitorCrossRefID>sip:4711@" +
            server_.hostPort() + "</monitorCrossRefID></MonitorStop>",
        bodyOf("INFO"));
    phone_->expect({"server 4711 finalized"});
}

TEST_F(ScriptedServer, FeaturesThatTheServerRefuses_HaveFailed)
{
    startRegistered();

    ASSERT_TRUE(phone_->engine().server().requestFeatures("4711", true));
    (void)bodyOf("INFO", "300 Elsewhere");

    phone_->expect({"server 4711 failed"});
}

TEST_F(ScriptedServer, CstaRequest_IsAnsweredWithItsStatus)
{
    startRegistered();

    ASSERT_TRUE(phone_->engine().server().send("4711", "<GetDoNotDisturb/>"));
    EXPECT_EQ("<GetDoNotDisturb/>", bodyOf("INFO", "200 OK"));
    phone_->expect({"csta-response 4711 1"});
    ASSERT_TRUE(phone_->engine().server().send("4711", "<GetDoNotDisturb/>"));
    (void)bodyOf("INFO", "300 Elsewhere");

    phone_->expect({"csta-response 4711 0"});
}

TEST_F(ScriptedServer, AgentState_IsToldByDocument)
{
    startRegistered();

    phone_->engine().server().tellAgentState("4711", "agentBusy");

    std::string const request = server_.receive("INFO");
    server_.answer(request, "200 OK");
    EXPECT_EQ("application/csta+xml", headerOf(request, "Content-Type"));
    EXPECT_EQ(
        "<?xml version=\"1.0\"?><SetAgentState xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">"
        "<device>sip:4711@" +
            server_.hostPort() +
            "</device><requestedAgentState>agentBusy</requestedAgentState>"
            "</SetAgentState>",
        request.substr(request.find("\r\n\r\n") + 4));
}

TEST_F(ScriptedServer, MessageWaiting_IsSubscribedTo)
{
    startRegistered(true);

    std::string const request = server_.receive("SUBSCRIBE");

    EXPECT_EQ("message-summary", headerOf(request, "Event"));
    EXPECT_EQ("application/simple-message-summary", headerOf(request, "Accept"));
    EXPECT_EQ("SUBSCRIBE sip:4711@" + server_.hostPort() + " SIP/2.0", firstLineOf(request));
}

class MissingPackage : public ScriptedServer, public ::testing::WithParamInterface<char const*>
{};

TEST_P(MissingPackage, MessageWaiting_IsNotAskedForAgain)
{
    startRegistered(true);

    server_.answer(server_.receive("SUBSCRIBE"), GetParam());

    EXPECT_TRUE(server_.hearsNothingOf("SUBSCRIBE", 2min));
}

INSTANTIATE_TEST_SUITE_P(Statuses, MissingPackage,
                         ::testing::Values("404 Not Found", "405 Method Not Allowed", "489 Bad Event",
                                           "501 Not Implemented"));

TEST_F(ScriptedServer, MessageWaitingThatFails_IsAskedForAgainAfterAMinute)
{
    startRegistered(true);

    server_.answer(server_.receive("SUBSCRIBE"), "500 Server Internal Error");

    keepTouched();
    EXPECT_TRUE(server_.hearsNothingOf("SUBSCRIBE", 59s));
    server_.answer(server_.receive("SUBSCRIBE", 2s), "404 Not Found");
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("mailbox is asked again"));
}

TEST_F(ScriptedServer, MessageSummaries_AreToldAsTheyCount)
{
    startRegistered();
    auto const notify = [this](std::string const& body) {
        std::string const target = phone_->uri();
        server_.ask("NOTIFY", "4711", target.substr(target.find('@') + 1),
                    "Event: message-summary\r\nSubscription-State: active\r\n"
                    "Content-Type: application/simple-message-summary\r\n",
                    body);
        EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(server_.receive("SIP/2.0")));
    };

    notify("Messages-Waiting: yes\r\nVoice-Message: 2/8 (1/3)\r\n");
    phone_->expect({"messages 4711 1 2 8 1 3 1 2 1 600"});
    notify("Messages-Waiting: yes\r\n");
    notify("no summary");
    notify("Messages-Waiting: no\r\n");
    auto const told = phone_->events().next(2);

    EXPECT_EQ(told,
              (std::vector<std::string>{"messages 4711 1 0 0 0 0 1 1 1 600", "messages 4711 1 0 0 0 0 1 2 0 600"}));
}

}  // namespace telephone::test

// What this telephone answers to the requests of far ends, as they see it: status lines and the headers that belong to
// them.
#include "ExchangePhones.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

class Answers : public ::testing::Test
{
protected:
    void start(EnginePhone::Options options = EnginePhone::optionsOf("4711"))
    {
        // Who may ask is not the subject here.
        for (sip::RequestKind const kind :
             {sip::RequestKind::kTakeOver, sip::RequestKind::kSubscription, sip::RequestKind::kNotification,
              sip::RequestKind::kControl, sip::RequestKind::kTransfer}) {
            options.engine.permissions.set(kind, sip::Sender::kAnybody);
        }
        phone_ = std::make_unique<EnginePhone>(options);
    }

    std::string hostPort() { return phone_->engine().userAgent().hostPort(); }

    // The final response to a request from a far end of its own.
    std::string responseTo(std::string const& method, std::string const& headers = {}, std::string const& user = "4711",
                           std::string const& body = {})
    {
        ends_.push_back(std::make_unique<ScriptedEnd>(eventLoop()));
        ends_.back()->ask(method, user, hostPort(), headers, body);
        std::string response = ends_.back()->receive("SIP/2.0");
        while (response.starts_with("SIP/2.0 1")) {
            response = ends_.back()->receive("SIP/2.0");
        }
        return response;
    }

    std::string answerTo(std::string const& method, std::string const& headers = {}, std::string const& user = "4711",
                         std::string const& body = {})
    {
        return firstLineOf(responseTo(method, headers, user, body));
    }

    std::string answerToCall(std::string const& headers = {}, std::string const& user = "4711")
    {
        return answerTo("INVITE", headers, user, ScriptedEnd::description());
    }

    // A call from the last far end, which is ringing.
    ScriptedEnd& ring()
    {
        ends_.push_back(std::make_unique<ScriptedEnd>(eventLoop()));
        ends_.back()->ask("INVITE", "4711", hostPort(), "", ScriptedEnd::description());
        EXPECT_TRUE(eventually([this] { return phone_->alerts(); }));
        return *ends_.back();
    }

    std::unique_ptr<EnginePhone> phone_;
    std::vector<std::unique_ptr<ScriptedEnd>> ends_;
};

}  // namespace

TEST_F(Answers, ToACallForAnUnknownUser_Are404)
{
    start();

    EXPECT_EQ(answerToCall("", "9999"), "SIP/2.0 404 Not Found");
}

TEST_F(Answers, ToACallWhileTheTelephoneTakesNone_Are480)
{
    start();
    phone_->engine().setServiceState(sfiServiceOutOfService);
    EXPECT_EQ(answerToCall(), "SIP/2.0 480 Temporarily Unavailable");
    phone_->engine().setServiceState(sfiServiceInService);
    phone_->engine().deactivate();

    EXPECT_EQ(answerToCall(), "SIP/2.0 480 Temporarily Unavailable");
}

TEST_F(Answers, ToACallInDoNotDisturb_Are486)
{
    start();
    phone_->doNotDisturbOn = true;
    EXPECT_EQ(answerToCall(), "SIP/2.0 486 Busy Here");
    phone_->doNotDisturbOn = false;
    phone_->engine().setServiceState(sfiServiceDoNotDisturb);

    EXPECT_EQ(answerToCall(), "SIP/2.0 486 Busy Here");
}

TEST_F(Answers, ToACallInDoNotDisturbAsUnavailable_Are480)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.doNotDisturbStatus = 480;
    start(options);
    phone_->doNotDisturbOn = true;

    EXPECT_EQ(answerToCall(), "SIP/2.0 480 Temporarily Unavailable");
}

TEST_F(Answers, ToACallBeyondTheLimit_Are486)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.maximumCalls = 1;
    start(options);
    ScriptedEnd& first = ring();
    EXPECT_EQ(answerToCall(), "SIP/2.0 486 Busy Here");
    ASSERT_TRUE(phone_->engine().answer(1001));
    std::string const accepted = first.receive("SIP/2.0 200");
    first.acknowledge(accepted);
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1001 connected normal far"));

    std::string const join = "Join: " + headerOf(accepted, "Call-ID") +
                             ";to-tag=" + headerOf(accepted, "To").substr(headerOf(accepted, "To").find("tag=") + 4) +
                             ";from-tag=far\r\n";
    EXPECT_EQ(answerToCall(join), "SIP/2.0 486 Busy Here");
}

TEST_F(Answers, ToACallThatReplacesOrJoinsNone_Are481)
{
    start();

    EXPECT_EQ(answerToCall("Replaces: none@there;to-tag=1;from-tag=2\r\n"),
              "SIP/2.0 481 Call/Transaction Does Not Exist");
    EXPECT_EQ(answerToCall("Join: none@there;to-tag=1;from-tag=2\r\n"), "SIP/2.0 481 Call/Transaction Does Not Exist");
}

TEST_F(Answers, ToACallThatReplacesOrJoinsOne_DependOnItsState)
{
    start();
    ScriptedEnd& first = ring();
    std::string const ringing = first.receive("SIP/2.0 180");
    std::string const to = headerOf(ringing, "To");
    std::string const dialog =
        headerOf(ringing, "Call-ID") + ";to-tag=" + to.substr(to.find("tag=") + 4) + ";from-tag=far";

    EXPECT_EQ(answerToCall("Replaces: " + dialog + "\r\n"), "SIP/2.0 481 Call/Transaction Does Not Exist");
    EXPECT_EQ(answerToCall("Join: " + dialog + "\r\n"), "SIP/2.0 488 Not Acceptable Here");
    ASSERT_TRUE(phone_->engine().answer(1001));
    first.acknowledge(first.receive("SIP/2.0 200"));
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1001 connected normal far"));
    EXPECT_EQ(answerToCall("Replaces: " + dialog + ";early-only\r\n"), "SIP/2.0 486 Busy Here");
    EXPECT_EQ(answerToCall("Replaces: " + dialog + "\r\n"), "SIP/2.0 200 OK");
}

TEST_F(Answers, ToACallThatJoinsOneOfAPrivateLine_Are603)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.isPrivate = true;
    start(options);
    ScriptedEnd& first = ring();
    ASSERT_TRUE(phone_->engine().answer(1001));
    std::string const accepted = first.receive("SIP/2.0 200");
    first.acknowledge(accepted);
    ASSERT_TRUE(phone_->events().waitFor("state 4711 1001 connected normal far"));
    std::string const to = headerOf(accepted, "To");

    EXPECT_EQ(answerToCall("Join: " + headerOf(accepted, "Call-ID") + ";to-tag=" + to.substr(to.find("tag=") + 4) +
                           ";from-tag=far\r\n"),
              "SIP/2.0 603 Decline");
}

TEST_F(Answers, ToACallThatIsForwarded_NameTheTargetAndTheReason)
{
    start();
    phone_->rules[sfiForwardUnconditional] = {true, "4733"};

    std::string const response = responseTo("INVITE", "", "4711", ScriptedEnd::description());

    EXPECT_EQ(firstLineOf(response), "SIP/2.0 302 Moved Temporarily");
    EXPECT_EQ(headerOf(response, "Contact"), "<sip:4733@" + hostPort() + ">");
    EXPECT_EQ(headerOf(response, "Diversion"), "<sip:4711@" + hostPort() + ">;reason=unconditional");
}

TEST_F(Answers, ToACallThatAnApplicationRefuses_HaveItsReason)
{
    struct Case
    {
        sfiRefuseCall reason;
        char const* expected;
    };
    for (Case const& each :
         {Case{sfiRefuseCallBusy, "SIP/2.0 486 Busy Here"}, Case{sfiRefuseCallDecline, "SIP/2.0 603 Decline"},
          Case{sfiRefuseCallUnavailable, "SIP/2.0 480 Temporarily Unavailable"},
          Case{sfiRefuseCallNotFound, "SIP/2.0 404 Not Found"},
          Case{sfiRefuseCallForbidden, "SIP/2.0 403 Forbidden"}}) {
        start();
        ScriptedEnd& far = ring();
        ASSERT_NE(far.receive("SIP/2.0 180"), "");
        ASSERT_TRUE(phone_->engine().incoming().reject(1001, each.reason));
        EXPECT_EQ(firstLineOf(far.receive("SIP/2.0")), each.expected);
    }
}

TEST_F(Answers, ToACallThatIsClearedWhileItRings_HaveItsCause)
{
    struct Case
    {
        CSTAEventCause cause;
        char const* expected;
    };
    for (Case const& each :
         {Case{CSTAEventCauseNormalClearing, "SIP/2.0 603 Decline"}, Case{CSTAEventCauseBusy, "SIP/2.0 486 Busy Here"},
          Case{CSTAEventCauseNoAnswer, "SIP/2.0 480 Temporarily Unavailable"},
          Case{CSTAEventCauseNetworkCongestion, "SIP/2.0 503 Service Unavailable"}}) {
        start();
        ScriptedEnd& far = ring();
        ASSERT_NE(far.receive("SIP/2.0 180"), "");
        ASSERT_TRUE(phone_->engine().list().clear(1001, each.cause));
        EXPECT_EQ(firstLineOf(far.receive("SIP/2.0")), each.expected);
        EXPECT_TRUE(phone_->events().waitFor("state 4711 1001 idle refused far"));
    }
}

// RFC 5806: the latest diversion names the line that diverts.
TEST_F(Answers, ToACallThatIsDeflected_NameTheTargetAndTheLine)
{
    start();
    ScriptedEnd& far = ring();
    ASSERT_NE(far.receive("SIP/2.0 180"), "");

    ASSERT_TRUE(phone_->engine().deflect(1001, "4733"));

    std::string const response = far.receive("SIP/2.0");
    EXPECT_EQ(firstLineOf(response), "SIP/2.0 302 Moved Temporarily");
    EXPECT_EQ(headerOf(response, "Contact"), "<sip:4733@" + hostPort() + ">");
    EXPECT_EQ(headerOf(response, "Diversion"), "<sip:4711@" + hostPort() + ">;reason=deflection");
}

TEST_F(Answers, ToSubscriptions_AreGivenForTheDialogsOfALineAlone)
{
    start();
    std::string const headers = "Expires: 60\r\nAccept: application/dialog-info+xml\r\n";

    EXPECT_EQ(answerTo("SUBSCRIBE", "Event: dialog\r\n" + headers), "SIP/2.0 200 OK");
    EXPECT_EQ(answerTo("SUBSCRIBE", "Event: dialog\r\n" + headers, "9999"), "SIP/2.0 404 Not Found");
    std::string const other = responseTo("SUBSCRIBE", "Event: presence\r\n" + headers);
    EXPECT_EQ(firstLineOf(other), "SIP/2.0 489 Bad Event");
    EXPECT_EQ(headerOf(other, "Allow-Events"), "dialog, refer");
    phone_->engine().deactivate();
    EXPECT_EQ(answerTo("SUBSCRIBE", "Event: dialog\r\n" + headers), "SIP/2.0 480 Temporarily Unavailable");
}

TEST_F(Answers, ToInformation_DependOnItsType)
{
    start();

    EXPECT_EQ(answerTo("INFO", "Content-Type: Application/CSTA+xml; charset=utf-8\r\n", "4711", "<MakeCall/>"),
              "SIP/2.0 200 OK");
    phone_->expect({"csta 4711"});
    EXPECT_EQ(phone_->events().lastDocument(), "<MakeCall/>");
    EXPECT_EQ(answerTo("INFO", "Content-Type: application/csta+xml\r\n", "9999", "<MakeCall/>"),
              "SIP/2.0 404 Not Found");
    std::string const other = responseTo("INFO", "Content-Type: text/plain\r\n", "4711", "hello");
    EXPECT_EQ(firstLineOf(other), "SIP/2.0 415 Unsupported Media Type");
    EXPECT_EQ(headerOf(other, "Accept"), "application/csta+xml");
    EXPECT_TRUE(phone_->events().rest().empty());
}

TEST_F(Answers, ToATransferOfNoCall_Are603)
{
    start();

    EXPECT_EQ(answerTo("REFER", "Refer-To: <sip:100@127.0.0.1:9>\r\n"), "SIP/2.0 603 Decline");
}

TEST_F(Answers, ToNoticesOfMessages_ReachAnActiveTelephoneAlone)
{
    start();
    std::string const headers =
        "Event: message-summary\r\nSubscription-State: active\r\nContent-Type: application/simple-message-summary\r\n";
    std::string const body = "Messages-Waiting: yes\r\nVoice-Message: 2/8\r\n";
    (void)answerTo("NOTIFY", headers, "9999", body);
    (void)answerTo("NOTIFY", "Event: presence" + headers.substr(headers.find("\r\n")), "4711", body);
    EXPECT_TRUE(phone_->events().rest().empty());
    EXPECT_EQ(answerTo("NOTIFY", headers, "4711", body), "SIP/2.0 200 OK");
    phone_->expect({"messages 4711 1 2 8 0 0 0 2 1 -"});
    phone_->engine().deactivate();

    (void)answerTo("NOTIFY", headers, "4711", "Messages-Waiting: no\r\n");

    EXPECT_TRUE(phone_->events().rest().empty());
}

}  // namespace telephone::test

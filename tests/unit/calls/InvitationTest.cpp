// The contents of an INVITE in the events, and requests that few telephones send.
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

// A bare user agent, which sends what the test asks for.
class Peer final : public sip::UserAgentObserver, public sip::SessionObserver
{
public:
    ~Peer() override
    {
        std::lock_guard const guard(eventLoop());
        session_.reset();
        joining_.reset();
    }

    bool call(std::string const& target, sip::Headers const& headers)
    {
        std::lock_guard const guard(eventLoop());
        sip::CallRequest request = requestFrom("9000", target);
        request.headers = headers;
        auto session = agent_.call(request, *this);
        if (session) {
            session_ = std::move(*session);
        }
        return session.has_value();
    }

    bool info(sip::Content const& content)
    {
        std::lock_guard const guard(eventLoop());
        return session_->sendInfo(content).has_value();
    }

    // Calls in place of its call, as another party, and hangs up before it knows of the answer.
    bool replaceCall(std::string const& target)
    {
        std::lock_guard const guard(eventLoop());
        sip::CallRequest request = requestFrom("9001", target);
        request.replaces = session_->dialogId().replaces();
        auto session = agent_.call(request, *this);
        session_->hangUp();
        if (session) {
            session_ = std::move(*session);
        }
        return session.has_value();
    }

    void hangUp(std::string const& reason)
    {
        std::lock_guard const guard(eventLoop());
        session_->hangUp(reason);
    }

    // Another party joins the call.
    bool joinCall(std::string const& target)
    {
        std::lock_guard const guard(eventLoop());
        sip::CallRequest request = requestFrom("9001", target);
        request.headers = {{"Join", session_->dialogId().replaces().format()}};
        auto session = agent_.call(request, *this);
        if (session) {
            joining_ = std::move(*session);
        }
        return session.has_value();
    }
    void leave()
    {
        std::lock_guard const guard(eventLoop());
        joining_->hangUp();
    }
    int refusal() const
    {
        std::lock_guard const guard(eventLoop());
        return refusal_;
    }

    std::string digits() const
    {
        std::lock_guard const guard(eventLoop());
        return digits_;
    }

private:
    void onDigit(sip::Session&, char digit) override { digits_ += digit; }
    void onClosed(sip::Session&, sip::Closing const& closing) override { refusal_ = closing.status; }

    sip::CallRequest requestFrom(std::string const& user, std::string const& target) const
    {
        sip::CallRequest request;
        request.account.user = user;
        request.account.displayName = "Nina Nine";
        request.account.domain = agent_.hostPort();
        request.target = target;
        return request;
    }

    static sip::UserAgentConfig withoutTelephoneEvents()
    {
        sip::UserAgentConfig config;
        config.telephoneEvents = false;
        return config;
    }

    sip::UserAgent agent_{eventLoop(), withoutTelephoneEvents(), *this};
    std::unique_ptr<sip::Session> session_;
    std::unique_ptr<sip::Session> joining_;
    std::string digits_;
    int refusal_ = 0;
};

class Invitation : public ::testing::Test
{
protected:
    // Who may replace a call is not the subject here.
    static EnginePhone::Options openToAnybody()
    {
        EnginePhone::Options options;
        options.engine.permissions.set(sip::RequestKind::kTakeOver, sip::Sender::kAnybody);
        return options;
    }

    EnginePhone phone_{openToAnybody()};
    Peer peer_;

    void TearDown() override { phone_.engine().deactivate(); }

    void connect()
    {
        ASSERT_TRUE(peer_.call(phone_.uri(), {}));
        ASSERT_TRUE(phone_.events().waitFor("state 4711 1001 ringing normal 9000"));
        ASSERT_TRUE(phone_.engine().answer(1001));
        ASSERT_TRUE(phone_.events().waitFor("state 4711 1001 connected normal 9000"));
    }
};

}  // namespace

TEST_F(Invitation, CallerWithAName_IsShownWithIt)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {}));

    phone_.expect({"incoming 4711 1001 9000 Nina Nine 2 - 0"});
}

TEST_F(Invitation, DivertedCall_NamesTheDivertingPartyAndTheReason)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"Diversion", "<sip:4799@example.org>;reason=user-busy"}}));

    phone_.expect({"incoming 4711 1001 9000 Nina Nine 2 4799 2", "state 4711 1001 ringing normal 9000"});
    EXPECT_TRUE(phone_.engine().incoming().reject(1001, sfiRefuseCallDecline));
}

TEST_F(Invitation, AlertInformationAndPriority_AreTold)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"Alert-Info", "<http://127.0.0.1/bell>;info=alert-autoanswer"},
                                          {"Resource-Priority", "dsn.flash"}}));

    phone_.expect({"incoming 4711 1001 9000 Nina Nine 2 - 0"});
    EventRecorder::Alert const& alert = phone_.events().lastAlert();
    EXPECT_EQ(alert.uri, "http://127.0.0.1/bell");
    EXPECT_EQ(alert.infoParam, "alert-autoanswer");
    EXPECT_TRUE(alert.automatic);
    EXPECT_EQ(alert.priority, sfiResourcePriorityFlash);
}

TEST_F(Invitation, AutomaticAnswer_IsLeftToTheApplication)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"Answer-Mode", "Auto"}}));

    phone_.expect({"incoming 4711 1001 9000 Nina Nine 2 - 0", "state 4711 1001 ringing normal 9000"});
    EXPECT_TRUE(phone_.events().lastAlert().automatic);
    EXPECT_EQ(phone_.events().next(std::chrono::milliseconds(100)), "nothing came");
}

TEST_F(Invitation, IdentityThatNoServerAsserts_IsIgnored)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"P-Asserted-Identity", "\"Real\" <sip:7777@example.org>"}}));

    phone_.expect({"incoming 4711 1001 9000 Nina Nine 2 - 0"});
}

TEST_F(Invitation, DigitsToAFarEndWithoutTelephoneEvents_GoByInfo)
{
    connect();
    EXPECT_EQ(phone_.events().lastSendOptions(), sfiSendOptionsInfo);

    ASSERT_TRUE(phone_.engine().established().sendDigits(1001, "17#"));

    EXPECT_TRUE(eventually([this] { return peer_.digits() == "17#"; }));
}

TEST_F(Invitation, CstaBodyInTheDialog_IsTold)
{
    connect();

    ASSERT_TRUE(peer_.info({"application/csta+xml", "<MakeCall/>"}));

    phone_.expect({"csta 4711"});
    EXPECT_EQ(phone_.events().lastDocument(), "<MakeCall/>");
}

TEST_F(Invitation, SecurityChangeToPlain_RenewsTheMediaAndTellsIt)
{
    connect();

    ASSERT_TRUE(phone_.engine().established().changeSecurity(1001, false));

    phone_.expect({"security 4711 1001 1"});
}

TEST_F(Invitation, ReplacedPartyThatHangsUpBeforeTheNewOneConfirms_DoesNotEndTheCall)
{
    connect();

    ASSERT_TRUE(peer_.replaceCall(phone_.uri()));

    phone_.expect({"party 4711 1001 9001 0 0"});
    ASSERT_TRUE(phone_.engine().clear(1001));
    phone_.expect({"state 4711 1001 idle normal 9001"});
}

TEST_F(Invitation, Join_MakesAConferenceThatGoesOnAsACall)
{
    connect();

    ASSERT_TRUE(peer_.joinCall(phone_.uri()));

    phone_.expect({"incoming 4711 1002 9001 Nina Nine 2 - 0", "state 4711 1002 connected normal 9001",
                   "state 4711 1001 conference normal 9000", "state 4711 1002 conference normal 9001",
                   "success 4711 1001 conference", "conference 4711 1001", "conference 4711 1002"});
    peer_.leave();
    phone_.expect({"state 4711 1002 idle normal 9001", "conference 4711 1001", "party 4711 1001 9000 1 0",
                   "state 4711 1001 connected normal 9000"});
}

TEST_F(Invitation, JoinOfACallOnHold_RetrievesIt)
{
    connect();
    ASSERT_TRUE(phone_.engine().hold(1001));
    ASSERT_TRUE(phone_.events().waitFor("held 4711 1001"));

    ASSERT_TRUE(peer_.joinCall(phone_.uri()));

    EXPECT_TRUE(phone_.events().waitFor("state 4711 1001 conference normal 9000"));
}

TEST_F(Invitation, JoinOfACallThatRings_IsNotAcceptable)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {}));
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1001 ringing normal 9000"));

    ASSERT_TRUE(peer_.joinCall(phone_.uri()));

    EXPECT_TRUE(eventually([this] { return peer_.refusal() == 488; }));
}

TEST_F(Invitation, JoinOfAnUnknownCall_IsRefused)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"Join", "no-such@call;to-tag=1;from-tag=2"}}));

    EXPECT_TRUE(eventually([this] { return peer_.refusal() == 481; }));
    EXPECT_TRUE(phone_.engine().calls().empty());
}

TEST_F(Invitation, CallThatIsPreempted_EndsWithTheCause)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"Resource-Priority", "dsn.routine"}}));
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1001 ringing normal 9000"));
    ASSERT_TRUE(phone_.engine().answer(1001));
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1001 connected normal 9000"));

    peer_.hangUp("Q.850;cause=16, preemption ;cause=2 ;text=\"Reserved Resources Preempted\"");

    phone_.expect({"preemption 4711 1001 1 2 Reserved Resources Preempted", "state 4711 1001 idle normal 9000"});
    EXPECT_EQ(phone_.events().lastPreemption(), sfiPreemptionCauseReservedResources);
}

TEST_F(Invitation, CallThatEndsForAnotherReason_IsNotPreempted)
{
    connect();

    peer_.hangUp("SIP;cause=487;text=\"preemption\"");

    phone_.expect({"state 4711 1001 idle normal 9000"});
    EXPECT_EQ(phone_.events().lastPreemption(), sfiPreemptionCauseNone);
}

TEST_F(Invitation, ReplacesOfAnUnknownCall_IsRefused)
{
    ASSERT_TRUE(peer_.call(phone_.uri(), {{"Replaces", "no-such@call;to-tag=1;from-tag=2"}}));

    EXPECT_EQ(phone_.events().next(std::chrono::milliseconds(200)), "nothing came");
    EXPECT_TRUE(phone_.engine().calls().empty());
}

}  // namespace telephone::test

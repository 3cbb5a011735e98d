// Requests outside a call, and what they are answered with.
#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class Requests : public SipTest
{
protected:
    std::string answerTo(std::string const& method, std::string const& headers = {}, std::string const& user = "4711")
    {
        far_.ask(method, user, phone_.agent->hostPort(), headers);
        answer_ = far_.receive("SIP/2.0 ");
        return firstLineOf(answer_);
    }

    ScriptedEnd far_{loop};
    SipPeer phone_{loop};
    std::string answer_;
};

// In virtual time, too.
TEST_F(SipTest, ConnectionTooManyOfOthers_IsRefused)
{
    sip::UserAgentConfig config;
    config.limits.connections = 1;
    SipPeer called(loop, "4712", config);
    SipPeer first(loop);
    SipPeer second(loop, "4713");
    std::string const target = "sip:4712@" + called.agent->hostPort(sip::Transport::kTcp) + ";transport=tcp";

    first.call(target);
    ASSERT_TRUE(first.waitFor("established")) << first.events();
    second.call(target);

    EXPECT_TRUE(second.waitFor("closed timeout 408", 40s)) << second.events();
    EXPECT_EQ(called.sessionCount(), 1U);
}

TEST_F(Requests, Options_NameWhatIsSupported)
{
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("OPTIONS"));
    EXPECT_EQ("INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE",
              headerOf(answer_, "Allow"));
    EXPECT_EQ("application/sdp, application/dtmf-relay, message/sipfrag", headerOf(answer_, "Accept"));
    EXPECT_EQ("replaces, join, timer, 100rel", headerOf(answer_, "Supported"));
    EXPECT_EQ("SIP/2.0 404 Not Found", answerTo("OPTIONS", "", "unknown"));
}

TEST_F(Requests, RequiredExtensions_ThatAreMissingAreNamed)
{
    EXPECT_EQ("SIP/2.0 420 Bad Extension", answerTo("OPTIONS", "Require: gruu, replaces, path\r\n"));
    EXPECT_EQ("gruu, path", headerOf(answer_, "Unsupported"));
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("OPTIONS", "Require: Replaces\r\n"));
}

TEST_F(Requests, NotifyThatNobodyAskedFor_IsPassedOnIfItNamesItsEvent)
{
    EXPECT_EQ("SIP/2.0 489 Bad Event", answerTo("NOTIFY"));
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("NOTIFY", "Event: message-summary\r\nSubscription-State: active\r\n"));
    EXPECT_TRUE(phone_.waitFor("unsolicited message-summary")) << phone_.events();
}

TEST_F(Requests, Subscription_NeedsAnEventAUserAndAContact)
{
    EXPECT_EQ("SIP/2.0 489 Bad Event", answerTo("SUBSCRIBE"));
    EXPECT_EQ("SIP/2.0 404 Not Found", answerTo("SUBSCRIBE", "Event: dialog\r\n", "unknown"));
    EXPECT_EQ("", phone_.events());
}

TEST_F(Requests, Invite_ForAnUnknownUserIsNotFound)
{
    EXPECT_EQ("SIP/2.0 404 Not Found", answerTo("INVITE", "", "unknown"));
}

TEST_F(Requests, Refer_NeedsATarget)
{
    EXPECT_EQ("SIP/2.0 400 Bad Refer-To", answerTo("REFER"));
    EXPECT_EQ("SIP/2.0 400 Bad Refer-To", answerTo("REFER", "Refer-To: nobody\r\n"));
}

TEST_F(Requests, Info_IsTakenWithItsContent)
{
    EXPECT_EQ("SIP/2.0 200 OK", answerTo("INFO", "c: text/plain;charset=utf-8\r\n"));
    EXPECT_EQ("text/plain;charset=utf-8", phone_.lastInfo.type);
}

TEST_F(Requests, MethodThatNobodyTakes_IsNotAllowed)
{
    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", answerTo("PUBLISH"));
    EXPECT_EQ("INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE",
              headerOf(answer_, "Allow"));
}

TEST_F(Requests, ByeAndCancelOfNothing_DoNotExist)
{
    EXPECT_EQ("SIP/2.0 481 Call Does Not Exist", answerTo("BYE"));
    EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", answerTo("CANCEL"));
}

}  // namespace telephone::test

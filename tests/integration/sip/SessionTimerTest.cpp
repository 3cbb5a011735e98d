// Session timers (RFC 4028): calls that are refreshed, and calls that end because they are not.
#include <gtest/gtest.h>

#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class SessionTimers : public SipTest
{
protected:
    // The far end calls with these headers, and the phone answers.
    std::string takeCall(std::string const& headers)
    {
        far.ask("INVITE", "4711", phone.agent->hostPort(), headers, far.description());
        ok = far.receive("SIP/2.0 200");
        far.acknowledge(ok);
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
        return ok;
    }
    // The phone calls, and the far end answers with these headers.
    sip::Session& makeCall(std::string const& headers)
    {
        sip::Session& call = phone.call(far.uri());
        ok = far.receive("INVITE ");
        far.accept(ok, headers);
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
        return call;
    }
    // The far end ignores the refresh with this method.
    void ignoreRefresh(std::string const& method)
    {
        sleepFor(300s);
        EXPECT_NE("", far.receive(method + " ", 1s));

        EXPECT_TRUE(phone.waitFor("closed abandoned 408", 33s)) << phone.events();
        EXPECT_EQ("the far end does not answer the refresh of the call", phone.lastClosing.text);
    }

    SipPeer phone{loop};
    ScriptedEnd far{loop};
    std::string ok;
};

TEST_F(SessionTimers, Invite_AsksForTheInterval)
{
    phone.call(far.uri());

    std::string const invite = far.receive("INVITE ");
    EXPECT_EQ("1800", headerOf(invite, "Session-Expires"));
    EXPECT_EQ("90", headerOf(invite, "Min-SE"));
    EXPECT_EQ("replaces, join, timer, 100rel", headerOf(invite, "Supported"));
}

TEST_F(SessionTimers, IntervalOfZero_SwitchesThemOff)
{
    sip::UserAgentConfig config;
    config.sessionExpires = 0s;
    SipPeer plain(loop, "4711", config);

    plain.call(far.uri());
    std::string const invite = far.receive("INVITE ");
    far.ask("INVITE", "4711", plain.agent->hostPort(), "Require: timer\r\n", far.description());

    EXPECT_EQ("", headerOf(invite, "Session-Expires"));
    EXPECT_EQ("replaces, join, 100rel", headerOf(invite, "Supported"));
    EXPECT_EQ("timer", headerOf(far.receive("SIP/2.0 420"), "Unsupported"));
}

TEST_F(SessionTimers, CallerThatAsksForAnInterval_RefreshesTheCall)
{
    takeCall("Supported: timer\r\nSession-Expires: 600\r\n");

    EXPECT_EQ("600;refresher=uac", headerOf(ok, "Session-Expires"));
    EXPECT_EQ("timer", headerOf(ok, "Require"));
}

TEST_F(SessionTimers, CallerThatDoesNotKnowThem_IsRefreshedFromHere)
{
    takeCall("Allow: UPDATE\r\n");
    EXPECT_EQ("1800;refresher=uas", headerOf(ok, "Session-Expires"));
    EXPECT_EQ("", headerOf(ok, "Require"));

    sleepFor(899s);
    EXPECT_TRUE(far.hearsNothingOf("UPDATE ", 0ms));

    EXPECT_NE("", far.receive("UPDATE ", 2s));
}

TEST_F(SessionTimers, FarEndThatTakesUpdate_IsRefreshedByIt)
{
    takeCall("Allow: INVITE, ACK, UPDATE\r\nSupported: timer\r\nSession-Expires: 600;refresher=uas\r\n");
    EXPECT_EQ("600;refresher=uas", headerOf(ok, "Session-Expires"));

    for (int i = 0; i < 5; ++i) {
        sleepFor(299s);
        std::string const update = far.receive("UPDATE ", 2s);
        far.answer(update, "200 OK", "Session-Expires: 600;refresher=uac\r\n");

        EXPECT_EQ("600;refresher=uac", headerOf(update, "Session-Expires")) << "the refresher is the caller of UPDATE";
        EXPECT_EQ("0", headerOf(update, "Content-Length"));
    }
    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());
}

TEST_F(SessionTimers, FarEndThatDoesNotTakeUpdate_IsRefreshedByInvite)
{
    takeCall("Supported: timer\r\nSession-Expires: 600;refresher=uas\r\n");

    for (int i = 0; i < 3; ++i) {
        sleepFor(299s);
        std::string const invite = far.receive("INVITE ", 2s);
        far.accept(invite, "Session-Expires: 600;refresher=uac\r\nRequire: timer\r\n");

        EXPECT_EQ("600;refresher=uac", headerOf(invite, "Session-Expires"));
        EXPECT_EQ("replaces, join, timer, 100rel", headerOf(invite, "Supported"));
        EXPECT_NE(std::string::npos, invite.find("a=sendrecv")) << invite;
    }
    EXPECT_FALSE(phone.waitFor("modified 200", 1s)) << "no change that was asked for";
}

TEST_F(SessionTimers, FarEndThatRefusesUpdate_IsRefreshedByInvite)
{
    takeCall("Allow: UPDATE\r\nSupported: timer\r\nSession-Expires: 600;refresher=uas\r\n");
    sleepFor(299s);

    far.answer(far.receive("UPDATE ", 2s), "405 Method Not Allowed");

    EXPECT_NE("", far.receive("INVITE "));
}

TEST_F(SessionTimers, TwoTelephones_KeepALongCall)
{
    sip::UserAgentConfig brief;
    brief.sessionExpires = 90s;
    SipPeer one(loop, "4711", brief);
    SipPeer other(loop, "4712", brief);
    one.call("sip:4712@" + other.agent->hostPort());
    ASSERT_TRUE(one.waitFor("established")) << one.events();

    sleepFor(10min);

    EXPECT_EQ(sip::SessionState::kEstablished, one.session().state());
    EXPECT_EQ(sip::SessionState::kEstablished, other.session().state());
}

TEST_F(SessionTimers, HoldOfOurs_AsksForTheIntervalAgain)
{
    sip::Session& call = makeCall("Session-Expires: 600;refresher=uas\r\nRequire: timer\r\n");

    EXPECT_TRUE(call.modify(sip::Direction::kSendOnly));

    EXPECT_EQ("600;refresher=uas", headerOf(far.receive("INVITE "), "Session-Expires"));
}

TEST_F(SessionTimers, IntervalThatIsTooBrief_IsRefused)
{
    std::string const brief = "Supported: timer\r\nSession-Expires: 60\r\n";
    far.ask("INVITE", "4711", phone.agent->hostPort(), brief, far.description());
    std::string const refused = far.receive("SIP/2.0 422");
    EXPECT_EQ("SIP/2.0 422 Session Interval Too Small", firstLineOf(refused));
    EXPECT_EQ("90", headerOf(refused, "Min-SE"));

    takeCall("Supported: timer\r\n");
    far.request("UPDATE", ok, brief);
    EXPECT_EQ("90", headerOf(far.receive("SIP/2.0 422"), "Min-SE"));
    far.request("INVITE", ok, brief, far.description());
    EXPECT_EQ("90", headerOf(far.receive("SIP/2.0 422"), "Min-SE"));
    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());
}

TEST_F(SessionTimers, ServerThatPermitsOnlyALongerInterval_GetsThatOne)
{
    phone.call(far.uri());
    std::string const first = far.receive("INVITE ");
    far.answer(first, "422 Session Interval Too Small", "Min-SE: 3600\r\n");

    std::string const second = far.receive("INVITE ");
    far.accept(second, "Session-Expires: 3600;refresher=uac\r\n");

    EXPECT_EQ("3600", headerOf(second, "Session-Expires"));
    EXPECT_EQ("3600", headerOf(second, "Min-SE"));
    EXPECT_EQ("replaces, join, timer, 100rel", headerOf(second, "Supported"));
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(SessionTimers, CallThatIsSentAgainForALongerInterval_IsTheSameCall)
{
    sip::Session& call = phone.call(far.uri());
    std::string const first = far.receive("INVITE ");
    far.answer(first, "422 Session Interval Too Small", "Min-SE: 3600\r\n", {}, "server");
    std::string const ack = far.receive("ACK ");
    std::string const second = far.receive("INVITE ");

    EXPECT_EQ(headerOf(first, "CSeq"), std::to_string(numberOf(ack)) + " INVITE");
    EXPECT_EQ(numberOf(first) + 1, numberOf(second));
    for (char const* same : {"Call-ID", "From", "To", "Contact"}) {
        EXPECT_EQ(headerOf(first, same), headerOf(second, same));
    }
    EXPECT_NE(headerOf(first, "Via"), headerOf(second, "Via")) << "another transaction";
    far.accept(second);
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(numberOf(second), numberOf(far.receive("ACK ")));
    far.request("INFO", second, "Content-Type: text/plain\r\n", "hello");
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(far.receive("SIP/2.0 ")));
    call.hangUp();
    std::string const bye = far.receive("BYE ");
    EXPECT_EQ(numberOf(second) + 1, numberOf(bye));
    EXPECT_EQ(headerOf(first, "From"), headerOf(bye, "From"));
}

TEST_F(SessionTimers, CallThatIsSentAgainForALongerInterval_CanBeCancelledAndAuthorised)
{
    sip::Session& call = phone.call(far.uri(), [](sip::CallRequest& request) { request.account.password = "secret"; });
    far.answer(far.receive("INVITE "), "422 Session Interval Too Small", "Min-SE: 3600\r\n");
    std::string const second = far.receive("INVITE ");
    far.answer(second, "407 Proxy Authentication Required",
               "Proxy-Authenticate: Digest realm=\"pbx\", nonce=\"n\"\r\n");
    std::string const third = far.receive("INVITE ");
    EXPECT_NE("", headerOf(third, "Proxy-Authorization"));
    EXPECT_EQ("3600", headerOf(third, "Session-Expires"));
    EXPECT_EQ(headerOf(second, "Call-ID"), headerOf(third, "Call-ID"));
    EXPECT_EQ(numberOf(second) + 1, numberOf(third));
    far.answer(third, "180 Ringing");
    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();

    call.hangUp();

    EXPECT_EQ(std::to_string(numberOf(third)) + " CANCEL", headerOf(far.receive("CANCEL "), "CSeq"));
}

TEST_F(SessionTimers, ServerThatRepeatsItsRefusal_IsBelievedOnce)
{
    phone.call(far.uri());
    for (int i = 0; i < 2; ++i) {
        far.answer(far.receive("INVITE "), "422 Session Interval Too Small", "Min-SE: 3600\r\n");
    }

    EXPECT_TRUE(phone.waitFor("closed rejected 422")) << phone.events();
}

TEST_F(SessionTimers, RefreshThatIsTooBrief_IsRepeatedWithALongerInterval)
{
    makeCall("Allow: UPDATE\r\nSession-Expires: 600;refresher=uac\r\n");
    sleepFor(299s);

    far.answer(far.receive("UPDATE ", 2s), "422 Session Interval Too Small", "Min-SE: 900\r\n");

    EXPECT_EQ("900;refresher=uac", headerOf(far.receive("UPDATE "), "Session-Expires"));
}

TEST_F(SessionTimers, RefreshThatCrossesAnother_IsRepeatedAfterAWhile)
{
    makeCall("Allow: UPDATE\r\nSession-Expires: 600;refresher=uac\r\n");
    sleepFor(299s);

    far.answer(far.receive("UPDATE ", 2s), "491 Request Pending");
    EXPECT_TRUE(far.hearsNothingOf("UPDATE ", 2s));
    std::string const again = far.receive("UPDATE ", 3s);
    EXPECT_NE("", again);

    far.answer(again, "500 Server Internal Error", "Retry-After: 7\r\n");
    EXPECT_TRUE(far.hearsNothingOf("UPDATE ", 6s));
    EXPECT_NE("", far.receive("UPDATE ", 2s));
}

TEST_F(SessionTimers, FarEndThatDoesNotRefresh_EndsTheCall)
{
    takeCall("Supported: timer\r\nSession-Expires: 600\r\n");

    sleepFor(567s);
    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());

    EXPECT_TRUE(phone.waitFor("closed abandoned 408", 2s)) << phone.events();
    EXPECT_EQ("the far end does not refresh the call", phone.lastClosing.text);
    EXPECT_EQ("SIP;cause=408;text=\"the far end does not refresh the call\"", headerOf(far.receive("BYE "), "Reason"));
}

TEST_F(SessionTimers, FarEndThatRefreshes_KeepsTheCall)
{
    takeCall("Supported: timer\r\nSession-Expires: 600\r\n");
    std::string const headers = "Supported: timer\r\nSession-Expires: 600;refresher=uac\r\n";
    sleepFor(300s);
    far.request("UPDATE", ok, headers);
    EXPECT_EQ("600;refresher=uac", headerOf(far.receive("SIP/2.0 200"), "Session-Expires"));
    sleepFor(300s);
    far.request("INVITE", ok, headers, far.description());
    std::string const renewed = far.receive("SIP/2.0 200");
    far.acknowledge(renewed);

    EXPECT_EQ("600;refresher=uac", headerOf(renewed, "Session-Expires"));
    EXPECT_EQ("timer", headerOf(renewed, "Require"));
    sleepFor(500s);
    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());
}

TEST_F(SessionTimers, FarEndThatDoesNotAnswerUpdate_EndsTheCall)
{
    makeCall("Allow: UPDATE\r\nSession-Expires: 600;refresher=uac\r\n");

    ignoreRefresh("UPDATE");
}

TEST_F(SessionTimers, FarEndThatDoesNotAnswerInvite_EndsTheCall)
{
    makeCall("Session-Expires: 600;refresher=uac\r\n");

    ignoreRefresh("INVITE");
}

TEST_F(SessionTimers, FarEndThatKnowsNoSuchCall_EndsTheCall)
{
    makeCall("Allow: UPDATE\r\nSession-Expires: 600;refresher=uac\r\n");
    sleepFor(299s);

    far.answer(far.receive("UPDATE ", 2s), "481 Call/Transaction Does Not Exist");

    EXPECT_TRUE(phone.waitFor("closed abandoned 408")) << phone.events();
}

}  // namespace telephone::test

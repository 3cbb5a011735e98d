// UPDATE (RFC 3311) from a far end.
#include <gtest/gtest.h>

#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class Update : public SipTest
{
protected:
    // The far end calls; the phone answers, unless the test says otherwise.
    void call() { far.ask("INVITE", "4711", phone.agent->hostPort(), {}, far.description()); }
    void callIsAnswered()
    {
        call();
        ok = far.receive("SIP/2.0 200");
        far.acknowledge(ok);
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    }
    std::string update(std::string const& body = {}, std::string const& headers = {})
    {
        far.request("UPDATE", ok, headers, body);
        return far.receive("SIP/2.0 ");
    }
    std::string held() const { return far.description() + "a=sendonly\r\n"; }

    SipPeer phone{loop};
    ScriptedEnd far{loop};
    std::string ok;
};

TEST_F(Update, WithoutAnOffer_IsAccepted)
{
    callIsAnswered();

    std::string const answer = update();

    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(answer));
    EXPECT_EQ("2 UPDATE", headerOf(answer, "CSeq"));
    EXPECT_EQ("<sip:4711@" + phone.agent->hostPort() + ">", headerOf(answer, "Contact"));
    EXPECT_TRUE(answer.ends_with("Content-Length: 0\r\n\r\n")) << answer;
}

TEST_F(Update, WithAnOfferThatHolds_HoldsTheCall)
{
    callIsAnswered();

    std::string const answer = update(held());

    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(answer));
    EXPECT_NE(std::string::npos, answer.find("a=recvonly")) << answer;
    EXPECT_TRUE(phone.waitFor("held")) << phone.events();
}

TEST_F(Update, WithANewContact_MovesTheFarEnd)
{
    callIsAnswered();
    ScriptedEnd elsewhere(loop);
    std::string moved = far.inDialog("UPDATE", ok, 2);
    moved.replace(moved.find(far.uri(), moved.find("Contact:")), far.uri().size(), elsewhere.uri());

    far.send(moved);
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(far.receive("SIP/2.0 ")));
    phone.session().hangUp();

    EXPECT_NE("", elsewhere.receive("BYE "));
}

TEST_F(Update, WithAnotherPrecedence_IsReportedOnce)
{
    callIsAnswered();

    update({}, "Resource-Priority: dsn.flash\r\n");
    EXPECT_TRUE(phone.waitFor("precedence dsn.flash")) << phone.events();

    update({}, "Resource-Priority: dsn.flash\r\n");
    EXPECT_FALSE(phone.waitFor("precedence dsn.flash", 1s));
}

TEST_F(Update, WhoseOfferCrossesOurs_IsPending)
{
    callIsAnswered();
    EXPECT_TRUE(phone.session().modify(sip::Direction::kSendOnly));
    std::string const reInvite = far.receive("INVITE ");

    EXPECT_EQ("SIP/2.0 491 Request Pending", firstLineOf(update(held())));
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(update())) << "one without an offer crosses nothing";

    far.accept(reInvite);
    EXPECT_TRUE(phone.waitFor("modified 200")) << phone.events();
}

TEST_F(Update, WhoseOfferComesBeforeOurAnswer_IsAskedToComeLater)
{
    phone.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    call();
    ok = far.receive("SIP/2.0 180");

    std::string const answer = update(held());

    EXPECT_EQ("SIP/2.0 500 Server Internal Error", firstLineOf(answer));
    EXPECT_LE(std::stoi(headerOf(answer, "Retry-After")), 10);
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(update()));
}

TEST_F(Update, WhoseOfferMeetsOurUnansweredOne_IsPending)
{
    callIsAnswered();
    far.request("INVITE", ok);
    std::string const offer = far.receive("SIP/2.0 200");

    EXPECT_EQ("SIP/2.0 491 Request Pending", firstLineOf(update(held())));

    far.acknowledge(offer, far.description());
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(update(held())));
}

TEST_F(Update, WithoutACommonCodec_IsRefusedAndChangesNothing)
{
    callIsAnswered();
    std::string const offer = "v=0\r\no=- 1 2 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
                              "m=audio 4000 RTP/AVP 97\r\na=rtpmap:97 XYZ/8000\r\n";

    EXPECT_EQ("SIP/2.0 488 Not Acceptable Here", firstLineOf(update(offer)));
    EXPECT_EQ(sip::SessionState::kEstablished, phone.session().state());
}

TEST_F(Update, OlderThanTheLastRequest_IsRefused)
{
    callIsAnswered();
    far.send(far.inDialog("UPDATE", ok, 7));
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(far.receive("SIP/2.0 ")));

    far.send(far.inDialog("UPDATE", ok, 6));
    EXPECT_EQ("SIP/2.0 500 Server Internal Error", firstLineOf(far.receive("SIP/2.0 ")));
}

TEST_F(Update, OfNoCall_DoesNotExist)
{
    callIsAnswered();
    ok.replace(ok.find("tag=far"), 7, "tag=not");

    far.request("UPDATE", ok);

    EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", firstLineOf(far.receive("SIP/2.0 ")));
}

}  // namespace telephone::test

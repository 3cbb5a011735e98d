// An INVITE that a proxy sends to several telephones, of which more than one answers.
#include <gtest/gtest.h>

#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class ForkedAnswers : public SipTest
{
protected:
    // A call that the far end has answered with the tag "first".
    sip::Session& answeredByFirst()
    {
        sip::Session& call = phone.call(far.uri());
        invite = far.receive("INVITE ");
        far.accept(invite, {}, "first");
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
        EXPECT_NE("", far.receive("ACK "));
        return call;
    }
    static bool isTo(std::string const& message, std::string const& tag)
    {
        return headerOf(message, "To").ends_with(";tag=" + tag);
    }

    SipPeer phone{loop};
    ScriptedEnd far{loop};
    std::string invite;
};

TEST_F(ForkedAnswers, SecondTelephoneThatAnswers_GetsAckAndBye)
{
    sip::Session& call = answeredByFirst();

    far.accept(invite, {}, "second");

    std::string const ack = far.receive("ACK ");
    EXPECT_TRUE(isTo(ack, "second")) << ack;
    EXPECT_EQ(std::to_string(numberOf(invite)) + " ACK", headerOf(ack, "CSeq"));
    std::string const bye = far.receive("BYE ");
    EXPECT_TRUE(isTo(bye, "second")) << bye;
    EXPECT_EQ(std::to_string(numberOf(invite) + 1) + " BYE", headerOf(bye, "CSeq"));
    EXPECT_EQ(headerOf(invite, "Call-ID"), headerOf(bye, "Call-ID"));
    EXPECT_EQ(headerOf(invite, "From"), headerOf(bye, "From"));
    far.answer(bye, "200 OK");
    EXPECT_EQ(sip::SessionState::kEstablished, call.state());
    call.hangUp();
    EXPECT_TRUE(isTo(far.receive("BYE "), "first"));
}

TEST_F(ForkedAnswers, RepeatedSecondAnswer_GetsAckButNoSecondBye)
{
    answeredByFirst();
    far.accept(invite, {}, "second");
    far.answer(far.receive("BYE "), "200 OK");

    far.accept(invite, {}, "second");

    EXPECT_TRUE(isTo(far.receive("ACK "), "second"));
    EXPECT_TRUE(far.hearsNothingOf("BYE ", 5s));
}

TEST_F(ForkedAnswers, RepeatedFirstAnswer_GetsAckAlone)
{
    answeredByFirst();

    far.accept(invite, {}, "first");

    EXPECT_TRUE(isTo(far.receive("ACK "), "first"));
    EXPECT_TRUE(far.hearsNothingOf("BYE ", 5s));
}

TEST_F(ForkedAnswers, SecondAnswerThroughProxies_IsEndedThroughThem)
{
    answeredByFirst();
    std::string const near = "<sip:" + far.hostPort() + ";lr>";

    far.accept(invite, "Record-Route: <sip:192.0.2.1;lr>, " + near + "\r\n", "second");

    std::string const bye = far.receive("BYE ");
    EXPECT_EQ((std::vector<std::string>{near, "<sip:192.0.2.1;lr>"}), headersOf(bye, "Route"));
}

TEST_F(ForkedAnswers, AnswersThatCrossOurCancel_AllGetAckAndBye)
{
    sip::Session& call = phone.call(far.uri());
    invite = far.receive("INVITE ");
    far.answer(invite, "180 Ringing", {}, {}, "first");
    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();
    call.hangUp();
    EXPECT_NE("", far.receive("CANCEL "));

    far.accept(invite, {}, "first");
    std::string const firstBye = far.receive("BYE ");
    far.accept(invite, {}, "second");
    std::string const secondBye = far.receive("BYE ");

    EXPECT_TRUE(isTo(firstBye, "first")) << firstBye;
    EXPECT_TRUE(isTo(secondBye, "second")) << secondBye;
}

}  // namespace telephone::test

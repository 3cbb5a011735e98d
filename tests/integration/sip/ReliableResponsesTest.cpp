// Responses before the answer that are acknowledged (RFC 3262), in both parts of a call.
#include <gtest/gtest.h>

#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class ReliableResponses : public SipTest
{
protected:
    static sip::UserAgentConfig with(sip::ReliableUse use)
    {
        sip::UserAgentConfig config;
        config.reliableResponses = use;
        return config;
    }

    // --- the phone calls
    void respondReliably(std::string const& status, std::string const& tag, unsigned number,
                         std::string const& body = {})
    {
        far.answer(invite, status, "Require: 100rel\r\nRSeq: " + std::to_string(number) + "\r\n", body, tag);
    }
    std::string takePrack()
    {
        std::string const prack = far.receive("PRACK ");
        far.answer(prack, "200 OK");
        return prack;
    }
    sip::Session& makeCall()
    {
        sip::Session& call = phone.call(far.uri());
        invite = far.receive("INVITE ");
        return call;
    }

    // --- the far end calls
    void takeCall(std::string const& headers, std::string const& body, SipPeer& called)
    {
        far.ask("INVITE", "4711", called.agent->hostPort(), headers, body);
    }
    std::string prack(std::string const& response, std::string const& body = {})
    {
        far.request("PRACK", response, "RAck: " + headerOf(response, "RSeq") + " 1 INVITE\r\n", body);
        return far.receive("SIP/2.0 ");
    }
    void whenCalled(std::function<void(sip::Session&)> conduct)
    {
        phone.whenCalled = [conduct = std::move(conduct)](SipPeer&, sip::Session& session) { conduct(session); };
    }

    SipPeer phone{loop};
    ScriptedEnd far{loop};
    std::string invite;
};

// --- the phone calls

TEST_F(ReliableResponses, OfTheFarEnd_IsAcknowledged)
{
    sip::Session& call = makeCall();

    respondReliably("180 Ringing", "one", 5);
    std::string const prack = takePrack();

    EXPECT_EQ("5 " + std::to_string(numberOf(invite)) + " INVITE", headerOf(prack, "RAck"));
    EXPECT_TRUE(headerOf(prack, "To").ends_with(";tag=one")) << prack;
    EXPECT_EQ(numberOf(invite) + 1, numberOf(prack));
    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();
    far.accept(invite, {}, "one");
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    call.hangUp();
    EXPECT_EQ(numberOf(prack) + 1, numberOf(far.receive("BYE "))) << "each number is used once";
}

TEST_F(ReliableResponses, ThatIsRepeated_CountsOnce)
{
    makeCall();
    respondReliably("180 Ringing", "one", 5);
    takePrack();
    EXPECT_TRUE(phone.waitFor("progress 180")) << phone.events();

    respondReliably("180 Ringing", "one", 5);

    EXPECT_TRUE(far.hearsNothingOf("PRACK ", 1s));
    EXPECT_FALSE(phone.waitFor("progress 180", 0ms));
}

TEST_F(ReliableResponses, BeforeWhichOneIsMissing_IsNotRead)
{
    makeCall();
    respondReliably("180 Ringing", "one", 5);
    takePrack();

    respondReliably("183 Session Progress", "one", 7);
    EXPECT_TRUE(far.hearsNothingOf("PRACK ", 1s));
    EXPECT_FALSE(phone.waitFor("progress 183", 0ms));

    respondReliably("183 Session Progress", "one", 6);
    EXPECT_EQ("6 " + std::to_string(numberOf(invite)) + " INVITE", headerOf(takePrack(), "RAck"));
}

TEST_F(ReliableResponses, OfTwoTelephones_AreAcknowledgedToEach)
{
    sip::Session& call = makeCall();

    respondReliably("180 Ringing", "one", 5);
    EXPECT_TRUE(headerOf(takePrack(), "To").ends_with(";tag=one"));
    respondReliably("183 Session Progress", "two", 9);
    EXPECT_TRUE(headerOf(takePrack(), "To").ends_with(";tag=two"));
    respondReliably("180 Ringing", "two", 10);
    std::string const last = takePrack();
    far.accept(invite, {}, "two");
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    call.hangUp();

    EXPECT_LT(numberOf(last), numberOf(far.receive("BYE ")));
}

TEST_F(ReliableResponses, WithADescription_AreHeardBeforeTheAnswer)
{
    makeCall();

    respondReliably("183 Session Progress", "one", 1, far.description());

    takePrack();
    EXPECT_TRUE(phone.waitFor("progress 183 early")) << phone.events();
    far.answer(invite, "200 OK", {}, {}, "one");
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ReliableResponses, UpdateBeforeTheAnswer_IsAccepted)
{
    makeCall();
    respondReliably("180 Ringing", "one", 5);
    std::string const prack = takePrack();

    far.request("UPDATE", prack);

    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(far.receive("SIP/2.0 ")));
    far.accept(invite, {}, "one");
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

// --- the far end calls

TEST_F(ReliableResponses, ThatTheCallerDemands_AreRepeatedUntilPrack)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.ring()); });
    takeCall("Require: 100rel\r\n", far.description(), phone);

    std::string const first = far.receive("SIP/2.0 180");
    EXPECT_EQ("100rel", headerOf(first, "Require"));
    EXPECT_TRUE(far.hearsNothingOf("SIP/2.0 180", 490ms));
    EXPECT_EQ(headerOf(first, "RSeq"), headerOf(far.receive("SIP/2.0 180", 100ms), "RSeq"));
    EXPECT_TRUE(far.hearsNothingOf("SIP/2.0 180", 900ms));
    EXPECT_NE("", far.receive("SIP/2.0 180", 200ms));

    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(prack(first)));
    EXPECT_TRUE(far.hearsNothingOf("SIP/2.0 180", 10s));
    EXPECT_TRUE(phone.session().answer());
    EXPECT_NE("", far.receive("SIP/2.0 200"));
}

TEST_F(ReliableResponses, ThatTheCallerOnlySupports_AreThoseWithADescription)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.ring()); });
    takeCall("Supported: 100rel\r\n", far.description(), phone);
    EXPECT_EQ("", headerOf(far.receive("SIP/2.0 180"), "RSeq"));

    EXPECT_TRUE(phone.session().progress());

    EXPECT_NE("", headerOf(far.receive("SIP/2.0 183"), "RSeq"));
}

TEST_F(ReliableResponses, PrackOfAnotherResponse_DoesNotExist)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.ring()); });
    takeCall("Require: 100rel\r\n", far.description(), phone);
    std::string const ringing = far.receive("SIP/2.0 180");

    far.request("PRACK", ringing, "RAck: 1 7 INVITE\r\n");

    EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", firstLineOf(far.receive("SIP/2.0 4")));
    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(prack(ringing)));
}

TEST_F(ReliableResponses, CallerThatNeverAcknowledges_IsRefused)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.ring()); });
    takeCall("Require: 100rel\r\n", far.description(), phone);

    EXPECT_TRUE(far.hearsNothingOf("SIP/2.0 5", 31900ms));
    EXPECT_EQ("SIP/2.0 504 Server Time-out", firstLineOf(far.receive("SIP/2.0 5", 200ms)));
    EXPECT_TRUE(phone.waitFor("closed timeout 408")) << phone.events();
}

TEST_F(ReliableResponses, Answer_WaitsForTheAcknowledgementOfADescription)
{
    whenCalled([](sip::Session& session) {
        EXPECT_TRUE(session.progress());
        EXPECT_TRUE(session.answer());
    });
    takeCall("Supported: 100rel\r\n", far.description(), phone);
    std::string const progress = far.receive("SIP/2.0 183");
    EXPECT_TRUE(far.hearsNothingOf("SIP/2.0 200", 400ms));

    EXPECT_EQ("2 PRACK", headerOf(prack(progress), "CSeq"));

    std::string const ok = far.receive("SIP/2.0 200");
    EXPECT_EQ("1 INVITE", headerOf(ok, "CSeq"));
    EXPECT_EQ("0", headerOf(ok, "Content-Length")) << "the description is settled";
    far.acknowledge(ok);
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(ReliableResponses, CancelWhileTheAnswerWaits_CancelsTheCall)
{
    whenCalled([](sip::Session& session) {
        EXPECT_TRUE(session.progress());
        EXPECT_TRUE(session.answer());
    });
    std::string const call =
        far.ask("INVITE", "4711", phone.agent->hostPort(), "Supported: 100rel\r\n", far.description());
    EXPECT_NE("", far.receive("SIP/2.0 183"));

    std::string cancel = "CANCEL" + call.substr(6, call.find("Contact:") - 6) + "Content-Length: 0\r\n\r\n";
    cancel.replace(cancel.find("CSeq: 1 INVITE"), 14, "CSeq: 1 CANCEL");
    far.send(cancel);

    EXPECT_NE("", far.receive("SIP/2.0 487"));
    EXPECT_TRUE(phone.waitFor("closed cancelled")) << phone.events();
}

TEST_F(ReliableResponses, CallWithoutAnOffer_GetsOneBeforeTheAnswer)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.progress()); });
    takeCall("Supported: 100rel\r\n", {}, phone);
    std::string const progress = far.receive("SIP/2.0 183");
    EXPECT_NE(std::string::npos, progress.find("m=audio ")) << progress;

    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(prack(progress, far.description())));
    EXPECT_TRUE(phone.session().answer());

    std::string const ok = far.receive("SIP/2.0 200");
    EXPECT_EQ("0", headerOf(ok, "Content-Length"));
    far.acknowledge(ok);
    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(sip::Direction::kSendReceive, phone.session().audio().direction());
}

TEST_F(ReliableResponses, PrackWithoutTheAnswerToOurOffer_EndsTheCall)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.progress()); });
    takeCall("Supported: 100rel\r\n", {}, phone);

    EXPECT_EQ("SIP/2.0 488 Not Acceptable Here", firstLineOf(prack(far.receive("SIP/2.0 183"))));

    EXPECT_TRUE(phone.waitFor("closed failed 488")) << phone.events();
}

TEST_F(ReliableResponses, PrackWithAnOffer_IsAnswered)
{
    whenCalled([](sip::Session& session) { EXPECT_TRUE(session.progress()); });
    takeCall("Supported: 100rel\r\n", far.description(), phone);

    std::string const answer = prack(far.receive("SIP/2.0 183"), far.description() + "a=sendonly\r\n");

    EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(answer));
    EXPECT_NE(std::string::npos, answer.find("a=recvonly")) << answer;
}

TEST_F(ReliableResponses, SecondOne_WaitsForThePrackOfTheFirst)
{
    whenCalled([](sip::Session& session) {
        EXPECT_TRUE(session.ring());
        EXPECT_TRUE(session.progress());
    });
    takeCall("Require: 100rel\r\n", far.description(), phone);
    std::string const first = far.receive("SIP/2.0 180");
    EXPECT_TRUE(far.hearsNothingOf("SIP/2.0 183", 400ms));

    prack(first);

    std::string const second = far.receive("SIP/2.0 183");
    EXPECT_EQ(std::stoul(headerOf(first, "RSeq")) + 1, std::stoul(headerOf(second, "RSeq")));
}

// --- settings

TEST_F(ReliableResponses, WhereTheyAreRequired_CallersWithoutThemAreRefused)
{
    SipPeer strict(loop, "4711", with(sip::ReliableUse::kRequired));
    strict.call(far.uri());
    EXPECT_EQ("100rel", headerOf(far.receive("INVITE "), "Require"));

    takeCall({}, far.description(), strict);

    std::string const refused = far.receive("SIP/2.0 4");
    EXPECT_EQ("SIP/2.0 421 Extension Required", firstLineOf(refused));
    EXPECT_EQ("100rel", headerOf(refused, "Require"));
}

TEST_F(ReliableResponses, WhereTheyAreOff_CallersThatDemandThemAreRefused)
{
    SipPeer plain(loop, "4711", with(sip::ReliableUse::kNone));

    takeCall("Require: 100rel\r\n", far.description(), plain);

    std::string const refused = far.receive("SIP/2.0 4");
    EXPECT_EQ("SIP/2.0 420 Bad Extension", firstLineOf(refused));
    EXPECT_EQ("100rel", headerOf(refused, "Unsupported"));
}

}  // namespace telephone::test

// Engines at the exchange: registration, the numbers with a behaviour, and operations on two calls.
#include "ExchangePhones.h"

namespace telephone::test {

namespace {

using exchange::Exchange;

class AtTheExchange : public ::testing::Test
{
protected:
    Exchange exchange_{eventLoop(), {}};
    EnginePhone phone_{phoneAt(exchange_, {"4711", "4712"})};

    void SetUp() override
    {
        ASSERT_TRUE(eventually([this] {
            return phone_.engine().registrations().isRegistered(1) && phone_.engine().registrations().isRegistered(2);
        }));
        phone_.events().rest();
    }

    CallEngine& engine() { return phone_.engine(); }

    // A call to the echo, connected.
    void callEcho(int callID)
    {
        std::string const id = std::to_string(callID);
        ASSERT_TRUE(engine().outgoing().make(1, 0, callID, "100"));
        ASSERT_TRUE(phone_.events().waitFor("state 4711 " + id + " connected normal 100"));
    }
};

}  // namespace

TEST(Registration, TwoLines_AreTold)
{
    Exchange exchange(eventLoop(), {});

    EnginePhone phone(phoneAt(exchange, {"4711", "4712"}));

    phone.expect({"registration 4711 0 yes 0", "registration 4712 0 yes 0"});
    EXPECT_TRUE(exchange.isRegistered("4711"));
    phone.engine().deactivate();
    phone.expect({"registration 4711 0 no 4", "registration 4712 0 no 4"});
    EXPECT_TRUE(eventually([&exchange] { return !exchange.isRegistered("4711"); }));
}

TEST(Registration, WrongPassword_IsToldAsUnauthorised)
{
    Exchange exchange(eventLoop(), {});
    EnginePhone::Options options = phoneAt(exchange, {"4711"});
    options.password = "wrong";

    EnginePhone phone(options);

    phone.expect({"registration 4711 0 no 1"});
}

TEST(Registration, RegistrarThatGoesAwayAndReturns_IsFoundAgain)
{
    auto exchange = std::make_unique<Exchange>(eventLoop(), exchange::ExchangeConfig{});
    EnginePhone phone(phoneAt(*exchange, {"4711"}));
    phone.expect({"registration 4711 0 yes 0"});
    exchange::ExchangeConfig again;
    again.port = exchange->port();
    exchange.reset();

    phone.engine().deactivate();
    phone.engine().activate();
    phone.expect({"registration 4711 0 no 4", "registration 4711 0 no 3"});
    exchange = std::make_unique<Exchange>(eventLoop(), again);

    phone.expect({"registration 4711 0 yes 0"});
}

TEST_F(AtTheExchange, BusyNumber_EndsBusy)
{
    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "101"));

    phone_.expect({"state 4711 1 dialling normal 101", "state 4711 1 busy busy 101"});
    EXPECT_FALSE(engine().call(1));
}

TEST_F(AtTheExchange, DecliningNumber_EndsRefused)
{
    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "104"));

    phone_.expect({"state 4711 1 dialling normal 104", "state 4711 1 failed refused 104"});
}

TEST_F(AtTheExchange, UnknownNumber_EndsNotFound)
{
    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "555"));

    phone_.expect({"state 4711 1 dialling normal 555", "state 4711 1 failed not found 555"});
}

TEST_F(AtTheExchange, NumberThatHangsUp_EndsIdle)
{
    ASSERT_TRUE(exchange_.define("110", "ring, answer 50ms, hang-up"));

    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "110"));

    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 connected normal 110"));
    phone_.expect({"state 4711 1 idle normal 110"});
}

TEST_F(AtTheExchange, NumberThatHolds_IsSeenRemotelyHeld)
{
    ASSERT_TRUE(exchange_.define("110", "ring, answer 50ms, hold 50ms, retrieve"));

    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "110"));

    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 connected normal 110"));
    phone_.expect({"state 4711 1 remotely held normal 110", "state 4711 1 connected normal 110"});
}

TEST_F(AtTheExchange, NumberThatCallsBack_ComesIn)
{
    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "199"));

    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 idle normal 199"));
    phone_.expect({"incoming 4711 1001 199 - 1 - 0", "state 4711 1001 ringing normal 199"});
    ASSERT_TRUE(engine().answer(1001));
    phone_.expect({"state 4711 1001 connected normal 199"});
}

TEST_F(AtTheExchange, Consultation_HoldsTheFirstCall)
{
    callEcho(1);

    ASSERT_TRUE(engine().outgoing().make(1, 0, 2, "100", CallPurpose::kConsultation));

    phone_.expect({"state 4711 2 dialling normal 100", "held 4711 1"});
    ASSERT_TRUE(phone_.events().waitFor("state 4711 2 connected normal 100"));
    EXPECT_TRUE(engine().call(1)->heldForConsultation);
    EXPECT_TRUE(engine().call(2)->consultation);
}

TEST_F(AtTheExchange, Alternate_ExchangesTheTwoCalls)
{
    callEcho(1);
    callEcho(2);
    phone_.events().rest();

    ASSERT_TRUE(engine().established().alternate(1));

    phone_.expect({"held 4711 2", "retrieved 4711 1 100", "success 4711 1 alternate"});
    EXPECT_EQ(engine().activeCall()->callID, 1);
    ASSERT_TRUE(engine().established().alternate(1));
    phone_.expect({"held 4711 1", "retrieved 4711 2 100", "success 4711 2 alternate"});
}

TEST_F(AtTheExchange, AnswerOfASecondCall_HoldsTheFirst)
{
    callEcho(1);
    ASSERT_TRUE(exchange_.callNumber("100", "4712"));
    phone_.expect({"incoming 4712 1001 100 - 1 - 0", "state 4712 1001 ringing normal 100"});

    ASSERT_TRUE(engine().answer(1001));

    phone_.expect({"held 4711 1", "state 4712 1001 connected normal 100"});
}

TEST_F(AtTheExchange, SecondCallOnALineWithAssociatedCalls_IsTold)
{
    engine().incoming().setAssociatedCalls(true);
    callEcho(1);

    ASSERT_TRUE(exchange_.callNumber("100", "4711"));

    phone_.expect({"incoming 4711 1001 100 - 1 - 0", "associated 4711 1 1001", "state 4711 1001 ringing normal 100"});
}

TEST_F(AtTheExchange, Conference_JoinsBothAndTellsIt)
{
    callEcho(1);
    callEcho(2);
    phone_.events().rest();

    ASSERT_TRUE(engine().joined().conference(1));

    phone_.expect({"retrieved 4711 1 100", "state 4711 1 conference normal 100", "state 4711 2 conference normal 100",
                   "success 4711 1 conference", "conference 4711 1", "conference 4711 2"});
    std::string const number = "sip:100@" + exchange_.hostPort();
    std::string const own = "sip:4711@" + exchange_.hostPort();
    EXPECT_EQ(phone_.events().lastDocument(),
              "<conference-info xmlns=\"urn:ietf:params:xml:ns:conference-info\" entity=\"" + own +
                  "\" state=\"full\" version=\"1\"><conference-state><user-count>3</user-count><active>true</active>"
                  "</conference-state><users><user entity=\"" +
                  own + "\" state=\"full\"><endpoint entity=\"" + own +
                  "\"><status>connected</status></endpoint></user><user entity=\"" + number +
                  "\" state=\"full\"><endpoint entity=\"" + number +
                  "\"><status>connected</status></endpoint></user><user entity=\"" + number +
                  "\" state=\"full\"><endpoint entity=\"" + number +
                  "\"><status>connected</status></endpoint></user></users></conference-info>");
}

TEST_F(AtTheExchange, ConferencePartyThatLeaves_LeavesAnOrdinaryCall)
{
    callEcho(1);
    callEcho(2);
    ASSERT_TRUE(engine().joined().conference(1));
    ASSERT_TRUE(phone_.events().waitFor("conference 4711 2"));

    ASSERT_TRUE(engine().clear(2));

    phone_.expect({"state 4711 2 idle normal 100", "conference 4711 1", "party 4711 1 100 1 0",
                   "state 4711 1 connected normal 100"});
    std::string const document = phone_.events().lastDocument();
    EXPECT_NE(document.find(" state=\"full\" version=\"2\"><conference-state><user-count>2</user-count>"
                            "<active>false</active></conference-state>"),
              std::string::npos)
        << document;
}

TEST_F(AtTheExchange, ConferenceWithAPartyThatHolds_SaysSo)
{
    ASSERT_TRUE(exchange_.define("110", "ring, answer, hold"));
    ASSERT_TRUE(engine().outgoing().make(1, 0, 1, "110"));
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 remotely held normal 110"));
    callEcho(2);

    ASSERT_TRUE(engine().joined().conference(2));

    ASSERT_TRUE(phone_.events().waitFor("conference 4711 2"));
    std::string const document = phone_.events().lastDocument();
    EXPECT_NE(document.find("<endpoint entity=\"sip:110@" + exchange_.hostPort() + "\"><status>on-hold</status>"),
              std::string::npos)
        << document;
    EXPECT_NE(document.find("<endpoint entity=\"sip:100@" + exchange_.hostPort() + "\"><status>connected</status>"),
              std::string::npos)
        << document;
}

TEST_F(AtTheExchange, ThirdCall_JoinsTheConferenceThatWasHeldForIt)
{
    callEcho(1);
    callEcho(2);
    ASSERT_TRUE(engine().joined().conference(1));
    ASSERT_TRUE(phone_.events().waitFor("conference 4711 2"));
    callEcho(3);
    phone_.events().rest();

    ASSERT_TRUE(engine().joined().conference(1));

    ASSERT_TRUE(phone_.events().waitFor("conference 4711 3"));
    for (int const call : {1, 2, 3}) {
        EXPECT_EQ(engine().call(call)->state, sfiCallStateConference) << call;
    }
    EXPECT_NE(phone_.events().lastDocument().find("<user-count>4</user-count><active>true</active>"),
              std::string::npos);
    ASSERT_TRUE(engine().clear(2));
    ASSERT_TRUE(phone_.events().waitFor("conference 4711 3"));
    EXPECT_EQ(engine().call(1)->state, sfiCallStateConference);
    EXPECT_EQ(engine().call(3)->state, sfiCallStateConference);
}

TEST_F(AtTheExchange, AttendedTransfer_GoesToTheCallThatWasHeldLast)
{
    callEcho(1);
    callEcho(2);
    ASSERT_TRUE(engine().outgoing().make(2, 0, 3, "100"));
    ASSERT_TRUE(phone_.events().waitFor("state 4712 3 connected normal 100"));
    phone_.events().rest();

    ASSERT_TRUE(engine().joined().attendedTransfer(3));

    phone_.expect({"state 4712 3 transferring normal 100", "state 4711 2 transferring normal 100"});
    EXPECT_EQ(engine().call(1)->state, sfiCallStateHeld);
}

TEST_F(AtTheExchange, ConferenceOnHold_IsHeldAndRetrievedAsAWhole)
{
    callEcho(1);
    callEcho(2);
    ASSERT_TRUE(engine().joined().conference(1));
    ASSERT_TRUE(phone_.events().waitFor("conference 4711 2"));

    ASSERT_TRUE(engine().established().hold(2));
    ASSERT_TRUE(eventually(
        [this] { return engine().call(1)->state == sfiCallStateHeld && engine().call(2)->state == sfiCallStateHeld; }));
    ASSERT_TRUE(engine().established().retrieve(1));

    EXPECT_TRUE(eventually([this] {
        return engine().call(1)->state == sfiCallStateConference && engine().call(2)->state == sfiCallStateConference;
    }));
}

TEST_F(ThreePhones, AnswerAndClearAtTheSameTime_EndBothSides)
{
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4722"));
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 ringing normal 4711"));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1 remote ringing normal 4722"));

    {
        std::lock_guard const guard(eventLoop());
        ASSERT_TRUE(bob_.engine().answer(1001));
        ASSERT_TRUE(alice_.engine().clear(1));
    }

    EXPECT_TRUE(eventually([this] { return alice_.engine().calls().empty() && bob_.engine().calls().empty(); }));
}

TEST_F(ThreePhones, ConsultationWhoseFirstCallEndsDuringTheHold_GoesOn)
{
    connectAliceAndBob();
    // The far end clears the call while the hold is under way.
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 2, "4733", CallPurpose::kConsultation));
    ASSERT_TRUE(bob_.engine().clear(1001));

    EXPECT_TRUE(alice_.events().waitFor("state 4711 1 idle normal 4722"));
    EXPECT_TRUE(carol_.events().waitFor("state 4733 1001 ringing normal 4711"));
}

TEST_F(ThreePhones, CallIdsOfIncomingCalls_GoUpAndAreNotUsedTwice)
{
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4733"));
    ASSERT_TRUE(carol_.events().waitFor("state 4733 1001 ringing normal 4711"));
    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, "4733"));

    EXPECT_TRUE(carol_.events().waitFor("state 4733 1002 ringing normal 4722"));
}

}  // namespace telephone::test

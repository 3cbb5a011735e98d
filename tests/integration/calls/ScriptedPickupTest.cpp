// A directed pickup that looks for the ringing call by its dialogs (RFC 4235): the number whose call it is, and the
// caller, are written message by message.
#include "telephone/base/Touched.h"
#include "tests/helpers/EnginePhone.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

// Call 5 is to pick up what rings at the far end.
class ScriptedPickup : public ::testing::Test
{
protected:
    void SetUp() override
    {
        keepTouched();
        ASSERT_TRUE(phone_.engine().pickups().directed(1, 0, 5, far_.uri()));
        subscribe_ = far_.receive("SUBSCRIBE");
        phone_.expect({"state 4711 5 dialling normal far"});
    }

    // The far end tells one dialog, and that its subscription goes on or ends.
    void tellDialog(std::string const& dialog, std::string const& subscription = "active;expires=60")
    {
        far_.answer(subscribe_, "200 OK", "Expires: 60\r\n");
        far_.request("NOTIFY", subscribe_,
                     "Event: dialog\r\nSubscription-State: " + subscription +
                         "\r\nContent-Type: application/dialog-info+xml\r\n",
                     "<?xml version=\"1.0\"?><dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"0\" "
                     "state=\"full\" entity=\"" +
                         far_.uri() + "\">" + dialog + "</dialog-info>");
        EXPECT_EQ(firstLineOf(far_.receive("SIP/2.0")), "SIP/2.0 200 OK");
    }

    std::string callerUri() const { return "sip:ann@" + caller_.hostPort(); }

    // A call of Ann that rings at Bob.
    std::string ringing() const
    {
        return "<dialog id=\"1\" call-id=\"c1\" local-tag=\"lt\" remote-tag=\"rt\" direction=\"recipient\">"
               "<state>early</state><local><identity display=\"Bob\">sip:bob@example.org</identity></local>"
               "<remote><identity display=\"Ann\">sip:ann@example.org</identity><target uri=\"" +
               callerUri() + "\"/></remote></dialog>";
    }

    EnginePhone phone_{EnginePhone::optionsOf("4711")};
    ScriptedEnd far_{eventLoop()};
    ScriptedEnd caller_{eventLoop()};
    std::string subscribe_;
};

std::string with(std::string text, std::string const& what, std::string const& other)
{
    return text.replace(text.find(what), what.size(), other);
}

}  // namespace

TEST_F(ScriptedPickup, Search_AsksForTheDialogsOfTheNumberForAMinute)
{
    EXPECT_EQ(firstLineOf(subscribe_), "SUBSCRIBE " + far_.uri() + " SIP/2.0");
    EXPECT_EQ(headerOf(subscribe_, "Event"), "dialog");
    EXPECT_EQ(headerOf(subscribe_, "Expires"), "60");
}

TEST_F(ScriptedPickup, SearchThatIsNotAnswered_FailsAfterTwoSeconds)
{
    EXPECT_EQ(phone_.events().next(1900ms), "nothing came");

    EXPECT_EQ(phone_.events().next(200ms), "failed 4711 5 directed pickup 4");
    phone_.expect({"state 4711 5 failed not found far"});
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("pickup is not answered"));
    EXPECT_TRUE(phone_.engine().calls().empty());
}

TEST_F(ScriptedPickup, SearchThatIsRefused_HasFailedWithItsReason)
{
    struct Case
    {
        char const* status;
        char const* failure;
        char const* end;
    };
    for (Case const& each :
         {Case{"403 Forbidden", "failed 4711 5 directed pickup 1", "failed refused"},
          Case{"408 Request Timeout", "failed 4711 5 directed pickup 4", "failed not found"},
          Case{"480 Temporarily Unavailable", "failed 4711 5 directed pickup 2", "failed unavailable"},
          Case{"404 Not Found", "failed 4711 5 directed pickup 4", "failed not found"}}) {
        far_.answer(subscribe_, each.status);
        phone_.expect({each.failure, std::string("state 4711 5 ") + each.end + " far"});
        EXPECT_EQ(phone_.events().next(3s), "nothing came") << each.status;
        ASSERT_TRUE(phone_.engine().pickups().directed(1, 0, 5, far_.uri()));
        subscribe_ = far_.receive("SUBSCRIBE");
        phone_.expect({"state 4711 5 dialling normal far"});
    }
}

TEST_F(ScriptedPickup, SearchThatTheNumberEnds_HasFailedAsUnavailable)
{
    tellDialog("", "terminated;reason=noresource");

    phone_.expect({"failed 4711 5 directed pickup 2", "state 4711 5 failed unavailable far"});
}

TEST_F(ScriptedPickup, RingingCall_IsTakenFromItsCallerWithReplaces)
{
    tellDialog(ringing());

    std::string const invite = caller_.receive("INVITE");
    EXPECT_EQ(firstLineOf(invite), "INVITE " + callerUri() + " SIP/2.0");
    EXPECT_EQ(headerOf(invite, "Replaces"), "c1;to-tag=rt;from-tag=lt;early-only");
    caller_.accept(invite, "", "ann");
    EXPECT_TRUE(phone_.events().waitFor("success 4711 5 directed pickup"));
    sfiReplacesDisplay const display = phone_.events().lastReplaces();
    EXPECT_STREQ(display.callID, "c1");
    EXPECT_STREQ(display.toTag, "rt");
    EXPECT_STREQ(display.fromTag, "lt");
    EXPECT_STREQ(display.calledName, "Bob");
    EXPECT_STREQ(display.called, "sip:bob@example.org");
    EXPECT_STREQ(display.callingName, "Ann");
    EXPECT_STREQ(display.calling, "sip:ann@example.org");
}

TEST_F(ScriptedPickup, CallerWithoutATarget_IsCalledAtItsIdentity)
{
    tellDialog("<dialog id=\"1\" call-id=\"c1\" local-tag=\"lt\" remote-tag=\"rt\" direction=\"recipient\">"
               "<state>early</state><remote><identity>" +
               callerUri() + "</identity></remote></dialog>");

    EXPECT_EQ(firstLineOf(caller_.receive("INVITE")), "INVITE " + callerUri() + " SIP/2.0");
}

// A name of the display has room for 64 characters.
TEST_F(ScriptedPickup, NamesThatAreTooLong_AreCut)
{
    std::string const name(1000, 'x');
    tellDialog(with(ringing(), "Bob", name));

    caller_.accept(caller_.receive("INVITE"), "", "ann");
    ASSERT_TRUE(phone_.events().waitFor("success 4711 5 directed pickup"));
    sfiReplacesDisplay const display = phone_.events().lastReplaces();
    EXPECT_EQ(display.calledName, std::string(64, 'x'));
    EXPECT_STREQ(display.callingName, "Ann");
}

TEST_F(ScriptedPickup, DialogsThatDoNotRing_AreNotTaken)
{
    std::string const whole = ringing();
    std::string const noParty = "<remote/></dialog>";
    for (std::string const& dialog :
         {with(whole, "recipient", "initiator"), with(whole, "early", "confirmed"), with(whole, "early", "trying"),
          with(whole, " call-id=\"c1\"", ""), whole.substr(0, whole.find("<remote>")) + noParty}) {
        tellDialog(dialog);
        EXPECT_TRUE(caller_.hearsNothingOf("INVITE", 100ms)) << dialog;
        phone_.events().rest();
        (void)phone_.engine().clear(5);
        ASSERT_TRUE(phone_.engine().pickups().directed(1, 0, 5, far_.uri()));
        subscribe_ = far_.receive("SUBSCRIBE sip:far@" + far_.hostPort());
        while (headerOf(subscribe_, "Expires") == "0") {
            subscribe_ = far_.receive("SUBSCRIBE");
        }
    }
}

TEST_F(ScriptedPickup, CallThatIsFound_IsNoLongerSearchedFor)
{
    tellDialog(ringing());
    std::string const invite = caller_.receive("INVITE");
    EXPECT_EQ(headerOf(far_.receive("SUBSCRIBE"), "Expires"), "0");

    EXPECT_EQ(phone_.events().next(5s), "nothing came");

    caller_.answer(invite, "486 Busy Here");
    phone_.expect({"failed 4711 5 directed pickup 5", "state 4711 5 busy busy far"});
}

TEST_F(ScriptedPickup, GivenUpSearch_EndsItsSubscription)
{
    far_.answer(subscribe_, "200 OK", "Expires: 60\r\n");
    ASSERT_TRUE(phone_.engine().clear(5));
    phone_.expect({"state 4711 5 idle cancelled far"});

    EXPECT_EQ(headerOf(far_.receive("SUBSCRIBE"), "Expires"), "0");
    EXPECT_EQ(phone_.events().next(5s), "nothing came");
}

}  // namespace telephone::test

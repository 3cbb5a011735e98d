// What the exchange answers, sends, logs and tells watchers, as a far end that is written message by message sees it.
#include <array>
#include <mutex>
#include <regex>

#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

class ExchangeAnswers : public SipTest
{
protected:
    exchange::ExchangeConfig configuration()
    {
        exchange::ExchangeConfig config;
        config.log = [this](sip::LogLevel, std::string const& line) { log_.push_back(line); };
        config.numbers = {
            {.number = "120",
             .name = "Ann",
             .steps = exchange::readSteps("ring, wait 60s").value(),
             .forwarding = {.onNoReply = "101", .noReplyAfter = 5s}},
            {.number = "121", .forwarding = {.always = "100"}},
            {.number = "122", .steps = exchange::readSteps("ring 2s, busy").value(), .forwarding = {.onBusy = "100"}},
            {.number = "130", .pickupGroup = "sales"},
            {.number = "131",
             .steps = exchange::readSteps("ring").value(),
             .messages = {1, 2, 3, 4},
             .pickupGroup = "sales"}};
        return config;
    }
    std::string at(std::string const& number) const { return "sip:" + number + "@" + exchange_.hostPort(); }
    std::string ask(std::string const& method, std::string const& user, std::string const& headers = {},
                    std::string const& body = {})
    {
        std::string const callId = headerOf(far_.ask(method, user, exchange_.hostPort(), headers, body), "Call-ID");
        do {
            answer_ = far_.receive("SIP/2.0 ");
        } while (answer_.starts_with("SIP/2.0 100 ") || (!answer_.empty() && headerOf(answer_, "Call-ID") != callId));
        return firstLineOf(answer_);
    }
    std::string call(std::string const& number, std::string const& headers = {})
    {
        return ask("INVITE", number, headers, ScriptedEnd::description());
    }
    // An established call of that number.
    void connect(std::string const& steps)
    {
        ASSERT_TRUE(exchange_.define("110", steps));
        ASSERT_EQ("SIP/2.0 200 OK", call("110"));
        ok_ = answer_;
        far_.acknowledge(ok_);
    }
    // Subscribes to the calls of a number.
    void watch(std::string const& number)
    {
        ASSERT_EQ("SIP/2.0 200 OK", ask("SUBSCRIBE", number, "Event: dialog\r\nExpires: 600\r\n"));
    }
    // The next document that watchers get, without what differs from run to run.
    std::string document()
    {
        std::string const notice = far_.receive("NOTIFY ");
        far_.answer(notice, "200 OK");
        std::string text = notice.substr(notice.find("\r\n\r\n") + 4);
        for (auto const& [pattern, replacement] :
             std::vector<std::pair<std::string, std::string>>{{far_.hostPort(), "FAR"},
                                                              {exchange_.hostPort(), "EXCHANGE"},
                                                              {"id=\"call-[0-9]+\"", "id=\"call-*\""},
                                                              {"tag=\"[0-9a-f]{16}\"", "tag=\"*\""},
                                                              {"call-id=\"[0-9a-f]{16}\"", "call-id=\"*\""}}) {
            text = std::regex_replace(text, std::regex(pattern), replacement);
        }
        return text;
    }
    // All lines so far.
    std::vector<std::string> log()
    {
        std::lock_guard const guard(loop);
        return std::exchange(log_, {});
    }
    bool isLogged(std::string const& line)
    {
        std::lock_guard const guard(loop);
        return std::find(log_.begin(), log_.end(), "exchange: " + line) != log_.end();
    }

    std::vector<std::string> log_;
    exchange::Exchange exchange_{loop, configuration()};
    ScriptedEnd far_{loop};
    std::string answer_;
    std::string ok_;
};

TEST_F(ExchangeAnswers, Refusal_HasTheUsualPhraseOfItsStatus)
{
    struct Row
    {
        char const* status;
        char const* line;
    };
    constexpr std::array kRows{
        Row{"400", "SIP/2.0 400 Bad Request"},
        Row{"401", "SIP/2.0 401 Unauthorized"},
        Row{"403", "SIP/2.0 403 Forbidden"},
        Row{"404", "SIP/2.0 404 Not Found"},
        Row{"408", "SIP/2.0 408 Request Timeout"},
        Row{"410", "SIP/2.0 410 Gone"},
        Row{"480", "SIP/2.0 480 Temporarily Unavailable"},
        Row{"486", "SIP/2.0 486 Busy Here"},
        Row{"488", "SIP/2.0 488 Not Acceptable Here"},
        Row{"500", "SIP/2.0 500 Server Internal Error"},
        Row{"503", "SIP/2.0 503 Service Unavailable"},
        Row{"600", "SIP/2.0 600 Busy Everywhere"},
        Row{"603", "SIP/2.0 603 Decline"},
        Row{"604", "SIP/2.0 604 Does Not Exist Anywhere"},
        Row{"499", "SIP/2.0 499 Refused"},
        Row{"699", "SIP/2.0 699 Refused"},
    };
    for (Row const& row : kRows) {
        ASSERT_TRUE(exchange_.define("110", std::string("refuse ") + row.status));
        EXPECT_EQ(row.line, call("110"));
    }
}

TEST_F(ExchangeAnswers, Numbers_AreListedWithWhatTheyDo)
{
    ASSERT_TRUE(exchange_.define("100", "busy"));

    EXPECT_EQ((std::vector<std::string>{
                  "100 busy", "101 is busy", "102 rings and never answers", "103 answers after two seconds",
                  "104 declines", "105 answers and hangs up after two seconds",
                  "106 answers, holds after one second and retrieves after another", "120 ring, wait 60s",
                  "121 a telephone registers under it", "122 ring 2s, busy", "130 a telephone registers under it",
                  "131 ring", "199 answers, hangs up after one second and calls back"}),
              exchange_.numbers());
}

TEST_F(ExchangeAnswers, Name_IsAssertedWhileItRingsAndNotDialled)
{
    EXPECT_EQ("SIP/2.0 180 Ringing", call("120"));

    EXPECT_EQ("\"Ann\" <" + at("120") + ">", headerOf(answer_, "P-Asserted-Identity"));
}

TEST_F(ExchangeAnswers, Forwarding_NamesTheTargetAndTheReason)
{
    EXPECT_EQ("SIP/2.0 302 Moved Temporarily", call("121"));

    EXPECT_EQ("<" + at("100") + ">", headerOf(answer_, "Contact"));
    EXPECT_EQ("<" + at("121") + ">;reason=unconditional", headerOf(answer_, "Diversion"));
}

TEST_F(ExchangeAnswers, ForwardingOnBusy_TakesThePlaceOfTheRefusal)
{
    EXPECT_EQ("SIP/2.0 180 Ringing", call("122"));

    EXPECT_TRUE(far_.hearsNothingOf("SIP/2.0 ", 1900ms));
    std::string const busy = far_.receive("SIP/2.0 ", 200ms);
    EXPECT_EQ("<" + at("100") + ">", headerOf(busy, "Contact"));
    EXPECT_EQ("<" + at("122") + ">;reason=user-busy", headerOf(busy, "Diversion"));
    EXPECT_EQ(0U, exchange_.callCount());
}

TEST_F(ExchangeAnswers, ForwardingOnNoReply_ComesAfterItsTime)
{
    EXPECT_EQ("SIP/2.0 180 Ringing", call("120"));

    EXPECT_TRUE(far_.hearsNothingOf("SIP/2.0 ", 4900ms));
    std::string const late = far_.receive("SIP/2.0 ", 200ms);
    EXPECT_EQ("<" + at("101") + ">", headerOf(late, "Contact"));
    EXPECT_EQ("<" + at("120") + ">;reason=no-answer", headerOf(late, "Diversion"));
    EXPECT_EQ(0U, exchange_.callCount());
}

TEST_F(ExchangeAnswers, CallThatIsCancelledBeforeItsForwarding_IsNotForwarded)
{
    far_.ask("INVITE", "120", exchange_.hostPort(), {}, ScriptedEnd::description());
    std::string const ringing = far_.receive("SIP/2.0 180");
    std::string cancel = far_.inDialog("CANCEL", ringing, 1);
    cancel = std::regex_replace(cancel, std::regex("branch=z9hG4bKCANCEL1"), "branch=z9hG4bKasked1");
    cancel = std::regex_replace(cancel, std::regex("(To: <[^>]*>);tag=[0-9a-f]*"), "$1");

    far_.send(cancel);

    EXPECT_EQ("SIP/2.0 487 Request Terminated", firstLineOf(far_.receive("SIP/2.0 487")));
    EXPECT_TRUE(far_.hearsNothingOf("SIP/2.0 302", 6s));
}

TEST_F(ExchangeAnswers, Users_AreNumbersPickupsAndNobody)
{
    EXPECT_EQ("SIP/2.0 200 OK", ask("OPTIONS", "100"));
    EXPECT_EQ("SIP/2.0 200 OK", ask("OPTIONS", "*98"));
    EXPECT_EQ("SIP/2.0 200 OK", ask("OPTIONS", "*97555"));
    EXPECT_EQ("SIP/2.0 404 Not Found", ask("OPTIONS", "*9"));
    EXPECT_EQ("SIP/2.0 404 Not Found", ask("OPTIONS", "*981"));
    EXPECT_EQ("SIP/2.0 404 Not Found", ask("OPTIONS", "555"));
}

TEST_F(ExchangeAnswers, UnknownEvent_IsRefusedWithThoseThatThereAre)
{
    EXPECT_EQ("SIP/2.0 489 Bad Event", ask("SUBSCRIBE", "100", "Event: weather\r\n"));
    EXPECT_EQ("dialog, message-summary, refer", headerOf(answer_, "Allow-Events"));
}

TEST_F(ExchangeAnswers, Messages_AreTakenAndOnlyCstaIsEchoed)
{
    EXPECT_EQ("SIP/2.0 200 OK", ask("MESSAGE", "100", "Content-Type: application/csta+xml\r\n", "<x/>"));
    EXPECT_EQ("SIP/2.0 200 OK", ask("INFO", "100", "Content-Type: text/plain\r\n", "x"));
    EXPECT_TRUE(far_.hearsNothingOf("INFO ", 1s));

    EXPECT_EQ("SIP/2.0 200 OK", ask("INFO", "100", "Content-Type: application/csta+xml\r\n", "<x/>"));
    std::string const echo = far_.receive("INFO ");
    EXPECT_EQ("INFO " + far_.uri() + " SIP/2.0", firstLineOf(echo));
    EXPECT_EQ("application/csta+xml", headerOf(echo, "Content-Type"));
    EXPECT_TRUE(headerOf(echo, "From").starts_with("<" + at("100") + ">;tag=")) << echo;
    EXPECT_TRUE(echo.ends_with("\r\n\r\n<x/>")) << echo;
}

TEST_F(ExchangeAnswers, CstaInACall_IsEchoedAndNothingElse)
{
    connect("answer");

    far_.request("INFO", ok_, "Content-Type: text/plain\r\n", "x");
    EXPECT_TRUE(far_.hearsNothingOf("INFO ", 1s));
    far_.request("INFO", ok_, "Content-Type: Application/CSTA+xml;charset=utf-8\r\n", "<x/>");

    EXPECT_TRUE(far_.receive("INFO ").ends_with("\r\n\r\n<x/>"));
}

TEST_F(ExchangeAnswers, MessagesOfTheConfiguration_AreToldToWatchers)
{
    ASSERT_EQ("SIP/2.0 200 OK", ask("SUBSCRIBE", "131", "Event: message-summary\r\nExpires: 600\r\n"));

    std::string const notice = far_.receive("NOTIFY ");
    EXPECT_EQ("application/simple-message-summary", headerOf(notice, "Content-Type"));
    EXPECT_TRUE(notice.ends_with("\r\n\r\nMessages-Waiting: yes\r\nMessage-Account: " + at("131") +
                                 "\r\nVoice-Message: 1/2 (3/4)\r\n"))
        << notice;
}

TEST_F(ExchangeAnswers, UnsolicitedMessages_AreToldToEachContact)
{
    SipPeer phone(loop);
    SipPeer second(loop);
    for (SipPeer* each : {&phone, &second}) {
        each->registerAt(exchange_.hostPort());
        ASSERT_TRUE(each->waitFor("registered 3600"));
    }

    ASSERT_TRUE(exchange_.setMessages("4711", {0, 3, 1, 0}, true));

    for (SipPeer* each : {&phone, &second}) {
        ASSERT_TRUE(each->waitFor("unsolicited message-summary")) << each->events();
        EXPECT_EQ("Messages-Waiting: yes\r\nMessage-Account: " + at("4711") + "\r\nVoice-Message: 0/3 (1/0)\r\n",
                  each->notifications.back().content.body);
        EXPECT_EQ(sip::SubscriptionState::kActive, each->notifications.back().state);
    }
}

TEST_F(ExchangeAnswers, CallsOfANumber_AreToldInAllTheirStates)
{
    ASSERT_TRUE(exchange_.define("110", "ring 1s, answer 1s, hold 1s, retrieve, hang-up"));
    watch("110");
    auto const told = [](std::string const& version, std::string const& dialogs) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><dialog-info "
               "xmlns=\"urn:ietf:params:xml:ns:dialog-info\" version=\"" +
               version + "\" state=\"full\" entity=\"sip:110@EXCHANGE\"" +
               (dialogs.empty() ? "/>" : ">" + dialogs + "</dialog-info>");
    };
    ScriptedEnd caller(loop);
    auto const dialog = [&caller](std::string const& state, std::string const& target) {
        return "<dialog id=\"call-*\" call-id=\"1@" + caller.hostPort() +
               "\" local-tag=\"*\" remote-tag=\"far\" direction=\"recipient\"><state>" + state +
               "</state><local><identity>sip:110@EXCHANGE</identity><target uri=\"sip:110@EXCHANGE\"" + target +
               "</local><remote><identity>" + caller.uri() + "</identity><target uri=\"" + caller.uri() +
               "\"/></remote></dialog>";
    };
    EXPECT_EQ(told("0", ""), document());

    caller.ask("INVITE", "110", exchange_.hostPort(), {}, ScriptedEnd::description());
    EXPECT_EQ(told("1", dialog("early", "/>")), document());
    caller.acknowledge(caller.receive("SIP/2.0 200"));
    EXPECT_EQ(told("2", dialog("confirmed", "/>")), document());
    caller.accept(caller.receive("INVITE "));
    EXPECT_EQ(told("3", dialog("confirmed", "><param pname=\"+sip.rendering\" pvalue=\"no\"/></target>")), document());
    caller.accept(caller.receive("INVITE "));
    EXPECT_EQ(told("4", dialog("confirmed", "/>")), document());
    EXPECT_EQ(told("5", dialog("terminated", "/>")), document());
    EXPECT_NE("", caller.receive("BYE "));
}

TEST_F(ExchangeAnswers, CallFromANumber_IsToldAsItsOwn)
{
    ASSERT_TRUE(exchange_.define("110", "ring"));
    watch("110");
    document();
    SipPeer phone(loop);
    phone.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    phone.registerAt(exchange_.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange_.play("110", "call 4711 7s"));

    std::string const trying = document();
    EXPECT_NE(std::string::npos, trying.find("direction=\"initiator\"")) << trying;
    EXPECT_NE(std::string::npos, trying.find("<state>trying</state>")) << trying;
    std::string const ringing = document();
    EXPECT_NE(std::string::npos, ringing.find("<state>early</state>")) << ringing;
    sleepFor(6800ms);
    EXPECT_EQ("", phone.events().find("closed") == std::string::npos ? "" : phone.events());
    EXPECT_TRUE(phone.waitFor("closed cancelled", 300ms)) << phone.events();
    EXPECT_TRUE(isLogged("call from 110 is not answered"));
}

TEST_F(ExchangeAnswers, Log_TellsOfCallsAndRegistrations)
{
    EXPECT_EQ((std::vector<std::string>{"exchange: listening on " + exchange_.hostPort()}), log());
    SipPeer phone(loop);
    phone.registerAt(exchange_.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));
    phone.registration.reset();
    ASSERT_TRUE(phone.waitUntil([this] { return !exchange_.isRegistered("4711"); }));
    exchange_.setRegistrar(exchange::RegistrarConduct::read("refuse 403").value());
    call("101");

    EXPECT_EQ((std::vector<std::string>{"exchange: 4711 is registered", "exchange: 4711 is no longer registered",
                                        "exchange: the registrar will refuse 403",
                                        "exchange: call from " + far_.uri() + " to 101"}),
              log());
}

TEST_F(ExchangeAnswers, Log_TellsHowTransfersAndChangesEnd)
{
    connect("answer, transfer 101, hold, wait 5s");
    far_.answer(far_.receive("REFER "), "603 Decline");
    far_.answer(far_.receive("INVITE "), "488 Not Acceptable Here");
    far_.receive("ACK ");
    sleepFor(100ms);

    EXPECT_TRUE(isLogged("number 110: its transfer ended with 603 Decline"));
    EXPECT_TRUE(isLogged("number 110: the far end refuses the change: 488 Not Acceptable Here"));
}

TEST_F(ExchangeAnswers, StepsAtOnceBeforeTheAcknowledgement_ComeAfterIt)
{
    ASSERT_TRUE(exchange_.define("110", "answer"));
    ASSERT_EQ("SIP/2.0 200 OK", call("110"));

    ASSERT_TRUE(exchange_.play("110", "hold"));

    EXPECT_TRUE(far_.hearsNothingOf("INVITE ", 400ms));
    far_.acknowledge(answer_);
    EXPECT_NE("", far_.receive("INVITE "));
}

TEST_F(ExchangeAnswers, Digits_TakeAQuarterOfASecondEach)
{
    connect("answer, dtmf 12, hang-up");
    std::string const first = far_.receive("INFO ");
    EXPECT_TRUE(first.ends_with("\r\n\r\nSignal=1\r\nDuration=100\r\n")) << first;
    far_.answer(first, "200 OK");
    std::string const second = far_.receive("INFO ");
    EXPECT_TRUE(second.ends_with("\r\n\r\nSignal=2\r\nDuration=100\r\n")) << second;
    far_.answer(second, "200 OK");

    EXPECT_TRUE(far_.hearsNothingOf("BYE ", 350ms));
    EXPECT_NE("", far_.receive("BYE ", 200ms));
}

TEST_F(ExchangeAnswers, PickupOfTheGroup_LooksInItAlone)
{
    SipPeer rings(loop, "140");
    rings.registerAt(exchange_.hostPort());
    ASSERT_TRUE(rings.waitFor("registered 3600"));
    SipPeer member(loop, "130");
    SipPeer other(loop, "555");
    ASSERT_EQ("SIP/2.0 180 Ringing", call("102"));

    member.call(at("*98"));

    EXPECT_TRUE(member.waitFor("closed rejected 480", 100ms)) << "102 and 140 are not of its group";
    EXPECT_EQ("Nothing to pick up", member.lastClosing.text);
    other.call(at("*98"));
    EXPECT_TRUE(other.waitFor("established")) << other.events();
}

TEST_F(ExchangeAnswers, PickupOfATelephoneThatTellsNothing_IsGivenUpAfterASecondAndAHalf)
{
    SipPeer silent(loop, "140");
    silent.registerAt(exchange_.hostPort());
    ASSERT_TRUE(silent.waitFor("registered 3600"));
    SipPeer picker(loop, "555");

    picker.call(at("*97140"));

    ASSERT_TRUE(silent.waitFor("subscribe")) << silent.events();
    EXPECT_FALSE(picker.waitFor("closed rejected 480", 1400ms));
    EXPECT_TRUE(picker.waitFor("closed rejected 480", 200ms)) << picker.events();
}

TEST_F(ExchangeAnswers, PickupOfATelephoneThatRefusesToTell_IsLogged)
{
    SipPeer refuses(loop, "140");
    refuses.registerAt(exchange_.hostPort());
    ASSERT_TRUE(refuses.waitFor("registered 3600"));
    SipPeer picker(loop, "555");
    picker.call(at("*97140"));
    ASSERT_TRUE(refuses.waitFor("subscribe")) << refuses.events();

    refuses.notifiers.clear();

    EXPECT_TRUE(picker.waitFor("closed rejected 480")) << picker.events();
    EXPECT_TRUE(isLogged("the telephone of 140 no longer reports its calls"));
}

TEST_F(ExchangeAnswers, PickupThatIsGivenUpByThePicker_LeavesTheTelephoneAlone)
{
    SipPeer silent(loop, "140");
    silent.registerAt(exchange_.hostPort());
    ASSERT_TRUE(silent.waitFor("registered 3600"));
    SipPeer picker(loop, "555");
    picker.call(at("*97140"));
    ASSERT_TRUE(silent.waitFor("subscribe")) << silent.events();
    {
        std::lock_guard const guard(loop);
        EXPECT_TRUE(silent.notifiers.at(0)->accept(sip::kDialogInfoType));
    }

    picker.session().hangUp();

    EXPECT_TRUE(silent.waitUntil([&] { return !silent.notifiers.at(0)->isActive(); }, 1s)) << "nobody watches it now";
}

TEST_F(ExchangeAnswers, PickerAtTheRingingTelephone_PicksUpNothing)
{
    SipPeer rings(loop, "140");
    rings.registerAt(exchange_.hostPort());
    ASSERT_TRUE(rings.waitFor("registered 3600"));

    rings.call(at("*97140"));

    EXPECT_TRUE(rings.waitFor("closed rejected 480", 100ms)) << rings.events();
}

TEST_F(ExchangeAnswers, WantedAppearance_IsGivenOrRefused)
{
    exchange_.define({.number = "far", .appearances = 2});
    EXPECT_EQ("SIP/2.0 180 Ringing", call("102", "Alert-Info: <urn:alert:service:normal>;appearance=2\r\n"));
    EXPECT_EQ("SIP/2.0 403 No Free Appearance", call("102", "Alert-Info: <urn:alert:service:normal>;appearance=2\r\n"));
    EXPECT_EQ("SIP/2.0 180 Ringing", call("102", "Alert-Info: <urn:alert:service:normal>;appearance=-5\r\n"));
    EXPECT_EQ("SIP/2.0 403 No Free Appearance", call("102"));
    EXPECT_TRUE(isLogged("appearance 2 of far is not free"));
    EXPECT_TRUE(isLogged("far has no free appearance"));
}

TEST_F(ExchangeAnswers, CallToTheLastCaller_NeedsOne)
{
    auto const played = exchange_.play("110", "call caller");

    ASSERT_FALSE(played);
    EXPECT_EQ((Refusal{RefusalKind::kWrongState, "nobody has called yet"}), played.error());
    EXPECT_EQ(0U, exchange_.callCount());
}

TEST_F(ExchangeAnswers, Preemption_SaysWhyTheCallEnds)
{
    connect("answer, preempt");

    EXPECT_EQ("preemption;cause=1;text=\"UA Preemption\"", headerOf(far_.receive("BYE "), "Reason"));
}

TEST_F(ExchangeAnswers, Garbage_IsThreeDatagrams)
{
    connect("answer, garbage");

    EXPECT_EQ(std::string("\x00\xff\x01garbage\r\n\r\n", 14), far_.receive(std::string("\0", 1)));
    EXPECT_EQ("SIP/2.0 200\r\n\r\n", far_.receive("SIP/2.0 200\r\n"));
    EXPECT_EQ("SIP/2.0 999 Nonsense\r\nVia: SIP/2.0/UDP\r\nCSeq: x\r\nContent-Length: -1\r\n\r\n<",
              far_.receive("SIP/2.0 999"));
}

TEST_F(ExchangeAnswers, TransferOfACall_IsToldHowItGoes)
{
    connect("answer");
    ScriptedEnd target(loop);

    far_.request("REFER", ok_, "Refer-To: <" + target.uri() + ">\r\nReferred-By: <sip:far@elsewhere>\r\n");

    far_.answer(far_.receive("NOTIFY "), "200 OK");
    std::string const invite = target.receive("INVITE ");
    EXPECT_EQ("<sip:far@elsewhere>", headerOf(invite, "Referred-By"));
    target.answer(invite, "180 Ringing");
    std::string const ringing = far_.receive("NOTIFY ");
    EXPECT_TRUE(ringing.ends_with("\r\n\r\nSIP/2.0 180 Ringing\r\n")) << ringing;
    far_.answer(ringing, "200 OK");
    target.answer(invite, "404 Not Found");
    std::string const last = far_.receive("NOTIFY ");
    EXPECT_TRUE(last.ends_with("\r\n\r\nSIP/2.0 404 Not Found\r\n")) << last;
    EXPECT_TRUE(headerOf(last, "Subscription-State").starts_with("terminated")) << last;
}

TEST_F(ExchangeAnswers, TransferToNowhere_IsUnavailable)
{
    connect("answer");

    far_.request("REFER", ok_, "Refer-To: <sip:100@host.invalid>\r\n");

    far_.answer(far_.receive("NOTIFY "), "200 OK");
    std::string const last = far_.receive("NOTIFY ");
    EXPECT_TRUE(last.ends_with("\r\n\r\nSIP/2.0 503 Service Unavailable\r\n")) << last;
    EXPECT_TRUE(isLogged("transfer of a call of 110: in virtual time names are not looked up: \"host.invalid\" must be "
                         "an IP address"));
    EXPECT_EQ(1U, exchange_.callCount());
}

}  // namespace telephone::test

#include "telephone/replay/PlayedTelephone.h"

#include <gtest/gtest.h>

#include "RecordingText.h"
#include "Signals.h"
#include "telephone/base/Version.h"

using namespace telephone;
using namespace std::chrono_literals;

namespace {

// A recording in which the application holds call 1 and then retrieves it; the tester does something in between.
std::string holdAndRetrieve()
{
    return eventLine(0, 4, held("2", "4712")) + commandLine(100, "events", R"({\"after\":4})") +
           requestLine(200, holdCall("1")) + eventLine(210, 5, held("1")) + commandLine(300, "press 1", {}, "console") +
           requestLine(400, "<Method>RetrieveCall</Method><Line>4711</Line><CallID>1</CallID>") +
           eventLine(410, 6, retrieved("1"));
}

class PlayedTelephoneTest : public testing::Test
{
protected:
    void play(std::string const& lines, std::vector<std::string> const& sessions = {})
    {
        recording_ = recordingOf(lines);
        telephone_ = std::make_unique<PlayedTelephone>(recording_, sessions, timers_, [this] { ended_.add(); });
        session_ = telephone_->sessions()("application-1", 10, [this] { woken_.add(); });
    }
    ~PlayedTelephoneTest() override
    {
        session_.reset();
        timers_.stop();
    }

    // "kind text" of each reply.
    std::string replies(std::string const& text)
    {
        said_.clear();
        session_->handle(text, sink());
        return said_;
    }
    // The next events that come.
    std::string events()
    {
        said_.clear();
        while (said_.empty() && woken_.take(10s)) {
            while (session_->takeEvents(10, sink())) {
            }
        }
        return said_;
    }
    MessageSink sink()
    {
        return [this](Message const& each) {
            said_ += std::string(kMessageKindNames.at(static_cast<std::size_t>(each.kind)));
            said_ += (each.number == 0 ? "" : " " + std::to_string(each.number)) + " " + std::string(each.text) + "\n";
        };
    }
    TableRows report() const
    {
        ReplayReport report("r");
        telephone_->addTo(report);
        return report.rows();
    }

    Recording recording_;
    Signals ended_;
    Signals woken_;
    TimerService timers_;
    std::unique_ptr<PlayedTelephone> telephone_;
    std::unique_ptr<ClientSession> session_;
    std::string said_;
};

}  // namespace

TEST_F(PlayedTelephoneTest, RecordedRequest_IsAnswered_AndItsEventsFollow)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("events"), "result {\"start\":\"k3f9x2ab\",\"after\":4}\n");
    EXPECT_EQ(replies(holdCall("1")), "answer sfiSuccess\nfinished \n");
    EXPECT_EQ(events(), "event 5 " + held("1") + "\n");
    EXPECT_EQ(replies("RetrieveCall CallID=1 Line=4711"), "answer sfiSuccess\nfinished \n");
    EXPECT_EQ(events(), "event 6 " + retrieved("1") + "\n");
    EXPECT_TRUE(ended_.take(10s));
    EXPECT_EQ(report(), TableRows{"r: 2 messages, no difference"});
}

TEST_F(PlayedTelephoneTest, IdsOfTheApplication_StandForTheRecordedOnes)
{
    play(holdAndRetrieve());
    replies("events");

    EXPECT_EQ(replies(holdCall("7")), "answer sfiSuccess\nfinished \n");
    EXPECT_EQ(events(), "event 5 " + held("7") + "\n");
    EXPECT_NE(replies("state").find(R"("calls":[{"id":7,"state":"held"}])"), std::string::npos) << said_;
    EXPECT_EQ(replies("RetrieveCall Line=4711 CallID=1"), "answer sfiFailure\nfinished \n");
    EXPECT_EQ(replies("RetrieveCall Line=4711 CallID=7"), "answer sfiSuccess\nfinished \n");
    EXPECT_EQ(events(), "event 6 " + retrieved("7") + "\n");
}

TEST_F(PlayedTelephoneTest, OtherRequest_IsRefusedAndReported)
{
    play(holdAndRetrieve());
    replies("events");
    replies("reasons on");

    EXPECT_EQ(replies("HoldCall Line=4712 CallID=1"),
              "answer sfiFailure\nreason the recording has no such request that is still to come\nfinished \n");
    EXPECT_EQ(replies("press 1"), "error the recording has no such command that is still to come\n");
    EXPECT_EQ(replies("nonsense"), "error no request or command nonsense; help lists them\n");
    EXPECT_EQ(replies("press"), "error KEY is missing; write it as: press KEY\n");
    EXPECT_EQ(report(), (TableRows{"r:3: extra, behind this line: HoldCall 4712 call 1",
                                   "r:3: extra, behind this line: press 1", "r:5: missing: HoldCall 4711 call 1",
                                   "r:11: missing: RetrieveCall 4711 call 1", "r: 2 messages, 4 differences"}));
}

TEST_F(PlayedTelephoneTest, RequestThatCameTwice_IsRefusedTheSecondTime)
{
    play(requestLine(0, holdCall("1")));

    EXPECT_EQ(replies(holdCall("1")), "answer sfiSuccess\nfinished \n");
    EXPECT_EQ(replies(holdCall("1")), "answer sfiFailure\nfinished \n");
}

TEST_F(PlayedTelephoneTest, RecordedReasons_ComeWhenTheyAreOn)
{
    play(R"({"request":"<Method>HoldCall</Method>","session":"a")" + at(0) + "}\n" +
         R"({"answer":"sfiFailure","session":"a")" + at(0) + "}\n" + R"({"reason":"no call","session":"a")" + at(0) +
         "}\n" + R"({"request":"<Method>HoldCall</Method>","session":"a")" + at(0) + "}\n" +
         R"({"reason":"no call","session":"a")" + at(0) + "}\n");

    EXPECT_EQ(replies("<Method>HoldCall</Method>"), "answer sfiFailure\nfinished \n");
    EXPECT_EQ(replies("reasons on"), "result \n");
    EXPECT_EQ(replies("<Method>HoldCall</Method>"), "reason no call\nfinished \n");
}

TEST_F(PlayedTelephoneTest, StrictSession_RefusesBeforeTheRecording)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("strict on"), "result \n");
    EXPECT_EQ(replies("<Method>HoldCal</Method>"), "error there is no request HoldCal (did you mean HoldCall?)\n");
    EXPECT_EQ(report().back(), "r: 2 messages, 2 differences");
}

TEST_F(PlayedTelephoneTest, EventsAfterANumber_IncludeThoseBeforeTheConnection)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("events after 0 of k3f9x2ab line 4712"), "result {\"start\":\"k3f9x2ab\",\"after\":0}\n");
    said_.clear();
    EXPECT_TRUE(session_->takeEvents(10, sink()));
    EXPECT_EQ(said_, "event 4 " + held("2", "4712") + "\n");
}

TEST_F(PlayedTelephoneTest, EventsOfAnotherStart_AreAGapAndTheState)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("events after 17 of zzzzzzzz"), "result {\"start\":\"k3f9x2ab\",\"after\":0}\n");
    said_.clear();
    session_->takeEvents(10, sink());
    EXPECT_EQ(said_, "gap {\"first\":1,\"last\":4}\n"
                     "state 4 {\"start\":\"k3f9x2ab\",\"domain\":\"127.0.0.1:5060\",\"ready\":true,\"lines\":[{\"id\":"
                     "\"4711\",\"number\":1}],\"calls\":[{\"id\":1,\"state\":\"held\"}]}\n");
}

TEST_F(PlayedTelephoneTest, Subscribe_NumbersTheEventsForItsSession)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("<Method>Subscribe</Method>"), "answer sfiSuccess\nfinished \n");
    replies(holdCall("1"));
    EXPECT_EQ(events(), "event 1 " + held("1") + "\n");
}

TEST_F(PlayedTelephoneTest, Hello_IsThatOfTheRecordedTelephone)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("hello view"), "result {\"telephone\":\"reference telephone\",\"version\":\"" +
                                         std::string(kTelephoneVersion) +
                                         "\",\"protocol\":1,\"start\":\"k3f9x2ab\","
                                         "\"ready\":true,\"domain\":\"127.0.0.1:5060\"}\n");
}

TEST_F(PlayedTelephoneTest, State_IsTheLatestThatFitsTheMoment)
{
    play(R"({"command":"events","session":"a")" + at(0) + "}\n" +
         commandLine(10, "state", R"({\"lines\":[],\"calls\":[],\"event\":1})") + requestLine(20, holdCall("1")) +
         commandLine(30, "state", R"({\"lines\":[],\"calls\":[],\"event\":2})"));

    EXPECT_EQ(replies("state"), "result {\"lines\":[],\"calls\":[],\"event\":1,\"ready\":true}\n");
    replies(holdCall("1"));
    EXPECT_EQ(replies("state"), "result {\"lines\":[],\"calls\":[],\"event\":2,\"ready\":true}\n");
    EXPECT_EQ(replies("state"), "result {\"lines\":[],\"calls\":[],\"event\":2,\"ready\":true}\n");
}

TEST_F(PlayedTelephoneTest, ChosenSession_IsThatOfTheApplication)
{
    play(holdAndRetrieve(), {"console"});

    EXPECT_EQ(replies("press 1"), "result \n");
    EXPECT_EQ(report(), TableRows{"r: 1 message, no difference"});
    EXPECT_TRUE(PlayedTelephone::checkSessions(recording_, {"console", "application-1"}));
    EXPECT_EQ(PlayedTelephone::checkSessions(recording_, {"view"}).error().reason,
              "test.recording has no session view; it has application-1, console");
}

TEST_F(PlayedTelephoneTest, ApplicationThatGoes_EndsIt)
{
    play(holdAndRetrieve());
    replies("events");

    session_.reset();

    EXPECT_TRUE(ended_.take(10s));
}

TEST_F(PlayedTelephoneTest, ApplicationThatComesBackWithinTwoSeconds_HasNotGone)
{
    play(holdAndRetrieve());
    replies("events");
    session_.reset();
    EXPECT_FALSE(ended_.take(1800ms));

    session_ = telephone_->sessions()("application-1", 10, [this] { woken_.add(); });

    EXPECT_FALSE(ended_.take(3s));
    session_.reset();
    EXPECT_FALSE(ended_.take(1800ms));
    EXPECT_TRUE(ended_.take(400ms));
}

TEST_F(PlayedTelephoneTest, OneOfTwoSessions_MayEnd)
{
    play(holdAndRetrieve());
    auto const other = telephone_->sessions()("application-2", 10, [] {});

    session_.reset();

    EXPECT_FALSE(ended_.take(3s));
}

TEST_F(PlayedTelephoneTest, Events_ComeAsLongAfterTheirRequestAsTheyDidThen)
{
    play(requestLine(0, holdCall("1")) + eventLine(700, 5, held("1")) + eventLine(1500, 5, retrieved("1")));
    replies("events");
    auto const requested = SteadyClock::now();
    replies(holdCall("1"));

    EXPECT_EQ(events(), "event 5 " + held("1") + "\n");
    EXPECT_GE(SteadyClock::now() - requested, 700ms);
    EXPECT_LT(SteadyClock::now() - requested, 1400ms);
    // A number is not used twice.
    EXPECT_EQ(events(), "event 6 " + retrieved("1") + "\n");
    EXPECT_GE(SteadyClock::now() - requested, 1500ms);
    EXPECT_FALSE(ended_.take(800ms));  // a second for what the application does beyond the recording
    EXPECT_TRUE(ended_.take(400ms));
}

TEST_F(PlayedTelephoneTest, EventsThatAreDueAtOnce_KeepTheirOrder)
{
    play(requestLine(1000, holdCall("1")) + eventLine(1300, 5, held("1")) + eventLine(1200, 6, held("2")));
    replies("events");
    replies(holdCall("1"));

    EXPECT_EQ(events(), "event 5 " + held("1") + "\nevent 6 " + held("2") + "\n");
}

TEST_F(PlayedTelephoneTest, TakenEvents_AreAsManyAsAreWanted)
{
    play(eventLine(0, 4, held("1")) + eventLine(0, 5, held("2")) + commandLine(100, "events", R"({\"after\":4})") +
         requestLine(200, holdCall("1")));
    replies("events after 0");
    said_.clear();

    EXPECT_TRUE(session_->takeEvents(1, sink()));
    EXPECT_EQ(said_, "event 4 " + held("1") + "\n");
    EXPECT_TRUE(session_->takeEvents(1, sink()));
    EXPECT_FALSE(session_->takeEvents(1, sink()));
    EXPECT_EQ(said_, "event 4 " + held("1") + "\nevent 5 " + held("2") + "\n");
}

TEST_F(PlayedTelephoneTest, CommandsAboutTheSession_NeedNoRecording)
{
    play(holdAndRetrieve());

    EXPECT_EQ(replies("say hello"), "result hello\n");
    EXPECT_TRUE(replies("describe CallHeldEvent").starts_with("result CallHeldEvent: ")) << said_;
    EXPECT_TRUE(replies("help HoldCall").starts_with("result HoldCall: ")) << said_;
    EXPECT_TRUE(replies("describe json").starts_with("result {\n")) << said_;
    EXPECT_NE(replies("help").find("press KEY"), std::string::npos) << said_;
    EXPECT_NE(replies("describe").find("HoldCall"), std::string::npos) << said_;
    EXPECT_EQ(replies("\"open"), "error a quote \" is not closed\n");
    EXPECT_EQ(replies(""), "error the message is empty\n");
    EXPECT_EQ(replies("HoldCall Lin=4711").substr(0, 6), "error ") << said_;
    EXPECT_EQ(replies("events only CallHoldEvent"), "error no event CallHoldEvent (did you mean CallHeldEvent?)\n");
    EXPECT_EQ(replies("events off"), "result \n");
    EXPECT_FALSE(session_->takeEvents(10, sink()));
    EXPECT_EQ(replies("quit"), "result \n");
    EXPECT_TRUE(ended_.take(0s));
    EXPECT_EQ(report().back(), "r: 2 messages, 2 differences");
}

// A question is answered as the telephone answered it last before this moment, or else first after it.
TEST_F(PlayedTelephoneTest, Questions_AreAnsweredAsTheyWereAtThatMoment)
{
    play(commandLine(0, "calls", "none", "console") + requestLine(10, holdCall("1")) +
         commandLine(20, "calls", "one", "console") + commandLine(30, "calls", "two", "application-1") +
         commandLine(40, "lamps", "dark") +
         requestLine(50, "<Method>RetrieveCall</Method><Line>4711</Line><CallID>1</CallID>"));

    EXPECT_EQ(replies("calls"), "result none\n");
    EXPECT_EQ(replies("lamps"), "result dark\n");
    replies(holdCall("1"));
    EXPECT_EQ(replies("calls"), "result two\n");
    EXPECT_EQ(replies("calls"), "result two\n");
    EXPECT_EQ(report(), (TableRows{"r:13: missing: RetrieveCall 4711 call 1", "r: 2 messages, 1 difference"}));
}

TEST_F(PlayedTelephoneTest, ApplicationWithoutARecordedSubscription_ReceivesWhatIsAfterItsFirstRequest)
{
    play(eventLine(0, 4, held("2")) + requestLine(10, holdCall("1")) + eventLine(20, 5, held("1")));

    EXPECT_EQ(replies("events"), "result {\"start\":\"k3f9x2ab\",\"after\":0}\n");
    EXPECT_EQ(events(), "event 4 " + held("2") + "\n");
    replies(holdCall("1"));
    EXPECT_EQ(events(), "event 5 " + held("1") + "\n");
}

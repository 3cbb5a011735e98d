// Streams of events: where they begin, what they contain, how they end, and that none delays another.
#include <chrono>

#include "HttpTest.h"
#include "telephone/base/Version.h"
#include "telephone/http/StepQueue.h"

using namespace telephone;

namespace {

constexpr std::size_t kManyEvents = 100;

class HttpEventsTest : public HttpTest
{
protected:
    // The stream's lines for the event that a call is held.
    static std::string held(int number, int call)
    {
        std::string const id = std::to_string(number);
        std::string const callID = std::to_string(call);
        return "id: " + id + "\nevent: CallHeldEvent\ndata: {\"event\":" + id +
               R"(,"time":"T","name":"CallHeldEvent","line":"4711","call":)" + callID +
               R"(,"elements":{"LineID":"4711","CallID":)" + callID +
               R"(},"raw":"<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>)" + callID + "</CallID>\"}\n\n";
    }

    // The next lines of a stream, up to an empty one.
    static std::string next(HttpConnection& stream) { return withoutTimes(stream.readUntil("\n\n")); }

    void restart(HttpServer::Settings const& settings)
    {
        server_.reset();
        settings_ = settings;
        open();
    }
    HttpServer::Settings changed(int mostStreams, std::chrono::milliseconds silence,
                                 std::chrono::milliseconds stallLimit) const
    {
        return {settings_.http, settings_.tokenFile, settings_.browserFile, mostStreams, silence, stallLimit};
    }

    // More than the buffers of a stream hold.
    void postMuch()
    {
        for (std::size_t i = 0; i < kManyEvents; ++i) {
            telephone_.dispatcher.post(
                [](CommunicationsServiceEventIfc& events) { events.callHeld(std::string(50000, 'x'), 1); });
        }
    }
};

constexpr std::chrono::milliseconds kUsualSilence{15000};
constexpr std::chrono::milliseconds kUsualLimit{5000};

}  // namespace

TEST_F(HttpEventsTest, NewStream_BeginsWithHelloAndTheNextEvent)
{
    telephone_.controls.present.start = "abc";
    telephone_.held(1);
    HttpConnection events = stream();

    EXPECT_EQ(next(events), "id: 1\nevent: hello\ndata: {\"telephone\":\"reference telephone\",\"version\":\"" +
                                std::string(kTelephoneVersion) +
                                "\",\"protocol\":1,\"start\":\"abc\",\"ready\":false,\"domain\":\"\"}\n\n");
    EXPECT_EQ(events.received().substr(0, 17), "HTTP/1.1 200 OK\r\n");
    EXPECT_NE(events.received().find("\r\nContent-Type: text/event-stream\r\n"), std::string::npos);
    telephone_.held(2);
    EXPECT_EQ(next(events), held(2, 2));
}

TEST_F(HttpEventsTest, StreamThatResumes_MissesNothing)
{
    for (int call = 1; call <= 3; ++call) {
        telephone_.held(call);
    }
    HttpConnection byHeader = stream("?after=0", "Last-Event-ID: 1\r\n");
    HttpConnection byQuery = stream("?after=2&start=" + telephone_.history->start());

    EXPECT_EQ(next(byHeader), held(2, 2));
    EXPECT_EQ(next(byHeader), held(3, 3));
    EXPECT_EQ(next(byQuery), held(3, 3));
}

TEST_F(HttpEventsTest, EventsWithWords_SayWhatHappened)
{
    telephone_.held(1);
    HttpConnection events = stream("?after=0&words");

    std::string const event = next(events);

    EXPECT_NE(event.find(R"("words":{"what":"held","party":"","details":[]}})"), std::string::npos) << event;
}

TEST_F(HttpEventsTest, StreamWithSteps_HasThoseOfCallsAlone)
{
    HttpConnection events = stream("?steps");
    EXPECT_EQ(next(events).find("event: step"), std::string::npos);
    auto const trace = [](char const* kind, char const* name, char const* value) {
        traceStep(kind, [&](TraceStep& step) { step.add(name, value); });
    };

    trace("lamp", "label", R"("step":"sip")");
    trace("platform", "name", "LineManager::getLine");
    trace("platform", "name", "CSfi::CallFeature");
    trace("sip", "method", "INVITE");

    std::string const first = next(events);
    EXPECT_EQ(first.substr(0, 19), "event: step\ndata: {");
    EXPECT_NE(first.find(R"("name":"CSfi::CallFeature"})"), std::string::npos) << first;
    EXPECT_NE(next(events).find(R"("method":"INVITE"})"), std::string::npos);
}

TEST_F(HttpEventsTest, StreamWithSteps_SaysHowManyCameTooFast)
{
    constexpr int kSteps = 3000;  // a megabyte waits at most
    std::string const text(1000, 'x');
    std::string received;
    {
        telephone::StepQueue steps([] {});
        for (int i = 0; i < kSteps; ++i) {
            traceStep("sip", [&text](TraceStep& step) { step.add("text", text); });
        }
        received = steps.take();
        EXPECT_EQ(steps.take(), "");
    }

    int sent = 0;
    for (auto at = received.find("event: step\n"); at != std::string::npos;
         at = received.find("event: step\n", at + 1)) {
        ++sent;
    }
    EXPECT_GT(sent, 500);
    EXPECT_LT(received.size(), 1'010'000U);
    EXPECT_TRUE(received.ends_with("event: steps-missed\ndata: " + std::to_string(kSteps - sent) + "\n\n"));
    EXPECT_FALSE(isTracing());
}

TEST_F(HttpEventsTest, EventsThatAreNoLongerKept_AreReplacedByTheState)
{
    telephone_.controls.present.start = "abc";
    HttpConnection live = stream();
    next(live);
    for (int call = 1; call <= 150; ++call) {
        telephone_.held(call);
    }
    while (next(live).find("id: 150\n") == std::string::npos) {
    }

    HttpConnection late = stream("?after=10");

    EXPECT_EQ(next(late), "event: gap\ndata: {\"first\":11,\"last\":150}\n\n");
    EXPECT_EQ(next(late).substr(0, 60), "id: 150\nevent: state\ndata: {\"start\":\"abc\",\"event\":150,\"time\"");
    telephone_.held(151);
    EXPECT_EQ(next(late), held(151, 151));
}

TEST_F(HttpEventsTest, EventsOfAnEarlierStart_AreReplacedByTheState)
{
    HttpConnection events = stream("?after=1&start=earlier");

    EXPECT_EQ(next(events).substr(0, 11), "event: gap\n");
}

TEST_F(HttpEventsTest, Filters_SelectByNameAndLine)
{
    telephone_.controls.present.lines.emplace_back().id = "4711";
    telephone_.controls.present.lines.emplace_back().id = "4712";
    HttpConnection other = stream("?after=0&only=CallRetrieved");
    HttpConnection otherLine = stream("?after=0&line=4712");
    HttpConnection both = stream("?after=0&only=callheld,CallRetrieved&line=4711");
    telephone_.held(1);
    EXPECT_EQ(next(both), held(1, 1));

    // The next event of any kind would come after the one that was filtered out.
    telephone_.dispatcher.post([](CommunicationsServiceEventIfc& events) { events.callHeld("4712#2", 9); });
    EXPECT_EQ(next(otherLine).substr(0, 6), "id: 2\n");
    server_.reset();
    EXPECT_EQ(other.readAll().find("id:"), std::string::npos);
}

TEST_F(HttpEventsTest, WrongSelections_AreRefused)
{
    EXPECT_EQ(get("/events?only=CallHeldEvnt").body,
              "{\"error\":\"no event CallHeldEvnt (did you mean CallHeldEvent?)\"}\n");
    EXPECT_EQ(get("/events?after=now").status, 400);
    EXPECT_EQ(get("/events?after=").status, 400);
}

TEST_F(HttpEventsTest, SilentStream_IsKeptAliveByComments)
{
    restart(changed(64, std::chrono::milliseconds(1), kUsualLimit));
    HttpConnection events = stream();
    next(events);

    EXPECT_EQ(next(events), ": keep-alive\n\n");
}

TEST_F(HttpEventsTest, StreamsBeyondTheLimit_AreRefusedUntilOneEnds)
{
    std::vector<HttpConnection> open;
    for (int i = 0; i < 64; ++i) {
        open.push_back(stream());
    }
    for (HttpConnection& each : open) {
        next(each);
    }

    HttpAnswer const refused = get("/events");
    EXPECT_EQ(refused.status, 503);
    EXPECT_EQ(refused.body, "{\"error\":\"64 streams are open, which is the most: close one\"}\n");
    EXPECT_EQ(post("/requests", "GetDevices").status, 200);

    open.pop_back();
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (get("/events?after=now").status == 503 && std::chrono::steady_clock::now() < deadline) {
    }
    HttpConnection again = stream();
    EXPECT_EQ(next(again).substr(0, 19), "id: 0\nevent: hello\n");
}

TEST_F(HttpEventsTest, StalledReader_DelaysNobodyAndIsDisconnected)
{
    restart(changed(2, kUsualSilence, std::chrono::milliseconds(500)));
    HttpConnection stalled = stream("", "", 4096);
    HttpConnection reader = stream();
    next(reader);

    postMuch();
    reader.readUntil("id: " + std::to_string(kManyEvents) + "\n");
    EXPECT_EQ(post("/requests", "GetDevices").status, 200);

    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (get("/events?after=now").status == 503) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the stalled reader is still connected";
    }
    EXPECT_EQ(stalled.readAll().find("id: " + std::to_string(kManyEvents) + "\n"), std::string::npos);
}

TEST_F(HttpEventsTest, EndOfTheServer_EndsStreamsAtOnce)
{
    restart(changed(64, kUsualSilence, std::chrono::minutes(10)));
    HttpConnection reader = stream();
    next(reader);
    HttpConnection stalled = stream("", "", 4096);
    HttpConnection silent(server_->port());
    silent.send("GET /hello HTTP/1.1\r\nHost: ");
    postMuch();
    reader.readUntil("id: " + std::to_string(kManyEvents) + "\n");

    auto const begin = std::chrono::steady_clock::now();
    server_.reset();

    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
    std::string const all = reader.readAll();
    EXPECT_EQ(all.substr(all.size() - 7), "\r\n0\r\n\r\n");
    silent.readAll();
    stalled.readAll();
}

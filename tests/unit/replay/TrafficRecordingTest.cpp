#include "telephone/replay/TrafficRecording.h"

#include <filesystem>
#include <regex>

#include <gtest/gtest.h>

#include "Signals.h"
#include "tests/doubles/TemporaryFolder.h"
#include "tests/unit/access/TelephoneDouble.h"

using namespace telephone;
using namespace std::chrono_literals;

namespace {

class TrafficRecordingTest : public testing::Test
{
protected:
    TrafficRecordingTest()
    {
        telephone_.controls.present.start = "k3f9x2ab";
        services_.recorder = &recording_;
        session_ = std::make_unique<Session>("application-1", services_, 10, [] {});
    }

    // "kind text" of each reply.
    std::string replies(Session& session, std::string const& text)
    {
        std::string said;
        session.handle(text, [&said](Message const& each) {
            said += std::string(kMessageKindNames.at(static_cast<std::size_t>(each.kind))) + " " +
                    std::string(each.text) + "\n";
        });
        return said;
    }

    // The lines of the file behind the first, without their times.
    std::string written() const
    {
        std::string const text = contentOf(file_);
        return std::regex_replace(text.substr(text.find('\n') + 1), std::regex(R"(,"time":"[^"]*Z")"), "");
    }

    TemporaryFolder const folder_;
    std::string const file_ = folder_.file("test.recording");
    TelephoneDouble telephone_;
    SessionServices services_ = telephone_.services();
    TrafficRecording recording_{*telephone_.history, telephone_.controls};
    std::unique_ptr<Session> session_;
};

}  // namespace

TEST_F(TrafficRecordingTest, FileThatOthersCanRead_IsItsOwnersAlone)
{
    writeFile(file_, "there already");
    std::filesystem::permissions(file_, std::filesystem::perms(0644));

    ASSERT_TRUE(recording_.start(file_));

    EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0600));
    ASSERT_TRUE(recording_.stop());
}

TEST_F(TrafficRecordingTest, Header_HasTheState)
{
    telephone_.controls.present.lines.emplace_back().id = "4711";

    ASSERT_TRUE(recording_.start(file_));
    ASSERT_TRUE(recording_.stop());

    std::string const text = contentOf(file_);
    EXPECT_EQ(text.find(R"({"recording":1,"time":")"), 0U);
    EXPECT_NE(text.find(R"("state":{"start":"k3f9x2ab","event":0,)"), std::string::npos);
    EXPECT_NE(text.find(R"("lines":[{"id":"4711",)"), std::string::npos);
    EXPECT_EQ(written(), "{\"end\":null}\n");
}

TEST_F(TrafficRecordingTest, RequestsAndCommands_AreWrittenWithTheirReplies)
{
    Session other("application-2", services_, 10, [] {});
    other.options() = {.strict = true, .reasons = true};
    ASSERT_TRUE(recording_.start(file_));

    replies(*session_, "HoldCall Line=4711 CallID=1");
    replies(other, "press 99");
    replies(other, "<Method>HoldCal</Method>");
    replies(*session_, "nonsense \"a b\"");
    replies(*session_, "\"open");
    ASSERT_TRUE(recording_.stop());

    EXPECT_EQ(written(),
              R"x({"request":"<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>","session":"application-1"}
{"answer":"sfiSuccess","session":"application-1"}
{"finished":null,"session":"application-1"}
{"command":"press 99","session":"application-2","strict":true,"reasons":true}
{"error":"no key 99","session":"application-2"}
{"request":"<Method>HoldCal</Method>","session":"application-2","strict":true,"reasons":true}
{"error":"there is no request HoldCal (did you mean HoldCall?)","session":"application-2"}
{"command":"nonsense \"a b\"","session":"application-1"}
{"error":"no request or command nonsense; help lists them","session":"application-1"}
{"command":"\"open","session":"application-1"}
{"error":"a quote \" is not closed","session":"application-1"}
{"end":null}
)x");
}

TEST_F(TrafficRecordingTest, Events_AreWrittenFromTheBeginningOfTheRecordingOn)
{
    Signals came;
    auto const listener = telephone_.history->listen([&came] { came.add(); });
    telephone_.held(1);
    ASSERT_TRUE(came.take(10s));
    ASSERT_TRUE(recording_.start(file_));

    telephone_.held(2);
    ASSERT_TRUE(came.take(10s));
    ASSERT_TRUE(recording_.stop());
    telephone_.held(3);
    ASSERT_TRUE(came.take(10s));
    telephone_.history->endListening(listener);

    EXPECT_EQ(written(),
              R"({"event":2,"name":"CallHeldEvent","line":"4711","call":2,"elements":{"LineID":"4711","CallID":2},)"
              R"("raw":"<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>"})"
              "\n{\"end\":null}\n");
}

TEST_F(TrafficRecordingTest, Commands_BeginAndEndIt)
{
    EXPECT_EQ(replies(*session_, "record off"), "error nothing is being recorded\n");
    EXPECT_EQ(replies(*session_, "record " + file_), "result \n");
    EXPECT_EQ(replies(*session_, "record " + folder_.file("other")),
              "error a recording is being written already: record off ends it\n");
    EXPECT_EQ(replies(*session_, "record off 4711"), "result \n");
    EXPECT_TRUE(recording_.isOn());
    EXPECT_EQ(replies(*session_, "record off"), "result \n");

    EXPECT_FALSE(recording_.isOn());
    EXPECT_EQ(telephone_.controls.asked, std::vector<std::string>{"record off 4711"});
    EXPECT_FALSE(std::filesystem::exists(folder_.file("other")));
}

TEST_F(TrafficRecordingTest, SecondRecording_BeginsAnew)
{
    ASSERT_TRUE(recording_.start(file_));
    replies(*session_, "press 1");
    ASSERT_TRUE(recording_.stop());
    ASSERT_TRUE(recording_.start(file_));
    ASSERT_TRUE(recording_.stop());

    EXPECT_EQ(written(), "{\"end\":null}\n");
}

TEST_F(TrafficRecordingTest, FileThatCannotBeMade_IsRefused)
{
    EXPECT_EQ(replies(*session_, "record /nowhere/test.recording"),
              "error cannot write the recording /nowhere/test.recording: No such file or directory\n");
    EXPECT_FALSE(recording_.isOn());
}

TEST_F(TrafficRecordingTest, FullDisk_IsReportedAtTheEnd_AndTheTelephoneGoesOn)
{
    ASSERT_EQ(replies(*session_, "record /dev/full"), "result \n");

    EXPECT_EQ(replies(*session_, "HoldCall Line=4711 CallID=1"),
              "request <Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\nanswer sfiSuccess\nfinished \n");
    EXPECT_EQ(replies(*session_, "record off"),
              "error the recording /dev/full is not complete: No space left on device\n");
    EXPECT_EQ(replies(*session_, "record " + file_), "result \n");
}

TEST_F(TrafficRecordingTest, TelephoneThatRecordsNothing_SaysSo)
{
    services_.recorder = nullptr;
    Session other("application-2", services_, 10, [] {});

    EXPECT_EQ(replies(other, "record " + file_), "error nothing can be recorded here\n");
    EXPECT_EQ(replies(other, "record off"), "error nothing can be recorded here\n");
}

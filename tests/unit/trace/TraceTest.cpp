// What a trace says of the steps that others write.
#include "telephone/trace/Trace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "telephone/base/Touched.h"
#include "telephone/time/Thread.h"
#include "telephone/time/TimeText.h"
#include "telephone/trace/TimerStep.h"
#include "tests/unit/trace/TracedLines.h"

namespace telephone::test {
namespace {

class Trace : public testing::Test
{
protected:
    ~Trace() override { static_cast<void>(stopTrace()); }

    std::string reasonNotToStart(std::string const& file)
    {
        auto const started = startTrace(file, {"k7wq2mzx", "127.0.0.1:5060"},
                                        [this](auto const& reason) { failures_.push_back(reason); });
        return started ? "" : started.error().reason;
    }
    void start() { EXPECT_EQ(reasonNotToStart(file()), ""); }
    std::string file() const { return folder_.file("a.trace"); }

    // The steps that were written, without the header.
    std::vector<nlohmann::json> steps() const
    {
        auto lines = tracedLines(file());
        lines.erase(lines.begin());
        return lines;
    }

    static TraceCause step(char const* kind)
    {
        return traceStep(kind, [](TraceStep&) {});
    }

    TemporaryFolder const folder_;
    std::vector<std::string> failures_;
};

TEST_F(Trace, Header_NamesTheTelephoneAndItsStart)
{
    start();

    auto const header = tracedLines(file()).front();
    EXPECT_EQ(header["trace"], 1);
    EXPECT_EQ(header["telephone"], "reference telephone");
    EXPECT_EQ(header["start"], "k7wq2mzx");
    EXPECT_EQ(header["domain"], "127.0.0.1:5060");
    EXPECT_TRUE(readTime(header["time"].get<std::string>()));
}

TEST_F(Trace, StepWithoutACause_IsTheFirstOfItsStory)
{
    start();
    TraceCause const first = step("key");
    TraceCause const second = step("hook");

    EXPECT_EQ(first.id, first.step);
    EXPECT_EQ(second.id, second.step);
    EXPECT_EQ(second.step, first.step + 1);
    EXPECT_EQ(steps()[0]["seq"], first.step);
    EXPECT_EQ(steps()[0]["id"], first.id);
    EXPECT_FALSE(steps()[0].contains("because"));
    EXPECT_EQ(steps()[0]["step"], "key");
    EXPECT_EQ(steps()[0]["thread"], "main");
}

TEST_F(Trace, StepInAScope_IsCausedByTheStepOfTheScope)
{
    start();
    TraceCause const request = step("request");
    {
        TraceScope const scope(request);
        TraceScope const inner(step("platform"));
        step("engine");
    }
    step("timer");

    EXPECT_EQ(steps()[1]["because"], request.step);
    EXPECT_EQ(steps()[2]["because"], request.step + 1);
    EXPECT_EQ(steps()[2]["id"], request.id);
    EXPECT_FALSE(steps()[3].contains("because"));
}

TEST_F(Trace, WorkForAnotherThread_TakesItsCauseAlong)
{
    start();
    TraceCause const request = step("request");
    Caused<std::function<void()>> work;
    {
        TraceScope const scope(request);
        work = Caused<std::function<void()>>([] { step("event"); });
    }
    Thread thread("events", [&work] {
        work();
        step("lamp");
    });
    thread.join();

    EXPECT_EQ(steps()[1]["because"], request.step);
    EXPECT_EQ(steps()[1]["thread"], "events");
    EXPECT_FALSE(steps()[2].contains("because"));
}

TEST_F(Trace, Timer_CausesWhatFollowsUntilItsScopeEnds)
{
    start();
    {
        TraceScope const scope(step("request"));
        timerRanOut(PhoneTimer::kNoReply);
        step("sip");
    }

    EXPECT_EQ(steps()[1]["name"], "nobody answers a forwarded line");
    EXPECT_EQ(steps()[1]["because"], steps()[0]["seq"]);
    EXPECT_EQ(steps()[2]["because"], steps()[1]["seq"]);
    EXPECT_FALSE(causeOfThread());
}

TEST_F(Trace, Texts_AreJsonWhateverTheyContain)
{
    start();
    traceStep("event", [](TraceStep& event) {
        event.add("text", "a \"quoted\" \\ line\r\n\x1b[31m \xff \xe2\x80\xae <script>");
        event.addUnlessEmpty("reason", "")
            .add("number", -3)
            .addJson("list", "[1,2]")
            .addMicroseconds(std::chrono::milliseconds(2));
    });

    auto const event = steps()[0];
    EXPECT_EQ(event["text"], "a \"quoted\" \\ line\r\n\x1b[31m \xef\xbf\xbd \xe2\x80\xae <script>");
    EXPECT_FALSE(event.contains("reason"));
    EXPECT_EQ(event["number"], -3);
    EXPECT_EQ(event["list"], nlohmann::json({1, 2}));
    EXPECT_EQ(event["microseconds"], 2000);
    EXPECT_EQ(contentOf(file()).find('\x1b'), std::string::npos);
}

TEST_F(Trace, WithoutATrace_NoStepIsMade)
{
    TraceScope const scope({7, 8});
    bool filled = false;
    TraceCause const cause = traceStep("event", [&filled](TraceStep&) { filled = true; });

    EXPECT_FALSE(filled);
    EXPECT_EQ(cause.step, 8U);
    EXPECT_EQ(stopTrace().error().reason, "nothing is being traced");
}

TEST_F(Trace, Listener_ReceivesEachLineWithAndWithoutAFile)
{
    std::vector<std::string> heard;
    {
        TraceListener const listener([&heard](std::string_view line) { heard.emplace_back(line); });
        step("key");
        start();
        step("lamp");
        EXPECT_TRUE(stopTrace());
        EXPECT_TRUE(isTracing());
    }
    EXPECT_FALSE(isTracing());

    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(nlohmann::json::parse(heard[0])["step"], "key");
    EXPECT_EQ(nlohmann::json::parse(heard[1]), steps()[0]);
    EXPECT_EQ(heard[1].back(), '\n');
}

TEST_F(Trace, SecondTrace_IsRefusedUntilTheFirstHasEnded)
{
    start();
    EXPECT_EQ(reasonNotToStart(folder_.file("b.trace")), "a trace is being written already: trace off ends it");
    EXPECT_TRUE(stopTrace());
    EXPECT_EQ(reasonNotToStart(folder_.file("b.trace")), "");
    step("key");

    EXPECT_TRUE(steps().empty());
    EXPECT_EQ(tracedLines(folder_.file("b.trace")).size(), 2U);
}

TEST_F(Trace, FileOfThatName_IsReplacedAndItsOwnersAlone)
{
    writeFile(file(), "what was there before");
    EXPECT_EQ(::chmod(file().c_str(), 0644), 0);
    start();

    struct stat status = {};
    EXPECT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(tracedLines(file()).size(), 1U);
}

TEST_F(Trace, FileThatCannotBeOpened_IsRefused)
{
    EXPECT_EQ(reasonNotToStart(folder_.file("no/a.trace")),
              "the trace cannot be written to " + folder_.file("no/a.trace") + ": No such file or directory");
    EXPECT_FALSE(isTracing());
}

TEST_F(Trace, FullDisk_IsRefused)
{
    EXPECT_EQ(reasonNotToStart("/dev/full"), "the trace cannot be written to /dev/full: No space left on device");
    EXPECT_FALSE(isTracing());
    EXPECT_TRUE(failures_.empty());
}

TEST_F(Trace, FileThatTakesNoMore_EndsTheTraceOnceWithItsReason)
{
    std::string const pipe = folder_.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    int const reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(reasonNotToStart(pipe), "");
    constexpr int kMoreThanAPipeHolds = 100'000;
    for (int i = 0; i < kMoreThanAPipeHolds && isTracing(); ++i) {
        step("key");
    }
    step("key");
    ::close(reader);

    EXPECT_FALSE(isTracing());
    EXPECT_EQ(failures_, std::vector<std::string>{"the trace ends: the trace cannot be written to " + pipe +
                                                  ": Resource temporarily unavailable"});
    EXPECT_EQ(stopTrace().error().reason, "nothing is being traced");
}

}  // namespace
}  // namespace telephone::test

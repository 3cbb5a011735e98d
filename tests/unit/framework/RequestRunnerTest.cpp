#include "telephone/framework/RequestRunner.h"

#include <functional>

#include <gtest/gtest.h>

#include "FrameworkDoubles.h"
#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "platform/framework/SvcRTEContext.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/Refusals.h"

using namespace telephone;

namespace {

class InvokerDouble : public Invoker
{
public:
    void handleMessage(Executable* service, char const* message, int length, InvokerResponse* response) override
    {
        gotService = service;
        gotMessage.assign(message, static_cast<std::size_t>(length));
        endsWithNul = message[length] == '\0';
        act(*response);
    }
    void initInvoker(FrameworkContext*) override {}

    std::function<void(InvokerResponse&)> act = [](InvokerResponse&) {};
    Executable* gotService = nullptr;
    std::string gotMessage;
    bool endsWithNul = false;
};

class RequestRunnerTest : public testing::Test
{
protected:
    ExecutableDouble service_;
    InvokerDouble invoker_;
    SvcRTEContext context_;
    Channel channel_{"console", context_, 10, {}};
    RequestRunner runner_{service_, invoker_};
};

}  // namespace

TEST_F(RequestRunnerTest, Run_HandsServiceAndTextToTheInvoker)
{
    runner_.run(channel_, "<Method>GetDevices</Method>");

    EXPECT_EQ(invoker_.gotService, &service_);
    EXPECT_EQ(invoker_.gotMessage, "<Method>GetDevices</Method>");
    EXPECT_TRUE(invoker_.endsWithNul);
}

TEST_F(RequestRunnerTest, Run_BringsTheCountedAnswerBack)
{
    invoker_.act = [](InvokerResponse& response) {
        response.sendResponse("sfiSuccess and more", 10);
        response.finish();
    };

    auto const outcome = runner_.run(channel_, "x");

    EXPECT_EQ(outcome.answer, "sfiSuccess");
    EXPECT_TRUE(outcome.finished);
}

TEST_F(RequestRunnerTest, Run_WithoutAnAnswer_HasNone)
{
    invoker_.act = [](InvokerResponse& response) { response.finish(); };

    auto const outcome = runner_.run(channel_, "x");

    EXPECT_EQ(outcome.answer, std::nullopt);
    EXPECT_TRUE(outcome.finished);
}

TEST_F(RequestRunnerTest, AnswerWithoutATextOrALength_IsNone)
{
    invoker_.act = [](InvokerResponse& response) {
        response.sendResponse(nullptr, 1);
        response.sendResponse("sfiSuccess", -1);
    };
    EXPECT_EQ(runner_.run(channel_, "x").answer, std::nullopt);

    invoker_.act = [](InvokerResponse& response) { response.sendResponse("sfiSuccess", 0); };
    EXPECT_EQ(runner_.run(channel_, "x").answer, "");
    EXPECT_FALSE(runner_.run(channel_, "x").finished);
}

TEST_F(RequestRunnerTest, Watcher_SeesEachRequestBeforeItRuns)
{
    std::string seen;
    runner_.watch([&seen](std::string_view request) { seen += request; });
    invoker_.act = [&seen](InvokerResponse&) { seen += " runs;"; };

    runner_.run(channel_, "first");
    runner_.run(channel_, "second");

    EXPECT_EQ(seen, "first runs;second runs;");
}

TEST_F(RequestRunnerTest, Run_TellsTheNameOfTheChannel)
{
    std::string name;
    invoker_.act = [&](InvokerResponse& response) { name = response.channelName(); };

    runner_.run(channel_, "x");

    EXPECT_EQ(name, "console");
}

TEST_F(RequestRunnerTest, Run_OfAnInvokerThatThrows_IsAnsweredWithFailure)
{
    invoker_.act = [](InvokerResponse&) { throw std::logic_error("a null text"); };

    auto const outcome = runner_.run(channel_, "x");

    EXPECT_EQ(outcome.answer, "sfiFailure");
    EXPECT_TRUE(outcome.finished);
    EXPECT_EQ(outcome.refusals, (std::vector<Refusal>{{RefusalKind::kUnavailable, "the request failed: a null text"}}));
}

TEST_F(RequestRunnerTest, Run_CollectsTheRefusalsOfTheRequest)
{
    Refusal const refusal{RefusalKind::kNotFound, "line 4711 has no call 7"};
    invoker_.act = [&](InvokerResponse& response) {
        reportRefusal("calls", refusal);
        response.sendResponse("sfiFailure", 10);
        response.finish();
    };

    auto const reply = runner_.run(channel_, "x");

    EXPECT_EQ(reply.answer, "sfiFailure");
    EXPECT_EQ(reply.refusals, std::vector<Refusal>{refusal});
}

TEST_F(RequestRunnerTest, Run_OfARequestWithoutRefusals_HasNoneOfTheOneBefore)
{
    invoker_.act = [](InvokerResponse&) { reportRefusal("calls", {RefusalKind::kLimit, "100 calls are in progress"}); };
    runner_.run(channel_, "x");
    invoker_.act = [](InvokerResponse&) {};

    EXPECT_EQ(runner_.run(channel_, "x").refusals, std::vector<Refusal>{});
}

TEST_F(RequestRunnerTest, Run_TellsWhenARequestIsDone_AlsoOneThatFailed)
{
    int done = 0;
    runner_.whenDone([&done] { ++done; });
    invoker_.act = [&done](InvokerResponse&) { EXPECT_EQ(done, 0); };
    runner_.run(channel_, "<Method>GetDevices</Method>");
    EXPECT_EQ(done, 1);

    invoker_.act = [](InvokerResponse&) { throw std::runtime_error("broken"); };
    runner_.run(channel_, "<Method>GetDevices</Method>");

    EXPECT_EQ(done, 2);
}

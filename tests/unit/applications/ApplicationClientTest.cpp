// The client's replies and deadlines, against a socket that plays the telephone.
#include "telephone/applications/ApplicationClient.h"

#include <chrono>
#include <string_view>

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "telephone/applications/SocketPath.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;
using namespace std::string_view_literals;

namespace {

class ApplicationClientTest : public testing::Test
{
protected:
    void say(std::string_view messages) const
    {
        EXPECT_EQ(::send(telephone_.get(), messages.data(), messages.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(messages.size()));
    }

    TemporaryFolder const folder_;
    FileDescriptor listener_ = listenAt(folder_.file("socket")).value();
    ApplicationClient client_ = ApplicationClient::connect(folder_.file("socket")).value();
    FileDescriptor telephone_{accept(listener_.get(), nullptr, nullptr)};
};

TEST_F(ApplicationClientTest, Replies_ComeInTheOrderOfWhatWasSent)
{
    ASSERT_TRUE(client_.send("lines"));
    ASSERT_TRUE(client_.send("<Method>GetServiceState</Method>"));
    say("result\n4711\0event 7\n<Method>x</Method>\0answer\nsfiFailure\0reason\nwhy\0finished\n\0"sv);

    EXPECT_EQ(client_.reply().value().text, "4711");
    ApplicationReply const second = client_.reply().value();
    EXPECT_EQ(second.text, "sfiFailure");
    EXPECT_EQ(second.reasons, std::vector<std::string>{"why"});
}

TEST_F(ApplicationClientTest, Deadline_RefusesTheReply)
{
    say("answer\nhalf of it"sv);

    auto const reply = client_.reply(-1, SteadyClock::now() + std::chrono::milliseconds(1));

    EXPECT_EQ(reply.error().kind, RefusalKind::kUnavailable);
    EXPECT_EQ(reply.error().reason, "the telephone does not answer");
}

TEST_F(ApplicationClientTest, EndOfTheTelephone_RefusesTheReply)
{
    telephone_ = FileDescriptor();

    EXPECT_EQ(client_.reply().error().reason, "the telephone has ended before it answered");
}

}  // namespace

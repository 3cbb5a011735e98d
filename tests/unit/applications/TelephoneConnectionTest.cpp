// The client with the telephone's own waits and refusals, against a socket that plays the telephone.
#include "telephone/applications/TelephoneConnection.h"

#include <array>
#include <chrono>
#include <string_view>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "telephone/applications/SocketPath.h"
#include "telephone/framework/FileDescriptor.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;
using namespace std::string_view_literals;

namespace {

class TelephoneConnectionTest : public testing::Test
{
protected:
    void say(std::string_view messages) const
    {
        EXPECT_EQ(::send(telephone_.get(), messages.data(), messages.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(messages.size()));
    }

    TemporaryFolder const folder_;
    FileDescriptor listener_ = listenAt(folder_.file("socket")).value();
    telephone_client::Connection client_ = connectTo(folder_.file("socket")).value();
    FileDescriptor telephone_{accept(listener_.get(), nullptr, nullptr)};
};

TEST_F(TelephoneConnectionTest, Deadline_RefusesTheReply)
{
    say("answer\nhalf of it"sv);

    auto const reply = replyOf(client_, -1, SteadyClock::now() + std::chrono::milliseconds(1));

    EXPECT_EQ(reply.error(), (Refusal{RefusalKind::kUnavailable, "the telephone does not answer"}));
}

TEST_F(TelephoneConnectionTest, EndOfTheTelephone_RefusesTheReply)
{
    telephone_ = FileDescriptor();

    EXPECT_EQ(replyOf(client_).error(),
              (Refusal{RefusalKind::kUnavailable, "the telephone has ended before it answered"}));
    EXPECT_FALSE(receive(client_).value());
}

TEST_F(TelephoneConnectionTest, StopDescriptor_EndsTheWaiting)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    FileDescriptor const stop(ends[0]);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    ASSERT_EQ(close(ends[1]), 0);

    EXPECT_FALSE(receive(client_, stop.get()).value());
    EXPECT_EQ(ask(client_, "lines", stop.get()).error().reason, "the telephone has ended before it answered");
}

TEST_F(TelephoneConnectionTest, MessageThatNoTelephoneSends_IsRefused)
{
    say("anything\0"sv);

    EXPECT_EQ(receive(client_).error(), (Refusal{RefusalKind::kUnavailable, "not a message of a telephone: anything"}));
}

TEST(TelephoneConnection, PathThatIsTooLong_IsRefusedWithAdvice)
{
    std::string const path(108, 'x');

    EXPECT_EQ(connectTo(path).error(),
              (Refusal{RefusalKind::kBadInput,
                       "the socket path \"" + path + "\" must have 1 to 107 bytes: name a shorter one with --socket"}));
}

}  // namespace

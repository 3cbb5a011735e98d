// One connection: messages, replies and waiting, against a socket that plays the telephone.
#include <string>

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "TelephoneClient.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone_client;
using namespace std::chrono_literals;
using namespace std::string_view_literals;

namespace {

class ConnectionTest : public testing::Test
{
protected:
    ~ConnectionTest() override
    {
        close(telephone_);
        close(listener_);
    }
    int listenAt(std::string const& path)
    {
        int const made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        EXPECT_EQ(bind(made, reinterpret_cast<sockaddr const*>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(made, 8), 0);
        return made;
    }
    void say(std::string_view messages) const
    {
        EXPECT_EQ(::send(telephone_, messages.data(), messages.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(messages.size()));
    }
    void hangUp()
    {
        close(telephone_);
        telephone_ = -1;
    }

    TemporaryFolder const folder_;
    int listener_ = listenAt(folder_.file("socket"));
    Connection client_ = Connection::open(folder_.file("socket")).value();
    int telephone_ = accept(listener_, nullptr, nullptr);
};

TEST_F(ConnectionTest, Replies_ComeInTheOrderOfWhatWasSent)
{
    ASSERT_TRUE(client_.send("lines"));
    ASSERT_TRUE(client_.send("<Method>GetServiceState</Method>"));
    say("result\n4711\0event 7\n<Method>x</Method>\0answer\nsfiFailure\0reason\nwhy\0finished\n\0"sv);

    EXPECT_EQ(client_.reply().value().text, "4711");
    Reply const second = client_.reply().value();
    EXPECT_EQ(second.text, "sfiFailure");
    EXPECT_EQ(second.reasons, std::vector<std::string>{"why"});
}

TEST_F(ConnectionTest, MessageInPieces_IsWholeAtItsNul)
{
    say("event 7 2026-11-22T21:09:57.123Z\n<Method>"sv);
    EXPECT_EQ(client_.receive(waitWithin(10ms)).error().kind, Error::Kind::kTimeout);
    say("x</Method>\0"sv);

    Message const message = client_.receive().value();

    EXPECT_EQ(message.kind, Message::Kind::kEvent);
    EXPECT_EQ(message.number, 7U);
    EXPECT_EQ(message.time->time_since_epoch(), 1795381797123ms);
    EXPECT_EQ(message.text, "<Method>x</Method>");
}

TEST_F(ConnectionTest, Deadline_RefusesTheReply)
{
    say("answer\nhalf of it"sv);

    auto const reply = client_.reply(waitWithin(1ms));

    EXPECT_EQ(reply.error().kind, Error::Kind::kTimeout);
    EXPECT_EQ(reply.error().reason, "the telephone does not answer");
}

TEST_F(ConnectionTest, StopDescriptor_RefusesTheReply)
{
    int const stop = eventfd(1, EFD_CLOEXEC);

    EXPECT_EQ(client_.reply(waitWithin(kForever, stop)).error().kind, Error::Kind::kStopped);
    close(stop);
}

TEST_F(ConnectionTest, EndOfTheTelephone_ComesBehindItsLastMessages)
{
    say("result\n4711\0"sv);
    hangUp();

    EXPECT_EQ(client_.reply().value().text, "4711");
    EXPECT_EQ(client_.reply().error().reason, "the telephone has ended before it answered");
    EXPECT_EQ(client_.receive().error().reason, "the telephone has ended");
}

TEST_F(ConnectionTest, LongMessage_IsSentWhileTheTelephoneReads)
{
    std::string const text(3'000'000, 'x');
    ASSERT_TRUE(client_.send(text));
    EXPECT_TRUE(client_.hasOutput());
    std::size_t received = 0;
    std::string buffer(65536, '\0');
    while (received < text.size() + 1) {
        ssize_t const count = recv(telephone_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        received += count > 0 ? static_cast<std::size_t>(count) : 0;
        ASSERT_TRUE(client_.process());
    }

    EXPECT_FALSE(client_.hasOutput());
    EXPECT_EQ(client_.send("a\0b"sv).error().kind, Error::Kind::kBadInput);
}

TEST(Messages, KindThatIsNotKnown_IsUnknown)
{
    EXPECT_EQ(readMessage("weather 7\nrain").value().kind, Message::Kind::kUnknown);
    EXPECT_EQ(readMessage("answer\nsfiSuccess").value().text, "sfiSuccess");
    EXPECT_EQ(readMessage("event 3\nx").value().number, 3U);
}

TEST(Messages, TextThatNoTelephoneSends_IsRefused)
{
    EXPECT_EQ(readMessage("answer").error().reason, "not a message of a telephone: answer");
    EXPECT_FALSE(readMessage("event x\ny"));
    EXPECT_FALSE(readMessage("event\ny"));
}

TEST(Open, PathThatIsTooLong_IsRefused)
{
    auto const opened = Connection::open(std::string(200, 'x'));

    EXPECT_EQ(opened.error().kind, Error::Kind::kBadInput);
    EXPECT_EQ(opened.error().reason, "the socket path \"" + std::string(200, 'x') + "\" must have 1 to 107 bytes");
}

}  // namespace

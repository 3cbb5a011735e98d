// Push requests, as an HTTP server sees them.
#include "telephone/team/UrlPush.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <httplib.h>

#include "tests/helpers/LogFile.h"
#include "tests/helpers/TestTime.h"

namespace telephone {
namespace {

class Receiver
{
public:
    explicit Receiver(int status = 200)
    {
        server_.Get("/push", [this, status](httplib::Request const& request, httplib::Response& answer) {
            std::lock_guard const lock(mutex_);
            answer.status = status;
            received_ = request.get_param_value("url") + " | " + request.get_param_value("data");
            changed_.notify_all();
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
    }
    ~Receiver()
    {
        while (!server_.is_running()) {
            std::this_thread::yield();
        }
        server_.stop();
        thread_.join();
    }
    Receiver(Receiver const&) = delete;
    Receiver& operator=(Receiver const&) = delete;

    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/push"; }
    std::string wait()
    {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(10), [this] { return !received_.empty(); });
        return received_;
    }

private:
    httplib::Server server_;
    int port_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::string received_;
};

TEST(UrlPushTest, Request_ReachesTheConfiguredAddressUnaltered)
{
    Receiver receiver;
    UrlPush push(receiver.address());

    EXPECT_TRUE(push.send("http://host/a?b=c&d", "50 % & <more>"));

    EXPECT_EQ(receiver.wait(), "http://host/a?b=c&d | 50 % & <more>");
}

// What the log says of a push that is answered with this status; PORT stands for the port.
std::string writtenAfter(int status)
{
    test::LogFile const log;
    Receiver receiver(status);
    {
        UrlPush push(receiver.address());
        EXPECT_TRUE(push.send("http://host/", "data"));
        receiver.wait();
    }
    std::string written = log.written();
    std::string const port = receiver.address().substr(17, receiver.address().find("/push") - 17);
    return written.replace(written.find(port), port.size(), "PORT");
}

TEST(UrlPushTest, AnswerFrom200To299_IsSuccess)
{
    EXPECT_EQ(writtenAfter(200), "info [team] pushed to 127.0.0.1:PORT: 200\n");
    EXPECT_EQ(writtenAfter(299), "info [team] pushed to 127.0.0.1:PORT: 299\n");
}

TEST(UrlPushTest, AnyOtherAnswer_IsReported)
{
    EXPECT_EQ(writtenAfter(300), "warning [team] the push to 127.0.0.1:PORT was answered with 300\n");
    EXPECT_EQ(writtenAfter(404), "warning [team] the push to 127.0.0.1:PORT was answered with 404\n");
}

TEST(UrlPushTest, NoAnswer_IsReported)
{
    test::LogFile const log;
    UrlPush push("http://127.0.0.1:1/nobody");
    EXPECT_TRUE(push.send("http://host/", "data"));
    EXPECT_TRUE(test::eventually([&log] { return !log.written().empty(); }));
    EXPECT_EQ(log.written(), "warning [team] the push to 127.0.0.1:1 failed: Connection\n");
}

TEST(UrlPushTest, Push_IsOffWithoutAnAddress)
{
    UrlPush push("");

    auto const sent = push.send("http://host/", "data");

    EXPECT_EQ(sent.error().reason, "\"http://host/\" cannot be pushed because push.address is not configured");
}

TEST(UrlPushTest, Address_OfAnotherMachineOrKind_IsRefused)
{
    for (auto const* const address : {"http://192.0.2.1/push", "https://127.0.0.1/", "127.0.0.1:80", "http://",
                                      "http://127.0.0.1:0/", "http://127.0.0.1:65536/", "http://127.0.0.1:000080/",
                                      "http://127.0.0.1:x/", "http://127.evil.example.org/"}) {
        EXPECT_THROW(UrlPush{address}, std::runtime_error) << address;
    }
}

TEST(UrlPushTest, Target_EscapesCharactersThatAQueryCannotContain)
{
    EXPECT_EQ(UrlPush::target("/p", "a b", "\xC3\xA4"), "/p?url=a%20b&data=%C3%A4");
    EXPECT_EQ(UrlPush::target("/p?x=1", "-._~", ""), "/p?x=1&url=-._~&data=");
}

TEST(UrlPushTest, End_WhileTheServerDoesNotAnswer_DoesNotHang)
{
    UrlPush push("http://127.0.0.1:1/nobody");
    for (int request = 0; request < 100; ++request) {
        EXPECT_TRUE(push.send("http://host/", "data"));
    }
    push.stop();
}

}  // namespace
}  // namespace telephone

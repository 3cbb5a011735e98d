// Push requests, as an HTTP server sees them.
#include "telephone/team/UrlPush.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <httplib.h>

namespace telephone {
namespace {

class Receiver
{
public:
    Receiver()
    {
        server_.Get("/push", [this](httplib::Request const& request, httplib::Response&) {
            std::lock_guard const lock(mutex_);
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

TEST(UrlPushTest, Push_IsOffWithoutAnAddress)
{
    UrlPush push("");
    EXPECT_FALSE(push.send("http://host/", "data"));
}

TEST(UrlPushTest, Address_OfAnotherMachineOrKind_IsRefused)
{
    for (auto const* const address :
         {"http://192.0.2.1/push", "https://127.0.0.1/", "127.0.0.1:80", "http://", "http://127.0.0.1:0/",
          "http://127.0.0.1:99999/", "http://127.0.0.1:x/", "http://127.evil.example.org/"}) {
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

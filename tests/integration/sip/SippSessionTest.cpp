// Calls with SIPp and its built-in scenarios.
#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SipFixture.h"

extern char** environ;

namespace telephone::test {

namespace {

std::uint16_t freePort()
{
    int const probe = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(probe, reinterpret_cast<sockaddr const*>(&address), size);
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(probe);
    return ntohs(address.sin_port);
}

class Sipp
{
public:
    explicit Sipp(std::vector<std::string> arguments)
        : port(freePort())
    {
        std::vector<std::string> all{"sipp",     "-i", "127.0.0.1",     "-p", std::to_string(port), "-nostdin",
                                     "-timeout", "40", "-timeout_error"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (auto& argument : all) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        if (posix_spawnp(&process_, "sipp", &actions, nullptr, pointers.data(), environ) != 0) {
            process_ = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Sipp()
    {
        if (process_ <= 0) {
            return;
        }
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }

    bool isStarted() const { return process_ > 0; }
    // The exit code, or -1 if it does not end in time.
    int wait(std::chrono::seconds within)
    {
        auto const deadline = std::chrono::steady_clock::now() + within;
        while (std::chrono::steady_clock::now() < deadline) {
            int status = 0;
            if (::waitpid(process_, &status, WNOHANG) == process_) {
                process_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            std::this_thread::sleep_for(5ms);
        }
        return -1;
    }
    // Waits until its port is bound.
    bool isListening() const
    {
        std::ifstream table("/proc/net/udp");
        std::ostringstream wanted;
        wanted << "0100007F:" << std::hex << std::uppercase << port;
        std::stringstream all;
        all << table.rdbuf();
        return all.str().find(wanted.str()) != std::string::npos;
    }

    const std::uint16_t port;

private:
    pid_t process_ = -1;
};

}  // namespace

using SippPeer = ExchangeTest;

TEST_F(SippPeer, HundredCallsOfItsClientToANumber_NoneFails)
{
    Sipp sipp({"-sn", "uac", "-s", "100", "-m", "100", "-r", "50", "-d", "100", exchange.hostPort()});
    ASSERT_TRUE(sipp.isStarted());

    EXPECT_EQ(0, sipp.wait(50s));
    EXPECT_EQ(0U, exchange.callCount());
}

TEST_F(SippPeer, HundredCallsToItsServer_NoneFails)
{
    Sipp sipp({"-sn", "uas", "-m", "100"});
    ASSERT_TRUE(sipp.isStarted());
    SipPeer phone(loop);
    ASSERT_TRUE(phone.waitUntil([&sipp] { return sipp.isListening(); }));

    for (int i = 0; i < 100; ++i) {
        sip::Session& call = phone.call("sip:service@127.0.0.1:" + std::to_string(sipp.port));
        ASSERT_TRUE(phone.waitFor("established")) << i << ": " << phone.events();
        call.hangUp();
    }

    EXPECT_EQ(0, sipp.wait(50s));
}

TEST_F(SippPeer, ServerThatIsKilledInTheCall_IsNoticedByTheNextReInvite)
{
    auto sipp = std::make_unique<Sipp>(std::vector<std::string>{"-sn", "uas"});
    SipPeer phone(loop);
    ASSERT_TRUE(phone.waitUntil([&sipp] { return sipp->isListening(); }));
    sip::Session& call = phone.call("sip:service@127.0.0.1:" + std::to_string(sipp->port));
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    sipp.reset();

    ASSERT_TRUE(call.modify(sip::Direction::kSendOnly));

    EXPECT_TRUE(phone.waitFor("closed timeout 408", 40s)) << phone.events();
}

}  // namespace telephone::test

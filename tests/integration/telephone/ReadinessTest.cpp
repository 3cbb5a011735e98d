// How a telephone says that it can make calls, and that it ends.
#include <fstream>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "RunningTelephone.h"

namespace {

constexpr int kDeadline = 60000;  // milliseconds

// A bound datagram socket.
class Receiver
{
public:
    Receiver(sockaddr const* address, socklen_t length)
        : socket_(::socket(address->sa_family, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        EXPECT_EQ(bind(socket_.get(), address, length), 0);
    }

    // The next datagram; empty at the deadline.
    std::string receive()
    {
        pollfd waited{socket_.get(), POLLIN, 0};
        std::string text(65536, '\0');
        ssize_t const count = poll(&waited, 1, kDeadline) == 1 ? recv(socket_.get(), text.data(), text.size(), 0) : 0;
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }

    telephone::FileDescriptor const& socket() const { return socket_; }

private:
    telephone::FileDescriptor socket_;
};

// What a service manager is for the programs that it starts.
class ServiceManager
{
public:
    explicit ServiceManager(std::string const& path)
        : address_(addressOf(path))
        , receiver_(reinterpret_cast<sockaddr const*>(&address_), sizeof(address_))
    {}

    std::string notice() { return receiver_.receive(); }

private:
    static sockaddr_un addressOf(std::string const& path)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        return address;
    }

    sockaddr_un const address_;
    Receiver receiver_;
};

// Receives registrations and answers none; outside the telephone, so that its time is real.
class SilentRegistrar
{
public:
    SilentRegistrar()
        : address_{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}}
        , receiver_(reinterpret_cast<sockaddr const*>(&address_), sizeof(address_))
    {}

    int port() const
    {
        sockaddr_in bound{};
        socklen_t length = sizeof(bound);
        getsockname(receiver_.socket().get(), reinterpret_cast<sockaddr*>(&bound), &length);
        return ntohs(bound.sin_port);
    }
    std::string request() { return receiver_.receive(); }

private:
    sockaddr_in const address_;
    Receiver receiver_;
};

}  // namespace

TEST(Readiness, ServiceManager_IsToldWhenCallsCanBeMadeAndWhenTheTelephoneEnds)
{
    TemporaryFolder const folder;
    ServiceManager manager(folder.file("manager"));
    Process process({TELEPHONE, "--socket", folder.file("socket"), "serve"},
                    {"NOTIFY_SOCKET=" + folder.file("manager")});

    EXPECT_EQ(manager.notice(), "READY=1");

    Application application(folder.file("socket"));
    EXPECT_EQ(application.request(method("OutgoingCallMakeRequest",
                                         "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>")),
              "sfiSuccess");
    process.signal(SIGTERM);
    EXPECT_EQ(manager.notice(), "STOPPING=1");
    EXPECT_EQ(process.wait(), 0) << process.output();
}

TEST(Readiness, StandardOutput_SaysWhereApplicationsCanConnect)
{
    TemporaryFolder const folder;
    Process process({TELEPHONE, "--socket", folder.file("socket"), "serve"});

    process.readUntil("applications can connect at " + folder.file("socket") + "\n");

    Application application(folder.file("socket"));
    EXPECT_NE(application.command("hello").find("\"ready\":true"), std::string::npos);
}

TEST(Readiness, Socket_IsMissingWhileTheLinesRegister)
{
    TemporaryFolder const folder;
    SilentRegistrar registrar;
    std::ofstream(folder.file("telephone.toml")) << "[server]\nregistrar = \"sip:127.0.0.1:" << registrar.port()
                                                 << "\"\n[[line]]\nid = \"4711\"\nprimary = true\n";
    Process process({TELEPHONE, "--time", "real", "--config", folder.file("telephone.toml"), "--socket",
                     folder.file("socket"), "serve"});

    EXPECT_EQ(registrar.request().substr(0, 9), "REGISTER ");
    EXPECT_FALSE(std::filesystem::exists(folder.file("socket")));
    process.readUntil("applications can connect at");
    EXPECT_TRUE(std::filesystem::exists(folder.file("socket")));
}

TEST(Readiness, Hello_SaysThatAConsolesTelephoneIsNotReadyWhileItsLinesRegister)
{
    TemporaryFolder const folder;
    SilentRegistrar registrar;
    std::ofstream(folder.file("telephone.toml")) << "[server]\nregistrar = \"sip:127.0.0.1:" << registrar.port()
                                                 << "\"\n[[line]]\nid = \"4711\"\nprimary = true\n";
    Process process({TELEPHONE, "--time", "real", "--config", folder.file("telephone.toml"), "--socket",
                     folder.file("socket"), "console"});
    ASSERT_EQ(registrar.request().substr(0, 9), "REGISTER ");

    Application application(folder.file("socket"));
    std::string const early = application.command("hello");
    EXPECT_NE(early.find("\"ready\":false"), std::string::npos) << early;
    EXPECT_EQ(application.request(method("GetServiceState")), "sfiSuccess,sfiServiceInService");
    process.write("say ready now\n");
    process.readUntil("ready now");
    EXPECT_NE(application.command("hello").find("\"ready\":true"), std::string::npos);
}

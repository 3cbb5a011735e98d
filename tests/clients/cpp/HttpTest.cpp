// What only HTTP has: the bytes of requests, tokens, addresses, and servers that do not answer as a telephone does.
#include <array>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "TelephoneClient.h"
#include "tests/doubles/FreePort.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone_client;
using namespace std::chrono_literals;

namespace {

constexpr auto kDeadline = 10s;
constexpr char const* kState =
    R"({"start":"1st","event":0,"time":"2026-11-22T21:09:57.500Z","domain":null,"ready":true,"service":"in service",)"
    R"("lines":[],"calls":[],"keys":[],"hook_up":false,"plugged":[],"muted":false,"locked":false,)"
    R"("store":{"path":null,"writable":true}})";

void say(int socket, std::string const& text)
{
    ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
}

// A server whose connections the test answers, one after the other, in the server's thread. They end after the answer.
class Server
{
public:
    using Answer = std::function<void(int socket, std::string const& request)>;

    explicit Server(Answer answer, int family = AF_INET)
        : answer_(std::move(answer))
        , listener_(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_storage address{};
        address.ss_family = static_cast<sa_family_t>(family);
        auto& four = reinterpret_cast<sockaddr_in&>(address);  // the port of both is at the same place
        if (family == AF_INET) {
            four.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        } else {
            reinterpret_cast<sockaddr_in6&>(address).sin6_addr = in6addr_loopback;
        }
        socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        isOpen_ = ::bind(listener_, plain, size) == 0 && ::listen(listener_, 8) == 0 &&
                  ::getsockname(listener_, plain, &size) == 0;
        port_ = std::to_string(ntohs(four.sin_port));
        thread_ = std::thread([this] { serve(); });
    }
    ~Server()
    {
        ::shutdown(listener_, SHUT_RDWR);
        thread_.join();
        ::close(listener_);
    }

    bool isOpen() const { return isOpen_; }
    std::string const& port() const { return port_; }
    std::string address() const { return "http://127.0.0.1:" + port_; }
    std::vector<std::string> requests()
    {
        std::lock_guard const lock(mutex_);
        return requests_;
    }

private:
    void serve()
    {
        for (int socket = 0; (socket = ::accept(listener_, nullptr, nullptr)) >= 0; ::close(socket)) {
            std::string request(65536, '\0');  // comes at once
            request.resize(static_cast<std::size_t>(std::max<ssize_t>(::recv(socket, request.data(), 65536, 0), 0)));
            {
                std::lock_guard const lock(mutex_);
                requests_.push_back(request);
            }
            answer_(socket, request);
        }
    }

    Answer answer_;
    int listener_;
    bool isOpen_ = false;
    std::string port_;
    std::mutex mutex_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

Options optionsFor(std::string const& address)
{
    Options options;
    options.address = address;
    options.token = "f00d";
    options.firstPause = 5ms;
    return options;
}

std::string response(char const* status, std::string const& body)
{
    return std::string("HTTP/1.1 ") + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string const kWrongToken = response("401 Unauthorized", R"({"error":"the token is wrong"})");

TEST(HttpToken, Wrong_IsRefusedAndNotSentAgain)
{
    Server server([](int socket, std::string const&) { say(socket, kWrongToken); });

    auto const phone = Telephone::connect(optionsFor(server.address()), kDeadline);

    ASSERT_FALSE(phone);
    EXPECT_EQ(phone.error().kind, Error::Kind::kRefused);
    EXPECT_EQ(phone.error().reason, server.address() + " gives no access: the token is wrong");
    EXPECT_EQ(server.requests(),
              std::vector<std::string>{"POST /commands HTTP/1.1\r\nHost: 127.0.0.1:" + server.port() +
                                       "\r\nAuthorization: Bearer f00d\r\nConnection: close\r\n"
                                       "Content-Type: text/plain; charset=utf-8\r\n"
                                       "Content-Length: 5\r\n\r\nstate"});
}

TEST(HttpToken, OfAnotherStart_IsReadFromItsFile)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("token");
    writeFile(file, "0ld\n");
    Server server([&file](int socket, std::string const& request) {
        bool const isOld = request.find("Bearer 0ld\r\n") != std::string::npos;
        writeFile(file, "new\n");
        say(socket, isOld ? kWrongToken : response("403 Forbidden", R"({"error":"enough"})"));
    });
    Options options = optionsFor(server.address());
    options.token.clear();
    options.tokenFile = file;

    auto const phone = Telephone::connect(options, kDeadline);

    EXPECT_EQ(phone.error().reason, server.address() + " gives no access: enough");
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_NE(server.requests()[1].find("\r\nAuthorization: Bearer new\r\n"), std::string::npos);
}

TEST(HttpToken, ThatCannotBeSent_IsRefused)
{
    Options options = optionsFor("http://127.0.0.1:1");
    options.token = "two\r\nlines";
    auto const wrong = Telephone::connect(options);
    options.token.clear();
    options.tokenFile = "/nowhere";
    auto const missing = Telephone::connect(options, 1ms);

    EXPECT_EQ(wrong.error().kind, Error::Kind::kBadInput);
    EXPECT_EQ(wrong.error().reason, "the token must be one word of ASCII");
    EXPECT_EQ(missing.error().kind, Error::Kind::kUnavailable);
    EXPECT_EQ(missing.error().reason, "no token can be read from /nowhere");
}

TEST(HttpAddress, ThatCannotBeUsed_IsRefused)
{
    auto const reasonOf = [](std::string const& address) {
        auto const phone = Telephone::connect(optionsFor(address), kDeadline);
        EXPECT_EQ(phone.error().kind, Error::Kind::kBadInput);
        return phone.error().reason;
    };

    EXPECT_EQ(reasonOf("https://127.0.0.1:8080"),
              "this client does not speak HTTPS: use http:// or the application socket");
    EXPECT_EQ(reasonOf("ftp://127.0.0.1:8080"),
              "\"ftp://127.0.0.1:8080\" is not http://HOST:PORT with a numeric address or localhost as HOST");
    EXPECT_EQ(reasonOf("http://127.0.0.1:8080/?token=f00d"),
              "\"http://127.0.0.1:8080/\" is not http://HOST:PORT with a numeric address or localhost as HOST");
    for (char const* const each : {"http://", "http:///", "http://:8080", "http://[]:8080", "http://127.0.0.1",
                                   "http://127.0.0.1:", "http://127.0.0.1:65536", "http://127.0.0.1:8080/events",
                                   "http://desk.example:8080", "http://user@127.0.0.1:8080", "://"}) {
        EXPECT_NE(reasonOf(each).find("is not http://HOST:PORT"), std::string::npos) << each;
    }
}

TEST(HttpAddress, WithoutATelephone_SaysWhere)
{
    std::string const address = "http://127.0.0.1:" + std::to_string(freePort());

    auto const phone = Telephone::connect(optionsFor(address), 50ms);

    EXPECT_EQ(phone.error().kind, Error::Kind::kUnavailable);
    EXPECT_EQ(phone.error().reason, "no telephone answers at " + address + " (Connection refused)");
}

TEST(HttpAddress, Localhost_IsAlsoThatOfIpv6)
{
    Server server([](int socket, std::string const&) { say(socket, kWrongToken); }, AF_INET6);
    if (!server.isOpen()) {
        GTEST_SKIP() << "this machine has no ::1";
    }

    auto const named = Telephone::connect(optionsFor("http://localhost:" + server.port() + "/"), kDeadline);
    auto const numeric = Telephone::connect(optionsFor("http://[::1]:" + server.port()), kDeadline);

    EXPECT_EQ(named.error().reason, "http://localhost:" + server.port() + " gives no access: the token is wrong");
    EXPECT_NE(server.requests()[0].find("\r\nHost: localhost:" + server.port() + "\r\n"), std::string::npos);
    EXPECT_EQ(numeric.error().reason, "http://[::1]:" + server.port() + " gives no access: the token is wrong");
    EXPECT_NE(server.requests()[1].find("\r\nHost: [::1]:" + server.port() + "\r\n"), std::string::npos);
}

TEST(HttpReply, InChunksOnAConnectionThatStaysOpen_IsRead)
{
    std::string const state = std::string(R"({"result":)") + kState + "}";
    std::vector<int> open;
    Server server([&](int socket, std::string const& request) {
        open.push_back(::dup(socket));  // closing the other one does not end the connection
        if (request.rfind("POST /requests?lenient ", 0) == 0) {
            say(socket, response("200 OK", R"({"answer":null,"reasons":[],"finished":true})"));
        } else if (request[0] == 'P') {
            std::array<char, 32> size{};
            std::snprintf(size.data(), size.size(), "%zX;a=b\r\n", state.size() - 5);
            say(socket, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n" + state.substr(0, 5) + "\r\n" +
                            size.data() + state.substr(5) + "\r\n0\r\nTrailer: x\r\n\r\n");
        } else {
            say(socket, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nContent-Type: text/event-stream\r\n\r\n");
        }
    });
    Options options = optionsFor(server.address());
    options.strict = false;

    auto phone = Telephone::connect(options, kDeadline);
    ASSERT_TRUE(phone) << phone.error().reason;
    auto const answer = phone->ask(requests::holdCall(3));

    EXPECT_EQ(answer.error().kind, Error::Kind::kRefused);  // without a word
    EXPECT_EQ(server.requests()[1].substr(0, 50), "GET /events?after=0&start=%31%73%74 HTTP/1.1\r\nHost");
    say(open[1], "0\r\n\r\n");
    ASSERT_TRUE(phone->run([&phone] { return !phone->isConnected(); }, kDeadline));
    for (int const each : open) {
        ::close(each);
    }
}

void sayEndlessly(int socket, std::string const& beginning, std::string const& rest)
{
    constexpr std::size_t kMost = std::size_t{64} * 1024 * 1024;
    say(socket, beginning);
    std::string piece;
    while (piece.size() < 65536) {
        piece += rest;
    }
    std::size_t sent = 0;
    for (ssize_t count = 0; count >= 0 && sent < kMost; sent += static_cast<std::size_t>(count)) {
        count = ::send(socket, piece.data(), piece.size(), MSG_NOSIGNAL);
        if (count < 0) {
            break;
        }
    }
    EXPECT_LT(sent, kMost) << "the client reads without an end: " << beginning;
}

TEST(HttpReply, ThatIsNotATelephones_IsRefusedAndNotReadForEver)
{
    std::string const ok = "HTTP/1.1 200 OK\r\n";
    std::string const chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
    std::vector<std::pair<Server::Answer, char const*>> cases;
    for (std::string const& each :
         {std::string("SSH-2.0\r\n\r\n"), ok + "Content-Length: x\r\n\r\n", chunked + "-5\r\n", chunked + "g\r\n",
          ok + "\r\n", response("200 OK", "<html>"), response("200 OK", "{}"), response("500 Error", "[1]"),
          response("200 OK", R"({"error":"of another kind"})"), response("200 OK", R"({"answer":""})")}) {
        cases.emplace_back([each](int socket, std::string const&) { say(socket, each); },
                           " does not answer as a telephone does");
    }
    for (auto const& [beginning, rest] : {std::pair<std::string, std::string>{"HTTP/1.1 200 ", "OK"},
                                          {ok, "Server: x\r\n"},
                                          {chunked, "0"},
                                          {chunked + "fffffffffffffff\r\n", "{"},
                                          {ok + "Content-Length: 18446744073709551615\r\n\r\n", "[1,"}}) {
        cases.emplace_back([b = beginning, r = rest](int socket, std::string const&) { sayEndlessly(socket, b, r); },
                           " does not answer as a telephone does");
    }
    for (std::string const event : {"data: {\n\n", "id: x\ndata: {\"raw\":\"x\"}\n\n", "data: {\"raw\":\"x\"}\n\n"}) {
        std::string const stream = ok + "Content-Type: text/event-stream\r\nContent-Length: 99\r\n\r\n" + event;
        cases.emplace_back(
            [stream](int socket, std::string const& request) {
                std::string const state = std::string(R"({"result":)") + kState + "}";
                say(socket, request[0] == 'P' ? response("200 OK", state) : stream);
            },
            " does not answer as a telephone does");
    }
    cases.emplace_back([](int, std::string const&) {}, nullptr);
    cases.emplace_back([ok](int socket, std::string const&) { say(socket, ok + "Content-Length: 9\r\n\r\nhalf"); },
                       nullptr);
    std::vector<std::future<void>> running;
    for (auto const& [answer, reason] : cases) {
        running.push_back(std::async(std::launch::async, [answer = answer, reason = reason] {
            Server server(answer);
            auto const phone = Telephone::connect(optionsFor(server.address()), 2s);
            EXPECT_EQ(phone.error().kind, Error::Kind::kUnavailable);
            EXPECT_EQ(phone.error().reason,
                      reason != nullptr ? server.address() + reason : std::string("the telephone has ended"));
        }));
    }
}

}  // namespace

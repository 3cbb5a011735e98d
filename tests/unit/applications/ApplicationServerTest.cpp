#include "telephone/applications/ApplicationServer.h"

#include <filesystem>
#include <fstream>
#include <future>
#include <regex>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/applications/TelephoneConnection.h"
#include "telephone/base/Version.h"
#include "telephone/framework/Refusals.h"
#include "tests/unit/access/TelephoneDouble.h"

using namespace telephone;

namespace {

constexpr int kDeadline = 10000;  // milliseconds

class Folder
{
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "applications-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    std::string file(std::string const& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

// An application that writes and reads bytes itself.
class RawApplication
{
public:
    explicit RawApplication(std::string const& path)
        : socket_(connectTo(path).value())
    {}

    void send(std::string const& bytes)
    {
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            ssize_t const count = ::send(socket_->descriptor(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            ASSERT_GT(count, 0);
            sent += static_cast<std::size_t>(count);
        }
    }
    // What one read brings; empty at the end, and if nothing comes.
    std::string receive()
    {
        pollfd waited{socket_->descriptor(), POLLIN, 0};
        if (poll(&waited, 1, kDeadline) != 1) {
            ADD_FAILURE() << "the telephone sends nothing";
            return {};
        }
        std::string bytes(1 << 20, '\0');
        ssize_t const count = recv(socket_->descriptor(), bytes.data(), bytes.size(), 0);
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }
    std::string receiveUntil(std::size_t messages)
    {
        std::string all;
        std::size_t ends = 0;
        while (ends < messages) {
            std::string const some = receive();
            if (some.empty()) {
                break;
            }
            ends += static_cast<std::size_t>(std::count(some.begin(), some.end(), '\0'));
            all += some;
        }
        return all;
    }
    void endSending() { shutdown(socket_->descriptor(), SHUT_WR); }
    void vanish() { socket_.reset(); }

private:
    std::optional<telephone_client::Connection> socket_;
};

std::string bytes(std::initializer_list<std::string> messages)
{
    std::string all;
    for (std::string const& each : messages) {
        all += each + '\0';
    }
    return all;
}

// The messages with every moment of an event as TIME.
std::string timeless(std::string const& messages)
{
    static std::regex const moment("(event [0-9]+) [0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}Z");
    return std::regex_replace(messages, moment, "$1 TIME");
}

// The message of a numbered event of TelephoneDouble::held.
std::string heldEvent(int number)
{
    std::string const text = std::to_string(number);
    return "event " + text + " TIME\n<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>" + text + "</CallID>";
}

class ApplicationServerTest : public testing::Test
{
protected:
    ApplicationServerTest() { start(); }

    void start(std::size_t applications = 256, std::size_t events = 20000)
    {
        server_.reset();
        server_ = open({path_, applications, events}).value();
    }

    Outcome<std::unique_ptr<ApplicationServer>> open(ApplicationServer::Settings const& settings)
    {
        return ApplicationServer::open(settings, sessionsOf(telephone_.services()));
    }

    void subscribe(RawApplication& application)
    {
        application.send(bytes({"<Method>Subscribe</Method>"}));
        ASSERT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
    }

    Folder folder_;
    std::string const path_ = folder_.file("socket");
    TelephoneDouble telephone_;
    std::unique_ptr<ApplicationServer> server_;
};

}  // namespace

TEST_F(ApplicationServerTest, Socket_IsForItsOwnerAlone)
{
    struct stat found
    {};
    ASSERT_EQ(stat(path_.c_str(), &found), 0);
    EXPECT_TRUE(S_ISSOCK(found.st_mode));
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(ApplicationServerTest, Request_IsAnsweredAndFinished)
{
    RawApplication application(path_);

    application.send(bytes({"<Method>GetDevices</Method>"}));

    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{"<Method>GetDevices</Method>"});
}

TEST_F(ApplicationServerTest, RequestWithoutAnswer_IsOnlyFinished)
{
    telephone_.invoker.answer = [](std::string const&) { return ""; };
    RawApplication application(path_);

    application.send(bytes({"<Method>setIsInServiceInitiatedState</Method>"}));

    EXPECT_EQ(application.receiveUntil(1), bytes({"finished\n"}));
}

TEST_F(ApplicationServerTest, ManyRequestsInOneWrite_AreAnsweredInOneRead)
{
    telephone_.invoker.answer = [](std::string const& request) { return "to " + request; };
    RawApplication application(path_);

    application.send(bytes({"<a>", "<b>", "<c>"}));

    EXPECT_EQ(application.receive(),
              bytes({"answer\nto <a>", "finished\n", "answer\nto <b>", "finished\n", "answer\nto <c>", "finished\n"}));
}

TEST_F(ApplicationServerTest, RequestInPieces_IsHandledWhenItsEndComes)
{
    RawApplication application(path_);

    application.send("<Method>Get");
    application.send("Devices</Method>");
    application.send(std::string(1, '\0'));

    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{"<Method>GetDevices</Method>"});
}

TEST_F(ApplicationServerTest, EmptyMessage_IsAnErrorAndTheNextIsHandled)
{
    RawApplication application(path_);

    application.send(bytes({"", "<a>"}));

    EXPECT_EQ(application.receiveUntil(3), bytes({"error\nthe message is empty", "answer\nsfiSuccess", "finished\n"}));
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{"<a>"});
}

TEST_F(ApplicationServerTest, RequestOfOneMegabyte_IsHandled)
{
    RawApplication application(path_);
    std::string const request = "<Method>" + std::string(1 << 20, 'x') + "</Method>";

    application.send(request + '\0');

    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{request});
}

TEST_F(ApplicationServerTest, RequestThatIsTooLong_IsRefusedAndTheNextIsHandled)
{
    RawApplication application(path_);

    application.send(std::string(4 * 1024 * 1024 + 1, 'x') + '\0' + bytes({"<next>"}));

    EXPECT_EQ(application.receiveUntil(3),
              bytes({"error\nthe request is longer than 4194304 bytes; skipped", "answer\nsfiSuccess", "finished\n"}));
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{"<next>"});
}

TEST_F(ApplicationServerTest, BinaryRequest_ReachesTheServiceUnchanged)
{
    RawApplication application(path_);
    std::string binary = "<";
    for (int byte = 1; byte < 256; ++byte) {
        binary += static_cast<char>(byte);
    }

    application.send(binary + '\0');

    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{binary});
}

TEST_F(ApplicationServerTest, RequestWithoutEnd_IsRefusedWhenTheApplicationEnds)
{
    RawApplication application(path_);

    application.send("<Method>GetDev");
    application.endSending();

    EXPECT_EQ(application.receiveUntil(1), bytes({"error\nthe last request has no end (a NUL byte); not handled"}));
    EXPECT_EQ(application.receive(), "");
    EXPECT_TRUE(telephone_.invoker.requests.empty());
}

TEST_F(ApplicationServerTest, Events_AreNumberedForEachApplication)
{
    RawApplication first(path_);
    subscribe(first);
    telephone_.held(1);
    EXPECT_EQ(first.receiveUntil(1),
              bytes({"event 1\n<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>"}));

    RawApplication second(path_);
    subscribe(second);
    telephone_.held(2);

    EXPECT_EQ(first.receiveUntil(1),
              bytes({"event 2\n<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>"}));
    EXPECT_EQ(second.receiveUntil(1),
              bytes({"event 1\n<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>"}));
}

TEST_F(ApplicationServerTest, ApplicationThatDidNotSubscribe_HearsNoEvents)
{
    RawApplication application(path_);
    application.send(bytes({"<a>"}));
    application.receiveUntil(2);

    telephone_.held(1);
    telephone_.dispatcher.stop();
    application.send(bytes({"<b>"}));

    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
}

TEST_F(ApplicationServerTest, ApplicationThatNeverReads_LosesEventsAndHoldsUpNobody)
{
    constexpr int kEvents = 60000;
    start(256, 100);
    RawApplication deaf(path_);
    RawApplication reading(path_);
    subscribe(deaf);
    subscribe(reading);
    // The reader keeps up, so that only the deaf one can lose.
    auto lastRead = std::async(std::launch::async, [&] {
        std::string text;
        while (text.find("<CallID>" + std::to_string(kEvents) + "<") == std::string::npos) {
            std::string const some = reading.receive();
            if (some.empty()) {
                return false;
            }
            text = text.substr(text.size() - std::min<std::size_t>(text.size(), 200)) + some;
        }
        return true;
    });

    for (int i = 1; i <= kEvents; ++i) {
        telephone_.held(i);
    }

    EXPECT_TRUE(lastRead.get());
    // When it finally reads, it gets the last event, and a gap in the numbers before it.
    std::string all;
    std::string const last = "event " + std::to_string(kEvents) + "\n";
    while (all.find(last) == std::string::npos) {
        std::string const some = deaf.receive();
        ASSERT_FALSE(some.empty());
        all += some;
    }
    EXPECT_EQ(all.rfind("event ", 0), 0U);
    EXPECT_LT(std::count(all.begin(), all.end(), '\0'), kEvents);
}

TEST_F(ApplicationServerTest, Commands_AreAnsweredWithAResultOrAnErrorInTheirOrder)
{
    RawApplication application(path_);

    application.send(
        bytes({"store list", "press 1", "press 99", "press", "<a>", "HoldCall Line=4711 CallID=1", "hepl"}));

    EXPECT_EQ(application.receiveUntil(9),
              bytes({"result\nagent-state = ready", "result\n", "error\nno key 99",
                     "error\nKEY is missing; write it as: press KEY", "answer\nsfiSuccess", "finished\n",
                     "answer\nsfiSuccess", "finished\n",
                     "error\nno request or command hepl (did you mean help?); help lists them"}));
    EXPECT_EQ(telephone_.invoker.requests,
              (std::vector<std::string>{"<a>", "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>"}));
}

TEST_F(ApplicationServerTest, Hello_IdentifiesTheTelephone)
{
    telephone_.controls.present.start = "abc";
    telephone_.controls.present.domain = "127.0.0.1:5060";
    RawApplication application(path_);

    application.send(bytes({"hello dialler"}));

    EXPECT_EQ(application.receiveUntil(1), bytes({"result\n"
                                                  R"({"telephone":"reference telephone","version":")" +
                                                  std::string(kTelephoneVersion) +
                                                  R"(","protocol":1,"start":"abc",)"
                                                  R"("ready":false,"domain":"127.0.0.1:5060"})"}));
}

TEST_F(ApplicationServerTest, Reasons_ComeBetweenTheAnswerAndTheEndOfTheRequest)
{
    telephone_.invoker.answer = [](std::string const&) {
        reportRefusal("test", {RefusalKind::kNotFound, "line 4711 has no call 7"});
        reportRefusal("test", {RefusalKind::kUnavailable, "the disk is full"});
        return "sfiFailure";
    };
    RawApplication application(path_);
    RawApplication other(path_);

    telephone_.controls.present.lines.emplace_back().id = "4711";
    std::string const hold = "<Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>";

    application.send(bytes({"reasons on", hold}));
    other.send(bytes({hold}));

    EXPECT_EQ(application.receiveUntil(5),
              bytes({"result\n", "answer\nsfiFailure", "reason\nline 4711 has no call 7; the telephone has no calls",
                     "reason\nthe disk is full", "finished\n"}));
    EXPECT_EQ(other.receiveUntil(2), bytes({"answer\nsfiFailure", "finished\n"}));
}

TEST_F(ApplicationServerTest, Strictness_IsOfOneConnectionAndOffAtFirst)
{
    RawApplication strict(path_);
    RawApplication other(path_);

    strict.send(bytes({"strict on", "<Method>HoldCal</Method>"}));
    other.send(bytes({"<Method>HoldCal</Method>"}));

    EXPECT_EQ(strict.receiveUntil(2),
              bytes({"result\n", "error\nthere is no request HoldCal (did you mean HoldCall?)"}));
    EXPECT_EQ(other.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
}

TEST_F(ApplicationServerTest, Quit_IsAnsweredAndEndsTheTelephone)
{
    RawApplication application(path_);

    application.send(bytes({"quit"}));

    EXPECT_EQ(application.receiveUntil(1), bytes({"result\n"}));
    EXPECT_EQ(telephone_.ends, 1);
}

TEST_F(ApplicationServerTest, EventsAfterANumber_BeginBehindItAndGoOn)
{
    for (int call = 1; call <= 3; ++call) {
        telephone_.held(call);
    }
    RawApplication application(path_);

    application.send(bytes({"events after 1"}));

    std::string const start = telephone_.dispatcher.start();
    EXPECT_EQ(timeless(application.receiveUntil(3)),
              bytes({"result\n{\"start\":\"" + start + "\",\"after\":1}", heldEvent(2), heldEvent(3)}));
    telephone_.held(4);
    EXPECT_EQ(timeless(application.receiveUntil(1)), bytes({heldEvent(4)}));
}

TEST_F(ApplicationServerTest, EventsNoLongerKept_AreAGapThenTheStateThenWhatFollows)
{
    RawApplication reader(path_);
    subscribe(reader);
    for (int call = 1; call <= 150; ++call) {
        telephone_.held(call);
    }
    reader.receiveUntil(150);
    RawApplication late(path_);

    late.send(bytes({"events after 10"}));

    std::string const received = late.receiveUntil(3);
    std::string const gap = bytes({"gap\n"
                                   R"({"first":11,"last":150})"});
    auto const at = received.find(gap);
    ASSERT_NE(at, std::string::npos) << received;
    EXPECT_EQ(received.substr(at + gap.size(), 6), "state\n");
    EXPECT_NE(received.find(R"("event":150,)"), std::string::npos) << received;
    telephone_.held(151);
    EXPECT_EQ(timeless(late.receiveUntil(1)), bytes({heldEvent(151)}));
}

TEST_F(ApplicationServerTest, ApplicationThatReadsTooLate_GetsAGapAndTheStateForWhatItMissed)
{
    constexpr std::uint64_t kEvents = 60000;
    RawApplication deaf(path_);
    deaf.send(bytes({"events"}));
    deaf.receiveUntil(1);

    for (std::uint64_t call = 1; call <= kEvents; ++call) {
        telephone_.held(static_cast<int>(call));
    }

    // Each message continues where the one before it ended.
    std::uint64_t position = 0;
    int gaps = 0;
    for (std::string pending; position < kEvents;) {
        std::string const some = deaf.receive();
        ASSERT_FALSE(some.empty());
        pending += some;
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = pending.find('\0', begin)) != std::string::npos; begin = end + 1) {
            auto const message = telephone_client::readMessage(pending.substr(begin, end - begin));
            ASSERT_TRUE(message);
            if (message->kind == telephone_client::Message::Kind::kEvent) {
                ASSERT_EQ(message->number, ++position);
            } else if (message->kind == telephone_client::Message::Kind::kGap) {
                ++gaps;
                unsigned long long first = 0;
                unsigned long long last = 0;
                ASSERT_EQ(std::sscanf(message->text.c_str(), R"({"first":%llu,"last":%llu})", &first, &last), 2);
                ASSERT_EQ(first, position + 1);
                position = last;
            } else {
                ASSERT_EQ(message->kind, telephone_client::Message::Kind::kState);
                ASSERT_NE(message->text.find("\"event\":" + std::to_string(position) + ","), std::string::npos);
            }
        }
        pending.erase(0, begin);
    }
    EXPECT_GE(gaps, 1);
}

TEST_F(ApplicationServerTest, ApplicationThatSendsAndNeverReads_IsNotReadFromWithoutEnd)
{
    telephone_.invoker.answer = [](std::string const&) { return std::string(10000, 'x'); };
    RawApplication deaf(path_);
    // Answers of 200 megabytes: the telephone must stop taking requests long before.
    std::string requests;
    for (int i = 0; i < 20000; ++i) {
        requests += bytes({"<a>"});
    }
    auto sending = std::async(std::launch::async, [&] { deaf.send(requests); });

    RawApplication other(path_);
    for (int i = 0; i < 50; ++i) {
        other.send(bytes({"<b>"}));
        ASSERT_EQ(other.receiveUntil(2).size(), bytes({"answer\n", "finished\n"}).size() + 10000);
    }
    EXPECT_EQ(deaf.receiveUntil(40000).size(), 20000U * (bytes({"answer\n", "finished\n"}).size() + 10000));
    sending.get();
}

TEST_F(ApplicationServerTest, ApplicationThatVanishes_LeavesTheOthersAlone)
{
    for (int i = 0; i < 20; ++i) {
        RawApplication vanishing(path_);
        vanishing.send(bytes({"<Method>Subscribe</Method>", "half a requ"}));
        vanishing.vanish();
        telephone_.held(i);
    }
    RawApplication application(path_);

    application.send(bytes({"<a>"}));

    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
}

TEST_F(ApplicationServerTest, MoreApplicationsThanAllowed_AreRefused)
{
    start(1);
    RawApplication first(path_);
    first.send(bytes({"<a>"}));
    first.receiveUntil(2);

    RawApplication second(path_);

    EXPECT_EQ(second.receiveUntil(1), bytes({"error\ntoo many applications are connected"}));
    EXPECT_EQ(second.receive(), "");
}

TEST_F(ApplicationServerTest, SecondTelephoneAtThePath_IsRefusedAndTheFirstStays)
{
    auto const second = open({path_, 256, 100});

    ASSERT_FALSE(second);
    EXPECT_EQ(second.error(), (Refusal{RefusalKind::kAlreadyExists,
                                       "the application socket " + path_ +
                                           " belongs to a running telephone: end it, or name another path with "
                                           "--socket"}));
    RawApplication application(path_);
    application.send(bytes({"<a>"}));
    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
}

TEST_F(ApplicationServerTest, SocketOfADeadTelephone_IsReplaced)
{
    std::string const stale = folder_.file("stale");
    {
        ASSERT_TRUE(listenAt(stale));
    }
    ASSERT_TRUE(std::filesystem::exists(stale));

    auto const server = open({stale, 256, 100});
    ASSERT_TRUE(server);

    RawApplication application(stale);
    application.send(bytes({"<a>"}));
    EXPECT_EQ(application.receiveUntil(2), bytes({"answer\nsfiSuccess", "finished\n"}));
}

TEST_F(ApplicationServerTest, FileThatIsNoSocket_IsLeftAlone)
{
    std::string const file = folder_.file("notes");
    std::ofstream(file) << "important";

    EXPECT_EQ(open({file, 256, 100}).error().reason,
              file + " exists and is not a socket; it was left alone: name another path with --socket");

    std::string text;
    std::getline(std::ifstream(file), text);
    EXPECT_EQ(text, "important");
}

TEST_F(ApplicationServerTest, PathThatIsTooLong_IsRefused)
{
    std::string const path = folder_.file(std::string(200, 'x'));

    EXPECT_EQ(open({path, 256, 100}).error().reason,
              "the socket path \"" + path + "\" must have 1 to 107 bytes: name a shorter one with --socket");
}

TEST_F(ApplicationServerTest, End_RemovesTheSocketAndEndsConnections)
{
    RawApplication application(path_);
    application.send(bytes({"<a>"}));
    application.receiveUntil(2);

    server_.reset();

    EXPECT_EQ(application.receive(), "");
    EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(ApplicationServerTest, Client_TellsAnswersFromEvents)
{
    auto client = connectTo(path_).value();
    ASSERT_TRUE(send(client, "<Method>Subscribe</Method>"));
    ASSERT_EQ(receive(client).value()->text, "sfiSuccess");
    ASSERT_EQ(receive(client).value()->kind, telephone_client::Message::Kind::kFinished);

    telephone_.held(7);

    auto const event = receive(client).value();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, telephone_client::Message::Kind::kEvent);
    EXPECT_EQ(event->number, 1U);
    EXPECT_EQ(event->text, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>7</CallID>");
    server_.reset();
    EXPECT_FALSE(receive(client).value());
}

TEST_F(ApplicationServerTest, ClientAsks_ForAnswersReasonsAndResults)
{
    telephone_.invoker.answer = [](std::string const&) {
        reportRefusal("test", {RefusalKind::kUnavailable, "the disk is full"});
        return "sfiFailure";
    };
    auto client = connectTo(path_).value();

    EXPECT_EQ(ask(client, "store list").value().text, "agent-state = ready");
    EXPECT_EQ(ask(client, "reasons on").value().text, "");
    auto const reply = ask(client, "<Method>GetServiceState</Method>").value();
    EXPECT_EQ(reply.text, "sfiFailure");
    EXPECT_EQ(reply.reasons, std::vector<std::string>{"the disk is full"});
    EXPECT_EQ(ask(client, "press 99").error(), (Refusal{RefusalKind::kBadInput, "no key 99"}));
    server_.reset();
    EXPECT_EQ(ask(client, "store get agent-state").error().kind, RefusalKind::kUnavailable);
}

TEST(TelephoneConnection, WithoutATelephone_SaysHowToStartOne)
{
    Folder const folder;
    auto const client = connectTo(folder.file("nobody"));

    ASSERT_FALSE(client);
    EXPECT_EQ(client.error().reason, "no telephone answers at " + folder.file("nobody") +
                                         " (No such file or directory): start one, or name its socket with --socket");
}

TEST_F(ApplicationServerTest, SlowApplication_ReceivesNoMoreThanItsRate)
{
    RawApplication application(path_);
    telephone_.readingRate = 1000;
    auto const start = std::chrono::steady_clock::now();
    application.send(bytes({"say " + std::string(400, 'x')}));

    std::string const first = application.receive();
    std::string const rest = application.receiveUntil(1);

    EXPECT_EQ(first, "result\n" + std::string(93, 'x'));
    EXPECT_EQ(rest, std::string(307, 'x') + '\0');
    // 408 bytes in portions of 100, with a tenth of a second behind each but the last.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(400));
}

TEST_F(ApplicationServerTest, ApplicationThatIsNoLongerSlow_ReceivesTheRestAtOnce)
{
    RawApplication application(path_);
    telephone_.readingRate = 10;
    application.send(bytes({"say " + std::string(400, 'x')}));
    EXPECT_EQ(application.receive(), "r");

    telephone_.readingRate = 0;

    EXPECT_EQ(application.receiveUntil(1), "esult\n" + std::string(400, 'x') + '\0');
}

// The client with a real telephone, over its socket and over HTTP, also one that is killed and started again. In real
// time: the client waits outside the telephone.
#include <csignal>
#include <optional>

#include <gtest/gtest.h>

#include "Process.h"
#include "TelephoneClient.h"
#include "tests/doubles/FreePort.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone_client;
using namespace std::chrono_literals;

namespace {

constexpr auto kDeadline = 30s;

constexpr char const* kHttp = "HTTP";

// Its parameter says how the client connects: over "socket" or "HTTP".
class RealTelephoneTest : public testing::TestWithParam<char const*>
{
protected:
    RealTelephoneTest()
    {
        writeFile(folder_.file("desk.toml"), "[http]\naddress = \"" + place_ + "\"\n");
        start();
    }
    void start()
    {
        process_.emplace(std::vector<std::string>{TELEPHONE, "--time", "real", "--config", folder_.file("desk.toml"),
                                                  "--socket", folder_.file("socket"), "serve"});
        process_->readUntil("HTTP: ");
    }
    void kill()
    {
        process_->signal(SIGKILL);
        EXPECT_EQ(process_->wait(), 128 + SIGKILL);
    }
    Options options() const
    {
        Options options;
        options.address = std::string(GetParam()) == kHttp ? "http://" + place_ : folder_.file("socket");
        options.tokenFile = folder_.file("socket.token");
        options.firstPause = 10ms;
        return options;
    }
    Telephone connect() const { return Telephone::connect(options(), kDeadline).value(); }

    TemporaryFolder const folder_;
    std::string const place_ = "127.0.0.1:" + std::to_string(freePort());
    std::optional<Process> process_;
};

INSTANTIATE_TEST_SUITE_P(Over, RealTelephoneTest, testing::Values("socket", kHttp),
                         [](auto const& over) { return std::string(over.param); });

bool isConnected(CallStateChange const& event)
{
    return event.callState == CallState::kConnected;
}

TEST_P(RealTelephoneTest, NameWithBlanks_IsAccepted)
{
    Options named = options();
    named.name = "my \"new\" robot";

    auto const phone = Telephone::connect(named, kDeadline);

    EXPECT_TRUE(phone) << phone.error().reason;
}

TEST_P(RealTelephoneTest, WrongToken_IsRefusedOverHttp)
{
    Options wrong = options();
    wrong.token = "f00d";

    auto const phone = Telephone::connect(wrong, kDeadline);

    std::string const reason = phone ? "" : phone.error().reason;
    EXPECT_EQ(reason, GetParam() != std::string(kHttp)
                          ? ""
                          : wrong.address + " gives no access: the token is missing or wrong: send \"Authorization: "
                                            "Bearer TOKEN\", or add ?token=TOKEN to the address; the telephone has "
                                            "printed it at its start");
}

TEST_P(RealTelephoneTest, CommandThatIsTooLong_IsRefused)
{
    Telephone phone = connect();

    auto const answer = phone.ask(commands::say(std::string(8'000'000, 'x')), kDeadline);

    EXPECT_EQ(answer.error().kind, Error::Kind::kRefused);
    EXPECT_EQ(answer.error().reason, GetParam() == std::string(kHttp)
                                         ? "the body is longer than 4194304 bytes"
                                         : "the request is longer than 4194304 bytes; skipped");
}

TEST_P(RealTelephoneTest, Call_IsMadeHeldAndEnded)
{
    Telephone phone = connect();

    phone.ask(requests::outgoingCallMakeRequest("4711", 1, "100")).value();
    auto const connected = phone.waitFor<CallStateChange>(kDeadline, isConnected).value();
    EXPECT_EQ(connected.callID, 1);
    phone.ask(requests::holdCall(1)).value();
    EXPECT_EQ(phone.waitFor<CallHeld>(kDeadline).value().callID, 1);
    EXPECT_EQ(phone.state().calls.at(0).state, CallState::kHeld);
    phone.ask(requests::callClearRequest(1)).value();

    auto const isOver = [](CallStateChange const& event) { return event.callState == CallState::kIdle; };
    EXPECT_EQ(phone.waitFor<CallStateChange>(kDeadline, isOver).value().callID, 1);
}

TEST_P(RealTelephoneTest, RefusedRequest_SaysWhy)
{
    Telephone phone = connect();

    auto const answer = phone.ask(requests::holdCall(7, "4711"));

    EXPECT_EQ(answer.error().resultWord, "sfiFailure");
    EXPECT_EQ(answer.error().reason, "sfiFailure: line 4711 has no call 7; the telephone has no calls");
}

TEST_P(RealTelephoneTest, RequestThatDoesNothing_SaysWhy)
{
    Telephone phone = connect();
    phone.ask(requests::outgoingCallMakeRequest("4711", 1, "100")).value();
    phone.waitFor<CallStateChange>(kDeadline, isConnected).value();
    phone.ask(requests::holdCall(1)).value();
    phone.waitFor<CallHeld>(kDeadline).value();

    auto const second = phone.ask(requests::holdCall(1));

    EXPECT_EQ(second.error().kind, Error::Kind::kNoEffect);
    EXPECT_EQ(second.error().reason, "sfiSuccess: call 1 is on hold already");
}

TEST_P(RealTelephoneTest, Commands_AreForWhatNoRequestDoes)
{
    Telephone phone = connect();

    phone.ask(commands::call("4711", 555, "Ann B")).value();

    auto const incoming = phone.waitFor<IncomingCall>(kDeadline).value();
    EXPECT_EQ(incoming.lineID, "4711");
    EXPECT_EQ(incoming.name, "Ann B");
    EXPECT_EQ(phone.state().calls.at(0).party.name, "Ann B");
}

TEST_P(RealTelephoneTest, ValueOfACommand_ComesThroughItsQuotes)
{
    Telephone phone = connect();

    EXPECT_EQ(phone.ask(commands::say("a \"b\\  # it's")).value(), "a \"b\\  # it's");
}

TEST_P(RealTelephoneTest, RequestsWithValues_ReturnThem)
{
    Telephone phone = connect();

    EXPECT_EQ(phone.ask(requests::getServiceState()).value(), ServiceState::kInService);
    phone.ask(requests::setMicrophoneMute(true)).value();
    EXPECT_TRUE(phone.ask(requests::getMicrophoneMute()).value());
    EXPECT_EQ(phone.refresh().value().muted, true);
    phone.ask(requests::setForwardingConfiguration("4711", ForwardingType::kBusy, true, "102")).value();
    EXPECT_EQ(phone.ask(requests::getForwardingConfiguration(ForwardingType::kBusy)).value().uri, "102");
}

TEST_P(RealTelephoneTest, KilledTelephone_IsConnectedAgainWithAGapAndItsState)
{
    Telephone phone = connect();
    std::string const start = phone.state().start;
    phone.ask(requests::outgoingCallMakeRequest("4711", 1, "100")).value();
    phone.waitFor<CallStateChange>(kDeadline, isConnected).value();

    kill();
    ASSERT_TRUE(phone.run([&phone] { return !phone.isConnected(); }, kDeadline));
    EXPECT_EQ(phone.ask(requests::holdCall(1)).error().kind, Error::Kind::kUnavailable);
    phone.forgetEvents();
    this->start();

    EXPECT_TRUE(phone.waitFor<Gap>(kDeadline));
    EXPECT_NE(phone.state().start, start);
    EXPECT_TRUE(phone.state().calls.empty());
    phone.ask(requests::outgoingCallMakeRequest("4711", 1, "100")).value();
    EXPECT_EQ(phone.waitFor<CallStateChange>(kDeadline, isConnected).value().callID, 1);
}

}  // namespace

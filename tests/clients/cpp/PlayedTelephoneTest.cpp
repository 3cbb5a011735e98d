// The client with a telephone that the test plays, over its socket and over HTTP: replies, events, gaps, and
// connections that end.
#include "PlayedTelephone.h"

#include <fstream>
#include <memory>
#include <optional>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/eventfd.h>

#include "HttpFront.h"
#include "TelephoneClient.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone_client;
using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

constexpr auto kDeadline = 10s;

std::string held(int call)
{
    return "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>" + std::to_string(call) + "</CallID>";
}

enum class Over
{
    kSocket,
    kHttp,
    kHttpInSingleBytes,
};

class PlayedTelephoneTest : public testing::TestWithParam<Over>
{
protected:
    PlayedTelephoneTest()
    {
        if (GetParam() != Over::kSocket) {
            front_.emplace(path(), GetParam() == Over::kHttpInSingleBytes);
        }
    }
    std::string path() const { return folder_.file("socket"); }
    Options options() const
    {
        Options options;
        options.address = front_ ? front_->address() : path();
        options.token = HttpFront::kToken;
        options.firstPause = 5ms;
        return options;
    }
    Telephone connect() const { return Telephone::connect(options()).value(); }

    TemporaryFolder const folder_;
    std::unique_ptr<PlayedTelephone> played_ = std::make_unique<PlayedTelephone>(path());
    std::optional<HttpFront> front_;
};

INSTANTIATE_TEST_SUITE_P(Over, PlayedTelephoneTest,
                         testing::Values(Over::kSocket, Over::kHttp, Over::kHttpInSingleBytes), [](auto const& over) {
                             return over.param == Over::kSocket ? "Socket"
                                    : over.param == Over::kHttp ? "Http"
                                                                : "HttpInSingleBytes";
                         });

TEST_P(PlayedTelephoneTest, Connect_AsksForReasonsStrictnessStateAndEvents)
{
    Options named = options();
    named.name = "dialler";

    Telephone const phone = Telephone::connect(named).value();

    std::vector<std::string> const overHttp{"state", "events after 0 of first"};
    std::vector<std::string> const overSocket{"hello dialler", "reasons on", "strict on", "state",
                                              "events after 0 of first"};
    EXPECT_EQ(played_->received(), front_ ? overHttp : overSocket);
    EXPECT_EQ(phone.state().start, "first");
    EXPECT_EQ(phone.state().service, ServiceState::kInService);
}

TEST_P(PlayedTelephoneTest, GoldenTexts_ArriveUnchanged)
{
    using nlohmann::json;
    std::vector<std::pair<std::string, std::string>> exchanges;
    for (json const& method : json::parse(std::ifstream(PROJECT "/tests/golden/requests.json"))) {
        for (json const& each : method["exchanges"]) {
            if (each["answer"].is_string()) {
                exchanges.emplace_back(each["request"], each["answer"]);
            }
        }
    }
    played_->answer = [&exchanges, next = std::size_t{0}](std::string const& text) mutable {
        return text[0] != '<' ? ""
                              : PlayedTelephone::message("answer", exchanges.at(next++).second) +
                                    PlayedTelephone::message("finished", "");
    };
    Telephone phone = connect();

    for (auto const& [request, answer] : exchanges) {
        EXPECT_EQ(phone.ask(requests::command(request)).value(), answer);
        EXPECT_EQ(played_->received().back(), request);
    }
    int count = 0;
    for (json const& operation : json::parse(std::ifstream(PROJECT "/tests/golden/events.json"))) {
        for (json const& each : operation["events"]) {
            if (each["message"].is_string()) {
                std::string const text = each["message"].get<std::string>().c_str();  // a message ends at a NUL
                played_->happen(text);
                EXPECT_EQ(phone.nextEvent(kDeadline).value().text, text);
                ++count;
            }
        }
    }
    EXPECT_EQ(exchanges.size(), 135U);
    EXPECT_EQ(count, 109);
}

TEST_P(PlayedTelephoneTest, RefusedRequest_HasTheWordAndTheReasons)
{
    played_->answer = [](std::string const& text) {
        return text[0] != '<'
                   ? ""
                   : PlayedTelephone::message("answer", "sfiFailure") + PlayedTelephone::message("reason", "no call") +
                         PlayedTelephone::message("reason", "no line") + PlayedTelephone::message("finished", "");
    };
    Telephone phone = connect();

    auto const answer = phone.ask(requests::holdCall(7));

    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().kind, Error::Kind::kRefused);
    EXPECT_EQ(answer.error().resultWord, "sfiFailure");
    EXPECT_EQ(answer.error().reason, "sfiFailure: no call; no line");
    EXPECT_EQ(played_->received().back(), "<Method>HoldCall</Method><CallID>7</CallID>");
}

TEST_P(PlayedTelephoneTest, MessageThatTheTelephoneDoesNotAccept_IsRefusedWithItsSentence)
{
    played_->answer = [](std::string const& text) {
        return text == "hodl" ? PlayedTelephone::message("error", "no request or command hodl") : "";
    };
    Telephone phone = connect();

    auto const answer = phone.ask(requests::command("hodl"));

    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().kind, Error::Kind::kRefused);
    EXPECT_EQ(answer.error().reason, "no request or command hodl");
}

TEST_P(PlayedTelephoneTest, RequestWithoutAnAnswerInTime_DoesNotTakeTheNextOnesAnswer)
{
    played_->answer = [](std::string const& text) { return text == "lines" ? "unknown\n\0"s : ""; };
    Telephone phone = connect();

    auto const late = phone.ask(requests::command("lines"), 20ms);
    played_->say(PlayedTelephone::message("result", "4711"));
    auto const next = phone.ask(requests::getServiceState());

    EXPECT_EQ(late.error().kind, Error::Kind::kTimeout);
    EXPECT_EQ(next.error().reason, "the telephone's answer cannot be read: sfiSuccess");
}

TEST_P(PlayedTelephoneTest, KindsThatTheClientDoesNotKnow_AreIgnored)
{
    Telephone phone = connect();

    played_->say("weather 7\nrain\0"s);
    played_->happen("<Method>CallWhistledEvent</Method><CallID>3</CallID>");
    played_->happen(held(3));

    auto const unknown = phone.nextEvent(kDeadline).value();
    EXPECT_EQ(unknown.as<UnknownEvent>()->method, "CallWhistledEvent");
    EXPECT_EQ(unknown.text, "<Method>CallWhistledEvent</Method><CallID>3</CallID>");
    EXPECT_EQ(phone.waitFor<CallHeld>(kDeadline).value().callID, 3);
}

TEST_P(PlayedTelephoneTest, Event_HasItsNumberAndMomentAndIsInTheState)
{
    Telephone phone = connect();

    played_->happen(held(3));
    played_->happen(held(4));

    Event const first = phone.nextEvent(kDeadline).value();
    EXPECT_EQ(first.number, 1U);
    EXPECT_EQ(first.time.time_since_epoch(), 1795381797123ms);
    EXPECT_GE(phone.state().event, 1);
    Event const second = phone.nextEvent(kDeadline).value();
    EXPECT_EQ(second.as<CallHeld>()->callID, 4);
    EXPECT_EQ(phone.state().event, 2);
}

TEST_P(PlayedTelephoneTest, WaitFor_TakesTheEventAndLeavesTheOthers)
{
    Telephone phone = connect();
    played_->happen(held(3));
    played_->happen(held(4));

    auto const isFour = [](CallHeld const& event) { return event.callID == 4; };
    EXPECT_EQ(phone.waitFor<CallHeld>(kDeadline, isFour).value().callID, 4);
    EXPECT_EQ(phone.waitFor<CallHeld>(10ms, isFour).error().reason, "no such event came in time");
    EXPECT_EQ(phone.waitFor<CallHeld>(kDeadline).value().callID, 3);
}

TEST_P(PlayedTelephoneTest, KeptEvents_LoseTheOldest)
{
    Options few = options();
    few.keptEvents = 2;
    Telephone phone = Telephone::connect(few).value();
    std::vector<std::int64_t> handled;
    phone.onEvent([&handled](Event const& event) { handled.push_back(event.as<CallHeld>()->callID); });

    for (int call = 1; call <= 3; ++call) {
        played_->happen(held(call));
    }
    ASSERT_TRUE(phone.run([&handled] { return handled.size() == 3; }, kDeadline));

    EXPECT_EQ(handled, (std::vector<std::int64_t>{1, 2, 3}));
    EXPECT_EQ(phone.nextEvent(kDeadline).value().number, 2U);
}

TEST_P(PlayedTelephoneTest, LostConnection_IsMadeAgainAndMissesNoEvent)
{
    Telephone phone = connect();
    std::vector<std::string> seen;
    phone.onConnection(
        [&seen](bool isConnected, std::string const& reason) { seen.push_back(isConnected ? "connected" : reason); });
    played_->happen(held(3));
    ASSERT_TRUE(phone.nextEvent(kDeadline));

    played_->hangUp();
    ASSERT_TRUE(phone.run([&phone] { return !phone.isConnected(); }, kDeadline));
    ASSERT_TRUE(phone.run([&phone] { return phone.isConnected(); }, kDeadline));

    EXPECT_EQ(seen, (std::vector<std::string>{"the telephone has ended", "connected"}));
    EXPECT_EQ(played_->received().back(), "events after 1 of first");
    EXPECT_TRUE(phone.ask(requests::holdCall(3)));
}

TEST_P(PlayedTelephoneTest, RequestInAConnectionThatEnds_IsLost)
{
    played_->answer = [](std::string const& text) { return text[0] == '<' ? "unknown\n\0"s : ""; };
    Telephone phone = connect();
    std::optional<Expected<Nothing>> answer;
    phone.ask<Nothing>(requests::holdCall(3), [&answer](Expected<Nothing> const& given) { answer = given; });

    played_->hangUp();
    ASSERT_TRUE(phone.run([&answer] { return answer.has_value(); }, kDeadline));

    EXPECT_EQ(answer->error().kind, Error::Kind::kLost);
    EXPECT_EQ(answer->error().reason, "the telephone has ended before it answered");
    EXPECT_EQ(phone.ask(requests::holdCall(3)).error().kind, Error::Kind::kUnavailable);
}

TEST_P(PlayedTelephoneTest, WithoutReconnect_ALostConnectionEndsTheWaiting)
{
    Options once = options();
    once.reconnect = false;
    Telephone phone = Telephone::connect(once).value();

    played_->hangUp();

    EXPECT_EQ(phone.nextEvent(kDeadline).error().kind, Error::Kind::kLost);
}

TEST_P(PlayedTelephoneTest, AnotherStartOfTheTelephone_IsAGapWithItsState)
{
    Telephone phone = connect();
    played_->happen(held(3));
    ASSERT_TRUE(phone.nextEvent(kDeadline));

    played_.reset();
    ASSERT_TRUE(phone.run([&phone] { return !phone.isConnected(); }, kDeadline));
    played_ = std::make_unique<PlayedTelephone>(path(), "second");
    auto const gap = phone.waitFor<Gap>(kDeadline);

    ASSERT_TRUE(gap);
    EXPECT_EQ(phone.state().start, "second");
    EXPECT_TRUE(phone.isConnected());
    played_->happen(held(4));
    EXPECT_EQ(phone.waitFor<CallHeld>(kDeadline).value().callID, 4);
}

TEST_P(PlayedTelephoneTest, EventsThatAreNoLongerKept_AreAGapBetweenTheOthers)
{
    Telephone phone = connect();

    played_->happen(held(3));
    played_->forget(5);
    played_->happen(held(4));

    EXPECT_EQ(phone.nextEvent(kDeadline).value().as<CallHeld>()->callID, 3);
    Event const second = phone.nextEvent(kDeadline).value();
    ASSERT_NE(second.as<Gap>(), nullptr);
    EXPECT_EQ(second.as<Gap>()->first, 2U);
    EXPECT_EQ(second.as<Gap>()->last, 6U);
    Event const third = phone.nextEvent(kDeadline).value();
    EXPECT_EQ(third.number, 7U);
    EXPECT_EQ(third.as<CallHeld>()->callID, 4);
}

TEST_P(PlayedTelephoneTest, LoopOfTheCaller_NeedsOneDescriptorAndNeverWaits)
{
    Telephone phone = connect();
    int const descriptor = phone.descriptor();
    bool isAnswered = false;
    std::vector<std::uint64_t> numbers;
    phone.onEvent([&](Event const& event) {
        numbers.push_back(event.number);
        phone.ask<Nothing>(requests::holdCall(3),
                           [&isAnswered](Expected<Nothing> const& answer) { isAnswered = bool(answer); });
    });

    played_->happen(held(3));
    while (!isAnswered) {
        pollfd waited{descriptor, POLLIN, 0};
        ASSERT_EQ(poll(&waited, 1, 10000), 1);
        ASSERT_TRUE(phone.process());
    }
    played_->hangUp();
    for (bool const isConnected : {false, true}) {
        while (phone.isConnected() != isConnected) {
            pollfd waited{descriptor, POLLIN, 0};
            ASSERT_EQ(poll(&waited, 1, 10000), 1);
            ASSERT_TRUE(phone.process());
        }
    }

    EXPECT_EQ(numbers, std::vector<std::uint64_t>{1});
    EXPECT_EQ(played_->received().back(), "events after 1 of first");
    EXPECT_EQ(phone.descriptor(), descriptor);
}

TEST_P(PlayedTelephoneTest, HandlerThatWaits_IsRefused)
{
    Telephone phone = connect();
    std::optional<Error::Kind> kind;
    phone.onEvent([&](Event const&) { kind = phone.ask(requests::holdCall(3)).error().kind; });

    played_->happen(held(3));
    ASSERT_TRUE(phone.run([&kind] { return kind.has_value(); }, kDeadline));

    EXPECT_EQ(kind, Error::Kind::kMisuse);
}

TEST_P(PlayedTelephoneTest, StopDescriptor_EndsTheWaiting)
{
    int const stop = eventfd(1, EFD_CLOEXEC);
    Options stopped = options();
    Telephone phone = Telephone::connect(stopped).value();
    EXPECT_EQ(phone.nextEvent(20ms).error().kind, Error::Kind::kTimeout);

    stopped.stop = stop;
    auto const second = Telephone::connect(stopped);

    EXPECT_EQ(second.error().kind, Error::Kind::kStopped);
    close(stop);
}

TEST_P(PlayedTelephoneTest, TooManyApplications_IsSaidAsTheReason)
{
    played_->answer = [](std::string const&) {
        return PlayedTelephone::message("error", "there are 256 applications already");
    };

    auto const phone = Telephone::connect(options(), 100ms);

    ASSERT_FALSE(phone);
    EXPECT_EQ(phone.error().kind, Error::Kind::kUnavailable);
    EXPECT_EQ(phone.error().reason, "there are 256 applications already");
}

TEST(Connect, WithoutATelephone_SaysWhere)
{
    TemporaryFolder const folder;
    Options options;
    options.address = folder.file("nobody");

    auto const phone = Telephone::connect(options, 1ms);

    EXPECT_EQ(phone.error().kind, Error::Kind::kUnavailable);
    EXPECT_EQ(phone.error().reason, "no telephone answers at " + options.address + " (No such file or directory)");
}

}  // namespace

// What the functions for the telephone's own commands write.
#include <gtest/gtest.h>

#include "TelephoneClient.h"

using namespace telephone_client;
using namespace std::string_literals;

namespace {

std::string written(Request<std::string> const& command)
{
    return command.text.value();
}

TEST(Commands, TextsAndNumbers_AreWrittenBehindTheName)
{
    EXPECT_EQ(written(commands::lines()), "lines");
    EXPECT_EQ(written(commands::press("3")), "press 3");
    EXPECT_EQ(written(commands::press(3)), "press 3");
    EXPECT_EQ(written(commands::advance(20)), "advance 20");
    EXPECT_EQ(written(commands::advance(1.5)), "advance 1.5");
    EXPECT_EQ(written(commands::advance(-0.25F)), "advance -0.25");
    EXPECT_EQ(written(commands::stateSave("a.json")), "state save a.json");
}

TEST(Commands, WordsBeforeValues_AreWrittenWithThem)
{
    EXPECT_EQ(written(commands::call("4711", 555)), "call 4711 from 555");
    EXPECT_EQ(written(commands::call("4711", 555, "Ann")), "call 4711 from 555 name Ann");
    EXPECT_EQ(written(commands::message(4711, 2, 0)), "message 4711 new 2 old 0");
}

TEST(Commands, OptionalArguments_AreWrittenInTheOrderOfTheCommandOrLeftOut)
{
    EXPECT_EQ(written(commands::recordOff()), "record off");
    EXPECT_EQ(written(commands::recordOff("4711")), "record off 4711");
    EXPECT_EQ(written(commands::plug(Plug::kHeadset)), "plug headset");
    EXPECT_EQ(written(commands::plug(Plug::kLine, true)), "plug line out");
    EXPECT_EQ(written(commands::exchange(107, "answer")), "exchange 107 answer");
    EXPECT_EQ(written(commands::exchange(107, "answer", true)), "exchange 107 does answer");
}

TEST(Commands, Choices_AreWrittenAsTheirWords)
{
    EXPECT_EQ(written(commands::hook(Hook::kUp)), "hook up");
    EXPECT_EQ(written(commands::registrar(Registrar::kOff)), "registrar off");
    EXPECT_EQ(written(commands::exchangeRegistrar(ExchangeRegistrar::kRefuse, 403)), "exchange registrar refuse 403");
}

TEST(Commands, ValuesThatAreNotOneWord_AreQuoted)
{
    EXPECT_EQ(written(commands::say("")), "say \"\"");
    EXPECT_EQ(written(commands::say("two words")), "say \"two words\"");
    EXPECT_EQ(written(commands::say("#1")), "say \"#1\"");
    EXPECT_EQ(written(commands::say("it's")), "say \"it's\"");
    EXPECT_EQ(written(commands::say(R"(a "b\c")")), R"(say "a \"b\\c\"")");
    EXPECT_EQ(written(commands::say(R"(b\c)")), R"(say b\c)");
}

TEST(Commands, ValueWithANul_IsRefused)
{
    auto const command = commands::press("3\0"s);

    EXPECT_EQ(command.text.error().kind, Error::Kind::kBadInput);
    EXPECT_EQ(command.text.error().reason, "the command contains a NUL, which ends a message");
}

static_assert(!std::is_constructible_v<commands::Argument, bool>);
static_assert(!std::is_constructible_v<commands::Argument, char>);
static_assert(!std::is_invocable_v<decltype(commands::hook), char const*>, "only the words of the command");

}  // namespace

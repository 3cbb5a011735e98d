#include "telephone/protocol/Vocabulary.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

std::string refusalOf(Enumeration const& enumeration, std::string_view typed)
{
    auto const value = findValue(enumeration, typed);
    return value ? "" : value.error().reason;
}

int numberOf(Enumeration const& enumeration, std::string_view typed)
{
    auto const value = findValue(enumeration, typed);
    return value ? (*value)->number : -1;
}

TEST(Vocabulary, NameOfValue_OfANumber_IsItsName)
{
    EXPECT_EQ(nameOfValue(enumerations::kCallState, "3"), "remote ringing");
    EXPECT_EQ(nameOfValue(enumerations::kCallState, 17), "accepted");
    EXPECT_EQ(nameOfValue(enumerations::kRegistrationResult, "4"), "given up on purpose");
}

TEST(Vocabulary, NameOfValue_OfAWord_IsItsName)
{
    EXPECT_EQ(nameOfValue(enumerations::kAgentState, "workingAfterCall"), "working after call");
    EXPECT_EQ(nameOfValue(enumerations::kResult, "sfiSuccess"), "success");
    EXPECT_EQ(nameOfValue(enumerations::kServiceState, "sfiServiceInService"), "in service");
}

TEST(Vocabulary, NameOfValue_WithoutAName_IsTheValueWithAQuestionMark)
{
    EXPECT_EQ(nameOfValue(enumerations::kCallState, "15"), "15?");
    EXPECT_EQ(nameOfValue(enumerations::kCallState, -7), "-7?");
    EXPECT_EQ(nameOfValue(enumerations::kCallState, ""), "?");
    EXPECT_EQ(nameOfValue(enumerations::kCallState, "3 "), "3 ?");
    EXPECT_EQ(nameOfValue(enumerations::kAgentState, "asleep"), "asleep?");
    EXPECT_EQ(nameOfValue(enumerations::kAgentState, "0"), "0?");
}

TEST(Vocabulary, FindValue_TakesNumberNameAndWord)
{
    EXPECT_EQ(numberOf(enumerations::kCallState, "3"), 3);
    EXPECT_EQ(numberOf(enumerations::kCallState, "remote ringing"), 3);
    EXPECT_EQ(numberOf(enumerations::kCallState, "remoteRinging"), 3);
    EXPECT_EQ(numberOf(enumerations::kCallState, "REMOTE-RINGING"), 3);
    EXPECT_EQ(numberOf(enumerations::kCallState, "sfiCallStateRemoteRinging"), 3);
    EXPECT_EQ(numberOf(enumerations::kForwardReason, "do not disturb"), 5);
    EXPECT_EQ(numberOf(enumerations::kAgentState, "ready"), 3);
    EXPECT_EQ(numberOf(enumerations::kResult, "sfifailure"), 0);
}

TEST(Vocabulary, FindValue_OfAnythingElse_IsRefusedWithTheNearestName)
{
    EXPECT_EQ(refusalOf(enumerations::kCallState, "conected"),
              "\"conected\" is not a value of CallState (did you mean connected?)");
    EXPECT_EQ(refusalOf(enumerations::kCallState, "15"), "\"15\" is not a value of CallState");
    EXPECT_EQ(refusalOf(enumerations::kCallState, "xyzzy"), "\"xyzzy\" is not a value of CallState");
}

TEST(Vocabulary, TextOfValue_IsWhatMessagesCarry)
{
    EXPECT_EQ(textOfValue(enumerations::kCallState, *enumerations::kCallState.find(13)), "13");
    EXPECT_EQ(textOfValue(enumerations::kAgentState, *enumerations::kAgentState.findWord("notReady")), "notReady");
}

}  // namespace
}  // namespace telephone

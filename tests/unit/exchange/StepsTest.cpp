#include "telephone/exchange/Steps.h"

#include <gtest/gtest.h>

#include "telephone/exchange/BuiltInNumbers.h"

namespace telephone::exchange {
namespace {

// The steps as they are written again, or why they are refused.
std::string readAgain(std::string_view text, CallPhase begin = CallPhase::kOffered)
{
    auto const steps = readSteps(text);
    auto const checked = steps.and_then([begin](Steps const& read) { return checkOrder(read, begin); });
    return checked ? formatSteps(*steps) : checked.error().reason;
}

struct Form
{
    char const* name;
    std::string text;
    std::string result;
};

std::string nameOf(::testing::TestParamInfo<Form> const& form)
{
    return form.param.name;
}

class StepsForms : public ::testing::TestWithParam<Form>
{};

TEST_P(StepsForms, AreReadOrRefused)
{
    EXPECT_EQ(readAgain(GetParam().text), GetParam().result);
}

std::string const kAll = "ring, early-media, reliable, answer, say, dtmf, hold, retrieve, refresh, transfer, redirect, "
                         "busy, refuse, hang-up, preempt, call, wait, silent, garbage, seize, release, private, public";

INSTANTIATE_TEST_SUITE_P(
    Right, StepsForms,
    ::testing::Values(Form{"Blanks", "  ring   2s ,answer  ", "ring 2s, answer"},
                      Form{"Capitals", "Ring 2s, ANSWER", "ring 2s, answer"},
                      Form{"Fraction", "ring 1.5s, wait 250ms", "ring 1500ms, wait 250ms"},
                      Form{"Early", "early-media 1s, answer, dtmf 12#, garbage, silent",
                           "early-media 1s, answer, dtmf 12#, garbage, silent"},
                      Form{"CallBack", "answer, hold 1s, retrieve, hang-up, wait 2s, call caller 5s, hang-up",
                           "answer, hold 1s, retrieve, hang-up, wait 2s, call caller 5s, hang-up"},
                      Form{"Transfer", "answer, transfer 100, hang-up", "answer, transfer 100, hang-up"},
                      Form{"Redirect", "ring 1s, redirect +49-30.1", "ring 1s, redirect +49-30.1"},
                      Form{"Refuse", "refuse 480", "refuse 480"}, Form{"Busy", "busy", "busy"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Wrong, StepsForms,
    ::testing::Values(
        Form{"None", "", "a number needs at least one step; the steps are " + kAll},
        Form{"OnlyBlanks", "  ", "a number needs at least one step; the steps are " + kAll},
        Form{"Unknown", "ring, dance", "there is no step \"dance\"; the steps are " + kAll},
        Form{"Empty", "ring,,answer", "there is no step \"\"; the steps are " + kAll},
        Form{"SurplusArgument", "busy 5", "\"busy 5\" is written as: busy"},
        Form{"NoArgument", "answer, dtmf", "\"dtmf\" is written as: dtmf DIGITS"},
        Form{"NoTime", "wait", "\"wait\" is written as: wait TIME"},
        Form{"TimeWithoutUnit", "ring 2", "\"2\" is not a time; write 2s or 500ms, up to 86400s"},
        Form{"NegativeTime", "ring -1s", "\"-1s\" is not a time; write 2s or 500ms, up to 86400s"},
        Form{"TimeTooLong", "ring 86401s", "\"86401s\" is not a time; write 2s or 500ms, up to 86400s"},
        Form{"TimeThatIsNone", "ring nans", "\"nans\" is not a time; write 2s or 500ms, up to 86400s"},
        Form{"TimeOfACall", "answer, hang-up, call 100 soon",
             "\"soon\" is not a time; write 2s or 500ms, up to 86400s"},
        Form{"Digits", "answer, dtmf 12x", "\"12x\" are not digits; dtmf takes 1 to 64 of 0 to 9, *, # and A to D"},
        Form{"Status", "refuse 200", "\"200\" is not a status from 400 to 699"},
        Form{"StatusText", "refuse busy", "\"busy\" is not a status from 400 to 699"},
        Form{"Number", "redirect sip:100@x",
             "the number of \"redirect\" must consist of 1 to 64 letters, digits, and + - . _ * #"},
        Form{"HoldBeforeTheAnswer", "ring, hold 1s",
             "\"hold 1s\" is not possible before the answer; possible there: ring, early-media, reliable, answer, "
             "redirect, busy, refuse, wait, silent, garbage"},
        Form{"AnswerTwice", "answer, answer",
             "\"answer\" is not possible in an answered call; possible there: say, dtmf, hold, refresh, transfer, "
             "hang-up, preempt, wait, silent, garbage, private, public"},
        Form{"HoldTwice", "answer, hold, hold",
             "\"hold\" is not possible in a held call; possible there: retrieve, refresh, transfer, hang-up, "
             "preempt, wait, silent, garbage, private, public"},
        Form{"RetrieveWithoutHold", "answer, retrieve",
             "\"retrieve\" is not possible in an answered call; possible there: say, dtmf, hold, refresh, transfer, "
             "hang-up, preempt, wait, silent, garbage, private, public"},
        Form{"AfterTheEnd", "busy, answer",
             "\"answer\" is not possible while there is no call; possible there: call, wait, seize"},
        Form{"AfterSilence", "silent, hang-up", "\"hang-up\" is not possible after silent; possible there: nothing"},
        Form{"CallInACall", "answer, call 100",
             "\"call 100\" is not possible in an answered call; possible there: say, dtmf, hold, refresh, transfer, "
             "hang-up, preempt, wait, silent, garbage, private, public"}),
    nameOf);

std::string const kWrongDigits = "\" are not digits; dtmf takes 1 to 64 of 0 to 9, *, # and A to D";
std::string const kWrongNumber = "the number of \"redirect\" must consist of 1 to 64 letters, digits, and + - . _ * #";

INSTANTIATE_TEST_SUITE_P(
    AtTheirLimits, StepsForms,
    ::testing::Values(
        Form{"LongestTime", "ring 86400s", "ring 86400s"},
        Form{"TimeTooLong", "ring 86400001ms", "\"86400001ms\" is not a time; write 2s or 500ms, up to 86400s"},
        Form{"AllDigits", "answer, dtmf 0123456789*#ABCDabcd", "answer, dtmf 0123456789*#ABCDabcd"},
        Form{"MostDigits", "answer, dtmf " + std::string(64, '1'), "answer, dtmf " + std::string(64, '1')},
        Form{"TooManyDigits", "answer, dtmf " + std::string(65, '1'), "\"" + std::string(65, '1') + kWrongDigits},
        Form{"OtherDigit", "answer, dtmf E", "\"E" + kWrongDigits},
        Form{"LongestNumber", "redirect " + std::string(64, 'x'), "redirect " + std::string(64, 'x')},
        Form{"NumberTooLong", "redirect " + std::string(65, 'x'), kWrongNumber},
        Form{"AllOfANumber", "redirect 09AZaz+-._*#", "redirect 09AZaz+-._*#"},
        Form{"FirstStatus", "refuse 400", "refuse 400"}, Form{"LastStatus", "refuse 699", "refuse 699"},
        Form{"StatusTooLow", "refuse 399", "\"399\" is not a status from 400 to 699"},
        Form{"StatusTooHigh", "refuse 700", "\"700\" is not a status from 400 to 699"}),
    nameOf);

TEST(Steps, WhatIsPossible_DependsOnThePhaseOfTheCall)
{
    EXPECT_EQ(readAgain("early-media, hold"),
              "\"hold\" is not possible before the answer; possible there: ring, early-media, reliable, answer, say, "
              "redirect, busy, refuse, wait, silent, garbage");
    EXPECT_EQ(readAgain("busy", CallPhase::kSeized),
              "\"busy\" is not possible on a seized line; possible there: call, wait, release, private, public");
    EXPECT_EQ(readAgain("seize, private, public, wait 1s, call 100, hold, public, transfer 4711, preempt",
                        CallPhase::kNoCall),
              "seize, private, public, wait 1s, call 100, hold, public, transfer 4711, preempt");
    EXPECT_EQ(readAgain("seize, release, seize", CallPhase::kNoCall), "seize, release, seize");
    EXPECT_EQ(readAgain("answer, hold, retrieve, refresh, garbage, hang-up, wait 1s, seize"),
              "answer, hold, retrieve, refresh, garbage, hang-up, wait 1s, seize");
}

TEST(Steps, Tone_LastsASecond)
{
    auto const steps = readSteps("answer, say tone");

    ASSERT_TRUE(steps);
    EXPECT_EQ(steps->back().sound->size(), 8000U);
}

TEST(Steps, SoundFileThatIsNotThere_IsRefusedWithItsName)
{
    std::string const reason = readAgain("answer, say /no/such.wav");

    EXPECT_EQ(reason.rfind("audio file /no/such.wav: ", 0), 0U) << reason;
}

TEST(Steps, EachStepATextOfItsOwn_MayHaveCommas)
{
    auto const steps = readSteps(std::vector<std::string>{"answer", "say /no,such.wav"});

    ASSERT_FALSE(steps);
    EXPECT_EQ(steps.error().reason.rfind("audio file /no,such.wav: ", 0), 0U) << steps.error().reason;
}

TEST(Steps, SequenceThatCalls_BeginsWithoutACall)
{
    EXPECT_EQ(readAgain("call 4711, wait 2s, hang-up", CallPhase::kNoCall), "call 4711, wait 2s, hang-up");
    EXPECT_EQ(readAgain("hang-up", CallPhase::kCalling), "hang-up");
    EXPECT_EQ(readAgain("hold", CallPhase::kCalling),
              "\"hold\" is not possible before the far end answers; possible there: hang-up");
}

TEST(BuiltInNumbers, AllSteps_AreInOrder)
{
    for (BuiltInNumber const& each : kBuiltInNumbers) {
        EXPECT_EQ(readAgain(each.does), each.does) << each.number;
    }
}

}  // namespace
}  // namespace telephone::exchange

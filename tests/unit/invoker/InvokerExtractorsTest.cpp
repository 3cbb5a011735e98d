#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "CommunicationsServiceRequests.h"
#include "src/CommunicationsServiceInvoker.h"

namespace {
using Invoker = CommunicationsServiceInvoker;

std::string lineOf(std::string const& message)
{
    return Invoker::getParamAsString("<Line>", message, "</Line>");
}

int callOf(std::string const& message)
{
    return Invoker::getParamAsLong("<CallID>", message, "</CallID>");
}

sfiServiceState stateOf(std::string const& message)
{
    return Invoker::getParamAsServiceState("<state>", message, "</state>");
}

struct TextCase
{
    std::string message;
    std::string value;
};

class TextExtractor : public testing::TestWithParam<TextCase>
{};

TEST_P(TextExtractor, GivesTheWrittenValue)
{
    EXPECT_EQ(lineOf(GetParam().message), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(All, TextExtractor,
                         testing::Values(TextCase{"<Method>HoldCall</Method>", ""}, TextCase{"", ""},
                                         TextCase{"<Line>4711</Line>", "4711"}, TextCase{"<Line></Line>", ""},
                                         TextCase{"<Line> 47 11 </Line>", " 47 11 "},
                                         TextCase{"<Line>a</Line><Line>b</Line>", "a"}, TextCase{"<Line>a", ""},
                                         TextCase{"a</Line>", ""}, TextCase{"</Line><Line>a", ""},
                                         TextCase{"</Line>x<Line>a</Line>", "a"}, TextCase{"<line>a</line>", ""},
                                         TextCase{"<Line>a</line>b</Line>", "a</line>b"},
                                         TextCase{"<Line>a<Line>b</Line>c</Line>", "a<Line>b"},
                                         TextCase{"<Line><CallID>1</CallID></Line>", "<CallID>1</CallID>"},
                                         TextCase{"<Line ><Line>a</Line>", "a"}, TextCase{"<<Line>a<</Line>>", "a<"},
                                         TextCase{"<Line", ""}, TextCase{"<Line></Lin", ""},
                                         TextCase{std::string("<Line>a\0b</Line>", 16), std::string("a\0b", 3)}));

TEST(TextExtractor, WithAnEmptyOpeningTag_StartsAtTheBeginning)
{
    EXPECT_EQ(Invoker::getParamAsString("", "abc;def", ";"), "abc");
}

TEST(TextExtractor, WithAnEmptyClosingTag_IsEmpty)
{
    EXPECT_EQ(Invoker::getParamAsString("abc", "abcdef", ""), "");
}

TEST(TextExtractor, WithOtherTags_WorksTheSame)
{
    EXPECT_EQ(Invoker::getParamAsString("begin", "xbeginyendz", "end"), "y");
}

struct NumberCase
{
    std::string message;
    int value;
};

class NumberExtractor : public testing::TestWithParam<NumberCase>
{};

TEST_P(NumberExtractor, GivesTheWrittenValue)
{
    EXPECT_EQ(callOf(GetParam().message), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    All, NumberExtractor,
    testing::Values(
        NumberCase{"<Method>HoldCall</Method>", -1}, NumberCase{"<CallID>7", -1}, NumberCase{"7</CallID>", -1},
        NumberCase{"<CallID></CallID>", 0}, NumberCase{"<CallID>abc</CallID>", 0}, NumberCase{"<CallID>7</CallID>", 7},
        NumberCase{"<CallID> 12abc</CallID>", 12}, NumberCase{"<CallID> \t\n\v\f\r12</CallID>", 12},
        NumberCase{"<CallID>\b12</CallID>", 0},
        NumberCase{"<CallID>\x0e"
                   "12</CallID>",
                   0},
        NumberCase{"<CallID>+5</CallID>", 5}, NumberCase{"<CallID>-5</CallID>", -5},
        NumberCase{"<CallID>- 5</CallID>", 0}, NumberCase{"<CallID>+-5</CallID>", 0},
        NumberCase{"<CallID>-+5</CallID>", 0}, NumberCase{"<CallID>-</CallID>", 0}, NumberCase{"<CallID>+</CallID>", 0},
        NumberCase{"<CallID> </CallID>", 0}, NumberCase{"<CallID>--5</CallID>", 0},
        NumberCase{"<CallID>007</CallID>", 7}, NumberCase{"<CallID>0x10</CallID>", 0},
        NumberCase{"<CallID>1 2</CallID>", 1}, NumberCase{"<CallID>1.9</CallID>", 1},
        NumberCase{"<CallID>1e3</CallID>", 1}, NumberCase{"<CallID>109</CallID>", 109},
        NumberCase{"<CallID>1/2</CallID>", 1}, NumberCase{"<CallID>3:4</CallID>", 3},
        NumberCase{"<CallID>2147483646</CallID>", 2147483646}, NumberCase{"<CallID>2147483647</CallID>", 2147483647},
        NumberCase{"<CallID>2147483648</CallID>", 2147483647}, NumberCase{"<CallID>2147483649</CallID>", 2147483647},
        NumberCase{"<CallID>4294967296</CallID>", 2147483647}, NumberCase{"<CallID>4294967301</CallID>", 2147483647},
        NumberCase{"<CallID>99999999999999999999999999</CallID>", 2147483647},
        NumberCase{"<CallID>9223372036854775808</CallID>", 2147483647},
        NumberCase{"<CallID>18446744073709551617</CallID>", 2147483647},
        NumberCase{"<CallID>-2147483647</CallID>", -2147483647},
        NumberCase{"<CallID>-2147483648</CallID>", -2147483647 - 1},
        NumberCase{"<CallID>-2147483649</CallID>", -2147483647 - 1},
        NumberCase{"<CallID>-9223372036854775809</CallID>", -2147483647 - 1},
        NumberCase{"<CallID>-99999999999999999999999999</CallID>", -2147483647 - 1},
        NumberCase{std::string("<CallID>1\0"
                               "2</CallID>",
                               20),
                   1},
        NumberCase{"<CallID>1</CallID><CallID>2</CallID>", 1}));

struct StateCase
{
    std::string message;
    sfiServiceState value;
};

class StateExtractor : public testing::TestWithParam<StateCase>
{};

TEST_P(StateExtractor, GivesTheWrittenValue)
{
    EXPECT_EQ(stateOf(GetParam().message), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    All, StateExtractor,
    testing::Values(
        StateCase{"<state>sfiServiceInService</state>", sfiServiceInService},
        StateCase{"<state>sfiServiceOutOfService</state>", sfiServiceOutOfService},
        StateCase{"<state>sfiServiceDoNotDisturb</state>", sfiServiceDoNotDisturb},
        StateCase{"<state>sfiservicedonotdisturb</state>", sfiServiceOutOfService},
        StateCase{"<state>sfiServiceDoNotDisturb </state>", sfiServiceOutOfService},
        StateCase{"<state>0</state>", sfiServiceOutOfService}, StateCase{"<state></state>", sfiServiceOutOfService},
        StateCase{"<Method>SetServiceState</Method>", sfiServiceOutOfService},
        StateCase{"sfiServiceInService</state>", sfiServiceOutOfService}, StateCase{"", sfiServiceOutOfService},
        // no closing tag: the rest of the message
        StateCase{"<state>sfiServiceInService", sfiServiceInService},
        StateCase{"<state>sfiServiceInService<x>", sfiServiceOutOfService},
        StateCase{"<state>", sfiServiceOutOfService},
        // a closing tag before the opening one: the rest of the message as well
        StateCase{"</state><state>sfiServiceInService", sfiServiceInService},
        StateCase{"</state><state>sfiServiceInService</state>", sfiServiceOutOfService},
        StateCase{"<state>sfiServiceInService</state><state>sfiServiceDoNotDisturb</state>", sfiServiceInService}));

TEST(ServiceStateWords, StandAtThePlaceOfTheirValue)
{
    EXPECT_EQ(kRequestServiceStates[sfiServiceInService], "sfiServiceInService");
    EXPECT_EQ(kRequestServiceStates[sfiServiceOutOfService], "sfiServiceOutOfService");
    EXPECT_EQ(kRequestServiceStates[sfiServiceDoNotDisturb], "sfiServiceDoNotDisturb");
}

TEST(ResultWord, IsTheOneOfTheTable)
{
    EXPECT_EQ(Invoker::genterateReturnString(sfiSuccess), "sfiSuccess");
    EXPECT_EQ(Invoker::genterateReturnString(sfiFailureCallBackInvalidState), "sfiFailureCallBackInvalidState");
    EXPECT_EQ(Invoker::genterateReturnString(sfiFailureCallBackNoCallInfo), "sfiFailureCallBackNoCallInfo");
    EXPECT_EQ(Invoker::genterateReturnString(sfiFailureCallBackToMany), "sfiFailureCallBackToMany");
    EXPECT_EQ(Invoker::genterateReturnString(sfiFailureCallBackAllreadyExists), "sfiFailureCallBackAllreadyExists");
    EXPECT_EQ(Invoker::genterateReturnString(sfiFailure), "sfiFailure");
}

TEST(ResultWord, OfAnyOtherValue_IsFailure)
{
    for (int const value : {-1, 6, 7, 255, 256 + 5, -2147483647 - 1, 2147483647}) {
        EXPECT_EQ(Invoker::genterateReturnString(static_cast<sfiResult>(value)), "sfiFailure") << value;
    }
}

TEST(ResultWord, IsAmongTheDescribedOnes)
{
    for (int value = 0; value <= 5; ++value) {
        auto const word = Invoker::genterateReturnString(static_cast<sfiResult>(value));
        bool described = false;
        for (auto const known : kRequestResultWords) {
            described = described || known == word;
        }
        EXPECT_TRUE(described) << word;
    }
}
}  // namespace

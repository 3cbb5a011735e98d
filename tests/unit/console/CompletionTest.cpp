#include "telephone/console/Completion.h"

#include <gtest/gtest.h>

using telephone::completions;
using Texts = std::vector<std::string>;

TEST(Completion, BeginningOfAName_BecomesRequestsAndCommands)
{
    EXPECT_EQ(completions("Hold"), Texts{"HoldCall"});
    EXPECT_EQ(completions("ho"), (Texts{"HoldCall", "hook"}));
    EXPECT_EQ(completions("xyz"), Texts{});
}

TEST(Completion, AfterARequest_ItsParametersThatAreNotWrittenYet)
{
    EXPECT_EQ(completions("HoldCall "), (Texts{"Line=", "CallID=", "HoldCallReason=", "Manual="}));
    EXPECT_EQ(completions("HoldCall Line=4711 "), (Texts{"CallID=", "HoldCallReason=", "Manual="}));
    EXPECT_EQ(completions("HoldCall Line=4711 c"), Texts{"CallID="});
}

TEST(Completion, AfterHelp_EveryName)
{
    EXPECT_EQ(completions("help CallH"), Texts{"CallHeldEvent"});
    EXPECT_EQ(completions("help HoldC"), Texts{"HoldCall"});
}

TEST(Completion, AfterACommand_Nothing)
{
    EXPECT_EQ(completions("press 1"), Texts{});
}

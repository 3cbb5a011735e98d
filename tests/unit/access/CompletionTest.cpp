#include "telephone/access/Completion.h"

#include <gtest/gtest.h>

#include "telephone/access/Commands.h"

using namespace telephone;

namespace {

using Texts = std::vector<std::string>;

class Completion : public testing::Test
{
protected:
    Completion()
    {
        state_.start = "abc";
        state_.lines.resize(1);
        state_.lines[0].id = "4711";
        state_.lines[0].appearances.resize(1);
        state_.lines[0].appearances[0].id = "4711#1";
        state_.calls.resize(1);
        state_.calls[0].id = 1001;
        state_.keys.resize(2);
        state_.keys[0].number = 3;
    }

    Texts of(std::string const& line) { return completions(line, {state_, settings_, description_}); }

private:
    TelephoneState state_;
    Texts settings_{"agent-state", "phone-locked"};
    ProtocolDescription description_{"1.2.3", commandDescriptions()};
};

}  // namespace

TEST_F(Completion, BeginningOfAName_BecomesRequestsAndCommands)
{
    EXPECT_EQ(of("Hold"), Texts{"HoldCall"});
    EXPECT_EQ(of("ho"), (Texts{"HoldCall", "hook"}));
    EXPECT_EQ(of("sto"), Texts{"store"});
    EXPECT_EQ(of("xyz"), Texts{});
}

TEST_F(Completion, AfterARequest_ItsParametersThatAreNotWrittenYet)
{
    EXPECT_EQ(of("HoldCall "), (Texts{"Line=", "CallID=", "HoldCallReason=", "Manual="}));
    EXPECT_EQ(of("HoldCall Line=4711 "), (Texts{"CallID=", "HoldCallReason=", "Manual="}));
    EXPECT_EQ(of("HoldCall Line=4711 c"), Texts{"CallID="});
}

TEST_F(Completion, AfterAParameter_ItsValues)
{
    EXPECT_EQ(of("HoldCall Line="), (Texts{"Line=4711", "Line=4711#1"}));
    EXPECT_EQ(of("HoldCall Line=4711 CallID=1"), Texts{"CallID=1001"});
    EXPECT_EQ(of("SetServiceState state=sfiServiceO"), Texts{"state=sfiServiceOutOfService"});
}

TEST_F(Completion, AfterHelp_EveryName)
{
    EXPECT_EQ(of("help CallH"), Texts{"CallHeldEvent"});
    EXPECT_EQ(of("help HoldC"), (Texts{"HoldCall", "HoldCallReason"}));
}

TEST_F(Completion, AfterACommand_ItsWordsAndValues)
{
    EXPECT_EQ(of("press "), Texts{"3"});
    EXPECT_EQ(of("hook "), (Texts{"up", "down"}));
    EXPECT_EQ(of("record on "), (Texts{"4711", "4711#1"}));
    EXPECT_EQ(of("store "), (Texts{"list", "get", "set"}));
    EXPECT_EQ(of("store get ph"), Texts{"phone-locked"});
    EXPECT_EQ(of("call 4711 "), Texts{"from"});
    EXPECT_EQ(of("events only CallHe"), Texts{"CallHeldEvent"});
    EXPECT_EQ(of("press 3 "), Texts{});
}

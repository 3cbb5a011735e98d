#include "telephone/fleet/FleetCommands.h"

#include <gmock/gmock.h>

#include "FleetDouble.h"

using namespace telephone;

namespace {

class FleetCommandsTest : public FleetDouble
{
protected:
    void SetUp() override { make(3, kRuns); }
    std::string refusalOf(std::string_view line) { return runFleetLine(*members_, line).error().reason; }
};

TEST_F(FleetCommandsTest, Help_ListsTheCommands)
{
    EXPECT_EQ(runFleetLine(*members_, "help").value(),
              "NUMBERS are 7, 3-5, 1,4 or all. {number} in a command is the number of the telephone, 007.\n"
              "  list [NUMBERS]          telephones with registration, calls, memory and processor time\n"
              "  do NUMBERS COMMAND      gives them a command or a request: do 7 press 3\n"
              "  call FROM TO | pairs    FROM calls TO, which answers; pairs: 1 calls 2, 3 calls 4, ...\n"
              "  stop NUMBERS            ends them\n"
              "  start NUMBERS           starts them again, at once\n"
              "  wait [TIME]             waits: 5, 2.5s, 200ms; without a time until a signal comes\n"
              "  help                    this list\n"
              "  quit                    ends the fleet");
}

TEST_F(FleetCommandsTest, WhatIsNotUnderstood_IsRefusedWithWhatIs)
{
    EXPECT_EQ(refusalOf("press 3"), "\"press\" is not a command of the fleet; help lists them");
    EXPECT_EQ(refusalOf("do 7"), "write do NUMBERS COMMAND");
    EXPECT_EQ(refusalOf("call 1"), "write call FROM TO | pairs");
    EXPECT_EQ(refusalOf("call 1-2 3"), "2 telephones cannot call 1: name as many on both sides");
    EXPECT_EQ(refusalOf("stop"), "write stop NUMBERS");
    EXPECT_EQ(refusalOf("start"), "write start NUMBERS");
    EXPECT_EQ(refusalOf("list 4"), "there is no telephone 4; the fleet has 1 to 3");
}

TEST_F(FleetCommandsTest, WhatIsForThePrompt_IsRefusedElsewhere)
{
    EXPECT_EQ(refusalOf("quit"), "quit is for the prompt of the fleet");
    EXPECT_EQ(refusalOf("wait 5"), "wait is for the prompt of the fleet");
}

TEST_F(FleetCommandsTest, Call_NamesAsManyOnBothSides)
{
    EXPECT_EQ(refusalOf("call 1 4"), "there is no telephone 4; the fleet has 1 to 3");
    EXPECT_EQ(refusalOf("call 9 1"), "there is no telephone 9; the fleet has 1 to 3");
    EXPECT_EQ(refusalOf("call 1 2-3"), "1 telephones cannot call 2: name as many on both sides");
}

TEST_F(FleetCommandsTest, List_HasTheTelephonesThatAreNamed)
{
    EXPECT_THAT(runFleetLine(*members_, "list 2-3").value(),
                testing::MatchesRegex("telephone .*\n2  .*\n3  .*\n2 telephones, 0 registered, .*"));
    EXPECT_THAT(runFleetLine(*members_, "list").value(), testing::HasSubstr("\n3 telephones, 0 registered, "));
}

TEST_F(FleetCommandsTest, Start_StartsWhatIsStopped)
{
    start();
    EXPECT_EQ(runFleetLine(*members_, "stop 2-3").value(), "");
    waitForNotes(2);
    EXPECT_EQ(telephone(1).condition(), FleetCondition::kRunning);
    EXPECT_EQ(telephone(2).condition(), FleetCondition::kStopped);
    EXPECT_EQ(telephone(3).condition(), FleetCondition::kStopped);

    EXPECT_EQ(runFleetLine(*members_, "start 3").value(), "");
    waitForNotes(3);

    EXPECT_EQ(notes_[2], "telephone 3 runs again");
    EXPECT_EQ(telephone(2).condition(), FleetCondition::kStopped);
}

TEST_F(FleetCommandsTest, Do_OfTelephonesThatDoNotRun_SaysSoOnceForEach)
{
    start();
    telephone(1).end(true);
    telephone(3).end(true);
    members_->wakeUp();
    waitForNotes(2);

    EXPECT_EQ(refusalOf("do 1,3 lines"), "1: telephone 1 is stopped; start it with start\n"
                                         "3: telephone 3 is stopped; start it with start");
}

}  // namespace

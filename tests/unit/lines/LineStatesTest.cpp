#include "telephone/lines/LineStates.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

std::string wordOfLineWithCall(sfiCallState state)
{
    CallSnapshot call;
    call.state = state;
    return lineStateName(lineStateOf(call));
}

}  // namespace

TEST(LineStates, StateThatMeansTheSameForCallAndLine_HasOneName)
{
    EXPECT_EQ(wordOfLineWithCall(sfiCallStateIdle), "idle");
    EXPECT_EQ(wordOfLineWithCall(sfiCallStateDialling), "dialling");
    EXPECT_EQ(wordOfLineWithCall(sfiCallStateRemoteRinging), "remote ringing");
    EXPECT_EQ(wordOfLineWithCall(sfiCallStateRinging), "ringing");
    EXPECT_EQ(wordOfLineWithCall(sfiCallStateHeld), "held");
    EXPECT_EQ(wordOfLineWithCall(sfiCallStateConference), "conference");
}

TEST(LineStates, EachState_HasItsName)
{
    struct Case
    {
        ELineState state;
        char const* name;
    };
    for (Case const& each :
         {Case{eLineStateUnknown, "unknown"}, Case{eLineStateOutOfService, "out of service"},
          Case{eLineStateIdle, "idle"}, Case{eLineStateDSSBusy, "busy"},
          Case{eLineStateActiveElsewhere, "active elsewhere"},
          Case{eLineStateConferenceHoldElsewhere, "conference held elsewhere"},
          Case{eLineStateHoldElsewhere, "held elsewhere"}, Case{eLineStateRingingElsewhere, "ringing elsewhere"},
          Case{eLineStateReserved, "reserved"}, Case{eLineStateHold, "held"},
          Case{eLineStateHoldConsult, "held for a consultation"}, Case{eLineStateSelected, "selected"},
          Case{eLineStateActive, "active"}, Case{eLineStateConference, "conference"},
          Case{eLineStateRemoteRinging, "remote ringing"}, Case{eLineStateDialling, "dialling"},
          Case{eLineStateRinging, "ringing"}}) {
        EXPECT_STREQ(lineStateName(each.state), each.name);
    }
}

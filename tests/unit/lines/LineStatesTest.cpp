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

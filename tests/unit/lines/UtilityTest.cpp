#include "platform/lines/Utility.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

TEST(UtilityTest, BusyStates_AreThoseWithACall_ExceptHoldForAConsultation)
{
    for (auto const state :
         {eLineStateDialling, eLineStateRemoteRinging, eLineStateRinging, eLineStateActive, eLineStateDSSBusy,
          eLineStateHold, eLineStateConference, eLineStateHoldElsewhere, eLineStateActiveElsewhere,
          eLineStateConferenceHoldElsewhere, eLineStateRingingElsewhere}) {
        EXPECT_TRUE(Utility::isLineStateBusy(state)) << state;
    }
    for (auto const state : {eLineStateUnknown, eLineStateIdle, eLineStateHoldConsult, eLineStateOutOfService,
                             eLineStateSelected, eLineStateReserved, static_cast<ELineState>(99)}) {
        EXPECT_FALSE(Utility::isLineStateBusy(state)) << state;
    }
}

}  // namespace
}  // namespace telephone

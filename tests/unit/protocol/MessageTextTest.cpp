#include "telephone/protocol/MessageText.h"

#include <gtest/gtest.h>

using namespace telephone;

TEST(MessageText, ReportsFailure_ForEveryFailingResultWordWhereverItStands)
{
    for (char const* const answer :
         {"sfiFailure", "sfiFailureCallBackInvalidState", "sfiFailureCallBackNoCallInfo", "sfiFailureCallBackToMany",
          "sfiFailureCallBackAllreadyExists", "sfiFailure,false", "sfiFailure,sfiServiceOutOfService",
          "<sfiResult>sfiFailure</sfiResult><status>0</status><uri></uri><cfnrRingCount>0</cfnrRingCount>",
          "<Type>0</Type><voiceMailNumber></voiceMailNumber><func_return_val>sfiFailure</func_return_val>"}) {
        EXPECT_TRUE(reportsFailure(answer)) << answer;
    }
}

TEST(MessageText, ReportsFailure_NotForSuccessAndAnswersWithoutAResultWord)
{
    for (char const* const answer :
         {"sfiSuccess", "sfiSuccess,false", "false", "true", "", "<prime:4711><groupPickup:*98>",
          "UACSTA message is sent.", "sfiFailureOfAnotherKind",
          "<sfiResult>sfiSuccess</sfiResult><status>1</status><uri>sfiFailure</uri><cfnrRingCount>3</cfnrRingCount>",
          "<Type>0</Type><voiceMailNumber>sfiFailure</voiceMailNumber><func_return_val>sfiSuccess</func_return_val>"}) {
        EXPECT_FALSE(reportsFailure(answer)) << answer;
    }
}

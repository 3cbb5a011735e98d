// The results that refusals of the call control become.
#include "telephone/sfi/SfiResults.h"

#include <gtest/gtest.h>

#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"

namespace telephone {

namespace {

class SfiResults : public ::testing::Test
{
protected:
    static Outcome<> refusalOf(RefusalKind kind) { return refuse(kind, "because"); }

    RefusalCollector collector_;
};

}  // namespace

TEST_F(SfiResults, Success_IsTheSuccessOfThePlatform)
{
    EXPECT_EQ(resultOf({}), sfiSuccess);
    EXPECT_EQ(callBackResultOf({}), sfiSuccess);
    EXPECT_TRUE(collector_.take().empty());
}

TEST_F(SfiResults, Refusal_IsAFailureAndReportedOnce)
{
    EXPECT_EQ(resultOf(refusalOf(RefusalKind::kNotFound)), sfiFailure);

    EXPECT_EQ(collector_.take(), (std::vector<Refusal>{{RefusalKind::kNotFound, "because"}}));
}

TEST_F(SfiResults, RefusedCallBack_HasTheResultOfItsKind)
{
    EXPECT_EQ(callBackResultOf(refusalOf(RefusalKind::kWrongState)), 1);
    EXPECT_EQ(callBackResultOf(refusalOf(RefusalKind::kNotFound)), 2);
    EXPECT_EQ(callBackResultOf(refusalOf(RefusalKind::kLimit)), 3);
    EXPECT_EQ(callBackResultOf(refusalOf(RefusalKind::kAlreadyExists)), 4);
    EXPECT_EQ(callBackResultOf(refusalOf(RefusalKind::kUnavailable)), 0);
    EXPECT_EQ(collector_.take().size(), 5U);
}

}  // namespace telephone

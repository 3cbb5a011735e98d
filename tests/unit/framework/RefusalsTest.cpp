#include "telephone/framework/Refusals.h"

#include <thread>

#include <gtest/gtest.h>

#include "tests/helpers/LogFile.h"

namespace telephone {
namespace {

Refusal const kNoCall{RefusalKind::kNotFound, "line 4711 has no call 7"};
Refusal const kFull{RefusalKind::kLimit, "100 calls are in progress"};

class RefusalsTest : public testing::Test
{
protected:
    std::string written() const { return log_.written(); }

private:
    test::LogFile const log_;
};

TEST_F(RefusalsTest, Report_WithoutACollector_IsOneWarning)
{
    reportRefusal("calls", kNoCall);

    EXPECT_EQ(written(), "warning [calls] line 4711 has no call 7\n");
}

TEST_F(RefusalsTest, Report_WithACollector_IsLoggedOnceAndKept)
{
    RefusalCollector collector;

    reportRefusal("calls", kNoCall);
    reportRefusal("lines", kFull);

    EXPECT_EQ(collector.take(), (std::vector<Refusal>{kNoCall, kFull}));
    EXPECT_EQ(written(), "info [calls] line 4711 has no call 7\ninfo [lines] 100 calls are in progress\n");
}

TEST_F(RefusalsTest, Take_EmptiesTheCollector)
{
    RefusalCollector collector;
    reportRefusal("calls", kNoCall);
    EXPECT_EQ(collector.take().size(), 1U);

    EXPECT_EQ(collector.take(), std::vector<Refusal>{});
}

TEST_F(RefusalsTest, First_IsTheFirstReported_OrElseTheOneGiven)
{
    RefusalCollector collector;
    EXPECT_EQ(collector.first(kFull).value(), kFull);
    reportRefusal("calls", kNoCall);
    reportRefusal("lines", kFull);

    EXPECT_EQ(collector.first(kFull).value(), kNoCall);
}

TEST_F(RefusalsTest, NestedCollectors_TheInnermostCollects)
{
    RefusalCollector outer;
    {
        RefusalCollector inner;
        reportRefusal("calls", kNoCall);
        EXPECT_EQ(inner.take(), std::vector<Refusal>{kNoCall});
    }
    reportRefusal("calls", kFull);

    EXPECT_EQ(outer.take(), std::vector<Refusal>{kFull});
}

TEST_F(RefusalsTest, ReportOnAnotherThread_IsNotCollectedHere)
{
    RefusalCollector collector;

    std::thread([] { reportRefusal("calls", kNoCall); }).join();

    EXPECT_EQ(collector.take(), std::vector<Refusal>{});
    EXPECT_EQ(written(), "warning [calls] line 4711 has no call 7\n");
}

}  // namespace
}  // namespace telephone

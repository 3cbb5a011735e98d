#include "telephone/testing/PlayReport.h"

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

TEST(PlayReport, ThatWasWritten_IsReadBack)
{
    TemporaryFolder const folder;
    PlayReport const report{{7, 1.5, {{3, "wait CallHeldEvent", "it did not come"}}},
                            {{"requests", {"HoldCall", "Consult"}}, {"keys", {}}}};

    ASSERT_TRUE(writePlayReport(report, folder.file("report")));
    auto const read = readPlayReport(folder.file("report"));

    ASSERT_TRUE(read) << read.error().reason;
    EXPECT_EQ(read->result.steps, 7);
    EXPECT_EQ(read->result.seconds, 1.5);
    ASSERT_EQ(read->result.failures.size(), 1U);
    EXPECT_EQ(failureText("a.script", read->result.failures[0]), "a.script:3: wait CallHeldEvent: it did not come");
    EXPECT_EQ(read->touched, report.touched);
}

TEST(PlayReport, TextThatIsNotUtf8_IsWritten)
{
    TemporaryFolder const folder;

    ASSERT_TRUE(writePlayReport({{0, 0, {{1, "say \xff", "reason"}}}, {}}, folder.file("report")));

    auto const read = readPlayReport(folder.file("report"));
    ASSERT_TRUE(read) << read.error().reason;
    EXPECT_EQ(read->result.failures[0].step, "say \xef\xbf\xbd");
}

TEST(PlayReport, FileThatCannotBeWritten_IsRefused)
{
    auto const written = writePlayReport({}, "/no/such/folder/report");

    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().reason, "/no/such/folder/report: cannot be written");
}

TEST(PlayReport, FileThatIsMissingOrCut_IsRefused)
{
    TemporaryFolder const folder;
    writeFile(folder.file("cut"), "{\"steps\":3,");
    writeFile(folder.file("other"), "{\"steps\":3}");

    EXPECT_FALSE(readPlayReport(folder.file("none")));
    EXPECT_FALSE(readPlayReport(folder.file("cut")));
    EXPECT_FALSE(readPlayReport(folder.file("other")));
}

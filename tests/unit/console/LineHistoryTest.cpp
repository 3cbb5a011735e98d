#include "telephone/console/LineHistory.h"

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/doubles/TemporaryFolder.h"

namespace telephone {
namespace {

class LineHistoryTest : public testing::Test
{
protected:
    LineHistoryTest() { setenv("XDG_STATE_HOME", folder_.path().c_str(), 1); }
    ~LineHistoryTest() override { unsetenv("XDG_STATE_HOME"); }

    std::string kept() const { return contentOf(folder_.file("telephone/history")); }

    TemporaryFolder folder_;
};

TEST_F(LineHistoryTest, Lines_AreKeptForTheNextConsole)
{
    {
        LineHistory const history;
        LineHistory::add("press 1");
    }
    {
        LineHistory const history;
        LineHistory::add("press 2");
    }

    EXPECT_EQ(kept(), "press 1\npress 2\n");
}

TEST_F(LineHistoryTest, EmptyRepeatedAndIndentedLines_AreNotKept)
{
    {
        LineHistory const history;
        for (char const* line : {"press 1", "press 1", "", " press 2", "press 3", "press 1"}) {
            LineHistory::add(line);
        }
    }

    EXPECT_EQ(kept(), "press 1\npress 3\npress 1\n");
}

TEST_F(LineHistoryTest, LatestThousandLines_AreKept)
{
    {
        LineHistory const history;
        for (int line = 1; line <= 1001; ++line) {
            LineHistory::add(std::to_string(line).c_str());
        }
    }

    std::string const text = kept();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1000);
    EXPECT_EQ(text.substr(0, 4), "2\n3\n");
}

TEST_F(LineHistoryTest, File_IsForItsOwnerAlone)
{
    {
        LineHistory const history;
        LineHistory::add("press 1");
    }

    struct stat file
    {};
    ASSERT_EQ(stat(folder_.file("telephone/history").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777U, 0600U);
}

TEST_F(LineHistoryTest, WithoutAStateFolder_ItIsInTheHome)
{
    std::string const home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
    setenv("XDG_STATE_HOME", "relative", 1);
    setenv("HOME", folder_.path().c_str(), 1);

    {
        LineHistory const history;
        LineHistory::add("press 1");
    }

    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(contentOf(folder_.file(".local/state/telephone/history")), "press 1\n");
}

}  // namespace
}  // namespace telephone

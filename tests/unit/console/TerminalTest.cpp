#include "telephone/console/Terminal.h"

#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "telephone/framework/FileDescriptor.h"

namespace telephone {
namespace {

// Standard output is a terminal of 66 columns during the test.
class TerminalTest : public testing::Test
{
protected:
    TerminalTest()
    {
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
        EXPECT_EQ(grantpt(master_.get()), 0);
        EXPECT_EQ(unlockpt(master_.get()), 0);
        FileDescriptor const terminal(open(ptsname(master_.get()), O_RDWR | O_NOCTTY));
        winsize const size{24, 66, 0, 0};
        EXPECT_EQ(ioctl(terminal.get(), TIOCSWINSZ, &size), 0);
        EXPECT_EQ(dup2(terminal.get(), STDOUT_FILENO), STDOUT_FILENO);
    }
    ~TerminalTest() override { dup2(before_.get(), STDOUT_FILENO); }

    static bool isColoured(ColourUse use = ColourUse::kAuto)
    {
        DisplayOptions options;
        fitToTerminal(options, use);
        return options.colour;
    }

    FileDescriptor const before_{dup(STDOUT_FILENO)};
    FileDescriptor const master_{posix_openpt(O_RDWR | O_NOCTTY)};
};

TEST_F(TerminalTest, Colour_IsUsedUnlessTheEnvironmentForbidsIt)
{
    EXPECT_TRUE(isColoured());
    setenv("NO_COLOR", "1", 1);
    EXPECT_FALSE(isColoured());
    EXPECT_TRUE(isColoured(ColourUse::kAlways));
    setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(isColoured());
    EXPECT_FALSE(isColoured(ColourUse::kNever));
    setenv("TERM", "dumb", 1);
    EXPECT_FALSE(isColoured());
}

TEST_F(TerminalTest, Colour_IsNotUsedInAFile)
{
    FileDescriptor const file(open("/dev/null", O_WRONLY));
    ASSERT_EQ(dup2(file.get(), STDOUT_FILENO), STDOUT_FILENO);

    EXPECT_FALSE(isColoured());
    EXPECT_TRUE(isColoured(ColourUse::kAlways));
    EXPECT_EQ(terminalWidth(), 0U);
}

TEST_F(TerminalTest, Width_IsThatOfTheTerminal)
{
    DisplayOptions options;

    fitToTerminal(options, ColourUse::kAuto);

    EXPECT_EQ(options.width, 66U);
}

TEST_F(TerminalTest, Characters_AreThoseOfTheLocale)
{
    DisplayOptions options;

    setenv("LC_ALL", "C.UTF-8", 1);
    fitToTerminal(options, ColourUse::kAuto);
    EXPECT_FALSE(options.ascii);
    setenv("LC_ALL", "C", 1);
    fitToTerminal(options, ColourUse::kAuto);
    EXPECT_TRUE(options.ascii);
    setenv("LC_ALL", "no_SUCH.locale", 1);
    fitToTerminal(options, ColourUse::kAuto);
    EXPECT_TRUE(options.ascii);
    unsetenv("LC_ALL");
}

}  // namespace
}  // namespace telephone

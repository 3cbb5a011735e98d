#include "telephone/framework/Log.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

using telephone::flushLog;
using telephone::kLogInfo;
using telephone::log;
using telephone::openLog;
using telephone::setLogLevel;

namespace {

class LogTest : public testing::Test
{
protected:
    LogTest() { EXPECT_TRUE(openLog(5, file_)); }
    ~LogTest() override
    {
        EXPECT_TRUE(openLog(kLogInfo, ""));
        std::filesystem::remove(file_);
    }

    // Without the time, which every line begins with.
    std::string written() const
    {
        flushLog();
        std::ifstream input(file_);
        std::string text;
        for (std::string line; std::getline(input, line);) {
            text += line.substr(std::string("2000-01-01 00:00:00.000 ").size()) + "\n";
        }
        return text;
    }

    std::string const file_ =
        (std::filesystem::temp_directory_path() / ("log-test-" + std::to_string(::getpid()) + ".txt")).string();
};

}  // namespace

TEST_F(LogTest, LogAppUni_WritesLevelComponentSourceAndText)
{
    logAppUni("SIP Communications Service", "src/CommunicationsService", 5, 17, "answerCall (callID = %d)", 4);

    EXPECT_EQ(written(), "trace [SIP Communications Service] src/CommunicationsService:17: answerCall (callID = 4)\n");
}

TEST_F(LogTest, News_CanBeReadAtOnce)
{
    log(kLogInfo, "calls", "line 4711 is registered");

    EXPECT_GT(std::filesystem::file_size(file_), 0U);
}

TEST_F(LogTest, Log_AboveTheLevel_IsNotWritten)
{
    EXPECT_TRUE(loggingOnAppUni("SIP Communications Service", 5));
    EXPECT_FALSE(loggingOnAppUni("SIP Communications Service", 6));

    log(6, "sip", "a detail");
    logAppUni("x", "y", 6, 1, "a detail");

    EXPECT_EQ(written(), "");
}

TEST_F(LogTest, LineWithoutALevel_IsNotWritten)
{
    telephone::logLine(0, "sip", "of no level");
    telephone::logLine(1, "sip", "fatal");
    telephone::logLine(5, "sip", "as far as the level goes");

    EXPECT_EQ(written(), "fatal [sip] fatal\ntrace [sip] as far as the level goes\n");
}

TEST_F(LogTest, SetLogLevel_OutOfRange_IsClamped)
{
    setLogLevel(99);
    EXPECT_TRUE(loggingOnAppUni("x", 6));
    setLogLevel(-1);
    EXPECT_FALSE(loggingOnAppUni("x", 1));
}

TEST_F(LogTest, LogAppUni_TextOfAnyLength_IsWrittenWhole)
{
    std::string const text(100000, 'x');

    logAppUni("c", "s", 2, 1, "%s", text.c_str());

    EXPECT_EQ(written(), "failure [c] s:1: " + text + "\n");
}

TEST(Log, OpenLog_OfAFileThatCannotBeMade_SaysSo)
{
    EXPECT_EQ(openLog(4, "/proc/no-such-folder/log").error().reason.substr(0, 45),
              "log: cannot open /proc/no-such-folder/log: Fa");
}

TEST_F(LogTest, EachLevel_HasItsName)
{
    setLogLevel(6);
    for (int level = 1; level <= 6; ++level) {
        telephone::logLine(level, "sip", "text");
    }
    telephone::logLine(7, "sip", "not so far");

    EXPECT_EQ(written(), "fatal [sip] text\nfailure [sip] text\nwarning [sip] text\ninfo [sip] text\n"
                         "trace [sip] text\ndetail [sip] text\n");
}

TEST_F(LogTest, ControlCharacters_AreReplacedButForTabs)
{
    log(kLogInfo, "calls", "{}", std::string_view("a\tb\0c\x1f d\x7f~e\r", 11));

    EXPECT_EQ(written(), "info [calls] a\tb?c? d?~e\n");
}

TEST_F(LogTest, LogAppUni_EmptyText_IsALineWithoutOne)
{
    logAppUni("c", "s", 2, 1, "%s", "");

    EXPECT_EQ(written(), "failure [c] s:1: \n");
}

TEST_F(LogTest, LineBreaksInAText_DoNotMakeAnotherEntry)
{
    log(kLogInfo, "calls", "there is no line \"{}\"", "1\r\n2000-01-01 00:00:00.000 info [calls] forged\x1b[2J");

    flushLog();
    std::ifstream input(file_);
    std::string first;
    std::string second;
    std::getline(input, first);
    std::getline(input, second);
    EXPECT_EQ(first.substr(24), "info [calls] there is no line \"1");
    EXPECT_EQ(second, "    2000-01-01 00:00:00.000 info [calls] forged?[2J\"");
}

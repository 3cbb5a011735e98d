// The log of one test, in a file: what was written since it was made, without the times. Afterwards the log goes to
// standard error again.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "telephone/framework/Log.h"

namespace telephone::test {

class LogFile
{
public:
    explicit LogFile(int level = kLogInfo) { EXPECT_TRUE(openLog(level, file_)); }
    ~LogFile()
    {
        EXPECT_TRUE(openLog(kLogInfo, ""));
        std::filesystem::remove(file_);
    }
    LogFile(LogFile const&) = delete;
    LogFile& operator=(LogFile const&) = delete;

    // Each line with level, component and text: "warning [calls] line 4711 has no call 7\n".
    std::string written() const
    {
        flushLog();
        std::ifstream input(file_);
        std::string text;
        for (std::string line; std::getline(input, line);) {
            text += line.substr(24) + "\n";
        }
        return text;
    }

private:
    std::string const file_ = (std::filesystem::temp_directory_path() / ("log-" + std::to_string(getpid()))).string();
};

}  // namespace telephone::test

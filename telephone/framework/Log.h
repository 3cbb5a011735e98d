// The telephone's log. Its parts write with `log`, the loaded library through the platform's two functions
// (framework/Logging.h). The configuration sets the level and the file. Any thread.
//
// A line has time, level, component and text. The text of a failure says what failed and why.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/framework/Logging.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// The levels that the platform does not name (kLogFailure 2, kLogTrace 5, kLogDetail 6); 0 switches the log off.
constexpr int kLogOff = 0;
constexpr int kLogFatal = 1;    // the telephone cannot continue
constexpr int kLogWarning = 3;  // refused or repaired; the telephone continues as documented
constexpr int kLogInfo = 4;     // news: registrations, calls, changed settings

// Opens the log; an empty file name: standard error. Refused if the file cannot be opened. Before the first call the
// log goes to standard error with level kLogInfo.
[[nodiscard]] Outcome<> openLog(int level, std::string const& fileName);
// 0 to 6; other values are clamped.
void setLogLevel(int level);
int logLevel();
// Writes buffered lines.
void flushLog();

// Writes one line if its level is on.
void logLine(int level, std::string_view component, std::string_view text);

template <typename... Arguments>
void log(int level, std::string_view component, fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    if (level > logLevel()) {
        return;
    }
    try {
        logLine(level, component, fmt::format(format, std::forward<Arguments>(arguments)...));
    } catch (std::exception const& error) {
        logLine(kLogFailure, component, error.what());
    }
}

}  // namespace telephone

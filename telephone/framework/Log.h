// The telephone's log. Every part writes through `log`, the loaded library through the platform's two functions
// (framework/Logging.h); both end in one logger, whose level and place the configuration names. Any thread.
//
// A line: time, level, component, text. A failure's text says what failed and why, so that a person can act on it.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/framework/Logging.h"

namespace telephone {

// The levels that the platform does not name (kLogFailure 2, kLogTrace 5, kLogDetail 6); 0 switches the log off.
constexpr int kLogOff = 0;
constexpr int kLogFatal = 1;    // the telephone cannot go on
constexpr int kLogWarning = 3;  // refused or repaired; the telephone goes on as documented
constexpr int kLogInfo = 4;     // what an owner wants to know: registered, called, settings changed

// Opens the log: an empty file name means standard error. Throws std::runtime_error where the file cannot be opened.
// Before the first call the log goes to standard error with level kLogInfo.
void openLog(int level, std::string const& fileName);
// 0 to 6; values outside are clamped.
void setLogLevel(int level);
int logLevel();
// Writes what is buffered, to the file too.
void flushLog();

// One line that is ready. Writes it where the level is on.
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

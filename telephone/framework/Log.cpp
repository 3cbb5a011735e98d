#include "telephone/framework/Log.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <vector>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include "telephone/base/OwnerOnly.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr std::array<std::string_view, 7> kLevelNames{"off", "fatal", "failure", "warning", "info", "trace", "detail"};
constexpr char const* kPattern = "%Y-%m-%d %H:%M:%S.%e %v";

std::atomic<int> currentLevel{kLogInfo};

std::shared_ptr<spdlog::logger> makeLogger(spdlog::sink_ptr sink)
{
    auto made = std::make_shared<spdlog::logger>("telephone", std::move(sink));
    made->set_pattern(kPattern, isVirtual() ? spdlog::pattern_time_type::utc : spdlog::pattern_time_type::local);
    made->set_level(spdlog::level::trace);  // logLine checks the level
    made->flush_on(spdlog::level::info);    // news can be read at once, a trace when there is much of it
    return made;
}

// Never destroyed: static objects may still write lines after main has returned.
struct Output
{
    std::mutex mutex;
    std::shared_ptr<spdlog::logger> logger = makeLogger(std::make_shared<spdlog::sinks::stderr_sink_mt>());
};

Output& output()
{
    static auto& instance = *new Output;
    return instance;
}

std::shared_ptr<spdlog::logger> logger()
{
    std::lock_guard const lock(output().mutex);
    return output().logger;
}

std::string formatted(char const* format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    int const length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

// A text is one entry: what follows a line break is indented, so that nobody else's text can pass for an entry, and
// other control characters do not reach the terminal.
std::string asEntry(std::string_view text)
{
    std::string entry;
    entry.reserve(text.size());
    for (char const character : text) {
        bool const isControl = static_cast<unsigned char>(character) < ' ' || character == '\x7f';
        if (character == '\n') {
            entry += "\n    ";
        } else if (character != '\r') {
            entry += isControl && character != '\t' ? '?' : character;
        }
    }
    return entry;
}

}  // namespace

Outcome<> openLog(int level, std::string const& fileName)
{
    setLogLevel(level);
    if (auto const closed = makeOwnerOnly(fileName); !closed) {
        return refuse(closed.error().kind, "log: " + closed.error().reason);
    }
    std::shared_ptr<spdlog::logger> opened;
    try {
        opened = fileName.empty() ? makeLogger(std::make_shared<spdlog::sinks::stderr_sink_mt>())
                                  : makeLogger(std::make_shared<spdlog::sinks::basic_file_sink_mt>(fileName));
    } catch (spdlog::spdlog_ex const& error) {
        return refuse(RefusalKind::kUnavailable, "log: cannot open " + fileName + ": " + error.what());
    }
    std::lock_guard const lock(output().mutex);
    output().logger = std::move(opened);
    return {};
}

void setLogLevel(int level)
{
    currentLevel = std::clamp(level, kLogOff, static_cast<int>(kLogDetail));
}

int logLevel()
{
    return currentLevel;
}

void flushLog()
{
    logger()->flush();
}

void logLine(int level, std::string_view component, std::string_view text)
{
    if (level > logLevel() || level <= kLogOff) {
        return;
    }
    auto const name = kLevelNames[static_cast<std::size_t>(std::min(level, static_cast<int>(kLogDetail)))];
    auto const severity = level <= kLogInfo ? spdlog::level::info : spdlog::level::debug;
    logger()->log(wallTime(), spdlog::source_loc{}, severity,
                  fmt::format("{} [{}] {}", name, component, asEntry(text)));
}

}  // namespace telephone

bool loggingOnAppUni(char const* /*component*/, int level)
{
    return level <= telephone::logLevel();
}

void logAppUni(char const* component, char const* source, int level, int line, char const* format, ...)
{
    if (!loggingOnAppUni(component, level)) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    try {
        std::string const text = telephone::formatted(format, arguments);
        telephone::logLine(level, component, fmt::format("{}:{}: {}", source, line, text));
    } catch (std::exception const&) {
        // Logging never fails; a line that cannot be formatted is lost.
    }
    va_end(arguments);
}

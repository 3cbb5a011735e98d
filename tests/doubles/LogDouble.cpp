#include "LogDouble.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include "CurrentDouble.h"
#include "platform/framework/Logging.h"

std::ostream& operator<<(std::ostream& out, LogLine const& line)
{
    return out << line.level << ' ' << line.component << ' ' << line.source << ':' << line.line << ' ' << line.text;
}

void LogDouble::setLevel(int level)
{
    std::lock_guard const hold(mutex_);
    level_ = level;
}

int LogDouble::level() const
{
    std::lock_guard const hold(mutex_);
    return level_;
}

void LogDouble::setListener(MockLogListener* listener)
{
    std::lock_guard const hold(mutex_);
    listener_ = listener;
}

std::vector<LogLine> LogDouble::lines() const
{
    std::lock_guard const hold(mutex_);
    return lines_;
}

std::vector<std::string> LogDouble::texts() const
{
    std::lock_guard const hold(mutex_);
    std::vector<std::string> texts;
    for (auto const& line : lines_) {
        texts.push_back(std::to_string(line.level) + " " + line.text);
    }
    return texts;
}

std::vector<std::pair<std::string, int>> LogDouble::questions() const
{
    std::lock_guard const hold(mutex_);
    return questions_;
}

void LogDouble::clear()
{
    std::lock_guard const hold(mutex_);
    lines_.clear();
    questions_.clear();
}

bool LogDouble::isOn(char const* component, int level)
{
    std::lock_guard const hold(mutex_);
    questions_.emplace_back(component, level);
    return level <= level_;
}

void LogDouble::write(LogLine line)
{
    MockLogListener* listener = nullptr;
    {
        std::lock_guard const hold(mutex_);
        lines_.push_back(line);
        listener = listener_;
    }
    if (listener != nullptr) {
        listener->written(line.level, line.text);
    }
}

bool loggingOnAppUni(char const* component, int level)
{
    auto* const log = CurrentDouble<LogDouble>::get();
    return log != nullptr && log->isOn(component, level);
}

void logAppUni(char const* component, char const* source, int level, int line, char const* format, ...)
{
    auto* const log = CurrentDouble<LogDouble>::get();
    if (log == nullptr) {
        return;
    }
    std::array<char, 4096> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    log->write({component, source, level, line, text.data()});
}

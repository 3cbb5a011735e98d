#include "platform/framework/Logging.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include "platform/kit/Log.h"
#include "platform/kit/Weak.h"

namespace {

std::atomic<int> writtenLevel{kLogFailure};

}  // namespace

void kit::setLogLevel(int level)
{
    writtenLevel = level;
}

KIT_WEAK bool loggingOnAppUni(char const* /*component*/, int level)
{
    return level <= writtenLevel;
}

// No allocation, and one lock for the line: any thread may write in any state.
KIT_WEAK void logAppUni(char const* component, char const* source, int /*level*/, int line, char const* format, ...)
{
    flockfile(stderr);
    std::fprintf(stderr, line == 0 ? "%s: %s: " : "%s: %s:%d: ", component, source, line);
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    funlockfile(stderr);
}

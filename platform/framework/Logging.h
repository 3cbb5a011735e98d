// The telephone's log. Both functions MUST be callable from any thread and MUST NOT throw.
#pragma once

// Levels that the service uses; a smaller number is more important.
enum LogLevel : int
{
    kLogFailure = 2,  // an operation failed; written without asking first
    kLogTrace = 5,    // entry of an operation
    kLogDetail = 6,   // every request and answer
};

// Whether lines of a component at a level are written. A trace line asks first, so that a level that is switched off
// costs one call.
bool loggingOnAppUni(char const* component, int level);

// Writes one printf-style line. `source` names the part of the component, `line` the place in its code.
#if defined(__GNUC__)
__attribute__((format(printf, 5, 6)))
#endif
void logAppUni(char const* component, char const* source, int level, int line, char const* format, ...);

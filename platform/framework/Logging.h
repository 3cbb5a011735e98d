/// @file
/// The telephone's log. Both functions MUST be callable from any thread, with any lock held, and MUST NOT throw.
#pragma once

/// The levels that the service uses; a smaller number is more important.
enum LogLevel : int
{
    kLogFailure = 2,  ///< an operation failed; written without asking first
    kLogTrace = 5,    ///< entry of an operation
    kLogDetail = 6,   ///< every request and answer
};

/// Whether lines of a component at a level are written. A trace line asks first, so that a level that is switched off
/// costs one call.
/// @return true when logAppUni would write such a line.
bool loggingOnAppUni(char const* component, int level);

#if defined(__GNUC__)
__attribute__((format(printf, 5, 6)))
#endif
/// Writes one line in the style of printf.
/// @param component the part of the telephone, for example "SIP Communications Service"
/// @param source the part of the component
/// @param level a LogLevel
/// @param line the place in the code of `source`
/// @param format printf format of the arguments that follow
void logAppUni(char const* component, char const* source, int level, int line, char const* format, ...);

// The service's lines in the telephone's log: one component, one source, the line of the code.
//
// A trace is written only when its level is on; otherwise its arguments are not evaluated. A failure is always written.
// Both are macros for that reason, and so that the compiler checks the format.
#pragma once

#include "platform/framework/Logging.h"

namespace service_log {

inline constexpr char const* kComponent = "SIP Communications Service";
inline constexpr char const* kSource = "src/CommunicationsService";

// Shows a text that an application may pass as null.
inline char const* shown(char const* text)
{
    return text == nullptr ? "(null)" : text;
}

}  // namespace service_log

#define SERVICE_LOG_AT(level, ...)                                                                                     \
    do {                                                                                                               \
        if (loggingOnAppUni(service_log::kComponent, level)) {                                                         \
            logAppUni(service_log::kComponent, service_log::kSource, level, __LINE__, __VA_ARGS__);                    \
        }                                                                                                              \
    } while (false)

#define SERVICE_TRACE(...) SERVICE_LOG_AT(kLogTrace, __VA_ARGS__)
#define SERVICE_DETAIL(...) SERVICE_LOG_AT(kLogDetail, __VA_ARGS__)
#define SERVICE_FAILURE(...)                                                                                           \
    logAppUni(service_log::kComponent, service_log::kSource, kLogFailure, __LINE__, __VA_ARGS__)

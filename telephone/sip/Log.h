// Where the SIP adapter and the exchange write what they have to say. The owner of a UserAgent or an Exchange hands
// in one function; it is called on any thread, mostly the loop thread with the lock held, and must not block.
#pragma once

#include <functional>
#include <string>

namespace telephone::sip {

enum class LogLevel : int
{
    kDebug,
    kInfo,
    kWarning,
    kError
};

using Logger = std::function<void(LogLevel, std::string const&)>;

}  // namespace telephone::sip

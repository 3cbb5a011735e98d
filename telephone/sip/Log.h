// The log of the SIP adapter and the exchange: a function that the owner of a UserAgent or an Exchange supplies. It is
// called on any thread, mostly on the loop's thread with the lock held, and must not block.
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

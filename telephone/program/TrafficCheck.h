// Compares all traffic of a running telephone with the description of the protocol, for its own tests and for the tests
// of applications (--check). A contradiction ends the program at once, so that no test can miss it: the reason and the
// text are on standard error, and the exit status is 4.
//
// runTelephone owns it. It reads the event history on the thread of the events; requests are checked on the thread that
// runs them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "telephone/access/Session.h"

namespace telephone {

enum class CheckedTraffic
{
    kNone,
    kEvents,  // what the telephone sends
    kAll,     // and what it receives
};

// Indexed by the value.
inline constexpr std::array<std::string_view, 3> kCheckedTrafficWords{"none", "events", "all"};
// Nothing: not such a word.
std::optional<CheckedTraffic> checkedTraffic(std::string_view word);

class TrafficCheck
{
public:
    static constexpr int kExitStatus = 4;

    // Before the telephone is activated, so that no event is missed.
    TrafficCheck(SessionServices services, CheckedTraffic checked);
    ~TrafficCheck();
    TrafficCheck(TrafficCheck const&) = delete;
    TrafficCheck& operator=(TrafficCheck const&) = delete;

private:
    void checkEvents();

    SessionServices const services_;
    std::uint64_t checked_ = 0;  // number of the latest event that was checked
    EventHistory::ListenerId const listener_;
};

}  // namespace telephone

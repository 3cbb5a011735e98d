// What a run touches below the messages of its applications: keys, lamps, timers, rules for reasons. The coverage of
// scripts (telephone test --coverage) counts it. Process-wide, as the log is, because the places are in all modules;
// any thread, with any lock held.
//
// Nothing is kept until keepTouched(), so that a telephone outside a test pays one load for each place.
#pragma once

#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace telephone {

enum class Touched
{
    kReason,  // a rule for reasons: "HoldCall: unknown call"
    kKey,     // the function of a key that was pressed: "hold"
    kLamp,    // the function of a lamp and the mode that it entered: "line flashing"
    kTimer,   // a timer that ran out
};

// The timers of the telephone that run out by themselves.
enum class PhoneTimer
{
    kRegistrationRefresh,
    kRegistrationRetry,
    kRegistrarSilent,
    kNoReply,
    kRingDelay,
    kWarmLine,
    kTransferSilent,
    kMediaChangeSilent,
    kSessionChangeSilent,
    kSessionRefresh,
    kSessionExpiry,
    kAudioSilent,
    kPrackMissing,
    kPickupSilent,
    kCallBackExpiry,
    kCallBackSettling,
    kMailboxRetry,
    kWatchRetry,
    kService,
};

// Indexed by the timer.
inline constexpr std::array<std::string_view, 19> kPhoneTimerNames{
    "registration is refreshed",
    "registration is tried again",
    "registrar is silent",
    "nobody answers a forwarded line",
    "line with a ring delay rings",
    "warm line dials",
    "transfer has no result",
    "hold or retrieval is not answered",
    "change of a session is not answered",
    "call is refreshed",
    "call is not refreshed in time",
    "far end sends no audio",
    "response before the answer is not acknowledged",
    "pickup is not answered",
    "call-back expires",
    "party of a call-back stays free",
    "mailbox is asked again",
    "watched party is asked again",
    "timer of the service",
};
static_assert(kPhoneTimerNames.size() == static_cast<std::size_t>(PhoneTimer::kService) + 1);

// From now on; what was kept before is forgotten.
void keepTouched();
// Never throws; a name for which there is no memory is not kept.
void touch(Touched kind, std::string_view name) noexcept;
void touch(PhoneTimer timer) noexcept;
// All names of a kind so far.
[[nodiscard]] std::set<std::string> touchedNames(Touched kind);

}  // namespace telephone

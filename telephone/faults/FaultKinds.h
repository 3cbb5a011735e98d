// The faults that the telephone knows, in one table: name, arguments, meaning, and what each does. A fault acts through
// an operation of the module in which it happens; that module knows nothing of this one.
//
// The commands, the configuration, the refusals and docs/faults.md follow the table.
#pragma once

#include <atomic>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "telephone/access/CommandSyntax.h"
#include "telephone/base/Refusal.h"

namespace telephone {

class PhysicalInterface;
class Settings;
namespace exchange {
class Exchange;
}
namespace sip {
class EventLoop;
}

// What the faults act on.
struct FaultTargets
{
    sip::EventLoop& loop;
    exchange::Exchange* exchange;  // null: the telephone has none
    Settings& settings;
    PhysicalInterface& physical;
    std::atomic<int>& readingRate;  // of applications, in bytes a second; 0: without limit
};

// What a fault tells while it is active. Any thread, any lock of a module held.
struct FaultReport
{
    std::function<void(std::string const& what)> did;  // "a datagram ... is lost"
    std::function<void()> ended;                       // by itself
};

// A fault with its arguments, ready to begin. `end` follows each `begin`, once, also when the fault ended by itself; it
// returns what the fault did, or nothing.
struct FaultEffect
{
    std::function<void(FaultReport const&)> begin;
    std::function<std::string()> end;
};

struct FaultKind
{
    std::string_view name;       // two words
    std::string_view arguments;  // as CommandSyntax reads them
    std::string_view meaning;
    bool isVirtualOnly;  // because it acts on the network in memory
    // Refused for wrong arguments, and where the telephone lacks what the fault acts on.
    Outcome<FaultEffect> (*prepare)(FaultTargets const&, Arguments const&);
};

std::span<FaultKind const> faultKinds();
// Null: unknown. Ignores case.
FaultKind const* findFaultKind(std::string_view name);
// "datagrams lost COUNT [sip|rtp|all]".
std::string usageOf(FaultKind const& kind);

}  // namespace telephone

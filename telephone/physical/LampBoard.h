// The lamps of the telephone: one in each key, and two that applications set by number, "Hold" (10) and "SecondAlert"
// (69). The lamp of a hold key is the one of number 10.
//
// Owned by the physical interface. Any thread, any lock held: its own lock is held only for moments, and not while a
// listener runs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/physical/PhysDefs.h"
#include "telephone/physical/KeyLayout.h"

namespace telephone {

struct Lamp
{
    PhysDefs::lampMode mode = PhysDefs::lampOff;
    PhysDefs::lampColour colour = PhysDefs::lampNoColour;

    bool operator==(Lamp const&) const = default;
};

struct LampRow
{
    int key = 0;       // 0: a lamp that is in no key
    std::string name;  // the key's function with its label, or the lamp's name
    Lamp lamp;
};

// "off", "steady", "flashing", "fluttering"; "red", "green", "amber", or "none".
std::string_view lampModeName(PhysDefs::lampMode mode);
std::string_view lampColourName(PhysDefs::lampColour colour);

class LampBoard
{
public:
    // Told the lamp's number (a key's, or 10 or 69) after each change, on the thread that made it, in no lock of the
    // board. Of two changes at once either may be told first.
    using Listener = std::function<void(int lamp, Lamp const& now)>;

    explicit LampBoard(KeyLayout const& layout);

    // A key that the layout does not have is passed over.
    void setKey(int key, Lamp lamp);
    // Every key of a function.
    void setFunction(PhysDefs::keyFunctionType function, Lamp lamp);
    // By the number that applications use; false: there is no such lamp.
    bool setNumbered(int lamp, Lamp state);

    // A lamp by the number, label or function of its key, or "Hold" and "SecondAlert". Nothing: there is none.
    std::optional<Lamp> lamp(std::string const& name) const;
    std::vector<LampRow> lamps() const;

    // Waits until the lamp is in a mode; false when the time ran out or there is no such lamp.
    bool waitFor(std::string const& name, PhysDefs::lampMode mode, std::chrono::milliseconds timeout) const;
    // One listener; set before the keys are used.
    void onChange(Listener listener);

private:
    std::optional<int> slotOf(std::string const& name) const;
    static int slotOf(PhoneKey const& key);
    void set(int slot, Lamp lamp);

    KeyLayout const& layout_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::map<int, Lamp> lamps_;  // by slot: the key's number, or the lamp's number below 0
    Listener listener_;
};

}  // namespace telephone

// The lamps of the telephone: one in each key, and two that applications set by number, "Hold" (10) and "SecondAlert"
// (69). The lamp of a hold key is lamp 10.
//
// The physical interface owns it. Any thread, with any lock held: its own lock is held for moments only, and not while
// the listener runs.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/physical/PhysDefs.h"
#include "telephone/base/Refusal.h"
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
    int key = 0;       // 0 for a lamp outside the keys
    std::string name;  // of a lamp outside the keys
    Lamp lamp;
};

// "red", "green", "amber", or "none".
std::string_view lampColourName(PhysDefs::lampColour colour);

// Every lamp that a telephone can have with each mode in which it is lit, by the function of its key or by its name:
// "line flashing", "SecondAlert steady".
std::vector<std::string> lampModes();

class LampBoard
{
public:
    // Told of each change, with the number of the key or of the lamp (10 or 69), on the thread that made it. Two
    // changes at the same time may be told in either order.
    using Listener = std::function<void(int lamp, Lamp const& now)>;

    explicit LampBoard(KeyLayout const& layout);

    // A key outside the layout is ignored.
    void setKey(int key, Lamp lamp);
    // Every key with the function.
    void setFunction(PhysDefs::keyFunctionType function, Lamp lamp);
    // By the number that applications use.
    [[nodiscard]] Outcome<> setNumbered(int lamp, Lamp state);

    // A lamp by the number, label or function of its key, or by its name, "Hold" or "SecondAlert". Nothing when there
    // is no such lamp.
    std::optional<Lamp> lamp(std::string const& name) const;
    // Those of the keys in their order, then those outside the keys.
    std::vector<LampRow> lamps() const;

    // A fault of the lamp driver: while it is stuck, every lamp stays as it is. Then each takes the latest mode that
    // was set meanwhile.
    void setStuck(bool stuck);

    // Replaces the listener. Before the keys are used.
    void onChange(Listener listener);

private:
    std::optional<int> slotOf(std::string const& name) const;
    static int slotOf(PhoneKey const& key);
    void set(int slot, Lamp lamp);
    [[nodiscard]] std::string_view nameOf(int slot) const;

    KeyLayout const& layout_;
    mutable std::mutex mutex_;
    std::map<int, Lamp> lamps_;  // by slot: the number of the key, or the negative number of the lamp
    bool isStuck_ = false;
    std::map<int, Lamp> missed_;  // the latest mode of each lamp that was set while the driver was stuck
    Listener listener_;
};

}  // namespace telephone

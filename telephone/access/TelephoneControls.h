// The telephone as a person uses it, beside the requests of applications: keys, lamps, plugs and settings.
// PhoneControls implements it; sessions call it on their threads.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

class TelephoneControls
{
public:
    using Rows = std::vector<std::string>;

    virtual ~TelephoneControls() = default;

    // Everything, at one moment.
    virtual TelephoneState state() = 0;

    // A key is named by its number in the layout, its label or its function.
    [[nodiscard]] virtual Outcome<> press(std::string const& key) = 0;
    [[nodiscard]] virtual Outcome<> release(std::string const& key) = 0;
    [[nodiscard]] virtual Outcome<> hook(bool up) = 0;
    [[nodiscard]] virtual Outcome<> plug(std::string const& plug, bool in) = 0;
    [[nodiscard]] virtual Outcome<> lock(bool locked) = 0;
    // Switches the service's recording of a line's calls.
    [[nodiscard]] virtual Outcome<> record(std::string const& line, bool on) = 0;
    // The built-in exchange; refused without one. Rings a registered number as if `from`, any other number, called; the
    // name may be empty.
    [[nodiscard]] virtual Outcome<> call(std::string const& to, std::string const& from, std::string const& name) = 0;
    // Sets the voice messages that wait for a number, 0 to 9999 of each kind.
    [[nodiscard]] virtual Outcome<> setMessages(std::string const& number, int fresh, int old) = 0;
    // What its registrar does: "accept", "refuse 403", "redirect URI", "away" or "forget".
    [[nodiscard]] virtual Outcome<> setRegistrar(std::string const& conduct) = 0;
    // Gives one of its numbers steps for its next calls, or plays steps at once.
    [[nodiscard]] virtual Outcome<> defineNumber(std::string const& number, std::string const& steps) = 0;
    [[nodiscard]] virtual Outcome<> playSteps(std::string const& number, std::string const& steps) = 0;
    // Its numbers and what they do, a row each.
    [[nodiscard]] virtual Outcome<Rows> exchangeNumbers() = 0;
    // Called after each change of a lamp, on any thread; it must not block. Replaces the one before; null: none. It is
    // not running on return.
    virtual void watchLamps(std::function<void()> changed) = 0;
    // "off", "steady", "flashing" or "fluttering"; nothing for an unknown lamp.
    virtual std::optional<std::string> lampMode(std::string const& lamp) = 0;

    // Faults of what surrounds the telephone, as telephone/faults reads them: "store full at 3s for 2s". They end by
    // themselves or by name; an empty name ends all.
    [[nodiscard]] virtual Outcome<> addFault(std::string const& order) = 0;
    [[nodiscard]] virtual Outcome<> endFault(std::string const& name) = 0;
    virtual Rows faults() = 0;

    // The configuration store: rows "key = value"; the value of one key, nothing for an unknown key.
    virtual Rows settings() = 0;
    virtual std::optional<std::string> setting(std::string const& key) = 0;
    [[nodiscard]] virtual Outcome<> set(std::string const& key, std::string const& value) = 0;
    // Rows "key = value" of settings that were accepted and are not in the store. Refused if it cannot be read.
    [[nodiscard]] virtual Outcome<Rows> missingSettings() = 0;
};

}  // namespace telephone

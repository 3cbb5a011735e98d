#include "telephone/physical/LampBoard.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceEnumerations.h"
#include "telephone/base/Touched.h"
#include "telephone/configuration/Choices.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

struct NumberedLamp
{
    std::string_view name;
    int number;
};

constexpr std::array kNumberedLamps{
    NumberedLamp{"Hold", PhysDefs::kLampHold},
    NumberedLamp{"SecondAlert", PhysDefs::kLampSecondAlert},
};

constexpr std::array<std::string_view, 4> kColours{"none", "red", "green", "amber"};

std::string modeName(int mode)
{
    EnumerationValue const* const known = enumerations::kLampMode.find(mode);
    return known == nullptr ? std::to_string(mode) : std::string(known->name);
}

std::string withMode(std::string_view lamp, int mode)
{
    return fmt::format("{} {}", lamp, modeName(mode));
}

}  // namespace

std::vector<std::string> lampModes()
{
    std::vector<std::string> all;
    for (EnumerationValue const& mode : enumerations::kLampMode) {
        for (KeyFunctionRow const& row : keyFunctionRows()) {
            if (placeOfChoice(row.litModes, mode.name)) {
                all.push_back(withMode(row.name, mode.number));
            }
        }
        for (NumberedLamp const& lamp : kNumberedLamps) {
            if (mode.number != PhysDefs::lampOff) {
                all.push_back(withMode(lamp.name, mode.number));
            }
        }
    }
    return all;
}

std::string_view lampColourName(PhysDefs::lampColour colour)
{
    return colour >= 0 && colour < static_cast<int>(kColours.size()) ? kColours[static_cast<std::size_t>(colour)]
                                                                     : "unknown";
}

LampBoard::LampBoard(KeyLayout const& layout)
    : layout_(layout)
{
    for (auto const& lamp : kNumberedLamps) {
        lamps_[-lamp.number] = {};
    }
    for (auto const& key : layout.keys()) {
        lamps_[slotOf(key)] = {};
    }
}

void LampBoard::setKey(int key, Lamp lamp)
{
    if (auto const* const found = layout_.find(key)) {
        set(slotOf(*found), lamp);
    }
}

void LampBoard::setFunction(PhysDefs::keyFunctionType function, Lamp lamp)
{
    for (auto const& key : layout_.keys()) {
        if (key.function() == function) {
            set(slotOf(key), lamp);
        }
    }
}

Outcome<> LampBoard::setNumbered(int lamp, Lamp state)
{
    for (auto const& numbered : kNumberedLamps) {
        if (numbered.number == lamp) {
            set(-lamp, state);
            return {};
        }
    }
    return refuse(RefusalKind::kNotFound, fmt::format("there is no lamp {}", lamp));
}

std::optional<Lamp> LampBoard::lamp(std::string const& name) const
{
    auto const slot = slotOf(name);
    std::lock_guard const lock(mutex_);
    return slot ? std::optional(lamps_.at(*slot)) : std::nullopt;
}

std::vector<LampRow> LampBoard::lamps() const
{
    std::lock_guard const lock(mutex_);
    std::vector<LampRow> rows;
    for (auto const& key : layout_.keys()) {
        rows.push_back({key.number(), "", lamps_.at(slotOf(key))});
    }
    for (auto const& lamp : kNumberedLamps) {
        rows.push_back({0, std::string(lamp.name), lamps_.at(-lamp.number)});
    }
    return rows;
}

void LampBoard::onChange(Listener listener)
{
    std::lock_guard const lock(mutex_);
    listener_ = std::move(listener);
}

void LampBoard::setStuck(bool stuck)
{
    std::map<int, Lamp> missed;
    {
        std::lock_guard const lock(mutex_);
        isStuck_ = stuck;
        missed.swap(missed_);
    }
    for (auto const& [slot, lamp] : missed) {
        set(slot, lamp);
    }
}

std::optional<int> LampBoard::slotOf(std::string const& name) const
{
    for (auto const& lamp : kNumberedLamps) {
        if (lamp.name == name) {
            return -lamp.number;
        }
    }
    auto const* const key = layout_.find(name);
    return key == nullptr ? std::nullopt : std::optional(slotOf(*key));
}

int LampBoard::slotOf(PhoneKey const& key)
{
    return key.function() == PhysDefs::keyFunctionHold ? -PhysDefs::kLampHold : key.number();
}

void LampBoard::set(int slot, Lamp lamp)
{
    Listener listener;
    {
        std::lock_guard const lock(mutex_);
        if (isStuck_) {
            missed_[slot] = lamp;
            return;
        }
        auto& now = lamps_[slot];
        if (now == lamp) {
            return;
        }
        now = lamp;
        listener = listener_;
    }
    traceStep("lamp", [&](TraceStep& step) {
        step.add("lamp", std::abs(slot))
            .add("label", slot > 0 ? layout_.find(slot)->configuration.label : nameOf(slot));
        step.add("mode", modeName(lamp.mode)).add("colour", lampColourName(lamp.colour));
    });
    if (lamp.mode != PhysDefs::lampOff) {
        touch(Touched::kLamp, withMode(nameOf(slot), lamp.mode));
    }
    if (listener) {
        listener(slot < 0 ? -slot : slot, lamp);
    }
}

std::string_view LampBoard::nameOf(int slot) const
{
    if (slot > 0) {
        return layout_.find(slot)->row->name;
    }
    auto const* const numbered = std::ranges::find(kNumberedLamps, -slot, &NumberedLamp::number);
    return numbered->name;
}

}  // namespace telephone

#include "telephone/physical/KeyLayout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>

namespace telephone {

namespace {

using namespace PhysDefs;

constexpr std::string_view kLineModes = "steady|flashing|fluttering";

// clang-format off
constexpr std::array kFunctions{
    KeyFunctionRow{"line",       keyFunctionLine,           0,              false, kLineModes},
    KeyFunctionRow{"dss",        keyFunctionDirectStation,  0,              false, kLineModes},
    KeyFunctionRow{"blf",        keyFunctionBusyLampField,  0,              false, kLineModes},
    KeyFunctionRow{"forwarding", keyFunctionForwarding,     0,              true,  "steady"},
    KeyFunctionRow{"dnd",        keyFunctionDoNotDisturb,   0,              true,  "steady"},
    KeyFunctionRow{"hold",       keyFunctionHold,           kCallButtons,   false, ""},  // the lamp Hold
    KeyFunctionRow{"mute",       keyFunctionMute,           0,              false, "steady"},
    KeyFunctionRow{"headset",    keyFunctionHeadset,        0,              false, "steady"},
    KeyFunctionRow{"messages",   keyFunctionMessages,       0,              true,  "steady"},
    KeyFunctionRow{"toggle",     keyFunctionFeatureToggle,  0,              false, "steady"},
    KeyFunctionRow{"release",    keyFunctionRelease,        0,              false, ""},
    KeyFunctionRow{"preview",    keyFunctionPreview,        kKeysetButtons, false, ""},
    KeyFunctionRow{"ignore",     keyFunctionIgnoreCall,     kKeysetButtons, false, ""},
    KeyFunctionRow{"transfer",   keyFunctionTransfer,       0,              false, "steady"},
};
// clang-format on
static_assert(kFunctions.size() == 14,
              "update the help of the configuration with the key function that was added or removed");

KeyFunctionRow const* rowOf(std::string const& name)
{
    auto const row = std::find_if(kFunctions.begin(), kFunctions.end(),
                                  [&name](KeyFunctionRow const& each) { return each.name == name; });
    return row == kFunctions.end() ? nullptr : &*row;
}

std::optional<int> numberOf(std::string const& text)
{
    int number = 0;
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

}  // namespace

KeyLayout::KeyLayout(Configuration const& configuration)
{
    for (auto const& key : configuration.keys) {
        auto const* const row = rowOf(key.function);
        if (row == nullptr) {
            throw std::runtime_error("key " + std::to_string(key.number) + ": unknown function \"" + key.function +
                                     "\"");
        }
        keys_.push_back({key, row});
    }
    std::stable_sort(keys_.begin(), keys_.end(),
                     [](PhoneKey const& left, PhoneKey const& right) { return left.number() < right.number(); });
    for (std::size_t place = 0; place < keys_.size(); ++place) {
        if (!places_.emplace(keys_[place].number(), place).second) {
            throw std::runtime_error("key " + std::to_string(keys_[place].number()) + " is configured twice");
        }
    }
}

PhoneKey const* KeyLayout::find(int number) const
{
    auto const place = places_.find(number);
    return place == places_.end() ? nullptr : &keys_[place->second];
}

PhoneKey const* KeyLayout::find(std::string const& name) const
{
    if (auto const number = numberOf(name)) {
        return find(*number);
    }
    auto const label = std::find_if(keys_.begin(), keys_.end(),
                                    [&name](PhoneKey const& each) { return each.configuration.label == name; });
    if (label != keys_.end()) {
        return &*label;
    }
    auto const function =
        std::find_if(keys_.begin(), keys_.end(), [&name](PhoneKey const& each) { return each.row->name == name; });
    return function == keys_.end() ? nullptr : &*function;
}

std::string KeyLayout::range() const
{
    if (keys_.empty()) {
        return "none";
    }
    return std::to_string(keys_.front().number()) + " to " + std::to_string(keys_.back().number());
}

std::span<KeyFunctionRow const> keyFunctionRows()
{
    return kFunctions;
}

}  // namespace telephone

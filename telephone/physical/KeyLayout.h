// The keys of the telephone and their functions, from the configuration. Never changes; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/physical/PhysDefs.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

// A function that a key of the configuration can have.
struct KeyFunctionRow
{
    std::string_view name;
    PhysDefs::keyFunctionType function;
    int buttonGroup;            // the group under which applications subscribe to its presses (kind 8); 0 for none
    bool functional;            // applications can subscribe to the function (kind 24)
    std::string_view litModes;  // of its own lamp, separated by "|"; empty: it has none, or it is never lit
};

// The groups of button events.
constexpr int kKeysetButtons = 4;  // preview, ignore
constexpr int kCallButtons = 6;    // hold

struct PhoneKey
{
    KeyConfiguration configuration;
    KeyFunctionRow const* row;

    int number() const { return configuration.number; }
    PhysDefs::keyFunctionType function() const { return row->function; }
};

class KeyLayout
{
public:
    // Throws std::runtime_error for an unknown function and for two keys with one number.
    explicit KeyLayout(Configuration const& configuration);

    std::vector<PhoneKey> const& keys() const { return keys_; }
    // Null when there is no such key.
    PhoneKey const* find(int number) const;
    // By number, label or function, tried in this order; the first match in the layout.
    PhoneKey const* find(std::string const& name) const;
    // "1 to 14", for messages about a missing key.
    std::string range() const;

private:
    std::vector<PhoneKey> keys_;                   // in ascending order of numbers
    std::unordered_map<int, std::size_t> places_;  // in keys_, by number
};

// The rows of all functions.
std::span<KeyFunctionRow const> keyFunctionRows();

}  // namespace telephone

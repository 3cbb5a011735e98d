// The keys of the telephone: what each number does, as the configuration says. Never changes; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/physical/PhysDefs.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

// A function that a key of the configuration can have.
struct KeyFunctionRow
{
    std::string_view name;
    PhysDefs::keyFunctionType function;
    int buttonGroup;  // under which observers hear of presses (SubscriptionGrp of kind 8); 0: none
    bool functional;  // observers of key functions hear of it (kind 24)
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
    // Throws std::runtime_error for a function that no key can have, and for two keys of one number.
    explicit KeyLayout(Configuration const& configuration);

    std::vector<PhoneKey> const& keys() const { return keys_; }
    // Null: there is no such key.
    PhoneKey const* find(int number) const;
    // By number, label or function, in this order; the first one of the layout.
    PhoneKey const* find(std::string const& name) const;
    // "1 to 14", for what is said of a key that is not there.
    std::string range() const;

private:
    std::vector<PhoneKey> keys_;  // by rising number
};

// The rows of all functions, for help and documentation.
std::vector<KeyFunctionRow> const& keyFunctionRows();

}  // namespace telephone

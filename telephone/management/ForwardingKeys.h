// The settings that hold the telephone's forwarding rules: one row for each rule that has a setting of its own. The
// alternative rule has none; its destination is SettingNames::kForwardingAlternative.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/sfi/SfiTypes.h"

namespace telephone {

class Settings;

struct ForwardingKeys
{
    sfiForwardingType type;
    std::string_view activated;  // key of a flag
    std::string_view address;    // key of a text, the destination
};

// kForwardingKeys[sfiForwardBusy] has the keys of forwarding when busy.
// clang-format off
inline constexpr std::array kForwardingKeys{
    ForwardingKeys{sfiForwardUnconditional,         "cfu-activated",      "cfu-address"},
    ForwardingKeys{sfiForwardUnconditionalExternal, "cfu-ext-activated",  "cfu-ext-address"},
    ForwardingKeys{sfiForwardUnconditionalInternal, "cfu-int-activated",  "cfu-int-address"},
    ForwardingKeys{sfiForwardBusy,                  "cfb-activated",      "cfb-address"},
    ForwardingKeys{sfiForwardBusyExternal,          "cfb-ext-activated",  "cfb-ext-address"},
    ForwardingKeys{sfiForwardBusyInternal,          "cfb-int-activated",  "cfb-int-address"},
    ForwardingKeys{sfiForwardNoReply,               "cfnr-activated",     "cfnr-address"},
    ForwardingKeys{sfiForwardNoReplyExternal,       "cfnr-ext-activated", "cfnr-ext-address"},
    ForwardingKeys{sfiForwardNoReplyInternal,       "cfnr-int-activated", "cfnr-int-address"},
};
// clang-format on
static_assert(
    [] {
        for (std::size_t i = 0; i < kForwardingKeys.size(); ++i) {
            if (kForwardingKeys[i].type != static_cast<sfiForwardingType>(i)) {
                return false;
            }
        }
        return kForwardingKeys.size() == sfiForwardAlternative;
    }(),
    "every rule but the alternative one has its row, in the order of their values");

// Null for the alternative rule and for a value that is not a rule.
constexpr ForwardingKeys const* findForwardingKeys(sfiForwardingType type)
{
    return type >= 0 && type < sfiForwardAlternative ? &kForwardingKeys[static_cast<std::size_t>(type)] : nullptr;
}

// Whether any forwarding rule is on, the alternative one included.
bool isForwarding(Settings const& settings);

}  // namespace telephone

// Every key of the configuration store, with its type and meaning. The store and docs/settings.md use this table.
//
// A name that ends in "/*" is a family: every key that begins with the text before the star belongs to it.
#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <string_view>

#include "platform/management/QoraTags.h"
#include "telephone/management/ForwardingKeys.h"

namespace telephone {

enum class SettingType
{
    kFlag,    // "true" or "false"
    kNumber,  // decimal
    kText,
};

enum class SettingAccess
{
    kUser,           // anyone may set it; a reset of the user's data restores the standard value
    kAdministrator,  // anyone with access to the store may set it; it survives such a reset
    kReadOnly,       // given by the configuration
};

struct SettingRow
{
    std::string_view name;
    SettingType type;
    std::string_view standard;  // the value until another one is set
    SettingAccess access;
    std::string_view tag;  // group of settings; listeners may subscribe to it
    std::string_view meaning;
    std::string_view choices = {};                  // the permitted texts, separated by "|"; empty: any
    int minimum = std::numeric_limits<int>::min();  // for a number
    int maximum = std::numeric_limits<int>::max();
};

struct SettingTags
{
    static constexpr std::string_view kForwarding = "forwarding";
    static constexpr std::string_view kDoNotDisturb = "do-not-disturb";
    static constexpr std::string_view kAgent = "agent";
    static constexpr std::string_view kServer = "server";
    static constexpr std::string_view kPhone = "phone";
    static constexpr std::string_view kLine = "line";
    static constexpr std::string_view kRecording = "recording";
};

// Names of the settings that the telephone itself uses; ForwardingKeys.h has those of the forwarding rules.
struct SettingNames
{
    static constexpr std::string_view kDoNotDisturb = "call-dnd-activated";
    static constexpr std::string_view kDoNotDisturbEnabled = "call-dnd-enabled";
    static constexpr std::string_view kAgentState = "agent-state";
    static constexpr std::string_view kAgentFeatureEnabled = "agent-feature-enabled";
    static constexpr std::string_view kServerBasedFeatures = "server-based-features";
    static constexpr std::string_view kServerType = "server-type";
    static constexpr std::string_view kForwardingPrivacy = "forwarding-privacy";
    static constexpr std::string_view kBuiltInForwarding = "built-in-forwarding";
    static constexpr std::string_view kNoReplyDelay = "cfnr-delay";
    static constexpr std::string_view kForwardingAlternative = "forwarding-alternative";
    static constexpr std::string_view kDialRestriction = "dial-restriction-mode";
    static constexpr std::string_view kPhoneLocked = "phone-locked";
    static constexpr std::string_view kImmediateRing = "immediate-ring";
    static constexpr std::string_view kCurrentMultiUser = "current-multi-user";
    static constexpr std::string_view kHeadsetOverride = "headset-override";
    static constexpr std::string_view kRecordingEnabled = "recording-enabled";
    static constexpr std::string_view kFeatureTogglePrefix = "feature-toggle/";  // + key number: a flag
    static constexpr std::string_view kCockpitPrefix = "agent-cockpit/";         // + item: a text
    static constexpr std::string_view kLinePrefix = "line/";                     // + line id + "/" + key: a text
};

// clang-format off
inline constexpr auto kSettingRows = [] {
    using enum SettingType;
    using enum SettingAccess;
    using Tag = SettingTags;
    using Name = SettingNames;
    constexpr auto& keys = kForwardingKeys;
    return std::to_array<SettingRow>({
        {keys[sfiForwardUnconditional].activated,          kFlag,   "false",     kUser,           Tag::kForwarding,     "forward every call"},
        {keys[sfiForwardUnconditional].address,            kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardUnconditionalExternal].activated,  kFlag,   "false",     kUser,           Tag::kForwarding,     "forward every call from outside"},
        {keys[sfiForwardUnconditionalExternal].address,    kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardUnconditionalInternal].activated,  kFlag,   "false",     kUser,           Tag::kForwarding,     "forward every call from the same domain"},
        {keys[sfiForwardUnconditionalInternal].address,    kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardBusy].activated,                   kFlag,   "false",     kUser,           Tag::kForwarding,     "forward when busy"},
        {keys[sfiForwardBusy].address,                     kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardBusyExternal].activated,           kFlag,   "false",     kUser,           Tag::kForwarding,     "forward calls from outside when busy"},
        {keys[sfiForwardBusyExternal].address,             kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardBusyInternal].activated,           kFlag,   "false",     kUser,           Tag::kForwarding,     "forward calls from the same domain when busy"},
        {keys[sfiForwardBusyInternal].address,             kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardNoReply].activated,                kFlag,   "false",     kUser,           Tag::kForwarding,     "forward when nobody answers"},
        {keys[sfiForwardNoReply].address,                  kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {Name::kNoReplyDelay,                              kNumber, "3",         kUser,           Tag::kForwarding,     "rings before a call counts as not answered", {}, 0, 99},
        {keys[sfiForwardNoReplyExternal].activated,        kFlag,   "false",     kUser,           Tag::kForwarding,     "forward calls from outside when nobody answers"},
        {keys[sfiForwardNoReplyExternal].address,          kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {keys[sfiForwardNoReplyInternal].activated,        kFlag,   "false",     kUser,           Tag::kForwarding,     "forward calls from the same domain when nobody answers"},
        {keys[sfiForwardNoReplyInternal].address,          kText,   "",          kUser,           Tag::kForwarding,     "destination of that rule"},
        {Name::kForwardingAlternative,                     kText,   "",          kUser,           Tag::kForwarding,     "destination of the alternative forwarding key; empty: off"},
        {Name::kForwardingPrivacy,                         kFlag,   "false",     kReadOnly,       Tag::kForwarding,     "a rule that is switched off loses its destination"},
        {Name::kBuiltInForwarding,                         kFlag,   "true",      kAdministrator,  Tag::kForwarding,     "the telephone forwards calls itself, with 302"},
        {Name::kDoNotDisturb,                              kFlag,   "false",     kUser,           Tag::kDoNotDisturb,   "refuse every call"},
        {Name::kDoNotDisturbEnabled,                       kFlag,   "true",      kAdministrator,  Tag::kDoNotDisturb,   "do-not-disturb may be switched on"},
        {Name::kAgentState,                                kText,   "loggedOff", kUser,           Tag::kAgent,          "state of the call-centre agent",
                                                                                     "loggedOn|loggedOff|notReady|ready|workingAfterCall"},
        {Name::kAgentFeatureEnabled,                       kFlag,   "true",      kAdministrator,  Tag::kAgent,          "the telephone belongs to a call-centre agent"},
        {"agent-cockpit/*",                                kText,   "",          kUser,           Tag::kAgent,          "items of the agent's view, by name"},
        {Name::kServerBasedFeatures,                       kFlag,   "false",     kAdministrator,  Tag::kServer,         "the call server controls forwarding and do-not-disturb"},
        {Name::kServerType,                                kNumber, "0",         kReadOnly,       Tag::kServer,         "kind of call server", {}, 0, 255},
        {QoraTags::INTERFACE_STATUS,                       kText,   "",          kReadOnly,       QoraTags::INTERFACE_STATUS, "state of the wired network; empty: not known"},
        {QoraTags::WLAN_LINK_STATUS,                       kText,   "",          kReadOnly,       QoraTags::WLAN_LINK_STATUS, "state of the wireless network; empty: not known"},
        {Name::kPhoneLocked,                               kFlag,   "false",     kUser,           Tag::kPhone,          "only permitted numbers can be dialled"},
        {Name::kDialRestriction,                           kNumber, "0",         kAdministrator,  Tag::kPhone,          "4: no outgoing calls", {}, 0, 4},
        {Name::kImmediateRing,                             kFlag,   "false",     kUser,           Tag::kPhone,          "lines ring without their ring delay"},
        {Name::kCurrentMultiUser,                          kText,   "",          kUser,           Tag::kPhone,          "line of the current user; empty: the primary line"},
        {Name::kHeadsetOverride,                           kNumber, "0",         kUser,           Tag::kPhone,          "line that answers on the headset whatever is plugged in; 0: none", {}, 0, 255},
        {"feature-toggle/*",                               kFlag,   "false",     kUser,           Tag::kPhone,          "state of a feature key, by key number"},
        {"line/*",                                         kText,   "",          kUser,           Tag::kLine,           "settings of one line, by line id and key"},
        {Name::kRecordingEnabled,                          kFlag,   "true",      kAdministrator,  Tag::kRecording,      "calls may be recorded"},
    });
}();
// clang-format on

static_assert(kSettingRows.size() == 39, "a setting was added or removed: update the tests and the change log");
static_assert(
    [] {
        for (std::size_t i = 0; i < kSettingRows.size(); ++i) {
            for (std::size_t k = i + 1; k < kSettingRows.size(); ++k) {
                if (kSettingRows[i].name == kSettingRows[k].name) {
                    return false;
                }
            }
        }
        return true;
    }(),
    "two settings have the same name");

constexpr bool isFamily(SettingRow const& row)
{
    return row.name.ends_with("/*");
}

// The row of a key, or of its family; null for an unknown key.
constexpr SettingRow const* findSettingRow(std::string_view key)
{
    for (auto const& row : kSettingRows) {
        auto const prefix = row.name.substr(0, row.name.size() - 1);
        if (isFamily(row) ? key.size() > prefix.size() && key.starts_with(prefix) : key == row.name) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace telephone

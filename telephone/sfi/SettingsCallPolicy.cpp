#include "telephone/sfi/SettingsCallPolicy.h"

#include <algorithm>

#include "telephone/lines/ServerFeatures.h"
#include "telephone/management/ForwardingKeys.h"
#include "telephone/management/Settings.h"

namespace telephone {

SettingsCallPolicy::SettingsCallPolicy(Settings& settings, LineTable const& lines)
    : settings_(settings)
    , lines_(lines)
{
    // The state of the last run is still in force.
    if (settings_.flag(SettingNames::kDoNotDisturb)) {
        doNotDisturb_[0] = true;
    }
}

bool SettingsCallPolicy::forwardsHere() const
{
    return settings_.flag(SettingNames::kBuiltInForwarding) && !settings_.flag(SettingNames::kServerBasedFeatures);
}

bool SettingsCallPolicy::isUsersLine(std::string const& lineURI) const
{
    std::string const user = settings_.text(SettingNames::kCurrentMultiUser);
    if (!user.empty()) {
        return lineURI == user;
    }
    LineTable::Row const* const primary = lines_.primary();
    return primary != nullptr && lineURI == primary->address.lineURI;
}

// An appearance has the features of its line.
Line::serverFeaturesSettings SettingsCallPolicy::featuresOf(LineAddress const& place) const
{
    auto const line = lines_.addressOf(place.lineNumber, 0);
    return ServerFeatures(settings_, line ? line->lineURI : place.lineURI).read();
}

std::optional<Line::singleCFSetting> SettingsCallPolicy::ownRule(LineAddress const& place, sfiForwardingType type) const
{
    auto const rules = featuresOf(place).forwarding;
    auto const rule = rules.find(type);
    return rule == rules.end() ? std::nullopt : std::optional(rule->second);
}

ForwardingRule SettingsCallPolicy::forwarding(int lineNumber, sfiForwardingType type) const
{
    auto const line = lines_.addressOf(lineNumber, 0);
    if (!line) {
        return {};
    }
    if (isUsersLine(line->lineURI)) {
        ForwardingKeys const* const keys = findForwardingKeys(type);
        if (keys == nullptr) {
            std::string const alternative = settings_.text(SettingNames::kForwardingAlternative);
            return {!alternative.empty(), alternative};
        }
        return {settings_.flag(keys->activated), settings_.text(keys->address)};
    }
    auto const rule = ownRule(*line, type);
    return rule ? ForwardingRule{rule->status, rule->destination} : ForwardingRule{};
}

// The number of the no-reply rule applies to its external and internal variants, too.
int SettingsCallPolicy::ringsBeforeNoReply(int lineNumber) const
{
    auto const line = lines_.addressOf(lineNumber, 0);
    if (line && !isUsersLine(line->lineURI)) {
        auto const rule = ownRule(*line, sfiForwardNoReply);
        if (rule && rule->ringCount >= 0) {
            return rule->ringCount;
        }
    }
    return settings_.number(SettingNames::kNoReplyDelay);
}

bool SettingsCallPolicy::doNotDisturb(int lineNumber) const
{
    {
        std::lock_guard const guard(mutex_);
        auto const isOn = [this](int number) {
            auto const found = doNotDisturb_.find(number);
            return found != doNotDisturb_.end() && found->second;
        };
        if (isOn(0) || isOn(lineNumber)) {
            return true;
        }
        // The telephone is in this state while any line is.
        if (lineNumber == 0) {
            return std::ranges::any_of(doNotDisturb_, [](auto const& each) { return each.second; });
        }
    }
    auto const line = lines_.addressOf(lineNumber, 0);
    return line && !isUsersLine(line->lineURI) && featuresOf(*line).dnd;
}

void SettingsCallPolicy::setDoNotDisturb(int lineNumber, bool on)
{
    std::lock_guard const guard(mutex_);
    if (lineNumber == 0) {
        doNotDisturb_.clear();
    }
    doNotDisturb_[lineNumber] = on;
    // The telephone may have been in this state because of the line.
    if (!on) {
        doNotDisturb_[0] = false;
    }
}

}  // namespace telephone

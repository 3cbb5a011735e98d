#include "telephone/sfi/SettingsCallPolicy.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/lines/Line.h"
#include "platform/lines/LineManager.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/management/ForwardingKeys.h"
#include "telephone/management/Settings.h"

namespace telephone {

namespace {

// The primary line, else the first.
std::string ownLineOf(Configuration const& configuration)
{
    auto const& lines = configuration.lines;
    auto const primary = std::find_if(lines.begin(), lines.end(), [](auto const& line) { return line.primary; });
    if (primary != lines.end()) {
        return primary->id;
    }
    return lines.empty() ? std::string() : lines.front().id;
}

Line::serverFeaturesSettings featuresOf(std::string const& lineURI)
{
    Line::serverFeaturesSettings features;
    LineManager* const lines = LineManager::Instance();
    Line* const line = lines != nullptr ? lines->getLine(lineURI) : nullptr;
    if (line != nullptr) {
        line->getServerFeaturesSettings(features);
    }
    return features;
}

}  // namespace

SettingsCallPolicy::SettingsCallPolicy(Settings const& settings, LineDirectory const& lines,
                                       Configuration const& configuration)
    : settings_(settings)
    , lines_(lines)
    , ownLine_(ownLineOf(configuration))
{
    // What was switched on before the telephone was started holds on.
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
    const std::string user = settings_.text(SettingNames::kCurrentMultiUser);
    if (!user.empty()) {
        return user == lineURI;
    }
    return lineURI == ownLine_;
}

ForwardingRule SettingsCallPolicy::forwarding(int lineNumber, sfiForwardingType type) const
{
    auto const line = lines_.addressOf(lineNumber, 0);
    if (!line) {
        return {};
    }
    if (isUsersLine(line->lineURI)) {
        auto const* const keys = findForwardingKeys(type);
        if (keys == nullptr) {
            return {};
        }
        return {settings_.flag(keys->activated), settings_.text(keys->address)};
    }
    const Line::serverFeaturesSettings features = featuresOf(line->lineURI);
    auto const rule = features.forwarding.find(type);
    return rule == features.forwarding.end() ? ForwardingRule{}
                                             : ForwardingRule{rule->second.status, rule->second.destination};
}

int SettingsCallPolicy::ringsBeforeNoReply() const
{
    return settings_.number(SettingNames::kNoReplyDelay);
}

bool SettingsCallPolicy::doNotDisturb(int lineNumber) const
{
    {
        const std::lock_guard guard(mutex_);
        auto const isOn = [this](int number) {
            const auto found = doNotDisturb_.find(number);
            return found != doNotDisturb_.end() && found->second;
        };
        if (isOn(0) || isOn(lineNumber)) {
            return true;
        }
        // The telephone is in this state while a line of it is.
        if (lineNumber == 0) {
            return std::any_of(doNotDisturb_.begin(), doNotDisturb_.end(),
                               [](auto const& each) { return each.second; });
        }
    }
    auto const line = lines_.addressOf(lineNumber, 0);
    return line && !isUsersLine(line->lineURI) && featuresOf(line->lineURI).dnd;
}

void SettingsCallPolicy::setDoNotDisturb(int lineNumber, bool on)
{
    const std::lock_guard guard(mutex_);
    if (lineNumber == 0) {
        doNotDisturb_.clear();
    }
    doNotDisturb_[lineNumber] = on;
    // Of the line that the telephone was in this state for.
    if (!on) {
        doNotDisturb_[0] = false;
    }
}

}  // namespace telephone

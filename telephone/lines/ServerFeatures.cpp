#include "telephone/lines/ServerFeatures.h"

#include <charconv>
#include <optional>

#include <spdlog/fmt/fmt.h>

#include "telephone/management/Settings.h"

namespace telephone {

namespace {

constexpr char const* kDoNotDisturb = "do-not-disturb";
constexpr char const* kForwarding = "forwarding-";
constexpr int kNoRingCount = -1;

// In the range of the telephone's own number.
bool isRingCount(int rings)
{
    constexpr SettingRow const* kRow = findSettingRow(SettingNames::kNoReplyDelay);
    return rings >= kRow->minimum && rings <= kRow->maximum;
}

// Nothing for a malformed text, which only another program can have written.
std::optional<Line::singleCFSetting> ruleOf(std::string const& text)
{
    auto const first = text.find(';');
    auto const second = first == std::string::npos ? first : text.find(';', first + 1);
    if (second == std::string::npos) {
        return std::nullopt;
    }
    Line::singleCFSetting rule;
    rule.status = text.compare(0, first, "on") == 0;
    rule.destination = text.substr(second + 1);
    std::from_chars(text.data() + first + 1, text.data() + second, rule.ringCount);
    return rule;
}

std::string textOf(Line::singleCFSetting const& rule)
{
    return fmt::format("{};{};{}", rule.status ? "on" : "off", rule.ringCount, rule.destination);
}

}  // namespace

ServerFeatures::ServerFeatures(Settings& settings, std::string const& lineID)
    : settings_(settings)
    , prefix_(std::string(SettingNames::kLinePrefix) + lineID + "/")
{}

Line::serverFeaturesSettings ServerFeatures::read() const
{
    Line::serverFeaturesSettings features;
    features.dnd = settings_.text(prefix_ + kDoNotDisturb) == "true";
    for (int number = sfiForwardUnconditional; number <= sfiForwardAlternative; ++number) {
        auto const type = static_cast<sfiForwardingType>(number);
        if (auto const rule = ruleOf(settings_.text(forwardingKey(type)))) {
            features.forwarding[type] = *rule;
        }
    }
    return features;
}

Outcome<> ServerFeatures::setDoNotDisturb(bool on)
{
    return settings_.set(prefix_ + kDoNotDisturb, on ? "true" : "false");
}

Outcome<> ServerFeatures::setForwarding(sfiForwardingType type, Line::singleCFSetting const& rule)
{
    if (type < sfiForwardUnconditional || type > sfiForwardAlternative) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("there is no forwarding type {} ({} to {})", static_cast<int>(type),
                                  static_cast<int>(sfiForwardUnconditional), static_cast<int>(sfiForwardAlternative)));
    }
    std::string const key = forwardingKey(type);
    Line::singleCFSetting kept = rule;
    if (!isRingCount(rule.ringCount)) {
        auto const present = ruleOf(settings_.text(key));
        kept.ringCount = present ? present->ringCount : kNoRingCount;
    }
    return settings_.set(key, textOf(kept));
}

std::string ServerFeatures::forwardingKey(sfiForwardingType type) const
{
    return prefix_ + kForwarding + std::to_string(type);
}

}  // namespace telephone

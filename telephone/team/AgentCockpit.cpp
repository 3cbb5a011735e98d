#include "telephone/team/AgentCockpit.h"

#include "telephone/framework/Log.h"
#include "telephone/management/Settings.h"

namespace telephone {

std::string AgentCockpit::getEACockpitData(std::string const& item)
{
    return item.empty() ? std::string() : settings_.text(std::string(SettingNames::kCockpitPrefix) + item);
}

bool AgentCockpit::setEACockpitData(std::string const& item, std::string const& value)
{
    auto const outcome = settings_.set(std::string(SettingNames::kCockpitPrefix) + item, value);
    if (!outcome) {
        log(kLogFailure, "agent cockpit", "item \"{}\" is not set: {}", item, outcome.error().reason);
    }
    return outcome.has_value();
}

}  // namespace telephone

#include "telephone/team/AgentCockpit.h"

#include "telephone/framework/Refusals.h"
#include "telephone/management/Settings.h"
#include "telephone/team/LogComponent.h"

namespace telephone {

std::string AgentCockpit::getEACockpitData(std::string const& item)
{
    return item.empty() ? std::string() : settings_.text(std::string(SettingNames::kCockpitPrefix) + item);
}

bool AgentCockpit::setEACockpitData(std::string const& item, std::string const& value)
{
    return !reportIfRefused(kComponent, settings_.set(std::string(SettingNames::kCockpitPrefix) + item, value));
}

}  // namespace telephone

#include "telephone/team/FeatureToggles.h"

#include <string>

#include <spdlog/fmt/fmt.h>

#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/management/Settings.h"
#include "telephone/team/LogComponent.h"
#include "telephone/traced/TracedPlatform.h"

namespace telephone {

namespace {

std::string settingOf(int keyNumber)
{
    return std::string(SettingNames::kFeatureTogglePrefix) + std::to_string(keyNumber);
}

}  // namespace

FeatureToggles::FeatureToggles(KeyLayout const& layout, Settings& settings)
    : layout_(layout)
    , settings_(settings)
{}

void FeatureToggles::ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                                  MgmtAgentIfc* /*agent*/)
{
    if (physicalInterface == nullptr || localMgmt == nullptr) {
        log(kLogWarning, kComponent, "the service found no {}", physicalInterface == nullptr ? "keys" : "store");
    }
}

void FeatureToggles::ftToggleKeyPressed(int keyNumber)
{
    reportIfRefused(kComponent, set(keyNumber, !isOn(keyNumber)));
}

bool FeatureToggles::isOn(int keyNumber) const
{
    return settings_.flag(settingOf(keyNumber));
}

Outcome<> FeatureToggles::set(int keyNumber, bool on)
{
    auto const* const key = layout_.find(keyNumber);
    if (key == nullptr || key->function() != PhysDefs::keyFunctionFeatureToggle) {
        return refuse(RefusalKind::kNotFound, fmt::format("key {} is not a feature toggle", keyNumber));
    }
    auto stored = settings_.set(settingOf(keyNumber), on ? "true" : "false");
    if (stored) {
        log(kLogInfo, kComponent, "the feature of key {} is {}", keyNumber, on ? "on" : "off");
    }
    return stored;
}

}  // namespace telephone

FeatureToggle* FeatureToggle::Instance()
{
    return telephone::traced<FeatureToggle>(telephone::OnlyObject<telephone::FeatureToggles>::get());
}

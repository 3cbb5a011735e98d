#include "telephone/team/FeatureToggles.h"

#include <atomic>
#include <stdexcept>
#include <string>

#include "telephone/framework/Log.h"
#include "telephone/management/Settings.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "feature toggles";

std::atomic<FeatureToggles*> theToggles{nullptr};

std::string settingOf(int keyNumber)
{
    return std::string(SettingNames::kFeatureTogglePrefix) + std::to_string(keyNumber);
}

}  // namespace

FeatureToggles::FeatureToggles(KeyLayout const& layout, Settings& settings)
    : layout_(layout)
    , settings_(settings)
{
    FeatureToggles* nobody = nullptr;
    if (!theToggles.compare_exchange_strong(nobody, this)) {
        throw std::runtime_error("there are feature toggles already");
    }
}

FeatureToggles::~FeatureToggles()
{
    theToggles = nullptr;
}

void FeatureToggles::ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                                  MgmtAgentIfc* /*agent*/)
{
    if (physicalInterface == nullptr || localMgmt == nullptr) {
        log(kLogWarning, kComponent, "the service found no {}", physicalInterface == nullptr ? "keys" : "store");
    }
}

void FeatureToggles::ftToggleKeyPressed(int keyNumber)
{
    set(keyNumber, !settings_.flag(settingOf(keyNumber)));
}

bool FeatureToggles::set(int keyNumber, bool on)
{
    if (!isToggle(keyNumber)) {
        log(kLogFailure, kComponent, "key {} toggles nothing", keyNumber);
        return false;
    }
    auto const outcome = settings_.set(settingOf(keyNumber), on ? "true" : "false");
    log(outcome ? kLogInfo : kLogFailure, kComponent, "the feature of key {} is {}{}", keyNumber,
        outcome ? (on ? "on" : "off") : "not switched: ", outcome ? "" : outcome.error().reason);
    return outcome.has_value();
}

bool FeatureToggles::isToggle(int keyNumber) const
{
    auto const* const key = layout_.find(keyNumber);
    return key != nullptr && key->function() == PhysDefs::keyFunctionFeatureToggle;
}

}  // namespace telephone

FeatureToggle* FeatureToggle::Instance()
{
    return telephone::theToggles.load();
}

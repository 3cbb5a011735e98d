// Keys that switch a feature on and off. The configuration store keeps the state under "feature-toggle/" and the number
// of the key; the key's lamp follows it.
//
// Owned by the composition root; FeatureToggle::Instance() while it exists. Any thread, without the phone lock.
#pragma once

#include "platform/team/FeatureToggle.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/OnlyObject.h"
#include "telephone/physical/KeyLayout.h"

namespace telephone {

class Settings;

class FeatureToggles final : public FeatureToggle
{
public:
    FeatureToggles(KeyLayout const& layout, Settings& settings);

    void ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                      MgmtAgentIfc* agent) override;
    void ftToggleKeyPressed(int keyNumber) override;

    bool isOn(int keyNumber) const;
    // Refused for a key that is not a toggle, and when the store refuses.
    [[nodiscard]] Outcome<> set(int keyNumber, bool on);

private:
    KeyLayout const& layout_;
    Settings& settings_;
    OnlyObject<FeatureToggles> const only_{*this, "feature toggles"};
};

}  // namespace telephone

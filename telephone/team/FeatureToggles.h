// Keys that switch a feature on and off. What is switched on is kept in the configuration store under
// "feature-toggle/" and the key's number; the key's lamp follows it there.
//
// Owned by the composition root; FeatureToggle::Instance() while it lives. Any thread, without the phone lock.
#pragma once

#include "platform/team/FeatureToggle.h"
#include "telephone/physical/KeyLayout.h"

namespace telephone {

class Settings;

class FeatureToggles final : public FeatureToggle
{
public:
    FeatureToggles(KeyLayout const& layout, Settings& settings);
    ~FeatureToggles();
    FeatureToggles(FeatureToggles const&) = delete;
    FeatureToggles& operator=(FeatureToggles const&) = delete;

    void ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                      MgmtAgentIfc* agent) override;
    // A key that toggles nothing is refused in the log.
    void ftToggleKeyPressed(int keyNumber) override;

    // False: not such a key, or the store refuses it.
    bool set(int keyNumber, bool on);

private:
    bool isToggle(int keyNumber) const;

    KeyLayout const& layout_;
    Settings& settings_;
};

}  // namespace telephone

/// @file
/// FeatureToggle, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/team/FeatureToggle.h"

namespace kit {

/// The feature toggles of a telephone that has none.
class DefaultFeatureToggle : public FeatureToggle
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultFeatureToggle() = default;

    void ftInitialise(PhysicalInterfaceServiceIfc* /*physicalInterface*/, LocalMgmtIfc* /*localMgmt*/,
                      MgmtAgentIfc* /*agent*/) override
    {
        kMissing.report("ftInitialise", "keep keys, store and service, of which the first two may be null");
    }
    void ftToggleKeyPressed(int /*keyNumber*/) override
    {
        kMissing.report("ftToggleKeyPressed", "switch the feature of the key");
    }

private:
    static constexpr Missing kMissing{"FeatureToggle", "platform/team/FeatureToggle.h"};
};

}  // namespace kit

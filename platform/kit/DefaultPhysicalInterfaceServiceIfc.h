/// @file
/// PhysicalInterfaceServiceIfc, answering "not there".
#pragma once

#include "platform/framework/Executable.h"
#include "platform/kit/Missing.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"

namespace kit {

/// Keys that nobody presses, and lamps that stay dark.
///
/// It is an executable, because the service finds it by the name "PhysicalInterfaceServiceIfc"; give it to
/// ServiceHost::provide.
class DefaultPhysicalInterfaceServiceIfc : public Executable, public PhysicalInterfaceServiceIfc
{
public:
    /// Deleted by whoever made it.
    ~DefaultPhysicalInterfaceServiceIfc() override = default;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    bool subscribePhysicalEvents(physicalEventObserver* /*observer*/,
                                 std::vector<PhysDefs::SubscriptionGrp>& /*groups*/) override
    {
        kMissing.report("subscribePhysicalEvents", "tell the observer presses, plugs and the hook switch");
        return false;
    }
    bool subscribeFunctionalEvents(functionalEventObserver* /*observer*/,
                                   std::vector<PhysDefs::SubscriptionGrp>& /*subscriptions*/) override
    {
        kMissing.report("subscribeFunctionalEvents", "tell the observer presses of these key functions");
        return false;
    }
    void setLamp(int /*lamp*/, int /*mode*/, int /*colour*/, int /*option*/) override
    {
        kMissing.report("setLamp", "set the lamp");
    }
    PhysDefs::plugStatus getHeadsetJackStatus() override
    {
        kMissing.report("getHeadsetJackStatus", "tell whether a headset is plugged in");
        return PhysDefs::plugOut;
    }
    void forwardingCleared() override { kMissing.report("forwardingCleared", "switch the lamps of forwarding off"); }

private:
    static constexpr Missing kMissing{"PhysicalInterfaceServiceIfc", "platform/physical/PhysicalInterfaceServiceIfc.h"};
};

}  // namespace kit

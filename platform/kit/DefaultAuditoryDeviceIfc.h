/// @file
/// AuditoryDeviceIfc, answering "not there".
#pragma once

#include "platform/framework/Executable.h"
#include "platform/kit/Missing.h"
#include "platform/physical/AuditoryDeviceIfc.h"

namespace kit {

/// A sound device that makes no sound.
///
/// It is an executable, because the service finds it by the name "AuditoryDeviceIfc"; give it to ServiceHost::provide.
class DefaultAuditoryDeviceIfc : public Executable, public AuditoryDeviceIfc
{
public:
    /// Deleted by whoever made it.
    ~DefaultAuditoryDeviceIfc() override = default;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    void useHeadset(bool /*headset*/) override
    {
        kMissing.report("useHeadset", "send sound to the headset or away from it");
    }
    void setRinging(bool /*ringing*/) override { kMissing.report("setRinging", "start or stop ringing"); }

private:
    static constexpr Missing kMissing{"AuditoryDeviceIfc", "platform/physical/AuditoryDeviceIfc.h"};
};

}  // namespace kit

// The sound devices of a telephone without a sound card: logs whether sound goes to the headset and whether the
// telephone rings. Registered with the framework as "AuditoryDeviceIfc"; the composition root owns it. Any thread may
// call, also with the phone lock held.
#pragma once

#include <atomic>

#include "platform/framework/Executable.h"
#include "platform/physical/AuditoryDeviceIfc.h"

namespace telephone {

class AuditoryDevice : public Executable, public AuditoryDeviceIfc
{
public:
    // Executable
    void init(Context& /*context*/) override {}
    void shutdown() override;

    // AuditoryDeviceIfc
    void useHeadset(bool headset) override;
    void setRinging(bool ringing) override;

private:
    std::atomic<bool> headset_{false};
    std::atomic<bool> ringing_{false};
};

}  // namespace telephone

// The sound devices of a telephone without a sound card: it knows whether sound would go to the headset and whether the
// telephone would ring, logs both, and tells whoever shows them. Registered with the framework as "AuditoryDeviceIfc";
// the composition root owns it. Any thread may call, with the phone lock too.
#pragma once

#include <atomic>

#include "platform/framework/Executable.h"
#include "platform/physical/AuditoryDeviceIfc.h"

namespace telephone {

class AuditoryDevice : public Executable, public AuditoryDeviceIfc
{
public:
    // Executable
    void init(Context& context) override;
    void shutdown() override;

    // AuditoryDeviceIfc
    void useHeadset(bool headset) override;
    void setRinging(bool ringing) override;

    bool isHeadsetUsed() const { return headset_; }
    bool isRinging() const { return ringing_; }

private:
    std::atomic<bool> headset_{false};
    std::atomic<bool> ringing_{false};
};

}  // namespace telephone

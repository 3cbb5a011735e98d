#include "telephone/services/AuditoryDevice.h"

#include "telephone/framework/Log.h"

namespace telephone {

void AuditoryDevice::shutdown()
{
    setRinging(false);
}

void AuditoryDevice::useHeadset(bool headset)
{
    if (headset_.exchange(headset) != headset) {
        log(kLogInfo, "sound", "sound goes to the {}", headset ? "headset" : "handset");
    }
}

void AuditoryDevice::setRinging(bool ringing)
{
    if (ringing_.exchange(ringing) != ringing) {
        log(kLogInfo, "sound", "{}", ringing ? "the telephone rings" : "the telephone is silent");
    }
}

}  // namespace telephone

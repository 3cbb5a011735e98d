// The telephone's sound devices. Registered with the framework as "AuditoryDeviceIfc"; the service only hands it to the
// call control.
#pragma once

class AuditoryDeviceIfc
{
public:
    // Sound goes to the headset (true) or to the handset and loudspeaker.
    virtual void useHeadset(bool headset) = 0;
    virtual void setRinging(bool ringing) = 0;

protected:
    ~AuditoryDeviceIfc() = default;
};

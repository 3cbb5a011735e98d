/// @file
/// The telephone's sound devices.
#pragma once

/// Switches sound. The telephone owns it and registers it with the framework as "AuditoryDeviceIfc"; the service only
/// hands it to the call control. Thread: any.
class AuditoryDeviceIfc
{
public:
    /// Sends sound to the headset (true) or to the handset and loudspeaker (false).
    virtual void useHeadset(bool headset) = 0;
    /// Starts or stops ringing.
    virtual void setRinging(bool ringing) = 0;

protected:
    /// Never deleted through this interface.
    ~AuditoryDeviceIfc() = default;
};

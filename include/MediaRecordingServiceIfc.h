// Call recording on and off for a line. The service object implements it.
#pragma once

#include <string>

class __attribute__((visibility("default"))) MediaRecordingServiceIfc
{
public:
    // Both answer false when there is nothing to record or it could not be started or ended.
    virtual bool activateRecording(std::string const& lineURI) = 0;
    virtual bool deactivateRecording(std::string const& lineURI) = 0;

protected:
    ~MediaRecordingServiceIfc() = default;
};

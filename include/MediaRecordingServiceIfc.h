/// @file
/// Call recording on and off for a line.
#pragma once

#include <string>

/// Records the calls of a line. The service object implements it: take it from the object by a checked cast and never
/// delete through it. Thread: any, without CSfi's Lock.
class __attribute__((visibility("default"))) MediaRecordingServiceIfc
{
public:
    /// Records the calls of a line; `callRecordingStatus` reports each.
    /// @return The answer of MediaRecordingService::activateRecording: false when no call of the line is connected,
    ///     when recording is disabled or when no file can be written.
    virtual bool activateRecording(std::string const& lineURI) = 0;
    /// Ends the recordings of a line.
    /// @return The answer of MediaRecordingService::deactivateRecording: false when none of its calls is recorded.
    virtual bool deactivateRecording(std::string const& lineURI) = 0;

protected:
    /// Never deleted through this interface.
    ~MediaRecordingServiceIfc() = default;
};

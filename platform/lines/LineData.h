/// @file
/// The configuration of one line.
#pragma once

#include <string>

/// Reads the configuration of a line. The line owns it. Thread: any, any lock held.
class LineData
{
public:
    /// The identifier of the line.
    /// @return As requests and events carry it.
    virtual std::string getURI() = 0;
    /// Whether the line is the telephone's own.
    /// @return 0 for a secondary line.
    virtual int getPrimary() = 0;
    /// A short text for the line's key.
    /// @return May be empty.
    virtual std::string getShortDescription() = 0;
    /// Whether and how the line rings.
    /// @return 0: silent.
    virtual int getRing() = 0;
    /// How long the line alerts before it is heard.
    /// @return Seconds, 0 to 3600.
    virtual int getRingDelay() = 0;
    /// The line's place on the overview.
    /// @return From 1.
    virtual int getOverviewPosition() = 0;
    /// Whether the overview shows the line.
    /// @return true when it does.
    virtual bool getVisibleOnOverview() = 0;
    /// The kind of alert for a second call.
    /// @return 0 to 255.
    virtual int getLineAudibleAlert() = 0;
    /// The digits that a hot or warm line dials.
    /// @return Empty: it dials nothing.
    virtual std::string getHotWarmDigits() = 0;
    /// Whether the line dials by itself when it is seized.
    /// @return kHotWarmNone, kHotLine or kWarmLine.
    virtual int getHotWarmType() = 0;
    /// Whether other telephones have the line too.
    /// @return kNotShared, kSharedLine or kBridgedLine.
    virtual int getSharedLineType() = 0;
    /// Whether the line's direct-station-select key only shows the line.
    /// @return true when a press does nothing.
    virtual bool getDSSMonitorOnly() = 0;
    /// Marks that the next seizure comes from a key press: only then does a hot or warm line dial. The service sets it
    /// before Line::keyPressed.
    virtual void setHotWarmLineManual(bool manual) = 0;

    static constexpr int kHotWarmNone = 0;  ///< an ordinary line
    static constexpr int kHotLine = 1;      ///< dials at once
    static constexpr int kWarmLine = 2;     ///< dials after a delay

    static constexpr int kNotShared = 0;    ///< this telephone's alone
    static constexpr int kSharedLine = 1;   ///< appears at several telephones
    static constexpr int kBridgedLine = 2;  ///< appears at several telephones, which can join its call

protected:
    /// Never deleted through this interface.
    ~LineData() = default;
};

// The configuration of one line. The line owns it.
#pragma once

#include <string>

class LineData
{
public:
    virtual std::string getURI() = 0;
    // 0: a secondary line.
    virtual int getPrimary() = 0;
    virtual std::string getShortDescription() = 0;
    // Whether (not 0) and how the line rings.
    virtual int getRing() = 0;
    // In seconds.
    virtual int getRingDelay() = 0;
    // From 1.
    virtual int getOverviewPosition() = 0;
    virtual bool getVisibleOnOverview() = 0;
    virtual int getLineAudibleAlert() = 0;
    virtual std::string getHotWarmDigits() = 0;
    // kHotWarmNone, kHotLine or kWarmLine.
    virtual int getHotWarmType() = 0;
    // kNotShared, kSharedLine or kBridgedLine.
    virtual int getSharedLineType() = 0;
    virtual bool getDSSMonitorOnly() = 0;
    // The next use of a hot or warm line comes from a key press.
    virtual void setHotWarmLineManual(bool manual) = 0;

    static constexpr int kHotWarmNone = 0;
    static constexpr int kHotLine = 1;   // dials at once
    static constexpr int kWarmLine = 2;  // dials after a delay

    static constexpr int kNotShared = 0;
    static constexpr int kSharedLine = 1;
    static constexpr int kBridgedLine = 2;

protected:
    ~LineData() = default;
};

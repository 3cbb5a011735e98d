/// @file
/// LineData, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/lines/LineData.h"

namespace kit {

/// The configuration of a silent secondary line.
class DefaultLineData : public LineData
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultLineData() = default;

    std::string getURI() override
    {
        kMissing.report("getURI", "return the identifier of the line");
        return {};
    }
    int getPrimary() override
    {
        kMissing.report("getPrimary", "return 1 for the telephone's own line");
        return 0;
    }
    std::string getShortDescription() override
    {
        kMissing.report("getShortDescription", "return the text for the line's key");
        return {};
    }
    int getRing() override
    {
        kMissing.report("getRing", "tell whether the line rings");
        return 0;
    }
    int getRingDelay() override
    {
        kMissing.report("getRingDelay", "tell after how many seconds the line is heard");
        return 0;
    }
    int getOverviewPosition() override
    {
        kMissing.report("getOverviewPosition", "tell the line's place on the overview");
        return 1;
    }
    bool getVisibleOnOverview() override
    {
        kMissing.report("getVisibleOnOverview", "tell whether the overview shows the line");
        return false;
    }
    int getLineAudibleAlert() override
    {
        kMissing.report("getLineAudibleAlert", "tell the kind of alert for a second call");
        return 0;
    }
    std::string getHotWarmDigits() override
    {
        kMissing.report("getHotWarmDigits", "tell what the line dials by itself");
        return {};
    }
    int getHotWarmType() override
    {
        kMissing.report("getHotWarmType", "tell whether the line dials by itself");
        return kHotWarmNone;
    }
    int getSharedLineType() override
    {
        kMissing.report("getSharedLineType", "tell whether other telephones have the line");
        return kNotShared;
    }
    bool getDSSMonitorOnly() override
    {
        kMissing.report("getDSSMonitorOnly", "tell whether the key only shows the line");
        return false;
    }
    void setHotWarmLineManual(bool /*manual*/) override
    {
        kMissing.report("setHotWarmLineManual", "note that a key press seizes the line");
    }

private:
    static constexpr Missing kMissing{"LineData", "platform/lines/LineData.h"};
};

}  // namespace kit

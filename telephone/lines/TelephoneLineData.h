// The configuration of one line, or of one appearance of it, as the service reads it. Owned by its line; the values are
// those of the file and never change.
#pragma once

#include <atomic>
#include <string>

#include "platform/lines/LineData.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

class TelephoneLineData final : public LineData
{
public:
    // `uri`: the identifier of the line or appearance.
    TelephoneLineData(LineConfiguration const& line, std::string uri);

    std::string getURI() override { return uri_; }
    int getPrimary() override { return line_.primary ? 1 : 0; }
    std::string getShortDescription() override { return line_.description; }
    int getRing() override { return line_.ring; }
    int getRingDelay() override { return line_.ringDelay; }
    int getOverviewPosition() override { return line_.overviewPosition; }
    bool getVisibleOnOverview() override { return line_.visibleOnOverview; }
    int getLineAudibleAlert() override { return line_.audibleAlert; }
    std::string getHotWarmDigits() override { return line_.hotWarmDigits; }
    int getHotWarmType() override { return line_.hotWarmType; }
    int getSharedLineType() override { return line_.sharedLineType; }
    bool getDSSMonitorOnly() override { return monitorOnly_; }
    void setHotWarmLineManual(bool manual) override { manual_ = manual; }

    // The mark of setHotWarmLineManual; asking for it takes it away.
    bool takeManualMark();
    // Of the direct-station-select key that shows this line.
    void setMonitorOnly(bool monitorOnly) { monitorOnly_ = monitorOnly; }

private:
    LineConfiguration const& line_;
    std::string uri_;
    bool monitorOnly_ = false;
    std::atomic<bool> manual_{false};
};

}  // namespace telephone

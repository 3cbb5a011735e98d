// The configuration of a line or an appearance, as the service reads it. Its line owns it; the configured values never
// change.
#pragma once

#include <atomic>
#include <string>
#include <utility>

#include "platform/lines/LineData.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

class TelephoneLineData final : public LineData
{
public:
    // uri: the identifier of the line or appearance.
    TelephoneLineData(LineConfiguration const& line, std::string uri)
        : line_(line)
        , uri_(std::move(uri))
    {}

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

    // Returns the mark of setHotWarmLineManual and clears it.
    bool takeManualMark() { return manual_.exchange(false); }
    // Whether the direct-station-select key for this line only shows it.
    void setMonitorOnly(bool monitorOnly) { monitorOnly_ = monitorOnly; }

private:
    LineConfiguration const& line_;
    std::string uri_;
    bool monitorOnly_ = false;
    std::atomic<bool> manual_{false};
};

}  // namespace telephone

/// @file
/// LineManager, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineManager.h"

namespace kit {

/// The lines of a single-line telephone without line objects: calls go to line 0.
class DefaultLineManager : public LineManager
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultLineManager() = default;

    void initialise() override { kMissing.report("initialise", "make the lines usable"); }
    bool isMCALine(std::string const& /*baseURI*/) override
    {
        kMissing.report("isMCALine", "tell whether the line has appearances");
        return false;
    }
    Line* getLine(std::string const& /*lineURI*/) override
    {
        kMissing.report("getLine", "find the line, appearance or party");
        return nullptr;
    }
    Line* getDSSLineForFPK(int /*keyNumber*/) override
    {
        kMissing.report("getDSSLineForFPK", "find the party of a direct-station-select key");
        return nullptr;
    }
    Line* getLineForFPK(int /*keyNumber*/) override
    {
        kMissing.report("getLineForFPK", "find the line of a line key");
        return nullptr;
    }
    std::string getKeysetType() override
    {
        kMissing.report("getKeysetType", "return any text for a telephone with several line keys");
        return {};
    }
    void getDeviceList(std::vector<std::string>& /*devices*/) override
    {
        kMissing.report("getDeviceList", "append \"<prime:LINE>\" for each line");
    }
    std::string getLocalHeldLine() override
    {
        kMissing.report("getLocalHeldLine", "find the line that holds a call here");
        return {};
    }
    Line* getLineInState(ELineState /*state*/, std::string const& /*baseURI*/) override
    {
        kMissing.report("getLineInState", "find the appearance that is in the state");
        return nullptr;
    }
    bool isLocallyIdleLine() override
    {
        kMissing.report("isLocallyIdleLine", "tell whether a call could be made");
        return false;
    }
    bool observe(Executable* /*observer*/) override
    {
        kMissing.report("observe", "tell the observer the states of the lines");
        return false;
    }
    void requestOverviewData(std::string const& /*lineURI*/) override
    {
        kMissing.report("requestOverviewData", "tell the observers the state of the line again");
    }
    void setPhysicalInterface(PhysicalInterfaceServiceIfc* /*physicalInterface*/) override
    {
        kMissing.report("setPhysicalInterface", "keep the keys and lamps, which may be null");
    }
    void setDigitAnalysisService(DigitAnalysisServiceIfc* /*digitAnalysis*/) override
    {
        kMissing.report("setDigitAnalysisService", "keep the dial plan, which may be null");
    }
    int getFPKforUri(std::string const& /*lineURI*/) override
    {
        kMissing.report("getFPKforUri", "find the key of the line");
        return -1;
    }
    std::string getURIforFPK(int /*keyNumber*/) override
    {
        kMissing.report("getURIforFPK", "find the line of the key");
        return {};
    }
    bool lineConsideredAsPrivate(std::string const& /*lineURI*/) override
    {
        kMissing.report("lineConsideredAsPrivate", "tell whether others may not join the line's calls");
        return false;
    }

private:
    static constexpr Missing kMissing{"LineManager", "platform/lines/LineManager.h"};
};

}  // namespace kit

// The telephone's lines. The telephone owns the singleton. The order of the declarations is binary interface.
#pragma once

#include <string>
#include <vector>

#include "platform/lines/ELineState.h"

class DigitAnalysisServiceIfc;
class Executable;
class Line;
class PhysicalInterfaceServiceIfc;

class LineManager
{
public:
    static LineManager* Instance();

    virtual void initialise() = 0;
    // True for a multi-call-appearance line.
    virtual bool isMCALine(std::string const& baseURI) = 0;
    // Null when there is no such line.
    virtual Line* getLine(std::string const& lineURI) = 0;
    // The line of a direct-station-select key, or null.
    virtual Line* getDSSLineForFPK(int keyNumber) = 0;
    virtual Line* getLineForFPK(int keyNumber) = 0;
    // Empty on a single-line telephone.
    virtual std::string getKeysetType() = 0;
    // Appends the telephone's device identities.
    virtual void getDeviceList(std::vector<std::string>& devices) = 0;
    // The line that holds a call here; empty when none does.
    virtual std::string getLocalHeldLine() = 0;
    // The appearance of a line that is in a state now, or null.
    virtual Line* getLineInState(ELineState state, std::string const& baseURI) = 0;
    virtual bool isLocallyIdleLine() = 0;
    // Adds an observer of the lines; false when it can't be one.
    virtual bool observe(Executable* observer) = 0;
    virtual void requestOverviewData(std::string const& lineURI) = 0;
    virtual void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) = 0;
    virtual void setDigitAnalysisService(DigitAnalysisServiceIfc* digitAnalysis) = 0;
    // The key of a line; less than 0 when it has none.
    virtual int getFPKforUri(std::string const& lineURI) = 0;
    // The line of a key; empty when it has none.
    virtual std::string getURIforFPK(int keyNumber) = 0;
    virtual bool lineConsideredAsPrivate(std::string const& lineURI) = 0;

protected:
    ~LineManager() = default;
};

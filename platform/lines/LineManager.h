/// @file
/// The telephone's lines.
#pragma once

#include <string>
#include <vector>

#include "platform/lines/ELineState.h"

class DigitAnalysisServiceIfc;
class Executable;
class Line;
class PhysicalInterfaceServiceIfc;

/// Finds lines and tells their state. The telephone owns the one object, which exists before the service's `init` and
/// until the telephone ends.
///
/// A line is named by its identifier, an appearance by the identifier with an index, for example "4711#2". Thread: any,
/// with or without the service's team lock or CSfi's Lock; no operation may call back into a service operation that
/// takes the team lock.
///
/// The order of the declarations is binary interface.
class LineManager
{
public:
    /// The lines of this telephone.
    /// @return Never null while the service exists.
    static LineManager* Instance();

    /// Called once by `init`, after the call control was set up. The lines are usable from then on.
    virtual void initialise() = 0;
    /// Asks for a multi-call-appearance line.
    /// @return true when the line exists and has appearances.
    virtual bool isMCALine(std::string const& baseURI) = 0;
    /// Finds a line, an appearance or the party of a direct-station-select key.
    /// @return Null when there is none of that name. The service does not ask for the empty name where a key was
    ///     pressed.
    virtual Line* getLine(std::string const& lineURI) = 0;
    /// Finds the line or party of a direct-station-select key.
    /// @return Null for another key.
    virtual Line* getDSSLineForFPK(int keyNumber) = 0;
    /// Finds the line of a line key.
    /// @return Null for another key.
    virtual Line* getLineForFPK(int keyNumber) = 0;
    /// The kind of keyset.
    /// @return Empty on a single-line telephone; any other text: a keyset.
    virtual std::string getKeysetType() = 0;
    /// Appends the telephone's device identities, in the form "<prime:LINE>".
    virtual void getDeviceList(std::vector<std::string>& devices) = 0;
    /// Finds the line that holds a call here.
    /// @return Its identifier; empty when none does.
    virtual std::string getLocalHeldLine() = 0;
    /// Finds the appearance of a line that is in a state now; a line without appearances counts as its own.
    /// @return The first one; null when none is, or the line does not exist.
    virtual Line* getLineInState(ELineState state, std::string const& baseURI) = 0;
    /// Asks whether a call could be made.
    /// @return true when a line or an appearance has no call of this telephone.
    virtual bool isLocallyIdleLine() = 0;
    /// Adds an observer of the lines. A second time changes nothing.
    /// @return false when the executable cannot observe lines, or is null.
    virtual bool observe(Executable* observer) = 0;
    /// Tells the observers the state of a line again. Nothing for an unknown line. The service calls it under its team
    /// lock.
    virtual void requestOverviewData(std::string const& lineURI) = 0;
    /// Hands over the keys and lamps. Called by `init`, before `initialise`; null when there are none.
    virtual void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) = 0;
    /// Hands over the dial plan. Called by `init`, after `initialise`; null when there is none.
    virtual void setDigitAnalysisService(DigitAnalysisServiceIfc* digitAnalysis) = 0;
    /// Finds the key of a line.
    /// @return The key number; less than 0 when it has none.
    virtual int getFPKforUri(std::string const& lineURI) = 0;
    /// Finds the line of a line key or direct-station-select key.
    /// @return Its identifier; empty when it has none.
    virtual std::string getURIforFPK(int keyNumber) = 0;
    /// Asks whether a line is private: others may not join its calls.
    /// @return false for an unknown line.
    virtual bool lineConsideredAsPrivate(std::string const& lineURI) = 0;

protected:
    /// Never deleted through this interface.
    ~LineManager() = default;
};

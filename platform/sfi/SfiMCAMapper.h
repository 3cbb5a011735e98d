/// @file
/// The table of multi-call appearances: which call is on which virtual line and appearance.
#pragma once

/// Maps calls to the appearances of multi-call-appearance lines. The telephone owns it; CSfi::GetMCAMapper hands it
/// out.
///
/// Each appearance is a virtual line with a number of its own and an appearance index, from 1. Thread: any, with or
/// without CSfi's Lock.
class SfiMCAMapper
{
public:
    /// Records that a call is on a virtual line.
    /// @param lineID the virtual line; a line number stands for the first free appearance of that line
    /// @param callID the call
    /// @param appearanceIndex receives the index of the appearance; left as it is when none is free
    virtual void assignCallToLine(int lineID, int callID, int& appearanceIndex) = 0;
    /// Finds an appearance that carries no call, a reserved one first.
    /// @param lineID the line number
    /// @return The number of the virtual line; 0 or less when all are taken or the line has no appearances. The service
    ///     then builds the record with that value.
    virtual int findFirstFreeVirtualLine(int lineID) const = 0;
    /// Looks a call up.
    /// @param callID the call
    /// @param lineID receives the virtual line
    /// @param appearanceIndex receives the index
    /// @return true when the call is mapped; otherwise the outputs are left as they are.
    virtual bool findVirtualLineforCallID(int callID, int& lineID, int& appearanceIndex) const = 0;

protected:
    /// Never deleted through this interface.
    ~SfiMCAMapper() = default;
};

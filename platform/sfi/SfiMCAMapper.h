// The table of multi-call appearances: which call is on which virtual line and appearance. The telephone owns it.
#pragma once

class SfiMCAMapper
{
public:
    // Records that a call is on a virtual line; may write back the appearance index that it chose.
    virtual void assignCallToLine(int lineID, int callID, int& appearanceIndex) = 0;
    // The first virtual line of a line that carries no call; 0 or less when all are taken.
    virtual int findFirstFreeVirtualLine(int lineID) const = 0;
    // True when the call is mapped; only then the outputs are written.
    virtual bool findVirtualLineforCallID(int callID, int& lineID, int& appearanceIndex) const = 0;

protected:
    ~SfiMCAMapper() = default;
};

// Who wants to hear how the lines are. LineListener is for the telephone's own parts: called at once, with the phone
// lock held, so it only notes what changed. LineObserver is for executables that LineManager::observe is given: called
// on a thread of its own with no lock held, in the order of the changes.
#pragma once

#include <string>

#include "platform/lines/ELineState.h"

namespace telephone {

class DssLine;
class TelephoneLine;

class LineListener
{
public:
    virtual void lineChanged(TelephoneLine& line, ELineState before) = 0;
    // What the party of a direct-station key does has changed.
    virtual void stationChanged(DssLine& /*station*/) {}

protected:
    ~LineListener() = default;
};

class LineObserver
{
public:
    // Also sent again, unchanged, when an application asks for the overview.
    virtual void lineStateChanged(std::string const& lineURI, ELineState state, std::string const& remoteURI) = 0;

protected:
    ~LineObserver() = default;
};

}  // namespace telephone

// A part of the telephone that follows the lines. Called in the middle of the change, with the phone lock held: it must
// be quick.
#pragma once

#include "platform/lines/ELineState.h"

namespace telephone {

class DssLine;
class TelephoneLine;

class LineListener
{
public:
    // Also without a change of state, when the way the line is to be shown or heard has changed.
    virtual void lineChanged(TelephoneLine& line, ELineState before) = 0;
    // The state of a direct-station key's party.
    virtual void stationChanged(DssLine& /*station*/) {}

protected:
    ~LineListener() = default;
};

}  // namespace telephone

// An executable that follows the lines through LineManager::observe. Called in the order of the changes, on a thread of
// its own and with no lock held.
#pragma once

#include <string>

#include "platform/lines/ELineState.h"

namespace telephone {

class LineObserver
{
public:
    // Repeated without a change when an application requests the overview.
    virtual void lineStateChanged(std::string const& lineURI, ELineState state, std::string const& remoteURI) = 0;

protected:
    ~LineObserver() = default;
};

}  // namespace telephone

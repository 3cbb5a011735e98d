// Takes SIGINT, SIGTERM and SIGHUP as a readable descriptor instead of an interruption. Made by main before any thread
// starts: the signals are blocked in every thread from then on.
#pragma once

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class StopSignal
{
public:
    StopSignal();  // throws std::system_error

    // Readable from the first such signal on.
    [[nodiscard]] int descriptor() const { return signals_.get(); }
    [[nodiscard]] bool isRaised() const;

private:
    FileDescriptor signals_;
};

}  // namespace telephone

// Turns SIGINT, SIGTERM and SIGHUP into a readable descriptor. Made by main before any thread starts, since it blocks
// the signals in every thread.
#pragma once

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class StopSignal
{
public:
    StopSignal();  // throws std::system_error

    // Readable after the first signal.
    [[nodiscard]] int descriptor() const { return signals_.get(); }
    [[nodiscard]] bool isRaised() const;
    void wait() const;
    // As a signal does. Any thread.
    void raise() const;

private:
    FileDescriptor signals_;
};

}  // namespace telephone

// Wakes a thread that polls: a descriptor that is readable between signal and clear. Any thread signals, without
// blocking.
#pragma once

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class WakeUp
{
public:
    WakeUp();  // throws std::system_error when the system has no descriptor left

    void signal();
    void clear();
    [[nodiscard]] int descriptor() const { return event_.get(); }

private:
    FileDescriptor event_;
};

}  // namespace telephone

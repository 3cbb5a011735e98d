// Wakes a polling thread: a descriptor that is readable between `signal` and `clear`. Any thread may signal, without
// blocking.
#pragma once

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class WakeUp
{
public:
    WakeUp();  // throws std::system_error if no descriptor is available

    void signal();
    void clear();
    [[nodiscard]] int descriptor() const { return event_.get(); }

private:
    FileDescriptor event_;
};

}  // namespace telephone

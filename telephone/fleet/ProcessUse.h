// What a process uses of the machine, as the system tells. Pure queries.
#pragma once

#include <chrono>
#include <cstdint>

#include <sys/types.h>

namespace telephone {

struct ProcessUse
{
    std::uint64_t memory = 0;                // bytes that it shares with no file: neither program nor libraries
    std::chrono::milliseconds processor{0};  // time of all its threads, since its start
};

// Zeros for a process that has ended.
[[nodiscard]] ProcessUse useOf(pid_t process);

}  // namespace telephone

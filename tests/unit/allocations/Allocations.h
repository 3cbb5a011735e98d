// Counts the allocations of this program, and lets a chosen one fail. The operators new and delete of the whole program
// go through it.
#pragma once

#include <cstddef>

class Allocations
{
public:
    // Starts counting at zero; nothing fails.
    static void count();
    // Starts counting at zero; the n-th allocation from here on fails, the first is 1, and so do all after it.
    static void failFrom(std::size_t n);
    // Ends counting and failing. The number of allocations since the start, a failed one included.
    static std::size_t stop();
    // Allocations that were made since the start and are not freed, whoever frees them.
    static std::ptrdiff_t open();

    static void* allocate(std::size_t size);
    static void release(void* memory) noexcept;
};

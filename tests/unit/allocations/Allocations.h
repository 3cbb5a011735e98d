// Counts the allocations of the program and lets a chosen one fail. It replaces the operators new and delete of the
// whole program.
#pragma once

#include <cstddef>

class Allocations
{
public:
    // Starts counting at zero; nothing fails.
    static void count();
    // Starts counting at zero; the n-th allocation (the first is 1) and all later ones fail.
    static void failFrom(std::size_t n);
    // Ends counting and failing. Returns the number of allocations since the start, a failed one included.
    static std::size_t stop();
    // Allocations made since the start and not freed yet.
    static std::ptrdiff_t open();

    static void* allocate(std::size_t size);
    static void release(void* memory) noexcept;
};

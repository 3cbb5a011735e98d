#include "Allocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {
constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

// Plain variables: the tests have one thread.
bool counting = false;
std::size_t made = 0;
std::size_t firstToFail = kNever;
std::ptrdiff_t notFreed = 0;
}  // namespace

void Allocations::count()
{
    failFrom(kNever);
}

void Allocations::failFrom(std::size_t n)
{
    made = 0;
    notFreed = 0;
    firstToFail = n;
    counting = true;
}

std::size_t Allocations::stop()
{
    counting = false;
    return made;
}

std::ptrdiff_t Allocations::open()
{
    return notFreed;
}

void* Allocations::allocate(std::size_t size)
{
    if (counting) {
        ++made;
        if (made >= firstToFail) {
            throw std::bad_alloc();
        }
        ++notFreed;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void Allocations::release(void* memory) noexcept
{
    if (counting && memory != nullptr) {
        --notFreed;
    }
    std::free(memory);
}

void* operator new(std::size_t size)
{
    return Allocations::allocate(size);
}
void* operator new[](std::size_t size)
{
    return Allocations::allocate(size);
}
void operator delete(void* memory) noexcept
{
    Allocations::release(memory);
}
void operator delete[](void* memory) noexcept
{
    Allocations::release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    Allocations::release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    Allocations::release(memory);
}

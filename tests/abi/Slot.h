// The slot of a virtual operation in the table of its class.
#pragma once

#include <cstddef>
#include <cstring>

// The slot named by a pointer to a virtual member. In the Itanium C++ ABI the pointer holds the offset in the table,
// plus one on most processors.
template <class Operation>
std::size_t slotOf(Operation operation)
{
    std::ptrdiff_t words[2];
    static_assert(sizeof(operation) == sizeof(words));
    std::memcpy(words, &operation, sizeof(words));
#if defined(__aarch64__) || defined(__arm__)
    std::ptrdiff_t const offset = words[0];
#else
    std::ptrdiff_t const offset = words[0] - 1;
#endif
    return static_cast<std::size_t>(offset) / sizeof(void*);
}

// An operation added behind those of an interface: its slot is their number.
template <class Interface>
class OneMore : public Interface
{
public:
    virtual void oneMore() = 0;

protected:
    ~OneMore() = default;
};

template <class Interface>
std::size_t slotCountOf()
{
    return slotOf(&OneMore<Interface>::oneMore);
}

// The source of every choice of a run: the same seed gives the same choices on every machine.
#pragma once

#include <cstddef>
#include <cstdint>

class Random
{
public:
    explicit Random(std::uint64_t seed)
        : state_(seed)
    {}

    std::uint64_t next()
    {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }
    // From 0 to `limit` - 1.
    int below(int limit) { return static_cast<int>(next() % static_cast<std::uint64_t>(limit)); }
    int between(int smallest, int largest) { return smallest + below(largest - smallest + 1); }
    bool oneIn(int count) { return below(count) == 0; }
    bool coin() { return oneIn(2); }
    template <class List>
    auto const& oneOf(List const& list)
    {
        return list[static_cast<std::size_t>(below(static_cast<int>(list.size())))];
    }

private:
    std::uint64_t state_;
};

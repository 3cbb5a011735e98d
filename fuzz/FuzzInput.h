// Takes values out of the bytes that a fuzzer passes to a target. Beyond the end, every value is zero or empty.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

class FuzzInput
{
public:
    FuzzInput(std::uint8_t const* data, std::size_t size)
        : rest_(reinterpret_cast<char const*>(data), size)
    {}

    bool isEmpty() const { return rest_.empty(); }
    int byte()
    {
        if (rest_.empty()) {
            return 0;
        }
        auto const value = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return value;
    }
    int below(int limit) { return byte() % limit; }
    bool flag() { return (byte() & 1) != 0; }
    int number()
    {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8U | static_cast<std::uint32_t>(byte());
        }
        return static_cast<int>(value);
    }
    // A text whose length is the next byte.
    std::string text()
    {
        auto const size = std::min<std::size_t>(static_cast<std::size_t>(byte()), rest_.size());
        std::string taken(rest_.substr(0, size));
        rest_.remove_prefix(size);
        return taken;
    }
    std::string rest()
    {
        std::string taken(rest_);
        rest_ = {};
        return taken;
    }

private:
    std::string_view rest_;
};

// Reports a fault and ends the process, so that the fuzzer keeps the input.
[[noreturn]] inline void complain(std::string const& what)
{
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

inline void require(bool holds, char const* what)
{
    if (!holds) {
        complain(what);
    }
}

inline void requireEqual(std::string const& actual, std::string const& expected, std::string const& what)
{
    if (actual != expected) {
        complain(what + ": is \"" + actual + "\", expected \"" + expected + "\"");
    }
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

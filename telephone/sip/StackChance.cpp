// Replacements for the stack's random numbers, of which it makes tags, branches, Call-IDs and nonces: in virtual time
// they come from the seed. In real time they hand on to the stack's own.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "telephone/sip/Stack.h"
#include "telephone/sip/StackFunction.h"
#include "telephone/time/VirtualTime.h"

using telephone::sip::stackFunction;

std::uint64_t rand_u64()
{
    static auto* const next = stackFunction<decltype(rand_u64)>("rand_u64");
    return telephone::isVirtual() ? telephone::randomNumber() : next();
}

std::uint32_t rand_u32()
{
    static auto* const next = stackFunction<decltype(rand_u32)>("rand_u32");
    return telephone::isVirtual() ? static_cast<std::uint32_t>(telephone::randomNumber()) : next();
}

std::uint16_t rand_u16()
{
    return static_cast<std::uint16_t>(rand_u32());
}

char rand_char()
{
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    return kLetters[rand_u32() % kLetters.size()];
}

void rand_str(char* text, std::size_t size)
{
    if (size == 0) {
        return;
    }
    for (; size > 1; --size) {
        *text++ = rand_char();
    }
    *text = '\0';
}

void rand_bytes(std::uint8_t* bytes, std::size_t size)
{
    static auto* const next = stackFunction<decltype(rand_bytes)>("rand_bytes");
    if (!telephone::isVirtual()) {
        return next(bytes, size);
    }
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(telephone::randomNumber());
    }
}

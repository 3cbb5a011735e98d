// Writes texts made of elements, <Tag>value</Tag> one after another: the events and some answers.
//
// Each element knows the most room it can take, so a text is written through a plain pointer into one string of that
// size: at most one allocation, no growth, no locale. Views must outlive the call of `join`.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace elements {
// Most values are empty or short, and calling memcpy for them costs a quarter of an event. A text of kHalf to twice as
// many characters is covered by its first and its last kHalf characters.
template <std::size_t kHalf = 16>
[[gnu::always_inline]] inline void copyShort(char* out, std::string_view text)
{
    if constexpr (kHalf == 2) {
        std::memcpy(out, text.data(), text.size());
    } else if (text.size() < kHalf) {
        copyShort<kHalf / 2>(out, text);
    } else {
        std::size_t const back = text.size() - kHalf;
        std::memcpy(out, text.data(), kHalf);
        std::memcpy(out + back, text.data() + back, kHalf);
    }
}

[[gnu::always_inline]] inline char* put(char* out, std::string_view text)
{
    if (text.empty()) {
        return out;
    }
    if (text.size() > 32) {
        std::memcpy(out, text.data(), text.size());
    } else {
        copyShort(out, text);
    }
    return out + text.size();
}

// Copies a literal character by character: the compiler merges neighbouring literals into a few wide stores.
template <std::size_t kSize, std::size_t... kIndex>
[[gnu::always_inline]] inline char* putEach(char* out, char const (&literal)[kSize], std::index_sequence<kIndex...>)
{
    ((out[kIndex] = literal[kIndex]), ...);
    return out + sizeof...(kIndex);
}
template <std::size_t kSize>
[[gnu::always_inline]] inline char* put(char* out, char const (&literal)[kSize])
{
    return putEach(out, literal, std::make_index_sequence<kSize - 1>());
}

constexpr std::size_t room(std::string_view text)
{
    return text.size();
}
inline char* write(char* out, std::string_view text)
{
    return put(out, text);
}

constexpr std::size_t kDigitsOfInteger = 11;  // with its sign

constexpr std::size_t room(int)
{
    return kDigitsOfInteger;
}
inline char* write(char* out, int value)
{
    // Nearly every enumerator has one digit.
    if (static_cast<unsigned int>(value) < 10U) {
        *out = static_cast<char>('0' + value);
        return out + 1;
    }
    return std::to_chars(out, out + kDigitsOfInteger, value).ptr;
}

constexpr std::size_t room(unsigned int)
{
    return kDigitsOfInteger;
}
inline char* write(char* out, unsigned int value)
{
    return std::to_chars(out, out + kDigitsOfInteger, value).ptr;
}

constexpr std::size_t room(bool)
{
    return 1;
}
inline char* write(char* out, bool value)
{
    *out = value ? '1' : '0';
    return out + 1;
}

// <Tag>value</Tag>
template <std::size_t kTagSize, typename Value>
struct Element
{
    char const (&tag)[kTagSize];
    Value value;

    std::size_t room() const { return 2 * (kTagSize - 1) + sizeof("<></>") - 1 + elements::room(value); }

    [[gnu::always_inline]] char* write(char* out) const
    {
        out = put(put(put(out, "<"), tag), ">");
        out = elements::write(out, value);
        return put(put(put(out, "</"), tag), ">");
    }
};

// A text without tags of its own.
struct Body
{
    std::string_view text;

    std::size_t room() const { return elements::room(text); }
    char* write(char* out) const { return put(out, text); }
};

// <Method>Name</Method>
template <std::size_t kNameSize>
constexpr Element<sizeof("Method"), std::string_view> method(char const (&name)[kNameSize])
{
    return {"Method", std::string_view(name, kNameSize - 1)};
}

template <std::size_t kTagSize>
constexpr Element<kTagSize, std::string_view> element(char const (&tag)[kTagSize], std::string_view value)
{
    return {tag, value};
}
template <std::size_t kTagSize>
constexpr Element<kTagSize, int> element(char const (&tag)[kTagSize], int value)
{
    return {tag, value};
}
template <std::size_t kTagSize>
constexpr Element<kTagSize, unsigned int> element(char const (&tag)[kTagSize], unsigned int value)
{
    return {tag, value};
}
template <std::size_t kTagSize>
constexpr Element<kTagSize, bool> element(char const (&tag)[kTagSize], bool value)
{
    return {tag, value};
}
// A pointer would silently convert to a flag.
template <std::size_t kTagSize>
void element(char const (&tag)[kTagSize], void const* value) = delete;

// Joins the pieces into one text. Always inlined, so that the tags become constants in the code of each text: a fifth
// faster.
template <typename... Pieces>
[[gnu::always_inline]] inline std::string join(Pieces const&... pieces)
{
    std::string text((pieces.room() + ...), '\0');
    char* out = text.data();
    ((out = pieces.write(out)), ...);
    text.resize(static_cast<std::size_t>(out - text.data()));
    return text;
}
}  // namespace elements

#include "telephone/display/SafeText.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

#include <spdlog/fmt/fmt.h>

namespace telephone {

namespace {

struct CodePoint
{
    char32_t value;
    std::size_t length;  // in bytes
    bool isValid;        // false: one byte that is not UTF-8
};

struct CodeRange
{
    char32_t first;
    char32_t last;

    bool operator==(CodeRange const&) const = default;
};

// Characters that control, change the direction of text, or cannot be seen.
constexpr CodeRange kHarmful[] = {
    {0x80, 0x9f},     {0xad, 0xad},       {0x34f, 0x34f},     {0x61c, 0x61c},      {0x115f, 0x1160},
    {0x17b4, 0x17b5}, {0x180b, 0x180f},   {0x200b, 0x200f},   {0x2028, 0x202e},    {0x2060, 0x206f},
    {0x3164, 0x3164}, {0xfe00, 0xfe0f},   {0xfeff, 0xfeff},   {0xffa0, 0xffa0},    {0xfff9, 0xfffb},
    {0xfffe, 0xffff}, {0x1d173, 0x1d17a}, {0xe0000, 0xe0fff}, {0xf0000, 0x10ffff},
};
constexpr CodeRange kBlanks[] = {
    {0x20, 0x20},     {0xa0, 0xa0},     {0x1680, 0x1680}, {0x2000, 0x200a},
    {0x202f, 0x202f}, {0x205f, 0x205f}, {0x2800, 0x2800}, {0x3000, 0x3000},
};
constexpr CodeRange kWithoutWidth[] = {
    {0x300, 0x36f},   {0x483, 0x489},   {0x591, 0x5bd},   {0x610, 0x61a},   {0x64b, 0x65f},   {0x900, 0x902},
    {0x93c, 0x93c},   {0x941, 0x948},   {0xe31, 0xe31},   {0xe34, 0xe3a},   {0xe47, 0xe4e},   {0x1ab0, 0x1aff},
    {0x1dc0, 0x1dff}, {0x20d0, 0x20ff}, {0x302a, 0x302d}, {0x3099, 0x309a}, {0xfe20, 0xfe2f},
};
constexpr CodeRange kWide[] = {
    {0x1100, 0x115e},   {0x2e80, 0x3029},   {0x302e, 0x303e},   {0x3041, 0x3098},   {0x309b, 0x4dbf}, {0x4e00, 0xa4cf},
    {0xa960, 0xa97c},   {0xac00, 0xd7a3},   {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60}, {0xffe0, 0xffe6},
    {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd},
};

bool isOneOf(std::span<CodeRange const> ranges, char32_t value)
{
    return std::any_of(ranges.begin(), ranges.end(),
                       [value](CodeRange const& range) { return value >= range.first && value <= range.last; });
}

constexpr CodePoint kNotUtf8{0, 1, false};

// The bytes that follow the first byte of a character; 4 if none can begin with it.
std::size_t followersOf(unsigned char first)
{
    return first < 0x80 ? 0 : first < 0xc2 ? 4 : first < 0xe0 ? 1 : first < 0xf0 ? 2 : first < 0xf5 ? 3 : 4;
}

CodePoint firstCodePoint(std::string_view text)
{
    constexpr std::array<unsigned char, 4> kFirstBits{0x7f, 0x1f, 0x0f, 0x07};
    constexpr std::array<char32_t, 4> kSmallest{0, 0x80, 0x800, 0x10000};
    auto const first = static_cast<unsigned char>(text.front());
    std::size_t const followers = followersOf(first);
    if (followers >= kFirstBits.size() || text.size() <= followers) {
        return kNotUtf8;
    }
    char32_t value = first & kFirstBits[followers];
    for (std::size_t index = 1; index <= followers; ++index) {
        auto const byte = static_cast<unsigned char>(text[index]);
        if ((byte & 0xc0U) != 0x80U) {
            return kNotUtf8;
        }
        value = (value << 6U) | (byte & 0x3fU);
    }
    bool const isSurrogate = value >= 0xd800 && value <= 0xdfff;
    bool const isValid = value >= kSmallest[followers] && value <= 0x10ffff && !isSurrogate;
    return isValid ? CodePoint{value, followers + 1, true} : kNotUtf8;
}

// How a character is written that must not stand as it is.
std::string escape(CodePoint const& point, std::string_view text)
{
    bool const isByte = !point.isValid || point.value < 0x80;
    return isByte ? fmt::format("\\x{:02x}", static_cast<unsigned char>(text.front()))
                  : fmt::format("\\u{{{:x}}}", static_cast<std::uint32_t>(point.value));
}

template <typename MustBeEscaped>
std::string escaped(std::string_view text, MustBeEscaped mustBeEscaped)
{
    std::string result;
    while (!text.empty()) {
        CodePoint const point = firstCodePoint(text);
        bool const isHarmful =
            !point.isValid || point.value < 0x20 || point.value == 0x7f || isOneOf(kHarmful, point.value);
        bool const isEscaped = isHarmful || mustBeEscaped(point.value);
        result += isEscaped ? escape(point, text) : std::string(text.substr(0, point.length));
        text.remove_prefix(point.length);
    }
    return result;
}

std::size_t widthOf(CodePoint const& point)
{
    return isOneOf(kWithoutWidth, point.value) ? 0 : isOneOf(kWide, point.value) ? 2 : 1;
}

}  // namespace

std::string safeText(std::string_view text)
{
    return escaped(text, [](char32_t) { return false; });
}

std::string safeWord(std::string_view text)
{
    return escaped(text, [](char32_t value) { return isOneOf(kBlanks, value); });
}

std::string quotedText(std::string_view text)
{
    std::string marked;
    for (char const each : text) {
        marked.append(each == '"' || each == '\\' ? 1 : 0, '\\') += each;
    }
    return "\"" + safeText(marked) + "\"";
}

std::string asciiText(std::string_view text)
{
    return escaped(text, [](char32_t value) { return value > 0x7e; });
}

std::size_t columnsOf(std::string_view text)
{
    std::size_t columns = 0;
    while (!text.empty()) {
        CodePoint const point = firstCodePoint(text);
        columns += widthOf(point);
        text.remove_prefix(point.length);
    }
    return columns;
}

std::string_view beginningOf(std::string_view text, std::size_t columns)
{
    std::size_t end = 0;
    while (end < text.size()) {
        CodePoint const point = firstCodePoint(text.substr(end));
        std::size_t const width = widthOf(point);
        if (width > columns) {
            break;
        }
        columns -= width;
        end += point.length;
    }
    return text.substr(0, end);
}

}  // namespace telephone

#include "RequestText.h"

namespace {
// Texts are read eight bytes at a time: a request has a "<" every ten bytes or so, too often for a call of memchr each.
constexpr std::size_t kWordSize = sizeof(std::uint64_t);

// The lowest byte is the first one in the text.
std::uint64_t wordAt(char const* text)
{
    std::uint64_t word = 0;
    std::memcpy(&word, text, kWordSize);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    word = __builtin_bswap64(word);
#endif
    return word;
}

// The highest bit of each byte that is the character; the other bits are 0.
template <char kCharacter>
constexpr std::uint64_t bytesEqual(std::uint64_t word)
{
    constexpr std::uint64_t kEach = 0x0101010101010101;
    constexpr std::uint64_t kLow = kEach * 0x7F;
    std::uint64_t const difference = word ^ kEach * static_cast<unsigned char>(kCharacter);
    return ~(((difference & kLow) + kLow) | difference | kLow);
}

// The place of the first byte that is marked; of the last one if none is.
std::size_t firstByte(std::uint64_t marks)
{
    constexpr std::uint64_t kLast = std::uint64_t{1} << 63U;
    return static_cast<std::size_t>(__builtin_ctzll(marks | kLast)) / 8;
}
}  // namespace

// The array is left uninitialised: only its first count_ elements are ever read.
RequestText::RequestText(std::string_view text)  // NOLINT(cppcoreguidelines-pro-type-member-init)
    : text_(text)
{
    std::size_t place = 0;
    for (; place + kWordSize <= text_.size() && count_ <= kMaximumPlaces - kWordSize; place += kWordSize) {
        std::uint64_t marks = bytesEqual<'<'>(wordAt(text_.data() + place));
        // Nearly always there are none or one: without a branch that would be guessed wrongly every other time.
        places_[count_] = static_cast<std::uint32_t>(place + firstByte(marks));
        count_ += static_cast<std::size_t>(marks != 0);
        while ((marks &= marks - 1) != 0) {
            places_[count_++] = static_cast<std::uint32_t>(place + firstByte(marks));
        }
    }
    for (; place < text_.size() && count_ < kMaximumPlaces; ++place) {
        if (text_[place] == '<') {
            places_[count_++] = static_cast<std::uint32_t>(place);
        }
    }
    allPlacesKnown_ = text_.find('<', place) == std::string_view::npos;
}

std::optional<std::string_view> RequestText::search(std::string_view name) const
{
    std::string const opening = std::string("<").append(name).append(">");
    std::string const closing = std::string("</").append(name).append(">");
    return tagged_text::valueBetween(opening, text_, closing);
}

// The text of one request as the handlers read it: values by the name of their element. The invoker makes one for each
// request; it refers to the caller's text and must not outlive it.
//
// A parameter is looked for a few times in a row, so the places of all "<" are found once. A text with more of them
// than a request of ours can have is searched from its beginning each time, with the same result.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "TaggedText.h"

class RequestText
{
public:
    static constexpr int kMissingInteger = -1;

    explicit RequestText(std::string_view text);

    std::string_view whole() const { return text_; }

    // What stands between the first opening tag of that name and the first closing tag after it, if both are there.
    template <std::size_t kSize>
    std::optional<std::string_view> value(char const (&name)[kSize]) const;

    // Missing: the empty text.
    template <std::size_t kSize>
    std::string text(char const (&name)[kSize]) const
    {
        return std::string(value(name).value_or(std::string_view()));
    }
    // Missing: kMissingInteger.
    template <std::size_t kSize>
    int integer(char const (&name)[kSize]) const
    {
        auto const found = value(name);
        return found ? tagged_text::decimal(*found) : kMissingInteger;
    }
    // Everything but 0 is true, and so a missing one is too.
    template <std::size_t kSize>
    bool flag(char const (&name)[kSize]) const
    {
        return integer(name) != 0;
    }
    // True for "TRUE" alone.
    template <std::size_t kSize>
    bool word(char const (&name)[kSize]) const
    {
        return value(name) == std::string_view("TRUE");
    }

private:
    static constexpr std::size_t kMaximumPlaces = 32;

    std::optional<std::string_view> search(std::string_view name) const;

    std::string_view text_;
    std::array<std::uint32_t, kMaximumPlaces> places_;  // of every "<", in order; the first count_ are set
    std::size_t count_ = 0;
    bool allPlacesKnown_ = false;
};

// The size of the name is part of the type, so that a comparison is a few instructions and no call.
template <std::size_t kSize>
std::optional<std::string_view> RequestText::value(char const (&name)[kSize]) const
{
    constexpr std::size_t kLength = kSize - 1;
    auto const isAt = [&](std::size_t place) {
        return text_.size() > place + kLength && text_[place + kLength] == '>' &&
               std::memcmp(text_.data() + place, name, kLength) == 0;
    };
    if (!allPlacesKnown_) {
        return search(name);
    }
    std::size_t index = 0;
    while (index < count_ && !isAt(places_[index] + 1)) {
        ++index;
    }
    if (index == count_) {
        return std::nullopt;
    }
    // A name of ours holds no "<", so every later place lies behind the opening tag.
    std::size_t const start = places_[index] + kLength + 2;
    for (++index; index < count_; ++index) {
        std::size_t const end = places_[index];
        if (isAt(end + 2) && text_[end + 1] == '/') {
            return text_.substr(start, end - start);
        }
    }
    return std::nullopt;
}

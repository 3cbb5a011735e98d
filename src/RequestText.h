// The text of one request, from which the handlers read values by the names of their elements. The invoker creates one
// for each request; it refers to the caller's text and must not outlive it.
//
// A request has several parameters, so the places of all "<" are found once. A text with more of them than any known
// request is searched from its beginning each time, with the same result.
#pragma once

#include <algorithm>
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

    // The text between the first opening tag of that name and the first closing tag after it, if both exist. A name
    // contains neither "<" nor ">". Its size is part of the type, so that a comparison is a few instructions instead of
    // a call: this saves a sixth of a request.
    template <std::size_t kSize>
    std::optional<std::string_view> value(char const (&name)[kSize]) const;

    // Empty when the element is missing.
    template <std::size_t kSize>
    std::string text(char const (&name)[kSize]) const
    {
        return std::string(value(name).value_or(std::string_view()));
    }
    // kMissingInteger when the element is missing.
    template <std::size_t kSize>
    int integer(char const (&name)[kSize]) const
    {
        auto const found = value(name);
        return found ? tagged_text::decimal(*found) : kMissingInteger;
    }
    // Everything but 0 is true, and so is a missing element.
    template <std::size_t kSize>
    bool flag(char const (&name)[kSize]) const
    {
        return integer(name) != 0;
    }
    // True only for "TRUE".
    template <std::size_t kSize>
    bool word(char const (&name)[kSize]) const
    {
        return value(name) == std::string_view("TRUE");
    }

private:
    static constexpr std::size_t kMaximumPlaces = 32;

    template <std::size_t kSize>
    bool isAt(std::size_t place, char const (&name)[kSize]) const;
    std::optional<std::string_view> search(std::string_view name) const;

    std::string_view text_;
    std::array<std::uint32_t, kMaximumPlaces> places_;  // of all "<", in order; the first count_ are set
    std::size_t count_ = 0;
    bool allPlacesKnown_ = false;
};

// Whether a place holds the name and ">". Most places already fail at the ">".
template <std::size_t kSize>
bool RequestText::isAt(std::size_t place, char const (&name)[kSize]) const
{
    std::size_t const end = place + kSize - 1;
    return end < text_.size() && text_[end] == '>' && std::memcmp(text_.data() + place, name, kSize - 1) == 0;
}

template <std::size_t kSize>
std::optional<std::string_view> RequestText::value(char const (&name)[kSize]) const
{
    if (!allPlacesKnown_) {
        return search(name);
    }
    std::uint32_t const* const last = places_.data() + count_;
    std::uint32_t const* const opening =
        std::find_if(places_.data(), last, [&](std::size_t place) { return isAt(place + 1, name); });
    if (opening == last) {
        return std::nullopt;
    }
    // Every later place lies behind the opening tag.
    std::uint32_t const* const closing = std::find_if(
        opening + 1, last, [&](std::size_t place) { return isAt(place + 2, name) && text_[place + 1] == '/'; });
    if (closing == last) {
        return std::nullopt;
    }
    std::size_t const start = *opening + kSize + 1;
    return text_.substr(start, *closing - start);
}

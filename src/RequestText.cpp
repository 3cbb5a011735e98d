#include "RequestText.h"

#include <cstring>

#include "TaggedText.h"

// The array is left as it is: only its first count_ elements are ever read.
RequestText::RequestText(std::string_view text)  // NOLINT(cppcoreguidelines-pro-type-member-init)
    : text_(text)
{
    auto place = text_.find('<');
    while (place != std::string_view::npos && count_ < kMaximumPlaces) {
        places_[count_] = static_cast<std::uint32_t>(place);
        ++count_;
        place = text_.find('<', place + 1);
    }
    allPlacesKnown_ = place == std::string_view::npos;
}

// Whether the name and ">" stand at a place. Most places fail at the ">" already.
inline bool RequestText::isAt(std::size_t place, std::string_view name) const
{
    std::size_t const end = place + name.size();
    return end < text_.size() && text_[end] == '>' && text_[place] == name.front() &&
           std::memcmp(name.data(), text_.data() + place, name.size()) == 0;
}

std::optional<std::string_view> RequestText::value(std::string_view name) const
{
    if (!allPlacesKnown_) {
        return search(name);
    }
    std::size_t index = 0;
    while (index < count_ && !isAt(places_[index] + 1, name)) {
        ++index;
    }
    if (index == count_) {
        return std::nullopt;
    }
    // Every later place lies behind the opening tag.
    std::size_t const start = places_[index] + name.size() + 2;
    for (++index; index < count_; ++index) {
        std::size_t const end = places_[index];
        if (isAt(end + 2, name) && text_[end + 1] == '/') {
            return text_.substr(start, end - start);
        }
    }
    return std::nullopt;
}

std::optional<std::string_view> RequestText::search(std::string_view name) const
{
    std::string const opening = std::string("<").append(name).append(">");
    std::string const closing = std::string("</").append(name).append(">");
    return tagged_text::valueBetween(opening, text_, closing);
}

std::string RequestText::text(std::string_view name) const
{
    return std::string(value(name).value_or(std::string_view()));
}

int RequestText::integer(std::string_view name) const
{
    auto const found = value(name);
    return found ? tagged_text::decimal(*found) : kMissingInteger;
}

bool RequestText::flag(std::string_view name) const
{
    return integer(name) != 0;
}

bool RequestText::word(std::string_view name) const
{
    return value(name) == std::string_view("TRUE");
}

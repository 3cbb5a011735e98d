#include "RequestText.h"

// The array is left uninitialised: only its first count_ elements are ever read.
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

std::optional<std::string_view> RequestText::search(std::string_view name) const
{
    std::string const opening = std::string("<").append(name).append(">");
    std::string const closing = std::string("</").append(name).append(">");
    return tagged_text::valueBetween(opening, text_, closing);
}

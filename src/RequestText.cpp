#include "RequestText.h"

#include "TaggedText.h"

namespace {
std::string openingTag(std::string_view name)
{
    return std::string("<").append(name).append(">");
}

std::string closingTag(std::string_view name)
{
    return std::string("</").append(name).append(">");
}
}  // namespace

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

// Whether `name` and ">" stand at a place.
bool RequestText::nameAt(std::size_t place, std::string_view name) const
{
    auto const rest = text_.substr(place);
    return rest.size() > name.size() && rest[name.size()] == '>' && rest.substr(0, name.size()) == name;
}

std::optional<std::string_view> RequestText::value(std::string_view name) const
{
    if (!allPlacesKnown_) {
        return tagged_text::valueBetween(openingTag(name), text_, closingTag(name));
    }
    std::size_t index = 0;
    while (index < count_ && !nameAt(places_[index] + 1, name)) {
        ++index;
    }
    if (index == count_) {
        return std::nullopt;
    }
    std::size_t const start = places_[index] + name.size() + 2;
    for (++index; index < count_; ++index) {
        std::size_t const end = places_[index];
        // A name of ours holds no "<", so every later place lies behind the opening tag.
        if (text_.substr(end + 1, 1) == "/" && nameAt(end + 2, name)) {
            return text_.substr(start, end - start);
        }
    }
    return std::nullopt;
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

sfiServiceState RequestText::serviceState(std::string_view name) const
{
    return tagged_text::serviceStateBetween(openingTag(name), text_, closingTag(name));
}

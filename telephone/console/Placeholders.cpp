#include "telephone/console/Placeholders.h"

#include <algorithm>
#include <cctype>

namespace telephone {

namespace {

struct Placeholder
{
    std::size_t start;
    std::size_t size;  // with the braces

    std::string_view tag(std::string_view text) const { return text.substr(start + 1, size - 2); }
};

bool isTag(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char letter) {
        return std::isalnum(letter) != 0 || letter == '_';
    });
}

// The first placeholder at or after `from`.
std::optional<Placeholder> findPlaceholder(std::string_view text, std::size_t from)
{
    for (auto start = text.find('{', from); start != std::string_view::npos; start = text.find('{', start + 1)) {
        auto const end = text.find('}', start);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        if (isTag(text.substr(start + 1, end - start - 1))) {
            return Placeholder{start, end - start + 1};
        }
    }
    return std::nullopt;
}

}  // namespace

bool hasPlaceholder(std::string_view text)
{
    return findPlaceholder(text, 0).has_value();
}

Outcome<std::string> replacePlaceholders(std::string text, PlaceholderValues const& values)
{
    std::size_t from = 0;
    while (auto const found = findPlaceholder(text, from)) {
        std::string const tag(found->tag(text));
        auto const value = values(tag);
        if (!value) {
            return refuse(RefusalKind::kWrongState, "no earlier wait took an event with an element " + tag);
        }
        text.replace(found->start, found->size, *value);
        from = found->start + value->size();
    }
    return text;
}

}  // namespace telephone

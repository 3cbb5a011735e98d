#include "telephone/testing/Seeds.h"

#include <charconv>
#include <optional>
#include <string_view>

#include <spdlog/fmt/fmt.h>

namespace telephone {

namespace {

constexpr std::uint64_t kMostSeeds = 1000000;

std::optional<std::uint64_t> seedOf(std::string_view text)
{
    std::uint64_t seed = 0;
    auto const [rest, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
    bool const isWhole = error == std::errc() && rest == text.data() + text.size();
    return isWhole ? std::optional(seed) : std::nullopt;
}

}  // namespace

Outcome<Seeds> Seeds::parse(std::string const& text)
{
    auto const dash = text.find('-');
    auto const first = seedOf(std::string_view(text).substr(0, dash));
    auto const last = dash == std::string::npos ? first : seedOf(std::string_view(text).substr(dash + 1));
    if (!first || !last) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is not a range of seeds, such as 1-1000", text));
    }
    if (*last < *first) {
        return refuse(RefusalKind::kBadInput, fmt::format("the range of seeds {} runs backwards", text));
    }
    if (*last - *first >= kMostSeeds) {
        return refuse(RefusalKind::kBadInput, fmt::format("{} is more than {} seeds", text, kMostSeeds));
    }
    return Seeds{*first, *last};
}

std::string Seeds::text() const
{
    return first == last ? std::to_string(first) : fmt::format("{}-{}", first, last);
}

}  // namespace telephone

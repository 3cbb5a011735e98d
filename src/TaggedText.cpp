#include "TaggedText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "CommunicationsServiceRequests.h"

namespace tagged_text {
namespace {
bool isBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}
}  // namespace

std::optional<std::string_view> valueBetween(std::string_view opening, std::string_view message,
                                             std::string_view closing)
{
    auto const found = message.find(opening);
    if (found == std::string_view::npos) {
        return std::nullopt;
    }
    auto const start = found + opening.size();
    auto const end = message.find(closing, start);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    return message.substr(start, end - start);
}

int decimal(std::string_view value)
{
    constexpr std::int64_t kSmallest = std::numeric_limits<int>::min();
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();

    auto const* next = value.begin();
    auto const* const end = value.end();
    while (next != end && isBlank(*next)) {
        ++next;
    }
    std::int64_t const sign = next != end && *next == '-' ? -1 : 1;
    if (next != end && (*next == '-' || *next == '+')) {
        ++next;
    }
    std::int64_t number = 0;
    for (; next != end && isDigit(*next); ++next) {
        number = std::clamp(number * 10 + sign * (*next - '0'), kSmallest, kLargest);
    }
    return static_cast<int>(number);
}

sfiServiceState serviceStateBetween(std::string_view opening, std::string_view message, std::string_view closing)
{
    auto const found = message.find(opening);
    if (found == std::string_view::npos) {
        return sfiServiceOutOfService;
    }
    auto const start = found + opening.size();
    // Unsigned: with a closing tag before the value, or none, the count wraps around and reaches beyond the end.
    auto const value = message.substr(start, message.find(closing) - start);
    auto const* const word = std::find(std::begin(kRequestServiceStates), std::end(kRequestServiceStates), value);
    if (word == std::end(kRequestServiceStates)) {
        return sfiServiceOutOfService;
    }
    return static_cast<sfiServiceState>(word - std::begin(kRequestServiceStates));
}
}  // namespace tagged_text

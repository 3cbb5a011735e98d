#include "RequestFloor.h"

#include <charconv>
#include <cstring>

namespace {

// One pass: the values of the elements in the order of the text.
int findElements(char const* message, std::size_t length, std::string_view* values)
{
    char const* const end = message + length;
    int count = 0;
    for (char const* at = message; at < end && count < FloorTarget::kMaximum + 1;) {
        auto const* const value = static_cast<char const*>(std::memchr(at, '>', static_cast<std::size_t>(end - at)));
        if (value == nullptr) {
            break;
        }
        auto const* const close =
            static_cast<char const*>(std::memchr(value, '<', static_cast<std::size_t>(end - value)));
        if (close == nullptr) {
            break;
        }
        values[count++] = {value + 1, static_cast<std::size_t>(close - value - 1)};
        at = close + (value - at) + 2;  // the length of the opening tag, plus the slash
    }
    return count;
}

}  // namespace

void answerAtLeastCost(FloorTarget& target, char const* message, std::string_view expected, bool const* isNumber,
                       InvokerResponse& response)
{
    std::string_view values[FloorTarget::kMaximum + 1];
    auto const count = findElements(message, std::strlen(message), values);
    int numbers[FloorTarget::kMaximum];
    for (int i = 1; i < count; ++i) {
        if (isNumber[i - 1]) {
            std::from_chars(values[i].data(), values[i].data() + values[i].size(), numbers[i - 1]);
        }
    }
    bool const known = count > 0 && values[0] == expected;
    if (known && target.call(values + 1, numbers, count - 1) == 5) {
        response.sendResponse("sfiSuccess", 10);
    } else {
        response.sendResponse("sfiFailure", 10);
    }
    response.finish();
}

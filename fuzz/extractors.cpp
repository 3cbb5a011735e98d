// Compares each tag extractor with a second implementation, slow and plain.
#include <climits>
#include <optional>

#include "FuzzInput.h"
#include "src/CommunicationsServiceInvoker.h"
#include "src/RequestText.h"

namespace {
bool standsAt(std::string const& text, std::size_t place, std::string const& part)
{
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (place + i >= text.size() || text[place + i] != part[i]) {
            return false;
        }
    }
    return place + part.size() <= text.size();
}

std::optional<std::size_t> firstPlace(std::string const& text, std::string const& part, std::size_t from)
{
    for (std::size_t place = from; place <= text.size(); ++place) {
        if (standsAt(text, place, part)) {
            return place;
        }
    }
    return std::nullopt;
}

std::optional<std::string> plainValue(std::string const& opening, std::string const& message,
                                      std::string const& closing)
{
    auto const found = firstPlace(message, opening, 0);
    if (!found) {
        return std::nullopt;
    }
    auto const start = *found + opening.size();
    auto const end = firstPlace(message, closing, start);
    return end ? std::optional(std::string(message, start, *end - start)) : std::nullopt;
}

int plainNumber(std::optional<std::string> const& value)
{
    if (!value) {
        return -1;
    }
    long const number = std::strtol(value->c_str(), nullptr, 10);
    return number > INT_MAX ? INT_MAX : number < INT_MIN ? INT_MIN : static_cast<int>(number);
}

int plainState(std::string const& opening, std::string const& message, std::string const& closing)
{
    auto const found = firstPlace(message, opening, 0);
    if (!found) {
        return 1;
    }
    auto const start = *found + opening.size();
    auto const end = firstPlace(message, closing, 0);
    auto const value = end && *end >= start ? std::string(message, start, *end - start) : std::string(message, start);
    return value == "sfiServiceInService" ? 0 : value == "sfiServiceDoNotDisturb" ? 2 : 1;
}

// The handlers' lookup by name returns what the extractors return.
template <std::size_t kSize>
void compareByName(std::string const& message, char const (&name)[kSize])
{
    auto const opening = std::string("<") + name + ">";
    auto const closing = std::string("</") + name + ">";
    auto const expected = plainValue(opening, message, closing);
    RequestText const request(message);
    requireEqual(request.text(name), expected.value_or(""), opening);
    requireEqual(std::to_string(request.integer(name)), std::to_string(plainNumber(expected)),
                 opening + " as a number");
    require(request.flag(name) == (plainNumber(expected) != 0), "a flag");
    require(request.word(name) == (expected == std::optional<std::string>("TRUE")), "a word");
}
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    using Extractors = CommunicationsServiceInvoker;
    FuzzInput input(data, size);
    bool const own = input.flag();
    auto const opening = own ? input.text() : std::string("<state>");
    auto const closing = own ? input.text() : std::string("</state>");
    auto const message = input.rest();

    auto const expected = plainValue(opening, message, closing);
    requireEqual(Extractors::getParamAsString(opening, message, closing), expected.value_or(""), "as a text");
    requireEqual(std::to_string(Extractors::getParamAsLong(opening, message, closing)),
                 std::to_string(plainNumber(expected)), "as a number");
    requireEqual(std::to_string(Extractors::getParamAsServiceState(opening, message, closing)),
                 std::to_string(plainState(opening, message, closing)), "as a service state");
    compareByName(message, "Line");
    compareByName(message, "state");
    compareByName(message, "C");
    return 0;
}

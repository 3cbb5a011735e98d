// Compares the reader of key=value texts with one written with the C functions that it replaces.
#include <climits>
#include <cstring>

#include "FuzzInput.h"
#include "ParamaterExtractor.h"

namespace {
// The value of the first token that holds "key=", with as many characters cut from its front.
bool plainValue(std::string const& text, std::string const& key, std::string& value)
{
    if (key.empty() || text.empty()) {
        return false;
    }
    std::string copy = text;
    char* rest = nullptr;
    for (char* token = strtok_r(copy.data(), ":", &rest); token != nullptr; token = strtok_r(nullptr, ":", &rest)) {
        if (std::strstr(token, (key + "=").c_str()) != nullptr) {
            value = token + key.size() + 1;
            return true;
        }
    }
    return false;
}
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzInput input(data, size);
    std::string const key = input.text().c_str();
    auto const text = input.rest();

    std::string expected;
    bool const found = plainValue(text.c_str(), key, expected);
    long const number = found ? std::strtol(expected.c_str(), nullptr, 10) : 0;
    long const clamped = number > INT_MAX ? INT_MAX : number < INT_MIN ? INT_MIN : number;

    ParamaterExtractor const extractor(text);
    requireEqual(extractor.getParamaterAsString(key), expected, "as a text");
    requireEqual(std::to_string(extractor.getParamaterAsLong(key)), std::to_string(clamped), "as a number");
    return 0;
}

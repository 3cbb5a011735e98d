#include "telephone/services/DigitAnalysis.h"

#include <algorithm>

namespace telephone {

namespace {

// The dialled number without scheme, host, parameters and separators.
std::string digitsOf(std::string_view number)
{
    for (std::string_view const scheme : {"sip:", "sips:", "tel:"}) {
        if (number.starts_with(scheme)) {
            number.remove_prefix(scheme.size());
            break;
        }
    }
    number = number.substr(0, number.find_first_of("@;"));
    std::string digits(number);
    std::erase_if(digits, [](char c) { return std::string_view("-.() ").find(c) != std::string_view::npos; });
    return digits;
}

// A star at the end of a pattern stands for any digits. The pattern "*" matches every number.
bool matches(std::string const& digits, std::string_view pattern)
{
    if (pattern.ends_with('*') && pattern.size() > 1) {
        return digits.starts_with(pattern.substr(0, pattern.size() - 1));
    }
    return pattern == "*" ? !digits.empty() : digits == digitsOf(pattern);
}

bool isAmong(std::string const& number, std::vector<std::string> const& patterns)
{
    auto const digits = digitsOf(number);
    return std::any_of(patterns.begin(), patterns.end(),
                       [&digits](auto const& pattern) { return matches(digits, pattern); });
}

}  // namespace

DigitAnalysis::DigitAnalysis(CallConfiguration const& calls)
    : permitted_(calls.permittedNumbers)
    , emergency_(calls.emergencyNumbers)
{}

bool DigitAnalysis::isPermittedNumber(std::string const& number)
{
    return isPermittedNumberInContext(number, 0);
}

bool DigitAnalysis::isPermittedNumberInContext(std::string const& number, int context)
{
    return isAmong(number, emergency_) || (context == 0 && isAmong(number, permitted_));
}

void DigitAnalysis::queryNumberFlag(std::string const& number, std::string& answer)
{
    answer = isAmong(number, emergency_) ? "true" : "false";
}

}  // namespace telephone

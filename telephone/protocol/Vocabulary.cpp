#include "telephone/protocol/Vocabulary.h"

#include <algorithm>
#include <charconv>

#include "telephone/base/Names.h"

namespace telephone {

namespace {

std::string withoutSeparators(std::string_view text)
{
    std::string letters(text);
    std::erase_if(letters, [](char letter) { return letter == ' ' || letter == '-' || letter == '_'; });
    return letters;
}

EnumerationValue const* valueIn(Enumeration const& enumeration, std::string_view text)
{
    if (enumeration.isOfWords()) {
        return enumeration.findWord(text);
    }
    auto const* const found = std::find_if(enumeration.begin(), enumeration.end(),
                                           [text](auto const& value) { return value.number == wholeNumber(text); });
    return found != enumeration.end() ? found : nullptr;
}

}  // namespace

std::string nameOfValue(Enumeration const& enumeration, std::string_view value)
{
    EnumerationValue const* const found = valueIn(enumeration, value);
    return found != nullptr ? std::string(found->name) : std::string(value) + "?";
}

std::string nameOfValue(Enumeration const& enumeration, int value)
{
    EnumerationValue const* const found = enumeration.find(value);
    return found != nullptr ? std::string(found->name) : std::to_string(value) + "?";
}

EnumerationValue const* lookUpValue(Enumeration const& enumeration, std::string_view typed)
{
    if (EnumerationValue const* const found = valueIn(enumeration, typed)) {
        return found;
    }
    std::string letters = withoutSeparators(typed);
    if (std::string const prefix = "sfi" + std::string(enumeration.name); beginsIgnoringCase(letters, prefix)) {
        letters.erase(0, prefix.size());
    }
    auto const* const found = std::find_if(enumeration.begin(), enumeration.end(), [&](auto const& value) {
        return equalIgnoringCase(withoutSeparators(value.name), letters) || equalIgnoringCase(value.word, typed);
    });
    return found != enumeration.end() ? found : nullptr;
}

Outcome<EnumerationValue const*> findValue(Enumeration const& enumeration, std::string_view typed)
{
    if (EnumerationValue const* const found = lookUpValue(enumeration, typed)) {
        return found;
    }
    return refuse(RefusalKind::kBadInput, "\"" + std::string(typed) + "\" is not a value of " +
                                              std::string(enumeration.name) +
                                              suggestion(typed, namesOf(enumeration, &EnumerationValue::name)));
}

std::string textOfValue(Enumeration const& enumeration, EnumerationValue const& value)
{
    return enumeration.isOfWords() ? std::string(value.word) : std::to_string(value.number);
}

std::optional<long long> wholeNumber(std::string_view text)
{
    long long number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace telephone

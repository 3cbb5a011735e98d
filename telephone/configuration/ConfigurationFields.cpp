#include "telephone/configuration/ConfigurationFields.h"

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/Choices.h"

namespace telephone {

std::string expectedValues(FieldKind kind, std::string_view choices, int minimum, int maximum)
{
    if (!choices.empty()) {
        return listOfChoices(choices);
    }
    switch (kind) {
    case FieldKind::kFlag:
        return "true or false";
    case FieldKind::kInteger:
        return fmt::format("an integer from {} to {}", minimum, maximum);
    case FieldKind::kText:
    case FieldKind::kTransport:
        break;
    case FieldKind::kTexts:
        return "an array of texts";
    case FieldKind::kTextOrTexts:
        return "a text or an array of texts";
    }
    return "a text";
}

}  // namespace telephone

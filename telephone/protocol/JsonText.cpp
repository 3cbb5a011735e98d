#include "telephone/protocol/JsonText.h"

namespace telephone {

std::string lineOf(Json const& value)
{
    constexpr int kOneLine = -1;
    constexpr bool kAscii = true;
    return value.dump(kOneLine, ' ', kAscii, Json::error_handler_t::replace);
}

Json textOrNull(std::string_view text)
{
    return text.empty() ? Json() : Json(text);
}

}  // namespace telephone

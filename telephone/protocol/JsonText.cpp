#include "telephone/protocol/JsonText.h"

#include <array>
#include <cstdio>

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

std::string timeText(std::chrono::system_clock::time_point time)
{
    using namespace std::chrono;
    auto const moment = floor<milliseconds>(time);
    auto const midnight = floor<days>(moment);
    year_month_day const date(midnight);
    hh_mm_ss const clock(moment - midnight);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    return text.data();
}

}  // namespace telephone

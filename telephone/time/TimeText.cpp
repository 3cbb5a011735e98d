#include "telephone/time/TimeText.h"

#include <array>
#include <cstdio>

namespace telephone {

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

std::optional<std::chrono::system_clock::time_point> readTime(std::string_view text)
{
    using namespace std::chrono;
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int milli = 0;
    int const found = std::sscanf(std::string(text).c_str(), "%4d-%2u-%2uT%2d:%2d:%2d.%3dZ", &year, &month, &day, &hour,
                                  &minute, &second, &milli);
    auto const time =
        sys_days(year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day))) +
        hours(hour) + minutes(minute) + seconds(second) + milliseconds(milli);
    return found == 7 && timeText(time) == text ? std::optional<system_clock::time_point>(time) : std::nullopt;
}

}  // namespace telephone

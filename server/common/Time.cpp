#include "server/common/Time.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace talvenor::server {

TimePoint systemTime()
{
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

std::string isoText(TimePoint moment)
{
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(moment - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                  static_cast<int>(time.subseconds().count()));
    return text.data();
}

TimePoint startOfMonth(TimePoint moment)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::tm first{};
    first.tm_year = local.tm_year;
    first.tm_mon = local.tm_mon;
    first.tm_mday = 1;
    first.tm_isdst = -1; // The month may have begun on the other side of a change of the clocks.
    return TimePoint(std::chrono::seconds(std::mktime(&first)));
}

} // namespace talvenor::server

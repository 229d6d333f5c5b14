// Converts dates. Years start in March here, so that the leap day is the last day of a year.
#include "si/calendar.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace si {

namespace {

constexpr std::int64_t kYear = 365;
constexpr std::int64_t kFourYears = 4 * kYear + 1;
constexpr std::int64_t kCentury = 25 * kFourYears - 1;
constexpr std::int64_t kEra = 4 * kCentury + 1;  // 400 years, the period of the calendar
constexpr std::int64_t kYearsOfEra = 400;
/// The Modified Julian Date of 1 March of the year 0.
constexpr std::int64_t kFirstMjd = -678881;
/// Days of the year before each month, from March on.
constexpr std::array<std::int64_t, 12> kMonths = {0, 31, 61, 92, 122, 153, 184, 214, 245, 275, 306, 337};
constexpr unsigned int kMarch = 3;

std::int64_t quotient(std::int64_t number, std::int64_t divisor) {
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

struct Date {
    std::int64_t year;
    int month;
    int day;
};

Date dateOf(std::int64_t mjd) {
    const std::int64_t era = quotient(mjd - kFirstMjd, kEra);
    std::int64_t day = mjd - kFirstMjd - era * kEra;
    // The limits to 3 keep a leap day at the end of the last century or of the fourth year from starting another one.
    const std::int64_t century = std::min<std::int64_t>(day / kCentury, 3);
    day -= century * kCentury;
    const std::int64_t fourYears = day / kFourYears;
    day -= fourYears * kFourYears;
    const std::int64_t year = std::min<std::int64_t>(day / kYear, 3);
    day -= year * kYear;
    const auto next = std::upper_bound(kMonths.begin(), kMonths.end(), day);
    const auto month = static_cast<int>(next - kMonths.begin()) - 1;
    const bool isInNext = month >= 10;  // January or February
    return {era * kYearsOfEra + century * 100 + fourYears * 4 + year + (isInNext ? 1 : 0), month + (isInNext ? -9 : 3),
            static_cast<int>(day - *(next - 1)) + 1};
}

std::string formatted(const char* format, std::int64_t first, int second, int third) {
    std::array<char, 40> text{};
    const int length = std::snprintf(text.data(), text.size(), format, static_cast<long long>(first), second, third);
    return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

UtcSeconds utcSeconds(std::int64_t year, unsigned int month, std::int64_t day) {
    const std::int64_t marchYear = month < kMarch ? year - 1 : year;
    const std::int64_t era = quotient(marchYear, kYearsOfEra);
    const std::int64_t inEra = marchYear - era * kYearsOfEra;
    const std::int64_t mjd = kFirstMjd + era * kEra + inEra * kYear + inEra / 4 - inEra / 100 +
                             kMonths[(month + 12 - kMarch) % 12] + day - 1;
    return (mjd - kEpochMjd) * kSecondsOfDay;
}

std::int64_t mjdOf(UtcSeconds time) {
    return quotient(time, kSecondsOfDay) + kEpochMjd;
}

std::int64_t secondOfDay(UtcSeconds time) {
    return time - quotient(time, kSecondsOfDay) * kSecondsOfDay;
}

std::string dateText(UtcSeconds time) {
    const Date date = dateOf(mjdOf(time));
    return formatted("%04lld-%02d-%02d", date.year, date.month, date.day);
}

std::string clockText(UtcSeconds time) {
    const auto second = static_cast<int>(secondOfDay(time));
    return formatted("%02lld:%02d:%02d", second / 3600, second / 60 % 60, second % 60);
}

}  // namespace si

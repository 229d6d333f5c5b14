// Dates of tables, without time_t: where that has 32 bits, it ends in 2038 and begins in 1901, and tables have dates
// from 1858 on.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>

namespace si {

/// Since 1970 began in UTC, without leap seconds; negative before.
using UtcSeconds = std::int64_t;

constexpr std::int64_t kSecondsOfDay = 86400;
/// The day on which UtcSeconds begin, as a Modified Julian Date.
constexpr std::int64_t kEpochMjd = 40587;

/// Of the Gregorian calendar; months from 1. A day behind the month's last is one of the next month.
UtcSeconds utcSeconds(std::int64_t year, unsigned int month, std::int64_t day);
/// The day of the time as Modified Julian Date, and the seconds of that day that have passed.
std::int64_t mjdOf(UtcSeconds time);
std::int64_t secondOfDay(UtcSeconds time);

/// "2026-01-01"
std::string dateText(UtcSeconds time);
/// "09:00:00"
std::string clockText(UtcSeconds time);

}  // namespace si

// Dates in tables. Does not use time_t, because tables have dates from 1858 on and a time_t of 32 bits covers only 1901
// to 2038.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <string>

namespace si {

/// Seconds since 1970-01-01 00:00 UTC, without leap seconds; negative for earlier times.
using UtcSeconds = std::int64_t;

constexpr std::int64_t kSecondsOfDay = 86400;
/// The Modified Julian Date of 1970-01-01, where UtcSeconds is 0.
constexpr std::int64_t kEpochMjd = 40587;

/// The start of a day of the Gregorian calendar. Months count from 1. A day after the last one of the month belongs to
/// the next month.
UtcSeconds utcSeconds(std::int64_t year, unsigned int month, std::int64_t day);
/// The Modified Julian Date of a time, and the seconds since the start of that day.
std::int64_t mjdOf(UtcSeconds time);
std::int64_t secondOfDay(UtcSeconds time);

/// "2026-01-01"
std::string dateText(UtcSeconds time);
/// "09:00:00"
std::string clockText(UtcSeconds time);

}  // namespace si

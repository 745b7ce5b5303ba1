// Dates, times and timestamps as calculations handle them: day numbers (0001-01-01 is day 1),
// seconds of a day, seconds since 0001-01-01 00:00:00; values outside the host's range (years 1
// to 4000) come out as "?".
#pragma once

#include <cstdint>
#include <optional>

#include "sim/core/value.h"

namespace sim::calc {

constexpr int64_t kLastDay = 1460970;  // 4000-12-31
constexpr double kSecondsPerDay = 86400;

// Day number of a proleptic Gregorian date; any month or year (months beyond 12 roll over).
int64_t dayNumber(int64_t year, int64_t month, int64_t day);
struct CivilDate {
    int64_t year;
    int month;
    int day;
};
CivilDate civilDate(int64_t dayNumber);

// Reading values: a date from a date, timestamp, number of days or a text in a date or
// timestamp form; a time of day from a time, timestamp, number of seconds or text; a timestamp
// from a timestamp, date (midnight), time or number of seconds, or text.
std::optional<int64_t> dayOf(const Value& v);
std::optional<double> timeOf(const Value& v);
std::optional<double> timestampOf(const Value& v);

Value dateValue(double dayNumber);
Value timeValue(double seconds);
Value timestampValue(double seconds);
// Exact to the microsecond.
Value timeValue(const Number& seconds);
Value timestampValue(const Number& seconds);
// An elapsed time (see Value::duration); the same range as times.
Value durationValue(const Number& seconds);
// A time of the same kind as `model` (elapsed or of day).
Value timeLike(const Value& model, const Number& seconds);
// Seconds from 0001-01-01 00:00:00 to the midnight that starts a date.
Number midnightOf(const Value& date);

}  // namespace sim::calc

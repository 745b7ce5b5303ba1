// Moments on the proleptic Gregorian calendar, and their text forms.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sim/core/number.h"

namespace sim {

// Microseconds since 0001-01-01 00:00:00 (proleptic Gregorian). Dates count days from there
// with 0001-01-01 as day 1; times count seconds from midnight (and may exceed 24 hours).
struct DateTime {
    int64_t usec = 0;

    static DateTime fromDays(int64_t day1Based);
    static DateTime fromYmd(int year, int month, int day);  // normalises overflowing fields
    static DateTime fromSeconds(double seconds);
    static DateTime fromSeconds(const Number& seconds);  // rounded to the microsecond
    int64_t days() const;                                // 1-based day number
    double seconds() const;                              // seconds since the epoch, with fractions
    double secondsOfDay() const;
    void ymd(int& year, int& month, int& day) const;
    friend bool operator==(const DateTime&, const DateTime&) = default;
};

// The current local date and time (the system's time zone), with microseconds.
DateTime localNow();

// Host text forms (en-US, the only locale this host formats): "1/31/2024", "1:05:00 PM",
// "1/31/2024 1:05:00 PM"; fractions of a second are printed when present (".5"). A time beyond
// one day, or below zero, keeps counting hours without AM/PM ("-27:00:00").
std::u16string formatDate(const DateTime& d);
std::u16string formatTime(const DateTime& t);
std::u16string formatTimestamp(const DateTime& ts);
// An elapsed time (the difference of two times or timestamps): hours, minutes and seconds without
// AM/PM, however many hours ("3:00:00", "-27:30:00").
std::u16string formatDuration(const DateTime& t);
// Parse the host's text forms (and ISO forms "2024-01-31", "13:05:00", "2024-01-31 13:05:00").
std::optional<DateTime> parseDate(std::u16string_view text);
std::optional<DateTime> parseTime(std::u16string_view text);
std::optional<DateTime> parseTimestamp(std::u16string_view text);
// SQL text forms, which ExecuteSQL results use whatever the locale: "2024-01-31", "13:05:00",
// "2024-01-31 13:05:00"; fractions of a second only when present ("13:05:00.5").
std::u16string formatSqlDate(const DateTime& d);
std::u16string formatSqlTime(const DateTime& t);
std::u16string formatSqlTimestamp(const DateTime& ts);

}  // namespace sim

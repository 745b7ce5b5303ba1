// SQL text forms of dates, times and timestamps (declared in sim/value.h).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "sim/core/value.h"

namespace sim {

namespace {

constexpr int64_t kUsecPerSecond = 1000000;
constexpr int64_t kUsecPerDay = 86400 * kUsecPerSecond;

// ".5", ".25", "" for whole seconds.
std::string fraction(int64_t usec) {
    if (usec == 0) return {};
    char digits[8];
    std::snprintf(digits, sizeof digits, ".%06lld", static_cast<long long>(usec));
    std::string s(digits);
    while (s.back() == '0') s.pop_back();
    return s;
}

std::string clock(int64_t usec) {
    const bool negative = usec < 0;
    const int64_t total = std::llabs(usec);
    const int64_t seconds = total / kUsecPerSecond;
    char text[48];
    std::snprintf(text, sizeof text, "%s%02lld:%02lld:%02lld", negative ? "-" : "",
                  static_cast<long long>(seconds / 3600), static_cast<long long>(seconds / 60 % 60),
                  static_cast<long long>(seconds % 60));
    return text + fraction(total % kUsecPerSecond);
}

std::string calendar(const DateTime& d) {
    int year = 0, month = 0, day = 0;
    d.ymd(year, month, day);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", year, month, day);
    return text;
}

// The common forms (years 0 to 9999, times under 100 hours) are written digit by digit into a
// buffer: a large SQL result formats one per value.
char16_t* putDigits(char16_t* out, int64_t value, int width) {
    writeDigits(static_cast<uint64_t>(value), width, out + width);
    return out + width;
}

bool putCalendar(const DateTime& d, char16_t*& out) {
    int year = 0, month = 0, day = 0;
    d.ymd(year, month, day);
    if (year < 0 || year > 9999) return false;
    out = putDigits(out, year, 4);
    *out++ = u'-';
    out = putDigits(out, month, 2);
    *out++ = u'-';
    out = putDigits(out, day, 2);
    return true;
}

bool putClock(int64_t usec, char16_t*& out) {
    if (usec < 0 || usec >= 100 * 3600 * kUsecPerSecond) return false;
    const int64_t seconds = usec / kUsecPerSecond;
    out = putDigits(out, seconds / 3600, 2);
    *out++ = u':';
    out = putDigits(out, seconds / 60 % 60, 2);
    *out++ = u':';
    out = putDigits(out, seconds % 60, 2);
    if (const int64_t fraction = usec % kUsecPerSecond; fraction != 0) {
        *out++ = u'.';
        out = putDigits(out, fraction, 6);
        while (out[-1] == u'0') --out;
    }
    return true;
}

std::size_t writeAscii(const std::string& ascii, char16_t* out) {
    const std::size_t n = std::min(ascii.size(), kSqlTextCapacity);
    for (std::size_t i = 0; i < n; ++i) out[i] = static_cast<char16_t>(ascii[i]);
    return n;
}

}  // namespace

std::size_t writeSqlDate(const DateTime& d, char16_t* out) {
    char16_t* end = out;
    if (putCalendar(d, end)) return static_cast<std::size_t>(end - out);
    return writeAscii(calendar(d), out);
}

std::size_t writeSqlTime(const DateTime& t, char16_t* out) {
    char16_t* end = out;
    if (putClock(t.usec, end)) return static_cast<std::size_t>(end - out);
    return writeAscii(clock(t.usec), out);
}

std::size_t writeSqlTimestamp(const DateTime& ts, char16_t* out) {
    int64_t ofDay = ts.usec % kUsecPerDay;
    if (ofDay < 0) ofDay += kUsecPerDay;
    char16_t* end = out;
    if (putCalendar(ts, end)) {
        *end++ = u' ';
        putClock(ofDay, end);
        return static_cast<std::size_t>(end - out);
    }
    return writeAscii(calendar(ts) + " " + clock(ofDay), out);
}

std::u16string formatSqlDate(const DateTime& d) {
    char16_t buffer[kSqlTextCapacity];
    return std::u16string(buffer, writeSqlDate(d, buffer));
}

std::u16string formatSqlTime(const DateTime& t) {
    char16_t buffer[kSqlTextCapacity];
    return std::u16string(buffer, writeSqlTime(t, buffer));
}

std::u16string formatSqlTimestamp(const DateTime& ts) {
    char16_t buffer[kSqlTextCapacity];
    return std::u16string(buffer, writeSqlTimestamp(ts, buffer));
}

}  // namespace sim

// SQL text forms of dates, times and timestamps (declared in sim/value.h).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "sim/value.h"

namespace sim {

namespace {

constexpr int64_t kUsecPerSecond = 1000000;
constexpr int64_t kUsecPerDay = 86400 * kUsecPerSecond;

std::u16string widen(const char* ascii) {
    return std::u16string(ascii, ascii + std::strlen(ascii));
}

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

}  // namespace

std::u16string formatSqlDate(const DateTime& d) { return widen(calendar(d).c_str()); }

std::u16string formatSqlTime(const DateTime& t) { return widen(clock(t.usec).c_str()); }

std::u16string formatSqlTimestamp(const DateTime& ts) {
    int64_t ofDay = ts.usec % kUsecPerDay;
    if (ofDay < 0) ofDay += kUsecPerDay;
    return widen((calendar(ts) + " " + clock(ofDay)).c_str());
}

}  // namespace sim

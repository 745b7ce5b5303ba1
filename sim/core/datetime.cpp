#include "sim/core/datetime.h"

#include <charconv>
#include <cmath>
#include <ctime>
#include <string>

#include "sim/core/number.h"

namespace sim {

namespace {

constexpr int64_t kUsecPerSecond = 1'000'000;
constexpr int64_t kUsecPerDay = 86'400 * kUsecPerSecond;
// Day number of 1970-01-01 when 0001-01-01 is day 1.
constexpr int64_t kUnixEpochDay = 719'163;

int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
int64_t floorMod(int64_t a, int64_t b) { return a - floorDiv(a, b) * b; }

// Days since 1970-01-01 of a civil date (H. Hinnant's algorithm).
int64_t daysFromCivil(int64_t y, int64_t m, int64_t d) {
    y -= m <= 2;
    const int64_t era = floorDiv(y, 400);
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void civilFromDays(int64_t z, int& year, int& month, int& day) {
    z += 719468;
    const int64_t era = floorDiv(z, 146097);
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yoe + era * 400 + (month <= 2));
}

bool isLeap(int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int daysInMonth(int64_t y, int m) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && isLeap(y) ? 29 : kDays[m - 1];
}

// --- Parsing helpers over UTF-16 ------------------------------------------------------------

struct Cursor {
    std::u16string_view s;
    size_t i = 0;

    bool atEnd() const { return i >= s.size(); }
    char16_t peek() const { return atEnd() ? u'\0' : s[i]; }
    bool eat(char16_t c) {
        if (peek() != c) return false;
        ++i;
        return true;
    }
    void skipSpaces() {
        while (!atEnd() && (s[i] == u' ' || s[i] == u'\t')) ++i;
    }
    // Reads 1..maxDigits decimal digits.
    bool number(int64_t& out, int maxDigits, int* count = nullptr) {
        int n = 0;
        out = 0;
        while (n < maxDigits && !atEnd() && s[i] >= u'0' && s[i] <= u'9') {
            out = out * 10 + (s[i++] - u'0');
            ++n;
        }
        if (count) *count = n;
        return n > 0;
    }
};

std::u16string_view trimmed(std::u16string_view s) {
    auto isSpace = [](char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; };
    while (!s.empty() && isSpace(s.front())) s.remove_prefix(1);
    while (!s.empty() && isSpace(s.back())) s.remove_suffix(1);
    return s;
}

std::optional<DateTime> validDate(int64_t y, int64_t m, int64_t d) {
    if (y < 1 || y > 9999 || m < 1 || m > 12 || d < 1 || d > daysInMonth(y, static_cast<int>(m))) {
        return std::nullopt;
    }
    return DateTime::fromYmd(static_cast<int>(y), static_cast<int>(m), static_cast<int>(d));
}

// "M/D/YYYY" or "YYYY-MM-DD" at the cursor.
std::optional<DateTime> readDate(Cursor& c) {
    int64_t a, b, y;
    int digits = 0;
    const size_t start = c.i;
    if (c.number(a, 4, &digits)) {
        if (digits == 4 && c.eat(u'-')) {
            if (c.number(b, 2) && c.eat(u'-') && c.number(y, 2)) return validDate(a, b, y);
            return std::nullopt;
        }
        if (digits <= 2 && c.eat(u'/') && c.number(b, 2) && c.eat(u'/') && c.number(y, 4)) {
            return validDate(y, a, b);
        }
    }
    c.i = start;
    return std::nullopt;
}

// Case-insensitive AM/PM marker ("AM", "PM", "A", "P", with or without dots).
int readMeridiem(Cursor& c) {
    const char16_t m = c.peek();
    int result;
    if (m == u'A' || m == u'a') {
        result = 1;
    } else if (m == u'P' || m == u'p') {
        result = 2;
    } else {
        return 0;
    }
    ++c.i;
    c.eat(u'.');
    if (!c.eat(u'M')) c.eat(u'm');
    c.eat(u'.');
    return result;
}

// "H:MM[:SS[.ffffff]] [AM|PM]" at the cursor, as microseconds from midnight.
std::optional<int64_t> readTime(Cursor& c) {
    int64_t h, m, s = 0, usec = 0;
    if (!c.number(h, 9) || !c.eat(u':') || !c.number(m, 2) || m > 59) return std::nullopt;
    if (c.eat(u':')) {
        if (!c.number(s, 2) || s > 59) return std::nullopt;
        if (c.eat(u'.')) {
            int64_t scale = 100'000;
            while (!c.atEnd() && c.peek() >= u'0' && c.peek() <= u'9') {
                usec += (c.s[c.i++] - u'0') * scale;
                scale /= 10;
            }
        }
    }
    const size_t beforeMarker = c.i;
    c.skipSpaces();
    const int meridiem = readMeridiem(c);
    if (meridiem == 0) {
        c.i = beforeMarker;
    } else {
        if (h < 1 || h > 12) return std::nullopt;
        h = (h % 12) + (meridiem == 2 ? 12 : 0);
    }
    return ((h * 60 + m) * 60 + s) * kUsecPerSecond + usec;
}

// --- Formatting helpers -------------------------------------------------------------------

// `v` in decimal, at least `width` digits (zeros in front), a minus sign before them.
void appendInteger(std::u16string& out, int64_t v, int width = 1) {
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, v < 0 ? -v : v).ptr;
    if (v < 0) out += u'-';
    if (end - digits < width) out.append(static_cast<size_t>(width - (end - digits)), u'0');
    out.append(static_cast<const char*>(digits), end);
}

// ".5", ".25", nothing for whole seconds.
void appendFraction(std::u16string& out, int64_t usec) {
    if (usec == 0) return;
    out += u'.';
    appendInteger(out, usec, 6);
    while (out.back() == u'0') out.pop_back();
}

// Hours (at least `hourWidth` digits), minutes and seconds of a span of time, "-" before a
// negative one.
void appendClock(std::u16string& out, int64_t usec, int hourWidth) {
    if (usec < 0) out += u'-';
    const int64_t magnitude = usec < 0 ? -usec : usec;
    const int64_t seconds = magnitude / kUsecPerSecond;
    appendInteger(out, seconds / 3600, hourWidth);
    out += u':';
    appendInteger(out, seconds / 60 % 60, 2);
    out += u':';
    appendInteger(out, seconds % 60, 2);
    appendFraction(out, magnitude % kUsecPerSecond);
}

// A time of day on the 12-hour clock: "1:05:00 PM".
void appendTimeOfDay(std::u16string& out, int64_t usecOfDay) {
    const int64_t hours = usecOfDay / (3600 * kUsecPerSecond);
    const int64_t hour12 = hours % 12 == 0 ? 12 : hours % 12;
    appendClock(out, usecOfDay - (hours - hour12) * 3600 * kUsecPerSecond, 1);
    out += hours < 12 ? u" AM" : u" PM";
}

}  // namespace

// --- DateTime -------------------------------------------------------------------------------

DateTime DateTime::fromDays(int64_t day1Based) { return DateTime{(day1Based - 1) * kUsecPerDay}; }

DateTime DateTime::fromYmd(int year, int month, int day) {
    const int64_t m0 = static_cast<int64_t>(month) - 1;
    const int64_t y = year + floorDiv(m0, 12);
    const int64_t m = floorMod(m0, 12) + 1;
    return fromDays(daysFromCivil(y, m, 1) + kUnixEpochDay + (static_cast<int64_t>(day) - 1));
}

// Goes through the 16-digit decimal form so that 62135596800.1 seconds lands on .1 exactly
// rather than on the binary neighbour of that fraction.
DateTime DateTime::fromSeconds(double seconds) {
    if (!std::isfinite(seconds) || std::fabs(seconds) > 9.2e12) return DateTime{};
    Number n;
    n.value = decimal::digitsOf(seconds);
    return fromSeconds(n);
}

DateTime DateTime::fromSeconds(const Number& seconds) {
    if (seconds.empty || !(std::fabs(seconds.toDouble()) <= 9.2e12)) return DateTime{};
    decimal::Digits d = seconds.value;
    decimal::roundToPlaces(d, 6);
    int64_t usec = 0;
    for (size_t k = 0; k < d.digits.size(); ++k) usec = usec * 10 + (d.digits[k] - '0');
    for (long k = static_cast<long>(d.digits.size()); k < d.point + 6; ++k) usec *= 10;
    return DateTime{d.negative ? -usec : usec};
}

int64_t DateTime::days() const { return floorDiv(usec, kUsecPerDay) + 1; }

double DateTime::seconds() const { return static_cast<double>(usec) / kUsecPerSecond; }

double DateTime::secondsOfDay() const {
    return static_cast<double>(floorMod(usec, kUsecPerDay)) / kUsecPerSecond;
}

void DateTime::ymd(int& year, int& month, int& day) const {
    civilFromDays(days() - kUnixEpochDay, year, month, day);
}

DateTime localNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const DateTime day = DateTime::fromYmd(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
    const int64_t seconds = (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
    return DateTime{day.usec + seconds * kUsecPerSecond + now.tv_nsec / 1000};
}

// --- Text forms -------------------------------------------------------------------------------

std::u16string formatDate(const DateTime& d) {
    int year = 0, month = 0, day = 0;
    d.ymd(year, month, day);
    std::u16string out;
    appendInteger(out, month);
    out += u'/';
    appendInteger(out, day);
    out += u'/';
    appendInteger(out, year, 4);
    return out;
}

std::u16string formatTime(const DateTime& t) {
    std::u16string out;
    if (t.usec >= 0 && t.usec < kUsecPerDay) {
        appendTimeOfDay(out, t.usec);
    } else {
        appendClock(out, t.usec, 1);
    }
    return out;
}

std::u16string formatDuration(const DateTime& t) {
    std::u16string out;
    appendClock(out, t.usec, 1);
    return out;
}

std::u16string formatTimestamp(const DateTime& ts) {
    std::u16string out = formatDate(ts);
    out += u' ';
    appendTimeOfDay(out, floorMod(ts.usec, kUsecPerDay));
    return out;
}

std::u16string formatSqlDate(const DateTime& d) {
    int year = 0, month = 0, day = 0;
    d.ymd(year, month, day);
    std::u16string out;
    appendInteger(out, year, 4);
    out += u'-';
    appendInteger(out, month, 2);
    out += u'-';
    appendInteger(out, day, 2);
    return out;
}

std::u16string formatSqlTime(const DateTime& t) {
    std::u16string out;
    appendClock(out, t.usec, 2);
    return out;
}

std::u16string formatSqlTimestamp(const DateTime& ts) {
    std::u16string out = formatSqlDate(ts);
    out += u' ';
    appendClock(out, floorMod(ts.usec, kUsecPerDay), 2);
    return out;
}

std::optional<DateTime> parseDate(std::u16string_view text) {
    Cursor c{trimmed(text)};
    auto d = readDate(c);
    if (!d || !c.atEnd()) return std::nullopt;
    return d;
}

std::optional<DateTime> parseTime(std::u16string_view text) {
    Cursor c{trimmed(text)};
    auto t = readTime(c);
    if (!t || !c.atEnd()) return std::nullopt;
    return DateTime{*t};
}

std::optional<DateTime> parseTimestamp(std::u16string_view text) {
    Cursor c{trimmed(text)};
    auto d = readDate(c);
    if (!d) return std::nullopt;
    if (c.atEnd()) return d;
    if (!c.eat(u'T')) {
        const size_t before = c.i;
        c.skipSpaces();
        if (c.i == before) return std::nullopt;
    }
    auto t = readTime(c);
    if (!t || !c.atEnd() || *t >= kUsecPerDay) return std::nullopt;
    return DateTime{d->usec + *t};
}

}  // namespace sim

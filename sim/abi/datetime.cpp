// FM_DateTime_*: a date and a time of day together, counted in microseconds from 0001-01-01.
// Days since the epoch are 1-based (0001-01-01 is day 1); seconds since the epoch start at 0.
#include <algorithm>
#include <cmath>

#include "sim/abi/guard.h"

using namespace sim;
using namespace sim::abi;

namespace {

constexpr int64_t kUsecPerSecond = 1'000'000;
constexpr int64_t kUsecPerDay = 86'400 * kUsecPerSecond;
// About 10,000 years either way: beyond that no field can be normalised into a date.
constexpr int64_t kMaxDays = 3'660'000;
constexpr fmx::errcode kOutOfRange = 1;

int64_t dayStart(const DateTime& d) { return (d.days() - 1) * kUsecPerDay; }
int64_t usecOfDay(const DateTime& d) { return d.usec - dayStart(d); }

int ymdPart(const DateTime& d, int which) {
    int y, m, day;
    d.ymd(y, m, day);
    return which == 0 ? y : which == 1 ? m : day;
}

// 1 = Sunday ... 7 = Saturday; 0001-01-01 was a Monday.
int dayOfWeek(int64_t days) { return static_cast<int>(((days % 7) + 7) % 7) + 1; }

int dayOfYear(const DateTime& d) {
    return static_cast<int>(d.days() - DateTime::fromYmd(ymdPart(d, 0), 1, 1).days()) + 1;
}

bool isLeapYear(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

double numberOf(const Number& n) { return n.empty ? 0 : n.toDouble(); }

int intOf(const Number& n) {
    const double v = numberOf(n);
    if (!(std::fabs(v) < 1e9)) throw BadArgument();
    return static_cast<int>(v);
}

// Seconds to the microsecond, exactly.
void setSeconds(Number& n, int64_t usec) {
    n.value = Number::fromScaled(usec, -6).value;
    n.empty = false;
}

void assign(DateTimeObj& obj, int64_t usec) {
    obj.dt = DateTime{usec};
    obj.valid = true;
}

DateTimeObj parsed(std::u16string_view text) {
    if (auto ts = parseTimestamp(text)) return {*ts, true};
    if (auto t = parseTime(text)) return {*t, true};
    return {DateTime{}, false};
}

// Keeps the time of day, moves to the date `fromYmd` normalises the fields to.
fmx::errcode setDate(DateTimeObj& obj, int year, int month, int day) {
    if (std::abs(year) > 10'000 || std::abs(month) > 120'000 || std::abs(day) > kMaxDays) {
        return kOutOfRange;
    }
    assign(obj, DateTime::fromYmd(year, month, day).usec + usecOfDay(obj.dt));
    return 0;
}

// Keeps the date, adding `usec` from its midnight (carrying whole days into the date).
fmx::errcode setTime(DateTimeObj& obj, double usec) {
    if (!(std::fabs(usec) < static_cast<double>(kMaxDays * kUsecPerDay))) return kOutOfRange;
    assign(obj, dayStart(obj.dt) + static_cast<int64_t>(std::llround(usec)));
    return 0;
}

template <class Get>
auto getter(const char* function, const void* self, fmx::_fmxcpt& x, Get get) {
    return guard(function, x, [&] { return get(abi::self<DateTimeObj>(self).dt); });
}

}  // namespace

extern "C" {

fmx::DateTime* FM_DateTime_Constructor1(_fmxcpt& x) noexcept {
    return guard(__func__, x, [] { return handleOf(new DateTimeObj); });
}

fmx::DateTime* FM_DateTime_Constructor2(const fmx::unichar16* dateString, fmx::uint32 dateLength,
                                        const fmx::Locale& intl, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        arg(intl);
        require(dateString != nullptr || dateLength == 0);
        const std::u16string_view text(reinterpret_cast<const char16_t*>(dateString),
                                       dateString ? dateLength : 0);
        return handleOf(new DateTimeObj(parsed(text)));
    });
}

fmx::DateTime* FM_DateTime_Constructor3(const fmx::Text& dateText, const fmx::Locale& intl,
                                        _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        arg(intl);
        return handleOf(new DateTimeObj(parsed(arg(dateText).units())));
    });
}

void FM_DateTime_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<DateTimeObj*>(self); });
}

bool FM_DateTime_operatorEQ(const void* self, const fmx::DateTime& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const DateTimeObj& a = abi::self<DateTimeObj>(self);
        const DateTimeObj& b = arg(that);
        return a.valid == b.valid && a.dt == b.dt;
    });
}

bool FM_DateTime_operatorNE(const void* self, const fmx::DateTime& that, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const DateTimeObj& a = abi::self<DateTimeObj>(self);
        const DateTimeObj& b = arg(that);
        return a.valid != b.valid || a.dt != b.dt;
    });
}

bool FM_DateTime_IsLeapYear(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x, [](const DateTime& d) { return isLeapYear(ymdPart(d, 0)); });
}

fmx::int16 FM_DateTime_DayOfWeek(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x,
                  [](const DateTime& d) { return static_cast<fmx::int16>(dayOfWeek(d.days())); });
}

fmx::int16 FM_DateTime_DayOfYear(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x,
                  [](const DateTime& d) { return static_cast<fmx::int16>(dayOfYear(d)); });
}

// Weeks start on Sunday; the week holding January 1 is week 1.
fmx::int16 FM_DateTime_WeekOfYear(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x, [](const DateTime& d) {
        const int jan1 = dayOfWeek(DateTime::fromYmd(ymdPart(d, 0), 1, 1).days());
        return static_cast<fmx::int16>((dayOfYear(d) + jan1 - 2) / 7 + 1);
    });
}

void FM_DateTime_Now(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { assign(abi::self<DateTimeObj>(self), localNow().usec); });
}

void FM_DateTime_SetDate(void* self, const fmx::DateTime& datetime, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        const DateTimeObj& from = arg(datetime);
        obj.dt = DateTime{dayStart(from.dt) + usecOfDay(obj.dt)};
        obj.valid = from.valid;
    });
}

void FM_DateTime_SetTime(void* self, const fmx::DateTime& datetime, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        const DateTimeObj& from = arg(datetime);
        obj.dt = DateTime{dayStart(obj.dt) + usecOfDay(from.dt)};
        obj.valid = from.valid;
    });
}

fmx::errcode FM_DateTime_SetNormalizedDate1(void* self, fmx::int16 month, fmx::int16 day,
                                            fmx::int16 year, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return setDate(abi::self<DateTimeObj>(self), year, month, day); });
}

fmx::errcode FM_DateTime_SetNormalizedDate2(void* self, const fmx::FixPt& year,
                                            const fmx::FixPt& month, const fmx::FixPt& day,
                                            _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        return setDate(obj, intOf(arg(year)), intOf(arg(month)), intOf(arg(day)));
    });
}

void FM_DateTime_SetDaysSinceEpoch(void* self, fmx::int64 days, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        require(days > -kMaxDays && days < kMaxDays);
        assign(obj, DateTime::fromDays(days).usec + usecOfDay(obj.dt));
    });
}

fmx::errcode FM_DateTime_SetNormalizedTime1(void* self, fmx::int64 hour, fmx::int16 minute,
                                            fmx::int16 sec, fmx::int32 usec, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const double total = ((static_cast<double>(hour) * 60 + minute) * 60 + sec) *
                                 static_cast<double>(kUsecPerSecond) +
                             usec;
        return setTime(abi::self<DateTimeObj>(self), total);
    });
}

fmx::errcode FM_DateTime_SetNormalizedTime2(void* self, const fmx::FixPt& hour,
                                            const fmx::FixPt& minute, const fmx::FixPt& sec,
                                            _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        const double seconds =
            (numberOf(arg(hour)) * 60 + numberOf(arg(minute))) * 60 + numberOf(arg(sec));
        if (!(std::fabs(seconds) < 9e12)) return kOutOfRange;
        return setTime(obj, static_cast<double>(DateTime::fromSeconds(seconds).usec));
    });
}

void FM_DateTime_SetSecsSinceMidnight(void* self, const fmx::FixPt& secs, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        const Number& seconds = arg(secs);
        require(std::fabs(numberOf(seconds)) < 9e12);
        require(setTime(obj, static_cast<double>(DateTime::fromSeconds(seconds).usec)) == 0);
    });
}

void FM_DateTime_SetSecondsSinceEpoch(void* self, const fmx::FixPt& seconds, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        DateTimeObj& obj = abi::self<DateTimeObj>(self);
        const Number& s = arg(seconds);
        require(std::fabs(numberOf(s)) < 9e12);
        assign(obj, DateTime::fromSeconds(s).usec);
    });
}

fmx::int16 FM_DateTime_GetYear(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x,
                  [](const DateTime& d) { return static_cast<fmx::int16>(ymdPart(d, 0)); });
}

fmx::int16 FM_DateTime_GetMonth(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x,
                  [](const DateTime& d) { return static_cast<fmx::int16>(ymdPart(d, 1)); });
}

fmx::int16 FM_DateTime_GetDay(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x,
                  [](const DateTime& d) { return static_cast<fmx::int16>(ymdPart(d, 2)); });
}

fmx::int32 FM_DateTime_GetDaysSinceEpoch(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x,
                  [](const DateTime& d) { return static_cast<fmx::int32>(d.days()); });
}

fmx::int32 FM_DateTime_GetHour(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x, [](const DateTime& d) {
        return static_cast<fmx::int32>(usecOfDay(d) / (3600 * kUsecPerSecond));
    });
}

fmx::int16 FM_DateTime_GetMinute(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x, [](const DateTime& d) {
        return static_cast<fmx::int16>(usecOfDay(d) / (60 * kUsecPerSecond) % 60);
    });
}

fmx::int16 FM_DateTime_GetSec(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x, [](const DateTime& d) {
        return static_cast<fmx::int16>(usecOfDay(d) / kUsecPerSecond % 60);
    });
}

fmx::int32 FM_DateTime_GetUSec(const void* self, _fmxcpt& x) noexcept {
    return getter(__func__, self, x, [](const DateTime& d) {
        return static_cast<fmx::int32>(usecOfDay(d) % kUsecPerSecond);
    });
}

// The seconds of the minute, with their fraction.
void FM_DateTime_GetSeconds(const void* self, fmx::FixPt& results, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        const DateTime& d = abi::self<DateTimeObj>(self).dt;
        const int64_t usec = usecOfDay(d) % (60 * kUsecPerSecond);
        setSeconds(arg(results), usec);
    });
}

void FM_DateTime_GetSecsSinceMidnight(const void* self, fmx::FixPt& results, _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { setSeconds(arg(results), usecOfDay(abi::self<DateTimeObj>(self).dt)); });
}

void FM_DateTime_GetSecondsSinceEpoch(const void* self, fmx::FixPt& results, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setSeconds(arg(results), abi::self<DateTimeObj>(self).dt.usec); });
}

}  // extern "C"

// Date, time and timestamp functions.
#include <array>
#include <cmath>
#include <optional>

#include "sim/calc/builtins.h"
#include "sim/calc/temporal.h"

namespace sim::calc {

namespace {

constexpr double kLargestField = 1e7;  // Date ( ) arguments beyond this give "?"

Value emptyNumber() { return Value::number(Number::none()); }

// Converts to a type; an empty argument gives the invalid value, an unreadable one "?".
template <class Read, class Make>
Value convert(const Value& v, Read read, Make make) {
    if (v.isEmpty()) return Value();
    const auto x = read(v);
    return x ? make(static_cast<double>(*x)) : questionMark();
}

Value fnGetAsDate(Args& a) {
    return convert(a[0], dayOf, [](double d) { return dateValue(d); });
}
// A time stays as it is, an elapsed time too.
Value fnGetAsTime(Args& a) {
    if (a[0].type() == Type::Time && !a[0].isEmpty()) return a[0];
    return convert(a[0], timeOf, [](double s) { return timeValue(s); });
}
Value fnGetAsTimestamp(Args& a) {
    return convert(a[0], timestampOf, [](double s) { return timestampValue(s); });
}

// Date ( month ; day ; year ): fields beyond their range roll over (month 13 is January of the
// next year, day 0 the last day of the previous month).
Value fnDate(Args& a) {
    const double month = std::trunc(a.number(0));
    const double day = std::trunc(a.number(1));
    const double year = std::trunc(a.number(2));
    for (double field : {month, day, year}) {
        if (std::fabs(field) > kLargestField) return questionMark();
    }
    return dateValue(static_cast<double>(dayNumber(
        static_cast<int64_t>(year), static_cast<int64_t>(month), static_cast<int64_t>(day))));
}

Value fnTime(Args& a) { return timeValue(a.number(0) * 3600 + a.number(1) * 60 + a.number(2)); }

Value fnTimestamp(Args& a) {
    const std::optional<int64_t> day = dayOf(a[0]);
    const std::optional<double> time = timeOf(a[1]);
    if (!day || !time) return questionMark();
    return timestampValue(static_cast<double>(*day - 1) * kSecondsPerDay + *time);
}

// Applies f to the civil date of the argument; no date gives an empty number.
template <class F>
Value datePart(Args& a, F f) {
    const std::optional<int64_t> day = dayOf(a[0]);
    if (!day) return emptyNumber();
    return f(*day, civilDate(*day));
}

// 1 is Sunday; day 1 (0001-01-01) was a Monday.
int dayOfWeek(int64_t day) { return static_cast<int>(day % 7) + 1; }

Value fnYear(Args& a) {
    return datePart(
        a, [](int64_t, CivilDate c) { return Value::number(static_cast<double>(c.year)); });
}
Value fnMonth(Args& a) {
    return datePart(a, [](int64_t, CivilDate c) { return Value::number(c.month); });
}
Value fnDay(Args& a) {
    return datePart(a, [](int64_t, CivilDate c) { return Value::number(c.day); });
}
Value fnDayOfWeek(Args& a) {
    return datePart(a, [](int64_t d, CivilDate) { return Value::number(dayOfWeek(d)); });
}
Value fnDayOfYear(Args& a) {
    return datePart(a, [](int64_t d, CivilDate c) {
        return Value::number(static_cast<double>(d - dayNumber(c.year, 1, 1) + 1));
    });
}

// WeekOfYear: weeks begin on Sunday and the one holding 1 January is week 1, however few of its
// days fall in the year (1 to 54).
Value fnWeekOfYear(Args& a) {
    return datePart(a, [](int64_t d, CivilDate c) {
        const int64_t first = dayNumber(c.year, 1, 1);
        return Value::number(static_cast<double>((d - first + dayOfWeek(first) - 1) / 7 + 1));
    });
}

// WeekOfYearFiscal ( date ; startingDay ): weeks begin on startingDay (1 Sunday .. 7 Saturday)
// and week 1 is the first with at least four days in the year, so early January can belong to
// week 52 or 53 of the year before and late December to week 1 of the next (ISO 8601's weeks for
// startingDay 2). Another startingDay gives "?".
Value fnWeekOfYearFiscal(Args& a) {
    const double start = std::trunc(a.number(1));
    if (start < 1 || start > 7) return questionMark();
    return datePart(a, [start](int64_t d, CivilDate) {
        const int64_t weekStart = d - (dayOfWeek(d) - static_cast<int64_t>(start) + 7) % 7;
        // The week belongs to the year that holds its fourth day.
        const int64_t fourth = weekStart + 3;
        const int64_t first = dayNumber(civilDate(fourth).year, 1, 1);
        return Value::number(static_cast<double>((fourth - first) / 7 + 1));
    });
}

Value fnDayName(Args& a) {
    static constexpr std::array<std::u16string_view, 7> kNames{
        u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"};
    const std::optional<int64_t> day = dayOf(a[0]);
    if (!day) return emptyText();
    return Value::text(std::u16string(kNames[static_cast<size_t>(dayOfWeek(*day) - 1)]));
}

// DayNameJ: the weekday's Japanese name (日曜日 for Sunday).
Value fnDayNameJ(Args& a) {
    static constexpr std::array<std::u16string_view, 7> kNames{
        u"日曜日", u"月曜日", u"火曜日", u"水曜日", u"木曜日", u"金曜日", u"土曜日"};
    const std::optional<int64_t> day = dayOf(a[0]);
    if (!day) return emptyText();
    return Value::text(std::u16string(kNames[static_cast<size_t>(dayOfWeek(*day) - 1)]));
}

Value fnMonthName(Args& a) {
    static constexpr std::array<std::u16string_view, 12> kNames{
        u"January", u"February", u"March",     u"April",   u"May",      u"June",
        u"July",    u"August",   u"September", u"October", u"November", u"December"};
    const std::optional<int64_t> day = dayOf(a[0]);
    if (!day) return emptyText();
    return Value::text(std::u16string(kNames[static_cast<size_t>(civilDate(*day).month - 1)]));
}

// Applies f to the seconds of the time argument; no time gives an empty number.
template <class F>
Value timePart(Args& a, F f) {
    const std::optional<double> seconds = timeOf(a[0]);
    if (!seconds) return emptyNumber();
    return numberValue(f(*seconds));
}

Value fnHour(Args& a) {
    return timePart(a, [](double s) { return std::trunc(s / 3600); });
}
Value fnMinute(Args& a) {
    return timePart(a, [](double s) { return std::trunc(std::fmod(s, 3600) / 60); });
}
Value fnSeconds(Args& a) {
    return timePart(a, [](double s) { return std::fmod(s, 60); });
}

constexpr Builtin kFunctions[] = {
    {u"getasdate", 1, 1, fnGetAsDate},
    {u"getastime", 1, 1, fnGetAsTime},
    {u"getastimestamp", 1, 1, fnGetAsTimestamp},
    {u"date", 3, 3, fnDate},
    {u"time", 3, 3, fnTime},
    {u"timestamp", 2, 2, fnTimestamp},
    {u"year", 1, 1, fnYear},
    {u"month", 1, 1, fnMonth},
    {u"day", 1, 1, fnDay},
    {u"dayofweek", 1, 1, fnDayOfWeek},
    {u"dayofyear", 1, 1, fnDayOfYear},
    {u"weekofyear", 1, 1, fnWeekOfYear},
    {u"weekofyearfiscal", 2, 2, fnWeekOfYearFiscal},
    {u"dayname", 1, 1, fnDayName},
    {u"daynamej", 1, 1, fnDayNameJ},
    {u"monthname", 1, 1, fnMonthName},
    {u"hour", 1, 1, fnHour},
    {u"minute", 1, 1, fnMinute},
    {u"seconds", 1, 1, fnSeconds},
};

}  // namespace

std::span<const Builtin> dateFunctions() { return kFunctions; }

}  // namespace sim::calc

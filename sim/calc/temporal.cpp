#include "sim/calc/temporal.h"

#include <cmath>

#include "sim/calc/builtins.h"

namespace sim::calc {

namespace {

constexpr int64_t kUnixEpochDay = 719163;  // 1970-01-01
constexpr double kLargestTime = 1e11;      // seconds, either sign

bool validDay(double day) { return day >= 1 && day <= static_cast<double>(kLastDay); }

int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

std::optional<int64_t> checkedDay(int64_t day) {
    if (!validDay(static_cast<double>(day))) return std::nullopt;
    return day;
}

}  // namespace

// Days from civil, after Howard Hinnant's public-domain algorithm, shifted to day 1 = 0001-01-01.
int64_t dayNumber(int64_t year, int64_t month, int64_t day) {
    const int64_t months = year * 12 + (month - 1);
    int64_t y = floorDiv(months, 12);
    const int64_t m = months - y * 12 + 1;
    y -= m <= 2;
    const int64_t era = floorDiv(y, 400);
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468 + kUnixEpochDay + (day - 1);
}

CivilDate civilDate(int64_t dayNumber) {
    const int64_t z = dayNumber - kUnixEpochDay + 719468;
    const int64_t era = floorDiv(z, 146097);
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    const int day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    return {yoe + era * 400 + (month <= 2), month, day};
}

std::optional<int64_t> dayOf(const Value& v) {
    if (v.isEmpty()) return std::nullopt;
    switch (v.type()) {
        case Type::Date:
        case Type::Timestamp:
            return checkedDay(v.dateTimeValue().days());
        case Type::Number:
        case Type::Boolean: {
            const double d = std::floor(v.asNumber().toDouble());
            if (!validDay(d)) return std::nullopt;
            return static_cast<int64_t>(d);
        }
        case Type::Text: {
            const std::u16string_view units = v.textValue().units();
            if (auto d = parseDate(units)) return checkedDay(d->days());
            if (auto ts = parseTimestamp(units)) return checkedDay(ts->days());
            return std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

std::optional<double> timeOf(const Value& v) {
    if (v.isEmpty()) return std::nullopt;
    switch (v.type()) {
        case Type::Time:
            return v.dateTimeValue().seconds();
        case Type::Timestamp:
            return v.dateTimeValue().secondsOfDay();
        case Type::Number:
        case Type::Boolean: {
            const double s = v.asNumber().toDouble();
            if (!(std::fabs(s) <= kLargestTime)) return std::nullopt;
            return s;
        }
        case Type::Text: {
            const std::u16string_view units = v.textValue().units();
            if (auto t = parseTime(units)) return t->seconds();
            if (auto ts = parseTimestamp(units)) return ts->secondsOfDay();
            return std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

std::optional<double> timestampOf(const Value& v) {
    if (v.isEmpty()) return std::nullopt;
    switch (v.type()) {
        case Type::Timestamp:
        case Type::Time:
            return v.dateTimeValue().seconds();
        case Type::Date:
            return static_cast<double>(v.dateTimeValue().days() - 1) * kSecondsPerDay;
        case Type::Number:
        case Type::Boolean: {
            const double s = v.asNumber().toDouble();
            if (!(s >= 0 && s < static_cast<double>(kLastDay) * kSecondsPerDay))
                return std::nullopt;
            return s;
        }
        case Type::Text: {
            const std::u16string_view units = v.textValue().units();
            if (auto ts = parseTimestamp(units)) return ts->seconds();
            if (auto d = parseDate(units))
                return static_cast<double>(d->days() - 1) * kSecondsPerDay;
            return std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

Value dateValue(double day) {
    day = std::floor(day);
    if (!validDay(day)) return questionMark();
    return Value::date(DateTime::fromDays(static_cast<int64_t>(day)));
}

Value timeValue(double seconds) {
    if (!(std::fabs(seconds) <= kLargestTime)) return questionMark();
    return Value::time(DateTime::fromSeconds(seconds));
}

Value timeValue(const Number& seconds) {
    if (!(std::fabs(seconds.toDouble()) <= kLargestTime)) return questionMark();
    return Value::time(DateTime::fromSeconds(seconds));
}

Value durationValue(const Number& seconds) {
    if (!(std::fabs(seconds.toDouble()) <= kLargestTime)) return questionMark();
    return Value::duration(DateTime::fromSeconds(seconds));
}

Value timeLike(const Value& model, const Number& seconds) {
    return model.isDuration() ? durationValue(seconds) : timeValue(seconds);
}

Number midnightOf(const Value& date) {
    return Number::fromInt((date.dateTimeValue().days() - 1) *
                           static_cast<int64_t>(kSecondsPerDay));
}

Value timestampValue(const Number& seconds) {
    const double s = seconds.toDouble();
    if (!(s >= 0 && s < static_cast<double>(kLastDay) * kSecondsPerDay)) return questionMark();
    return Value::timestamp(DateTime::fromSeconds(seconds));
}

Value timestampValue(double seconds) {
    if (!(seconds >= 0 && seconds < static_cast<double>(kLastDay) * kSecondsPerDay)) {
        return questionMark();
    }
    return Value::timestamp(DateTime::fromSeconds(seconds));
}

}  // namespace sim::calc

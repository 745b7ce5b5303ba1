#include "sim/calc/operators.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/temporal.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

bool isTemporal(Type t) { return t == Type::Date || t == Type::Time || t == Type::Timestamp; }

double numberOf(const Value& v) {
    const double d = v.asNumber().value;
    return std::isnan(d) ? 0 : d;
}

// Sums and differences that keep a date, time or timestamp type:
//   date ± number = date (days)         date − date = number of days
//   time ± number = time (seconds)      time ± time = time
//   timestamp ± number = timestamp      timestamp − timestamp = number of seconds
//   timestamp ± time = timestamp        date + time = timestamp
// A number on the left of "+" works like one on the right. Anything else is plain arithmetic.
std::optional<Value> temporalSum(Op op, const Value& a, const Value& b) {
    const Type ta = a.type();
    const Type tb = b.type();
    if (!isTemporal(ta) && !isTemporal(tb)) return std::nullopt;
    const double sign = op == Op::Sub ? -1 : 1;
    const double x = numberOf(a);
    const double y = numberOf(b);
    if (op == Op::Add && !isTemporal(ta)) return temporalSum(op, b, a);
    if (ta == Type::Date && !isTemporal(tb)) return dateValue(x + sign * std::floor(y));
    if (ta == Type::Date && tb == Type::Date && op == Op::Sub) return numberValue(x - y);
    if (ta == Type::Timestamp && !isTemporal(tb)) return timestampValue(x + sign * y);
    if (ta == Type::Timestamp && tb == Type::Time) return timestampValue(x + sign * y);
    if (ta == Type::Timestamp && tb == Type::Timestamp && op == Op::Sub) {
        return numberValue(x - y);
    }
    if (ta == Type::Time && (tb == Type::Time || !isTemporal(tb))) return timeValue(x + sign * y);
    if (op == Op::Add && ta == Type::Date && tb == Type::Time) {
        return timestampValue((x - 1) * kSecondsPerDay + y);
    }
    if (op == Op::Add && ta == Type::Time && tb == Type::Date) {
        return timestampValue((y - 1) * kSecondsPerDay + x);
    }
    return std::nullopt;
}

Value arithmetic(Op op, const Value& a, const Value& b) {
    if (op == Op::Add || op == Op::Sub) {
        if (std::optional<Value> v = temporalSum(op, a, b)) return *v;
    }
    const double x = numberOf(a);
    const double y = numberOf(b);
    switch (op) {
        case Op::Add:
            return numberValue(x + y);
        case Op::Sub:
            return numberValue(x - y);
        case Op::Mul:
            return numberValue(x * y);
        case Op::Div:
            return y == 0 ? questionMark() : numberValue(x / y);
        default:
            return numberValue(std::pow(x, y));
    }
}

bool isTextLike(const Value& v) { return v.type() == Type::Text || v.type() == Type::Invalid; }

// Texts compare ignoring case (code unit order of the lower-cased texts).
int compareTexts(const Value& a, const Value& b) {
    const std::u16string x = toLower(a.asText().units());
    const std::u16string y = toLower(b.asText().units());
    return x.compare(y) < 0 ? -1 : (x == y ? 0 : 1);
}

// A date compared with a timestamp counts as its midnight.
double comparable(const Value& v, const Value& other) {
    if (v.type() == Type::Date && other.type() == Type::Timestamp) {
        return (numberOf(v) - 1) * kSecondsPerDay;
    }
    return decimalClean(numberOf(v));
}

int compareValues(const Value& a, const Value& b) {
    if (isTextLike(a) && isTextLike(b)) return compareTexts(a, b);
    const double x = comparable(a, b);
    const double y = comparable(b, a);
    return x < y ? -1 : (x > y ? 1 : 0);
}

}  // namespace

double decimalClean(double d) {
    if (!std::isfinite(d) || std::fabs(d) >= 1e15 || d == 0) return d;
    char buffer[64];
    const auto printed =
        std::to_chars(buffer, buffer + sizeof buffer, d, std::chars_format::scientific, 14);
    double cleaned = d;
    std::from_chars(buffer, printed.ptr, cleaned);
    return cleaned;
}

Value applyBinary(Op op, const Value& left, const Value& right) {
    switch (op) {
        case Op::Eq:
            return booleanValue(compareValues(left, right) == 0);
        case Op::Ne:
            return booleanValue(compareValues(left, right) != 0);
        case Op::Lt:
            return booleanValue(compareValues(left, right) < 0);
        case Op::Le:
            return booleanValue(compareValues(left, right) <= 0);
        case Op::Gt:
            return booleanValue(compareValues(left, right) > 0);
        case Op::Ge:
            return booleanValue(compareValues(left, right) >= 0);
        default:
            return arithmetic(op, left, right);
    }
}

void appendTextOf(Text& out, const Value& v) {
    if (v.type() == Type::Text) {
        if (out.size() + static_cast<uint64_t>(v.textValue().size()) > kMaxTextUnits) {
            raise(kGenericError);
        }
        out.append(v.textValue());
        return;
    }
    const Text t = v.asText();
    if (out.size() + static_cast<uint64_t>(t.size()) > kMaxTextUnits) raise(kGenericError);
    out.append(t);
}

}  // namespace sim::calc

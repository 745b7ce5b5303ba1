#include "sim/calc/operators.h"

#include <cmath>
#include <optional>

#include "sim/calc/builtins.h"
#include "sim/calc/errors.h"
#include "sim/calc/temporal.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

bool isTemporal(Type t) { return t == Type::Date || t == Type::Time || t == Type::Timestamp; }

// An empty value reads as 0.
Number numberOf(const Value& v) {
    Number n = v.asNumber();
    if (n.empty) return Number{};
    return n;
}

// A time or timestamp of `seconds`; "?" when the arithmetic before left the range.
template <class Make>
Value temporalOf(const std::optional<Number>& seconds, Make make) {
    return seconds ? make(*seconds) : questionMark();
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
    if (op == Op::Add && !isTemporal(ta)) return temporalSum(op, b, a);
    const Number x = numberOf(a);
    const Number y = numberOf(b);
    const auto combined = [&](const Number& u, const Number& v) {
        return op == Op::Sub ? subtract(u, v) : add(u, v);
    };
    const auto makeTime = [](const Number& s) { return timeValue(s); };
    const auto makeTimestamp = [](const Number& s) { return timestampValue(s); };
    if (ta == Type::Date && !isTemporal(tb)) {
        const double days = floorOf(y).toDouble();
        return dateValue(x.toDouble() + (op == Op::Sub ? -days : days));
    }
    if (ta == Type::Date && tb == Type::Date && op == Op::Sub) return numberValue(subtract(x, y));
    if (ta == Type::Timestamp && (tb == Type::Time || !isTemporal(tb))) {
        return temporalOf(combined(x, y), makeTimestamp);
    }
    if (ta == Type::Timestamp && tb == Type::Timestamp && op == Op::Sub) {
        return numberValue(subtract(x, y));
    }
    if (ta == Type::Time && (tb == Type::Time || !isTemporal(tb))) {
        return temporalOf(combined(x, y), makeTime);
    }
    // date + time: the seconds before the date's midnight, plus the time's
    const auto midnightPlus = [](const Value& date, const Number& seconds) {
        const Number before = Number::fromInt((date.dateTimeValue().days() - 1) *
                                              static_cast<int64_t>(kSecondsPerDay));
        return add(before, seconds);
    };
    if (op == Op::Add && ta == Type::Date && tb == Type::Time) {
        return temporalOf(midnightPlus(a, y), makeTimestamp);
    }
    if (op == Op::Add && ta == Type::Time && tb == Type::Date) {
        return temporalOf(midnightPlus(b, x), makeTimestamp);
    }
    return std::nullopt;
}

Value arithmetic(Op op, const Value& a, const Value& b, int places) {
    if (op == Op::Add || op == Op::Sub) {
        if (std::optional<Value> v = temporalSum(op, a, b)) return *v;
    }
    const Number x = numberOf(a);
    const Number y = numberOf(b);
    switch (op) {
        case Op::Add:
            return numberValue(add(x, y));
        case Op::Sub:
            return numberValue(subtract(x, y));
        case Op::Mul:
            return numberValue(multiply(x, y));
        case Op::Div:
            return numberValue(divide(x, y, places));
        default:
            return numberValue(power(x, y, places));
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
Number comparable(const Value& v, const Value& other) {
    if (v.type() == Type::Date && other.type() == Type::Timestamp) {
        return Number::fromInt((v.dateTimeValue().days() - 1) *
                               static_cast<int64_t>(kSecondsPerDay));
    }
    return numberOf(v);
}

int compareValues(const Value& a, const Value& b) {
    if (isTextLike(a) && isTextLike(b)) return compareTexts(a, b);
    return compareNumbers(comparable(a, b), comparable(b, a));
}

}  // namespace

Value applyBinary(Op op, const Value& left, const Value& right, int places) {
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
            return arithmetic(op, left, right, places);
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

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

Value orQuestionMark(const std::optional<Number>& n, Value (*make)(const Number&)) {
    return n ? make(*n) : questionMark();
}

Value makeTime(const Number& s) { return timeValue(s); }
Value makeElapsed(const Number& s) { return durationValue(s); }
Value makeTimestamp(const Number& s) { return timestampValue(s); }

std::optional<Number> combined(bool sub, const Number& u, const Number& v) {
    return sub ? subtract(u, v) : add(u, v);
}

// date ± number = date (whole days); time ± number = time of the same kind;
// timestamp ± number = timestamp.
Value temporalAndNumber(bool sub, const Value& a, const Number& y) {
    const Number x = numberOf(a);
    switch (a.type()) {
        case Type::Date: {
            const double days = floorOf(y).toDouble();
            return dateValue(x.toDouble() + (sub ? -days : days));
        }
        case Type::Time: {
            const std::optional<Number> s = combined(sub, x, y);
            return s ? timeLike(a, *s) : questionMark();
        }
        default:
            return orQuestionMark(combined(sub, x, y), makeTimestamp);
    }
}

// Two dates, times or timestamps:
//   time − time = elapsed time; time + time = time (elapsed when both are)
//   date − date = number of days
//   timestamp ± time, time + timestamp = timestamp
//   date + time, time + date, date − time = timestamp
//   timestamp − timestamp = elapsed time, a date counting as its midnight
// Other pairs have no type of their own (nullopt).
std::optional<Value> twoTemporals(bool sub, const Value& a, const Value& b) {
    const Type ta = a.type();
    const Type tb = b.type();
    const Number x = numberOf(a);
    const Number y = numberOf(b);
    if (ta == Type::Time && tb == Type::Time) {
        if (sub || (a.isDuration() && b.isDuration())) {
            return orQuestionMark(combined(sub, x, y), makeElapsed);
        }
        return orQuestionMark(add(x, y), makeTime);
    }
    if (ta == Type::Date && tb == Type::Date) {
        if (sub) return numberValue(subtract(x, y));
        return std::nullopt;
    }
    if (ta == Type::Timestamp && tb == Type::Time) {
        return orQuestionMark(combined(sub, x, y), makeTimestamp);
    }
    if (ta == Type::Date && tb == Type::Time) {
        return orQuestionMark(combined(sub, midnightOf(a), y), makeTimestamp);
    }
    if (!sub && ta == Type::Time && tb == Type::Timestamp) {
        return orQuestionMark(add(x, y), makeTimestamp);
    }
    if (!sub && ta == Type::Time && tb == Type::Date) {
        return orQuestionMark(add(midnightOf(b), x), makeTimestamp);
    }
    const bool instants = ta != Type::Time && tb != Type::Time;
    if (sub && instants && (ta == Type::Timestamp || tb == Type::Timestamp)) {
        const Number from = ta == Type::Date ? midnightOf(a) : x;
        const Number to = tb == Type::Date ? midnightOf(b) : y;
        return orQuestionMark(subtract(from, to), makeElapsed);
    }
    return std::nullopt;
}

// Sums and differences that keep a date, time or timestamp type; a number on the left of "+"
// works like one on the right. Anything else is plain arithmetic on the numbers.
std::optional<Value> temporalSum(Op op, const Value& a, const Value& b) {
    const bool sub = op == Op::Sub;
    if (isTemporal(a.type()) && isTemporal(b.type())) return twoTemporals(sub, a, b);
    if (isTemporal(a.type())) return temporalAndNumber(sub, a, numberOf(b));
    if (!sub && isTemporal(b.type())) return temporalAndNumber(false, b, numberOf(a));
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
    if (v.type() == Type::Date && other.type() == Type::Timestamp) return midnightOf(v);
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

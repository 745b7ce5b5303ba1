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

// Sums and differences that keep a date, time or timestamp type:
//   date ± number = date (whole days)      date − date = number of days
//   time ± number = time                   time − time = elapsed time
//   time + time = time (elapsed when both are)
//   timestamp ± number = timestamp         timestamp ± time = timestamp
//   timestamp − timestamp = elapsed time   date + time, date − time = timestamp
// A number on the left of "+" works like one on the right; in differences with a timestamp a
// date counts as its midnight. Anything else is plain arithmetic on the numbers.
std::optional<Value> temporalSum(Op op, const Value& a, const Value& b) {
    const Type ta = a.type();
    const Type tb = b.type();
    if (op == Op::Add && !isTemporal(ta) && isTemporal(tb)) return temporalSum(op, b, a);
    if (!isTemporal(ta)) return std::nullopt;
    const bool sub = op == Op::Sub;
    const auto combined = [sub](const Number& u, const Number& v) {
        return sub ? subtract(u, v) : add(u, v);
    };
    const auto orQuestionMark = [](const std::optional<Number>& n, auto make) {
        return n ? make(*n) : questionMark();
    };
    const Number x = numberOf(a);
    const Number y = numberOf(b);
    if (!isTemporal(tb)) {
        switch (ta) {
            case Type::Date: {
                const double days = floorOf(y).toDouble();
                return dateValue(x.toDouble() + (sub ? -days : days));
            }
            case Type::Time:
                return orQuestionMark(combined(x, y),
                                      [&a](const Number& s) { return timeLike(a, s); });
            default:
                return orQuestionMark(combined(x, y),
                                      [](const Number& s) { return timestampValue(s); });
        }
    }
    const auto timestamp = [](const Number& s) { return timestampValue(s); };
    const auto elapsed = [](const Number& s) { return durationValue(s); };
    if (ta == Type::Time && tb == Type::Time) {
        if (sub || (a.isDuration() && b.isDuration()))
            return orQuestionMark(combined(x, y), elapsed);
        return orQuestionMark(add(x, y), [](const Number& s) { return timeValue(s); });
    }
    if (ta == Type::Date && tb == Type::Date) {
        return sub ? std::optional<Value>(numberValue(subtract(x, y))) : std::nullopt;
    }
    if (ta == Type::Timestamp && tb == Type::Time) return orQuestionMark(combined(x, y), timestamp);
    if (ta == Type::Time && tb == Type::Timestamp && !sub)
        return orQuestionMark(add(x, y), timestamp);
    if (ta == Type::Date && tb == Type::Time) {
        return orQuestionMark(combined(midnightOf(a), y), timestamp);
    }
    if (ta == Type::Time && tb == Type::Date && !sub) {
        return orQuestionMark(add(midnightOf(b), x), timestamp);
    }
    if (sub && (ta == Type::Timestamp || tb == Type::Timestamp) && ta != Type::Time &&
        tb != Type::Time) {
        const Number from = ta == Type::Date ? midnightOf(a) : x;
        const Number to = tb == Type::Date ? midnightOf(b) : y;
        return orQuestionMark(subtract(from, to), elapsed);
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

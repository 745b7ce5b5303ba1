// Number functions on the host's decimal numbers. Exact where the result is a decimal (Round,
// Int, Mod, Sum, ...); divisions, roots, logarithms, powers and angles rounded half away from zero
// to the current precision (16 decimals, or SetPrecision's).
#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "sim/calc/builtins.h"
#include "sim/calc/evaluator.h"
#include "sim/calc/operators.h"
#include "sim/calc/temporal.h"

namespace sim::calc {

namespace {

// Applies f to the one number argument; an empty number stays empty.
template <class F>
Value unary(Args& a, F f) {
    if (a.emptyNumber(0)) return Value::number(Number::none());
    return numberValue(f(a.decimal(0)));
}

// The result of a rounding function on a date, time or timestamp has that type again (FileMaker's
// Abs returns a number or a time); beyond the type's range it is "?".
Value sameKindAs(const Value& model, const std::optional<Number>& n) {
    if (!n) return questionMark();
    switch (model.type()) {
        case Type::Date:
            return dateValue(n->toDouble());
        case Type::Time:
            return timeLike(model, *n);
        case Type::Timestamp:
            return timestampValue(*n);
        default:
            return Value::number(*n);
    }
}

// Applies f to the one number argument keeping a date, time or timestamp type.
template <class F>
Value keepingType(Args& a, F f) {
    if (a.emptyNumber(0)) return Value::number(Number::none());
    return sameKindAs(a[0], f(a.decimal(0)));
}

template <MathFunction F>
Value math(Args& a) {
    const int places = a.precision();
    return unary(a, [places](const Number& x) { return apply(F, x, places); });
}

Value fnGetAsNumber(Args& a) { return Value::number(a[0].asNumber()); }
Value fnAbs(Args& a) {
    return keepingType(a, [](const Number& x) { return std::optional<Number>(absolute(x)); });
}
Value fnInt(Args& a) {
    return keepingType(
        a, [](const Number& x) { return std::optional<Number>(roundedTo(x, 0, true)); });
}
Value fnFloor(Args& a) {
    return keepingType(a, [](const Number& x) { return std::optional<Number>(floorOf(x)); });
}
Value fnCeiling(Args& a) {
    return keepingType(a, [](const Number& x) { return std::optional<Number>(ceilingOf(x)); });
}
Value fnSign(Args& a) {
    return unary(a, [](const Number& x) {
        return std::optional<Number>(Number::fromInt(x.isZero() ? 0 : (x.isNegative() ? -1 : 1)));
    });
}

long placesOf(double d) { return static_cast<long>(std::clamp(std::trunc(d), -2000.0, 2000.0)); }

Value fnRound(Args& a) {
    const long places = placesOf(a.number(1));
    return keepingType(
        a, [places](const Number& x) { return std::optional<Number>(roundedTo(x, places)); });
}
Value fnTruncate(Args& a) {
    const long places = placesOf(a.number(1));
    return keepingType(
        a, [places](const Number& x) { return std::optional<Number>(roundedTo(x, places, true)); });
}

// Mod takes the sign of the divisor: Mod ( -7 ; 3 ) is 2. Division by zero gives "?". The rest
// of a time is a time of the same kind, of a timestamp a time of day.
Value fnMod(Args& a) {
    const Number n = a.decimal(0);
    const Number d = a.decimal(1);
    const std::optional<Number> q = divideFloor(n, d);
    if (!q) return questionMark();
    const std::optional<Number> product = multiply(d, *q);
    const std::optional<Number> rest = product ? subtract(n, *product) : std::nullopt;
    if (rest && a[0].type() == Type::Time) return timeLike(a[0], *rest);
    if (rest && a[0].type() == Type::Timestamp) return timeValue(*rest);
    return numberValue(rest);
}

Value fnDiv(Args& a) { return numberValue(divideFloor(a.decimal(0), a.decimal(1))); }

// A whole number argument of at least `least`; nullopt for fractions and smaller numbers.
std::optional<Number> wholeAtLeast(const Number& n, int least) {
    if (!n.isInteger() || compareNumbers(n, Number::fromInt(least)) < 0) return std::nullopt;
    return n;
}

// Factorial ( number { ; numberOfFactors } ): number x (number - 1) x ..., numberOfFactors
// factors at most; 0! is 1. Negative numbers and fractions give "?", and so does a product that
// reaches 10^400 (which happens within some 1400 factors, so the loop is short).
Value fnFactorial(Args& a) {
    const std::optional<Number> n = wholeAtLeast(a.decimal(0), 0);
    std::optional<Number> limit = n;
    if (a.has(1) && !a.emptyNumber(1)) limit = wholeAtLeast(a.decimal(1), 0);
    if (!n || !limit) return questionMark();
    const Number one = Number::fromInt(1);
    std::optional<Number> product = one;
    Number factor = *n;
    for (Number count;
         product && compareNumbers(count, *limit) < 0 && compareNumbers(factor, one) > 0;
         count = *add(count, one)) {
        product = multiply(*product, factor);
        factor = *subtract(factor, one);
    }
    return numberValue(product);
}

// Combination ( setSize ; numberOfChoices ): the ways to choose that many of the set, ignoring
// order. Negative numbers and fractions give "?"; more choices than the set holds give 0.
Value fnCombination(Args& a) {
    const std::optional<Number> n = wholeAtLeast(a.decimal(0), 0);
    std::optional<Number> k = wholeAtLeast(a.decimal(1), 0);
    if (!n || !k) return questionMark();
    if (compareNumbers(*k, *n) > 0) return Value::number(Number{});
    const Number rest = *subtract(*n, *k);
    if (compareNumbers(rest, *k) < 0) k = rest;
    // C(n, i + 1) = C(n, i) x (n - i) / (i + 1), each quotient whole; the result grows at least
    // twofold per step while i < k <= n / 2, so it leaves the range within some 1400 steps.
    const Number one = Number::fromInt(1);
    std::optional<Number> result = one;
    for (Number i; result && compareNumbers(i, *k) < 0; i = *add(i, one)) {
        const std::optional<Number> product = multiply(*result, *subtract(*n, i));
        result = product ? divide(*product, *add(i, one), 0) : std::nullopt;
    }
    return numberValue(result);
}

Value fnPi(Args& a) { return Value::number(pi(a.precision())); }

// Sixteen random decimals, 0 <= x < 1.
Value fnRandom(Args&) {
    std::random_device device;
    std::uniform_int_distribution<int64_t> sixteenDigits(0, 9999999999999999);
    return Value::number(Number::fromScaled(sixteenDigits(device), -16));
}

// SetPrecision ( expression ; precision ): the expression's divisions, roots and the like to
// 16 .. 400 decimals; the enclosing precision comes back afterwards.
Value fnSetPrecision(Evaluator& ev, const std::vector<NodePtr>& args) {
    const Number requested = ev.eval(*args[1]).asNumber();
    const double places = requested.empty ? 16 : std::trunc(requested.toDouble());
    const int outer = ev.precision();
    ev.setPrecision(static_cast<int>(std::clamp(places, 16.0, 400.0)));
    struct Restore {
        Evaluator& ev;
        int places;
        ~Restore() { ev.setPrecision(places); }
    } restore{ev, outer};
    return ev.eval(*args[0]);
}

constexpr Builtin kFunctions[] = {
    {u"getasnumber", 1, 1, fnGetAsNumber},
    {u"abs", 1, 1, fnAbs},
    {u"int", 1, 1, fnInt},
    {u"floor", 1, 1, fnFloor},
    {u"ceiling", 1, 1, fnCeiling},
    {u"sign", 1, 1, fnSign},
    {u"exp", 1, 1, math<MathFunction::Exp>},
    {u"sqrt", 1, 1, math<MathFunction::Sqrt>},
    {u"ln", 1, 1, math<MathFunction::Ln>},
    {u"log", 1, 1, math<MathFunction::Log>},
    {u"lg", 1, 1, math<MathFunction::Lg>},
    {u"sin", 1, 1, math<MathFunction::Sin>},
    {u"cos", 1, 1, math<MathFunction::Cos>},
    {u"tan", 1, 1, math<MathFunction::Tan>},
    {u"atan", 1, 1, math<MathFunction::Atan>},
    {u"asin", 1, 1, math<MathFunction::Asin>},
    {u"acos", 1, 1, math<MathFunction::Acos>},
    {u"degrees", 1, 1, math<MathFunction::Degrees>},
    {u"radians", 1, 1, math<MathFunction::Radians>},
    {u"round", 2, 2, fnRound},
    {u"truncate", 2, 2, fnTruncate},
    {u"mod", 2, 2, fnMod},
    {u"div", 2, 2, fnDiv},
    {u"factorial", 1, 2, fnFactorial},
    {u"combination", 2, 2, fnCombination},
    {u"pi", 0, 0, fnPi},
    {u"random", 0, 0, fnRandom},
    {u"setprecision", 2, 2, nullptr, fnSetPrecision},
};

}  // namespace

std::span<const Builtin> numberFunctions() { return kFunctions; }

}  // namespace sim::calc

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

namespace sim::calc {

namespace {

// Applies f to the one number argument; an empty number stays empty.
template <class F>
Value unary(Args& a, F f) {
    if (a.emptyNumber(0)) return Value::number(Number::none());
    return numberValue(f(a.decimal(0)));
}

template <MathFunction F>
Value math(Args& a) {
    const int places = a.precision();
    return unary(a, [places](const Number& x) { return apply(F, x, places); });
}

Value fnGetAsNumber(Args& a) { return Value::number(a[0].asNumber()); }
Value fnAbs(Args& a) {
    return unary(a, [](const Number& x) { return std::optional<Number>(absolute(x)); });
}
Value fnInt(Args& a) {
    return unary(a, [](const Number& x) { return std::optional<Number>(roundedTo(x, 0, true)); });
}
Value fnFloor(Args& a) {
    return unary(a, [](const Number& x) { return std::optional<Number>(floorOf(x)); });
}
Value fnCeiling(Args& a) {
    return unary(a, [](const Number& x) { return std::optional<Number>(ceilingOf(x)); });
}
Value fnSign(Args& a) {
    return unary(a, [](const Number& x) {
        return std::optional<Number>(Number::fromInt(x.isZero() ? 0 : (x.isNegative() ? -1 : 1)));
    });
}

long placesOf(double d) { return static_cast<long>(std::clamp(std::trunc(d), -2000.0, 2000.0)); }

Value fnRound(Args& a) {
    const long places = placesOf(a.number(1));
    return unary(a,
                 [places](const Number& x) { return std::optional<Number>(roundedTo(x, places)); });
}
Value fnTruncate(Args& a) {
    const long places = placesOf(a.number(1));
    return unary(
        a, [places](const Number& x) { return std::optional<Number>(roundedTo(x, places, true)); });
}

// Mod takes the sign of the divisor: Mod ( -7 ; 3 ) is 2. Division by zero gives "?".
Value fnMod(Args& a) {
    const Number n = a.decimal(0);
    const Number d = a.decimal(1);
    const std::optional<Number> q = divideFloor(n, d);
    if (!q) return questionMark();
    const std::optional<Number> product = multiply(d, *q);
    return numberValue(product ? subtract(n, *product) : std::nullopt);
}

Value fnDiv(Args& a) { return numberValue(divideFloor(a.decimal(0), a.decimal(1))); }

// Min and Max skip empty arguments and keep the winner's type when it is a date, time or
// timestamp.
template <class Better>
Value extreme(Args& a, Better better) {
    const Value* best = nullptr;
    Number bestNumber;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a.emptyNumber(i)) continue;
        Number n = a.decimal(i);
        if (best == nullptr || better(compareNumbers(n, bestNumber))) {
            best = &a[i];
            bestNumber = std::move(n);
        }
    }
    if (best == nullptr) return Value::number(Number::none());
    const Type t = best->type();
    if (t == Type::Date || t == Type::Time || t == Type::Timestamp) return *best;
    bestNumber.precision = 16;
    return Value::number(bestNumber);
}

Value fnMin(Args& a) {
    return extreme(a, [](int c) { return c < 0; });
}
Value fnMax(Args& a) {
    return extreme(a, [](int c) { return c > 0; });
}

Value fnSum(Args& a) {
    std::optional<Number> total = Number{};
    for (size_t i = 0; i < a.size() && total; ++i) total = add(*total, a.decimal(i));
    return numberValue(total);
}

Value fnAverage(Args& a) {
    std::optional<Number> total = Number{};
    int64_t count = 0;
    for (size_t i = 0; i < a.size() && total; ++i) {
        if (a.emptyNumber(i)) continue;
        total = add(*total, a.decimal(i));
        ++count;
    }
    if (count == 0) return Value::number(Number::none());
    if (!total) return questionMark();
    return numberValue(divide(*total, Number::fromInt(count), a.precision()));
}

Value fnCount(Args& a) {
    int64_t count = 0;
    for (size_t i = 0; i < a.size(); ++i) count += a[i].isEmpty() ? 0 : 1;
    return Value::number(Number::fromInt(count));
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
    {u"min", 1, -1, fnMin},
    {u"max", 1, -1, fnMax},
    {u"sum", 1, -1, fnSum},
    {u"average", 1, -1, fnAverage},
    {u"count", 1, -1, fnCount},
    {u"pi", 0, 0, fnPi},
    {u"random", 0, 0, fnRandom},
    {u"setprecision", 2, 2, nullptr, fnSetPrecision},
};

}  // namespace

std::span<const Builtin> numberFunctions() { return kFunctions; }

}  // namespace sim::calc

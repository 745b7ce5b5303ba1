// Number functions. Rounding works on the decimal form of the number (15 significant digits),
// as the host's decimal arithmetic would: Round ( 1.005 ; 2 ) is 1.01.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <string>

#include "sim/calc/builtins.h"
#include "sim/calc/operators.h"

namespace sim::calc {

namespace {

// v rounded half away from zero (or truncated) to `places` decimals; negative places round to
// tens, hundreds, ...
double roundDecimal(double v, double places, bool truncate) {
    if (!std::isfinite(v) || v == 0) return v;
    const int p = static_cast<int>(std::clamp(std::trunc(places), -400.0, 400.0));
    char buffer[64];
    const auto printed = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(v),
                                       std::chars_format::scientific, 14);
    const std::string text(buffer, printed.ptr);
    const size_t e = text.find('e');
    std::string digits = text.substr(0, 1) + text.substr(2, e - 2);
    const char* exponentStart = text.data() + e + 1 + (text[e + 1] == '+' ? 1 : 0);
    int exponent = 0;
    std::from_chars(exponentStart, text.data() + text.size(), exponent);
    const long keep = static_cast<long>(exponent) + p + 1;  // digits at or above 10^-p
    if (keep >= static_cast<long>(digits.size())) return v;
    if (keep < 0) return 0;
    const bool up = !truncate && digits[static_cast<size_t>(keep)] >= '5';
    long long n = 0;
    for (long i = 0; i < keep; ++i) n = n * 10 + (digits[static_cast<size_t>(i)] - '0');
    if (up) ++n;
    const std::string scaled = std::to_string(n) + "e" + std::to_string(-p);
    double result = 0;
    std::from_chars(scaled.data(), scaled.data() + scaled.size(), result);
    return v < 0 ? -result : result;
}

// Applies f to the one number argument; an empty number stays empty.
template <class F>
Value unary(Args& a, F f) {
    if (a.emptyNumber(0)) return Value::number(Number{0, true});
    return numberValue(f(a.number(0)));
}

Value fnGetAsNumber(Args& a) { return Value::number(a[0].asNumber()); }
Value fnAbs(Args& a) {
    return unary(a, [](double x) { return std::fabs(x); });
}
Value fnInt(Args& a) {
    return unary(a, [](double x) { return std::trunc(decimalClean(x)); });
}
Value fnFloor(Args& a) {
    return unary(a, [](double x) { return std::floor(decimalClean(x)); });
}
Value fnCeiling(Args& a) {
    return unary(a, [](double x) { return std::ceil(decimalClean(x)); });
}
Value fnSign(Args& a) {
    return unary(a, [](double x) { return static_cast<double>((x > 0) - (x < 0)); });
}
Value fnExp(Args& a) {
    return unary(a, [](double x) { return std::exp(x); });
}
Value fnSqrt(Args& a) {
    return unary(a, [](double x) { return x < 0 ? NAN : std::sqrt(x); });
}
Value fnLn(Args& a) {
    return unary(a, [](double x) { return x <= 0 ? NAN : std::log(x); });
}
Value fnLog(Args& a) {
    return unary(a, [](double x) { return x <= 0 ? NAN : std::log10(x); });
}
Value fnRound(Args& a) {
    const double places = a.number(1);
    return unary(a, [places](double x) { return roundDecimal(x, places, false); });
}
Value fnTruncate(Args& a) {
    const double places = a.number(1);
    return unary(a, [places](double x) { return roundDecimal(x, places, true); });
}

// Mod takes the sign of the divisor: Mod ( -7 ; 3 ) is 2. Division by zero gives "?".
Value fnMod(Args& a) {
    const double n = a.number(0);
    const double d = a.number(1);
    if (d == 0) return questionMark();
    double r = n - d * std::floor(decimalClean(n / d));
    if (std::fabs(r) < std::max(std::fabs(n), std::fabs(d)) * 1e-14) r = 0;
    return numberValue(decimalClean(r));
}

Value fnDiv(Args& a) {
    const double d = a.number(1);
    if (d == 0) return questionMark();
    return numberValue(std::floor(decimalClean(a.number(0) / d)));
}

// Min and Max skip empty arguments and keep the winner's type when it is a date, time or
// timestamp.
template <class Better>
Value extreme(Args& a, Better better) {
    const Value* best = nullptr;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a.emptyNumber(i)) continue;
        if (best == nullptr || better(a[i].asNumber().value, best->asNumber().value)) best = &a[i];
    }
    if (best == nullptr) return Value::number(Number{0, true});
    const Type t = best->type();
    if (t == Type::Date || t == Type::Time || t == Type::Timestamp) return *best;
    return numberValue(best->asNumber().value);
}

Value fnMin(Args& a) {
    return extreme(a, [](double x, double y) { return x < y; });
}
Value fnMax(Args& a) {
    return extreme(a, [](double x, double y) { return x > y; });
}

Value fnSum(Args& a) {
    double total = 0;
    for (size_t i = 0; i < a.size(); ++i) total += a.number(i);
    return numberValue(total);
}

Value fnAverage(Args& a) {
    double total = 0;
    double count = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a.emptyNumber(i)) continue;
        total += a.number(i);
        ++count;
    }
    return count == 0 ? Value::number(Number{0, true}) : numberValue(total / count);
}

Value fnCount(Args& a) {
    double count = 0;
    for (size_t i = 0; i < a.size(); ++i) count += a[i].isEmpty() ? 0 : 1;
    return Value::number(count);
}

Value fnPi(Args&) { return Value::number(std::numbers::pi); }

constexpr Builtin kFunctions[] = {
    {u"getasnumber", 1, 1, fnGetAsNumber},
    {u"abs", 1, 1, fnAbs},
    {u"int", 1, 1, fnInt},
    {u"floor", 1, 1, fnFloor},
    {u"ceiling", 1, 1, fnCeiling},
    {u"sign", 1, 1, fnSign},
    {u"exp", 1, 1, fnExp},
    {u"sqrt", 1, 1, fnSqrt},
    {u"ln", 1, 1, fnLn},
    {u"log", 1, 1, fnLog},
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
};

}  // namespace

std::span<const Builtin> numberFunctions() { return kFunctions; }

}  // namespace sim::calc

// FM_FixPt_*: the host's decimal numbers with the precision a plug-in gives them (16 decimals
// by default), which division rounds to. An empty number (the number of a text without digits)
// reads as 0 in arithmetic and comparisons.
#include <algorithm>
#include <cmath>
#include <limits>

#include "sim/abi/guard.h"

using namespace sim;
using namespace sim::abi;

namespace {

constexpr int kMaxPrecision = 400;
// What Divide answers for a zero divisor (the result is left as it was).
constexpr fmx::errcode kDivisionByZero = 1;

// Takes the value, keeping the number's precision.
void setValue(Number& n, const Number& v) {
    n.value = v.value;
    n.empty = false;
}

// A result beyond the host's range leaves the number as it was.
void setValue(Number& n, const std::optional<Number>& v) {
    if (v) setValue(n, *v);
}

int clampedPrecision(int precision) { return std::clamp(precision, 0, kMaxPrecision); }

// Truncates toward zero, saturating at the integer type's limits (NaN gives 0).
template <class Int>
Int truncated(const Number& n) {
    const double v = roundedTo(n, 0, true).toDouble();
    if (v >= static_cast<double>(std::numeric_limits<Int>::max())) {
        return std::numeric_limits<Int>::max();
    }
    if (v <= static_cast<double>(std::numeric_limits<Int>::min())) {
        return std::numeric_limits<Int>::min();
    }
    if (std::fabs(v) < 9007199254740992.0) return static_cast<Int>(v);
    // Beyond 2^53 the double is not the integer: its digits are.
    const decimal::Digits& d = n.value;
    Int r = 0;
    for (int k = 0; k < d.point; ++k) {
        const size_t i = static_cast<size_t>(k);
        r = static_cast<Int>(r * 10 + (i < d.digits.size() ? d.digits[i] - '0' : 0));
    }
    return d.negative ? static_cast<Int>(-r) : r;
}

template <class Compare>
bool compare(const void* self, const fmx::FixPt& that, Compare cmp) {
    return cmp(compareNumbers(abi::self<Number>(self), arg(that)), 0);
}

template <class Op>
void arithmetic(const void* self, const fmx::FixPt& argument, fmx::FixPt& result, Op op) {
    setValue(arg(result), op(abi::self<Number>(self), arg(argument)));
}

}  // namespace

extern "C" {

fmx::FixPt* FM_FixPt_Constructor1(fmx::int32 val, int precision, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        Number* n = new Number(Number::fromInt(val));
        n->precision = clampedPrecision(precision);
        return handleOf(n);
    });
}

fmx::FixPt* FM_FixPt_Constructor2(fmx::int32 val, const fmx::FixPt& precisionExample,
                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const int precision = arg(precisionExample).precision;
        Number* n = new Number(Number::fromInt(val));
        n->precision = precision;
        return handleOf(n);
    });
}

void FM_FixPt_Delete(void* self, _fmxcpt& x) noexcept {
    guardRelease(__func__, x, [&] { delete static_cast<Number*>(self); });
}

void FM_FixPt_AssignInt(void* self, fmx::int32 that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setValue(abi::self<Number>(self), Number::fromInt(that)); });
}

void FM_FixPt_AssignInt64(void* self, fmx::int64 that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setValue(abi::self<Number>(self), Number::fromInt(that)); });
}

// The double's shortest decimal form: 0.1 is 0.1. Infinities and NaN give 0.
void FM_FixPt_AssignDouble(void* self, double that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setValue(abi::self<Number>(self), Number::fromDouble(that)); });
}

// Takes the value (and its emptiness), keeping this number's precision.
void FM_FixPt_AssignFixPt(void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& n = abi::self<Number>(self);
        const Number& from = arg(that);
        n.value = from.value;
        n.empty = from.empty;
    });
}

bool FM_FixPt_operatorEQ(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](int c, int z) { return c == z; }); });
}

bool FM_FixPt_operatorNE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](int c, int z) { return c != z; }); });
}

bool FM_FixPt_operatorLT(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](int c, int z) { return c < z; }); });
}

bool FM_FixPt_operatorLE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](int c, int z) { return c <= z; }); });
}

bool FM_FixPt_operatorGT(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](int c, int z) { return c > z; }); });
}

bool FM_FixPt_operatorGE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](int c, int z) { return c >= z; }); });
}

void FM_FixPt_Increment(void* self, fmx::int32 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, add(v, Number::fromInt(n)));
    });
}

void FM_FixPt_Increment64(void* self, fmx::int64 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, add(v, Number::fromInt(n)));
    });
}

void FM_FixPt_Decrement(void* self, fmx::int32 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, subtract(v, Number::fromInt(n)));
    });
}

void FM_FixPt_Decrement64(void* self, fmx::int64 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, subtract(v, Number::fromInt(n)));
    });
}

void FM_FixPt_Negate(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, negated(v));
    });
}

int FM_FixPt_GetPrecision(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return abi::self<Number>(self).precision; });
}

void FM_FixPt_SetPrecision(void* self, int precision, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { abi::self<Number>(self).precision = clampedPrecision(precision); });
}

void FM_FixPt_Add(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                  _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        arithmetic(self, arg, result, [](const Number& a, const Number& b) { return add(a, b); });
    });
}

void FM_FixPt_Subtract(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                       _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        arithmetic(self, arg, result,
                   [](const Number& a, const Number& b) { return subtract(a, b); });
    });
}

void FM_FixPt_Multiply(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                       _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        arithmetic(self, arg, result,
                   [](const Number& a, const Number& b) { return multiply(a, b); });
    });
}

fmx::errcode FM_FixPt_Divide(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                             _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        abi::self<Number>(self);
        const Number& divisor = abi::arg(arg);
        if (divisor.empty || divisor.isZero()) {
            abi::arg(result);
            return kDivisionByZero;
        }
        const int places = abi::self<Number>(self).precision;
        arithmetic(self, arg, result,
                   [places](const Number& a, const Number& b) { return divide(a, b, places); });
        return 0;
    });
}

bool FM_FixPt_AsBool(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const Number& n = abi::self<Number>(self);
        return !n.empty && !n.isZero();
    });
}

fmx::int32 FM_FixPt_AsLong(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return truncated<fmx::int32>(abi::self<Number>(self)); });
}

fmx::int64 FM_FixPt_AsLong64(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return truncated<fmx::int64>(abi::self<Number>(self)); });
}

double FM_FixPt_AsFloat(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const Number& n = abi::self<Number>(self);
        return n.empty ? 0.0 : n.toDouble();
    });
}

}  // extern "C"

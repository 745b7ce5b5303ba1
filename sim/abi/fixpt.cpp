// FM_FixPt_*: numbers, double-based with a decimal precision (16 digits by default). An empty
// number (the number of a text without digits) reads as 0 in arithmetic and comparisons.
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

double valueOf(const Number& n) { return n.empty ? 0 : n.value; }

void setValue(Number& n, double v) {
    n.value = v;
    n.empty = false;
}

int clampedPrecision(int precision) { return std::clamp(precision, 0, kMaxPrecision); }

// Truncates toward zero, saturating at the integer type's limits (NaN gives 0).
template <class Int>
Int truncated(double v) {
    if (std::isnan(v)) return 0;
    if (v >= static_cast<double>(std::numeric_limits<Int>::max())) {
        return std::numeric_limits<Int>::max();
    }
    if (v <= static_cast<double>(std::numeric_limits<Int>::min())) {
        return std::numeric_limits<Int>::min();
    }
    return static_cast<Int>(v);
}

template <class Compare>
bool compare(const void* self, const fmx::FixPt& that, Compare cmp) {
    return cmp(valueOf(abi::self<Number>(self)), valueOf(arg(that)));
}

template <class Op>
void arithmetic(const void* self, const fmx::FixPt& argument, fmx::FixPt& result, Op op) {
    const double a = valueOf(abi::self<Number>(self));
    const double b = valueOf(arg(argument));
    setValue(arg(result), op(a, b));
}

}  // namespace

extern "C" {

fmx::FixPt* FM_FixPt_Constructor1(fmx::int32 val, int precision, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        return handleOf(new Number{static_cast<double>(val), false, clampedPrecision(precision)});
    });
}

fmx::FixPt* FM_FixPt_Constructor2(fmx::int32 val, const fmx::FixPt& precisionExample,
                                  _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const int precision = arg(precisionExample).precision;
        return handleOf(new Number{static_cast<double>(val), false, precision});
    });
}

void FM_FixPt_Delete(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { delete static_cast<Number*>(self); });
}

void FM_FixPt_AssignInt(void* self, fmx::int32 that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setValue(abi::self<Number>(self), that); });
}

void FM_FixPt_AssignInt64(void* self, fmx::int64 that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setValue(abi::self<Number>(self), static_cast<double>(that)); });
}

void FM_FixPt_AssignDouble(void* self, double that, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] { setValue(abi::self<Number>(self), that); });
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
                 [&] { return compare(self, that, [](double a, double b) { return a == b; }); });
}

bool FM_FixPt_operatorNE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](double a, double b) { return a != b; }); });
}

bool FM_FixPt_operatorLT(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](double a, double b) { return a < b; }); });
}

bool FM_FixPt_operatorLE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](double a, double b) { return a <= b; }); });
}

bool FM_FixPt_operatorGT(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](double a, double b) { return a > b; }); });
}

bool FM_FixPt_operatorGE(const void* self, const fmx::FixPt& that, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return compare(self, that, [](double a, double b) { return a >= b; }); });
}

void FM_FixPt_Increment(void* self, fmx::int32 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, valueOf(v) + n);
    });
}

void FM_FixPt_Increment64(void* self, fmx::int64 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, valueOf(v) + static_cast<double>(n));
    });
}

void FM_FixPt_Decrement(void* self, fmx::int32 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, valueOf(v) - n);
    });
}

void FM_FixPt_Decrement64(void* self, fmx::int64 n, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, valueOf(v) - static_cast<double>(n));
    });
}

void FM_FixPt_Negate(void* self, _fmxcpt& x) noexcept {
    guard(__func__, x, [&] {
        Number& v = abi::self<Number>(self);
        setValue(v, -valueOf(v));
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
    guard(__func__, x,
          [&] { arithmetic(self, arg, result, [](double a, double b) { return a + b; }); });
}

void FM_FixPt_Subtract(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                       _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { arithmetic(self, arg, result, [](double a, double b) { return a - b; }); });
}

void FM_FixPt_Multiply(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                       _fmxcpt& x) noexcept {
    guard(__func__, x,
          [&] { arithmetic(self, arg, result, [](double a, double b) { return a * b; }); });
}

fmx::errcode FM_FixPt_Divide(const void* self, const fmx::FixPt& arg, fmx::FixPt& result,
                             _fmxcpt& x) noexcept {
    return guard(__func__, x, [&]() -> fmx::errcode {
        abi::self<Number>(self);
        if (valueOf(abi::arg(arg)) == 0) {
            abi::arg(result);
            return kDivisionByZero;
        }
        arithmetic(self, arg, result, [](double a, double b) { return a / b; });
        return 0;
    });
}

bool FM_FixPt_AsBool(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] {
        const double v = valueOf(abi::self<Number>(self));
        return v != 0 && !std::isnan(v);
    });
}

fmx::int32 FM_FixPt_AsLong(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return truncated<fmx::int32>(valueOf(abi::self<Number>(self))); });
}

fmx::int64 FM_FixPt_AsLong64(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x,
                 [&] { return truncated<fmx::int64>(valueOf(abi::self<Number>(self))); });
}

double FM_FixPt_AsFloat(const void* self, _fmxcpt& x) noexcept {
    return guard(__func__, x, [&] { return valueOf(abi::self<Number>(self)); });
}

}  // extern "C"

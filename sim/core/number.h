// Numbers as the host keeps them: decimal, exact in addition, subtraction and multiplication, up
// to 400 significant digits; their text form, and reading a number out of text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

namespace decimal {

// value = 0.digits x 10^point; digits has no leading or trailing zeros and is empty for zero
// (which is never negative).
struct Digits {
    std::string digits;  // first, so that the small members share the last word
    int point = 0;
    bool negative = false;

    friend bool operator==(const Digits&, const Digits&) = default;
};

// The significant digits a number keeps, and the magnitude results stay below (10^400).
constexpr int kMaxDigits = 400;
constexpr int kMaxPoint = 400;

// The value correctly rounded to `significant` digits (1 to 17); a non-finite value gives zero.
Digits digitsOf(double value, int significant = 16);
// Rounds half away from zero to at most `places` digits after the decimal point.
void roundToPlaces(Digits& d, long places);
// Drops the digits after `places` decimals.
void truncateToPlaces(Digits& d, long places);

}  // namespace decimal

// A number as the host's FixPt holds it. `empty` marks the number of a text without digits
// (GetAsNumber ( "abc" ) is empty, not 0); arithmetic reads an empty number as 0.
struct Number {
    decimal::Digits value;
    int precision = 16;
    bool empty = false;

    static Number fromInt(int64_t n);
    // m x 10^exponent, exactly.
    static Number fromScaled(int64_t m, int exponent);
    // The double's shortest decimal form (0.1 is 0.1); not finite gives 0.
    static Number fromDouble(double d);
    static Number none() { return Number{{}, 16, true}; }

    // For counts, positions and binary interfaces; beyond the double range gives +-infinity.
    double toDouble() const;
    bool isZero() const { return value.digits.empty(); }
    bool isNegative() const { return value.negative; }
    bool isInteger() const { return static_cast<long>(value.digits.size()) <= value.point; }
};

// Text form: every kept digit, no exponent, no trailing zeros, '.' as decimal separator, "0.5"
// for one half; rounded to `precision` places when that is below 16; an empty number gives "".
std::u16string formatNumber(const Number& n);

// FileMaker's text-to-number rule: every non-digit is dropped except the first decimal point and
// a leading minus sign or parentheses; no digit at all gives an empty number.
Number parseNumber(std::u16string_view text);
// A plain decimal literal, optionally with an exponent ("12.5", "-1.0e+20"); nullopt otherwise.
std::optional<Number> parseDecimal(std::string_view text);

// Arithmetic. An empty operand reads as 0. Results that would reach 10^400 give nullopt (the
// host shows "?"); results below 10^-400 become 0. `places` is the precision the inexact
// operations round to (half away from zero).
int compareNumbers(const Number& a, const Number& b);
Number negated(const Number& n);
Number absolute(const Number& n);
std::optional<Number> add(const Number& a, const Number& b);
std::optional<Number> subtract(const Number& a, const Number& b);
std::optional<Number> multiply(const Number& a, const Number& b);
std::optional<Number> divide(const Number& a, const Number& b, int places);  // nullopt for 0
// The largest integer not above a / b; nullopt for a zero divisor.
std::optional<Number> divideFloor(const Number& a, const Number& b);
// Round or Truncate to `places` decimals (negative: tens, hundreds, ...).
Number roundedTo(const Number& n, long places, bool truncate = false);
Number floorOf(const Number& n);
Number ceilingOf(const Number& n);

enum class MathFunction {
    Sqrt,
    Exp,
    Ln,
    Log,
    Lg,
    Sin,
    Cos,
    Tan,
    Atan,
    Asin,
    Acos,
    Degrees,
    Radians
};
// nullopt outside the function's domain. Sqrt, Exp and the logarithms round to `places`
// decimals; the angle functions (Sin to Radians) are binary: Sin, Cos and Tan to 15
// significant digits, the others to 16.
std::optional<Number> apply(MathFunction f, const Number& x, int places);
std::optional<Number> power(const Number& base, const Number& exponent, int places);
Number pi(int places);

}  // namespace sim

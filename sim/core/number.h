// Numbers as the host keeps them, their text form, and reading a number out of text.
#pragma once

#include <string>
#include <string_view>

namespace sim {

// A number as the host's FixPt holds it. `empty` marks the number of a text without digits
// (GetAsNumber ( "abc" ) is empty, not 0); arithmetic reads an empty number as 0.
struct Number {
    double value = 0;
    bool empty = false;
    int precision = 16;
};

// Text form: at most 16 significant digits (fewer places when `precision` is below 16), no
// exponent, no trailing zeros, '.' as decimal separator, "0.5" for one half; an empty number gives
// "" and a number that is not finite "?".
std::u16string formatNumber(const Number& n);

// FileMaker's text-to-number rule: every non-digit is dropped except the first decimal point and
// a leading minus sign or parentheses; no digit at all gives an empty number.
Number parseNumber(std::u16string_view text);

namespace decimal {

// value = 0.digits x 10^point; digits has no trailing zeros and is empty for zero.
struct Digits {
    bool negative = false;
    std::string digits;
    int point = 0;
};

// The value correctly rounded to `significant` digits (1 to 17); a non-finite value gives zero.
Digits digitsOf(double value, int significant = 16);
// Rounds half away from zero to at most `places` digits after the decimal point.
void roundToPlaces(Digits& d, int places);

}  // namespace decimal

}  // namespace sim

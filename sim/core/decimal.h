// Decimal digits of a double, shared by the text forms of numbers and of fractional seconds.
#pragma once

#include <string>

namespace sim::decimal {

// value = 0.digits x 10^point; digits has no trailing zeros and is empty for zero.
struct Digits {
    bool negative = false;
    std::string digits;
    int point = 0;
};

// The value correctly rounded to `significant` digits; a non-finite value gives zero.
Digits digitsOf(double value, int significant = 16);
// Rounds half away from zero to at most `places` digits after the decimal point.
void roundToPlaces(Digits& d, int places);
// Plain notation without exponent: "0", "-0.5", "100000000000000000000".
std::string plain(const Digits& d);

}  // namespace sim::decimal

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "sim/core/decimal.h"
#include "sim/core/encoding.h"
#include "sim/core/value.h"

namespace sim {

namespace decimal {

Digits digitsOf(double value, int significant) {
    Digits d;
    if (!std::isfinite(value) || value == 0) return d;
    // to_chars rounds exactly as printf's %.*e does, at a fraction of its cost.
    char buf[64];
    *std::to_chars(buf, buf + sizeof buf - 1, value, std::chars_format::scientific, significant - 1)
         .ptr = '\0';
    const char* p = buf;
    if (*p == '-') d.negative = true, ++p;
    for (; *p && *p != 'e'; ++p) {
        if (*p >= '0' && *p <= '9') d.digits.push_back(*p);
    }
    const int exponent = *p == 'e' ? std::atoi(p + 1) : 0;
    d.point = exponent + 1;
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    if (d.digits.empty()) d = Digits{};
    return d;
}

void roundToPlaces(Digits& d, int places) {
    const long keep = static_cast<long>(d.point) + places;
    if (keep >= static_cast<long>(d.digits.size())) return;
    if (keep < 0) {
        d = Digits{};
        return;
    }
    const bool up = d.digits[static_cast<size_t>(keep)] >= '5';
    d.digits.resize(static_cast<size_t>(keep));
    if (up) {
        size_t i = d.digits.size();
        while (i > 0 && d.digits[i - 1] == '9') d.digits[--i] = '0';
        if (i == 0) {
            d.digits.insert(d.digits.begin(), '1');
            ++d.point;
        } else {
            ++d.digits[i - 1];
        }
    }
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    if (d.digits.empty()) d = Digits{};
}

std::string plain(const Digits& d) {
    if (d.digits.empty()) return "0";
    std::string out = d.negative ? "-" : "";
    const int n = static_cast<int>(d.digits.size());
    if (d.point <= 0) {
        out += "0.";
        out.append(static_cast<size_t>(-d.point), '0');
        out += d.digits;
    } else if (d.point >= n) {
        out += d.digits;
        out.append(static_cast<size_t>(d.point - n), '0');
    } else {
        out += d.digits.substr(0, static_cast<size_t>(d.point));
        out += '.';
        out += d.digits.substr(static_cast<size_t>(d.point));
    }
    return out;
}

}  // namespace decimal

namespace {

constexpr uint64_t kPowersOfTen[20] = {1ULL,
                                       10ULL,
                                       100ULL,
                                       1000ULL,
                                       10000ULL,
                                       100000ULL,
                                       1000000ULL,
                                       10000000ULL,
                                       100000000ULL,
                                       1000000000ULL,
                                       10000000000ULL,
                                       100000000000ULL,
                                       1000000000000ULL,
                                       10000000000000ULL,
                                       100000000000000ULL,
                                       1000000000000000ULL,
                                       10000000000000000ULL,
                                       100000000000000000ULL,
                                       1000000000000000000ULL,
                                       10000000000000000000ULL};

// 10^-4 to 10^15, indexed by the power plus 4.
constexpr double kDoublePowersOfTen[20] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0,  1e1, 1e2,
                                           1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                           1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// 16 significant digits of a positive double in [1e-4, 1e15), correctly rounded (ties to even)
// from its exact binary value, as printf's %.16g rounds. Such a double is m * 2^q with q < 0, so
// m * 10^p fits in 128 bits and one shift does the division: a SQL result formats numbers by the
// hundred thousand, and the general conversion costs ten times as much. Returns the digits as an
// integer in [10^15, 10^16) and sets `exponent` to the power of ten of the first digit.
uint64_t sixteenDigits(double x, int& exponent) {
    uint64_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    const uint64_t mantissa = (bits & ((uint64_t{1} << 52) - 1)) | (uint64_t{1} << 52);
    const int shift = 1075 - static_cast<int>(bits >> 52 & 0x7ff);  // x = mantissa / 2^shift
    // floor(log10(x)) is floor(binary exponent * log10(2)) or one more: one comparison tells
    // (each double power of ten here is the least double not below the exact power). The
    // caller's range bounds it by -4 and 14, which keeps 15 - exponent within the table; the
    // loop checks the digits all the same.
    exponent = std::clamp(((static_cast<int>(bits >> 52 & 0x7ff) - 1023) * 1233) >> 12, -4, 14);
    if (x >= kDoublePowersOfTen[exponent + 5]) ++exponent;
    for (;;) {
        const unsigned __int128 scaled =
            static_cast<unsigned __int128>(mantissa) * kPowersOfTen[15 - exponent];
        unsigned __int128 digits = scaled >> shift;
        const unsigned __int128 rest = scaled - (digits << shift);
        const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
        const bool carried = rest > half || (rest == half && (digits & 1) != 0);
        if (digits < kPowersOfTen[15]) {
            --exponent;  // log10 overestimated
            continue;
        }
        if (digits >= kPowersOfTen[16]) {
            ++exponent;  // log10 underestimated
            continue;
        }
        if (carried) ++digits;
        if (digits == kPowersOfTen[16]) {
            ++exponent;
            digits = kPowersOfTen[15];
        }
        return static_cast<uint64_t>(digits);
    }
}

// "00" to "99", so that digits are written two at a time.
constexpr char kDigitPairs[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546"
    "4748495051525354555657585960616263646566676869707172737475767778798081828384858687888990919293"
    "949596979899";

// How many decimal digits `v` has (1 for 0).
int digitCount(uint64_t v) {
    int count = 1;
    while (count < 20 && v >= kPowersOfTen[count]) ++count;
    return count;
}

// Plain notation of 16 digits whose first has the power of ten `exponent` (-4 to 15), without
// trailing zeros: "0.0001234", "12.5", "3". Writes at most 23 units and returns their number.
std::size_t writeSixteenDigits(bool negative, uint64_t digits, int exponent, char16_t* out) {
    // The digits are at least 10^15, so at most 15 of them are trailing zeros.
    int used = 16;
    constexpr struct {
        uint64_t power;
        int zeros;
    } kStrips[] = {{100000000, 8}, {10000, 4}, {100, 2}, {10, 1}};
    for (const auto& strip : kStrips) {
        if (digits % strip.power == 0) {
            digits /= strip.power;
            used -= strip.zeros;
        }
    }
    char16_t* o = out;
    if (negative) *o++ = u'-';
    if (exponent < 0) {
        *o++ = u'0';
        *o++ = u'.';
        for (int i = -1; i > exponent; --i) *o++ = u'0';
        writeDigits(digits, used, o + used);
        return static_cast<std::size_t>(o + used - out);
    }
    const int whole = exponent + 1;
    if (used <= whole) {
        writeDigits(digits, used, o + used);
        o += used;
        for (int i = used; i < whole; ++i) *o++ = u'0';
        return static_cast<std::size_t>(o - out);
    }
    // All digits one place to the right, then the whole part back in front of the point.
    writeDigits(digits, used, o + 1 + used);
    for (int i = 0; i < whole; ++i) o[i] = o[i + 1];
    o[whole] = u'.';
    return static_cast<std::size_t>(o + 1 + used - out);
}

}  // namespace

// Halves of eight digits keep the arithmetic in 32 bits.
void writeDigits(uint64_t v, int count, char16_t* end) {
    auto writeHalf = [](uint32_t half, int digits, char16_t*& at) {
        for (; digits >= 2; digits -= 2, half /= 100) {
            const char* pair = kDigitPairs + 2 * (half % 100);
            *--at = static_cast<char16_t>(pair[1]);
            *--at = static_cast<char16_t>(pair[0]);
        }
        if (digits == 1) *--at = static_cast<char16_t>(u'0' + half % 10);
    };
    if (count > 8) {
        writeHalf(static_cast<uint32_t>(v % 100000000), 8, end);
        writeHalf(static_cast<uint32_t>(v / 100000000), count - 8, end);
    } else {
        writeHalf(static_cast<uint32_t>(v), count, end);
    }
}

NumberText::NumberText(const Number& n) {
    if (n.empty) return;
    if (!std::isfinite(n.value)) {
        buffer_[size_++] = u'?';
        return;
    }
    // Whole numbers below 10^15 have all their digits among the 16 significant ones and nothing
    // to round: the common case (ids, counts) is written directly.
    const double magnitude = std::fabs(n.value);
    // (Below 10^15 the conversion to an integer is exact, and cheaper than std::trunc.)
    if (magnitude < 1e15 && static_cast<double>(static_cast<int64_t>(magnitude)) == magnitude) {
        const auto whole = static_cast<uint64_t>(magnitude);
        if (n.value < 0) buffer_[size_++] = u'-';
        const int count = digitCount(whole);
        writeDigits(whole, count, buffer_ + size_ + count);
        size_ += static_cast<std::size_t>(count);
        return;
    }
    const bool exactWidth = n.precision < 0 || n.precision >= 16;
    if (exactWidth && magnitude >= 1e-4 && magnitude < 1e15) {
        int exponent = 0;
        const uint64_t digits = sixteenDigits(magnitude, exponent);
        size_ = writeSixteenDigits(n.value < 0, digits, exponent, buffer_);
        return;
    }
    decimal::Digits d = decimal::digitsOf(n.value);
    if (n.precision >= 0 && n.precision < 16) decimal::roundToPlaces(d, n.precision);
    longer_ = fromUtf8(decimal::plain(d));
}

std::u16string formatNumber(const Number& n) { return std::u16string(NumberText(n).view()); }

Number parseNumber(std::u16string_view text) {
    std::string digits;  // integer digits, '.', fraction digits
    bool negative = false;
    bool point = false;
    bool anyDigit = false;
    for (char16_t c : text) {
        if (c >= u'0' && c <= u'9') {
            digits.push_back(static_cast<char>(c));
            anyDigit = true;
        } else if (c == u'.' && !point) {
            digits.push_back('.');
            point = true;
        } else if ((c == u'-' || c == u'(') && !anyDigit && !point) {
            negative = true;
        }
    }
    if (!anyDigit) return Number{0, true};
    double magnitude = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), magnitude);
    return Number{negative ? -magnitude : magnitude};
}

}  // namespace sim

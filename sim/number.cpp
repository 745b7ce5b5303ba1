#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "sim/decimal.h"
#include "sim/encoding.h"
#include "sim/value.h"

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

std::u16string formatNumber(const Number& n) {
    if (n.empty) return u"";
    if (!std::isfinite(n.value)) return u"?";
    // Whole numbers below 10^15 have all their digits among the 16 significant ones and nothing
    // to round: the common case (ids, counts) is written directly.
    if (std::fabs(n.value) < 1e15 && std::trunc(n.value) == n.value) {
        char buf[24];
        char* end = std::to_chars(buf, buf + sizeof buf, static_cast<int64_t>(n.value)).ptr;
        return std::u16string(buf, end);
    }
    // Within this range %.16g never takes an exponent and drops trailing zeros itself: the same
    // digits as the general path below, with less work per number.
    const bool exactWidth = n.precision < 0 || n.precision >= 16;
    if (exactWidth && std::fabs(n.value) >= 1e-4 && std::fabs(n.value) < 1e15) {
        char buf[40];
        char* end =
            std::to_chars(buf, buf + sizeof buf, n.value, std::chars_format::general, 16).ptr;
        return std::u16string(buf, end);
    }
    decimal::Digits d = decimal::digitsOf(n.value);
    if (n.precision >= 0 && n.precision < 16) decimal::roundToPlaces(d, n.precision);
    return fromUtf8(decimal::plain(d));
}

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

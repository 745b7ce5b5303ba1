#include "sim/core/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace sim {

namespace decimal {

Digits digitsOf(double value, int significant) {
    Digits d;
    if (!std::isfinite(value) || value == 0) return d;
    char buf[64];
    const std::to_chars_result r =
        std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific,
                      std::clamp(significant, 1, 17) - 1);
    const char* p = buf;
    if (*p == '-') d.negative = true, ++p;
    for (; p < r.ptr && *p != 'e'; ++p) {
        if (*p != '.') d.digits.push_back(*p);
    }
    int exponent = 0;
    if (p < r.ptr) std::from_chars(p + (p[1] == '+' ? 2 : 1), r.ptr, exponent);
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

}  // namespace decimal

std::u16string formatNumber(const Number& n) {
    if (n.empty) return {};
    if (!std::isfinite(n.value)) return u"?";
    decimal::Digits d = decimal::digitsOf(n.value);
    if (n.precision >= 0 && n.precision < 16) decimal::roundToPlaces(d, n.precision);
    if (d.digits.empty()) return u"0";
    const std::string_view digits = d.digits;
    const auto count = static_cast<int>(digits.size());
    std::u16string out;
    if (d.negative) out += u'-';
    if (d.point <= 0) {
        out += u"0.";
        out.append(static_cast<size_t>(-d.point), u'0');
        out.append(digits.begin(), digits.end());
    } else if (d.point >= count) {
        out.append(digits.begin(), digits.end());
        out.append(static_cast<size_t>(d.point - count), u'0');
    } else {
        out.append(digits.begin(), digits.begin() + d.point);
        out += u'.';
        out.append(digits.begin() + d.point, digits.end());
    }
    return out;
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

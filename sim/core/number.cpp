#include "sim/core/number.h"

#include <algorithm>
#include <boost/multiprecision/cpp_dec_float.hpp>
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

void roundToPlaces(Digits& d, long places) {
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

void truncateToPlaces(Digits& d, long places) {
    const long keep = static_cast<long>(d.point) + places;
    if (keep >= static_cast<long>(d.digits.size())) return;
    if (keep <= 0) {
        d = Digits{};
        return;
    }
    d.digits.resize(static_cast<size_t>(keep));
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
}

}  // namespace decimal

namespace {

using decimal::Digits;
using decimal::kMaxDigits;
using decimal::kMaxPoint;
namespace mp = boost::multiprecision;

// Exact sums and products of up to 424 digits, and the working precision of everything else.
using Big = mp::number<mp::cpp_dec_float<420>, mp::et_off>;
// The usual case of the inexact functions: arguments and results of moderate size at a precision
// well below the type's digits, where the result rounds to the same digits as Big's.
using Small = mp::number<mp::cpp_dec_float<60>, mp::et_off>;

// Drops leading and trailing zeros; zero is never negative.
void normalize(Digits& d) {
    size_t lead = 0;
    while (lead < d.digits.size() && d.digits[lead] == '0') ++lead;
    if (lead > 0) {
        d.digits.erase(0, lead);
        d.point -= static_cast<int>(lead);
    }
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    if (d.digits.empty()) d = Digits{};
}

void keepSignificant(Digits& d) {
    if (static_cast<int>(d.digits.size()) > kMaxDigits) {
        decimal::roundToPlaces(d, static_cast<long>(kMaxDigits) - d.point);
    }
}

// The host's range: nothing reaches 10^400, and what is below 10^-400 is 0.
std::optional<Number> finish(Digits d) {
    keepSignificant(d);
    if (d.point > kMaxPoint) return std::nullopt;
    if (d.point <= -kMaxPoint) d = Digits{};
    Number n;
    n.value = std::move(d);
    return n;
}

const Digits& valueOf(const Number& n) {
    static const Digits kZero;
    return n.empty ? kZero : n.value;
}

// A value of at most 18 digits as m x 10^e.
struct Small18 {
    int64_t m;
    int e;
};

std::optional<Small18> small(const Digits& d) {
    if (d.digits.size() > 18) return std::nullopt;
    int64_t m = 0;
    for (char c : d.digits) m = m * 10 + (c - '0');
    return Small18{d.negative ? -m : m, d.point - static_cast<int>(d.digits.size())};
}

Digits fromWide(__int128 m, int e) {
    Digits d;
    d.negative = m < 0;
    unsigned __int128 u = d.negative ? static_cast<unsigned __int128>(-m) : m;
    char buf[48];
    char* p = buf + sizeof buf;
    while (u != 0) {
        *--p = static_cast<char>('0' + static_cast<int>(u % 10));
        u /= 10;
    }
    d.digits.assign(p, buf + sizeof buf);
    d.point = e + static_cast<int>(d.digits.size());
    normalize(d);
    return d;
}

// x / y correctly rounded to `places` decimals on machine integers, when both have at most 18
// digits and the scaled dividend fits in 128 bits; nullopt otherwise.
std::optional<Number> smallQuotient(const Digits& x, const Digits& y, int places) {
    const auto sx = small(x);
    const auto sy = small(y);
    if (!sx || !sy) return std::nullopt;
    // x / y x 10^places = mx x 10^shift / my
    const long shift = static_cast<long>(sx->e) - sy->e + places;
    if (shift > 20 || shift < -20) return std::nullopt;
    unsigned __int128 dividend = static_cast<uint64_t>(sx->m < 0 ? -sx->m : sx->m);
    unsigned __int128 divisor = static_cast<uint64_t>(sy->m < 0 ? -sy->m : sy->m);
    for (long k = 0; k < shift; ++k) dividend *= 10;
    for (long k = 0; k > shift; --k) divisor *= 10;
    unsigned __int128 q = dividend / divisor;
    if ((dividend % divisor) * 2 >= divisor) ++q;  // half away from zero
    if (q >> 126 != 0) return std::nullopt;
    const auto signedQ = static_cast<__int128>(q);
    return finish(fromWide((sx->m < 0) != (sy->m < 0) ? -signedQ : signedQ, -places));
}

template <class D>
D toDecimal(const Digits& d) {
    if (d.digits.empty()) return D(0);
    std::string s;
    s.reserve(d.digits.size() + 16);
    if (d.negative) s += '-';
    s += "0.";
    s += d.digits;
    s += 'e';
    s += std::to_string(d.point);
    return D(s);
}

// x rounded half away from zero to `places` decimals and at most 400 significant digits. The
// digits come from the type's own rounding well beyond the ones kept, so that its last, inexact
// digits never show.
template <class D>
std::optional<Number> fromDecimal(const D& x, long places) {
    if (!mp::isfinite(x)) return std::nullopt;
    if (x.is_zero()) return Number{};
    const long order = static_cast<long>(x.backend().order());
    if (order >= kMaxPoint) return std::nullopt;
    if (order + 1 + places < 0) return Number{};
    const long wanted = std::clamp(order + 1 + places, 1L, static_cast<long>(kMaxDigits)) + 16;
    const long digits = std::min(wanted, static_cast<long>(std::numeric_limits<D>::digits10));
    std::optional<Number> parsed = parseDecimal(x.str(digits, std::ios_base::scientific));
    if (!parsed) return std::nullopt;
    decimal::roundToPlaces(parsed->value, places);
    return finish(std::move(parsed->value));
}

template <class D>
std::optional<D> compute(MathFunction f, const D& x) {
    switch (f) {
        case MathFunction::Sqrt:
            if (x < 0) return std::nullopt;
            return mp::sqrt(x);
        case MathFunction::Exp:
            return mp::exp(x);
        case MathFunction::Ln:
            if (x <= 0) return std::nullopt;
            return mp::log(x);
        case MathFunction::Log:
            if (x <= 0) return std::nullopt;
            return mp::log10(x);
        case MathFunction::Lg:
            if (x <= 0) return std::nullopt;
            return D(mp::log(x) / mp::log(D(2)));
        default:  // the angle functions, computed in binary (angleFunction)
            return std::nullopt;
    }
    return std::nullopt;
}

bool isAngleFunction(MathFunction f) {
    return f >= MathFunction::Sin && f <= MathFunction::Radians;
}

// The trigonometric functions work in binary double precision, as FileMaker's do (SetPrecision
// does not reach them); the result becomes a decimal at 16 significant digits, so that
// Degrees ( Atan ( 1 ) ) is 45 and not the decimal neighbour of the binary quarter turn.
std::optional<Number> angleFunction(MathFunction f, double x) {
    constexpr double kPi = 3.141592653589793238462643383279502884;
    double r = 0;
    switch (f) {
        case MathFunction::Sin:
            r = std::sin(x);
            break;
        case MathFunction::Cos:
            r = std::cos(x);
            break;
        case MathFunction::Tan:
            r = std::tan(x);
            break;
        case MathFunction::Atan:
            r = std::atan(x);
            break;
        case MathFunction::Asin:
            if (std::fabs(x) > 1) return std::nullopt;
            r = std::asin(x);
            break;
        case MathFunction::Acos:
            if (std::fabs(x) > 1) return std::nullopt;
            r = std::acos(x);
            break;
        case MathFunction::Degrees:
            r = x * 180 / kPi;
            break;
        default:
            r = x * kPi / 180;
            break;
    }
    if (!std::isfinite(r)) return std::nullopt;
    // Sin, Cos and Tan keep the 15 digits a double holds exactly, so that the binary rounding of
    // their argument never shows in a 16th digit: Sin ( Radians ( 30 ) ) is .5 and
    // Tan ( Radians ( 45 ) ) is 1, as the reference prints them. The inverse functions and the
    // conversions keep 16, enough for Degrees ( Atan ( 1 ) ) to come back to 45 exactly.
    const bool periodic =
        f == MathFunction::Sin || f == MathFunction::Cos || f == MathFunction::Tan;
    return finish(decimal::digitsOf(r, periodic ? 15 : 16));
}

}  // namespace

Number Number::fromInt(int64_t n) { return fromScaled(n, 0); }

Number Number::fromScaled(int64_t m, int exponent) {
    Number n;
    n.value = fromWide(m, exponent);
    return n;
}

Number Number::fromDouble(double d) {
    if (!std::isfinite(d) || d == 0) return Number{};
    char buf[64];
    const std::to_chars_result r = std::to_chars(buf, buf + sizeof buf, d);
    return parseDecimal(std::string_view(buf, static_cast<size_t>(r.ptr - buf))).value_or(Number{});
}

double Number::toDouble() const {
    if (empty || value.digits.empty()) return 0;
    if (value.point > 400) return value.negative ? -HUGE_VAL : HUGE_VAL;
    if (value.point < -400) return 0;
    std::string s = value.negative ? "-0." : "0.";
    s.append(value.digits, 0, std::min<size_t>(value.digits.size(), 40));
    s += 'e';
    s += std::to_string(value.point);
    double d = 0;
    if (std::from_chars(s.data(), s.data() + s.size(), d).ec == std::errc::result_out_of_range) {
        // beyond the double range, or below its smallest number
        if (value.point <= 0) return 0;
        return value.negative ? -HUGE_VAL : HUGE_VAL;
    }
    return d;
}

std::u16string formatNumber(const Number& n) {
    if (n.empty) return {};
    Digits d = n.value;
    if (n.precision >= 0 && n.precision < 16) decimal::roundToPlaces(d, n.precision);
    if (d.digits.empty()) return u"0";
    const std::string_view digits = d.digits;
    const auto count = static_cast<int>(digits.size());
    std::u16string out;
    out.reserve(digits.size() + static_cast<size_t>(std::abs(d.point)) + 3);
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
    Digits d;
    bool point = false;
    bool anyDigit = false;
    long integerDigits = 0;
    for (char16_t c : text) {
        if (c >= u'0' && c <= u'9') {
            anyDigit = true;
            if (d.digits.empty() && c == u'0') {  // leading zeros
                if (point) --integerDigits;
                continue;
            }
            if (d.digits.size() <= static_cast<size_t>(kMaxDigits)) {
                d.digits.push_back(static_cast<char>(c));
            }
            if (!point) ++integerDigits;
        } else if (c == u'.' && !point) {
            point = true;
        } else if ((c == u'-' || c == u'(') && !anyDigit && !point) {
            d.negative = true;
        }
    }
    if (!anyDigit) return Number::none();
    d.point = static_cast<int>(std::clamp(integerDigits, -1000000000L, 1000000000L));
    normalize(d);
    keepSignificant(d);
    Number n;
    n.value = std::move(d);
    return n;
}

std::optional<Number> parseDecimal(std::string_view text) {
    Digits d;
    size_t i = 0;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) d.negative = text[i++] == '-';
    bool anyDigit = false;
    bool point = false;
    long integerDigits = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            anyDigit = true;
            if (d.digits.empty() && c == '0') {
                if (point) --integerDigits;
                continue;
            }
            if (d.digits.size() <= static_cast<size_t>(kMaxDigits)) d.digits.push_back(c);
            if (!point) ++integerDigits;
        } else if (c == '.' && !point) {
            point = true;
        } else {
            break;
        }
    }
    if (!anyDigit) return std::nullopt;
    long exponent = 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        bool negativeExponent = false;
        if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
            negativeExponent = text[i++] == '-';
        }
        if (i == text.size()) return std::nullopt;
        for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
            exponent = std::min(exponent * 10 + (text[i] - '0'), 1000000000L);
        }
        if (negativeExponent) exponent = -exponent;
    }
    if (i != text.size()) return std::nullopt;
    d.point = static_cast<int>(std::clamp(integerDigits + exponent, -1000000000L, 1000000000L));
    normalize(d);
    keepSignificant(d);
    Number n;
    n.value = std::move(d);
    return n;
}

int compareNumbers(const Number& a, const Number& b) {
    const Digits& x = valueOf(a);
    const Digits& y = valueOf(b);
    const int sx = x.digits.empty() ? 0 : (x.negative ? -1 : 1);
    const int sy = y.digits.empty() ? 0 : (y.negative ? -1 : 1);
    if (sx != sy || sx == 0) return sx < sy ? -1 : (sx > sy ? 1 : 0);
    int magnitude = x.point < y.point ? -1 : (x.point > y.point ? 1 : 0);
    if (magnitude == 0) {
        const int c = x.digits.compare(y.digits);
        magnitude = c < 0 ? -1 : (c > 0 ? 1 : 0);
    }
    return sx * magnitude;
}

Number negated(const Number& n) {
    Number r;
    r.value = valueOf(n);
    if (!r.value.digits.empty()) r.value.negative = !r.value.negative;
    return r;
}

Number absolute(const Number& n) {
    Number r;
    r.value = valueOf(n);
    r.value.negative = false;
    return r;
}

std::optional<Number> add(const Number& a, const Number& b) {
    const Digits& x = valueOf(a);
    const Digits& y = valueOf(b);
    if (y.digits.empty()) return finish(x);
    if (x.digits.empty()) return finish(y);
    const auto sx = small(x);
    const auto sy = small(y);
    if (sx && sy && std::abs(sx->e - sy->e) <= 18) {
        const int e = std::min(sx->e, sy->e);
        __int128 mx = sx->m;
        __int128 my = sy->m;
        for (int k = sx->e; k > e; --k) mx *= 10;
        for (int k = sy->e; k > e; --k) my *= 10;
        return finish(fromWide(mx + my, e));
    }
    return fromDecimal(Big(toDecimal<Big>(x) + toDecimal<Big>(y)), kMaxDigits * 4L);
}

std::optional<Number> subtract(const Number& a, const Number& b) { return add(a, negated(b)); }

std::optional<Number> multiply(const Number& a, const Number& b) {
    const Digits& x = valueOf(a);
    const Digits& y = valueOf(b);
    if (x.digits.empty() || y.digits.empty()) return Number{};
    const auto sx = small(x);
    const auto sy = small(y);
    if (sx && sy) return finish(fromWide(static_cast<__int128>(sx->m) * sy->m, sx->e + sy->e));
    if (static_cast<long>(x.point) + y.point > kMaxPoint + 1) return std::nullopt;
    return fromDecimal(Big(toDecimal<Big>(x) * toDecimal<Big>(y)), kMaxDigits * 4L);
}

std::optional<Number> divide(const Number& a, const Number& b, int places) {
    const Digits& y = valueOf(b);
    if (y.digits.empty()) return std::nullopt;
    const Digits& x = valueOf(a);
    if (x.digits.empty()) return Number{};
    if (std::optional<Number> q = smallQuotient(x, y, places)) return q;
    return fromDecimal(Big(toDecimal<Big>(x) / toDecimal<Big>(y)), places);
}

std::optional<Number> divideFloor(const Number& a, const Number& b) {
    const std::optional<Number> q = divide(a, b, kMaxDigits);
    if (!q) return std::nullopt;
    return floorOf(*q);
}

Number roundedTo(const Number& n, long places, bool truncate) {
    Number r;
    r.value = valueOf(n);
    places = std::clamp(places, -2000L, 2000L);
    if (truncate) {
        decimal::truncateToPlaces(r.value, places);
    } else {
        decimal::roundToPlaces(r.value, places);
    }
    return r;
}

Number floorOf(const Number& n) {
    Number r = roundedTo(n, 0, true);
    if (n.isNegative() && compareNumbers(r, n) != 0) r = add(r, Number::fromInt(-1)).value_or(r);
    return r;
}

Number ceilingOf(const Number& n) {
    Number r = roundedTo(n, 0, true);
    if (!n.isNegative() && compareNumbers(r, n) != 0) r = add(r, Number::fromInt(1)).value_or(r);
    return r;
}

std::optional<Number> apply(MathFunction f, const Number& n, int places) {
    if (isAngleFunction(f)) return angleFunction(f, n.toDouble());
    const Digits& x = valueOf(n);
    if (f == MathFunction::Exp) {
        const double d = n.toDouble();
        if (d > 922) return std::nullopt;
        if (d < -2000) return Number{};
    }
    const bool smallArgument = x.digits.size() <= 40 && x.point >= -15 && x.point <= 15;
    if (smallArgument && places <= 30) {
        const std::optional<Small> r = compute(f, toDecimal<Small>(x));
        if (!r) return std::nullopt;
        if (mp::isfinite(*r) && (r->is_zero() || r->backend().order() + places <= 30)) {
            return fromDecimal(*r, places);
        }
    }
    const std::optional<Big> r = compute(f, toDecimal<Big>(x));
    if (!r) return std::nullopt;
    return fromDecimal(*r, places);
}

std::optional<Number> power(const Number& base, const Number& exponent, int places) {
    const Digits& b = valueOf(base);
    const Digits& e = valueOf(exponent);
    if (e.digits.empty()) return Number::fromInt(1);
    if (b.digits.empty()) {
        if (e.negative) return std::nullopt;
        return Number{};
    }
    const bool integral = exponent.isInteger() || exponent.empty;
    if (b.negative && !integral) return std::nullopt;
    if (b.digits == "1" && b.point == 1) {  // 1 or -1, to any whole power however large
        const bool odd =
            e.point == static_cast<int>(e.digits.size()) && (e.digits.back() - '0') % 2;
        return Number::fromInt(b.negative && odd ? -1 : 1);
    }
    // The size of the result, roughly, before computing it: beyond the range is "?" or 0.
    Number leading;
    leading.value = Digits{b.digits.substr(0, 17), 1, false};
    const double magnitude = (b.point - 1 + std::log10(leading.toDouble())) * exponent.toDouble();
    if (magnitude > kMaxPoint + 1) return std::nullopt;
    if (magnitude < -kMaxPoint - 1) return Number{};
    const Big r = mp::pow(toDecimal<Big>(b), toDecimal<Big>(e));
    // Whole positive powers are exact, like products.
    return fromDecimal(r, integral && !e.negative ? kMaxDigits * 4L : places);
}

Number pi(int places) {
    return fromDecimal(boost::math::constants::pi<Big>(), places).value_or(Number{});
}

}  // namespace sim

// The financial functions FV, NPV, PMT and PV: payments at the end of each period, the interest
// rate per period. Powers of whole period counts are exact; the one division rounds to the
// current precision.
#include <optional>
#include <vector>

#include "sim/calc/builtins.h"

namespace sim::calc {

namespace {

const Number kOne = Number::fromInt(1);

// (1 + rate) ^ periods, with `places` decimals for fractional period counts.
std::optional<Number> growth(const Number& rate, const Number& periods, int places) {
    const std::optional<Number> base = add(kOne, rate);
    return base ? power(*base, periods, places) : std::nullopt;
}

std::optional<Number> times(const std::optional<Number>& a, const std::optional<Number>& b) {
    return a && b ? multiply(*a, *b) : std::nullopt;
}

std::optional<Number> over(const std::optional<Number>& a, const std::optional<Number>& b,
                           int places) {
    return a && b ? divide(*a, *b, places) : std::nullopt;
}

std::optional<Number> minus(const std::optional<Number>& a, const std::optional<Number>& b) {
    return a && b ? subtract(*a, *b) : std::nullopt;
}

// The values of a value list (separated by CR, LF, U+2028 or U+2029).
std::vector<std::u16string_view> valuesOf(std::u16string_view list) {
    std::vector<std::u16string_view> values;
    size_t start = 0;
    for (size_t i = 0; i <= list.size(); ++i) {
        if (i == list.size() || list[i] == u'\r' || list[i] == u'\n' || list[i] == u'\u2028' ||
            list[i] == u'\u2029') {
            values.push_back(list.substr(start, i - start));
            start = i + 1;
        }
    }
    return values;
}

// Extra places for the intermediate powers, so that the final quotient rounds as the exact one.
constexpr int kGuard = 20;

// FV ( payment ; interestRate ; periods ) = payment x ((1 + r)^n − 1) / r; payment x n for r = 0.
Value fnFV(Args& a) {
    const Number payment = a.decimal(0);
    const Number rate = a.decimal(1);
    const Number periods = a.decimal(2);
    if (rate.isZero()) return numberValue(multiply(payment, periods));
    const std::optional<Number> g = growth(rate, periods, a.precision() + kGuard);
    return numberValue(over(times(payment, minus(g, kOne)), rate, a.precision()));
}

// PV ( payment ; interestRate ; periods ) = payment x (1 − (1 + r)^−n) / r; payment x n for
// r = 0. Computed as payment x ((1 + r)^n − 1) / (r (1 + r)^n), which needs no negative power.
Value fnPV(Args& a) {
    const Number payment = a.decimal(0);
    const Number rate = a.decimal(1);
    const Number periods = a.decimal(2);
    if (rate.isZero()) return numberValue(multiply(payment, periods));
    const std::optional<Number> g = growth(rate, periods, a.precision() + kGuard);
    // (1 + r)^n beyond the range: the payments of so many periods are worth payment / r now
    if (!g && !rate.isNegative()) return numberValue(divide(payment, rate, a.precision()));
    return numberValue(over(times(payment, minus(g, kOne)), times(rate, g), a.precision()));
}

// PMT ( principal ; interestRate ; term ) = principal x r / (1 − (1 + r)^−term), computed as
// principal x r x (1 + r)^term / ((1 + r)^term − 1); principal / term for r = 0.
Value fnPMT(Args& a) {
    const Number principal = a.decimal(0);
    const Number rate = a.decimal(1);
    const Number term = a.decimal(2);
    if (rate.isZero()) return numberValue(divide(principal, term, a.precision()));
    const std::optional<Number> g = growth(rate, term, a.precision() + kGuard);
    // (1 + r)^term beyond the range: the payment only covers the interest
    if (!g && !rate.isNegative()) return numberValue(multiply(principal, rate));
    return numberValue(over(times(times(principal, rate), g), minus(g, kOne), a.precision()));
}

// NPV ( payment ; interestRate ): FileMaker takes the payments from a repeating field; this host
// has none, so the payments are the values of the first argument, one per line (a single
// number is one payment). NPV = Σ payment_i / (1 + r)^i from i = 1: the first payment is
// discounted one period.
Value fnNPV(Args& a) {
    const Number rate = a.decimal(1);
    const int places = a.precision();
    std::optional<Number> total = Number{};
    std::optional<Number> discount = kOne;
    const std::optional<Number> step = add(kOne, rate);
    int64_t count = 0;
    for (std::u16string_view value : valuesOf(a.units(0))) {
        const Number payment = parseNumber(value);
        if (payment.empty) continue;
        discount = times(discount, step);
        if (discount && discount->isZero()) return questionMark();
        const std::optional<Number> present = over(payment, discount, places + kGuard);
        total = total && present ? add(*total, *present) : std::nullopt;
        ++count;
    }
    if (count == 0) return Value::number(Number::none());
    return numberValue(total ? std::optional<Number>(roundedTo(*total, places)) : std::nullopt);
}

constexpr Builtin kFunctions[] = {
    {u"fv", 3, 3, fnFV},
    {u"pv", 3, 3, fnPV},
    {u"pmt", 3, 3, fnPMT},
    {u"npv", 2, 2, fnNPV},
};

}  // namespace

std::span<const Builtin> financialFunctions() { return kFunctions; }

}  // namespace sim::calc

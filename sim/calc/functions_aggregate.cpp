// The aggregate functions over their arguments: Average, Count, Max, Min, StDev, StDevP, Sum,
// Variance, VarianceP. Only arguments with a value count; sums are exact, quotients and roots
// rounded to the current precision. (List is with the value list functions.)
#include <optional>
#include <vector>

#include "sim/calc/builtins.h"
#include "sim/core/text.h"

namespace sim::calc {

namespace {

// The numbers of the arguments that have one.
std::vector<Number> presentNumbers(Args& a) {
    std::vector<Number> numbers;
    for (size_t i = 0; i < a.size(); ++i) {
        if (!a.emptyNumber(i)) numbers.push_back(a.decimal(i));
    }
    return numbers;
}

bool allTexts(Args& a) {
    bool any = false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i].isEmpty()) continue;
        if (a[i].type() != Type::Text) return false;
        any = true;
    }
    return any;
}

// Min and Max: texts alone compare as texts (ignoring case); otherwise the arguments compare as
// numbers, empty ones skipped, and the winner keeps its type when it is a date, time or timestamp.
template <class Better>
Value extreme(Args& a, Better better) {
    if (allTexts(a)) {
        const Value* best = nullptr;
        std::u16string bestKey;
        for (size_t i = 0; i < a.size(); ++i) {
            if (a[i].isEmpty()) continue;
            std::u16string key = toLower(a[i].textValue().units());
            if (best == nullptr || better(key.compare(bestKey))) {
                best = &a[i];
                bestKey = std::move(key);
            }
        }
        return *best;
    }
    const Value* best = nullptr;
    Number bestNumber;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a.emptyNumber(i)) continue;
        Number n = a.decimal(i);
        if (best == nullptr || better(compareNumbers(n, bestNumber))) {
            best = &a[i];
            bestNumber = std::move(n);
        }
    }
    if (best == nullptr) return Value::number(Number::none());
    const Type t = best->type();
    if (t == Type::Date || t == Type::Time || t == Type::Timestamp) return *best;
    bestNumber.precision = 16;
    return Value::number(bestNumber);
}

Value fnMin(Args& a) {
    return extreme(a, [](int c) { return c < 0; });
}
Value fnMax(Args& a) {
    return extreme(a, [](int c) { return c > 0; });
}

std::optional<Number> sumOf(const std::vector<Number>& numbers) {
    std::optional<Number> total = Number{};
    for (size_t i = 0; i < numbers.size() && total; ++i) total = add(*total, numbers[i]);
    return total;
}

Value fnSum(Args& a) { return numberValue(sumOf(presentNumbers(a))); }

Value fnAverage(Args& a) {
    const std::vector<Number> numbers = presentNumbers(a);
    if (numbers.empty()) return Value::number(Number::none());
    const std::optional<Number> total = sumOf(numbers);
    if (!total) return questionMark();
    return numberValue(
        divide(*total, Number::fromInt(static_cast<int64_t>(numbers.size())), a.precision()));
}

Value fnCount(Args& a) {
    int64_t count = 0;
    for (size_t i = 0; i < a.size(); ++i) count += a[i].isEmpty() ? 0 : 1;
    return Value::number(Number::fromInt(count));
}

// The variance, as (n Σx² − (Σx)²) / (n (n − d)) with d = 1 for a sample and 0 for the whole
// population: numerator and denominator exact, one rounding at the end to `places`. Fewer than
// 1 + d values give "?" (a sample of one has no spread to estimate).
std::optional<Number> variance(const std::vector<Number>& numbers, int d, int places) {
    const auto n = static_cast<int64_t>(numbers.size());
    if (n < 1 + d) return std::nullopt;
    std::optional<Number> squares = Number{};
    for (size_t i = 0; i < numbers.size() && squares; ++i) {
        const std::optional<Number> square = multiply(numbers[i], numbers[i]);
        squares = square ? add(*squares, *square) : std::nullopt;
    }
    const std::optional<Number> total = sumOf(numbers);
    if (!squares || !total) return std::nullopt;
    const std::optional<Number> scaled = multiply(Number::fromInt(n), *squares);
    const std::optional<Number> totalSquared = multiply(*total, *total);
    if (!scaled || !totalSquared) return std::nullopt;
    const std::optional<Number> numerator = subtract(*scaled, *totalSquared);
    if (!numerator) return std::nullopt;
    return divide(*numerator, Number::fromInt(n * (n - d)), places);
}

// No values at all give an empty result, as with Average.
template <int D>
Value fnVariance(Args& a) {
    const std::vector<Number> numbers = presentNumbers(a);
    if (numbers.empty()) return Value::number(Number::none());
    return numberValue(variance(numbers, D, a.precision()));
}

// The square root of the variance taken 20 places finer, so the root rounds as the exact one.
template <int D>
Value fnStDev(Args& a) {
    const std::vector<Number> numbers = presentNumbers(a);
    if (numbers.empty()) return Value::number(Number::none());
    const std::optional<Number> v = variance(numbers, D, a.precision() + 20);
    return numberValue(v ? apply(MathFunction::Sqrt, *v, a.precision()) : std::nullopt);
}

constexpr Builtin kFunctions[] = {
    {u"min", 1, -1, fnMin},
    {u"max", 1, -1, fnMax},
    {u"sum", 1, -1, fnSum},
    {u"average", 1, -1, fnAverage},
    {u"count", 1, -1, fnCount},
    {u"variance", 1, -1, fnVariance<1>},
    {u"variancep", 1, -1, fnVariance<0>},
    {u"stdev", 1, -1, fnStDev<1>},
    {u"stdevp", 1, -1, fnStDev<0>},
};

}  // namespace

std::span<const Builtin> aggregateFunctions() { return kFunctions; }

}  // namespace sim::calc

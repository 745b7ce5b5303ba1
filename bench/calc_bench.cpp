// Speed of the substitute host's calculation engine on long texts and long expressions; the
// reported complexity should stay linear.
#include <benchmark/benchmark.h>

#include <string>

#include "sim/calc/context.h"
#include "tests/sim/fake_context.h"

namespace {

void substituteOnLongText(benchmark::State& state) {
    sim::fake::FakeContext context;
    const auto units = static_cast<size_t>(state.range(0));
    context.variables[{u"$$big", 1}] = sim::Value::text(std::u16string(units, u'a'));
    for (auto _ : state) {
        const sim::calc::Result r =
            sim::calc::evaluate(u"Substitute ( $$big ; \"a\" ; \"bc\" )", context);
        benchmark::DoNotOptimize(r.value.textValue().size());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(substituteOnLongText)->RangeMultiplier(4)->Range(1 << 16, 1 << 22)->Complexity();

void valuesOfLongList(benchmark::State& state) {
    sim::fake::FakeContext context;
    std::u16string list;
    for (int64_t i = 0; i < state.range(0); ++i) list += u"value\r";
    context.variables[{u"$$list", 1}] = sim::Value::text(list);
    for (auto _ : state) {
        const sim::calc::Result r =
            sim::calc::evaluate(u"ValueCount ( $$list ) & GetValue ( $$list ; 1000 )", context);
        benchmark::DoNotOptimize(r.error);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(valuesOfLongList)->RangeMultiplier(4)->Range(1 << 12, 1 << 18)->Complexity();

// Evaluates `first` followed by range(0) copies of `term`: one long calculation.
void evaluateRepeated(benchmark::State& state, std::u16string_view first,
                      std::u16string_view term) {
    sim::fake::FakeContext context;
    std::u16string calculation(first);
    for (int64_t i = 0; i < state.range(0); ++i) calculation += term;
    for (auto _ : state) {
        const sim::calc::Result r = sim::calc::evaluate(calculation, context);
        benchmark::DoNotOptimize(r.error);
    }
    state.SetComplexityN(state.range(0));
}

void longConcatenation(benchmark::State& state) {
    evaluateRepeated(state, u"\"\"", u" & \"abcdefgh\"");
}
BENCHMARK(longConcatenation)->RangeMultiplier(4)->Range(1 << 8, 1 << 14)->Complexity();

// Decimal arithmetic: sums and products of short decimals (machine integers underneath), and
// divisions rounded to 16 decimals (the decimal type's own division).
void longArithmetic(benchmark::State& state) {
    evaluateRepeated(state, u"0", u" + 1.25 * 3.3 - 0.01");
}
BENCHMARK(longArithmetic)->RangeMultiplier(4)->Range(1 << 8, 1 << 14)->Complexity();

void longDivision(benchmark::State& state) { evaluateRepeated(state, u"0", u" + 10 / 3"); }
BENCHMARK(longDivision)->RangeMultiplier(4)->Range(1 << 8, 1 << 12)->Complexity();

}  // namespace

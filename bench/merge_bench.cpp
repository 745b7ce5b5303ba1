// Ravelin_MergeText on templates of 100 KB, 1 MB and 10 MB (UTF-16 units) with one span per 100
// units over 100 distinct expressions, called through the function pointer the host calls: each
// call evaluates 100 expressions and takes the rest from its cache, so the time should grow
// linearly with the template.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "host/fmx.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace {

constexpr std::size_t kUnitsPerSpan = 100;
constexpr int kDistinctExpressions = 100;

std::u16string widen(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

// Literal text and spans in turn, each span followed by filler up to the next span.
std::u16string makeTemplate(std::size_t units) {
    const std::u16string filler =
        u"Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod tempor. ";
    std::u16string text;
    text.reserve(units + kUnitsPerSpan);
    for (std::size_t span = 0; text.size() < units; ++span) {
        const std::size_t start = text.size();
        const int n = static_cast<int>(span % kDistinctExpressions);
        text += widen("<<\"Value \" & " + std::to_string(n) + " * 3>>");
        while (text.size() - start < kUnitsPerSpan) {
            text.append(filler, 0, std::min(filler.size(), kUnitsPerSpan - (text.size() - start)));
        }
    }
    return text;
}

void BM_MergeText(benchmark::State& state) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
    const fmx::ExtPluginType function = session.host().findFunction(u"Ravelin_MergeText")->function;
    sim::Env env;
    const std::size_t units = static_cast<std::size_t>(state.range(0));
    const sim::DataVectHandle args = sim::makeDataVect({sim::Value::text(makeTemplate(units))});
    std::size_t merged = 0;
    for (auto _ : state) {
        sim::DataHandle result = sim::makeData();
        function(7, env.handleRef(), *args, *result);
        merged = sim::valueOf(*result).textValue().size();
        benchmark::DoNotOptimize(merged);
    }
    state.counters["spans"] = static_cast<double>(units / kUnitsPerSpan);
    state.counters["merged_units"] = static_cast<double>(merged);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(units * sizeof(char16_t)));
}
BENCHMARK(BM_MergeText)
    ->Arg(100 * 1000)
    ->Arg(1000 * 1000)
    ->Arg(10 * 1000 * 1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

// Ravelin_RegExp_Substitute on 1,000,000 characters of prose with ([0-9]+), called through the
// function pointer the host calls, next to a bare std::wregex search loop over the same wide
// string (what the substitution cannot do without). The function should stay within 1.3x of the
// loop: reading the text, its own thread and stack, and the styled output cost the difference.
#include <benchmark/benchmark.h>

// GCC 12 with the address sanitizer sees std::function members of the regex compiler's states
// as maybe uninitialized; they are not.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <regex>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
#include <string>

#include "host/fmx.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace {

constexpr std::size_t kUnits = 1000 * 1000;

const std::u16string& prose() {
    static const std::u16string text = [] {
        const std::u16string line =
            u"In 1987 the 3 quick brown foxes jumped over 12 lazy dogs near mile 4096 of the "
            u"old road, and nobody counted them again until 2024.\r";
        std::u16string t;
        while (t.size() < kUnits) t += line;
        t.resize(kUnits);
        return t;
    }();
    return text;
}

void BM_Regex_BareWregexLoop(benchmark::State& state) {
    const std::wstring text(prose().begin(), prose().end());
    std::size_t matches = 0;
    for (auto _ : state) {
        const std::wregex expression(L"([0-9]+)");
        matches = 0;
        auto from = text.cbegin();
        auto flags = std::regex_constants::match_default;
        std::wsmatch m;
        while (std::regex_search(from, text.cend(), m, expression, flags)) {
            ++matches;
            from = m[0].second;
            flags = std::regex_constants::match_prev_avail;
        }
        benchmark::DoNotOptimize(matches);
    }
    state.counters["matches"] = static_cast<double>(matches);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kUnits));
}

void BM_Regex_RavelinSubstitute(benchmark::State& state) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
    const fmx::ExtPluginType function =
        session.host().findFunction(u"Ravelin_RegExp_Substitute")->function;
    sim::Env env;
    const sim::DataVectHandle args =
        sim::makeDataVect({sim::Value::text(prose()), sim::Value::text(std::u16string(u"([0-9]+)")),
                           sim::Value::text(std::u16string(u"N"))});
    std::size_t size = 0;
    for (auto _ : state) {
        sim::DataHandle result = sim::makeData();
        function(13, env.handleRef(), *args, *result);
        size = sim::valueOf(*result).textValue().size();
        benchmark::DoNotOptimize(size);
    }
    state.counters["result_units"] = static_cast<double>(size);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kUnits));
}

BENCHMARK(BM_Regex_BareWregexLoop)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Regex_RavelinSubstitute)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

// Ravelin_GetAsHTML's "$" form on lists of 8,192 to 32,768 one-letter values (two units each
// with the return), every value styled and every third one aligned, called through the function
// pointer the host calls. The time should grow linearly with the number of values.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "host/fmx.h"
#include "sim/core/handles.h"
#include "sim/core/text.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace {

sim::Text makeValueList(std::size_t values) {
    std::u16string plain;
    for (std::size_t n = 0; n < values; ++n) {
        plain += static_cast<char16_t>(u'a' + n % 26);
        plain += u'\r';
    }
    sim::Text text(plain);
    const sim::Alignment alignments[] = {sim::Alignment::Center, sim::Alignment::Right,
                                         sim::Alignment::Full};
    for (std::size_t n = 0; n < values; ++n) {
        const auto at = static_cast<uint32_t>(2 * n);
        sim::CharStyle s;
        s.colorOn = true;
        s.color = sim::Rgb{static_cast<uint8_t>(n % 2 == 0 ? 255 : 0), 0,
                           static_cast<uint8_t>(n % 2 == 0 ? 0 : 255)};
        s.face = n % 5 == 0 ? 256 : 0;
        s.faceMask = 0x7FFF;
        text.setStyle(s, at, 1);
        if (n % 3 == 0) text.setAlignment(alignments[n / 3 % 3], at, 1);
    }
    return text;
}

void BM_GetAsHTMLValues(benchmark::State& state) {
    const auto values = static_cast<std::size_t>(state.range(0));
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
    sim::Env env;
    env.locals = std::make_shared<sim::Variables>();
    env.locals->set(u"$t", 1, sim::Value::text(makeValueList(values)));
    const fmx::ExtPluginType function = session.host().findFunction(u"Ravelin_GetAsHTML")->function;
    const sim::DataVectHandle args = sim::makeDataVect({sim::Value::text(u"$t")});
    std::size_t html = 0;
    for (auto _ : state) {
        sim::DataHandle result = sim::makeData();
        function(25, env.handleRef(), *args, *result);
        html = sim::valueOf(*result).textValue().size();
        benchmark::DoNotOptimize(html);
    }
    state.counters["html_units"] = static_cast<double>(html);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * values));
}

BENCHMARK(BM_GetAsHTMLValues)->Arg(8192)->Arg(16384)->Arg(32768)->Unit(benchmark::kMillisecond);

}  // namespace

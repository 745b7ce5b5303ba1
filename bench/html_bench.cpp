// Ravelin_GetAsHTML on styled texts of 1 MB and 10 MB (one unit per byte of ASCII text) whose
// style changes every 20 characters on average, called through the function pointer the host
// calls, beside the host's own GetAsCSS on the same text, which is what a solution uses without
// the plug-in. Time should grow linearly with the text.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "host/fmx.h"
#include "sim/core/fonts.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"
#include "sim/core/text.h"

namespace {

// Runs of 1 to 39 characters, each in one of a dozen styles (faces, colours, fonts, sizes) and
// never in the style of the run before.
sim::Text makeStyledText(std::size_t units) {
    const std::u16string filler =
        u"Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod tempor. ";
    std::u16string plain;
    plain.reserve(units + filler.size());
    while (plain.size() < units) plain += filler;
    plain.resize(units);
    sim::Text text(plain);

    std::vector<sim::CharStyle> palette;
    const uint16_t fonts[] = {sim::fonts::idOf(u"Helvetica"), sim::fonts::idOf(u"Georgia")};
    for (int i = 0; i < 12; ++i) {
        sim::CharStyle s;
        s.face = static_cast<uint16_t>((i % 4 == 1 ? 256 : 0) | (i % 3 == 2 ? 512 : 0) |
                                       (i == 7 ? 1024 : 0) | (i == 9 ? 4096 : 0));
        s.faceMask = 0x7FFF;
        s.colorOn = i % 2 == 1;
        s.color = sim::Rgb{static_cast<uint8_t>(40 * i), 0, static_cast<uint8_t>(255 - 20 * i)};
        s.sizeOn = i % 5 == 3;
        s.size = static_cast<uint16_t>(10 + i);
        s.fontOn = i % 6 == 4;
        s.font = fonts[i % 2];
        palette.push_back(s);
    }
    std::mt19937 random(42);
    std::uniform_int_distribution<uint32_t> length(1, 39);
    std::uniform_int_distribution<size_t> pick(1, palette.size() - 1);
    size_t style = 0;
    for (uint32_t pos = 0; pos < units;) {
        const uint32_t n = std::min<uint32_t>(length(random), static_cast<uint32_t>(units) - pos);
        style = (style + pick(random)) % palette.size();
        text.setStyle(palette[style], pos, n);
        pos += n;
    }
    return text;
}

struct Fixture {
    explicit Fixture(std::size_t units) {
        sim::SessionOptions o;
        o.pluginPath = RAVELIN_PLUGIN_PATH;
        session = std::make_unique<sim::Session>(o);
        env.locals = std::make_shared<sim::Variables>();
        env.locals->set(u"$t", 1, sim::Value::text(makeStyledText(units)));
    }
    std::unique_ptr<sim::Session> session;
    sim::Env env;
};

void BM_GetAsHTML(benchmark::State& state) {
    const auto units = static_cast<std::size_t>(state.range(0));
    Fixture f(units);
    const fmx::ExtPluginType function =
        f.session->host().findFunction(u"Ravelin_GetAsHTML")->function;
    const sim::DataVectHandle args = sim::makeDataVect({f.env.locals->get(u"$t", 1)});
    std::size_t html = 0;
    for (auto _ : state) {
        sim::DataHandle result = sim::makeData();
        function(25, f.env.handleRef(), *args, *result);
        html = sim::valueOf(*result).textValue().size();
        benchmark::DoNotOptimize(html);
    }
    state.counters["html_units"] = static_cast<double>(html);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * units));
}

// The host's GetAsCSS over the same text, as a calculation evaluates it.
void BM_HostGetAsCSS(benchmark::State& state) {
    const auto units = static_cast<std::size_t>(state.range(0));
    Fixture f(units);
    std::size_t css = 0;
    for (auto _ : state) {
        css = f.session->eval("GetAsCSS ( $t )", f.env).value.textValue().size();
        benchmark::DoNotOptimize(css);
    }
    state.counters["css_units"] = static_cast<double>(css);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * units));
}

BENCHMARK(BM_GetAsHTML)
    ->Arg(1000 * 1000)
    ->Arg(10 * 1000 * 1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_HostGetAsCSS)
    ->Arg(1000 * 1000)
    ->Arg(10 * 1000 * 1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

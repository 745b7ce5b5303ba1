// Speed of the host's styled text through the C interface: appending slices of a long styled
// text, styling a long text range by range, and searching without case. Each should grow
// linearly with the work asked for, not with the length of the text.
#include <benchmark/benchmark.h>

#include <string>

#include "host/fmx.h"

namespace {

constexpr fmx::uint32 kTenMegabytes = 10u << 20;

// A long text with a style run every thousand units.
fmx::TextUniquePtr styledText(fmx::uint32 size) {
    fmx::TextUniquePtr t;
    t->Assign(std::string(size, 'a').c_str(), fmx::kEncoding_UTF8);
    fmx::CharacterStyleUniquePtr bold(3, fmx::kFace_Bold, 12);
    for (fmx::uint32 p = 0; p + 10 < size; p += 1000) t->SetStyle(*bold, p, 10);
    return t;
}

void appendSlices(benchmark::State& state) {
    static const fmx::TextUniquePtr source = styledText(kTenMegabytes);
    for (auto _ : state) {
        fmx::TextUniquePtr target;
        for (int64_t i = 0; i < state.range(0); ++i) {
            const auto from = static_cast<fmx::uint32>((i * 7919) % (kTenMegabytes - 2000));
            target->AppendText(*source, from, 1000);
        }
        benchmark::DoNotOptimize(target->GetSize());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(appendSlices)->RangeMultiplier(10)->Range(100, 10000)->Complexity();

void styleRanges(benchmark::State& state) {
    fmx::CharacterStyleUniquePtr italic(3, fmx::kFace_Italic, 12);
    for (auto _ : state) {
        fmx::TextUniquePtr t;
        t->Assign(std::string(static_cast<size_t>(state.range(0)) * 100, 'a').c_str());
        for (int64_t i = 0; i < state.range(0); ++i) {
            t->SetStyle(*italic, static_cast<fmx::uint32>(i * 100), 10);
        }
        benchmark::DoNotOptimize(t->GetSize());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(styleRanges)->RangeMultiplier(4)->Range(1 << 10, 1 << 16)->Complexity();

void findIgnoringCase(benchmark::State& state) {
    fmx::TextUniquePtr hay;
    hay->Assign((std::string(static_cast<size_t>(state.range(0)), 'x') + "Needle").c_str());
    fmx::TextUniquePtr needle;
    needle->Assign("NEEDLE");
    for (auto _ : state) benchmark::DoNotOptimize(hay->FindIgnoringCase(*needle, 0));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(findIgnoringCase)->RangeMultiplier(4)->Range(1 << 12, 1 << 20)->Complexity();

}  // namespace

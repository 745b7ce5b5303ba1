// Base64 on 10 MB: the plug-in's coder alone, coreutils base64 as a process on the same bytes
// (what a user would run instead), and Ravelin_Encode / Ravelin_Decode through the function
// pointer the host calls, with the host's text conversions around the coder. Compare, in one
// run: the coder against coreutils both ways, and the functions against the coder. Most of a
// function's time is the host's side: reading the text as UTF-8 and making the result's text
// (UTF-16) from the bytes; Encode reads the text a slice at a time, so it never holds all of it.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "encoding/base64.h"
#include "host/fmx.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

extern char** environ;

namespace {

constexpr std::size_t kBytes = 10 * 1000 * 1000;

// Prose with some accented letters: what a text field holds.
const std::string& plainText() {
    static const std::string text = [] {
        const std::string line = "Über die Brücke gingen 12 Leute, café au lait, naïve résumé. ";
        std::string t;
        while (t.size() < kBytes) t += line;
        t.resize(kBytes);
        while ((static_cast<unsigned char>(t.back()) & 0xC0) == 0x80) t.pop_back();
        if (static_cast<unsigned char>(t.back()) >= 0xC0) t.pop_back();
        return t;
    }();
    return text;
}

const std::string& base64Text() {
    static const std::string text = B64_Encode(plainText());
    return text;
}

std::string tempFile(const std::string& name, const std::string& content) {
    const std::string path = "/tmp/ravelin_bench_" + std::to_string(getpid()) + "_" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

// Runs `base64 ARGS file`, reading all it writes; answers the byte count.
std::size_t runCoreutils(const char* option, const std::string& file) {
    int out[2];
    if (pipe(out) != 0) throw std::runtime_error("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    const char* argv[] = {"base64", option, file.c_str(), nullptr};
    pid_t pid = 0;
    if (posix_spawnp(&pid, "base64", &actions, nullptr, const_cast<char**>(argv), environ) != 0) {
        throw std::runtime_error("base64 did not start");
    }
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    std::string buffer(1 << 20, '\0');
    std::size_t total = 0;
    for (ssize_t n; (n = read(out[0], buffer.data(), buffer.size())) > 0;) total += n;
    close(out[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return total;
}

void BM_Base64_CoderEncode(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(B64_Encode(plainText()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * plainText().size()));
}

void BM_Base64_CoderDecode(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(B64_Decode(base64Text()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * plainText().size()));
}

void BM_Base64_CoreutilsEncode(benchmark::State& state) {
    const std::string file = tempFile("plain", plainText());
    for (auto _ : state) benchmark::DoNotOptimize(runCoreutils("-w0", file));
    std::remove(file.c_str());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * plainText().size()));
}

void BM_Base64_CoreutilsDecode(benchmark::State& state) {
    const std::string file = tempFile("base64", base64Text());
    for (auto _ : state) benchmark::DoNotOptimize(runCoreutils("-d", file));
    std::remove(file.c_str());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * plainText().size()));
}

void callThroughHost(benchmark::State& state, const char16_t* name, const char16_t* keyword,
                     const std::string& text) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    sim::Session session(o);
    const fmx::ExtPluginType function = session.host().findFunction(name)->function;
    sim::Env env;
    const sim::DataVectHandle args = sim::makeDataVect(
        {sim::Value::text(sim::Text(keyword)), sim::Value::text(sim::fromUtf8(text))});
    for (auto _ : state) {
        sim::DataHandle result = sim::makeData();
        function(5, env.handleRef(), *args, *result);
        benchmark::DoNotOptimize(sim::valueOf(*result).textValue().size());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * plainText().size()));
}

void BM_Base64_RavelinEncode(benchmark::State& state) {
    callThroughHost(state, u"Ravelin_Encode", u"UTF-8 to Base64", plainText());
}

void BM_Base64_RavelinDecode(benchmark::State& state) {
    callThroughHost(state, u"Ravelin_Decode", u"Base64 to UTF-8", base64Text());
}

BENCHMARK(BM_Base64_CoderEncode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Base64_CoreutilsEncode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Base64_RavelinEncode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Base64_CoderDecode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Base64_CoreutilsDecode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Base64_RavelinDecode)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

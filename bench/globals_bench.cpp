// Ravelin_SetGlobal and Ravelin_GetGlobal called through the function pointers the host calls,
// with 10 and 1,000,000 keys stored, next to a bare std::map lookup of the same keys (the ratio
// is what the host interface and the store's copies cost); and the memory a stored number takes.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "host/fmx.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace {

constexpr std::size_t kPoolSize = 1024;  // distinct argument vectors cycled through per run

std::u16string keyOf(std::size_t i) {
    std::u16string key = u"key";
    for (char c : std::to_string(i)) key += static_cast<char16_t>(c);
    return key;
}

class LoadedStore {
public:
    LoadedStore() : session_(options()) {
        set_ = session_.host().findFunction(u"Ravelin_SetGlobal")->function;
        get_ = session_.host().findFunction(u"Ravelin_GetGlobal")->function;
        env_.file = u"Demo";
    }

    fmx::errcode set(const fmx::DataVect& args, fmx::Data& out) {
        return set_(23, env_.handleRef(), args, out);
    }
    fmx::errcode get(const fmx::DataVect& args, fmx::Data& out) {
        return get_(24, env_.handleRef(), args, out);
    }

    // Empties the store (an empty key), then stores keys 0..n-1 as numbers.
    void fill(std::size_t n) {
        if (filled_ == n) return;
        call(true, {sim::Value::text(u""), sim::Value::number(1)});
        for (std::size_t i = 0; i < n; ++i) {
            call(true, {sim::Value::text(keyOf(i)), sim::Value::number(static_cast<double>(i))});
        }
        filled_ = n;
    }
    void forget() { filled_ = SIZE_MAX; }

private:
    static sim::SessionOptions options() {
        sim::SessionOptions o;
        o.pluginPath = RAVELIN_PLUGIN_PATH;
        return o;
    }
    void call(bool store, const std::vector<sim::Value>& args) {
        sim::DataVectHandle params = sim::makeDataVect(args);
        sim::DataHandle out = sim::makeData();
        store ? set(*params, *out) : get(*params, *out);
    }

    sim::Session session_;
    sim::Env env_;
    fmx::ExtPluginType set_ = nullptr;
    fmx::ExtPluginType get_ = nullptr;
    std::size_t filled_ = SIZE_MAX;
};

LoadedStore& store() {
    static LoadedStore instance;
    return instance;
}

// Keys spread over the whole stored range, the same for every benchmark of one size.
std::vector<std::size_t> poolIndexes(std::size_t n) {
    std::mt19937_64 random(42);
    std::uniform_int_distribution<std::size_t> pick(0, n - 1);
    std::vector<std::size_t> indexes(kPoolSize);
    for (std::size_t& i : indexes) i = pick(random);
    return indexes;
}

std::vector<sim::DataVectHandle> argumentPool(std::size_t n, bool withValue) {
    std::vector<sim::DataVectHandle> pool;
    for (std::size_t i : poolIndexes(n)) {
        std::vector<sim::Value> args{sim::Value::text(keyOf(i))};
        if (withValue) args.push_back(sim::Value::number(static_cast<double>(i) + 0.5));
        pool.push_back(sim::makeDataVect(args));
    }
    return pool;
}

void BM_SetGlobal(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    store().fill(n);
    const std::vector<sim::DataVectHandle> pool = argumentPool(n, true);
    sim::DataHandle out = sim::makeData();
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(store().set(*pool[i++ % kPoolSize], *out));
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_GetGlobal(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    store().fill(n);
    const std::vector<sim::DataVectHandle> pool = argumentPool(n, false);
    sim::DataHandle out = sim::makeData();
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(store().get(*pool[i++ % kPoolSize], *out));
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_StdMapLookup(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    std::map<std::u16string, double> map;
    for (std::size_t i = 0; i < n; ++i) map.emplace(keyOf(i), static_cast<double>(i));
    std::vector<std::u16string> keys;
    for (std::size_t i : poolIndexes(n)) keys.push_back(keyOf(i));
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(keys[i++ % kPoolSize])->second);
    }
    state.SetItemsProcessed(state.iterations());
}

std::size_t heapInUse() {
    malloc_trim(0);
    return mallinfo2().uordblks;
}

// Heap held by the store per number value, keys and map nodes included.
void BM_MemoryPerStoredNumber(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    double perValue = 0;
    for (auto _ : state) {
        store().fill(0);
        const std::size_t before = heapInUse();
        store().fill(n);
        perValue = static_cast<double>(heapInUse() - before) / static_cast<double>(n);
        store().forget();
    }
    state.counters["bytes_per_value"] = perValue;
}

}  // namespace

BENCHMARK(BM_SetGlobal)->Arg(10)->Arg(1000000);
BENCHMARK(BM_GetGlobal)->Arg(10)->Arg(1000000);
BENCHMARK(BM_StdMapLookup)->Arg(10)->Arg(1000000);
BENCHMARK(BM_MemoryPerStoredNumber)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

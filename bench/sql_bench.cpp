// ExecuteSQL on 100,000 rows of five columns (integer, text, real, date, text).
//
// In one session: Ravelin_ExecuteSQL next to the host's own ExecuteSQL, both evaluated as
// calculations and giving the same text. Target: the plug-in within 1.25 times the native
// function. As whole processes: fmsim evaluating either function next to the sqlite3 shell
// printing the same query from the same database file, with the peak memory of each process.
// Bound for a plain host: fmsim with the native function within 3 times the shell.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "sim/core/encoding.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

extern char** environ;

namespace {

constexpr int kRows = 100000;
constexpr char kQuery[] = "SELECT id, name, amount, day, note FROM Sales ORDER BY id";

constexpr char kSeed[] = R"(
CREATE TABLE Sales (id INTEGER PRIMARY KEY, name TEXT, amount REAL, day DATE, note TEXT);
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000)
INSERT INTO Sales
SELECT i, 'Customer ' || i, i * 1.25 + 0.01, date('2000-01-01', '+' || (i % 9000) || ' days'),
       'Order note for row ' || i || ', with some text'
FROM n;
)";

// The database file, written once per run into a fresh temporary directory.
class SalesDatabase {
public:
    SalesDatabase() {
        char dirTemplate[] = "/tmp/ravelin-sql-bench-XXXXXX";
        if (mkdtemp(dirTemplate) == nullptr) std::abort();
        dir_ = dirTemplate;
        path_ = dir_ + "/sales.sqlite";
        sim::SessionOptions o;
        o.dbPath = path_;
        o.createDb = true;
        o.seedSql = kSeed;
        sim::Session seeding(o);  // writes the file, then closes it
    }
    ~SalesDatabase() { std::filesystem::remove_all(dir_); }
    const std::string& path() const { return path_; }

private:
    std::string dir_;
    std::string path_;
};

const SalesDatabase& salesDatabase() {
    static const SalesDatabase db;
    return db;
}

std::optional<std::string> findOnPath(const std::string& tool) {
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    for (std::size_t start = 0; start <= dirs.size();) {
        std::size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        const std::string candidate = dirs.substr(start, end - start) + "/" + tool;
        if (access(candidate.c_str(), X_OK) == 0) return candidate;
        start = end + 1;
    }
    return std::nullopt;
}

constexpr char kPluginCalc[] =
    "Ravelin_ExecuteSQL ( \"SELECT id, name, amount, day, note FROM Sales ORDER BY id\" ; \",\" )";
constexpr char kNativeCalc[] =
    "ExecuteSQL ( \"SELECT id, name, amount, day, note FROM Sales ORDER BY id\" ; \",\" ; \"\" )";

// Evaluates `calc` as a calculation in one session, as a FileMaker user's field or script would.
void evaluateInSession(benchmark::State& state, const char* calc) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.dbPath = salesDatabase().path();
    sim::Session session(o);
    const sim::Env env;
    const std::u16string expression = sim::fromUtf8(calc);
    // Both functions must give the same text, or the comparison means nothing.
    const sim::calc::Result plugin = session.host().evaluate(sim::fromUtf8(kPluginCalc), env);
    const sim::calc::Result native = session.host().evaluate(sim::fromUtf8(kNativeCalc), env);
    if (plugin.error != 0 || native.error != 0 ||
        plugin.value.asText().units() != native.value.asText().units()) {
        state.SkipWithError("the plug-in and the native function disagree");
        return;
    }
    std::size_t units = 0;
    for (auto _ : state) {
        sim::calc::Result r = session.host().evaluate(expression, env);
        units = r.value.textValue().size();
        benchmark::DoNotOptimize(units);
    }
    if (units == 0) state.SkipWithError("the query returned nothing");
    state.counters["rows"] = kRows;
    state.counters["units"] = static_cast<double>(units);
}

void BM_ExecuteSQL_Plugin(benchmark::State& state) { evaluateInSession(state, kPluginCalc); }
BENCHMARK(BM_ExecuteSQL_Plugin)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExecuteSQL_Native(benchmark::State& state) { evaluateInSession(state, kNativeCalc); }
BENCHMARK(BM_ExecuteSQL_Native)->Unit(benchmark::kMillisecond)->UseRealTime();

// The last number in a file: GNU time's report of a peak resident size, in KB.
long peakKbIn(const std::string& path) {
    long kb = 0;
    if (FILE* f = std::fopen(path.c_str(), "r")) {
        long value = 0;
        while (std::fscanf(f, "%ld", &value) == 1 || std::fscanf(f, "%*s") == 0) kb = value;
        std::fclose(f);
    }
    return kb;
}

// Runs `argv` once per iteration with its output going to /dev/null (neither result is printed
// anywhere else either), and reports the largest peak resident size of the runs. The peak is
// taken by GNU time when installed: a child of this large process would report this process's own
// peak, which a process inherits across exec.
void runProcess(benchmark::State& state, std::vector<std::string> argv) {
    const std::optional<std::string> timer = findOnPath("time");
    const std::string report = salesDatabase().path() + ".peak";
    if (timer) argv.insert(argv.begin(), {*timer, "-f", "%M", "-o", report});
    std::vector<char*> argvPointers;
    for (std::string& a : argv) argvPointers.push_back(a.data());
    argvPointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    long peakKb = 0;
    double cpuSeconds = 0;  // of the process and its children: a fair figure on a busy machine
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, argv[0].c_str(), &actions, nullptr, argvPointers.data(), environ) !=
            0) {
            state.SkipWithError("cannot start the process");
            break;
        }
        int status = 0;
        rusage usage{};
        wait4(pid, &status, 0, &usage);
        cpuSeconds += static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                      static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("the process failed");
            break;
        }
        if (timer) peakKb = std::max(peakKb, peakKbIn(report));
    }
    posix_spawn_file_actions_destroy(&actions);
    state.counters["rows"] = kRows;
    state.counters["process_cpu_ms"] =
        benchmark::Counter(cpuSeconds * 1000, benchmark::Counter::kAvgIterations);
    if (timer) state.counters["peak_MB"] = static_cast<double>(peakKb) / 1024;
}

void BM_ExecuteSQL_Sqlite3Shell(benchmark::State& state) {
    const std::optional<std::string> shell = findOnPath("sqlite3");
    if (!shell) {
        state.SkipWithError("sqlite3 is not installed (apt-get install sqlite3)");
        return;
    }
    runProcess(state, {*shell, "-separator", ",", salesDatabase().path(), kQuery});
}
BENCHMARK(BM_ExecuteSQL_Sqlite3Shell)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExecuteSQL_FmsimNative(benchmark::State& state) {
    runProcess(state, {FMSIM_PATH, "--db", salesDatabase().path(), "-e", kNativeCalc});
}
BENCHMARK(BM_ExecuteSQL_FmsimNative)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExecuteSQL_FmsimPlugin(benchmark::State& state) {
    runProcess(state, {FMSIM_PATH, "--db", salesDatabase().path(), "-e", kPluginCalc});
}
BENCHMARK(BM_ExecuteSQL_FmsimPlugin)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

// Ravelin_ExecuteSQL on 100,000 rows of five columns (integer, text, real, date, text), called
// through the function pointer the host calls, next to the sqlite3 shell printing the same query
// with -separator from the same database file. The target: the plug-in within 1.5 times the
// shell's time.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/fmx.h"
#include "sim/core/handles.h"
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

void BM_ExecuteSQL_Plugin(benchmark::State& state) {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.dbPath = salesDatabase().path();
    sim::Session session(o);
    const fmx::ExtPluginType function =
        session.host().findFunction(u"Ravelin_ExecuteSQL")->function;
    sim::Env env;
    const std::string query = kQuery;
    const sim::DataVectHandle args = sim::makeDataVect(
        {sim::Value::text(std::u16string(query.begin(), query.end())), sim::Value::text(u",")});
    std::size_t units = 0;
    for (auto _ : state) {
        sim::DataHandle result = sim::makeData();
        function(4, env.handleRef(), *args, *result);
        units = sim::valueOf(*result).textValue().size();
        benchmark::DoNotOptimize(units);
    }
    if (units == 0) state.SkipWithError("the query returned nothing");
    state.counters["rows"] = kRows;
    state.counters["units"] = static_cast<double>(units);
}
BENCHMARK(BM_ExecuteSQL_Plugin)->Unit(benchmark::kMillisecond)->UseRealTime();

// The shell's output goes to /dev/null: the plug-in's result is not printed either.
void BM_ExecuteSQL_Sqlite3Shell(benchmark::State& state) {
    const std::optional<std::string> shell = findOnPath("sqlite3");
    if (!shell) {
        state.SkipWithError("sqlite3 is not installed (apt-get install sqlite3)");
        return;
    }
    const std::string dbPath = salesDatabase().path();
    std::vector<std::string> argv = {*shell, "-separator", ",", dbPath, kQuery};
    std::vector<char*> argvPointers;
    for (std::string& a : argv) argvPointers.push_back(a.data());
    argvPointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, shell->c_str(), &actions, nullptr, argvPointers.data(), environ) !=
            0) {
            state.SkipWithError("cannot start sqlite3");
            break;
        }
        int status = 0;
        waitpid(pid, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("sqlite3 failed");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
    state.counters["rows"] = kRows;
}
BENCHMARK(BM_ExecuteSQL_Sqlite3Shell)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

#include "sim/shell/concurrent.h"

#include <algorithm>
#include <future>
#include <latch>
#include <map>
#include <memory>
#include <tuple>

#include "sim/session/env.h"
#include "sim/session/json.h"
#include "sim/session/variables.h"

namespace fmsim {

namespace {

using Key = std::tuple<short, std::string, std::string>;  // error, type, text
using Counts = std::map<Key, uint64_t>;

// One thread's runs. Each thread counts on its own and the counts are added up after the join,
// so counting takes no lock and does not serialise the threads.
std::vector<Counts> runThread(sim::Session& session, const std::vector<std::string>& calcs,
                              int repeat, std::latch& start) {
    start.arrive_and_wait();  // first, so that a failure below cannot leave the others waiting
    sim::Env env;
    env.file = session.host().currentFile();
    env.locals = std::make_shared<sim::Variables>();
    std::vector<Counts> counts(calcs.size());
    for (int round = 0; round < repeat; ++round) {
        for (std::size_t i = 0; i < calcs.size(); ++i) {
            sim::EvalResult r = session.eval(calcs[i], env);
            ++counts[i][Key{r.error, std::move(r.type), std::move(r.text)}];
        }
    }
    return counts;
}

Tally tallyOf(const std::string& calc, const Counts& counts) {
    Tally tally{calc, {}};
    for (const auto& [key, count] : counts) {
        const auto& [error, type, text] = key;
        tally.outcomes.push_back({type, text, error, count});
    }
    std::stable_sort(tally.outcomes.begin(), tally.outcomes.end(),
                     [](const Outcome& a, const Outcome& b) { return a.count > b.count; });
    return tally;
}

}  // namespace

std::vector<Tally> runConcurrently(sim::Session& session, const std::vector<std::string>& calcs,
                                   int threads, int repeat) {
    std::latch start(threads);
    std::vector<std::future<std::vector<Counts>>> running;
    running.reserve(static_cast<std::size_t>(threads));
    try {
        for (int t = 0; t < threads; ++t) {
            running.push_back(std::async(std::launch::async, runThread, std::ref(session),
                                         std::cref(calcs), repeat, std::ref(start)));
        }
    } catch (...) {
        // A thread that could not start: release the ones waiting for it, then let them finish.
        start.count_down(threads - static_cast<std::ptrdiff_t>(running.size()));
        for (auto& r : running) r.wait();
        throw;
    }
    std::vector<Counts> total(calcs.size());
    for (auto& r : running) {
        const std::vector<Counts> counts = r.get();
        for (std::size_t i = 0; i < calcs.size(); ++i) {
            for (const auto& [key, count] : counts[i]) total[i][key] += count;
        }
    }
    std::vector<Tally> tallies;
    for (std::size_t i = 0; i < calcs.size(); ++i) tallies.push_back(tallyOf(calcs[i], total[i]));
    return tallies;
}

std::string errorShown(short code) {
    const std::string text = sim::errorMessage(code);
    return "? (error " + std::to_string(code) + (text.empty() ? "" : ": " + text) + ")";
}

std::string plainLine(const Tally& tally, bool terminal) {
    std::string line = tally.calc;
    for (const Outcome& o : tally.outcomes) {
        std::string shown = o.error != 0 ? errorShown(o.error) : o.text;
        if (terminal) std::replace(shown.begin(), shown.end(), '\r', '\n');
        line += '\t' + shown + " x" + std::to_string(o.count);
    }
    return line;
}

std::string jsonLine(const Tally& tally) {
    std::string line = "{\"calc\": " + sim::json::quote(tally.calc) + ", \"results\": [";
    for (std::size_t i = 0; i < tally.outcomes.size(); ++i) {
        const Outcome& o = tally.outcomes[i];
        if (i > 0) line += ", ";
        line += "{\"type\": " + sim::json::quote(o.type) +
                ", \"text\": " + sim::json::quote(o.text) +
                ", \"error\": " + std::to_string(o.error) +
                (o.error != 0 && !sim::errorMessage(o.error).empty()
                     ? ", \"message\": " + sim::json::quote(sim::errorMessage(o.error))
                     : std::string()) +
                ", \"count\": " + std::to_string(o.count) + "}";
    }
    return line + "]}";
}

}  // namespace fmsim

// A server host calls plug-in functions from several threads at once, Ravelin_Set's
// re-registration of the whole table included. Nothing may break, and no pass may leave the
// table half registered. Run under the thread sanitizer in CI.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "entry/function_table.h"
#include "info_test_support.h"
#include "sim/core/encoding.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 200;
constexpr short kUnknownFunction = 1208;
constexpr char kReRegister[] = "Ravelin_Set ( \"inlineDocumentation\" ; \"on\" )";

std::string quoted(const std::string& s) { return "\"" + s + "\""; }

std::string ownKey(int thread, int round) {
    std::string key = "t";
    key += std::to_string(thread);
    key += '_';
    key += std::to_string(round);
    return key;
}

template <class Work>
void onThreads(Work work) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) threads.emplace_back(work, t);
    for (std::thread& t : threads) t.join();
}

sim::SessionOptions withScript() {
    sim::SessionOptions o = info_test::withPlugin("F1", {"F2"});
    o.scripts = {{"Hello", "Get ( ScriptParameter )"}};
    return o;
}

// A call that finds its function answers; while another thread re-registers it may not.
bool answered(const sim::EvalResult& r) { return r.error != kUnknownFunction; }

// Passes that interleave leave a broken table only now and then: several storms make that
// certain enough.
constexpr int kStorms = 8;

TEST(PluginConcurrency, ReRegisteringFromManyThreadsLeavesEveryFunctionRegistered) {
    sim::Session session(info_test::withPlugin());
    std::atomic<int> wrongAnswers{0};
    for (int storm = 0; storm < kStorms; ++storm) {
        onThreads([&](int) {
            for (int round = 0; round < kRounds; ++round) {
                const sim::EvalResult r = session.eval(kReRegister);
                if (answered(r) && r.text != "on") ++wrongAnswers;
            }
        });
        ASSERT_EQ(session.host().functions().size(), functionTable().size()) << storm;
    }
    EXPECT_EQ(wrongAnswers.load(), 0);

    for (const FunctionRow& row : functionTable()) {
        const std::string prototype = row.prototype;
        const std::string name = prototype.substr(0, prototype.find('('));
        EXPECT_TRUE(session.host().findFunction(sim::fromUtf8(name))) << name;
    }
    EXPECT_EQ(session.eval("Ravelin_Version").text, "3.0.3");
    EXPECT_EQ(session.eval("Ravelin_ValueType ( 1 )").text, "Number");
    EXPECT_EQ(session.eval("Ravelin_GetPrinterNames").text, "-4");
}

// The store and the scheduler under the same load: every call that found its function did its
// work, and afterwards the store holds every value and each scheduled script runs once.
TEST(PluginConcurrency, StoreAndSchedulerKeepEveryAnsweredCall) {
    sim::Session session(withScript());
    std::atomic<int> wrongAnswers{0};
    std::atomic<int> scheduled{0};
    onThreads([&](int thread) {
        const char* file = thread % 2 == 0 ? "F1" : "F2";
        const std::string option = thread % 2 == 0 ? "" : " ; \"dieonclose\"";
        for (int round = 0; round < kRounds; ++round) {
            const std::string n = std::to_string(round);
            const std::string own = quoted(ownKey(thread, round));
            if (round % 4 == 0) session.eval(kReRegister, file);
            const sim::EvalResult set =
                session.eval("Ravelin_SetGlobal ( " + own + " ; " + n + option + " )", file);
            session.eval("Ravelin_SetGlobal ( \"shared\" ; " + n + option + " )", file);
            const sim::EvalResult mine = session.eval("Ravelin_GetGlobal ( " + own + " )", file);
            if (answered(set) && answered(mine) && mine.text != n) ++wrongAnswers;
            if (round % 10 == 0) {
                const sim::EvalResult r =
                    session.eval("Ravelin_DoFileMakerScript ( \"Hello\" ; " + own + " ; 0 )", "F1");
                if (answered(r)) ++scheduled;
                session.idle(0);
            }
        }
    });
    EXPECT_EQ(wrongAnswers.load(), 0);

    // Each safe idle call starts at most one pending script.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (session.scriptRuns().size() < static_cast<std::size_t>(scheduled.load()) &&
           std::chrono::steady_clock::now() < deadline) {
        session.idle(0);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(session.scriptRuns().size(), static_cast<std::size_t>(scheduled.load()));

    for (int t = 0; t < kThreads; ++t) {
        const std::string key = quoted(ownKey(t, 0));
        session.eval("Ravelin_SetGlobal ( " + key + " ; 42 )");
        EXPECT_EQ(session.eval("Ravelin_GetGlobal ( " + key + " )").text, "42") << key;
    }
    EXPECT_EQ(session.eval("Ravelin_GetGlobal ( \"shared\" )").type, "Number");
}

}  // namespace

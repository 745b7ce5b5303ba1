// A server host calls plug-in functions from several threads at once: the store must neither
// break nor lose a write. Run under the thread sanitizer in CI.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "info_test_support.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 60;

std::string key(int thread, int round) {
    return "t" + std::to_string(thread) + "_" + std::to_string(round);
}

TEST(GlobalsConcurrency, SharedAndDistinctKeysFromSeveralThreads) {
    sim::Session session(info_test::withPlugin("F1", {"F2"}));
    std::atomic<int> failures{0};
    auto work = [&](int thread) {
        const char* file = thread % 2 == 0 ? "F1" : "F2";
        const std::string option = thread % 2 == 0 ? "" : " ; \"dieonclose\"";
        for (int round = 0; round < kRounds; ++round) {
            const std::string n = std::to_string(round);
            const std::string own = "\"" + key(thread, round) + "\"";
            session.eval("Ravelin_SetGlobal ( " + own + " ; " + n + option + " )", file);
            session.eval("Ravelin_SetGlobal ( \"shared\" ; " + n + option + " )", file);
            const sim::EvalResult mine = session.eval("Ravelin_GetGlobal ( " + own + " )", file);
            const sim::EvalResult shared = session.eval("Ravelin_GetGlobal ( \"shared\" )", file);
            if (mine.text != n || shared.type != "Number") ++failures;
            if (round % 10 == 9) {  // removing keys of its own while others write
                session.eval("Ravelin_SetGlobal ( " + own + " ; \"\" )", file);
                session.eval("Ravelin_SetGlobal ( " + own + " ; " + n + " )", file);
            }
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) threads.emplace_back(work, t);
    for (std::thread& t : threads) t.join();

    EXPECT_EQ(failures.load(), 0);
    for (int t = 0; t < kThreads; ++t) {
        for (int round = 0; round < kRounds; ++round) {
            const sim::EvalResult r =
                session.eval("Ravelin_GetGlobal ( \"" + key(t, round) + "\" )", "F2");
            EXPECT_EQ(r.text, std::to_string(round)) << key(t, round);
        }
    }
    EXPECT_EQ(session.eval("Ravelin_GetGlobal ( \"shared\" )").type, "Number");
}

}  // namespace

// Scripts through the built plug-in: fmsim with real short delays, and unloading with requests
// still waiting.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "sim/session/env.h"
#include "sim/session/session.h"
#include "tests/plugin/shell_support.h"

namespace {

// fmsim's standard output, and "exit N" when it does not exit with 0 (a sanitizer's report
// changes the exit code).
std::string fmsimOutput(const std::string& args) {
    const ShellRun run = runShell(std::string(FMSIM_PATH) + " " + args + " 2>/dev/null");
    return run.exitCode == 0 ? run.output : run.output + "exit " + std::to_string(run.exitCode);
}

std::string resultLine(const char* number) {
    return std::string("{\"type\": \"Number\", \"text\": \"") + number + "\", \"error\": 0}\n";
}
std::string scriptLine(const char* parameter) {
    return std::string("{\"script\": \"Hello\", \"file\": \"Demo\", \"parameter\": \"") +
           parameter + "\"}\n";
}

TEST(ScriptsThroughFmsim, DelayedScriptRunsAtIdleWithItsParameter) {
    EXPECT_EQ(fmsimOutput("--json --script 'Hello=Get ( ScriptParameter )' -e "
                          "'Ravelin_DoFileMakerScript ( \"Hello\" ; 7 ; 0.2 )' --idle 1"),
              resultLine("0") + scriptLine("7"));
}

// Real delays, wide apart, so that each comes due at an idle call of its own.
TEST(ScriptsThroughFmsim, ImmediateFirstThenInTheOrderTheyComeDue) {
    EXPECT_EQ(fmsimOutput("--json --script 'Hello=Get ( ScriptParameter )'"
                          " -e 'Ravelin_DoFileMakerScript ( \"Hello\" ; \"late\" ; 1.2 )'"
                          " -e 'Ravelin_DoFileMakerScript ( \"Hello\" ; \"early\" ; 0.3 )'"
                          " -e 'Ravelin_DoFileMakerScript ( \"Hello\" ; \"now\" )' --idle 2"),
              resultLine("0") + resultLine("0") + resultLine("0") + scriptLine("now") +
                  scriptLine("early") + scriptLine("late"));
}

sim::SessionOptions withPlugin() {
    sim::SessionOptions o;
    o.pluginPath = RAVELIN_PLUGIN_PATH;
    o.scripts = {{"Hello", "Get ( ScriptParameter )"}};
    return o;
}

std::ptrdiff_t threadCount() {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

TEST(ScriptsThroughThePlugin, UnloadingWithWaitingRequestsStopsTheTimer) {
    // Helpers that a runtime starts with the first thread (the thread sanitizer has one) are
    // there before counting.
    std::thread([] {}).join();
    const std::ptrdiff_t threadsBefore = threadCount();
    for (int round = 0; round < 5; ++round) {
        sim::Session session(withPlugin());
        for (const char* delay : {"0", "0.001", "3600"}) {
            session.eval(std::string("Ravelin_DoFileMakerScript ( \"Hello\" ; 1 ; ") + delay +
                         " )");
        }
    }
    // The library is really gone (its static scheduler was destroyed), and so is its thread.
    EXPECT_EQ(dlopen(RAVELIN_PLUGIN_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr);
    EXPECT_EQ(threadCount(), threadsBefore);
}

// Safe idle calls that start scripts, on one thread, overlap calculations on others that
// schedule scripts, count matches and read the last error (for the thread sanitizer).
TEST(ScriptsThroughThePlugin, IdleStartsOverlapCalculationsOnOtherThreads) {
    sim::Session session(withPlugin());
    std::atomic<bool> done{false};
    std::thread idler([&] {
        while (!done) session.idle(kFMXT_UserIdle);
    });
    std::atomic<int> wrong{0};
    std::vector<std::thread> callers;
    for (int t = 0; t < 4; ++t) {
        callers.emplace_back([&, t] {
            sim::Env env;
            for (int i = 0; i < 50; ++i) {
                const std::string n = std::to_string(t * 100 + i);
                if (session.eval("Ravelin_DoFileMakerScript ( \"Hello\" ; " + n + " ; 0 )", env)
                        .text != "0") {
                    ++wrong;
                }
                if (session.eval("Ravelin_RegExp_PatternCount ( \"a" + n + "\" ; \"a\" )", env)
                        .text != "1") {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& c : callers) c.join();
    done = true;
    idler.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace

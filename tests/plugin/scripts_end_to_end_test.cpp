// Scripts through the built plug-in: fmsim with real short delays, several threads at once, and
// unloading with requests still waiting.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

#include "sim/session/session.h"

namespace {

// fmsim's standard output.
std::string fmsimOutput(const std::string& args) {
    FILE* pipe =
        popen((std::string(FMSIM_PATH) + " " + args + " 2>/dev/null </dev/null").c_str(), "r");
    if (pipe == nullptr) return "popen failed";
    std::string out;
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
    pclose(pipe);
    return out;
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

std::size_t threadCount() {
    std::size_t n = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        (void)entry;
        ++n;
    }
    return n;
}

TEST(ScriptsThroughThePlugin, RequestsFromSeveralThreadsWhileIdling) {
    constexpr int kThreads = 3, kPerThread = 40;
    sim::Session session(withPlugin());
    ASSERT_EQ(session.initResult(), 57);
    std::vector<std::thread> callers;
    for (int t = 0; t < kThreads; ++t) {
        callers.emplace_back([&session, t] {
            for (int i = 0; i < kPerThread; ++i) {
                session.eval("Ravelin_DoFileMakerScript ( \"Hello\" ; " + std::to_string(t) +
                             " ; " + std::to_string(i % 3) + " / 1000 )");
            }
        });
    }
    while (session.scriptRuns().size() < kThreads * kPerThread) session.idle(kFMXT_UserIdle);
    for (auto& c : callers) c.join();
    EXPECT_EQ(session.scriptRuns().size(), std::size_t{kThreads * kPerThread});
}

TEST(ScriptsThroughThePlugin, UnloadingWithWaitingRequestsStopsTheTimer) {
    const std::size_t threadsBefore = threadCount();
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

}  // namespace

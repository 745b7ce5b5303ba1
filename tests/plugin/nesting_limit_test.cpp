// The nesting limit of the functions that evaluate their caller's calculations (Ravelin_MergeText
// and the "$" form of Ravelin_GetAsHTML), through the substitute host with the built plug-in
// loaded: calculations that call themselves through them end with 2400 on a small thread stack,
// the whole chain gives up at once, and the limit is exact and per call.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <memory>
#include <string>

#include "frame/nesting.h"
#include "sim/session/env.h"
#include "sim/session/session.h"
#include "tests/plugin/plugin_test_support.h"

namespace {

// A server thread's stack, far smaller than the 8 MB of a shell's main thread.
constexpr size_t kSmallStack = 512 * 1024;

void runOnSmallStack(const std::function<void()>& body) {
    pthread_attr_t attr;
    ASSERT_EQ(pthread_attr_init(&attr), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attr, kSmallStack), 0);
    pthread_t thread;
    auto start = [](void* arg) -> void* {
        (*static_cast<const std::function<void()>*>(arg))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attr, start, const_cast<std::function<void()>*>(&body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attr);
}

std::string limitMessage() { return rvl::NestingLimitError().what(); }

class NestingLimit : public plugin_test::LoadedPluginTest {
protected:
    sim::EvalResult evalOnSmallStack(const std::string& calculation) {
        sim::EvalResult r;
        runOnSmallStack([&] {
            sim::Env env;
            env.file = session_.host().currentFile();
            env.locals = std::make_shared<sim::Variables>();
            r = session_.eval(calculation, env);
        });
        return r;
    }
};

TEST_F(NestingLimit, SelfCallingCalculationsEndWith2400) {
    const struct {
        const char* name;
        std::string calculation;
    } cases[] = {
        {"MergeText",
         R"~(Let ( $t = "<<Ravelin_MergeText ( $t )>>" ; Ravelin_MergeText ( $t ) ))~"},
        {"GetAsHTML", R"~(Let ( [ $v = "a" ; $$s = "$v & Ravelin_GetAsHTML ( $$s )" ] ; )~"
                      R"~(Ravelin_GetAsHTML ( $$s ) ))~"},
        {"MergeText and GetAsHTML in turn",
         R"~(Let ( [ $v = "a" ; $$m = "<<Ravelin_GetAsHTML ( $$h )>>" ; )~"
         R"~($$h = "$v & Ravelin_MergeText ( $$m )" ] ; Ravelin_MergeText ( $$m ) ))~"},
        {"GetAsHTML and MergeText in turn",
         R"~(Let ( [ $v = "a" ; $$m = "<<Ravelin_GetAsHTML ( $$h )>>" ; )~"
         R"~($$h = "$v & Ravelin_MergeText ( $$m )" ] ; Ravelin_GetAsHTML ( $$h ) ))~"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        eval("Let ( [ $$Ravelin_LastError = 0 ; $$Ravelin_LastErrorMessage = \"\" ] ; 0 )");
        const sim::EvalResult r = evalOnSmallStack(c.calculation);
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.text, "2400");
        EXPECT_EQ(eval("$$Ravelin_LastError").text, "2400");
        EXPECT_EQ(eval("$$Ravelin_LastErrorMessage").text, limitMessage());
    }
}

// Every level evaluates its expression once: a second call beside the first fails at once
// instead of starting the descent again, which would take exponential time.
TEST_F(NestingLimit, TheChainGivesUpAtOnce) {
    const sim::EvalResult r = evalOnSmallStack(
        R"~(Let ( [ $$n = 0 ; $t = "<<Let ( $$n = $$n + 1 ; Ravelin_MergeText ( $t ) & )~"
        R"~(Ravelin_MergeText ( $t ) )>>" ] ; Ravelin_MergeText ( $t ) ))~");
    EXPECT_EQ(r.text, "2400");
    EXPECT_EQ(eval("$$n").text, std::to_string(rvl::kMaxCalculationNesting));
}

TEST_F(NestingLimit, IsExactAndCountsPerCall) {
    auto chain = [](int levels) {
        return "Let ( [ $n = 0 ; $t = \"<<Let ( $n = $n + 1 ; If ( $n < " + std::to_string(levels) +
               " ; Ravelin_MergeText ( $t ) ; \\\"deep\\\" ) )>>\" ] ; Ravelin_MergeText ( $t ) )";
    };
    EXPECT_EQ(evalOnSmallStack(chain(rvl::kMaxCalculationNesting)).text, "deep");
    EXPECT_EQ(evalOnSmallStack(chain(rvl::kMaxCalculationNesting + 1)).text, "2400");
    // The next call on the same thread starts from the first level again.
    std::string results;
    runOnSmallStack([&] {
        sim::Env env;
        env.file = session_.host().currentFile();
        env.locals = std::make_shared<sim::Variables>();
        results += session_.eval(chain(rvl::kMaxCalculationNesting + 1), env).text + " ";
        results += session_.eval(chain(rvl::kMaxCalculationNesting), env).text;
    });
    EXPECT_EQ(results, "2400 deep");
}

}  // namespace

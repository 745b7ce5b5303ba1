// Ravelin_DoFileMakerScript's body in the substitute host, with the host's real start-script
// call and a scheduler on a clock moved by hand.
#include <gtest/gtest.h>

#include "frame/plugin_state.h"
#include "scripts/do_file_maker_script.h"
#include "scripts/host_script.h"
#include "scripts_test_support.h"
#include "sim/session/callbacks.h"
#include "sim/session/session.h"

namespace {

using Runs = std::vector<sim::ScriptRunRecord>;
Ravelin* gScheduler = nullptr;

fmx::errcode DoScript(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                      fmx::Data& result) {
    return doFileMakerScript(env, args, result, *gScheduler);
}

sim::SessionOptions withScripts(const std::string& fileName) {
    sim::SessionOptions o;
    o.fileName = fileName;
    o.scripts = {{"Hello", "Get ( ScriptParameter )"}, {"Hello World", "1"}};
    return o;
}

class DoFileMakerScript : public ::testing::Test {
protected:
    explicit DoFileMakerScript(const std::string& fileName = "Demo")
        : session_(withScripts(fileName)) {
        block_.cStartScript = &sim::startScriptCallback;
        gFMX_ExternCallPtr = &block_;
        gScheduler = &ravelin_;
        // No minimum, so that the body's own count check is reached.
        session_.host().registerFunction({8, u"DoScript", u"DoScript", u"", 0, -1, 0, &DoScript});
    }
    ~DoFileMakerScript() override { gFMX_ExternCallPtr = nullptr; }

    std::string text(const std::string& calculation) { return session_.eval(calculation).text; }
    void advance(double seconds) {
        clock_->advance(seconds);
        ravelin_.clockAdvanced();
    }

    sim::Session session_;
    FMX_ExternCallStruct block_{};
    std::shared_ptr<scripts_test::ManualClock> clock_ =
        std::make_shared<scripts_test::ManualClock>();
    scripts_test::CapturedLog log_;
    Ravelin ravelin_{clock_, [this](std::string_view line) { log_.add(line); }};
};

TEST_F(DoFileMakerScript, StartsAtOnceOrRecordsWhyNot) {
    const struct {
        const char* call;
        const char* result;  // also the last error's code
        const char* message;
        Runs runs;
    } cases[] = {
        {"DoScript ( \"hELLO\" )", "0", "", {{"Hello", "Demo", ""}}},
        {"DoScript ( \"Hello\" ; 12.50 )", "0", "", {{"Hello", "Demo", "12.5"}}},
        {"DoScript ( \"hello world\" ; Date ( 1 ; 31 ; 2024 ) )",
         "0",
         "",
         {{"Hello World", "Demo", "1/31/2024"}}},
        {"DoScript ( \"Hell\" ; 1 )", "-50", "Invalid script name", {}},
        {"DoScript", "-50", "Not enough parameters", {}},
        {"DoScript ( \"Hello\" ; 1 ; 2 ; 3 )", "-50", "Too many parameters", {}},
    };
    for (const auto& c : cases) {
        session_.eval("Let ( $$Ravelin_LastErrorMessage = \"earlier\" ; 0 )");
        session_.clearScriptRuns();
        const sim::EvalResult r = session_.eval(c.call);
        EXPECT_EQ(r.type + " " + r.text, std::string("Number ") + c.result) << c.call;
        EXPECT_EQ(text("$$Ravelin_LastError"), c.result) << c.call;
        EXPECT_EQ(text("$$Ravelin_LastErrorMessage"), c.message) << c.call;
        EXPECT_EQ(session_.scriptRuns(), c.runs) << c.call;
    }
    EXPECT_EQ(ravelin_.waitingCount(), 0u);
}

TEST_F(DoFileMakerScript, DelaysAndTimes) {
    const struct {
        const char* call;
        short error;
        const char* result;
        const char* message;
        double notYet, due;  // still waiting `notYet` seconds later, due `due` seconds later
    } cases[] = {
        {"DoScript ( \"Hello\" ; 7 ; 10 )", 0, "0", "", 9.999, 10},
        {"DoScript ( \"Hello\" ; 7 ; Get ( CurrentTimestamp ) + 7200 )", 0, "0", "", 7198, 7200},
        // Never due: a past timestamp read as a number of seconds.
        {"DoScript ( \"Hello\" ; 7 ; Get ( CurrentTimestamp ) - 60 )", 0, "0", "", 0, 0},
        {"DoScript ( \"Nope\" ; 7 ; 10 )", 0, "-50", "Invalid script name", 0, 0},
        {"DoScript ( \"Hello\" ; 7 ; Get ( CurrentTimestamp ) + 90000 )", -1001, "",
         "Wrong timestamp", 0, 0},
    };
    for (const auto& c : cases) {
        clock_->set(std::chrono::nanoseconds(0));
        session_.clearScriptRuns();
        const sim::EvalResult r = session_.eval(c.call);
        EXPECT_EQ(r.error, c.error) << c.call;
        EXPECT_EQ(r.text, c.result) << c.call;
        EXPECT_EQ(text("$$Ravelin_LastError"), c.error ? "0" : c.result) << c.call;
        EXPECT_EQ(text("$$Ravelin_LastErrorMessage"), c.message) << c.call;
        EXPECT_EQ(ravelin_.waitingCount(), c.due > 0 ? 1u : 0u) << c.call;
        if (c.due == 0) continue;
        advance(c.notYet);
        EXPECT_EQ(ravelin_.waitingCount(), 1u) << c.call;
        advance(c.due - c.notYet);
        ravelin_.performScheduledScripts(startScheduledScript);
        session_.runQueuedScripts();
        EXPECT_EQ(session_.scriptRuns(), (Runs{{"Hello", "Demo", "7"}})) << c.call;
    }
    EXPECT_EQ(log_.count("Delay: 10.000000"), 2u);  // the name is checked after the delay
}

TEST_F(DoFileMakerScript, PendingRecordsStartInTheirFileAndFailuresAreLogged) {
    ravelin_.setScheduledScripts(std::vector<FileMakerScript>{
        {"Gone", "Demo", ""}, {"Hello", "Nowhere", ""}, {"hello", "demo", "ü ¶"}});
    for (int i = 0; i < 3; ++i) ravelin_.performScheduledScripts(startScheduledScript);
    session_.runQueuedScripts();
    EXPECT_EQ(session_.scriptRuns(), (Runs{{"Hello", "Demo", "ü ¶"}}));
    EXPECT_EQ(log_.count("Script call ended with error: 100"), 1u);
    EXPECT_EQ(log_.count("Script call ended with error: 104"), 1u);
}

class QuotedFileName : public DoFileMakerScript {
protected:
    QuotedFileName() : DoFileMakerScript("Say \"Hi\"") {}
};

TEST_F(QuotedFileName, MakesEveryScriptInvalid) {
    EXPECT_EQ(text("DoScript ( \"Hello\" )"), "-50");
    EXPECT_EQ(text("DoScript ( \"Hello\" ; 1 ; 5 )"), "-50");
    EXPECT_EQ(ravelin_.waitingCount(), 0u);
    EXPECT_TRUE(session_.scriptRuns().empty());
}

}  // namespace

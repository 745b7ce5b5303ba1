// Open files, their variables and scripts, and the queue of started scripts.
#include <gtest/gtest.h>

#include "session_test_support.h"
#include "sim/session/callbacks.h"

using namespace session_test;

namespace {

short startScript(std::u16string_view file, std::u16string_view script,
                  std::u16string_view parameter) {
    auto f = makeText(file);
    auto s = makeText(script);
    fmx::DataUniquePtr p;
    sim::setValue(*p, sim::Value::text(std::u16string(parameter)));
    return sim::startScriptCallback(f.get(), s.get(), kFMXT_Halt, p.get());
}

// Fake_Start ( script ; parameter ): starts a script of the calling file, as a plug-in does.
fmx::errcode startFromCalculation(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                                  fmx::Data& result) {
    const auto values = sim::valuesOf(args);
    fmx::DataUniquePtr file;
    env.Evaluate(*makeText(u"Get ( FileName )"), *file);
    const short error = startScript(sim::valueOf(*file).asText().units(),
                                    values.at(0).asText().units(), values.at(1).asText().units());
    sim::setValue(result, sim::Value::number(error));
    return 0;
}

sim::SessionOptions withScripts() {
    sim::SessionOptions o = noPlugin();
    o.otherFiles = {"Second", "Third"};
    o.scripts = {
        {"Hello", "\"Hello \" & Get ( ScriptParameter )"},
        {"Collect", "Let ( $$seen = $$seen & Get ( ScriptParameter ) ; 1 )"},
        {"Chain", "Let ( $$seen = $$seen & \"c\" ; Fake_Start ( \"Collect\" ; \"!\" ) )"},
        {"Locals", "Let ( $local = $local + 1 ; $local )"},
        {"Loop", "Fake_Start ( \"Loop\" ; Get ( ScriptParameter ) + 1 )"},
    };
    return o;
}

class FilesTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(registerFunction(1, u"Fake_Start", 2, 2, startFromCalculation), 0);
    }
    sim::Session session{withScripts()};
};

TEST_F(FilesTest, GlobalVariablesBelongToTheirFile) {
    session.eval("Let ( [ $$v = 1 ; $$v[2] = \"two\" ] ; 0 )");
    session.eval("Let ( $$v = \"other\" ; 0 )", "Second");
    EXPECT_EQ(session.eval("$$v").text, "1");
    EXPECT_EQ(session.eval("$$V[2]").text, "two");
    EXPECT_EQ(session.eval("$$v", "Second").text, "other");
    EXPECT_EQ(session.eval("$$v", "Third").text, "");
    // Calculations outside scripts share their file's "$" variables.
    session.eval("Let ( $here = 3 ; 0 )");
    EXPECT_EQ(session.eval("$here").text, "3");
    EXPECT_EQ(session.eval("$here", "Second").text, "");
}

TEST_F(FilesTest, DatabaseNamesListTheCurrentFileFirst) {
    EXPECT_EQ(session.eval("DatabaseNames").text, "Demo\rSecond\rThird");
    ASSERT_TRUE(session.host().setCurrentFile(u"third"));
    EXPECT_EQ(session.eval("DatabaseNames").text, "Third\rDemo\rSecond");
    EXPECT_EQ(session.eval("Get ( FileName )").text, "Third");
    EXPECT_FALSE(session.host().setCurrentFile(u"Nowhere"));
}

TEST(FileNamesTest, FilesAreNamedWithoutTheirExtension) {
    sim::SessionOptions o = noPlugin();
    o.fileName = "Demo.fmp12";
    o.otherFiles = {"Other.FMP12"};
    o.scripts = {{"Hello", "1"}};
    sim::Session session(o);
    EXPECT_EQ(session.eval("Get ( FileName )").text, "Demo");
    EXPECT_EQ(session.eval("DatabaseNames").text, "Demo\rOther");
    EXPECT_EQ(session.eval("ScriptNames ( \"demo.fmp12\" )").text, "Hello");
    EXPECT_TRUE(session.host().setCurrentFile(u"other.fmp12"));
    EXPECT_EQ(session.eval("Get ( FileName )").text, "Other");
}

TEST_F(FilesTest, ScriptNamesListTheFilesScriptsInOrder) {
    EXPECT_EQ(session.eval("ScriptNames ( \"\" )").text, "Hello\rCollect\rChain\rLocals\rLoop");
    session.host().addScript(u"Second", u"Only", u"1");
    EXPECT_EQ(session.eval("ScriptNames ( \"Second\" )").text, "Only");
    EXPECT_EQ(session.eval("ScriptNames ( \"\" )", "Third").text, "");
}

TEST_F(FilesTest, StartScriptChecksFileAndScript) {
    struct Case {
        std::u16string file, script;
        short expected;
    };
    const Case cases[] = {
        {u"Demo", u"Hello", 0},
        {u"DEMO", u"hello", 0},
        {u"", u"Hello", 0},
        {u"demo.FMP12", u"Hello", 0},
        {u"Nowhere", u"Hello", sim::kFileMissing},
        {u"Demo", u"Hell", sim::kScriptMissing},
        {u"Second", u"Hello", sim::kScriptMissing},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(startScript(c.file, c.script, u""), c.expected) << sim::toUtf8(c.script);
    }
    EXPECT_EQ(session.host().queuedScripts(), 4u);
    EXPECT_EQ(session.runQueuedScripts(), 4u);
    EXPECT_EQ(session.scriptRuns().size(), 4u);
}

TEST_F(FilesTest, StartedScriptsRunAfterTheCalculationInOrder) {
    const sim::EvalResult r = session.eval(
        "Fake_Start ( \"Collect\" ; \"a\" ) & Fake_Start ( \"Chain\" ; \"\" ) & "
        "Fake_Start ( \"Collect\" ; \"b\" ) & $$seen");
    EXPECT_EQ(r.text, "000");  // nothing ran while the calculation was going on
    const std::vector<sim::ScriptRunRecord> expected = {{"Collect", "Demo", "a"},
                                                        {"Chain", "Demo", ""},
                                                        {"Collect", "Demo", "b"},
                                                        {"Collect", "Demo", "!"}};
    EXPECT_EQ(session.scriptRuns(), expected);
    EXPECT_EQ(session.eval("$$seen").text, "acb!");
}

TEST_F(FilesTest, ScriptsGetTheirParameterAndFreshLocals) {
    std::vector<sim::ScriptRun> runs;
    session.host().setScriptObserver([&](const sim::ScriptRun& run) { runs.push_back(run); });
    ASSERT_EQ(startScript(u"Demo", u"Hello", u"7"), 0);
    ASSERT_EQ(startScript(u"Demo", u"Locals", u""), 0);
    ASSERT_EQ(startScript(u"Demo", u"Locals", u""), 0);
    session.eval("Let ( $local = 10 ; 0 )");
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0].result.asText().units(), u"Hello 7");
    EXPECT_EQ(runs[1].result.asText().units(), u"1");
    EXPECT_EQ(runs[2].result.asText().units(), u"1");
    EXPECT_EQ(session.eval("$local").text, "10");
}

TEST_F(FilesTest, AScriptThatKeepsStartingItselfDoesNotHangTheHost) {
    session.eval("Fake_Start ( \"Loop\" ; 1 )");
    EXPECT_EQ(session.scriptRuns().size(), sim::Host::kMaxRunsPerDrain);
    EXPECT_EQ(session.host().queuedScripts(), 1u);
    EXPECT_EQ(session.scriptRuns().back().parameter, std::to_string(sim::Host::kMaxRunsPerDrain));
}

TEST_F(FilesTest, IdleRunsWhatIsQueued) {
    ASSERT_EQ(session.host().startScript(u"Demo", u"Hello", u"x"), 0);
    session.idle(kFMXT_UserIdle);
    const std::vector<sim::ScriptRunRecord> expected = {{"Hello", "Demo", "x"}};
    EXPECT_EQ(session.scriptRuns(), expected);
}

}  // namespace

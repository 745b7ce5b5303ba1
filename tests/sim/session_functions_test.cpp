// Plug-in functions in the host: registration, argument counts, errors and exceptions coming
// back from a function, and calls back into the host from inside one.
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "host/fmx_abi.h"
#include "session_test_support.h"
#include "sim/session/callbacks.h"
#include "sim/session/env.h"

using namespace session_test;

namespace {

fmx::errcode countArgs(short, const fmx::ExprEnv&, const fmx::DataVect& args, fmx::Data& result) {
    sim::setValue(result, sim::Value::number(static_cast<double>(sim::valuesOf(args).size())));
    return 0;
}

fmx::errcode throwStd(short, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data&) {
    throw std::runtime_error("escaped");
}

fmx::errcode throwOther(short, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data&) { throw 42; }

fmx::errcode fail1552(short, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data&) { return 1552; }

// Fails with the code given first, its result the text given second.
fmx::errcode failWith(short, const fmx::ExprEnv&, const fmx::DataVect& args, fmx::Data& result) {
    const std::vector<sim::Value> values = sim::valuesOf(args);
    sim::setValue(result, values.at(1));
    return static_cast<fmx::errcode>(values.at(0).asNumber().toDouble());
}

// Evaluates its first argument in the caller's environment.
fmx::errcode evaluateArg(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                         fmx::Data& result) {
    auto expression = makeText(sim::valuesOf(args).at(0).asText().units());
    return env.Evaluate(*expression, result);
}

// Evaluates Get ( FileName ) in an environment filled by the current-environment callback.
fmx::errcode fileThroughCurrentEnv(short, const fmx::ExprEnv&, const fmx::DataVect&,
                                   fmx::Data& result) {
    fmx::ExprEnvUniquePtr own;
    if (sim::currentEnvCallback(own.get()) != 0) return -1;
    return own->Evaluate(*makeText(u"Get ( FileName )"), result);
}

// Fake_Get ( selector ): the host's answer to EvaluateGetFunction, or the error code as text.
fmx::errcode getFunction(short, const fmx::ExprEnv& env, const fmx::DataVect& args,
                         fmx::Data& result) {
    const auto selector = static_cast<short>(sim::valuesOf(args).at(0).asNumber().toDouble());
    const fmx::errcode error = env.EvaluateGetFunction(selector, result);
    if (error)
        sim::setValue(result, sim::Value::text(u"error " + sim::fromUtf8(std::to_string(error))));
    return 0;
}

// Fake_Swap: unregisters id 1 when it is registered, else registers it as Fake_Count; answers
// the host's code.
fmx::errcode swapCount(short, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data& result) {
    short code = unregisterFunction(1);
    if (code == sim::kFunctionMissing) code = registerFunction(1, u"Fake_Count", 0, -1, countArgs);
    sim::setValue(result, sim::Value::number(code));
    return 0;
}

class FunctionsTest : public ::testing::Test {
protected:
    sim::Session session{noPlugin()};
};

TEST_F(FunctionsTest, RegistrationAnswers) {
    session.host().refuseRegistration(7);
    ASSERT_EQ(registerFunction(1, u"Fake_Count", 0, -1, countArgs), 0);
    struct Case {
        const char* what;
        short id;
        std::u16string name;
        fmx::ExtPluginType f;
        short expected;
    };
    const Case cases[] = {
        {"same id", 1, u"Fake_Other", countArgs, sim::kAlreadyRegistered},
        {"same name in other case", 2, u"FAKE_COUNT", countArgs, sim::kAlreadyRegistered},
        {"refused id", 7, u"Fake_Refused", countArgs, sim::kRefusedRegistration},
        {"no function", 3, u"Fake_Null", nullptr, sim::kRefusedRegistration},
        {"empty name", 4, u"", countArgs, sim::kRefusedRegistration},
        {"new id and name", 5, u"Fake_Five", countArgs, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(registerFunction(c.id, c.name, 0, -1, c.f), c.expected) << c.what;
    }
    EXPECT_EQ(session.host().functions().size(), 2u);
}

TEST_F(FunctionsTest, UnregisteredFunctionIsGoneAndUnknownIdIsHarmless) {
    ASSERT_EQ(registerFunction(1, u"Fake_Count", 0, -1, countArgs), 0);
    EXPECT_EQ(session.eval("Fake_Count ( 1 ; 2 )").text, "2");
    EXPECT_EQ(unregisterFunction(1), 0);
    EXPECT_NE(session.eval("Fake_Count ( 1 ; 2 )").error, 0);
    EXPECT_EQ(unregisterFunction(1), sim::kFunctionMissing);
    EXPECT_EQ(unregisterFunction(16), sim::kFunctionMissing);
    EXPECT_EQ(registerFunction(1, u"Fake_Count", 0, -1, countArgs), 0);
}

// Names match in any case, each lookup sees the table as it is at the call, also within one
// calculation (a loop calling the same function again) and after changes made from inside it.
TEST_F(FunctionsTest, LookupsFollowTheTableInAnyCase) {
    ASSERT_EQ(registerFunction(2, u"Fake_Swap", 0, 0, swapCount), 0);
    ASSERT_EQ(registerFunction(3, u"Fake_\u00C9t\u00E9", 0, -1, countArgs), 0);
    struct Case {
        const char* calc;
        short error;
        const char* text;
    };
    const short missing = 1208;  // a name that is no function at parse or call time
    const Case cases[] = {
        {"Fake_Count ( 1 )", missing, ""},
        {"FAKE_SWAP", 0, "0"},  // registers Fake_Count
        {"fAKE_cOUNT ( 1 ; 2 )", 0, "2"},
        {"fake_\u00E9t\u00C9 ( 1 )", 0, "1"},
        {"Fake_Ete ( 1 )", missing, ""},
        // Gone and back within its own arguments, on every turn of a loop.
        {"While ( [ i = 0 ; t = \"\" ] ; i < 3 ; [ t = t & Fake_Count ( Fake_Swap & Fake_Swap ) ; "
         "i = i + 1 ] ; t )",
         0, "111"},
        // Called, swapped out, missing at its next call in the same loop.
        {"While ( [ i = 0 ; t = \"\" ] ; i < 3 ; [ t = t & Fake_Count ( 1 ; 2 ) & Fake_Swap ; "
         "i = i + 1 ] ; t )",
         missing, ""},
        {"Fake_Swap", 0, "0"},
        {"Fake_Count ( Fake_Swap ; 2 )", missing, ""},  // unregistered by its own argument
        {"Fake_Count", missing, ""},
    };
    for (const Case& c : cases) {
        const sim::EvalResult r = session.eval(c.calc);
        EXPECT_EQ(r.error, c.error) << c.calc;
        if (c.error == 0) {
            EXPECT_EQ(r.text, c.text) << c.calc;
        }
    }
}

TEST_F(FunctionsTest, ArgumentCountsAreEnforcedByTheHost) {
    ASSERT_EQ(registerFunction(1, u"Fake_OneOrTwo", 1, 2, countArgs), 0);
    ASSERT_EQ(registerFunction(2, u"Fake_Any", 0, -1, countArgs), 0);
    struct Case {
        const char* calc;
        short error;
        const char* text;
    };
    const Case cases[] = {
        {"Fake_OneOrTwo ( 1 )", 0, "1"},
        {"Fake_OneOrTwo ( 1 ; 2 )", 0, "2"},
        {"Fake_OneOrTwo ( 1 ; 2 ; 3 )", 1202, ""},
        {"Fake_OneOrTwo", 1201, ""},
        {"Fake_Any", 0, "0"},
        {"fake_any ( 1 ; 2 ; 3 ; 4 )", 0, "4"},
    };
    for (const Case& c : cases) {
        sim::EvalResult r = session.eval(c.calc);
        EXPECT_EQ(r.error, c.error) << c.calc;
        if (c.error == 0) {
            EXPECT_EQ(r.text, c.text) << c.calc;
        }
    }
}

TEST_F(FunctionsTest, FunctionErrorsAndEscapingExceptionsBecomeEvaluationErrors) {
    ASSERT_EQ(registerFunction(1, u"Fake_ThrowStd", 0, -1, throwStd), 0);
    ASSERT_EQ(registerFunction(2, u"Fake_ThrowOther", 0, -1, throwOther), 0);
    ASSERT_EQ(registerFunction(3, u"Fake_Fail", 0, -1, fail1552), 0);
    EXPECT_EQ(session.eval("Fake_ThrowStd").error, sim::kGenericCalcError);
    EXPECT_EQ(session.eval("Fake_ThrowOther ( 1 )").error, sim::kGenericCalcError);
    EXPECT_EQ(session.eval("Fake_Fail").error, 1552);
    // The host goes on working afterwards.
    EXPECT_EQ(session.eval("1 + 1").text, "2");
}

TEST_F(FunctionsTest, PluginErrorResultsLeaveTheirTextAsExternalErrorDetail) {
    ASSERT_EQ(registerFunction(1, u"Fake_FailWith", 2, 2, failWith), 0);
    const struct {
        const char* call;
        const char* detail;
    } cases[] = {
        {"Fake_FailWith ( 1552 ; \"key missing\" )", "key missing"},
        {"Fake_FailWith ( 1559 ; \"last\" )", "last"},
        {"Fake_FailWith ( 1551 ; \"not a plug-in result\" )", ""},
        {"Fake_FailWith ( 0 ; \"fine\" )", ""},
    };
    for (const auto& c : cases) {
        session.eval(c.call);
        EXPECT_EQ(session.eval("Get ( LastExternalErrorDetail )").text, c.detail) << c.call;
    }
}

// Each file keeps its own detail: clearing one file's leaves the other's, also once a file with
// a detail has been closed.
TEST_F(FunctionsTest, EachFileKeepsItsOwnExternalErrorDetail) {
    session.host().openFile(u"Other");
    ASSERT_EQ(registerFunction(1, u"Fake_FailWith", 2, 2, failWith), 0);
    const struct {
        const char* call;
        const char* file;
        const char* demoDetail;
        const char* otherDetail;
    } steps[] = {
        {"Fake_FailWith ( 1552 ; \"a\" )", "Other", "", "a"},
        {"Fake_FailWith ( 0 ; \"\" )", "Demo", "", "a"},
        {"Fake_FailWith ( 1552 ; \"b\" )", "Demo", "b", "a"},
        {"Fake_FailWith ( 0 ; \"\" )", "Other", "b", ""},
        {"Fake_FailWith ( 0 ; \"\" )", "Demo", "", ""},
        {"Fake_FailWith ( 1552 ; \"c\" )", "Other", "", "c"},
    };
    for (const auto& s : steps) {
        session.eval(s.call, s.file);
        EXPECT_EQ(session.eval("Get ( LastExternalErrorDetail )", "Demo").text, s.demoDetail)
            << s.call << " in " << s.file;
        EXPECT_EQ(session.eval("Get ( LastExternalErrorDetail )", "Other").text, s.otherDetail)
            << s.call << " in " << s.file;
    }
    session.host().closeFile(u"Other");
    session.eval("Fake_FailWith ( 1552 ; \"d\" )");
    EXPECT_EQ(session.eval("Get ( LastExternalErrorDetail )").text, "d");
    session.eval("Fake_FailWith ( 0 ; \"\" )");
    EXPECT_EQ(session.eval("Get ( LastExternalErrorDetail )").text, "");
}

TEST_F(FunctionsTest, NestedEvaluationSharesTheCallersVariablesAndFile) {
    session.host().openFile(u"Other");
    ASSERT_EQ(registerFunction(1, u"Fake_Eval", 1, 1, evaluateArg), 0);
    ASSERT_EQ(registerFunction(2, u"Fake_File", 0, 0, fileThroughCurrentEnv), 0);
    EXPECT_EQ(session.eval("Let ( $x = 5 ; Fake_Eval ( \"$x * 2\" ) )").text, "10");
    EXPECT_EQ(session.eval("Fake_Eval ( \"Let ( $$set = 7 ; 1 )\" ) & $$set").text, "17");
    EXPECT_EQ(session.eval("Fake_Eval ( \"Get ( FileName )\" )", "Other").text, "Other");
    EXPECT_EQ(session.eval("Fake_Eval ( \"1 +\" )").error != 0, true);
    EXPECT_EQ(session.eval("Fake_File", "Other").text, "Other");
    EXPECT_EQ(session.eval("Fake_File").text, "Demo");
}

TEST_F(FunctionsTest, GetFunctionsAnswerForTheCallingFile) {
    session.host().openFile(u"Other");
    session.host().setClock([] { return sim::DateTime::fromYmd(2024, 1, 31); });
    ASSERT_EQ(registerFunction(1, u"Fake_Get", 1, 1, getFunction), 0);
    struct Case {
        const char* calc;
        const char* file;
        const char* text;
    };
    const Case cases[] = {
        {"Fake_Get ( 1005 )", "Demo", "Demo"},
        {"Fake_Get ( 1005 )", "Other", "Other"},
        {"Fake_Get ( 1062 )", "Demo", ""},
        {"Fake_Get ( 1002 ) = Date ( 1 ; 31 ; 2024 )", "Demo", "1"},
        {"Fake_Get ( 1004 )", "Demo", "error 1215"},
    };
    for (const Case& c : cases) EXPECT_EQ(session.eval(c.calc, c.file).text, c.text) << c.calc;
}

TEST_F(FunctionsTest, ConcurrentEvaluationsWithCallbacks) {
    ASSERT_EQ(registerFunction(1, u"Fake_Eval", 1, 1, evaluateArg), 0);
    constexpr int kThreads = 4;
    constexpr int kRounds = 50;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const std::string var = "$$t" + std::to_string(t);
            for (int i = 0; i < kRounds; ++i) {
                session.eval("Fake_Eval ( \"Let ( " + var + " = " + var + " + 1 ; 0 )\" )");
            }
        });
    }
    for (auto& th : threads) th.join();
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(session.eval("$$t" + std::to_string(t)).text, std::to_string(kRounds));
    }
}

// A deleted environment, or an address that never was one, is refused by the FM_ExprEnv_* calls
// without being read (the address sanitizer sees any read of the freed one); copies are live on
// their own.
TEST(EnvLiveness, StaleAndStrayHandlesAreRefusedUnread) {
    sim::Session session{noPlugin()};
    fmx::_fmxcpt x;
    fmx::ExprEnv* deleted = FM_ExprEnv_Constructor1(x);
    ASSERT_NE(deleted, nullptr);
    EXPECT_NE(FM_ExprEnv_SessionID(deleted, x), 0u);
    FM_ExprEnv_Delete(deleted, x);
    static const int never = 0;
    for (const void* handle :
         {static_cast<const void*>(deleted), static_cast<const void*>(&never)}) {
        fmx::DataUniquePtr out;
        EXPECT_EQ(FM_ExprEnv_Evaluate(handle, *makeText(u"1"), *out, x), sim::kGenericCalcError);
        EXPECT_EQ(FM_ExprEnv_SessionID(handle, x), 0u);
        EXPECT_EQ(FM_ExprEnv_FileID(handle, x), 0u);
        FM_ExprEnv_Delete(const_cast<void*>(handle), x);  // nothing to delete
    }
    EXPECT_EQ(x.m_code, 0);

    auto* original = new sim::Env;
    const sim::Env copy(*original);
    FM_ExprEnv_Delete(original, x);
    EXPECT_EQ(FM_ExprEnv_SessionID(original, x), 0u);
    EXPECT_NE(FM_ExprEnv_SessionID(&copy, x), 0u);
}

}  // namespace

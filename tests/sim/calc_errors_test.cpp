// Error codes of the calculation engine, plug-in functions called through it, and robustness:
// no input may crash it or hang it.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>

#include "tests/sim/calc_test_support.h"

namespace {

using calc_test::ErrorCase;
using calc_test::run;
using sim::fake::FakeContext;

TEST(CalcErrorsTest, SyntaxAndEvaluationErrorsCarryHostCodes) {
    FakeContext context;
    const ErrorCase cases[] = {
        {"1 +", 1203},
        {"Let ( [ a = 1 ; ", 1203},
        {"1 + )", 1204},
        {"* 2", 1204},
        {"@", 1204},
        {"1 /* open", 1205},
        {"1 + /* open", 1205},
        {R"("abc)", 1206},
        {R"(Let ( $$m = "a\" ] ; "" ))", 1206},
        {"Abs ( -1", 1207},
        {"(1", 1207},
        {"1)", 1207},
        {"No Error Message", 1208},
        {"Nothing ( 1 )", 1208},
        {"1 2", 1208},
        {"1 @ 2", 1208},
        {"(1 ; 2)", 1208},
        {"Let ( x = 1 ; x ) & x", 1208},
        {"Let ( = 1 ; 2 )", 1209},
        {"Let ( [ a = 1 ; ] ; a )", 1209},
        {"$", 1209},
        {"Let ( [ a = 1 ; A = 2 ] ; a )", 1213},
        {"Get ( Nothing )", 1215},
        {"Get ( 1 + 1 )", 1215},
        {"Get ( )", 1201},
        {"Get ( FileName ; 1 )", 1202},
        {"Case ( 1 = 1 )", 1201},
        {"Let ( a = 1 )", 1201},
        {"Left", 1201},
        {"Abs ( 1 ; 2 )", 1202},
        {"Let ( a = 1 ; a ; a )", 1202},
        {"Length ( [ 1 ; 2 ] )", 1211},
        {R"(Substitute ( "a" ; [ "a" ] ))", 1201},
        {R"(Substitute ( "a" ; [ "a" ; "b" ; "c" ] ))", 1202},
        {"1e999", 1218},
        {R"(Evaluate ( "abs(-1" ))", 1207},
        {R"~(Evaluate ( "Evaluate ( \"1 +\" )" ))~", 1203},
        {"$$v[0]", 1200},
        {"Let ( $$v[-1] = 1 ; 1 )", 1200},
        {"FMSim_TextAlign ( \"a\" ; \"middle\" )", 1200},
    };
    for (const ErrorCase& c : cases) {
        const calc_test::Outcome out = run(context, c.calculation);
        EXPECT_EQ(out.error, c.error) << c.calculation;
        EXPECT_EQ(out.type, sim::Type::Invalid) << c.calculation;
    }
    EXPECT_TRUE(context.variables.empty());
}

TEST(CalcErrorsTest, ErrorAwareFunctionsSeeErrors) {
    FakeContext context;
    const calc_test::Case cases[] = {
        {R"(EvaluationError ( Evaluate ( "abs(-1" ) ))", "1207"},
        {R"(EvaluationError ( Evaluate ( "1 + 1" ) ))", "0"},
        {R"(IsEmpty ( Evaluate ( "No Error Message" ) ))", "1"},
        {R"(IsValid ( Evaluate ( "(" ) ) & IsValid ( "" ))", "01"},
        {R"(IsEmpty ( "" ) & IsEmpty ( " " ) & IsEmpty ( 0 ))", "100"},
    };
    for (const calc_test::Case& c : cases) EXPECT_EQ(run(context, c.calculation).text, c.expected);
}

TEST(CalcErrorsTest, ExternalFunctionsAreCheckedAndCalled) {
    FakeContext context;
    context.addFunction(u"Ravelin_Version", 0, 1,
                        [](const std::vector<sim::Value>&, sim::Value& r) {
                            r = sim::Value::text(std::u16string(u"3.0.3"));
                            return short{0};
                        });
    context.addFunction(u"Ravelin_Echo", 1, 2,
                        [](const std::vector<sim::Value>& args, sim::Value& r) {
                            r = args.back();
                            return short{0};
                        });
    context.addFunction(u"Ravelin_Fail", 0, -1, [](const std::vector<sim::Value>&, sim::Value& r) {
        r = sim::Value::number(1.0);
        return short{24001};
    });
    const calc_test::Case results[] = {
        {"Ravelin_Version", "3.0.3"},
        {"ravelin_version ( )", "3.0.3"},
        {R"(Ravelin_Echo ( "a" ; Date ( 1 ; 2 ; 2024 ) ))", "1/2/2024"},
        {"IsEmpty ( Ravelin_Fail )", "1"},
        {"EvaluationError ( Ravelin_Fail ( 1 ; 2 ; 3 ; 4 ) )", "24001"},
    };
    for (const calc_test::Case& c : results) {
        const calc_test::Outcome out = run(context, c.calculation);
        EXPECT_EQ(out.error, 0) << c.calculation;
        EXPECT_EQ(out.text, c.expected) << c.calculation;
    }
    EXPECT_EQ(run(context, R"(Ravelin_Echo ( "a" ; Date ( 1 ; 2 ; 2024 ) ))").type,
              sim::Type::Date);
    const int callsBefore = context.calls;
    const ErrorCase errors[] = {
        {"Ravelin_Echo", 1201},
        {"Ravelin_Echo ( )", 1201},
        {"Ravelin_Echo ( 1 ; 2 ; 3 )", 1202},
        {"Ravelin_Echo ( [ 1 ; 2 ] )", 1211},
        {"Ravelin_Fail", 24001},
        {"Ravelin_Echo ( Ravelin_Fail )", 24001},
        {"Ravelin_Missing ( 1 )", 1208},
    };
    for (const ErrorCase& c : errors) EXPECT_EQ(run(context, c.calculation).error, c.error);
    EXPECT_EQ(context.calls, callsBefore + 2);  // only the two calls of Ravelin_Fail ran
}

TEST(CalcErrorsTest, DeepNestingFailsInsteadOfOverflowing) {
    FakeContext context;
    auto nested = [](int depth, const std::string& open, const std::string& close) {
        std::string s;
        for (int i = 0; i < depth; ++i) s += open;
        s += "1";
        for (int i = 0; i < depth; ++i) s += close;
        return s;
    };
    EXPECT_EQ(run(context, nested(100, "(", ")")).text, "1");
    EXPECT_EQ(run(context, nested(60, "Abs ( ", " )")).text, "1");
    EXPECT_EQ(run(context, nested(100000, "(", ")")).error, 1200);
    EXPECT_EQ(run(context, nested(100000, "-", "")).error, 1200);
    EXPECT_EQ(run(context, R"~(Let ( $$e = "Evaluate ( $$e )" ; Evaluate ( $$e ) ))~").error, 1200);
    // Long flat chains are not deep.
    std::string sum = "0";
    for (int i = 0; i < 100000; ++i) sum += " + 1";
    EXPECT_EQ(run(context, sum).text, "100000");
}

// A plug-in function whose own evaluation calls it again: the nesting counts on across the calls
// (the recursion ends with 1200, not with the stack), and starts from 0 again afterwards.
TEST(CalcErrorsTest, NestingCountsOnThroughPluginCalls) {
    FakeContext context;
    context.addFunction(u"Ravelin_Again", 0, 0, [&](const std::vector<sim::Value>&, sim::Value& v) {
        const sim::calc::Result r = sim::calc::evaluate(u"Ravelin_Again", context);
        v = r.value;
        return r.error;
    });
    EXPECT_EQ(run(context, "Ravelin_Again").error, 1200);
    EXPECT_GT(context.calls, 100);
    EXPECT_LT(context.calls, 1000);
    std::string deep = "1";
    for (int i = 0; i < 490; ++i) deep = "(" + deep + ")";
    EXPECT_EQ(run(context, deep).text, "1");
}

TEST(CalcErrorsTest, LongTextsAreHandledInOnePass) {
    FakeContext context;
    std::u16string big(1 << 20, u'a');
    context.variables[{u"$$big", 1}] = sim::Value::text(big);
    const sim::calc::Result r =
        sim::calc::evaluate(u"Length ( Substitute ( $$big ; \"a\" ; \"bc\" ) )", context);
    EXPECT_EQ(sim::toUtf8(r.value.asText().units()), "2097152");
    const sim::calc::Result values =
        sim::calc::evaluate(u"ValueCount ( Substitute ( $$big ; \"aaaa\" ; \"a¶\" ) )", context);
    EXPECT_EQ(sim::toUtf8(values.value.asText().units()), "262144");
    // Doubling without end stops at the text limit instead of exhausting memory.
    const sim::calc::Result growing = sim::calc::evaluate(
        u"Substitute ( Substitute ( Substitute ( $$big ; \"a\" ; $$big ) ; \"a\" ; \"aa\" ) ; "
        u"\"a\" ; \"aa\" )",
        context);
    EXPECT_EQ(growing.error, 1200);
}

// Prefixes and random token soups of valid calculations: any result or error, never a crash.
TEST(CalcErrorsTest, MalformedInputNeverCrashes) {
    FakeContext context;
    context.addFunction(u"Ravelin_Echo", 1, 2,
                        [](const std::vector<sim::Value>& args, sim::Value& r) {
                            r = args.front();
                            return short{0};
                        });
    const std::string sources[] = {
        R"(Let ( [ $$Ravelin_LastError = -4 ; $$Ravelin_LastErrorMessage = "x" ] ; "" ))",
        R"(If( IsEmpty( $$Ravelin_LastError ); "No Error Message"; $$Ravelin_LastError ))",
        R"(Substitute ( "a¶b" ; [ "a" ; "\"" ] ; [ "¶" ; "\\" ] ) & Middle ( "x" ; -1e308 ; 1e308 ))",
        R"(GetAsCSS ( TextStyleAdd ( GetValue ( "a¶b" ; 2 ) ; Bold ) ) /* c */ // d)",
        R"~(Evaluate ( "Let ( x = 1 ; x" & ")" ) + Date ( 1e308 ; -1e308 ; 2 ) - Time ( 1e308 ; 0 ; 0 ))~",
        R"(Ravelin_Echo ( Char ( 55357 ) & Char ( 56832 ) & Code ( "�" ) ; $$v[2147483647] ))",
        R"(Position ( "aaa" ; "a" ; -1e300 ; -1e300 ) & Round ( 1e308 ; -400 ) & Mod ( 1e308 ; 1e-308 ))",
        R"(GetAsTimestamp ( -1 ) & GetAsDate ( 1e300 ) & Hour ( "x" ) & Char ( 1e308 ))",
    };
    for (const std::string& s : sources) {
        for (size_t n = 0; n <= s.size(); ++n) run(context, s.substr(0, n));
    }
    const std::vector<std::string> pieces{"(",
                                          ")",
                                          "[",
                                          "]",
                                          ";",
                                          "+",
                                          "-",
                                          "*",
                                          "/",
                                          "^",
                                          "&",
                                          "=",
                                          "≠",
                                          "<",
                                          ">=",
                                          "and",
                                          "or",
                                          "not",
                                          "1",
                                          "0",
                                          "1e5",
                                          "\"t\"",
                                          "¶",
                                          "Let",
                                          "If",
                                          "Case",
                                          "Get",
                                          "FileName",
                                          "$x",
                                          "$$y",
                                          "x",
                                          "=",
                                          "Evaluate",
                                          "Middle",
                                          "Substitute",
                                          "GetValue",
                                          "Ravelin_Echo",
                                          "/*",
                                          "//",
                                          "\"",
                                          "\\",
                                          "Bold",
                                          "TextStyleAdd",
                                          "GetAsCSS",
                                          "Date",
                                          "\xED\xA0\x80"};
    std::mt19937 random(2024);
    for (int round = 0; round < 3000; ++round) {
        std::string s;
        const int length = 1 + static_cast<int>(random() % 24);
        for (int i = 0; i < length; ++i) s += pieces[random() % pieces.size()] + " ";
        const calc_test::Outcome out = run(context, s);
        if (out.error != 0) {
            EXPECT_EQ(out.type, sim::Type::Invalid) << s;
        }
    }
}

TEST(CalcErrorsTest, SeveralThreadsEvaluateAtOnce) {
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (size_t t = 0; t < failures.size(); ++t) {
        threads.emplace_back([&failures, t] {
            FakeContext context;
            for (int i = 0; i < 200; ++i) {
                const auto out = run(
                    context,
                    R"(Let ( [ x = Upper ( "ab" ) ; $$n = 2 ] ; x & GetAsCSS ( TextStyleAdd ( "c" ; Bold ) ) & $$n ))");
                if (out.text.rfind("AB<span", 0) != 0 || out.text.back() != '2') ++failures[t];
            }
        });
    }
    for (std::thread& t : threads) t.join();
    for (int f : failures) EXPECT_EQ(f, 0);
}

}  // namespace

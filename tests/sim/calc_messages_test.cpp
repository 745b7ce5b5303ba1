// What a failed calculation tells beyond its code: FileMaker's text for the code, where a syntax
// error was found, and the name the host did not know.
#include <gtest/gtest.h>

#include "sim/calc/errors.h"
#include "sim/session/session.h"
#include "tests/sim/calc_test_support.h"

namespace {

using sim::fake::FakeContext;

TEST(CalcMessages, FileMakersTextsForTheHostsCodes) {
    const std::pair<short, const char*> cases[] = {
        {1200, "Generic calculation error"},
        {1203, "Unexpected end of calculation"},
        {1204, "Number, text constant, field name, or \"(\" expected"},
        {1205, "Comment is not terminated with \"*/\""},
        {1208, "Operator missing, function not found, or \"(\" not expected"},
        {1213, "This variable has already been defined in the Let function"},
        {1225, "Function referred to is not supported in this context"},
        {100, "File is missing"},
        {8310, "Error in SQL query syntax"},
        {0, ""},
        {1552, ""},
    };
    for (const auto& [code, text] : cases) EXPECT_EQ(sim::calc::errorText(code), text) << code;
}

struct Placed {
    const char* calculation;
    short error;
    int offset;        // UTF-16 units from 0; -1: not a syntax error
    const char* hint;  // UTF-8
};

TEST(CalcMessages, SyntaxErrorsSayWhereAndWhat) {
    FakeContext context;
    const Placed cases[] = {
        {"1 +", 1203, 3, ""},
        {"1 + )", 1204, 4, ""},
        {"Abs ( -1", 1207, 8, ""},
        {"1 2", 1208, 2, ""},
        {"  Nothing ( 1 )", 1208, 2, "no function named Nothing"},
        {"1 + Foo", 1208, 4, "no variable, constant or function named Foo"},
        {"\"abc", 1206, 0, ""},
        {"1 +\r  /* open", 1205, 3, ""},
        {"Evaluate ( \"1 +\" )", 1203, -1, ""},
        {"Let ( [ a = 1 ; A = 2 ] ; a )", 1213, 16, ""},
    };
    for (const Placed& c : cases) {
        const sim::calc::Result r = sim::calc::evaluate(sim::fromUtf8(c.calculation), context);
        EXPECT_EQ(r.error, c.error) << c.calculation;
        EXPECT_EQ(r.offset, c.offset) << c.calculation;
        EXPECT_EQ(sim::toUtf8(r.hint), c.hint) << c.calculation;
    }
}

// The shell counts characters (a pair of surrogates is one) and lines.
TEST(CalcMessages, SessionPlacesTheErrorByCharacterAndLine) {
    sim::Session session(sim::SessionOptions{});
    struct Case {
        const char* calculation;
        int position, line, column;
    } cases[] = {
        {"1 +", 4, 1, 4},
        {"\"😀\" & 1 +", 10, 1, 10},
        {"Let ( a = 1 ;\r  a + )", 21, 2, 7},
        {"Let ( a = 1 ;\r\n  a + )", 22, 2, 7},
        {"1 + 1", 0, 0, 0},
    };
    for (const Case& c : cases) {
        const sim::EvalResult r = session.eval(c.calculation);
        EXPECT_EQ(r.position, c.position) << c.calculation;
        EXPECT_EQ(r.line, c.line) << c.calculation;
        EXPECT_EQ(r.column, c.column) << c.calculation;
    }
    const sim::EvalResult failed =
        session.eval("ExecuteSQL ( \"SELECT x FROM nowhere\" ; \"\" ; \"\" )");
    EXPECT_EQ(failed.text, "?");
    EXPECT_EQ(failed.error, 0);
    EXPECT_EQ(failed.detail, "no such table: nowhere");
    EXPECT_EQ(session.eval("1 +").message, "Unexpected end of calculation");
}

}  // namespace

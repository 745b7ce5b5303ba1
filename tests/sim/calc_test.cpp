// Results of the calculation engine: literals, operators, Let, the function families, and the
// calculations the plug-in evaluates through the host.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "sim/core/fonts.h"
#include "tests/sim/calc_test_support.h"

namespace {

using calc_test::Case;
using calc_test::run;
using sim::fake::FakeContext;

void expectAll(FakeContext& context, std::initializer_list<Case> cases) {
    for (const Case& c : cases) {
        const calc_test::Outcome out = run(context, c.calculation);
        EXPECT_EQ(out.error, 0) << c.calculation;
        EXPECT_EQ(out.text, c.expected) << c.calculation;
    }
}

TEST(CalcTest, LiteralsCommentsAndPilcrow) {
    FakeContext context;
    expectAll(context, {
                           {"123", "123"},
                           {"1.5", "1.5"},
                           {".5", "0.5"},
                           {"1e3", "1000"},
                           {"2.5E-1", "0.25"},
                           {R"("a\"b")", "a\"b"},
                           {R"("a\\b")", "a\\b"},
                           {R"("a\¶b")", "a¶b"},
                           {R"("a\nb")", "a\\nb"},
                           {R"("a¶b")", "a\rb"},
                           {R"("a" & ¶ & "b")", "a\rb"},
                           {"1 /* two */ + // three\r 2", "3"},
                           {"", ""},
                       });
}

TEST(CalcTest, OperatorsFollowFileMakerPrecedence) {
    FakeContext context;
    expectAll(context,
              {
                  {"2 + 3 * 4", "14"},      {"(2 + 3) * 4", "20"}, {"2 ^ 3 ^ 2", "64"},
                  {"-2 ^ 2", "4"},          {"10 - 2 - 3", "5"},   {"2 * 3 / 4", "1.5"},
                  {R"("a" & 1 + 1)", "a2"}, {"0.1 + 0.2", "0.3"},  {"0.1 + 0.2 = 0.3", "1"},
                  {"1 / 0", "?"},           {"not 1 = 2", "1"},    {"1 = 1 and 0 or 1", "1"},
                  {"1 xor 1", "0"},         {"not 0 and 0", "0"},  {R"("abc" = "ABC")", "1"},
                  {R"("a" < "B")", "1"},    {"3 ≠ 4", "1"},        {"3 <> 3", "0"},
                  {"2 ≤ 2 and 3 ≥ 4", "0"}, {R"("10" = 10)", "1"}, {R"("x" & "")", "x"},
              });
}

TEST(CalcTest, ComparisonsAndLogicGiveNumbers) {
    FakeContext context;
    EXPECT_EQ(run(context, "1 < 2").type, sim::Type::Number);
    EXPECT_EQ(run(context, "1 and 1").type, sim::Type::Number);
}

TEST(CalcTest, LetScopesAndVariables) {
    FakeContext context;
    expectAll(context, {
                           {"Let ( x = 2 ; x * 3 )", "6"},
                           {"Let ( [ x = 2 ; y = x + 1 ] ; x * y )", "6"},
                           {"Let ( x = 1 ; Let ( x = x + 1 ; x ) & x )", "21"},
                           {"LET ( Ab = 1 ; aB )", "1"},
                           {"Let ( $$v = 5 ; $$V + 1 )", "6"},
                           {R"(Let ( $$r[2] = "x" ; $$r[2] & "|" & $$r ))", "x|"},
                           {R"(Let ( x = 4 ; Evaluate ( "x + 1" ) ))", "5"},
                           {"Let ( $local = 7 ; $LOCAL )", "7"},
                       });
    EXPECT_EQ(context.get(u"$$v").asNumber().toDouble(), 5);
    EXPECT_EQ(run(context, "Let ( x = 1 ; x ) & x").error, 1208);

    context.variables[{u"$$gone", 1}] = sim::Value::number(1.0);
    EXPECT_EQ(run(context, R"(Let ( $$gone = "" ; 0 ))").error, 0);
    EXPECT_TRUE(context.variables.empty() || !context.variables.contains({u"$$gone", 1}));
}

// The calculations the plug-in builds, exactly as it sends them.
TEST(CalcTest, PluginLastErrorCalculations) {
    FakeContext context;
    const char* readCode =
        R"(If( IsEmpty( $$Ravelin_LastError ); "No Error Message"; $$Ravelin_LastError ))";
    const char* readMessage =
        R"(If( IsEmpty( $$Ravelin_LastErrorMessage ); "No Error Message"; $$Ravelin_LastErrorMessage ))";
    EXPECT_EQ(run(context, readCode).text, "No Error Message");
    EXPECT_EQ(run(context, "GetAsNumber ( \"No Error Message\" )").text, "");

    const auto set = run(
        context,
        R"(Let ( [ $$Ravelin_LastError = -4 ; $$Ravelin_LastErrorMessage = "Not implemented yet" ] ; "" ))");
    EXPECT_EQ(set.error, 0);
    EXPECT_EQ(set.text, "");
    EXPECT_EQ(context.get(u"$$Ravelin_LastError").type(), sim::Type::Number);
    EXPECT_EQ(run(context, readCode).text, "-4");
    EXPECT_EQ(run(context, readMessage).text, "Not implemented yet");

    // A message holding a double quote or ending in a backslash breaks the calculation; nothing
    // is set.
    for (
        const char* broken : {
            R"(Let ( [ $$Ravelin_LastError = 2400 ; $$Ravelin_LastErrorMessage = "say "hi" now" ] ; "" ))",
            R"(Let ( [ $$Ravelin_LastError = 2400 ; $$Ravelin_LastErrorMessage = "a "quote" ] ; "" ))",
            R"(Let ( [ $$Ravelin_LastError = 2400 ; $$Ravelin_LastErrorMessage = "C:\" ] ; "" ))",
        }) {
        EXPECT_NE(run(context, broken).error, 0) << broken;
        EXPECT_EQ(run(context, readCode).text, "-4") << broken;
    }
}

TEST(CalcTest, PluginHostCalculations) {
    FakeContext context;
    expectAll(context, {
                           {"Get(FileName)", "Demo"},
                           {"Get( FileName )", "Demo"},
                           {"get ( filename )", "Demo"},
                           {"DatabaseNames", "Demo\rContacts"},
                           {R"(ScriptNames( "" ))", "Start\rSend Mail"},
                           {R"(ScriptNames( "Contacts" ))", "Import"},
                           {R"(ScriptNames( "Closed" ))", ""},
                           {"Get ( CurrentDate )", "1/31/2024"},
                           {"Get ( CurrentTime )", "1:26:45 PM"},
                           {"Get ( CurrentTimestamp )", "1/31/2024 1:26:45 PM"},
                       });
    EXPECT_NE(run(context, R"(ScriptNames( "Bad"Name" ))").error, 0);

    context.parameter = sim::Value::text(std::u16string(u"p"));
    EXPECT_EQ(run(context, "Get ( ScriptParameter )").text, "p");

    // A variable holding styled text, read value by value.
    ASSERT_EQ(
        run(context, R"(Let ( $rich = TextStyleAdd ( "one" ; Bold ) & ¶ & "two" ; 1 ))").error, 0);
    expectAll(context, {
                           {"isEmpty($rich)", "0"},
                           {"isEmpty($none)", "1"},
                           {"ValueCount($rich)", "2"},
                           {"GetValue($rich;2)", "two"},
                           {"GetAsCSS(GetValue($rich;1))",
                            R"(<span style = "font-weight: bold;text-align: left;">one</span>)"},
                       });
}

TEST(CalcTest, TextFunctions) {
    FakeContext context;
    expectAll(context, {
                           {R"(Length ( "abc" ))", "3"},
                           {"Length ( 1.50 )", "3"},
                           {R"(Left ( "abcdef" ; 2 ))", "ab"},
                           {R"(Left ( "abc" ; -1 ))", ""},
                           {R"(Right ( "abcdef" ; 2 ))", "ef"},
                           {R"(Right ( "abc" ; 10 ))", "abc"},
                           {R"(Middle ( "abcdef" ; 2 ; 3 ))", "bcd"},
                           {R"(Middle ( "abcdef" ; 0 ; 2 ))", "a"},
                           {R"(Middle ( "abc" ; -5 ; 1e300 ))", "abc"},
                           {R"(Middle ( "abc" ; 1e300 ; 1 ))", ""},
                           {"Char ( 65 )", "A"},
                           {"Char ( 9800065 )", "Ab"},
                           {"Char ( 0 )", ""},
                           {R"(Code ( "Ab" ))", "9800065"},
                           {R"(Code ( "😀" ))", "128512"},
                           {R"(Char ( Code ( "Hi" ) ))", "Hi"},
                           {R"(Position ( "Mississippi" ; "SS" ; 1 ; 2 ))", "6"},
                           {R"(Position ( "Mississippi" ; "s" ; 11 ; -1 ))", "7"},
                           {R"(Position ( "Mississippi" ; "s" ; 100 ; -4 ))", "3"},
                           {R"(Position ( "aaa" ; "aa" ; 1 ; 2 ))", "2"},
                           {R"(Position ( "abc" ; "x" ; 1 ; 1 ))", "0"},
                           {R"(PatternCount ( "Mississippi" ; "IS" ))", "2"},
                           {R"(PatternCount ( "aaaa" ; "aa" ))", "2"},
                           {R"(Substitute ( "Abcabc" ; "a" ; "x" ))", "Abcxbc"},
                           {R"(Substitute ( "abc" ; [ "a" ; "b" ] ; [ "b" ; "c" ] ))", "ccc"},
                           {R"(Substitute ( "abc" ; "" ; "x" ))", "abc"},
                           {R"(Upper ( "àb" ))", "ÀB"},
                           {R"(Lower ( "ÀB" ))", "àb"},
                           {R"(Proper ( "hello wORLD-wide" ))", "Hello World-Wide"},
                           {R"(Trim ( "  a b  " ))", "a b"},
                           {R"(Exact ( "a" ; "A" ))", "0"},
                           {R"(Quote ( "say \"hi\"¶\\" ))", R"("say \"hi\"¶\\")"},
                           {R"(Replace ( "abcdef" ; 2 ; 3 ; "X" ))", "aXef"},
                           {R"(Filter ( "a1b2" ; "0123456789" ))", "12"},
                           {R"(GetAsText ( 1 + 1 ) & "x")", "2x"},
                       });
}

TEST(CalcTest, ValueLists) {
    FakeContext context;
    expectAll(context, {
                           {R"(ValueCount ( "a¶b¶¶" ))", "3"},
                           {R"(ValueCount ( "a¶b¶" ))", "2"},
                           {R"(ValueCount ( "" ))", "0"},
                           {"ValueCount ( \"a\nb\u2028c\u2029d\" )", "4"},
                           {R"(GetValue ( "London¶Paris¶Hong Kong" ; 2 ))", "Paris"},
                           {R"(GetValue ( "London¶Paris" ; 3 ))", ""},
                           {R"(LeftValues ( "a¶b¶c" ; 2 ))", "a\rb\r"},
                           {R"(RightValues ( "a¶b¶c" ; 1 ))", "c\r"},
                           {R"(MiddleValues ( "a¶b¶c" ; 2 ; 5 ))", "b\rc\r"},
                           {R"(FilterValues ( "a¶B¶c" ; "b¶C" ))", "B\rc\r"},
                           {R"(List ( "a" ; "" ; 2 ))", "a\r2"},
                       });
}

TEST(CalcTest, NumberFunctions) {
    FakeContext context;
    expectAll(context, {
                           {R"(GetAsNumber ( "FY20" ))", "20"},
                           {R"(GetAsNumber ( "$1,254.50" ))", "1254.5"},
                           {R"(GetAsNumber ( "2 - 2" ))", "22"},
                           {R"~(GetAsNumber ( "(22)" ))~", "-22"},
                           {R"~(GetAsNumber ( ".(22)" ))~", "0.22"},
                           {R"(IsEmpty ( GetAsNumber ( "abc" ) ))", "1"},
                           {"GetAsNumber ( Date ( 10 ; 10 ; 2019 ) )", "737342"},
                           {"Abs ( -2.5 )", "2.5"},
                           {"Int ( -2.7 )", "-2"},
                           {"Int ( 0.57 * 100 )", "57"},
                           {"Round ( 1.005 ; 2 )", "1.01"},
                           {"Round ( -2.5 ; 0 )", "-3"},
                           {"Round ( 1234 ; -2 )", "1200"},
                           {"Truncate ( 2.789 ; 2 )", "2.78"},
                           {"Mod ( -7 ; 3 )", "2"},
                           {"Mod ( 0.3 ; 0.1 )", "0"},
                           {"Mod ( 1 ; 0 )", "?"},
                           {"Div ( 7 ; 2 )", "3"},
                           {"Min ( 3 ; 1 ; 2 )", "1"},
                           {"Max ( 3 ; \"\" ; 5 )", "5"},
                           {"Sum ( 1 ; 2 ; 3 )", "6"},
                           {"Floor ( -1.5 ) & Ceiling ( 1.2 ) & Sign ( -3 )", "-22-1"},
                           {"Sqrt ( 16 ) & Sqrt ( -1 )", "4?"},
                           {"Round ( Pi ; 4 )", "3.1416"},
                           {"True + False", "1"},
                           {"GetAsBoolean ( \"abc\" ) & GetAsBoolean ( 2 )", "01"},
                       });
}

// Decimal arithmetic: exact sums, products and comparisons; divisions and roots to the current
// precision (16 decimals, SetPrecision's 16 .. 400 for the expression it wraps).
TEST(CalcTest, DecimalNumbers) {
    FakeContext context;
    const std::string fourHundredNines(400, '9');
    const std::string tenToThe400 = std::string("1").append(400, '0');
    expectAll(context,
              {
                  {"52 * 1.25 + 0.01", "65.01"},
                  {"3.3 * 3", "9.9"},
                  {"0.1 + 0.2 = 0.3", "1"},
                  {"123456789012345678", "123456789012345678"},
                  {"123456789012345678901234567890 + 1", "123456789012345678901234567891"},
                  {"10 / 3", "3.3333333333333333"},
                  {"2 / 3", "0.6666666666666667"},
                  {"1 / 8", "0.125"},
                  {"1 / 10 ^ 17", "0"},
                  {"SetPrecision ( 1 / 7 ; 20 )", "0.14285714285714285714"},
                  {"SetPrecision ( 1 / 3 ; 3 )", "0.3333333333333333"},
                  {"SetPrecision ( 1 / 3 ; 20 ) & \" \" & 1 / 3",
                   "0.33333333333333333333 0.3333333333333333"},
                  {"Length ( SetPrecision ( 1 / 3 ; 1000 ) )", "402"},
                  {"Sqrt ( 2 )", "1.414213562373095"},
                  {"SetPrecision ( Sqrt ( 2 ) ; 30 )", "1.41421356237309504880168872421"},
                  {"Round ( 2.675 ; 2 )", "2.68"},
                  {"Round ( -2.675 ; 2 )", "-2.68"},
                  {"Round ( -0.4 ; 0 )", "0"},
                  {"Truncate ( -2.675 ; 2 )", "-2.67"},
                  {"Mod ( 1.1 ; 0.2 )", "0.1"},
                  {"Div ( 0.3 ; 0.1 )", "3"},
                  {"Mod ( -7.5 ; 2 )", "0.5"},
                  {"Average ( 1 ; 2 ; 2 )", "1.6666666666666667"},
                  {"Sum ( 0.1 ; 0.2 ; 0.3 )", "0.6"},
                  {"Max ( 0.30000000000000001 ; 0.3 )", "0.30000000000000001"},
                  {"-0", "0"},
                  {"0 * -1", "0"},
                  {"-0.0 * 5 & Abs ( -0 )", "00"},
                  {"10 ^ 30", "1000000000000000000000000000000"},
                  {"1e-30", "0.000000000000000000000000000001"},
                  {"0.000000000000000000001 * 3", "0.000000000000000000003"},
                  {"2 ^ 100", "1267650600228229401496703205376"},
                  {"1.1 ^ 2 & \" \" & 2 ^ -1 & \" \" & 2 ^ 0.5", "1.21 0.5 1.414213562373095"},
                  {"(-8) ^ ( 1 / 3 ) & 0 ^ -1", "??"},
                  {"(-1) ^ 1e300 & (-1) ^ 3 & 1 ^ 0.5 & 0.9999999 ^ 1e300", "1-110"},
                  {"10 ^ 400 & Exp ( 1000 )", "??"},
                  {"Exp ( 1 ) & \" \" & Ln ( Exp ( 2 ) )", "2.7182818284590452 2"},
                  {"Log ( 1000 ) & Lg ( 8 ) & Ln ( 0 )", "33?"},
                  {"GetAsNumber ( \"12345678901234567890.125\" ) * 8", "98765431209876543121"},
                  {"GetAsNumber ( GetAsTimestamp ( \"1/1/2020 10:00:00.5\" ) )", "63713469600.5"},
                  {"GetAsTimestamp ( \"1/1/2020 10:00:00.5\" ) + 0.25", "1/1/2020 10:00:00.75 AM"},
              });
    // 400 significant digits, and nothing from 10^400 on.
    const struct {
        std::string calculation;
        std::string expected;
    } large[] = {
        {fourHundredNines + " + 1", "?"},
        {fourHundredNines + " - " + fourHundredNines, "0"},
        {fourHundredNines + " * 1", fourHundredNines},
        {std::string("1").append(399, '0').append(" + 1"),
         std::string("1").append(398, '0').append("1")},
        {tenToThe400 + " + 0", ""},  // the literal itself is out of range: error 1218
        {std::string("0.").append(399, '0').append("1 * 10"),
         std::string("0.").append(398, '0').append("1")},
    };
    for (const auto& c : large) {
        const calc_test::Outcome out = run(context, c.calculation);
        EXPECT_EQ(out.text, c.expected) << c.calculation;
    }
}

// Short divisions run on machine integers, long ones (here: 40 places) on the decimal type; both
// must round the same quotient the same way.
TEST(CalcTest, DivisionPathsAgree) {
    FakeContext context;
    std::mt19937 random(15);
    std::uniform_int_distribution<int> digits(-999999, 999999);
    std::uniform_int_distribution<int> scale(0, 6);
    for (int i = 0; i < 300; ++i) {
        const std::string x = std::to_string(digits(random)) + "e-" + std::to_string(scale(random));
        std::string y = std::to_string(digits(random)) + "e-" + std::to_string(scale(random));
        if (y.rfind("0e", 0) == 0) y = "7";
        const std::string direct = run(context, x + " / " + y).text;
        const std::string viaLong =
            run(context, "Round ( SetPrecision ( " + x + " / " + y + " ; 40 ) ; 16 )").text;
        EXPECT_EQ(direct, viaLong) << x << " / " << y;
    }
}

// Angles in radians. Pi is a decimal at the current precision; the angle functions are binary
// doubles taken at 16 significant digits, with the binary rounding that brings; out of the
// domain gives "?".
TEST(CalcTest, Trigonometry) {
    FakeContext context;
    expectAll(context, {
                           {"Pi", "3.1415926535897932"},
                           {"Round ( Pi ; 3 )", "3.142"},
                           {"SetPrecision ( Pi ; 30 )", "3.14159265358979323846264338328"},
                           {"Cos ( 0 )", "1"},
                           {"Cos ( 0.5 )", "0.877582561890373"},
                           {"Cos ( Radians ( 60 ) )", "0.5"},
                           {"Cos ( Radians ( 180 ) )", "-1"},
                           {"Sin ( Radians ( 30 ) )", "0.5"},
                           {"Sin ( Pi / 2 )", "1"},
                           {"Tan ( Radians ( 45 ) )", "1"},
                           {"Atan ( 1 )", "0.7853981633974483"},
                           {"Degrees ( Atan ( 1 ) )", "45"},
                           {"Asin ( 0.5 )", "0.5235987755982989"},
                           {"Acos ( 0.5 )", "1.047197551196598"},
                           {"Asin ( 2 ) & Acos ( -1.5 ) & Sin ( 10 ^ 399 )", "???"},
                           {"Degrees ( 3.14159 )", "179.9998479605043"},
                           {"Radians ( 180 )", "3.141592653589793"},
                           {"SetPrecision ( Sin ( 1 ) ; 30 )", "0.841470984807897"},
                           {"IsEmpty ( Sin ( \"\" ) )", "1"},
                       });
    for (int i = 0; i < 50; ++i) {
        const double r = std::stod(run(context, "Random").text);
        EXPECT_TRUE(r >= 0 && r < 1) << r;
    }
}

TEST(CalcTest, DatesTimesAndTimestamps) {
    FakeContext context;
    expectAll(
        context,
        {
            {"Date ( 1 ; 31 ; 2024 )", "1/31/2024"},
            {"Date ( 13 ; 1 ; 2023 )", "1/1/2024"},
            {"Date ( 3 ; 0 ; 2024 )", "2/29/2024"},
            {"Date ( 1 ; 31 ; 2024 ) + 1", "2/1/2024"},
            {"Date ( 1 ; 31 ; 2024 ) - 1.5", "1/30/2024"},
            {"Time ( 1 ; 0 ; 0 ) - 0.000001", "12:59:59.999999 AM"},
            {"Date ( 3 ; 1 ; 2024 ) - Date ( 2 ; 1 ; 2024 )", "29"},
            {"Date ( 1 ; 1 ; 0 )", "?"},
            {"Time ( 13 ; 5 ; 0 )", "1:05:00 PM"},
            {"Time ( 1 ; 0 ; 0 ) + 60", "1:01:00 AM"},
            {"Timestamp ( Date ( 1 ; 31 ; 2024 ) ; Time ( 13 ; 5 ; 0 ) )", "1/31/2024 1:05:00 PM"},
            {"GetAsTimestamp ( 50000 )", "1/1/0001 1:53:20 PM"},
            {"Timestamp ( Date ( 1 ; 1 ; 2024 ) ; 0 ) + 3600", "1/1/2024 1:00:00 AM"},
            {"GetAsNumber ( Timestamp ( Date ( 1 ; 2 ; 1 ) ; 0 ) )", "86400"},
            {R"(GetAsDate ( "2/29/2024" ) + 1)", "3/1/2024"},
            {R"(GetAsDate ( "nonsense" ))", "?"},
            {"Year ( Date ( 2 ; 29 ; 2024 ) ) & Month ( Date ( 2 ; 29 ; 2024 ) )", "20242"},
            {"Day ( Date ( 2 ; 29 ; 2024 ) )", "29"},
            {"DayOfWeek ( Date ( 1 ; 1 ; 2024 ) )", "2"},
            {"DayName ( Date ( 1 ; 7 ; 2024 ) )", "Sunday"},
            {"DayOfYear ( Date ( 12 ; 31 ; 2024 ) )", "366"},
            {"Hour ( Time ( 25 ; 0 ; 0 ) ) & Minute ( Time ( 1 ; 2 ; 3 ) )", "252"},
            {"Seconds ( Get ( CurrentTimestamp ) )", "45"},
            {"Date ( 1 ; 2 ; 2024 ) > Date ( 1 ; 1 ; 2024 )", "1"},
        });
}

TEST(CalcTest, ShortCircuitEvaluation) {
    FakeContext context;
    context.addFunction(u"Count_Call", 0, 0, [](const std::vector<sim::Value>&, sim::Value& r) {
        r = sim::Value::number(1.0);
        return short{0};
    });
    expectAll(context, {
                           {"If ( 1 ; 2 ; Count_Call )", "2"},
                           {"If ( 0 ; Count_Call )", ""},
                           {"Case ( 0 ; Count_Call ; 1 ; 2 ; Count_Call )", "2"},
                           {"Case ( 0 ; 1 ; 3 )", "3"},
                           {"Choose ( 1 ; Count_Call ; 5 )", "5"},
                           {"0 and Count_Call", "0"},
                           {"1 or Count_Call", "1"},
                       });
    EXPECT_EQ(context.calls, 0);
    EXPECT_EQ(run(context, "1 and Count_Call").text, "1");
    EXPECT_EQ(context.calls, 1);
}

TEST(CalcTest, StyleFunctionsAndCss) {
    FakeContext context;
    expectAll(
        context,
        {
            {"RGB ( 255 ; 0 ; 0 )", "16711680"},
            {R"(GetAsCSS ( TextColor ( TextStyleAdd ( "Frank" ; Bold ) ; RGB ( 255 ; 0 ; 0 ) ) ))",
             R"(<span style = "color: #FF0000;font-weight: bold;text-align: left;">Frank</span>)"},
            {R"(GetAsCSS ( TextSize ( TextFont ( TextColor ( TextStyleAdd ( "Frank" ; Bold ) ; RGB ( 255 ; 0 ; 0 ) ) ; "Helvetica" ) ; 12 ) ))",
             R"(<span style = "font-family: 'Helvetica';font-size: 12px;color: #FF0000;font-weight: bold;text-align: left;">Frank</span>)"},
            {R"(GetAsCSS ( TextStyleAdd ( "a" ; Italic + Underline ) & "<b>" ))",
             R"(<span style = "font-style: italic;text-decoration: underline;text-align: left;">a</span>)"
             R"(<span style = "text-align: left;">&lt;b&gt;</span>)"},
            {R"(GetAsCSS ( "a¶b" ))",
             R"(<span style = "text-align: left;">a<br></span><span style = "text-align: left;">b</span>)"},
            {R"(GetAsCSS ( TextStyleRemove ( TextStyleAdd ( "a" ; Bold + Italic ) ; Bold ) ))",
             R"(<span style = "font-style: italic;text-align: left;">a</span>)"},
            {R"(GetAsCSS ( TextColorRemove ( TextColor ( "a" ; 255 ) ) ))",
             R"(<span style = "text-align: left;">a</span>)"},
            {R"(GetAsCSS ( Middle ( TextStyleAdd ( "ab" ; Bold ) & "cd" ; 2 ; 2 ) ))",
             R"(<span style = "font-weight: bold;text-align: left;">b</span>)"
             R"(<span style = "text-align: left;">c</span>)"},
            {R"(GetAsCSS ( "" ))", ""},
            {R"(GetAsCSS ( FMSim_TextAlign ( "a" ; "Center" ) & ¶ & FMSim_TextAlign ( "b" ; "full" ) ))",
             R"(<span style = "text-align: center;">a<br></span><span style = "text-align: full;">b</span>)"},
            {R"(GetAsCSS ( GetValue ( "x¶" & FMSim_TextAlign ( "y" ; "right" ) ; 2 ) ))",
             R"(<span style = "text-align: right;">y</span>)"},
            {R"(GetAsCSS ( FMSim_TextAlign ( FMSim_TextAlign ( "a" ; "right" ) ; "none" ) ))",
             R"(<span style = "text-align: left;">a</span>)"},
        });
}

TEST(CalcTest, StyleConstantsAreFaceBits) {
    FakeContext context;
    const sim::calc::Result r =
        sim::calc::evaluate(u"TextStyleAdd ( \"a\" ; HighlightYellow + SmallCaps )", context);
    ASSERT_EQ(r.error, 0);
    const sim::CharStyle s = r.value.textValue().styleAt(0);
    EXPECT_EQ(s.face & s.faceMask, 4096 + 2);

    const sim::calc::Result plain =
        sim::calc::evaluate(u"TextStyleAdd ( TextStyleAdd ( \"a\" ; Bold ) ; Plain )", context);
    EXPECT_EQ(plain.value.textValue().styleAt(0).face, 0);
}

}  // namespace

// Numbers, dates, times, statistics and money: FileMaker's type rules for arithmetic on dates and
// times, and the examples of FileMaker's function reference where it gives them.
#include <gtest/gtest.h>

#include <string>

#include "tests/sim/calc_test_support.h"

namespace {

using calc_test::Case;
using calc_test::run;
using sim::Type;
using sim::fake::FakeContext;

using calc_test::expectAll;

struct TypedCase {
    const char* calculation;
    const char* expected;
    Type type;
};

void expectTyped(std::initializer_list<TypedCase> cases) {
    FakeContext context;
    for (const TypedCase& c : cases) {
        const calc_test::Outcome out = run(context, c.calculation);
        EXPECT_EQ(out.error, 0) << c.calculation;
        EXPECT_EQ(out.text, c.expected) << c.calculation;
        EXPECT_EQ(out.type, c.type) << c.calculation;
    }
}

constexpr const char* kMorning = "Timestamp ( Date ( 1 ; 1 ; 2024 ) ; Time ( 6 ; 0 ; 0 ) )";

std::string withMorning(const char* pattern) {
    std::string s = pattern;
    for (size_t at = s.find('@'); at != std::string::npos; at = s.find('@', at)) {
        s.replace(at, 1, kMorning);
    }
    return s;
}

// What each combination of operand types gives. Differences of two times or timestamps are
// elapsed times, written without AM/PM.
TEST(CalcNumberDate, ArithmeticOnDatesTimesAndTimestamps) {
    expectTyped({
        {R"(GetAsTime ( "12:15 pm" ) - GetAsTime ( "3:15 PM" ))", "-3:00:00", Type::Time},
        {"Time ( 13 ; 0 ; 0 ) - Time ( 12 ; 0 ; 0 )", "1:00:00", Type::Time},
        {"Time ( 1 ; 0 ; 0 ) + Time ( 2 ; 0 ; 0 )", "3:00:00 AM", Type::Time},
        {"( Time ( 3 ; 0 ; 0 ) - Time ( 1 ; 0 ; 0 ) ) * 1", "7200", Type::Number},
        {"( Time ( 3 ; 0 ; 0 ) - Time ( 1 ; 0 ; 0 ) ) + ( Time ( 5 ; 0 ; 0 ) - Time ( 3 ; 0 ; 0 ) "
         ")",
         "4:00:00", Type::Time},
        {"Time ( 9 ; 0 ; 0 ) + ( Time ( 3 ; 0 ; 0 ) - Time ( 1 ; 0 ; 0 ) )", "11:00:00 AM",
         Type::Time},
        {"Time ( 1 ; 0 ; 0 ) - Time ( 3 ; 0 ; 0 ) + 0", "-2:00:00", Type::Time},
        {"Time ( 20 ; 0 ; 0 ) - Time ( 0 ; 0 ; 0 ) + Time ( 7 ; 0 ; 0 ) - Time ( 0 ; 0 ; 0 )",
         "27:00:00", Type::Time},
        {"60 + Time ( 1 ; 0 ; 0 )", "1:01:00 AM", Type::Time},
        {"100 - Time ( 0 ; 1 ; 0 )", "40", Type::Number},
        {"Time ( 2 ; 0 ; 0 ) * 2", "14400", Type::Number},
        {"Date ( 1 ; 31 ; 2024 ) + 1", "2/1/2024", Type::Date},
        {"1 + Date ( 1 ; 31 ; 2024 )", "2/1/2024", Type::Date},
        {"Date ( 3 ; 1 ; 2024 ) - Date ( 2 ; 1 ; 2024 )", "29", Type::Number},
        {"Date ( 1 ; 1 ; 2024 ) + Date ( 1 ; 1 ; 2024 )", "1477772", Type::Number},
        {"Date ( 1 ; 1 ; 1 ) - 1", "?", Type::Text},
        {"Date ( 1 ; 1 ; 2024 ) + Time ( 13 ; 0 ; 0 )", "1/1/2024 1:00:00 PM", Type::Timestamp},
        {"Time ( 13 ; 0 ; 0 ) + Date ( 1 ; 1 ; 2024 )", "1/1/2024 1:00:00 PM", Type::Timestamp},
        {"Date ( 1 ; 1 ; 2024 ) - Time ( 1 ; 0 ; 0 )", "12/31/2023 11:00:00 PM", Type::Timestamp},
        {"GetAsTimestamp ( \"1/1/2020 10:00:00.5\" ) + 0.25", "1/1/2020 10:00:00.75 AM",
         Type::Timestamp},
        {"Timestamp ( Date ( 1 ; 3 ; 2024 ) ; 0 ) - Timestamp ( Date ( 1 ; 1 ; 2024 ) ; "
         "Time ( 1 ; 0 ; 0 ) )",
         "47:00:00", Type::Time},
    });
    const struct {
        const char* pattern;  // @ stands for 1/1/2024 6:00 AM
        const char* expected;
        Type type;
    } withTimestamp[] = {
        {"@ + Time ( 1 ; 30 ; 0 )", "1/1/2024 7:30:00 AM", Type::Timestamp},
        {"Time ( 1 ; 30 ; 0 ) + @", "1/1/2024 7:30:00 AM", Type::Timestamp},
        {"@ - Time ( 7 ; 0 ; 0 )", "12/31/2023 11:00:00 PM", Type::Timestamp},
        {"@ - 3600", "1/1/2024 5:00:00 AM", Type::Timestamp},
        {"@ - Date ( 1 ; 1 ; 2024 )", "6:00:00", Type::Time},
        {"Date ( 1 ; 1 ; 2024 ) - @", "-6:00:00", Type::Time},
        {"@ - @", "0:00:00", Type::Time},
        {"@ > Date ( 1 ; 1 ; 2024 )", "1", Type::Number},
    };
    FakeContext context;
    for (const auto& c : withTimestamp) {
        const std::string calculation = withMorning(c.pattern);
        const calc_test::Outcome out = run(context, calculation);
        EXPECT_EQ(out.text, c.expected) << calculation;
        EXPECT_EQ(out.type, c.type) << calculation;
    }
}

// Abs returns a number or a time; the other rounding functions keep a date, time or timestamp
// too, Mod keeps a time, Min and Max give the winning argument as it is.
TEST(CalcNumberDate, RoundingFunctionsKeepTheType) {
    expectTyped({
        {R"(Abs ( GetAsTime ( "12:15 pm" ) - GetAsTime ( "3:15 PM" ) ))", "3:00:00", Type::Time},
        {"Abs ( Time ( -2 ; 0 ; 0 ) )", "2:00:00 AM", Type::Time},
        {"Abs ( -1.2 )", "1.2", Type::Number},
        {"Round ( Time ( 1 ; 2 ; 3.5 ) - Time ( 0 ; 0 ; 0 ) ; 0 )", "1:02:04", Type::Time},
        {R"(Round ( GetAsTime ( "1:02:03.6" ) ; 0 ))", "1:02:04 AM", Type::Time},
        {"Int ( Timestamp ( Date ( 1 ; 1 ; 2024 ) ; Time ( 6 ; 0 ; 0.75 ) ) )",
         "1/1/2024 6:00:00 AM", Type::Timestamp},
        {R"(Floor ( GetAsTime ( "1:00:00.5" ) ))", "1:00:00 AM", Type::Time},
        {R"(Ceiling ( GetAsTime ( "1:00:00.5" ) ))", "1:00:01 AM", Type::Time},
        {R"(Truncate ( GetAsTime ( "1:00:00.56" ) ; 1 ))", "1:00:00.5 AM", Type::Time},
        {"Round ( Date ( 1 ; 1 ; 2024 ) ; 0 )", "1/1/2024", Type::Date},
        {"Mod ( Time ( 25 ; 30 ; 0 ) - Time ( 0 ; 0 ; 0 ) ; 86400 )", "1:30:00", Type::Time},
        {"Mod ( Time ( 25 ; 0 ; 0 ) ; 86400 )", "1:00:00 AM", Type::Time},
        {withMorning("Mod ( @ ; 86400 )").c_str(), "6:00:00 AM", Type::Time},
        {"Div ( Time ( 2 ; 30 ; 0 ) ; 3600 )", "2", Type::Number},
        {"Sign ( Time ( -1 ; 0 ; 0 ) )", "-1", Type::Number},
        {"Hour ( Time ( 5 ; 0 ; 0 ) - Time ( 2 ; 0 ; 0 ) )", "3", Type::Number},
        {"GetAsText ( Time ( 3 ; 0 ; 0 ) - Time ( 0 ; 0 ; 0 ) )", "3:00:00", Type::Text},
        {"GetAsTime ( Time ( 3 ; 0 ; 0 ) - Time ( 0 ; 0 ; 0 ) )", "3:00:00", Type::Time},
        {"GetAsTime ( Time ( 27 ; 0 ; 0 ) )", "27:00:00", Type::Time},
        {"Max ( Time ( 1 ; 0 ; 0 ) ; 7200 )", "7200", Type::Number},
        {"Max ( Time ( 3 ; 0 ; 0 ) ; 7200 )", "3:00:00 AM", Type::Time},
        {"Min ( Date ( 1 ; 1 ; 2024 ) ; Date ( 2 ; 1 ; 2024 ) )", "1/1/2024", Type::Date},
        {R"(Max ( "apple" ; "Banana" ; "cherry" ))", "cherry", Type::Text},
        {R"(Min ( "apple" ; "Banana" ; "" ))", "apple", Type::Text},
        {R"(Max ( "10" ; 9 ))", "10", Type::Number},
    });
}

TEST(CalcNumberDate, NumberFunctions) {
    expectAll({
        {"Ceiling ( 1.25 ) & \" \" & Ceiling ( -1.25 )", "2 -1"},
        {"Floor ( 1.25 ) & \" \" & Floor ( -1.25 )", "1 -2"},
        {"Int ( 1.45 ) & \" \" & Int ( -1.45 )", "1 -1"},
        {"Div ( -7 ; 2 ) & \" \" & Div ( 1.5 ; .5 )", "-4 3"},
        {"Mod ( 7 ; 3 ) & Mod ( -7 ; 3 ) & Mod ( 7 ; -3 ) & Mod ( -7 ; -3 )", "12-2-1"},
        {"Round ( 123.456 ; 2 ) & \" \" & Round ( 123.456 ; 0 ) & \" \" & Round ( 123.456 ; -2 )",
         "123.46 123 100"},
        {"Truncate ( 1.234 ; 0 ) & \" \" & Truncate ( 1.234 ; 2 ) & \" \" & Truncate ( 123.456 ; "
         "-1 )",
         "1 1.23 120"},
        {"Sign ( -3.2 ) & Sign ( 0 ) & Sign ( 12 )", "-101"},
        {"Lg ( 1 ) & \" \" & Lg ( 2 ) & \" \" & Lg ( 1024 )", "0 1 10"},
        {"Log ( 100 ) & \" \" & Log ( 1 ) & \" \" & Exp ( 0 )", "2 0 1"},
        {"Ln ( 2.7182818 )", "0.9999999895305023"},
        {"SetPrecision ( 22 / 7 ; 30 )", "3.142857142857142857142857142857"},
        {"Factorial ( 3 )", "6"},
        {"Factorial ( 10 ; 3 )", "720"},
        {"Factorial ( 0 ) & \" \" & Factorial ( 1 ) & \" \" & Factorial ( 20 )",
         "1 1 2432902008176640000"},
        {"Factorial ( 5 ; 0 ) & \" \" & Factorial ( 5 ; 9 )", "1 120"},
        {"Length ( Factorial ( 200 ) )", "375"},
        {"Factorial ( -1 ) & Factorial ( 2.5 ) & Factorial ( 300 ) & Factorial ( 5 ; -1 )", "????"},
        {"Factorial ( 1e300 ) & Factorial ( 1e300 ; 2 )", "??"},
        {"Combination ( 13 ; 13 ) & \" \" & Combination ( 13 ; 1 ) & \" \" & Combination ( 4 ; 2 )",
         "1 13 6"},
        {"Combination ( 52 ; 5 )", "2598960"},
        {"Combination ( 3 ; 5 ) & Combination ( -1 ; 1 ) & Combination ( 2.5 ; 1 )", "0??"},
        {"Length ( Combination ( 1300 ; 650 ) ) & Combination ( 100000 ; 50000 )", "390?"},
    });
}

TEST(CalcNumberDate, DateAndTimeFunctions) {
    expectAll({
        {"Date ( 14 ; 1 ; 2019 ) & \" \" & Date ( 1 ; 0 ; 2020 ) & \" \" & Date ( 0 ; 1 ; 2020 )",
         "2/1/2020 12/31/2019 12/1/2019"},
        {"DayOfYear ( Date ( 1 ; 1 ; 2019 ) ) & \" \" & DayOfYear ( Date ( 3 ; 1 ; 2019 ) )",
         "1 60"},
        {"MonthName ( Date ( 10 ; 10 ; 2019 ) ) & DayName ( Date ( 10 ; 10 ; 2019 ) ) & "
         "DayOfWeek ( Date ( 10 ; 10 ; 2019 ) )",
         "OctoberThursday5"},
        {"DayNameJ ( Date ( 10 ; 10 ; 2019 ) ) & DayNameJ ( Date ( 10 ; 13 ; 2019 ) )",
         "木曜日日曜日"},
        // Weeks from Sunday; the week of 1 January is week 1.
        {"WeekOfYear ( Date ( 1 ; 1 ; 2019 ) ) & \" \" & WeekOfYear ( Date ( 12 ; 31 ; 2019 ) )",
         "1 53"},
        {"WeekOfYear ( Date ( 12 ; 31 ; 2000 ) ) & \" \" & WeekOfYear ( Date ( 1 ; 6 ; 2024 ) ) & "
         "\" \" & WeekOfYear ( Date ( 1 ; 7 ; 2024 ) )",
         "54 1 2"},
        // startingDay 2 gives ISO 8601's weeks.
        {"WeekOfYearFiscal ( Date ( 1 ; 1 ; 2021 ) ; 2 ) & \" \" & "
         "WeekOfYearFiscal ( Date ( 12 ; 30 ; 2024 ) ; 2 ) & \" \" & "
         "WeekOfYearFiscal ( Date ( 1 ; 1 ; 2026 ) ; 2 )",
         "53 1 1"},
        {"WeekOfYearFiscal ( Date ( 1 ; 1 ; 2016 ) ; 1 ) & \" \" & "
         "WeekOfYearFiscal ( Date ( 1 ; 1 ; 2019 ) ; 1 ) & \" \" & "
         "WeekOfYearFiscal ( Date ( 12 ; 31 ; 2020 ) ; 1 )",
         "52 1 53"},
        {"WeekOfYearFiscal ( Date ( 1 ; 1 ; 2021 ) ; 8 ) & WeekOfYearFiscal ( Date ( 1 ; 1 ; 2021 "
         ") ; 0 )",
         "??"},
        {R"(IsEmpty ( WeekOfYear ( "" ) ) & IsEmpty ( WeekOfYearFiscal ( "" ; 1 ) ))", "11"},
        {R"(Seconds ( "12:15:23.5" ) & " " & Hour ( "2:05:40" ) & Minute ( "2:05:40" ))",
         "23.5 25"},
        {"Time ( 10 ; 50 ; 4.7 ) & \" \" & Time ( 1 ; 90 ; 0 )", "10:50:04.7 AM 2:30:00 AM"},
        {"Timestamp ( Date ( 10 ; 11 ; 2019 ) ; Time ( 25 ; 0 ; 0 ) )", "10/12/2019 1:00:00 AM"},
    });
}

// Only arguments with a value count. A sample of one value has no standard deviation.
TEST(CalcNumberDate, Aggregates) {
    expectAll({
        {"Average ( 1 ; 2 ; 3 ) & \" \" & Average ( 1 ; \"\" ; 2 ) & \" \" & Count ( 1 ; \"\" ; "
         "\"a\" )",
         "2 1.5 2"},
        {"Sum ( 1 ; \"\" ; 2.5 ) & \" \" & Sum ( \"\" )", "3.5 0"},
        {"StDev ( 5 ; 6 ; 7 ; 8 ) & \" \" & StDevP ( 5 ; 6 ; 7 ; 8 )",
         "1.2909944487358056 1.1180339887498948"},
        {"Variance ( 5 ; 6 ; 7 ; 8 ) & \" \" & VarianceP ( 5 ; 6 ; 7 ; 8 )",
         "1.6666666666666667 1.25"},
        {"StDev ( 5 ) & \" \" & StDevP ( 5 ) & \" \" & Variance ( 5 ) & \" \" & VarianceP ( 5 )",
         "? 0 ? 0"},
        {R"(IsEmpty ( StDevP ( "" ) ) & IsEmpty ( Variance ( "" ; "" ) ) & StDev ( 1 ; "" ; 3 ))",
         "111.414213562373095"},
        {"SetPrecision ( StDev ( 1 ; 2 ; 3 ; 4 ) ; 30 )", "1.290994448735805628393088466594"},
        {"StDev ( 0.1 ; 0.2 ; 0.3 )", "0.1"},
        {"Variance ( 100000000000000000001 ; 100000000000000000003 )", "2"},
    });
}

// The formulas' values (worked out independently in decimal); payments at the end of periods.
TEST(CalcNumberDate, Financial) {
    expectAll({
        {"FV ( 50 ; .1 / 12 ; 12 )", "628.2784046477833333"},
        {"PMT ( 23000 ; .06 / 12 ; 60 )", "444.6544351768421228"},
        {"PV ( 100 ; .05 ; 10 )", "772.1734929184812513"},
        {R"(NPV ( "-10000¶3000¶4200¶6800" ; .1 ))", "1188.4434123352230039"},
        {"FV ( 50 ; 0 ; 12 ) & \" \" & PV ( 50 ; 0 ; 12 ) & \" \" & PMT ( 1200 ; 0 ; 12 )",
         "600 600 100"},
        {"PMT ( 1000 ; 0 ; 0 ) & NPV ( 1 ; -1 )", "??"},
        {R"(NPV ( 100 ; 0.1 ) & " " & NPV ( "100¶¶100" ; 0 ) & IsEmpty ( NPV ( "" ; .1 ) ))",
         "90.9090909090909091 2001"},
        {"PMT ( 10000 ; .1 ; 1e9 ) & \" \" & PV ( 100 ; .1 ; 1e9 ) & \" \" & FV ( 1 ; 1 ; 1e9 )",
         "1000 1000 ?"},
    });
}

// A variable's repetitions stand in for a repeating field's; numbers outside 1 .. 2^31-1 give
// empty.
TEST(CalcNumberDate, Repetitions) {
    expectAll({
        {R"(Let ( [ $v[2] = "b" ; $v = "a" ] ; GetRepetition ( $v ; 2 ) & GetRepetition ( $v ; 1 ) & GetRepetition ( $v ; 3 ) ))",
         "ba"},
        {"GetRepetition ( $v ; 0 ) & GetRepetition ( $v ; -1 )", ""},
        {R"(GetRepetition ( $$w ; 1e20 ) & GetRepetition ( $$w ; "" ) & Extend)", "16384"},
    });
}

TEST(CalcNumberDate, ArgumentCounts) {
    FakeContext context;
    const calc_test::ErrorCase cases[] = {
        {"Factorial ( )", 1201},     {"Factorial ( 1 ; 2 ; 3 )", 1202},
        {"Combination ( 4 )", 1201}, {"WeekOfYearFiscal ( Date ( 1 ; 1 ; 2024 ) )", 1201},
        {"StDev ( )", 1201},         {"NPV ( 1 )", 1201},
        {"PMT ( 1 ; 2 )", 1201},     {"FV ( 1 ; 2 ; 3 ; 4 )", 1202},
    };
    for (const auto& c : cases)
        EXPECT_EQ(run(context, c.calculation).error, c.error) << c.calculation;
}

}  // namespace

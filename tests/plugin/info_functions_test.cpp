// Version, Get, Set, ValueType, GetTimestamp and the platform stubs, through the loaded plug-in.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "frame/functions.h"
#include "frame/strings.h"
#include "globals/store.h"
#include "info/sort_numbers.h"
#include "info_test_support.h"
#include "sim/encoding.h"
#include "sim/faults.h"

namespace {

using info_test::callLoaded;
using info_test::text;

struct Expected {
    const char* calculation;
    const char* type;
    std::string text;
};

class InfoFunctions : public ::testing::Test {
protected:
    ~InfoFunctions() override { sim::faults::clear(); }

    void expectAll(const std::vector<Expected>& cases) {
        for (const Expected& c : cases) {
            const sim::EvalResult r = session_.eval(c.calculation);
            EXPECT_EQ(r.error, 0) << c.calculation;
            EXPECT_EQ(r.type, c.type) << c.calculation;
            EXPECT_EQ(r.text, c.text) << c.calculation;
        }
    }
    void setLastError(const std::string& code, const std::string& message) {
        session_.eval("Let ( [ $$Ravelin_LastError = " + code +
                      " ; $$Ravelin_LastErrorMessage = \"" + message + "\" ] ; \"\" )");
    }
    std::string lastError() {
        return session_.eval("$$Ravelin_LastError").text + " " +
               session_.eval("$$Ravelin_LastErrorMessage").text;
    }

    sim::Session session_{info_test::withPlugin()};
};

TEST_F(InfoFunctions, VersionFormatsLeaveTheLastErrorAlone) {
    setLastError("24001", "earlier");
    const std::string name = sim::toUtf8(pluginString(kPluginName));
    expectAll({
        {"Ravelin_Version", "Text", "3.0.3"},
        {"Ravelin_Version ( \"short\" )", "Text", "3.0.3"},
        {"Ravelin_Version ( \"LONG\" )", "Text", name + " 3.0.3"},
        {"Ravelin_Version ( \"Platform\" )", "Text", "iOS"},
        {"Ravelin_Version ( \"autoupdate\" )", "Text", "03000318"},
        {"Ravelin_Version ( \"auto\" )", "Text", "3.0.3"},
        {"Ravelin_Version ( \"\" )", "Text", "3.0.3"},
    });
    EXPECT_EQ(lastError(), "24001 earlier");
}

TEST_F(InfoFunctions, GetSelectorsIgnoreCaseAndLeaveTheLastErrorAlone) {
    expectAll({{"Ravelin_Get ( \"lastError\" )", "Number", ""}});  // nothing set: no number
    setLastError("24001", "boom");
    expectAll({
        {"Ravelin_Get ( \"LASTERROR\" )", "Number", "24001"},
        {"Ravelin_Get ( \"lastErrorMessage\" ; \"ignored\" )", "Text", "boom"},
        {"Ravelin_Get ( \"StdErr\" )", "Text", "No Error Message"},
        {"Ravelin_Get ( \"inlineDocumentation\" )", "Text", "off"},
        {"Ravelin_ValueType ( Ravelin_Get ( \"Timestamp\" ) )", "Text", "Timestamp"},
        {"Ravelin_Get ( \"SORT\" ; \"3¶1\" )", "Text", "1\r3\r"},
    });
    EXPECT_EQ(lastError(), "24001 boom");
}

TEST_F(InfoFunctions, BadSelectorsAndMissingArguments) {
    const struct {
        const char* calculation;
        const char* message;
    } cases[] = {
        {"Ravelin_Get", "Not enough parameters"},
        {"Ravelin_Get ( \"sort\" )", "Not enough parameters"},
        {"Ravelin_Get ( \"last\" )", "Unrecognized selector"},
        {"Ravelin_Get ( \" lastError\" )", "Unrecognized selector"},
        {"Ravelin_Set ( \"timestamp\" ; 1 )", "Unrecognized selector"},
    };
    for (const auto& c : cases) {
        setLastError("0", "none");
        const sim::EvalResult r = session_.eval(c.calculation);
        EXPECT_EQ(r.type, "Number") << c.calculation;
        EXPECT_EQ(r.text, "-50") << c.calculation;
        EXPECT_EQ(lastError(), std::string("-50 ") + c.message) << c.calculation;
    }
    // The host stops Set with one argument; a host that did not would get the same answer.
    EXPECT_NE(session_.eval("Ravelin_Set ( \"inlineDocumentation\" )").error, 0);
    const info_test::Answer one =
        callLoaded(session_, u"Ravelin_Set", {text(u"globalDieInterval")});
    EXPECT_EQ(sim::toUtf8(one.result.asText().units()), "-50");
    EXPECT_EQ(lastError(), "-50 Not enough parameters");
}

TEST_F(InfoFunctions, SortThroughTheHost) {
    expectAll({
        {"Ravelin_Get ( \"sort\" ; \"10¶2¶33\" )", "Text", "2\r10\r33\r"},
        {"Ravelin_Get ( \"sort\" ; \"5¶x¶1\" )", "Text", "1\r5\r5\r"},
        {"Ravelin_Get ( \"sort\" ; \"3¶1¶\" )", "Text", "1\r1\r3\r"},
        {"Ravelin_Get ( \"sort\" ; 1234567 )", "Text", "1.23457e+06\r"},
        {"Ravelin_Get ( \"sort\" ; \"é¶2\" )", "Text", "0\r2\r"},
    });
}

TEST(SortNumberLines, ReadsRepeatsAndPrints) {
    const struct {
        const char* in;
        const char* out;
    } cases[] = {
        {"10\r2\r33", "2\r10\r33\r"},
        {"5\rx\r1", "1\r5\r5\r"},
        {"1\r2\r", "1\r2\r2\r"},
        {"1234567", "1.23457e+06\r"},
        {"x\r3", "0\r3\r"},                    // a first line without a number counts as 0
        {"", "0\r"},                           // one empty line
        {"\r\r", "0\r0\r0\r"},                 // three
        {"2\n9\r1", "1\r2\r"},                 // a line feed stays inside its line
        {"  4 apples\r-1.5e3", "-1500\r4\r"},  // leading blanks skipped, the rest ignored
        {"0.1\r1e-7\r100000", "1e-07\r0.1\r100000\r"},
        {"nan\r1\r-inf", "-inf\r1\rnan\r"},  // NaN sorts last
    };
    for (const auto& c : cases) EXPECT_EQ(rvl::sortNumberLines(c.in), c.out) << c.in;
}

TEST_F(InfoFunctions, InlineDocumentationReregistersEveryTime) {
    const struct {
        const char* value;
        const char* state;
    } cases[] = {{"\"OFF\"", "on"},  {"\"off\"", "off"}, {"\"\"", "on"},
                 {"\"off \"", "on"}, {"\"off\"", "off"}, {"0", "on"}};
    for (const auto& c : cases) {
        const std::string set =
            std::string("Ravelin_Set ( \"InlineDocumentation\" ; ") + c.value + " )";
        expectAll({{set.c_str(), "Text", c.state},
                   {"Ravelin_Get ( \"inlineDocumentation\" )", "Text", c.state}});
        EXPECT_EQ(session_.host().functions().size(), 24u) << c.value;
    }
}

TEST_F(InfoFunctions, RefusedReregistrationIsNotReported) {
    session_.host().refuseRegistration(13);
    setLastError("0", "none");
    expectAll({{"Ravelin_Set ( \"inlineDocumentation\" ; \"off\" )", "Text", "off"}});
    // Everything was unregistered first; the roll-back took back ids 1 to 12 again.
    EXPECT_TRUE(session_.host().functions().empty());
    EXPECT_EQ(lastError(), "0 none");
}

TEST_F(InfoFunctions, GlobalDieIntervalAnswersItsArgument) {
    expectAll({
        {"Ravelin_Set ( \"globalDieInterval\" ; 30 )", "Number", "30"},
        {"Ravelin_Set ( \"GLOBALDIEINTERVAL\" ; \"45\" )", "Text", "45"},
    });
    // The setting itself, in the plug-in's objects linked into the tests.
    ASSERT_EQ(
        info_test::call(Ravelin_Set, {text(u"globalDieInterval"), sim::Value::number(12.5)}).code,
        0);
    EXPECT_EQ(rvl::gCleanPeriod.load(), 12.5);
}

TEST_F(InfoFunctions, StubsAnswerMinusFourWithTheirMessage) {
    const struct {
        const char* calculation;
        const char* message;
    } cases[] = {
        {"Ravelin_DoSystemScript ( \"echo hi\" ; \"/bin/sh\" )", "Not implemented in iOS."},
        {"Ravelin_GetPrinterNames", "iOS doesn't support this function."},
        {"Ravelin_SetDefaultPrinter ( \"Laser\" )", "iOS doesn't support this function."},
        {"Ravelin_SetScriptShortcut ( \"k\" ; \"Greet\" )", "iOS doesn't support this function."},
        {"Ravelin_GetSpecialWindows", "iOS doesn't support this function."},
        {"Ravelin_GetDefaultPrinter ( 1 ; 2 )", "iOS doesn't support this function."},
    };
    for (const auto& c : cases) {
        setLastError("0", "none");
        expectAll({{c.calculation, "Number", "-4"}});
        EXPECT_EQ(lastError(), std::string("-4 ") + c.message) << c.calculation;
    }
}

TEST_F(InfoFunctions, ValueTypeNamesEveryNativeType) {
    sim::Binary picture;
    picture.streams.push_back({{'J', 'P', 'E', 'G'}, "\xFF\xD8"});
    const struct {
        sim::Value value;
        const char* name;
    } cases[] = {
        {sim::Value{}, ""},
        {text(u"abc"), "Text"},
        {sim::Value::number(3.14), "Number"},
        {sim::Value::date(sim::DateTime::fromYmd(2024, 1, 31)), "Date"},
        {sim::Value::time(sim::DateTime::fromSeconds(3600)), "Time"},
        {sim::Value::timestamp(sim::DateTime::fromYmd(2024, 1, 31)), "Timestamp"},
        {sim::Value::binary(picture), "Container"},
        {sim::Value::boolean(true), "Boolean"},
    };
    for (const auto& c : cases) {
        const info_test::Answer a = callLoaded(session_, u"Ravelin_ValueType", {c.value});
        EXPECT_EQ(a.code, 0) << c.name;
        EXPECT_EQ(a.result.type(), sim::Type::Text) << c.name;
        EXPECT_EQ(sim::toUtf8(a.result.asText().units()), c.name);
    }
    expectAll({{"Ravelin_ValueType ( Date ( 1 ; 31 ; 2024 ) )", "Text", "Date"}});
}

TEST_F(InfoFunctions, ValueTypeAnswersZeroEvenWhenReportingFails) {
    // Reading the type fails, and so does writing the last error: the frame's own answer would
    // be 2400, but ValueType answers 0 all the same.
    sim::faults::failFunction("FM_Data_GetNativeType", 2);
    sim::faults::failFunction("FM_ExprEnv_Evaluate", 2);
    const info_test::Answer a = callLoaded(session_, u"Ravelin_ValueType", {text(u"x")});
    sim::faults::clear();
    EXPECT_EQ(a.code, 0);
    EXPECT_EQ(sim::toUtf8(a.result.asText().units()), "2400");
}

// Both clocks give local time: with a zone far from GMT they still agree with the host's.
TEST_F(InfoFunctions, GetTimestampIsLocalTime) {
    const char* saved = std::getenv("TZ");
    const std::string previous = saved ? saved : "";
    setenv("TZ", "RVL-5:30", 1);
    tzset();
    const info_test::Answer a = callLoaded(session_, u"Ravelin_GetTimestamp", {});
    const double expected = sim::localNow().seconds();
    saved ? setenv("TZ", previous.c_str(), 1) : unsetenv("TZ");
    tzset();
    EXPECT_EQ(a.code, 0);
    ASSERT_EQ(a.result.type(), sim::Type::Timestamp);
    EXPECT_NEAR(a.result.asTimestamp().seconds(), expected, 2.0);
    EXPECT_NE(std::fmod(a.result.asTimestamp().seconds(), 1.0), 0.0);  // fractions are kept
}

TEST_F(InfoFunctions, GetTimestampAndTheTimestampSelectorAgree) {
    const info_test::Answer selector = callLoaded(session_, u"Ravelin_Get", {text(u"timestamp")});
    const info_test::Answer function = callLoaded(session_, u"Ravelin_GetTimestamp", {});
    ASSERT_EQ(selector.result.type(), sim::Type::Timestamp);
    ASSERT_EQ(function.result.type(), sim::Type::Timestamp);
    EXPECT_NEAR(function.result.asTimestamp().seconds(), selector.result.asTimestamp().seconds(),
                2.0);
}

}  // namespace

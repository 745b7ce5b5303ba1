// Version, Get, Set, ValueType, GetTimestamp and the platform stubs, through the loaded plug-in.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "entry/function_table.h"
#include "frame/strings.h"
#include "globals/store.h"
#include "info/sort_numbers.h"
#include "info_test_support.h"
#include "sim/abi/faults.h"
#include "sim/core/encoding.h"

namespace {

using info_test::callLoaded;
using info_test::text;

constexpr char kEarlier[] = "24001 earlier";  // the last error before each calculation

class InfoFunctions : public ::testing::Test {
protected:
    ~InfoFunctions() override { sim::faults::clear(); }

    std::string lastError() {
        return session_.eval("$$Ravelin_LastError & \" \" & $$Ravelin_LastErrorMessage").text;
    }

    sim::Session session_{info_test::withPlugin()};
};

TEST_F(InfoFunctions, AnswersAndLastErrors) {
    EXPECT_EQ(session_.eval("Ravelin_Get ( \"lastError\" )").text, "");  // nothing set: no number
    const std::string name = sim::toUtf8(pluginString(kPluginName));
    const std::string unsupported = "-4 iOS doesn't support this function.";
    const struct {
        const char* calculation;
        const char* type;
        std::string text;
        std::string lastError = kEarlier;
    } cases[] = {
        {"Ravelin_Version", "Text", "3.0.3"},
        {"Ravelin_Version ( \"LONG\" )", "Text", name + " 3.0.3"},
        {"Ravelin_Version ( \"Platform\" )", "Text", "iOS"},
        {"Ravelin_Version ( \"autoupdate\" )", "Text", "03000318"},
        {"Ravelin_Version ( \"auto\" )", "Text", "3.0.3"},
        {"Ravelin_Get ( \"LASTERROR\" )", "Number", "24001"},
        {"Ravelin_Get ( \"lastErrorMessage\" ; \"ignored\" )", "Text", "earlier"},
        {"Ravelin_Get ( \"StdErr\" )", "Text", "No Error Message"},
        {"Ravelin_Get ( \"inlineDocumentation\" )", "Text", "off"},
        {"Ravelin_ValueType ( Ravelin_Get ( \"Timestamp\" ) )", "Text", "Timestamp"},
        {"Ravelin_Get ( \"sort\" ; \"10¶2¶33\" )", "Text", "2\r10\r33\r"},
        {"Ravelin_Get ( \"SORT\" ; \"5¶x¶1\" )", "Text", "1\r5\r5\r"},
        {"Ravelin_Get ( \"sort\" ; \"3¶1¶\" )", "Text", "1\r1\r3\r"},
        {"Ravelin_Get ( \"sort\" ; 1234567 )", "Text", "1.23457e+06\r"},
        {"Ravelin_Get ( \"sort\" ; \"é¶2\" )", "Text", "0\r2\r"},  // read as Mac Roman
        {"Ravelin_Get", "Number", "-50", "-50 Not enough parameters"},
        {"Ravelin_Get ( \"sort\" )", "Number", "-50", "-50 Not enough parameters"},
        {"Ravelin_Get ( \" lastError\" )", "Number", "-50", "-50 Unrecognized selector"},
        {"Ravelin_Set ( \"timestamp\" ; 1 )", "Number", "-50", "-50 Unrecognized selector"},
        {"Ravelin_Set ( \"globalDieInterval\" ; 30 )", "Number", "30"},
        {"Ravelin_Set ( \"GLOBALDIEINTERVAL\" ; \"45\" )", "Text", "45"},
        {"Ravelin_DoSystemScript ( \"echo\" ; \"sh\" )", "Number", "-4",
         "-4 Not implemented in iOS."},
        {"Ravelin_GetPrinterNames", "Number", "-4", unsupported},
        {"Ravelin_SetDefaultPrinter ( \"Laser\" )", "Number", "-4", unsupported},
        {"Ravelin_SetScriptShortcut ( \"k\" ; \"Greet\" )", "Number", "-4", unsupported},
        {"Ravelin_GetSpecialWindows", "Number", "-4", unsupported},
        {"Ravelin_GetDefaultPrinter ( 1 ; 2 )", "Number", "-4", unsupported},
    };
    for (const auto& c : cases) {
        session_.eval(
            "Let ( [ $$Ravelin_LastError = 24001 ; $$Ravelin_LastErrorMessage = "
            "\"earlier\" ] ; \"\" )");
        const sim::EvalResult r = session_.eval(c.calculation);
        EXPECT_EQ(r.error, 0) << c.calculation;
        EXPECT_EQ(r.type, c.type) << c.calculation;
        EXPECT_EQ(r.text, c.text) << c.calculation;
        EXPECT_EQ(lastError(), c.lastError) << c.calculation;
    }
    // The setting itself lives in the plug-in's objects, also linked into the tests.
    info_test::call(Ravelin_Set, {text(u"globalDieInterval"), sim::Value::number(12.5)});
    EXPECT_EQ(rvl::gCleanPeriod.load(), 12.5);
}

TEST(SortNumberLines, ReadsRepeatsAndPrints) {
    const struct {
        const char* in;
        const char* out;
    } cases[] = {
        {"1\r2\r", "1\r2\r2\r"},  // a final return ends one more, empty, line
        {"x\r3", "0\r3\r"},       // a first line without a number counts as 0
        {"", "0\r"},              // one empty line
        {"\r\r", "0\r0\r0\r"},    // three
        {"2\n9\r1", "1\r2\r"},    // a line feed stays inside its line
        {"  4 apples\r-1.5e3", "-1500\r4\r"},
        {"0.1\r1e-7\r100000", "1e-07\r0.1\r100000\r"},
        {"nan\r1\r-inf", "-inf\r1\rnan\r"},  // NaN sorts last
    };
    for (const auto& c : cases) EXPECT_EQ(rvl::sortNumberLines(c.in), c.out) << c.in;
}

TEST_F(InfoFunctions, InlineDocumentationRegistersTheTableAgainEveryTime) {
    const struct {
        const char* value;
        const char* state;
    } cases[] = {{"\"OFF\"", "on"},  {"\"off\"", "off"}, {"\"\"", "on"},
                 {"\"off \"", "on"}, {"\"off\"", "off"}, {"\"off\"", "off"}};
    for (const auto& c : cases) {
        const std::string set =
            std::string("Ravelin_Set ( \"InlineDocumentation\" ; ") + c.value + " )";
        EXPECT_EQ(session_.eval(set).text, c.state) << c.value;
        EXPECT_EQ(session_.eval("Ravelin_Get ( \"inlineDocumentation\" )").text, c.state);
        EXPECT_EQ(session_.host().functions().size(), 24u) << c.value;
    }
    // A refusal is not reported: everything was unregistered first, and the roll-back takes
    // back ids 1 to 12 again.
    session_.host().refuseRegistration(13);
    EXPECT_EQ(session_.eval("Ravelin_Set ( \"inlineDocumentation\" ; 1 )").text, "on");
    EXPECT_TRUE(session_.host().functions().empty());
}

TEST_F(InfoFunctions, ValueTypeNamesEveryNativeType) {
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
        {sim::Value::binary(sim::Binary{{{{'J', 'P', 'E', 'G'}, "\xFF\xD8"}}}), "Container"},
        {sim::Value::boolean(true), "Boolean"},
    };
    for (const auto& c : cases) {
        const info_test::Answer a = callLoaded(session_, u"Ravelin_ValueType", {c.value});
        EXPECT_EQ(a.code, 0) << c.name;
        EXPECT_EQ(a.result.type(), sim::Type::Text) << c.name;
        EXPECT_EQ(sim::toUtf8(a.result.asText().units()), c.name);
    }
    // Reading the type fails, and so does writing the last error: the frame's own answer would
    // be 2400, but ValueType answers 0 all the same.
    sim::faults::failFunction("FM_Data_GetNativeType", 2);
    sim::faults::failFunction("FM_ExprEnv_Evaluate", 2);
    const info_test::Answer failed = callLoaded(session_, u"Ravelin_ValueType", {text(u"x")});
    EXPECT_EQ(failed.code, 0);
    EXPECT_EQ(sim::toUtf8(failed.result.asText().units()), "2400");
}

// Far from GMT, both ways of reading the clock still give the host's local time.
TEST_F(InfoFunctions, TimestampsAreLocalTime) {
    const char* saved = std::getenv("TZ");
    const std::string previous = saved ? saved : "";
    setenv("TZ", "RVL-5:30", 1);
    tzset();
    const info_test::Answer function = callLoaded(session_, u"Ravelin_GetTimestamp", {});
    const info_test::Answer selector = callLoaded(session_, u"Ravelin_Get", {text(u"timestamp")});
    const double expected = sim::localNow().seconds();
    saved ? setenv("TZ", previous.c_str(), 1) : unsetenv("TZ");
    tzset();
    for (const info_test::Answer& a : {function, selector}) {
        EXPECT_EQ(a.code, 0);
        ASSERT_EQ(a.result.type(), sim::Type::Timestamp);
        EXPECT_NEAR(a.result.asTimestamp().seconds(), expected, 2.0);
    }
}

}  // namespace

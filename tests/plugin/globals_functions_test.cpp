// Ravelin_SetGlobal and Ravelin_GetGlobal through the loaded plug-in, in two open files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "info_test_support.h"

namespace {

using info_test::callLoaded;
using info_test::text;

class GlobalFunctions : public ::testing::Test {
protected:
    std::string lastError() {
        return session_.eval("$$Ravelin_LastError & \" \" & $$Ravelin_LastErrorMessage", "F1").text;
    }

    sim::Session session_{info_test::withPlugin("F1", {"F2"})};
};

// Each step runs in the order given; successful calls never touch the last error.
TEST_F(GlobalFunctions, StoreReadRemoveAndClear) {
    const std::string bad = "-50 Unknown value of parameter moreOptions";
    const std::string unchanged = "24001 earlier";
    const struct {
        const char* file;
        const char* calculation;
        const char* type;  // "" for an empty result
        const char* text;
        std::string lastError;
    } steps[] = {
        {"F1", "Ravelin_SetGlobal ( \"Name\" ; 1 )", "Number", "1", unchanged},
        {"F1", "Ravelin_GetGlobal ( \"name\" )", "", "", unchanged},
        {"F1", "Ravelin_GetGlobal ( \"Name \" )", "", "", unchanged},
        {"F2", "Ravelin_SetGlobal ( \"Name\" ; \"two\" )", "Text", "two", unchanged},
        {"F1", "Ravelin_GetGlobal ( \"Name\" ; \"ignored\" )", "Text", "two", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"Zero\" ; 0 ; \"DieOnClose\" )", "Number", "0", unchanged},
        {"F2", "Ravelin_GetGlobal ( \"Zero\" )", "Number", "0", unchanged},
        {"F2", "Ravelin_SetGlobal ( \"Zero\" ; \"\" ; \"bogus\" )", "", "", unchanged},
        {"F1", "Ravelin_GetGlobal ( \"Zero\" )", "", "", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"Name\" ; \"\" )", "", "", unchanged},
        {"F1", "Ravelin_GetGlobal ( \"Name\" )", "", "", unchanged},
        {"F1", "Ravelin_GetGlobal ( \"\" )", "", "", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"k\" ; 1 ; \"\" )", "Number", "-50", bad},
        {"F1", "Ravelin_SetGlobal ( \"k\" ; 1 ; \" dieonclose\" )", "Number", "-50", bad},
        {"F1", "Ravelin_SetGlobal ( \"k\" ; 1 ; \"die\" )", "Number", "-50", bad},
        {"F1", "Ravelin_GetGlobal ( \"k\" )", "", "", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"a\" ; 1 ; \"dieonclose\" )", "Number", "1", unchanged},
        {"F2", "Ravelin_SetGlobal ( \"b\" ; 2 ; \"dieonclose\" )", "Number", "2", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"c\" ; 3 )", "Number", "3", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"price\" ; 52 * 1.25 + 0.01 )", "Number", "65.01", unchanged},
        {"F2", "Ravelin_GetGlobal ( \"price\" ) * 3", "Number", "195.03", unchanged},
        {"F1", "Ravelin_SetGlobal ( \"big\" ; 123456789012345678901234567890.0123456789 )",
         "Number", "123456789012345678901234567890.0123456789", unchanged},
        {"F2", "Ravelin_GetGlobal ( \"big\" ) + 1", "Number",
         "123456789012345678901234567891.0123456789", unchanged},
        {"F2", "Ravelin_SetGlobal ( \"\" ; \"x\" ; \"bogus\" )", "", "", unchanged},
        {"F1",
         "Ravelin_GetGlobal ( \"a\" ) & Ravelin_GetGlobal ( \"b\" ) & "
         "Ravelin_GetGlobal ( \"c\" )",
         "Text", "", unchanged},
    };
    for (const auto& s : steps) {
        session_.eval(
            "Let ( [ $$Ravelin_LastError = 24001 ; $$Ravelin_LastErrorMessage = "
            "\"earlier\" ] ; \"\" )",
            "F1");
        const sim::EvalResult r = session_.eval(s.calculation, s.file);
        EXPECT_EQ(r.error, 0) << s.file << ": " << s.calculation;
        EXPECT_EQ(r.type, s.type) << s.file << ": " << s.calculation;
        EXPECT_EQ(r.text, s.text) << s.file << ": " << s.calculation;
        EXPECT_EQ(lastError(), s.lastError) << s.file << ": " << s.calculation;
    }
}

TEST_F(GlobalFunctions, MissingArguments) {
    const struct {
        std::u16string function;
        std::vector<sim::Value> args;
        const char* lastError;
    } cases[] = {
        {u"Ravelin_SetGlobal", {}, "-50 Key and value must be specified"},
        {u"Ravelin_SetGlobal", {text(u"k")}, "-50 Key and value must be specified"},
        {u"Ravelin_GetGlobal", {}, "-50 Key must be specified"},
    };
    for (const auto& c : cases) {
        const info_test::Answer a = callLoaded(session_, c.function, c.args, u"F1");
        EXPECT_EQ(a.code, 0);
        EXPECT_EQ(a.result.asNumber().toDouble(), -50);
        EXPECT_EQ(lastError(), c.lastError);
    }
}

TEST_F(GlobalFunctions, EveryNativeTypeKeepsItsType) {
    const sim::Binary picture{
        {{{'P', 'N', 'G', 'f'}, std::string("\x89PNG\0\x01", 6)}, {{'F', 'N', 'A', 'M'}, "a.png"}}};
    const struct {
        sim::Value in;
        sim::Type stored;  // a boolean is kept as a number
    } cases[] = {
        {text(u"héllo ✓"), sim::Type::Text},
        {sim::Value::number(-2.5), sim::Type::Number},
        {sim::Value::date(sim::DateTime::fromYmd(2024, 1, 31)), sim::Type::Date},
        {sim::Value::time(sim::DateTime::fromSeconds(47100.25)), sim::Type::Time},
        {sim::Value::timestamp(sim::DateTime::fromSeconds(63842223300.5)), sim::Type::Timestamp},
        {sim::Value::binary(picture), sim::Type::Binary},
        {sim::Value::boolean(true), sim::Type::Number},
    };
    for (const auto& c : cases) {
        const int type = static_cast<int>(c.in.type());
        const info_test::Answer set =
            callLoaded(session_, u"Ravelin_SetGlobal", {text(u"v"), c.in}, u"F1");
        EXPECT_EQ(set.result.type(), c.stored) << type;
        const sim::Value got =
            callLoaded(session_, u"Ravelin_GetGlobal", {text(u"v")}, u"F2").result;
        ASSERT_EQ(got.type(), c.stored) << type;
        EXPECT_EQ(got.asText().units(), c.in.asText().units()) << type;
        EXPECT_EQ(got.asNumber().toDouble(), c.in.asNumber().toDouble()) << type;
        if (c.stored == sim::Type::Binary) {
            EXPECT_EQ(got.asBinary(), picture);
        }
    }
}

}  // namespace

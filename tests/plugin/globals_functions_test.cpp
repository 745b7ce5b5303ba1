// Ravelin_SetGlobal and Ravelin_GetGlobal through the loaded plug-in, in two open files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "info_test_support.h"
#include "sim/encoding.h"

namespace {

using info_test::callLoaded;
using info_test::text;

struct Step {
    const char* file;
    const char* calculation;
    const char* type;  // "" for an empty result
    const char* text;
};

class GlobalFunctions : public ::testing::Test {
protected:
    void SetUp() override { session_.eval("Ravelin_SetGlobal ( \"\" ; 1 )"); }

    void run(const std::vector<Step>& steps) {
        for (const Step& s : steps) {
            const sim::EvalResult r = session_.eval(s.calculation, s.file);
            EXPECT_EQ(r.error, 0) << s.file << ": " << s.calculation;
            EXPECT_EQ(r.type, s.type) << s.file << ": " << s.calculation;
            EXPECT_EQ(r.text, s.text) << s.file << ": " << s.calculation;
        }
    }
    std::string lastError(const char* file = "F1") {
        return session_.eval("$$Ravelin_LastError & \" \" & $$Ravelin_LastErrorMessage", file).text;
    }

    sim::Session session_{info_test::withPlugin("F1", {"F2"})};
};

TEST_F(GlobalFunctions, KeysAreExactAndValuesAreSharedByAllFiles) {
    run({
        {"F1", "Ravelin_SetGlobal ( \"Name\" ; 1 )", "Number", "1"},
        {"F1", "Ravelin_GetGlobal ( \"name\" )", "", ""},
        {"F1", "Ravelin_GetGlobal ( \"Name \" )", "", ""},
        {"F2", "Ravelin_GetGlobal ( \"Name\" )", "Number", "1"},
        {"F2", "Ravelin_SetGlobal ( \"Name\" ; \"two\" )", "Text", "two"},
        {"F1", "Ravelin_GetGlobal ( \"Name\" ; \"ignored\" )", "Text", "two"},
        {"F1", "Ravelin_SetGlobal ( \"Zero\" ; 0 ; \"DieOnClose\" )", "Number", "0"},
        {"F2", "Ravelin_GetGlobal ( \"Zero\" )", "Number", "0"},
    });
}

TEST_F(GlobalFunctions, EmptyTextRemovesBeforeTheOptionIsLookedAt) {
    session_.eval(
        "Let ( [ $$Ravelin_LastError = 24001 ; $$Ravelin_LastErrorMessage = \"earlier\" ] ; \"\" )",
        "F1");
    run({
        {"F1", "Ravelin_SetGlobal ( \"k\" ; 1 ; \"dieonclose\" )", "Number", "1"},
        {"F1", "Ravelin_SetGlobal ( \"k\" ; \"\" ; \"bogus\" )", "", ""},
        {"F1", "Ravelin_GetGlobal ( \"k\" )", "", ""},
        {"F1", "Ravelin_SetGlobal ( \"k\" ; 2 )", "Number", "2"},
        {"F1", "Ravelin_SetGlobal ( \"k\" ; \"\" )", "", ""},
        {"F1", "Ravelin_GetGlobal ( \"k\" )", "", ""},
        {"F1", "Ravelin_SetGlobal ( \"missing\" ; \"\" )", "", ""},
        {"F1", "Ravelin_GetGlobal ( \"\" )", "", ""},
    });
    EXPECT_EQ(lastError(), "24001 earlier");  // successful calls record nothing
}

TEST_F(GlobalFunctions, UnknownOptionsStoreNothing) {
    for (const char* option : {"\"\"", "\" dieonclose\"", "\"dieonclose \"", "\"die\"", "1"}) {
        const std::string set = std::string("Ravelin_SetGlobal ( \"k\" ; 1 ; ") + option + " )";
        run({{"F1", set.c_str(), "Number", "-50"}, {"F1", "Ravelin_GetGlobal ( \"k\" )", "", ""}});
        EXPECT_EQ(lastError(), "-50 Unknown value of parameter moreOptions") << option;
    }
}

TEST_F(GlobalFunctions, EmptyKeyEmptiesTheStoreOfEveryFile) {
    run({
        {"F1", "Ravelin_SetGlobal ( \"a\" ; 1 ; \"dieonclose\" )", "Number", "1"},
        {"F2", "Ravelin_SetGlobal ( \"b\" ; 2 ; \"dieonclose\" )", "Number", "2"},
        {"F1", "Ravelin_SetGlobal ( \"c\" ; 3 )", "Number", "3"},
        {"F2", "Ravelin_SetGlobal ( \"\" ; \"anything\" ; \"bogus\" )", "", ""},
        {"F1", "Ravelin_GetGlobal ( \"a\" )", "", ""},
        {"F1", "Ravelin_GetGlobal ( \"b\" )", "", ""},
        {"F2", "Ravelin_GetGlobal ( \"c\" )", "", ""},
    });
}

TEST_F(GlobalFunctions, MissingArguments) {
    const struct {
        std::u16string function;
        std::vector<sim::Value> args;
        const char* message;
    } cases[] = {
        {u"Ravelin_SetGlobal", {}, "Key and value must be specified"},
        {u"Ravelin_SetGlobal", {text(u"k")}, "Key and value must be specified"},
        {u"Ravelin_GetGlobal", {}, "Key must be specified"},
    };
    for (const auto& c : cases) {
        const info_test::Answer a = callLoaded(session_, c.function, c.args, u"F1");
        EXPECT_EQ(a.code, 0);
        EXPECT_EQ(a.result.type(), sim::Type::Number);
        EXPECT_EQ(a.result.asNumber().value, -50);
        EXPECT_EQ(lastError(), std::string("-50 ") + c.message);
    }
}

TEST_F(GlobalFunctions, EveryNativeTypeKeepsItsType) {
    sim::Binary picture;
    picture.streams.push_back({{'P', 'N', 'G', 'f'}, std::string("\x89PNG\0\x01", 6)});
    picture.streams.push_back({{'F', 'N', 'A', 'M'}, "a.png"});
    const sim::Value timestamp = sim::Value::timestamp(sim::DateTime::fromSeconds(63842223300.5));
    const struct {
        sim::Value in;
        sim::Type stored;  // a boolean is kept as a number
    } cases[] = {
        {text(u"héllo ✓"), sim::Type::Text},
        {sim::Value::number(-2.5), sim::Type::Number},
        {sim::Value::date(sim::DateTime::fromYmd(2024, 1, 31)), sim::Type::Date},
        {sim::Value::time(sim::DateTime::fromSeconds(47100)), sim::Type::Time},
        {timestamp, sim::Type::Timestamp},
        {sim::Value::binary(picture), sim::Type::Binary},
        {sim::Value::boolean(true), sim::Type::Number},
    };
    for (const auto& c : cases) {
        const info_test::Answer set =
            callLoaded(session_, u"Ravelin_SetGlobal", {text(u"v"), c.in}, u"F1");
        const info_test::Answer get =
            callLoaded(session_, u"Ravelin_GetGlobal", {text(u"v")}, u"F2");
        const int type = static_cast<int>(c.in.type());
        EXPECT_EQ(set.code, 0) << type;
        EXPECT_EQ(set.result.type(), c.stored) << type;
        ASSERT_EQ(get.result.type(), c.stored) << type;
        EXPECT_EQ(get.result.asText().units(), c.in.asText().units()) << type;
        if (c.stored == sim::Type::Binary) {
            EXPECT_EQ(get.result.asBinary(), picture);
        }
        if (c.stored == sim::Type::Timestamp) {
            EXPECT_EQ(get.result.asTimestamp(), timestamp.asTimestamp());
        }
    }
}

}  // namespace

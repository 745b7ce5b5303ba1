// Keys of the global store match unit for unit: no case folding, width folding or Unicode
// normalisation; short keys and long ones alike. And a key overwritten with values of changing
// types reads back the last one stored, with its type.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "info_test_support.h"

namespace {

using info_test::callLoaded;
using info_test::text;

class GlobalKeys : public ::testing::Test {
protected:
    sim::Value set(std::u16string key, sim::Value value) {
        return callLoaded(session_, u"Ravelin_SetGlobal", {text(std::move(key)), std::move(value)})
            .result;
    }
    sim::Value get(std::u16string key) {
        return callLoaded(session_, u"Ravelin_GetGlobal", {text(std::move(key))}).result;
    }
    void clear() { set(u"", text(u"x")); }

    sim::Session session_{info_test::withPlugin()};
};

TEST_F(GlobalKeys, MatchUnitForUnit) {
    const std::u16string k32(32, u'k');  // as long as a key can be without an allocation
    const std::u16string k33(33, u'k');
    const struct {
        const char* name;
        std::u16string stored;
        std::u16string read;
        bool found;
    } cases[] = {
        {"the same key", u"Name", u"Name", true},
        {"another case", u"Name", u"name", false},
        {"a dotless i", u"I", u"\u0131", false},
        {"full width", u"k", u"\uFF4B", false},
        {"composed and decomposed", u"\u00E9", u"e\u0301", false},
        {"a trailing blank", u"a", u"a ", false},
        {"a leading blank", u"a", u" a", false},
        {"a surrogate pair", u"\U0001F600", u"\U0001F600", true},
        {"an unpaired surrogate", std::u16string(1, u'\xD800'), std::u16string(1, u'\xD800'), true},
        {"an embedded zero", std::u16string(u"a\0b", 3), std::u16string(u"a\0b", 3), true},
        {"cut at an embedded zero", std::u16string(u"a\0b", 3), u"a", false},
        {"32 units", k32, k32, true},
        {"33 units", k33, k33, true},
        {"33 units read as 32", k33, k32, false},
        {"32 units read as 33", k32, k33, false},
        {"long keys differing in the last unit", std::u16string(100, u'x') + u"1",
         std::u16string(100, u'x') + u"2", false},
        {"a long key", std::u16string(1000, u'\u00E9'), std::u16string(1000, u'\u00E9'), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        clear();
        EXPECT_EQ(set(c.stored, sim::Value::number(7)).asText().units(), u"7");
        const sim::Value got = get(c.read);
        if (c.found) {
            EXPECT_EQ(got.type(), sim::Type::Number);
            EXPECT_EQ(got.asText().units(), u"7");
        } else {
            EXPECT_TRUE(got.isEmpty());
        }
    }
}

// One key stored over and over: each store replaces value and type; a value of no type
// leaves the stored one as it was (and answers nothing); empty text removes the key.
TEST_F(GlobalKeys, OverwritingChangesValueAndType) {
    const struct {
        sim::Value in;
        sim::Type readType;  // sim::Type::Invalid: the key is gone
        std::u16string readText;
    } steps[] = {
        {sim::Value::number(1.5), sim::Type::Number, u"1.5"},
        {text(u"one"), sim::Type::Text, u"one"},
        {sim::Value::date(sim::DateTime::fromYmd(2024, 2, 29)), sim::Type::Date, u"2/29/2024"},
        {sim::Value{}, sim::Type::Date, u"2/29/2024"},
        {sim::Value::number(0), sim::Type::Number, u"0"},
        {sim::Value::boolean(false), sim::Type::Number, u"0"},
        {sim::Value::time(sim::DateTime::fromSeconds(3600)), sim::Type::Time, u"1:00:00 AM"},
        {text(u""), sim::Type::Invalid, u""},
        {sim::Value{}, sim::Type::Invalid, u""},
        {text(u"again"), sim::Type::Text, u"again"},
    };
    clear();
    for (const auto& s : steps) {
        SCOPED_TRACE(static_cast<int>(s.in.type()));
        set(u"k", s.in);
        const sim::Value got = get(u"k");
        if (s.readType == sim::Type::Invalid) {
            EXPECT_TRUE(got.isEmpty());
        } else {
            EXPECT_EQ(got.type(), s.readType);
            EXPECT_EQ(got.asText().units(), s.readText);
        }
    }
}

}  // namespace

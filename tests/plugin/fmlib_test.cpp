// Conversions between host texts and values and the plug-in's strings, and the small utilities.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "fmlib/convert.h"
#include "fmlib/text_utils.h"
#include "plugin_test_support.h"
#include "sim/core/encoding.h"

namespace {

using plugin_test::HostTest;
using plugin_test::makeText;

class Fmlib : public HostTest {};

TEST_F(Fmlib, KeywordLookupIsWholeWordIgnoringCase) {
    const char* words[] = {"short", "long", "Platform"};
    const struct {
        std::u16string text;
        unsigned count;
        int index;
    } cases[] = {
        {u"Short", 3, 0},   {u"LONG", 3, 1}, {u"platform", 3, 2}, {u"shor", 3, -1},
        {u"short ", 3, -1}, {u"", 3, -1},    {u"long", 1, -1},    {u"short", 0, -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fmlib::FindFMTextInArray(*makeText(c.text), words, c.count), c.index)
            << sim::toUtf8(c.text) << " " << c.count;
    }
}

TEST_F(Fmlib, TextTests) {
    EXPECT_TRUE(isEmpty(*makeText(u"")));
    EXPECT_FALSE(isEmpty(*makeText(u" ")));
    EXPECT_TRUE(isAll(*makeText(u"all")));
    EXPECT_FALSE(isAll(*makeText(u"All ")));
    EXPECT_TRUE(isSpace(*makeText(u" ")));
    EXPECT_FALSE(isSpace(*makeText(u"  ")));
}

TEST(Explode, PieceRules) {
    using Pieces = std::vector<std::string>;
    const struct {
        std::string in;
        Pieces out;
        Pieces emptyLastKept;
    } cases[] = {
        {"a,,b,", {"a", "", "b"}, {"a", "", "b", ""}},
        {"", {}, {""}},
        {",", {""}, {"", ""}},
        {"a", {"a"}, {"a"}},
        {",a", {"", "a"}, {"", "a"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(explode(c.in, ','), c.out) << c.in;
        Pieces kept;
        fmlib::eachPiece(
            c.in, ',',
            [&](std::string_view piece) {
                kept.emplace_back(piece);
                return true;
            },
            fmlib::EmptyLastPiece::kKept);
        EXPECT_EQ(kept, c.emptyLastKept) << c.in;
    }
}

// The two rules for broken UTF-8 differ where the HTML route lets a form through; UTF-16 back
// to UTF-8 marks an unpaired surrogate.
TEST(Utf, BrokenInputRules) {
    using fmlib::BrokenUtf8;
    const struct {
        std::string utf8;
        std::u16string perSequence;
        std::u16string icu;
    } cases[] = {
        {"a\xC3\xA9\xF0\x9F\x98\x80", u"a\u00E9\U0001F600", u"a\u00E9\U0001F600"},
        {"\x80x", u"\uFFFDx", u"\uFFFDx"},
        {"\xE2\x82", u"\uFFFD", u"\uFFFD"},
        {"\xED\xA0\x80", std::u16string(1, char16_t{0xD800}), u"\uFFFD\uFFFD\uFFFD"},
        {"\xC0\xAF", u"/", u"\uFFFD\uFFFD"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fmlib::Utf16FromUtf8(c.utf8, BrokenUtf8::kPerSequence), c.perSequence) << c.utf8;
        EXPECT_EQ(fmlib::Utf16FromUtf8(c.utf8, BrokenUtf8::kIcu), c.icu) << c.utf8;
    }
    EXPECT_EQ(fmlib::Utf8FromUtf16(u"\u00E9\U0001F600"), "\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(fmlib::Utf8FromUtf16(std::u16string{u'a', char16_t{0xDC00}, u'b'}), "a?b");
}

TEST(ToLower, AsciiOnly) { EXPECT_EQ(toLower("AbC \xC3\x84"), "abc \xC3\x84"); }

TEST_F(Fmlib, Utf8IsCutAtTwoBytesPerUnit) {
    const std::u16string euros = u"\u20AC\u20AC\u20AC\u20AC";  // 3 UTF-8 bytes per unit
    const std::string whole = sim::toUtf8(euros);
    const std::string cut = fmlib::StringFromFmText(*makeText(euros));
    EXPECT_LT(cut.size(), 2 * euros.size());
    EXPECT_EQ(whole.compare(0, cut.size(), cut), 0) << "a prefix of the whole text";
    const struct {
        std::u16string text;
        std::string utf8;
    } whole_cases[] = {{u"", ""},
                       {u"abc", "abc"},
                       {u"\u00E9t\u00E9", "\xC3\xA9t\xC3\xA9"},
                       {u"\u00E9", "\xC3\xA9"},  // exactly two bytes per unit
                       {u"a\u20AC", "a\xE2\x82\xAC"}};
    for (const auto& c : whole_cases) {
        EXPECT_EQ(fmlib::StringFromFmText(*makeText(c.text)), c.utf8);
        EXPECT_EQ(StringFromFmText(makeText(c.text)), c.utf8);
    }
}

// A 1024-byte buffer holds 1023 bytes and the terminator. The substitute host writes whole
// characters only, so one that straddles the cut is left out whole.
TEST_F(Fmlib, NativeBytesAreCutAtTheBuffer) {
    const std::u16string a1022(1022, u'a');
    const struct {
        std::u16string text;
        std::string bytes;
    } cases[] = {
        {u"", ""},
        {u"h\u00E9", "h\xC3\xA9"},
        {std::u16string(1023, u'x'), std::string(1023, 'x')},
        {std::u16string(1024, u'x'), std::string(1023, 'x')},
        {std::u16string(2000, u'x'), std::string(1023, 'x')},
        {a1022 + u"\u00E9", std::string(1022, 'a')},
        {a1022 + u"\u20AC", std::string(1022, 'a')},
        {std::u16string(u"ab\0cd", 5), "ab"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fmlib::NativeBytesCut(*makeText(c.text), 1024), c.bytes) << c.text.size();
    }
    EXPECT_EQ(fmlib::NativeBytesCut(*makeText(u"abc"), 1), "");
    EXPECT_EQ(fmlib::NativeBytesCut(*makeText(u"abc"), 0), "");
}

TEST_F(Fmlib, WideAndUtf16Strings) {
    const std::u16string emoji = u"a\U0001F600";
    EXPECT_EQ(fmlib::WStringFromFMText(*makeText(emoji)), (std::wstring{L'a', 0xD83D, 0xDE00}));
    EXPECT_EQ(fmlib::WStringFromFMText(*makeText(std::u16string(u"ab\0c", 4))), L"ab");
    EXPECT_EQ(rvl::FStringFromText(*makeText(std::u16string(u"ab\0c", 4))).size(), 4u);
    fmx::DataUniquePtr number;
    sim::setValue(*number, sim::Value::number(12.5));
    EXPECT_EQ(rvl::FStringFromData(*number), u"12.5");
}

TEST_F(Fmlib, ValuesAreCopiedByType) {
    sim::Value text = sim::Value::text(u"x");
    text.setLocale(fmx::kLocale_ENG);
    const sim::Value sources[] = {
        text,
        sim::Value::number(3.25),
        sim::Value::date(sim::DateTime::fromYmd(2024, 1, 31)),
        sim::Value::time(sim::DateTime::fromSeconds(3600)),
        sim::Value::timestamp(sim::DateTime::fromSeconds(1e10)),
        sim::Value::binary({{{{'F', 'I', 'L', 'E'}, "bytes"}}}),
    };
    for (const sim::Value& source : sources) {
        fmx::DataUniquePtr from, to;
        sim::setValue(*from, source);
        fmlib::FMData2FMData(*from, *to);
        EXPECT_EQ(sim::valueOf(*to).type(), source.type());
        EXPECT_EQ(sim::valueOf(*to).asText().units(), source.asText().units());
        EXPECT_EQ(sim::valueOf(*to).locale(), source.locale());
    }

    fmx::DataUniquePtr boolean, to;
    sim::setValue(*boolean, sim::Value::boolean(true));
    fmlib::FMData2FMData(*boolean, *to);
    EXPECT_EQ(sim::valueOf(*to).type(), sim::Type::Number);
    EXPECT_EQ(sim::valueOf(*to).asNumber().toDouble(), 1);

    fmx::DataUniquePtr invalid;
    sim::setValue(*to, sim::Value::text(u"kept"));
    fmlib::FMData2FMData(*invalid, *to);
    EXPECT_EQ(sim::valueOf(*to).asText().units(), u"kept");
}

TEST_F(Fmlib, HostTextsFromStringsAndTheFileName) {
    fmx::TextUniquePtr target = makeText(u"old text");
    fmlib::copyToFMText("new", *target);
    EXPECT_EQ(plugin_test::unitsOf(*target), u"new");
    fmlib::FillFMTextWithCurrentDatabaseFileName(*target, env());
    EXPECT_EQ(plugin_test::unitsOf(*target), u"Demo");
}

TEST_F(Fmlib, ErrorCodesAsNumbers) {
    fmx::DataUniquePtr value;
    fmlib::FMErrCode2FMData(-50, *value);
    EXPECT_EQ(sim::valueOf(*value).type(), sim::Type::Number);
    EXPECT_EQ(sim::valueOf(*value).asNumber().toDouble(), -50);
    storeErrorCode(100000, *value);
    EXPECT_EQ(sim::valueOf(*value).asNumber().toDouble(), 100000);
}

}  // namespace

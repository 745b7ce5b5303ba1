// The host's styled text, its encodings, case mapping and search.
#include "sim/core/text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "sim/core/encoding.h"

namespace sim {
namespace {

constexpr uint32_t kNone = UINT32_MAX;

struct EncodingCase {
    int32_t encoding;
    std::string bytes;
    std::u16string units;
};

TEST(Encoding, DecodesAndEncodesBack) {
    const EncodingCase cases[] = {
        {0, "caf\xC3\xA9", u"café"}, {1, "\xF0\x9F\x98\x80!", u"\U0001F600!"},
        {42, "\xE2\x82\xAC", u"€"},  // unknown codes are native
        {4, "\x8E\xDB\xA5", u"é€•"}, {3, "\x80\xE9\x93", u"€é“"},
        {2, "\x82\x9C\xB0", u"é£░"}, {5, "\xE9\xFF", u"éÿ"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.encoding);
        EXPECT_EQ(decode(c.bytes, c.encoding), c.units);
        EXPECT_EQ(encode(c.units, c.encoding), c.bytes);
    }
}

TEST(Encoding, MarksWhatCannotBeRepresented) {
    EXPECT_EQ(encode(u"a€\U0001F600b", 5), "a??b");  // one mark for a surrogate pair
    EXPECT_EQ(encode(u"\U0001F600", 4), "?");
    EXPECT_EQ(toUtf8(std::u16string(1, u'\xD800') + u"x"), "\xEF\xBF\xBDx");
    EXPECT_EQ(fromUtf8("a\xC3(\xFF"), u"a\uFFFD(\uFFFD");
    EXPECT_EQ(fromUtf8("\xED\xA0\x80"), u"\uFFFD");  // an encoded surrogate is malformed
}

// The position where the character holding byte `k` of UTF-8 `bytes` starts.
size_t characterStart(const std::string& bytes, size_t k) {
    while (k > 0 && k < bytes.size() && (static_cast<unsigned char>(bytes[k]) & 0xC0) == 0x80) --k;
    return k;
}

// Conversions work on ASCII runs and blocks of text: characters on either side of a run or block
// boundary, and a lone surrogate there, must come out as they do one at a time, and a buffer too
// small takes whole characters only.
TEST(Encoding, RunsOfAsciiAroundOtherCharacters) {
    std::vector<size_t> lengths(41);
    for (size_t n = 0; n < lengths.size(); ++n) lengths[n] = n;
    lengths.insert(lengths.end(), {4093, 4094, 4095, 4096, 4097});
    for (const size_t before : lengths) {
        for (const std::u16string other : {u"\u00e9", u"\u20ac", u"\U0001F600", u"\xD800"}) {
            const std::u16string units = std::u16string(before, u'a') + other + u"bcdefghij";
            SCOPED_TRACE(before);
            const std::string bytes = toUtf8(units);
            EXPECT_EQ(bytes.size(), encodedSize(units, 0));
            const std::u16string back =
                other == u"\xD800" ? std::u16string(before, u'a') + u"\uFFFD" + u"bcdefghij"
                                   : units;
            EXPECT_EQ(fromUtf8(bytes), back);
            std::vector<size_t> rooms = {bytes.size(), 3 * units.size() + 1};
            for (size_t room = before > 4 ? before - 4 : 0; room <= before + 5; ++room) {
                rooms.push_back(room);
            }
            for (const size_t room : rooms) {
                std::string out(room, '\0');
                EXPECT_EQ(encodeInto(units, 0, out.data(), room),
                          characterStart(bytes, std::min(room, bytes.size())))
                    << room;
            }
        }
    }
}

// Malformed and edge sequences decode the same wherever a block puts them: after any run of ASCII,
// as they do alone.
TEST(Encoding, MalformedBytesAtEveryBlockPosition) {
    const std::string odd[] = {"\xC1\xBF",
                               "\xC2",
                               "\xC2"
                               "A",
                               "\xDF\xBF",
                               "\xE2\x82",
                               "\x80",
                               "\xFF",
                               "\xC3\xA9\xC3",
                               "\xC3\xA9\xE2\x82\xAC"};
    for (const std::string& bytes : odd) {
        const std::u16string alone = fromUtf8(bytes);
        for (size_t before = 0; before <= 40; ++before) {
            SCOPED_TRACE(before);
            EXPECT_EQ(fromUtf8(std::string(before, 'a') + bytes),
                      std::u16string(before, u'a') + alone);
            EXPECT_EQ(fromUtf8(std::string(before, 'a') + bytes + "bcdefghij"),
                      std::u16string(before, u'a') + alone + u"bcdefghij");
        }
    }
    EXPECT_EQ(fromUtf8("\xC1\xBF"), u"\uFFFD\uFFFD");  // overlong
}

CharStyle bold() {
    CharStyle s;
    s.face = s.faceMask = 0x0100;
    return s;
}

CharStyle red() {
    CharStyle s;
    s.color = Rgb{255, 0, 0, 255};
    s.colorOn = true;
    return s;
}

// The text as "unit:style-letter" runs, for compact expectations: P plain, B bold, R red.
std::string runs(const Text& t) {
    std::string out;
    uint32_t pos = 0;
    while (pos < t.size()) {
        const CharStyle s = t.styleAt(pos);
        const char tag = s == bold() ? 'B' : s == red() ? 'R' : s.allDisabled() ? 'P' : '?';
        const uint32_t end = t.runEnd(pos);
        out += std::to_string(end - pos) + tag;
        pos = end;
    }
    return out;
}

TEST(Text, StylesTravelWithSlices) {
    Text hello(u"Hello World");
    hello.setStyle(bold(), 6, 5);
    ASSERT_EQ(runs(hello), "6P5B");

    struct Case {
        const char* what;
        Text result;
        const char* runs;
    };
    Text slice;
    slice.setSlice(hello, 4, 4);
    Text appended(u"x");
    appended.append(hello, 5, UINT32_MAX);
    appended.append(u"!!");
    Text inserted(u"ab");
    inserted.insert(hello, 1);
    Text erased(hello);
    erased.erase(3, 5);
    Text selfAppend(hello);
    selfAppend.append(selfAppend, 6, 3);
    const Case cases[] = {
        {"slice", slice, "2P2B"},
        {"append", appended, "2P5B2P"},
        {"insert", inserted, "7P5B1P"},
        {"erase", erased, "3P3B"},
        {"self append", selfAppend, "6P8B"},
    };
    for (const auto& c : cases) EXPECT_EQ(runs(c.result), c.runs) << c.what;
}

// Random edits against a model holding one style per unit: every position keeps the right
// style, and runs stay merged (a run ends where the style really changes).
TEST(Text, StyleRunsMatchAPerUnitModel) {
    std::mt19937 rng(12345);
    auto pick = [&](uint32_t n) { return n == 0 ? 0u : static_cast<uint32_t>(rng() % n); };
    const CharStyle palette[] = {CharStyle{}, bold(), red()};
    Text t(u"0123456789");
    std::vector<CharStyle> model(10);
    for (int step = 0; step < 3000; ++step) {
        const uint32_t n = t.size();
        const uint32_t pos = pick(n + 1), len = pick(n + 1 - pos + 3);
        const CharStyle& s = palette[pick(3)];
        const uint32_t end = std::min(n, pos + len);
        switch (pick(5)) {
            case 0:
                t.setStyle(s, pos, len);
                std::fill(model.begin() + pos, model.begin() + end, s);
                break;
            case 1: {
                Text piece(std::u16string(len % 7 + 1, u'x'));
                piece.setStyle(s, 0, 1);
                t.insert(piece, pos);
                std::vector<CharStyle> added(piece.size());
                added[0] = s;
                model.insert(model.begin() + pos, added.begin(), added.end());
                break;
            }
            case 2:
                t.erase(pos, len);
                model.erase(model.begin() + pos, model.begin() + end);
                break;
            case 3: {
                const Text copy(t);
                t.append(copy, pos, len);
                std::vector<CharStyle> tail(model.begin() + pos, model.begin() + end);
                model.insert(model.end(), tail.begin(), tail.end());
                break;
            }
            default:
                if (n > 200) {
                    const Text copy(t);
                    t.setSlice(copy, pos, len);
                    model.assign(model.begin() + pos, model.begin() + end);
                }
        }
        ASSERT_EQ(t.size(), model.size()) << step;
        for (uint32_t i = 0; i < t.size(); i = t.runEnd(i)) {
            const uint32_t runEnd = t.runEnd(i);
            ASSERT_GT(runEnd, i);
            for (uint32_t k = i; k < runEnd; ++k) ASSERT_EQ(t.styleAt(k), model[k]) << step;
            if (runEnd < t.size()) {
                ASSERT_FALSE(model[runEnd] == model[i]) << step;
            }
        }
    }
}

// styleAt and runEnd at the first and last unit of every run and past the end, asked in order,
// backwards and by jumps, so that both the remembered run and the search answer.
TEST(Text, FindsRunsAtTheirEdges) {
    const std::vector<std::vector<uint32_t>> layouts = {
        {1},
        {4},
        {1, 1, 1},
        {1, 5, 1},
        {3, 1},
        {1, 3},
        {2, 1, 1, 2, 1, 1, 1, 7},
        std::vector<uint32_t>(300, 1),
        {1, 1000, 1, 2, 500, 1},
    };
    for (const auto& lengths : layouts) {
        SCOPED_TRACE(testing::PrintToString(lengths));
        std::u16string units;
        std::vector<CharStyle> model;
        std::vector<uint32_t> firsts;
        Text t;
        for (size_t r = 0; r < lengths.size(); ++r) {
            firsts.push_back(static_cast<uint32_t>(units.size()));
            units.append(lengths[r], u'x');
            CharStyle s;
            s.size = static_cast<uint16_t>(10 + r);  // every run differs from its neighbours
            s.sizeOn = true;
            model.insert(model.end(), lengths[r], s);
        }
        t.assign(units);
        for (size_t r = 0; r < lengths.size(); ++r)
            t.setStyle(model[firsts[r]], firsts[r], lengths[r]);
        auto runEndOf = [&](uint32_t pos) {
            uint32_t end = pos;
            while (end < model.size() && model[end] == model[pos]) ++end;
            return end;
        };
        std::vector<uint32_t> probes;
        for (size_t r = 0; r < lengths.size(); ++r) {
            probes.push_back(firsts[r]);
            probes.push_back(firsts[r] + lengths[r] - 1);
        }
        std::vector<uint32_t> order = probes;
        order.insert(order.end(), probes.rbegin(), probes.rend());
        for (size_t i = 0; i < probes.size(); i += 7)
            order.push_back(probes[(i * 13) % probes.size()]);
        const Text copy(t);  // a copy answers the same, whatever the original was asked last
        for (const Text* text : {static_cast<const Text*>(&t), &copy}) {
            for (const uint32_t pos : order) {
                ASSERT_EQ(text->styleAt(pos), model[pos]) << pos;
                ASSERT_EQ(text->runEnd(pos), runEndOf(pos)) << pos;
            }
            EXPECT_EQ(text->styleAt(text->size()), model.back());
            EXPECT_EQ(text->styleAt(UINT32_MAX), model.back());
            EXPECT_EQ(text->runEnd(text->size()), text->size());
        }
    }
    EXPECT_TRUE(Text().styleAt(0).allDisabled());
    EXPECT_TRUE(Text(u"plain").styleAt(3).allDisabled());
    EXPECT_EQ(Text(u"plain").runEnd(1), 5u);
}

TEST(Text, MergeAndRemoveStyles) {
    Text t(u"abcdef");
    t.setStyle(bold(), 0, 4);
    t.mergeStyle(red(), 2, 4);
    EXPECT_EQ(t.styleAt(0), bold());
    const CharStyle both = t.styleAt(2);
    EXPECT_TRUE(both.colorOn);
    EXPECT_EQ(both.faceMask, 0x0100);
    EXPECT_EQ(t.styleAt(5), red());
    EXPECT_EQ(t.styleAt(99), red());  // past the end: the last style

    t.removeStyle(bold());
    EXPECT_EQ(runs(t), "2P4R");
    t.resetStyles();
    EXPECT_FALSE(t.hasStyles());
    EXPECT_EQ(runs(t), "6P");
}

TEST(Text, AssignDropsStylesAndAlignment) {
    Text t(u"one\rtwo\rthree");
    t.setStyle(red(), 0, 3);
    t.setAlignment(Alignment::Center, 5, 1);
    EXPECT_EQ(t.alignmentAt(0), Alignment::None);
    EXPECT_EQ(t.alignmentAt(4), Alignment::Center);
    EXPECT_EQ(t.alignmentAt(7), Alignment::Center);
    EXPECT_EQ(t.alignmentAt(9), Alignment::None);
    Text tail;
    tail.setSlice(t, 4, UINT32_MAX);
    EXPECT_EQ(tail.alignmentAt(0), Alignment::Center);
    t.assign(u"plain");
    EXPECT_FALSE(t.hasStyles());
    EXPECT_EQ(t.alignmentAt(0), Alignment::None);
}

TEST(Text, ClampsPositions) {
    Text t(u"abc");
    t.erase(2, UINT32_MAX);
    t.erase(10, 1);
    EXPECT_EQ(t.units(), u"ab");
    t.insert(Text(u"Z"), 99);
    EXPECT_EQ(t.units(), u"abZ");
    Text s;
    s.setSlice(t, 7, 2);
    EXPECT_TRUE(s.empty());
}

// Long texts share their units between copies: a change to one copy must never show in another,
// whichever side changes, and a text may append a view of its own units.
TEST(Text, CopiesOfLongTextsChangeIndependently) {
    const std::u16string longUnits(5000, u'x');
    using Change = void (*)(Text&);
    const std::pair<const char*, Change> changes[] = {
        {"append", [](Text& t) { t.append(u"!"); }},
        {"append text", [](Text& t) { t.append(Text(u"!")); }},
        {"insert", [](Text& t) { t.insert(Text(u"!"), 0); }},
        {"erase", [](Text& t) { t.erase(0, 4990); }},
        {"assign", [](Text& t) { t.assign(u"!"); }},
        {"self append", [](Text& t) { t.append(t.units().substr(0, 10)); }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        Text original{std::u16string(longUnits)};
        Text copy = original;
        change(copy);
        EXPECT_EQ(original.units(), longUnits);
        Text changedFirst = copy;
        Text second = changedFirst;
        change(changedFirst);
        EXPECT_EQ(second.units(), copy.units());
    }
    Text small(u"abc");
    small.append(small.units());  // a view of the text's own short units
    EXPECT_EQ(small.units(), u"abcabc");
    Text grown{std::u16string(4095, u'y')};
    grown.append(grown.units().substr(0, 2));  // crosses into sharing with a view of itself
    EXPECT_EQ(grown.units(), std::u16string(4097, u'y'));
}

// Texts made together share one block: each sees its own part, empty ones included, keeps it
// after the block's maker is gone, and changes alone.
TEST(Text, TextsOfOneBlockKeepTheirPartsAndChangeAlone) {
    const std::u16string units = u"abcdé😀fg";
    const std::size_t ends[] = {3, 3, 8, 9};  // "abc", "", "dé😀f", "g"
    std::vector<Text> texts(std::size(ends));
    {
        const UnitsBlock block(units, ends);
        ASSERT_EQ(block.size(), std::size(ends));
        for (std::size_t i = 0; i < block.size(); ++i) texts[i].assign(block.at(i));
    }
    const std::u16string_view expected[] = {u"abc", u"", u"dé😀f", u"g"};
    for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(texts[i].units(), expected[i]);
    Text copy = texts[2];
    copy.append(u"!");
    texts[0].erase(0, 1);
    EXPECT_EQ(copy.units(), u"dé😀f!");
    EXPECT_EQ(texts[0].units(), u"bc");
    EXPECT_EQ(texts[2].units(), u"dé😀f");
    EXPECT_EQ(texts[3].units(), u"g");
}

TEST(Text, CaseMappingKeepsLengthAndPairs) {
    EXPECT_EQ(toLower(u"ÄÖÜ Straße İ"), u"äöü straße i");
    EXPECT_EQ(toUpper(u"straße ǆ"), u"STRAßE Ǆ");
    EXPECT_EQ(toLower(u"\U00010400x\U0001F600"), u"\U00010428x\U0001F600");
    const std::u16string lone(1, u'\xDC00');
    EXPECT_EQ(toUpper(lone), lone);
}

TEST(Text, Find) {
    struct Case {
        std::u16string hay, needle;
        uint32_t from, exact, ignoringCase;
    };
    const Case cases[] = {
        {u"Hello World", u"o", 0, 4, 4},
        {u"Hello World", u"o", 5, 7, 7},
        {u"Hello World", u"WORLD", 0, kNone, 6},
        {u"Hello", u"x", 0, kNone, kNone},
        {u"Hello", u"", 2, 2, 2},
        {u"Hello", u"", 5, kNone, kNone},
        {u"Hello", u"lo", 9, kNone, kNone},
        {u"ÄPFEL äpfel", u"äpfel", 1, 6, 6},
        {u"a\U0001F600b", u"b", 0, 3, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(toUtf8(c.hay) + " / " + toUtf8(c.needle));
        EXPECT_EQ(sim::find(c.hay, c.needle, c.from), c.exact);
        EXPECT_EQ(findIgnoringCase(c.hay, c.needle, c.from), c.ignoringCase);
    }
    EXPECT_EQ(findPrev(u"abcabc", u"abc", 5), 3u);
    EXPECT_EQ(findPrev(u"abcabc", u"abc", 2), 0u);
    EXPECT_EQ(findPrevIgnoringCase(u"abcABC", u"abc", 99), 3u);
}

TEST(Text, FindIgnoringCaseAcrossChunks) {
    std::u16string hay(10000, u'x');
    hay += u"NeedLE";
    EXPECT_EQ(findIgnoringCase(hay, u"needle", 3), 10000u);
    hay.insert(4095, u"NEEDLE");
    EXPECT_EQ(findIgnoringCase(hay, u"needle", 0), 4095u);
}

}  // namespace
}  // namespace sim

// Numbers, dates and values: text forms, parsing and conversions between types.
#include "sim/core/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "sim/core/encoding.h"

namespace sim {
namespace {

std::string utf8(std::u16string_view s) { return toUtf8(s); }

Number decimalOf(const char* text) { return parseDecimal(text).value(); }

TEST(Number, TextForm) {
    struct Case {
        Number n;
        const char* text;
    };
    Number twoThirds = decimalOf("0.6666666666666667");
    twoThirds.precision = 2;
    const Case cases[] = {
        {decimalOf("1e20"), "100000000000000000000"},
        {decimalOf("-0.5"), "-0.5"},
        {decimalOf(".5"), "0.5"},
        {decimalOf("-0"), "0"},
        {decimalOf("-42.000"), "-42"},
        {decimalOf("1e-7"), "0.0000001"},
        {decimalOf("123456789012345678"), "123456789012345678"},
        {decimalOf("1.5e-30"), "0.0000000000000000000000000000015"},
        {Number::fromDouble(0.1 + 0.2), "0.30000000000000004"},
        {Number::fromScaled(-1500, -3), "-1.5"},
        {twoThirds, "0.67"},
        {Number::none(), ""},
    };
    for (const auto& c : cases) EXPECT_EQ(utf8(formatNumber(c.n)), c.text);
}

TEST(Number, ParsesTheWayGetAsNumberDoes) {
    struct Case {
        std::u16string text;
        double value;
        bool empty;
    };
    const Case cases[] = {
        {u"FY20", 20, false},    {u"$1,254.50", 1254.5, false},
        {u"2 - 2", 22, false},   {u"-22", -22, false},
        {u"(22)", -22, false},   {u".(22)", 0.22, false},
        {u"1e3", 13, false},     {u"007.500", 7.5, false},
        {u"1.2.3", 1.23, false}, {u"No Error Message", 0, true},
        {u"", 0, true},          {u"-", 0, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        const Number n = parseNumber(c.text);
        EXPECT_EQ(n.empty, c.empty);
        EXPECT_DOUBLE_EQ(n.toDouble(), c.value);
    }
}

TEST(DateTime, DayNumbersAndSeconds) {
    EXPECT_EQ(DateTime::fromYmd(2019, 10, 10).days(), 737342);
    EXPECT_EQ(DateTime::fromYmd(1, 1, 1).days(), 1);
    EXPECT_DOUBLE_EQ(DateTime::fromYmd(1970, 1, 1).seconds(), 62135596800.0);
    EXPECT_EQ(DateTime::fromYmd(2024, 13, 1), DateTime::fromYmd(2025, 1, 1));
    EXPECT_EQ(DateTime::fromYmd(2024, 3, 0), DateTime::fromYmd(2024, 2, 29));
    EXPECT_EQ(DateTime::fromSeconds(62135596800.1).usec % 1'000'000, 100'000);
    int y, m, d;
    DateTime::fromDays(737342).ymd(y, m, d);
    EXPECT_EQ(y * 10000 + m * 100 + d, 20191010);
}

TEST(DateTime, TextForms) {
    const int64_t s = 1'000'000;
    const DateTime jan31 = DateTime::fromYmd(2024, 1, 31);
    struct Case {
        std::u16string text;
        const char* expected;
    };
    const Case cases[] = {
        {formatDate(jan31), "1/31/2024"},
        {formatDate(DateTime::fromDays(1)), "1/1/0001"},
        {formatTime(DateTime{(13 * 3600 + 5 * 60) * s}), "1:05:00 PM"},
        {formatTime(DateTime{0}), "12:00:00 AM"},
        {formatTime(DateTime{(12 * 3600 + 30 * 60) * s}), "12:30:00 PM"},
        {formatTime(DateTime{(13 * 3600 + 5 * 60) * s + s / 2}), "1:05:00.5 PM"},
        {formatTime(DateTime{25 * 3600 * s}), "25:00:00"},
        {formatTimestamp(DateTime{jan31.usec + (13 * 3600 + 5 * 60) * s}), "1/31/2024 1:05:00 PM"},
        {formatTimestamp(DateTime::fromSeconds(50000)), "1/1/0001 1:53:20 PM"},
        {formatTime(DateTime{-(3600 * s + s / 4)}), "-1:00:00.25"},
        {formatSqlDate(jan31), "2024-01-31"},
        {formatSqlDate(DateTime::fromDays(1)), "0001-01-01"},
        {formatSqlTime(DateTime{(8 * 3600 + 5) * s + 1}), "08:00:05.000001"},
        {formatSqlTime(DateTime{123 * 3600 * s}), "123:00:00"},
        {formatSqlTime(DateTime{-(90 * s)}), "-00:01:30"},
        {formatSqlTimestamp(DateTime{jan31.usec + 13 * 3600 * s + s / 2}), "2024-01-31 13:00:00.5"},
        {formatSqlTimestamp(DateTime{-s}), "0000-12-31 23:59:59"},
    };
    for (const auto& c : cases) EXPECT_EQ(utf8(c.text), c.expected);
}

TEST(DateTime, Parsing) {
    const int64_t s = 1'000'000;
    const DateTime jan31 = DateTime::fromYmd(2024, 1, 31);
    EXPECT_EQ(parseDate(u"1/31/2024"), jan31);
    EXPECT_EQ(parseDate(u" 2024-01-31 "), jan31);
    EXPECT_EQ(parseDate(u"2/30/2024"), std::nullopt);
    EXPECT_EQ(parseDate(u"abc"), std::nullopt);
    EXPECT_EQ(parseDate(u"1/31/2024 1:00 PM"), std::nullopt);

    EXPECT_EQ(parseTime(u"13:05:00"), DateTime{(13 * 3600 + 5 * 60) * s});
    EXPECT_EQ(parseTime(u"1:05 pm"), DateTime{(13 * 3600 + 5 * 60) * s});
    EXPECT_EQ(parseTime(u"12:00:00 AM"), DateTime{0});
    EXPECT_EQ(parseTime(u"1:05:00.25 PM"), DateTime{(13 * 3600 + 5 * 60) * s + s / 4});
    EXPECT_EQ(parseTime(u"13:05 PM"), std::nullopt);
    EXPECT_EQ(parseTime(u"1:75"), std::nullopt);

    const DateTime at = DateTime{jan31.usec + (13 * 3600 + 5 * 60) * s};
    EXPECT_EQ(parseTimestamp(u"1/31/2024 1:05:00 PM"), at);
    EXPECT_EQ(parseTimestamp(u"2024-01-31 13:05:00"), at);
    EXPECT_EQ(parseTimestamp(u"2024-01-31T13:05:00"), at);
    EXPECT_EQ(parseTimestamp(u"1/31/2024"), jan31);
    EXPECT_EQ(parseTimestamp(u"1/31/2024 25:00:00"), std::nullopt);
}

TEST(Value, Conversions) {
    const Value date = Value::date(DateTime::fromYmd(2019, 10, 10));
    const Value stamp = Value::timestamp(DateTime::fromYmd(1970, 1, 1));
    EXPECT_EQ(date.asNumber().toDouble(), 737342);
    EXPECT_EQ(utf8(date.asText().units()), "10/10/2019");
    EXPECT_EQ(stamp.asNumber().toDouble(), 62135596800.0);
    EXPECT_EQ(utf8(Value::number(737342).as(Type::Date).asText().units()), "10/10/2019");
    EXPECT_EQ(utf8(Value::number(50000).as(Type::Timestamp).asText().units()),
              "1/1/0001 1:53:20 PM");
    EXPECT_EQ(utf8(Value::text(u"1/31/2024 1:05:00 PM").as(Type::Time).asText().units()),
              "1:05:00 PM");
    EXPECT_EQ(Value::text(u"FY20").asNumber().toDouble(), 20);
    EXPECT_EQ(utf8(Value::boolean(true).asText().units()), "1");
    EXPECT_TRUE(Value::text(u"0.5").asBoolean());
    EXPECT_FALSE(Value::text(u"abc").asBoolean());
}

// A carried text form stands for the value's text until the SQL mark, which the form depends on,
// changes.
TEST(Value, CarriedTextFormFollowsTheSqlMark) {
    Value v = Value::date(DateTime::fromYmd(2024, 1, 31));
    v.setSqlTextForm(true);
    EXPECT_EQ(utf8(v.textForm().units()), "2024-01-31");
    Value copy = v;
    EXPECT_EQ(utf8(copy.asText().units()), "2024-01-31");
    copy.setSqlTextForm(false);
    EXPECT_EQ(utf8(copy.asText().units()), "1/31/2024");
    EXPECT_EQ(utf8(copy.textForm().units()), "1/31/2024");
    EXPECT_EQ(utf8(v.asText().units()), "2024-01-31");
}

TEST(Value, EmptyValues) {
    const Value noDate = Value::text(u"no date").as(Type::Date);
    EXPECT_EQ(noDate.type(), Type::Date);
    EXPECT_TRUE(noDate.isEmpty());
    EXPECT_TRUE(noDate.asText().empty());
    EXPECT_TRUE(noDate.asNumber().empty);

    const Value noNumber = Value::text(u"No Error Message").as(Type::Number);
    EXPECT_TRUE(noNumber.isEmpty());
    EXPECT_EQ(utf8(noNumber.asText().units()), "");

    EXPECT_TRUE(Value().isEmpty());
    EXPECT_TRUE(Value::text(u"").isEmpty());
    EXPECT_FALSE(Value::number(0).isEmpty());
    EXPECT_TRUE(Value::binary({}).isEmpty());
}

TEST(Value, ContainerShowsItsFileName) {
    Binary b;
    b.streams.push_back({{'F', 'I', 'L', 'E'}, "data"});
    EXPECT_EQ(utf8(Value::binary(b).asText().units()), "");
    b.streams.push_back({{'F', 'N', 'A', 'M'}, "r\xC3\xA9sum\xC3\xA9.pdf"});
    EXPECT_EQ(utf8(Value::binary(b).asText().units()), "résumé.pdf");
}

TEST(Value, TextKeepsStylesAndLocaleThroughConversion) {
    Text t(u"abc");
    CharStyle s;
    s.sizeOn = true;
    s.size = 14;
    t.setStyle(s, 0, 3);
    Value v = Value::text(t);
    v.setLocale(21);
    const Value copy = v.as(Type::Text);
    EXPECT_EQ(copy.locale(), 21);
    EXPECT_EQ(copy.asText().styleAt(1).size, 14);
}

}  // namespace
}  // namespace sim

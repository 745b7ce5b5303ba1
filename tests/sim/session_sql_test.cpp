// SQL on a file's database through the ExprEnv interface: typed values, their SQL text forms,
// parameters, and the error codes.
#include <gtest/gtest.h>

#include "session_test_support.h"
#include "sim/session/env.h"

using namespace session_test;

namespace {

constexpr char kSeed[] = R"(
CREATE TABLE t (i INTEGER, r REAL, s TEXT, d DATE, tm TIME, ts TIMESTAMP, b BLOB, n TEXT,
                bad DATE);
INSERT INTO t VALUES (42, 2.5, 'héllo 😀', '2024-01-31', '13:05:00', '2024-01-31 13:05:00',
                      x'0102', NULL, 'not a date');
CREATE TABLE days (k INTEGER, d DATE);
INSERT INTO days VALUES (1, '2024-02-29'), (2, '2023-02-29'), (3, '2024-1-5'), (4, '0000-01-01'),
                        (5, '2024-13-01'), (6, '9999-12-31'), (7, '2024-02-3x');
CREATE TABLE pairs (k INTEGER, v TEXT);
INSERT INTO pairs VALUES (1, 'a'), (2, 'b, c');
)";

struct SqlResult {
    short error = 0;
    std::vector<std::vector<sim::Value>> rows;
};

class SqlTest : public ::testing::Test {
protected:
    sim::SessionOptions options() {
        sim::SessionOptions o = noPlugin();
        o.seedSql = kSeed;
        o.otherFiles = {"Other"};
        return o;
    }

    SqlResult query(std::u16string_view sql, std::u16string_view file = u"",
                    const std::vector<sim::Value>& params = {}) {
        fmx::RowVectUniquePtr rows;
        sim::DataVectHandle parameters = sim::makeDataVect(params);
        SqlResult out;
        out.error =
            env.handleRef().ExecuteFileSQL(*makeText(sql), *makeText(file), *parameters, *rows);
        for (fmx::uint32 i = 0; i < rows->Size(); ++i)
            out.rows.push_back(sim::valuesOf(rows->At(i)));
        return out;
    }

    std::pair<short, std::string> textQuery(std::u16string_view sql, char16_t col, char16_t row) {
        fmx::DataUniquePtr result;
        sim::DataVectHandle none = sim::makeDataVect({});
        const short error = env.handleRef().ExecuteFileSQLTextResult(*makeText(sql), *makeText(u""),
                                                                     *none, *result, col, row);
        return {error, sim::toUtf8(sim::valueOf(*result).asText().units())};
    }

    sim::Session session{options()};
    sim::Env env;  // outside any script, in the current file
};

TEST_F(SqlTest, ColumnsComeBackTypedWithSqlTextForms) {
    const SqlResult r = query(u"SELECT i, r, s, d, tm, ts, b, n, bad FROM t");
    ASSERT_EQ(r.error, 0);
    ASSERT_EQ(r.rows.size(), 1u);
    struct Case {
        sim::Type type;
        std::u16string text;
    };
    const Case expected[] = {
        {sim::Type::Number, u"42"},       {sim::Type::Number, u"2.5"},
        {sim::Type::Text, u"héllo 😀"},    {sim::Type::Date, u"2024-01-31"},
        {sim::Type::Time, u"13:05:00"},   {sim::Type::Timestamp, u"2024-01-31 13:05:00"},
        {sim::Type::Binary, u""},         {sim::Type::Text, u""},
        {sim::Type::Text, u"not a date"},
    };
    ASSERT_EQ(r.rows[0].size(), std::size(expected));
    for (std::size_t c = 0; c < std::size(expected); ++c) {
        const sim::Value& v = r.rows[0][c];
        EXPECT_EQ(v.type(), expected[c].type) << "column " << c;
        if (v.type() != sim::Type::Binary) {
            EXPECT_EQ(v.asText().units(), expected[c].text) << "column " << c;
        }
    }
    EXPECT_EQ(r.rows[0][3].asDate(), sim::DateTime::fromYmd(2024, 1, 31));
    EXPECT_EQ(r.rows[0][6].asBinary().streams.at(0).bytes, std::string("\x01\x02", 2));
}

// Text in a DATE column becomes a date only when it names a real day; the value's text, as the
// host hands it out from the row vector, is the SQL form of that day.
TEST_F(SqlTest, DateColumnTextBecomesADateOnlyForRealDays) {
    struct Case {
        sim::Type type;
        std::u16string text;
    };
    const Case expected[] = {
        {sim::Type::Date, u"2024-02-29"}, {sim::Type::Text, u"2023-02-29"},
        {sim::Type::Date, u"2024-01-05"}, {sim::Type::Text, u"0000-01-01"},
        {sim::Type::Text, u"2024-13-01"}, {sim::Type::Date, u"9999-12-31"},
        {sim::Type::Text, u"2024-02-3x"},
    };
    fmx::RowVectUniquePtr rows;
    sim::DataVectHandle none = sim::makeDataVect({});
    ASSERT_EQ(env.handleRef().ExecuteFileSQL(*makeText(u"SELECT d FROM days ORDER BY k"),
                                             *makeText(u""), *none, *rows),
              0);
    ASSERT_EQ(rows->Size(), std::size(expected));
    for (fmx::uint32 r = 0; r < rows->Size(); ++r) {
        const fmx::Data& field = rows->At(r).At(0);
        EXPECT_EQ(sim::valueOf(field).type(), expected[r].type) << "row " << r;
        EXPECT_EQ(sim::textOf(field.GetAsText()).units(), expected[r].text) << "row " << r;
    }
}

// A long result's texts lie in blocks shared by many rows: every field still reads as its own,
// across the blocks' edges, and a value copied out keeps its text after the rows are gone.
TEST_F(SqlTest, RowTextsSurviveBlockEdgesAndTheRows) {
    fmx::RowVectUniquePtr rows;
    sim::DataVectHandle none = sim::makeDataVect({});
    ASSERT_EQ(env.handleRef().ExecuteFileSQL(
                  *makeText(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                            u"WHERE i < 3000) SELECT i, CASE i % 3 WHEN 0 THEN '' WHEN 1 THEN "
                            u"'ü' || i ELSE 'row ' || i END, i * 0.5, NULL FROM n"),
                  *makeText(u""), *none, *rows),
              0);
    ASSERT_EQ(rows->Size(), 3000u);
    std::vector<std::pair<sim::Value, std::u16string>> kept;  // copies, and their texts
    for (fmx::uint32 r = 0; r < rows->Size(); ++r) {
        const int i = static_cast<int>(r) + 1;
        const std::u16string text = i % 3 == 0   ? u""
                                    : i % 3 == 1 ? u"ü" + sim::fromUtf8(std::to_string(i))
                                                 : u"row " + sim::fromUtf8(std::to_string(i));
        const std::u16string half = sim::fromUtf8(std::to_string(i / 2) + (i % 2 ? ".5" : ""));
        const std::u16string expected[] = {sim::fromUtf8(std::to_string(i)), text, half, u""};
        const fmx::DataVect& row = rows->At(r);
        ASSERT_EQ(row.Size(), std::size(expected));
        for (fmx::uint32 c = 0; c < row.Size(); ++c) {
            ASSERT_EQ(sim::textOf(row.AtAsText(c)).units(), expected[c]) << r << ", " << c;
        }
        if (r % 500 == 1) kept.emplace_back(sim::valueOf(row.At(1)), text);
    }
    rows.reset();
    for (const auto& [value, text] : kept) {
        EXPECT_EQ(value.type(), sim::Type::Text);
        EXPECT_EQ(value.asText().units(), text);
    }
}

TEST_F(SqlTest, ErrorsMapToTheHostsCodes) {
    struct Case {
        std::u16string sql, file;
        short error;
    };
    const Case cases[] = {
        {u"SELEC 1", u"", sim::kSqlErrorCode},
        {u"SELECT * FROM missing", u"", sim::kSqlErrorCode},
        {u"SELECT nope FROM t", u"", sim::kSqlErrorCode},
        {u"SELECT 1; SELECT 2", u"", sim::kSqlErrorCode},
        {u"", u"", sim::kSqlErrorCode},
        {u"SELECT 1", u"Nowhere", sim::kFileMissing},
        {u"SELECT * FROM t", u"Other", sim::kSqlErrorCode},  // each file has its own tables
        {u"SELECT 1;", u"Other", 0},
    };
    for (const Case& c : cases) {
        const SqlResult r = query(c.sql, c.file);
        EXPECT_EQ(r.error, c.error) << sim::toUtf8(c.sql);
        if (c.error) {
            EXPECT_TRUE(r.rows.empty());
        }
    }
}

TEST_F(SqlTest, ParametersAreBoundInOrder) {
    const std::vector<sim::Value> params = {sim::Value::number(41), sim::Value::text(u"x"),
                                            sim::Value::date(sim::DateTime::fromYmd(2024, 2, 29)),
                                            sim::Value()};
    const SqlResult r = query(u"SELECT ? + 1, ?, ?, ? IS NULL", u"", params);
    ASSERT_EQ(r.error, 0);
    ASSERT_EQ(r.rows.size(), 1u);
    EXPECT_EQ(r.rows[0][0].asText().units(), u"42");
    EXPECT_EQ(r.rows[0][1].asText().units(), u"x");
    EXPECT_EQ(r.rows[0][2].asText().units(), u"2024-02-29");
    EXPECT_EQ(r.rows[0][3].asText().units(), u"1");
    EXPECT_EQ(query(u"SELECT v FROM pairs WHERE k = ?", u"", {sim::Value::number(2)})
                  .rows.at(0)
                  .at(0)
                  .asText()
                  .units(),
              u"b, c");
}

TEST_F(SqlTest, TextResultJoinsWithTheSeparators) {
    EXPECT_EQ(textQuery(u"SELECT k, v FROM pairs ORDER BY k", u',', u'\r'),
              std::make_pair(short{0}, std::string("1,a\r2,b, c")));
    EXPECT_EQ(textQuery(u"SELECT d, ts, r FROM t", u'\t', u'\r'),
              std::make_pair(short{0}, std::string("2024-01-31\t2024-01-31 13:05:00\t2.5")));
    EXPECT_EQ(textQuery(u"SELECT k FROM pairs WHERE k > 5", u',', u'\r'),
              std::make_pair(short{0}, std::string()));
    EXPECT_EQ(textQuery(u"SELECT", u',', u'\r').first, sim::kSqlErrorCode);
}

// The calculation engine's own ExecuteSQL: what a FileMaker developer writes instead of a
// plug-in call, giving the same text forms as the rows a plug-in reads.
TEST_F(SqlTest, NativeExecuteSqlJoinsTheTextForms) {
    struct Case {
        const char* calc;
        const char* text;
    };
    const Case cases[] = {
        {R"(ExecuteSQL ( "SELECT 1, 2" ; "" ; "" ))", "1,2"},
        {R"(ExecuteSQL ( "SELECT k, v FROM pairs ORDER BY k" ; "" ; "" ))", "1,a\r2,b, c"},
        {R"(ExecuteSQL ( "SELECT k, v FROM pairs ORDER BY k" ; " | " ; "¶--¶" ))",
         "1 | a\r--\r2 | b, c"},
        {R"(ExecuteSQL ( "SELECT k FROM pairs WHERE k > 5" ; "" ; "" ))", ""},
        {R"(ExecuteSQL ( "SELECT i, r, s, d, tm, ts, n, bad FROM t" ; "|" ; "" ))",
         "42|2.5|héllo 😀|2024-01-31|13:05:00|2024-01-31 13:05:00||not a date"},
        {R"(ExecuteSQL ( "SELECT 1.0 / 3, -0.5, 1e20, 123456789012" ; " " ; "" ))",
         "0.333333333333333 -0.5 100000000000000000000 123456789012"},
        // Arguments of each type, bound in order.
        {R"(ExecuteSQL ( "SELECT ? + 1, ?, ?, ?, ?, ? IS NULL" ; "," ; "" ; 41 ; "x" ;
             Date ( 2 ; 29 ; 2024 ) ; Time ( 13 ; 5 ; 0 ) ;
             Timestamp ( Date ( 1 ; 31 ; 2024 ) ; Time ( 8 ; 0 ; 0.5 ) ) ; "" ))",
         "42,x,2024-02-29,13:05:00,2024-01-31 08:00:00.5,1"},
        {R"(ExecuteSQL ( "SELECT v FROM pairs WHERE k = ?" ; "" ; "" ; 1 + 1 ))", "b, c"},
        {R"(ExecuteSQL ( "SELECT ? || ?" ; "" ; "" ; "🦀" ; 0.25 ))", "🦀0.25"},
        // REAL values as SQLite itself shows them; numbers bound keep their decimal text.
        {R"(ExecuteSQL ( "SELECT 52 * 1.25 + 0.01, 0.1 + 0.2, 9007199254740993, 1e-5" ; " " ; "" ))",
         "65.01 0.3 9007199254740993 0.00001"},
        {R"(ExecuteSQL ( "SELECT ?, typeof ( ? ), ?, typeof ( ? ), ?" ; " " ; "" ; 65.01 ; 65.01 ;
             0.12345678901234567 ; 0.12345678901234567 ; 123456789012345678 ))",
         "65.01 real 0.12345678901234567 text 123456789012345678"},
        // Date and time constants in FileMaker's SQL form; quoted text keeps the keyword.
        {R"(ExecuteSQL ( "SELECT i FROM t WHERE d = DATE '2024-01-31' AND tm = time '13:05:00'
             AND ts = TIMESTAMP  '2024-01-31 13:05:00'" ; "" ; "" ))",
         "42"},
        {R"c(ExecuteSQL ( "SELECT 'DATE ''x''', \"date\" FROM ( SELECT 1 AS date )" ; "|" ; "" ))c",
         "DATE 'x'|1"},
        // Markers without arguments are NULL; arguments without markers are ignored.
        {R"(ExecuteSQL ( "SELECT ? IS NULL" ; "" ; "" ))", "1"},
        {R"(ExecuteSQL ( "SELECT 7" ; "" ; "" ; 1 ; 2 ))", "7"},
        // A failing query gives "?" and no error.
        {R"(ExecuteSQL ( "SELEC 1" ; "" ; "" ))", "?"},
        {R"(ExecuteSQL ( "SELECT * FROM missing" ; "" ; "" ))", "?"},
        {R"(ExecuteSQL ( "SELECT 1; SELECT 2" ; "" ; "" ))", "?"},
        {R"(ExecuteSQL ( "" ; "" ; "" ))", "?"},
        // Only queries: a statement that would change the data fails and changes nothing.
        {R"(ExecuteSQL ( "INSERT INTO pairs VALUES ( 3 , 'c' ) " ; "" ; "" ))", "?"},
        {R"(ExecuteSQL ( "DELETE FROM pairs" ; "" ; "" ))", "?"},
        {R"(ExecuteSQL ( "SELECT COUNT ( * ) FROM pairs " ; "" ; "" ))", "2"},
    };  // namespace
    for (const Case& c : cases) {
        const sim::EvalResult r = session.eval(c.calc);
        EXPECT_EQ(r.error, 0) << c.calc;
        EXPECT_EQ(r.text, c.text) << c.calc;
    }
    // Fewer than three arguments is a calculation that does not parse.
    EXPECT_NE(session.eval(R"(ExecuteSQL ( "SELECT 1" ; "" ))").error, 0);
}

// The same query through the plug-in interface and through the calculation gives the same text.
TEST_F(SqlTest, NativeExecuteSqlMatchesTheTextResultCall) {
    for (const char16_t* sql : {u"SELECT i, r, s, d, tm, ts, n FROM t", u"SELECT d FROM days"}) {
        const auto [error, viaInterface] = textQuery(sql, u',', u'\r');
        ASSERT_EQ(error, 0);
        const std::string quoted = sim::toUtf8(sql);
        EXPECT_EQ(session.eval("ExecuteSQL ( \"" + quoted + "\" ; \"\" ; \"\" )").text,
                  viaInterface);
    }
}

}  // namespace

// Ravelin_ExecuteSQL through the substitute host with the built plug-in loaded: separators, the
// rows' text forms, and the last error it leaves behind.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "entry/function_table.h"
#include "sim/abi/faults.h"
#include "sim/core/encoding.h"
#include "sim/core/handles.h"
#include "sim/session/env.h"
#include "sim/session/session.h"

namespace {

constexpr char kSeed[] = R"(
CREATE TABLE abc (k INTEGER, x TEXT, y TEXT, z TEXT);
INSERT INTO abc VALUES (1, 'a', 'b', 'c'), (2, 'd', 'e', 'f');
CREATE TABLE typed (i INTEGER, r REAL, d DATE, t TIME, ts TIMESTAMP, s TEXT, n TEXT);
INSERT INTO typed VALUES (42, 2.5, '2024-01-31', '13:05:00', '2024-01-31 13:05:00', 'x', NULL),
                         (-7, 0.25, '0001-01-01', '00:00:07', '1999-12-31 23:59:59', 'y', NULL);
CREATE TABLE words (k INTEGER, s TEXT);
INSERT INTO words VALUES (1, 'b, c'), (2, 'héllo wörld 😀'), (3, 'tab	inside');
CREATE TABLE blank (x TEXT);
CREATE TABLE money (k INTEGER, r REAL, i INTEGER);
INSERT INTO money VALUES (1, 65.01, 123456789012345678), (2, 0.1 + 0.2, -9007199254740993),
                         (3, 1e20, 0), (4, 1.0 / 3, 1);
)";

class ExecuteSql : public ::testing::Test {
protected:
    ExecuteSql() {
        sim::SessionOptions o;
        o.pluginPath = RAVELIN_PLUGIN_PATH;
        o.seedSql = kSeed;
        session_.emplace(o);
    }
    ~ExecuteSql() override { sim::faults::clear(); }

    sim::EvalResult eval(const std::string& calc) { return session_->eval(calc); }
    void setLastError(int code) {
        eval("Let ( [ $$Ravelin_LastError = " + std::to_string(code) +
             " ; $$Ravelin_LastErrorMessage = \"earlier\" ] ; 1 )");
    }
    std::string lastError() { return eval("$$Ravelin_LastError").text; }
    std::string lastMessage() { return eval("$$Ravelin_LastErrorMessage").text; }

    std::optional<sim::Session> session_;
    sim::Env env_;  // for calling the function directly, in the current file
};

TEST_F(ExecuteSql, JoinsRowsAndRecordsTheOutcome) {
    const struct {
        const char* name;
        std::string args;  // the arguments inside Ravelin_ExecuteSQL ( ... )
        std::u16string text;
        const char* type;
        const char* lastError;
        const char* lastMessage;
    } cases[] = {
        {"default separators", R"("SELECT x, y, z FROM abc ORDER BY k")", u"a\tb\tc\rd\te\tf",
         "Text", "0", "No Error Message"},
        {"only the first unit of a field separator",
         R"("SELECT x, y, z FROM abc ORDER BY k" ; ", ")", u"a,b,c\rd,e,f", "Text", "0",
         "No Error Message"},
        {"both separators", R"("SELECT x, y, z FROM abc ORDER BY k" ; ";" ; "|x")", u"a;b;c|d;e;f",
         "Text", "0", "No Error Message"},
        {"empty separators keep the defaults", R"("SELECT x, y, z FROM abc ORDER BY k" ; "" ; "")",
         u"a\tb\tc\rd\te\tf", "Text", "0", "No Error Message"},
        {"arguments after the third are ignored",
         R"("SELECT x, y FROM abc ORDER BY k" ; "-" ; "+" ; "?" ; "!")", u"a-b+d-e", "Text", "0",
         "No Error Message"},
        {"a surrogate half as separator", R"("SELECT x, y FROM abc WHERE k = 1" ; "😀")",
         u"a\xD83D"
         u"b",
         "Text", "0", "No Error Message"},
        {"no quoting", R"("SELECT k, s FROM words WHERE k IN ( 1, 3 ) ORDER BY k" ; ",")",
         u"1,b, c\r3,tab\tinside", "Text", "0", "No Error Message"},
        {"unicode survives", R"("SELECT s FROM words WHERE k = 2")", u"héllo wörld 😀", "Text", "0",
         "No Error Message"},
        {"SQL text forms", R"("SELECT i, r, d, t, ts, s, n FROM typed ORDER BY i DESC" ; ",")",
         u"42,2.5,2024-01-31,13:05:00,2024-01-31 13:05:00,x,\r"
         u"-7,0.25,0001-01-01,00:00:07,1999-12-31 23:59:59,y,",
         "Text", "0", "No Error Message"},
        {"REAL as SQLite shows it, INTEGER exactly", R"("SELECT r, i FROM money ORDER BY k" ; ",")",
         u"65.01,123456789012345678\r0.3,-9007199254740993\r100000000000000000000,0\r"
         u"0.333333333333333,1",
         "Text", "0", "No Error Message"},
        {"empty result", R"("SELECT x FROM blank")", u"", "Text", "0", "No Error Message"},
        {"syntax error", R"("SELEKT x FROM abc")", u"8310", "Number", "8310", "SQL Error"},
        {"unknown table", R"("SELECT x FROM nowhere")", u"8310", "Number", "8310", "SQL Error"},
        {"unknown column", R"("SELECT nope FROM abc")", u"8310", "Number", "8310", "SQL Error"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        setLastError(99);
        const sim::EvalResult r = eval("Ravelin_ExecuteSQL ( " + c.args + " )");
        EXPECT_EQ(r.error, 0);
        EXPECT_EQ(r.type, c.type);
        EXPECT_EQ(r.value.asText().units(), c.text);
        EXPECT_EQ(lastError(), c.lastError);
        EXPECT_EQ(lastMessage(), c.lastMessage);
    }
}

TEST_F(ExecuteSql, WithoutArgumentsAnswersNothing) {
    setLastError(99);
    const sim::DataVectHandle none = sim::makeDataVect({});
    const sim::DataHandle result = sim::makeData();
    EXPECT_EQ(Ravelin_ExecuteSQL(4, env_.handleRef(), *none, *result), 0);
    EXPECT_EQ(sim::valueOf(*result).type(), sim::Type::Invalid);
    EXPECT_EQ(lastError(), "99");
}

// No exception frame: a failing host call leaves the function towards the host.
TEST_F(ExecuteSql, HostFailuresLeaveTheFunction) {
    setLastError(99);
    const sim::DataVectHandle args = sim::makeDataVect({sim::Value::text(u"SELECT 1")});
    const sim::DataHandle result = sim::makeData();
    sim::faults::failFunction("FM_ExprEnv_ExecuteFileSQL", 2);
    EXPECT_THROW(Ravelin_ExecuteSQL(4, env_.handleRef(), *args, *result), std::exception);
    sim::faults::clear();
    EXPECT_EQ(sim::valueOf(*result).type(), sim::Type::Invalid);
    EXPECT_EQ(lastError(), "99");
}

// The first row sizes the joined text; rows that grow far past it must still all arrive whole.
TEST_F(ExecuteSql, RowsLongerThanTheFirstJoinWhole) {
    const sim::EvalResult r = eval(
        "Ravelin_ExecuteSQL ( \"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
        "WHERE i < 600) SELECT i, hex(zeroblob(i)) FROM n\" ; \",\" )");
    std::u16string expected;
    for (int i = 1; i <= 600; ++i) {
        if (i > 1) expected += u'\r';
        expected += sim::fromUtf8(std::to_string(i)) + u',' + std::u16string(2 * i, u'0');
    }
    EXPECT_EQ(r.value.asText().units(), expected);
}

// The host keeps a large result's values in blocks: every row must still read right, and a value
// taken out of a row must be the caller's own to delete.
TEST_F(ExecuteSql, HostRowsOfALargeResultStayIntact) {
    fmx::TextUniquePtr query, file;
    query->Assign(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) "
        "SELECT i, 'row ' || i FROM n");
    fmx::DataVectUniquePtr parameters;
    fmx::RowVectUniquePtr rows;
    ASSERT_EQ(env_.handleRef().ExecuteFileSQL(*query, *file, *parameters, *rows), 0);
    ASSERT_EQ(rows->Size(), 3000u);
    for (fmx::uint32 r : {0u, 255u, 256u, 1999u, 2999u}) {
        EXPECT_EQ(sim::valueOf(rows->At(r).At(0)).asNumber().toDouble(), r + 1);
        EXPECT_EQ(sim::textOf(rows->At(r).At(1).GetAsText()).units(),
                  u"row " + sim::fromUtf8(std::to_string(r + 1)));
    }
    fmx::_fmxcpt x;
    auto* row = const_cast<fmx::DataVect*>(&rows->At(7));
    fmx::Data* taken = FM_DataVect_PopBack(row, x);
    ASSERT_EQ(x.m_code, 0);
    EXPECT_EQ(sim::textOf(taken->GetAsText()).units(), u"row 8");
    FM_Data_Delete(taken, x);
    EXPECT_EQ(rows->At(7).Size(), 1u);
}

}  // namespace

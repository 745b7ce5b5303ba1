// What the shell asks of the host besides results: seeds that fail name their line, variables
// can be listed, and failed script runs carry their error.
#include <gtest/gtest.h>

#include "sim/core/encoding.h"
#include "sim/session/database.h"
#include "sim/session/session.h"
#include "sim/session/variables.h"

namespace {

TEST(ShellHost, FailingSeedsNameTheLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"CREATE TABLE a (x);\nINSERT INTO a VALUES (1;\n", "line 2: near \";\": syntax error"},
        {"CREATE TABLE a (x);\n\n\nCREATE TABLE a (y);", "line 4: table a already exists"},
        {"CREATE TABLE a (x);\nINSERT INTO a VALUES (1)", ""},
        {"-- only a comment\n", ""},
        {"CREATE TABLE a (x)", ""},
        {"SELECT * FROM nowhere;", "line 1: no such table: nowhere"},
        {"CREATE TABLE a (x);\nINSERT INTO a\nVALUES ('open", "line 3: unrecognized token"},
    };
    for (const auto& [sql, wanted] : cases) {
        sim::Database db;
        std::string message;
        try {
            db.runScript(sql);
        } catch (const sim::DatabaseError& e) {
            message = e.what();
        }
        EXPECT_EQ(message.substr(0, std::string(wanted).size()), wanted) << sql;
        EXPECT_EQ(message.empty(), std::string(wanted).empty()) << sql << ": " << message;
    }
}

TEST(ShellHost, VariablesListInTheirLastSpelling) {
    sim::Variables v;
    v.set(u"$$b", 1, sim::Value::text(u"x"));
    v.set(u"$$A", 3, sim::Value::number(2.0));
    v.set(u"$$a", 1, sim::Value::number(1.0));
    v.set(u"$$gone", 1, sim::Value::text(u"y"));
    v.set(u"$$GONE", 1, sim::Value::text(u""));
    const auto list = v.list();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(sim::toUtf8(list[0].first), "$$a");
    EXPECT_EQ(sim::toUtf8(list[1].first), "$$a[3]");
    EXPECT_EQ(sim::toUtf8(list[2].first), "$$b");
}

TEST(ShellHost, ScriptRunsCarryTheirError) {
    sim::SessionOptions o;
    o.scripts = {{"Bad", "1 +"}, {"Good", "1"}};
    sim::Session session(o);
    sim::Host& host = session.host();
    ASSERT_EQ(host.startScript(u"", u"Bad", u""), 0);
    ASSERT_EQ(host.startScript(u"", u"Good", u""), 0);
    session.runQueuedScripts();
    const auto runs = session.scriptRuns();
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0].error, 1203);
    EXPECT_EQ(runs[0].message, "Unexpected end of calculation");
    EXPECT_EQ(runs[1].error, 0);
    EXPECT_EQ(runs[1].message, "");
}

}  // namespace

// Get selectors and SQL functions that answer from the host's own state: the result of the last
// script run, and why a query failed.
#include <gtest/gtest.h>

#include "session_test_support.h"
#include "sim/session/host.h"

using namespace session_test;

namespace {

TEST(SessionGet, ScriptResultIsTheLastScriptRunsResult) {
    sim::SessionOptions o = noPlugin();
    o.scripts = {{"Double", "Get ( ScriptParameter ) * 2"}};
    sim::Session session(o);
    EXPECT_EQ(session.eval("Get ( ScriptResult )").text, "");
    ASSERT_EQ(session.host().startScript(u"", u"double", u"21"), 0);
    session.runQueuedScripts();
    EXPECT_EQ(session.eval("Get ( ScriptResult )").text, "42");
    EXPECT_EQ(session.eval("Get ( ScriptResult ) + 1").text, "43");
}

TEST(SessionGet, ExecuteSqleTellsWhyAQueryFailed) {
    sim::SessionOptions o = noPlugin();
    o.seedSql = "CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (7);";
    sim::Session session(o);
    EXPECT_EQ(session.eval(R"(ExecuteSQLe ( "SELECT a FROM t" ; "" ; "" ))").text, "7");
    EXPECT_EQ(session.eval(R"(ExecuteSQLe ( "SELECT b FROM t" ; "" ; "" ))").text,
              "? ERROR: no such column: b");
    EXPECT_EQ(session.eval(R"(ExecuteSQL ( "SELECT b FROM t" ; "" ; "" ))").text, "?");
    EXPECT_EQ(session.eval(R"(Left ( ExecuteSQLe ( "DELETE FROM t" ; "" ; "" ) ; 9 ))").text,
              "? ERROR: ");
    EXPECT_EQ(session.eval(R"(ExecuteSQL ( "SELECT a FROM t" ; "" ; "" ))").text, "7");
}

TEST(SessionGet, MachineFactsHaveTheirForms) {
    sim::Session session(noPlugin());
    EXPECT_EQ(
        session.eval("Right ( Get ( TemporaryPath ) ; 1 ) & Right ( Get ( DocumentsPath ) ; 1 )")
            .text,
        "//");
    EXPECT_EQ(session.eval("Length ( Get ( PersistentID ) )").text, "32");
    EXPECT_EQ(session.eval("Get ( PersistentID ) = Get ( PersistentID )").text, "1");
    EXPECT_EQ(session.eval("IsEmpty ( Get ( SystemVersion ) )").text, "0");
}

TEST(SystemFacts, ReadFromTheSourcesGiven) {
    sim::SystemSources sources;
    sources.machineIdPath = "/nonexistent/machine-id";
    sources.environment = [](const char* name) -> std::string {
        const std::string n = name;
        if (n == "HOME") return "/home/ada/";
        if (n == "TMPDIR") return "/var/tmp";
        return "";
    };
    const sim::SystemFacts facts = sim::readSystemFacts(sources);
    EXPECT_EQ(facts.temporaryPath, u"/var/tmp/");
    EXPECT_EQ(facts.documentsPath, u"/home/ada/Documents/");
    EXPECT_EQ(facts.desktopPath, u"/home/ada/Desktop/");
    EXPECT_EQ(facts.preferencesPath, u"/home/ada/.config/");
    EXPECT_EQ(facts.persistentId.size(), 32u);
}

}  // namespace

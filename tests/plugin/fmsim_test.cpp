// fmsim as users run it: options, exit codes and output formats.
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/plugin/shell_support.h"

namespace {

using FmsimRun = ShellRun;

FmsimRun fmsim(const std::string& args, bool withStderr = false, const std::string& input = "") {
    std::string command = std::string(FMSIM_PATH) + " " + args;
    if (!input.empty()) command += " <<< " + shellQuoted(input);
    command += withStderr ? " 2>&1" : " 2>/dev/null";
    return runShell(command);
}

TEST(Fmsim, BadStartsGiveOneLineAndExitTwo) {
    const char* cases[] = {
        "--bogus",
        "--file",
        "--host-version many -e 1",
        "--refuse 1.5 -e 1",
        "--idle -1 -e 1",
        "--script NoEquals -e 1",
        "--plugin /nonexistent/Ravelin.fmx -e 1",
        "--db /nonexistent/dir/demo.sqlite -e 1",
        "--seed /nonexistent/seed.sql -e 1",
        "--open Demo -e 1",
    };
    std::vector<std::string> all(std::begin(cases), std::end(cases));
    // Not a database. Not fmsim itself either: where that is a script (the emulator's wrapper),
    // the database's read-write open would make other tests' starts of it fail as busy.
    all.push_back(std::string("--db ") + RAVELIN_SOURCE_DIR + "/README.md -e 1");
    for (const std::string& args : all) {
        const FmsimRun run = fmsim(args, true);
        EXPECT_EQ(run.exitCode, 2) << args;
        EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << args << ": " << run.output;
    }
}

TEST(Fmsim, RefusedRegistrationPrintsTheInitResult) {
    const FmsimRun run = fmsim("--json --refuse 13 -e 1");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "{\"init\": -2}\n");
}

TEST(Fmsim, JsonLinesForEachCalculation) {
    const FmsimRun run =
        fmsim("--json -e 'Ravelin_Version' -e '\"a¶b \\\"q\\\" é\"' -e '1 +' -e '2 * 21'");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output,
              "{\"type\": \"Text\", \"text\": \"3.0.3\", \"error\": 0}\n"
              "{\"type\": \"Text\", \"text\": \"a\\rb \\\"q\\\" é\", \"error\": 0}\n"
              "{\"type\": \"\", \"text\": \"\", \"error\": 1203, \"message\": \"Unexpected end "
              "of calculation\", \"position\": 4}\n"
              "{\"type\": \"Number\", \"text\": \"42\", \"error\": 0}\n");
}

TEST(Fmsim, ReadsCalculationsFromStandardInput) {
    const FmsimRun run =
        fmsim("--file Shop --open Other", false, "Get ( FileName )\n\nDatabaseNames\n1 / 4");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "Shop\nShop\rOther\n0.25\n");
}

TEST(Fmsim, SeedAndScriptsBelongToTheCurrentFile) {
    const std::string seed = std::string(RAVELIN_SOURCE_DIR) + "/demo/seed.sql";
    const FmsimRun run = fmsim("--seed " + seed +
                               " --script 'One=1' --script 'Two=2' -e 'ScriptNames ( \"\" )'"
                               " -e 'Ravelin_ExecuteSQL ( \"SELECT COUNT ( * ) FROM Contacts\" )'");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "One\rTwo\n4\n");
}

TEST(Fmsim, BadThreadOptionsNameTheOption) {
    const std::pair<const char*, const char*> cases[] = {
        {"--threads 0 -t 1", "--threads"},
        {"--threads two -t 1", "--threads"},
        {"--threads 1.5 -t 1", "--threads"},
        {"--threads 100000 -t 1", "--threads"},
        {"--repeat -3 -t 1", "--repeat"},
        {"--repeat= -t 1", "--repeat"},
        {"--threads 2 -e 1", "--threads"},
        {"--repeat 2", "--repeat"},
        {"-t", "-t"},
    };
    for (const auto& [args, option] : cases) {
        const FmsimRun run = fmsim(args, true);
        EXPECT_EQ(run.exitCode, 2) << args;
        EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << args << ": " << run.output;
        EXPECT_NE(run.output.find(option), std::string::npos) << args << ": " << run.output;
    }
}

// Each thread has "$" variables of its own; "$$" variables and scripts belong to the file. Script
// runs print as they happen, the -t lines after every thread has finished, then the -e results.
TEST(Fmsim, ConcurrentCalculationsPrintTheirDistinctResults) {
    const FmsimRun run = fmsim(
        "--script 'Hello=Get ( ScriptParameter )' --threads 2 --repeat 3"
        " -t 'Let ( $n = $n + 1 ; Min ( $n ; 2 ) )' -t 'Let ( $$seen = 1 ; \"a¶b\" )' -t '1 +'"
        " -t 'Ravelin_DoFileMakerScript ( \"Hello\" ; 5 )' -e '$n' -e '$$seen'");
    EXPECT_EQ(run.exitCode, 0);
    std::string scripts;
    for (int i = 0; i < 6; ++i) scripts += "script Hello in Demo with parameter \"5\"\n";
    EXPECT_EQ(run.output, scripts +
                              "Let ( $n = $n + 1 ; Min ( $n ; 2 ) )\t2 x4\t1 x2\n"
                              "Let ( $$seen = 1 ; \"a¶b\" )\ta\rb x6\n"
                              "1 +\t? (error 1203: Unexpected end of calculation) x6\n"
                              "Ravelin_DoFileMakerScript ( \"Hello\" ; 5 )\t0 x6\n"
                              "\n1\n");
}

TEST(Fmsim, ConcurrentCalculationsAsJsonAndWithoutStandardInput) {
    const FmsimRun run =
        fmsim("--json --threads 3 --repeat 2 -t 'Ravelin_Version' -t '1 +'", false, "2 * 21");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output,
              "{\"calc\": \"Ravelin_Version\", \"results\": [{\"type\": \"Text\", \"text\": "
              "\"3.0.3\", \"error\": 0, \"count\": 6}]}\n"
              "{\"calc\": \"1 +\", \"results\": [{\"type\": \"\", \"text\": \"\", "
              "\"error\": 1203, \"message\": \"Unexpected end of calculation\", \"count\": 6}]}\n");
}

// Re-registration storms on eight threads leave the whole table registered.
TEST(Fmsim, ReRegisteringOnManyThreadsEndsWithEveryFunction) {
    const FmsimRun run = fmsim(
        "--threads 8 --repeat 200 -t 'Ravelin_Set ( \"inlineDocumentation\" ; \"on\" )'"
        " -e 'Ravelin_Version' -e 'Ravelin_ValueType ( 1 )'");
    EXPECT_EQ(run.exitCode, 0);
    const std::string tail = "3.0.3\nNumber\n";
    ASSERT_GE(run.output.size(), tail.size());
    EXPECT_EQ(run.output.substr(run.output.size() - tail.size()), tail) << run.output;
}

}  // namespace

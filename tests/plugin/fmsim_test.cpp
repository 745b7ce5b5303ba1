// fmsim as users run it: options, exit codes and output formats.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

namespace {

struct FmsimRun {
    int exitCode = -1;
    std::string output;  // standard output, and standard error when asked for
};

std::string shellQuoted(const std::string& arg) {
    std::string q = "'";
    for (char c : arg) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
}

FmsimRun fmsim(const std::string& args, bool withStderr = false, const std::string& input = "") {
    std::string command = std::string(FMSIM_PATH) + " " + args;
    command += input.empty() ? " </dev/null" : " <<< " + shellQuoted(input);
    command += withStderr ? " 2>&1" : " 2>/dev/null";
    FmsimRun run;
    FILE* pipe = popen(("bash -c " + shellQuoted(command)).c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[4096];
    std::size_t n = 0;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) run.output.append(buffer, n);
    const int status = pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
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
    all.push_back(std::string("--db ") + FMSIM_PATH + " -e 1");  // not a database
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
              "{\"type\": \"\", \"text\": \"\", \"error\": 1203}\n"
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

}  // namespace

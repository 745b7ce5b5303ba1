// fmsim as an interactive shell on a pseudo-terminal (prompt, line editing, history, continuation
// lines, dot-commands, idle calls while waiting), and the messages it gives for mistakes.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/plugin/shell_support.h"

namespace {

// fmsim on a pseudo-terminal of its own, with its history in a file of the test's.
class Terminal {
public:
    explicit Terminal(const std::string& history, std::vector<std::string> args = {},
                      const char* program = FMSIM_PATH) {
        pid_ = forkpty(&master_, nullptr, nullptr, nullptr);
        if (pid_ == 0) {
            setenv("FMSIM_HISTORY", history.c_str(), 1);
            setenv("TERM", "dumb", 1);
            std::vector<char*> argv{const_cast<char*>(program)};
            for (std::string& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            execv(program, argv.data());
            _exit(127);
        }
    }
    ~Terminal() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        if (master_ >= 0) close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool started() const { return pid_ > 0; }

    // A little at a time, reading the echo in between: a terminal's input queue holds about 4 KB,
    // and a long paste written at once loses what does not fit while fmsim is still echoing.
    void type(const std::string& keys) {
        constexpr size_t kChunk = 256;
        for (size_t at = 0; at < keys.size(); at += kChunk) {
            const size_t n = std::min(kChunk, keys.size() - at);
            ASSERT_EQ(write(master_, keys.data() + at, n), static_cast<ssize_t>(n));
            if (at + n < keys.size()) readPending(20);
        }
    }

    // Whatever fmsim has written within `ms` milliseconds.
    void readPending(int ms) {
        pollfd p{master_, POLLIN, 0};
        while (poll(&p, 1, ms) > 0) {
            char buffer[4096];
            const ssize_t n = read(master_, buffer, sizeof buffer);
            if (n <= 0) return;
            seen_.append(buffer, static_cast<size_t>(n));
        }
    }

    // Reads until `wanted` has appeared since the last wait (or a few seconds have passed);
    // true when it did.
    bool waitFor(const std::string& wanted, int seconds = 10) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (seen_.find(wanted, from_) == std::string::npos) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            pollfd p{master_, POLLIN, 0};
            if (poll(&p, 1, 100) <= 0) continue;
            char buffer[4096];
            const ssize_t n = read(master_, buffer, sizeof buffer);
            if (n <= 0) return false;
            seen_.append(buffer, static_cast<size_t>(n));
        }
        from_ = seen_.find(wanted, from_) + wanted.size();
        return true;
    }

    // The exit code once fmsim ends by itself.
    int exitCode() {
        for (int i = 0; i < 200; ++i) {
            char buffer[4096];
            pollfd p{master_, POLLIN, 0};
            if (poll(&p, 1, 50) > 0) {
                const ssize_t n = read(master_, buffer, sizeof buffer);
                if (n > 0) seen_.append(buffer, static_cast<size_t>(n));
            }
            int status = 0;
            if (waitpid(pid_, &status, WNOHANG) == pid_) {
                pid_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            usleep(20000);
        }
        return -2;
    }

    const std::string& output() const { return seen_; }

private:
    int master_ = -1;
    pid_t pid_ = -1;
    std::string seen_;
    std::size_t from_ = 0;
};

std::string temporaryPath(const std::string& name) {
    return (std::filesystem::temp_directory_path() / (name + "." + std::to_string(getpid())))
        .string();
}

TEST(FmsimShell, EditsContinuesAndKeepsHistory) {
    const std::string history = temporaryPath("fmsim_history");
    std::filesystem::remove(history);
    {
        Terminal t(history, {"--script", "Hello=Get ( ScriptParameter )"});
        ASSERT_TRUE(t.started());
        ASSERT_TRUE(t.waitFor("fmsim> ")) << t.output();
        t.type("6 * 7\r");
        EXPECT_TRUE(t.waitFor("42")) << t.output();
        // A bracket, a quotation and a comment keep the calculation open.
        t.type("Let ( [ a = \"x\r");
        EXPECT_TRUE(t.waitFor("...> ")) << t.output();
        t.type("y\" /* note\r");
        EXPECT_TRUE(t.waitFor("...> ")) << t.output();
        t.type("*/ ] ; Length ( a ) )\r");
        EXPECT_TRUE(t.waitFor("3")) << t.output();
        EXPECT_TRUE(t.waitFor("fmsim> ")) << t.output();
        // Line editing: the cursor moves left before a character is inserted.
        t.type("1 + 1\x1b[D\x1b[D\x1b[D\x1b[D0\r");
        EXPECT_TRUE(t.waitFor("11")) << t.output();
        t.type(".files\r");
        EXPECT_TRUE(t.waitFor("Demo (current)")) << t.output();
        t.type(".help\r");
        EXPECT_TRUE(t.waitFor(".idle SECONDS")) << t.output();
        t.type(".scripts\r");
        EXPECT_TRUE(t.waitFor("Hello")) << t.output();
        t.type("Let ( $$Seen = 5 ; 1 )\r.vars\r");
        EXPECT_TRUE(t.waitFor("$$Seen = 5")) << t.output();
        // A delayed script runs while the shell waits for the next line.
        t.type("Ravelin_DoFileMakerScript ( \"Hello\" ; \"later\" ; 0.3 )\r");
        EXPECT_TRUE(t.waitFor("script Hello in Demo with parameter \"later\"")) << t.output();
        EXPECT_TRUE(t.waitFor("fmsim> ")) << t.output();
        t.type(".quit\r");
        EXPECT_EQ(t.exitCode(), 0);
    }
    std::ifstream saved(history);
    std::stringstream lines;
    lines << saved.rdbuf();
    EXPECT_NE(lines.str().find("Length"), std::string::npos) << lines.str();
    {
        // The history of the last session comes back with the up arrow.
        Terminal t(history);
        ASSERT_TRUE(t.waitFor("fmsim> ")) << t.output();
        t.type("\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\r");
        EXPECT_TRUE(t.waitFor("42")) << t.output();
        // libedit shows the prompt a moment before it takes the terminal out of line mode, where
        // Ctrl-D would be the line discipline's end of file, not a key: a user is never that fast.
        EXPECT_TRUE(t.waitFor("fmsim> ")) << t.output();
        usleep(300000);
        t.type("\x04");  // the end of input ends fmsim too
        EXPECT_EQ(t.exitCode(), 0) << t.output();
    }
    std::filesystem::remove(history);
}

// Redirected output never gets the prompt, whatever standard input is.
TEST(FmsimShell, NoPromptWhenOutputIsRedirected) {
    const std::string out = temporaryPath("fmsim_out");
    const ShellRun run = runShell("printf '1+1\\n.quit\\n2+2\\n' | " + std::string(FMSIM_PATH) +
                                  " --json > " + out + "; cat " + out + "; rm -f " + out);
    EXPECT_EQ(run.output, "{\"type\": \"Number\", \"text\": \"2\", \"error\": 0}\n");
    // Typed on a terminal, but written to a file.
    {
        Terminal t("", {"-c", std::string(FMSIM_PATH) + " --json > " + out}, "/bin/sh");
        t.type("1+1\r");
        t.type("\x04");
        EXPECT_EQ(t.exitCode(), 0);
    }
    std::ifstream written(out);
    std::stringstream text;
    text << written.rdbuf();
    EXPECT_EQ(text.str(), "{\"type\": \"Number\", \"text\": \"2\", \"error\": 0}\n");
    std::filesystem::remove(out);
}

struct MessageCase {
    const char* args;
    int exitCode;
    const char* wanted;  // in standard output and error together
};

TEST(FmsimShell, MessagesNameWhatIsAtFault) {
    const std::string seed = temporaryPath("fmsim_seed.sql");
    std::ofstream(seed) << "CREATE TABLE a (x);\nINSERT INTO a VALUES (1;\n";
    const std::string log = temporaryPath("fmsim_log");
    std::filesystem::remove(log);
    const MessageCase cases[] = {
        {"Ravelin_Version", 2, "write -e 'Ravelin_Version'"},
        {"--jsno -e 1", 2, "unknown option --jsno (did you mean --json?)"},
        {"--seed /nonexistent/seed.sql -e 1", 2, "--seed /nonexistent/seed.sql: No such file"},
        {"--open Other --open other -e 1", 2, "--open other: a file named Other is already open"},
        {"--file Shop --open SHOP -e 1", 2, "--open SHOP: a file named Shop"},
        {"--script 'A=1' --script 'a=2' -e 1", 2, "--script a: a script named A is already given"},
        {"--log /nonexistent/dir/log -e 1", 2, "--log /nonexistent/dir/log: No such file"},
        {"--log x --quiet -e 1", 2, "--log and --quiet"},
        {"--version", 0, "fmsim 3.0.3"},
        {"-e '1 +'", 0, "? (error 1203: Unexpected end of calculation)"},
        {"-e '1 +'", 0, "error 1203 at character 4"},
        {"-e 'Nothing ( 1 )'", 0, "no function named Nothing"},
        {"-e 'ExecuteSQL ( \"SELECT * FROM nowhere\" ; \"\" ; \"\" )'", 0,
         "no such table: nowhere"},
        {"-e 'Ravelin_ExecuteSQL ( \"SELECT * FROM nowhere\" )'", 0, "no such table: nowhere"},
        {"--script 'Bad=1 +' -e 'Ravelin_DoFileMakerScript ( \"Bad\" )'", 0,
         "script Bad in Demo with parameter \"\" failed: ? (error 1203: Unexpected end"},
        {"--json -e 'Ravelin_ExecuteSQL ( \"SELECT * FROM nowhere\" )'", 0,
         "\"detail\": \"no such table: nowhere\""},
        {"--json --script 'Bad=1 +' -e 'Ravelin_DoFileMakerScript ( \"Bad\" )'", 0,
         "\"error\": 1203, \"message\": \"Unexpected end of calculation\"}"},
    };
    for (const MessageCase& c : cases) {
        const ShellRun run = runShell(std::string(FMSIM_PATH) + " " + c.args + " 2>&1");
        EXPECT_EQ(run.exitCode, c.exitCode) << c.args;
        EXPECT_NE(run.output.find(c.wanted), std::string::npos) << c.args << ": " << run.output;
    }
    const ShellRun badSeed = runShell(std::string(FMSIM_PATH) + " --seed " + seed + " -e 1 2>&1");
    EXPECT_EQ(badSeed.exitCode, 2);
    EXPECT_NE(badSeed.output.find("--seed " + seed + ", line 2: near \";\": syntax error"),
              std::string::npos)
        << badSeed.output;
    // The plug-in's platform log goes to the file; fmsim's results stay on standard output.
    const std::string delayed =
        " --script 'S=1' -e 'Ravelin_DoFileMakerScript ( \"S\" ; 1 ; 60 )' 2>&1";
    const ShellRun logged = runShell(std::string(FMSIM_PATH) + " --log " + log + delayed);
    const ShellRun plain = runShell(std::string(FMSIM_PATH) + delayed);
    const ShellRun quiet = runShell(std::string(FMSIM_PATH) + " --quiet" + delayed);
    std::ifstream written(log);
    std::stringstream text;
    text << written.rdbuf();
    EXPECT_EQ(logged.output, "0\n");
    EXPECT_EQ(quiet.output, "0\n");
    EXPECT_NE(plain.output, "0\n");
    EXPECT_FALSE(text.str().empty());
    EXPECT_NE(plain.output.find(text.str()), std::string::npos) << plain.output;
    std::filesystem::remove(seed);
    std::filesystem::remove(log);
}

// Piped input continues a calculation while a bracket, text constant or comment is open.
TEST(FmsimShell, CalculationsContinueWhileSomethingIsOpen) {
    const std::pair<const char*, const char*> cases[] = {
        {"Let ( a = 1 ;\n a + 1 )\n", "2\n"},
        {"\"a\n b\"\n", "a\r b\n"},
        {"\"a \\\" ( \"\n", "a \" ( \n"},
        {"1 + /* (\n */ 2\n", "3\n"},
        {"1 + // (\n 2\n", "? (error 1203: Unexpected end of calculation)\n2\n"},
        {"List ( [ 1 ;\n2 ] )\n", "? (error 1211: List usage is not allowed in this function)\n"},
        {"1 )\n2\n", "? (error 1207: Unbalanced parenthesis)\n2\n"},
        {".5 + 1\n.files\n", "1.5\nDemo (current)\n"},
        {"(1\n", "? (error 1207: Unbalanced parenthesis)\n"},
        {"\n   \n1\n", "1\n"},
    };
    for (const auto& [input, wanted] : cases) {
        const ShellRun run =
            runShell("printf '%s' " + shellQuoted(input) + " | " + std::string(FMSIM_PATH));
        EXPECT_EQ(run.output, wanted) << input;
    }
}

// Ctrl-C, as in the sqlite3 shell: it drops the line being typed or the open calculation, and
// stops a running calculation or idle wait, while the session (its $$ variables, the plug-in's
// pending scripts) goes on.
TEST(FmsimShell, CtrlCDropsAndInterruptsWithoutEndingTheSession) {
    const std::string history = temporaryPath("fmsim_history_interrupt");
    std::filesystem::remove(history);
    Terminal t(history, {"--script", "Later=Get ( ScriptParameter )"});
    ASSERT_TRUE(t.waitFor("fmsim> ")) << t.output();
    t.type("Let ( $$kept = 5 ; Ravelin_DoFileMakerScript ( \"Later\" ; \"due\" ; 6 ) )\r");
    EXPECT_TRUE(t.waitFor("0")) << t.output();
    const char* const longLoop =
        "While ( i = 0 ; i < 50000 ; i = i + 1 + 0 * While ( j = 0 ; j < 50000 ; j = j + 1 ; j ) "
        "; i )\r";
    const struct {
        const char* typed;  // then Ctrl-C
        const char* shown;  // after it
    } steps[] = {
        {"1 + 2", "^C"},               // the line being typed
        {"Let ( [ x = \"ab\r", "^C"},  // an open calculation
        {longLoop, "? (error 1: User canceled action)"},
        {".idle 600\r", "fmsim> "},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.typed);
        t.type(step.typed);
        usleep(300000);
        t.type("\x03");
        EXPECT_TRUE(t.waitFor(step.shown)) << t.output();
        EXPECT_TRUE(t.waitFor("fmsim> ")) << t.output();
    }
    // Nothing of the dropped lines is left over; the variables and the pending script are.
    t.type("$$kept + 1\r");
    EXPECT_TRUE(t.waitFor("6")) << t.output();
    const std::string ran = "script Later in Demo with parameter \"due\"";
    EXPECT_TRUE(t.output().find(ran) != std::string::npos || t.waitFor(ran, 15)) << t.output();
    // .cancel is the typed way to drop an open calculation, .quit ends even inside one.
    t.type("\"open\r");
    EXPECT_TRUE(t.waitFor("...> ")) << t.output();
    t.type(".cancel\r");
    EXPECT_TRUE(t.waitFor("fmsim> ")) << t.output();
    t.type("(1\r");
    EXPECT_TRUE(t.waitFor("...> ")) << t.output();
    t.type(".quit\r");
    EXPECT_EQ(t.exitCode(), 0) << t.output();
    EXPECT_EQ(t.output().find("error 1207"), std::string::npos) << t.output();
    std::filesystem::remove(history);
}

// The history keeps calculations whole, and not a pasted document.
TEST(FmsimShell, HistoryKeepsWholeCalculationsOfBoundedSize) {
    const std::string history = temporaryPath("fmsim_history_whole");
    std::filesystem::remove(history);
    const std::string pasted = "Length ( \"" + std::string(20000, 'x') + "\" )";
    {
        Terminal t(history);
        ASSERT_TRUE(t.waitFor("fmsim> ")) << t.output();
        t.type("Let ( a = 20 ;\r");
        EXPECT_TRUE(t.waitFor("...> ")) << t.output();
        t.type("a + 1 )\r");
        EXPECT_TRUE(t.waitFor("21")) << t.output();
        t.type(pasted + "\r");
        EXPECT_TRUE(t.waitFor("20000", 20)) << t.output().size();
        t.type(".quit\r");
        EXPECT_EQ(t.exitCode(), 0);
    }
    const auto saved = std::filesystem::file_size(history);
    EXPECT_LT(saved, 1000u);
    {
        // The two lines come back as one entry, before .quit: the up arrow twice, then Enter,
        // runs it again.
        Terminal t(history);
        ASSERT_TRUE(t.waitFor("fmsim> ")) << t.output();
        usleep(300000);
        t.type("\x1b[A\x1b[A\r");
        EXPECT_TRUE(t.waitFor("21")) << t.output();
        EXPECT_TRUE(t.waitFor("fmsim> ")) << t.output();
        t.type(".quit\r");
        EXPECT_EQ(t.exitCode(), 0);
    }
    std::filesystem::remove(history);
}

// Under --json every dot-command answers one JSON line; values with returns stay on it.
TEST(FmsimShell, DotCommandsAnswerInJson) {
    const std::string seed = temporaryPath("fmsim_records_seed.sql");
    std::ofstream(seed) << "CREATE TABLE Contacts (Name TEXT);\n"
                           "INSERT INTO Contacts VALUES ('Ann'), ('Bob');\n";
    const std::string options =
        " --seed " + seed + " --script 'S=1' --open Other --record Contacts=2";
    const struct {
        const char* input;
        const char* json;   // the answer under --json
        const char* plain;  // and without
    } cases[] = {
        {"Let ( [ $$a = \"x¶y\" ; $b = 2 ] ; 1 )\n.vars\n",
         "{\"type\": \"Number\", \"text\": \"1\", \"error\": 0}\n"
         "{\"vars\": [{\"name\": \"$$a\", \"type\": \"Text\", \"text\": \"x\\ry\"}, "
         "{\"name\": \"$b\", \"type\": \"Number\", \"text\": \"2\"}]}\n",
         "1\n$$a = x\ry\n$b = 2\n"},
        {".files\n",
         "{\"files\": [{\"name\": \"Demo\", \"current\": true}, "
         "{\"name\": \"Other\", \"current\": false}]}\n",
         "Demo (current)\nOther\n"},
        {".scripts\n", "{\"scripts\": [\"S\"]}\n", "S\n"},
        {".record\n",
         "{\"records\": [{\"table\": \"Contacts\", \"record\": 2, \"current\": true}]}\n",
         "Contacts=2 (current)\n"},
        {".record contacts=1\nName\n",
         "{\"records\": [{\"table\": \"Contacts\", \"record\": 1, \"current\": true}]}\n"
         "{\"type\": \"Text\", \"text\": \"Ann\", \"error\": 0}\n",
         "Ann\n"},
        {".record Contacts=9\n",
         "{\"command\": \".record\", \"error\": \".record Contacts=9: no record 9 in "
         "Contacts\"}\n",
         ""},
        {".idle 0.05\n.idle 86401\n",
         "{\"idle\": 0.05}\n{\"command\": \".idle\", \"error\": \".idle needs a number of "
         "seconds (0 to 86400), not \\\"86401\\\"\"}\n",
         ""},
        {".nope\n",
         "{\"command\": \".nope\", \"error\": \"unknown command .nope (.help lists the "
         "commands)\"}\n",
         ""},
        {"\"a\n.cancel\n\"b\"\n", "{\"type\": \"Text\", \"text\": \"b\", \"error\": 0}\n", "b\n"},
        {"(1\n.quit\n2\n", "", ""},
        {".help\n", nullptr, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        const std::string piped =
            "printf '%s' " + shellQuoted(c.input) + " | " + FMSIM_PATH + options;
        const ShellRun json = runShell(piped + " --json 2>/dev/null");
        const ShellRun plain = runShell(piped + " 2>/dev/null");
        if (c.json == nullptr) {
            EXPECT_TRUE(json.output.starts_with("{\"help\": \".help ")) << json.output;
            EXPECT_EQ(std::count(json.output.begin(), json.output.end(), '\n'), 1);
            EXPECT_NE(plain.output.find(".record            the current records"),
                      std::string::npos);
            continue;
        }
        EXPECT_EQ(json.output, c.json);
        EXPECT_EQ(plain.output, c.plain);
    }
    std::filesystem::remove(seed);
}

// Options that fmsim refuses, and the fields they choose.
TEST(FmsimShell, RecordAndIdleOptions) {
    const std::string seed = temporaryPath("fmsim_record_seed.sql");
    std::ofstream(seed) << "CREATE TABLE T (v);\nINSERT INTO T VALUES ('one'), ('two');\n";
    const MessageCase cases[] = {
        {"--idle 1e9 -e 1", 2, "--idle needs a number of seconds (0 to 86400), not \"1e9\""},
        {"--idle -1 -e 1", 2, "--idle needs a number of seconds (0 to 86400)"},
        {"--idle nan -e 1", 2, "--idle needs a number of seconds (0 to 86400)"},
        {"--record T -e 1", 2, "--record needs TABLE=ROWID, not \"T\""},
        {"--record T=x -e 1", 2, "--record needs TABLE=ROWID, not \"T=x\""},
        {"--record =1 -e 1", 2, "--record needs TABLE=ROWID"},
        {"--seed SEED --record T=3 -e 1", 2, "--record T=3: no record 3 in T"},
        {"--seed SEED --record U=1 -e 1", 2, "--record U=1: no table U in Demo"},
        {"--recrod T=1", 2, "did you mean --record?"},
        {"--seed SEED --record T=2 -e 'T::v & v & Get ( RecordNumber )'", 0, "twotwo2"},
        {"--seed SEED -e 'T::v & Get ( FoundCount )'", 0, "one0"},
        {"--seed SEED -e 'T::w'", 0, "? (error 102: Field is missing)"},
        {"--seed SEED -e 'T::w'", 0, "fmsim: no field T::w"},
        {"-e 'Let ( ~x = 1 ; ~x ) & $$APP.NAME'", 0, "1\n"},
    };
    for (const MessageCase& c : cases) {
        std::string args = c.args;
        if (const auto at = args.find("SEED"); at != std::string::npos) args.replace(at, 4, seed);
        const ShellRun run = runShell(std::string(FMSIM_PATH) + " " + args + " 2>&1");
        EXPECT_EQ(run.exitCode, c.exitCode) << c.args;
        EXPECT_NE(run.output.find(c.wanted), std::string::npos) << c.args << ": " << run.output;
    }
    std::filesystem::remove(seed);
}

}  // namespace

// The shell's own logic without a process around it: its options, how typed lines become
// calculations, commands and history entries, and what dot-commands answer.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "sim/shell/commands.h"
#include "sim/shell/input.h"
#include "sim/shell/options.h"
#include "sim/shell/output.h"

namespace {

std::string optionsError(std::vector<std::string> args) {
    try {
        fmsim::parseArguments(args);
    } catch (const fmsim::UsageError& e) {
        return e.what();
    }
    return {};
}

TEST(ShellOptions, RefuseWhatTheyCannotUse) {
    const struct {
        std::vector<std::string> args;
        const char* error;  // empty: accepted
    } cases[] = {
        {{"--idle", "86400"}, ""},
        {{"--idle=0.25"}, ""},
        {{"--idle", "86400.5"}, "--idle needs a number of seconds (0 to 86400), not \"86400.5\""},
        {{"--idle", "1e9"}, "--idle needs a number of seconds (0 to 86400), not \"1e9\""},
        {{"--idle", "inf"}, "--idle needs a number of seconds (0 to 86400), not \"inf\""},
        {{"--idle", "-0.5"}, "--idle needs a number of seconds (0 to 86400), not \"-0.5\""},
        {{"--idle", "2s"}, "--idle needs a number of seconds (0 to 86400), not \"2s\""},
        {{"--idle"}, "--idle needs a value"},
        {{"--record", "Contacts=12"}, ""},
        {{"--record", "a=b=3"}, ""},  // the last "=" separates the rowid
        {{"--record", "T=-4"}, ""},
        {{"--record", "T"}, "--record needs TABLE=ROWID, not \"T\""},
        {{"--record", "T="}, "--record needs TABLE=ROWID, not \"T=\""},
        {{"--record", "=5"}, "--record needs TABLE=ROWID, not \"=5\""},
        {{"--record", "T=5x"}, "--record needs TABLE=ROWID, not \"T=5x\""},
        {{"--record", "T=99999999999999999999"},
         "--record needs TABLE=ROWID, not \"T=99999999999999999999\""},
        {{"--recod", "T=1"}, "unknown option --recod (did you mean --record?)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(optionsError(c.args), c.error) << c.args[0] << " " << c.args.back();
    }
    const fmsim::Options o =
        fmsim::parseArguments({"--record", "a=b=3", "--record", "T=7", "--idle", "1.5"});
    ASSERT_EQ(o.session.records.size(), 2u);
    EXPECT_EQ(o.session.records[0].first, "a=b");
    EXPECT_EQ(o.session.records[0].second, 3);
    EXPECT_EQ(o.session.records[1].first, "T");
    EXPECT_DOUBLE_EQ(o.idleSeconds, 1.5);
}

// What each line did: calculations evaluated, commands run, history entries, the end.
struct Trace {
    std::vector<std::string> events;
    std::vector<std::string> history;
    bool ended = false;
};

Trace feedLines(const std::vector<std::string>& lines) {
    Trace trace;
    fmsim::InputActions actions;
    actions.evaluate = [&](const std::string& calc) { trace.events.push_back("eval " + calc); };
    actions.command = [&](const std::string& line) {
        trace.events.push_back("command " + line);
        return line != ".quit";
    };
    fmsim::Pending pending;
    for (const std::string& line : lines) {
        const fmsim::Fed fed = fmsim::feed(actions, pending, line);
        if (!fed.finished.empty()) trace.history.push_back(fed.finished);
        if (!fed.more) {
            trace.ended = true;
            break;
        }
    }
    if (!pending.empty()) trace.events.push_back("open " + pending.calc);
    return trace;
}

TEST(ShellInput, LinesBecomeCalculationsCommandsAndHistory) {
    const struct {
        std::vector<std::string> lines;
        std::vector<std::string> events;
        std::vector<std::string> history;
        bool ended;
    } cases[] = {
        {{"1 + 1"}, {"eval 1 + 1"}, {"1 + 1"}, false},
        // Lines of one calculation join with a return; the history keeps them with line feeds.
        {{"Let ( a = 1 ;", "a )"}, {"eval Let ( a = 1 ;\ra )"}, {"Let ( a = 1 ;\na )"}, false},
        {{"\"a", "b\"\r"}, {"eval \"a\rb\""}, {"\"a\nb\""}, false},
        {{".files", "  .vars"},
         {"command .files", "command   .vars"},
         {".files", "  .vars"},
         false},
        {{"   ", "", ".5"}, {"eval .5"}, {".5"}, false},
        // Inside an open calculation, only .cancel, .quit and .exit are commands.
        {{"( 1 +", ".files", ")"}, {"eval ( 1 +\r.files\r)"}, {"( 1 +\n.files\n)"}, false},
        {{"( 1 +", ".cancel", "2"}, {"eval 2"}, {"2"}, false},
        {{"( 1 +", "  .cancel  ", "2"}, {"eval 2"}, {"2"}, false},
        {{"( 1 +", ".cancel now"}, {"open ( 1 +\r.cancel now"}, {}, false},
        {{"\"text", ".quit", "2"}, {}, {}, true},
        {{"\"text", ".exit"}, {}, {}, true},
        {{".quit", "2"}, {"command .quit"}, {".quit"}, true},
        {{"( 1", "+ 2"}, {"open ( 1\r+ 2"}, {}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines.front());
        const Trace trace = feedLines(c.lines);
        EXPECT_EQ(trace.events, c.events);
        EXPECT_EQ(trace.history, c.history);
        EXPECT_EQ(trace.ended, c.ended);
    }
}

TEST(ShellInput, CalculationsStayOpenWhileSomethingIs) {
    const std::pair<const char*, bool> cases[] = {
        {"Let ( a = 1 ;", true},
        {"List ( [ 1 ;", true},
        {"\"open", true},
        {"\"escaped \\\" quote", true},
        {"\"escaped \\\\\" ( ", true},  // "\\" is a backslash: the text ends, "(" opens
        {"\"( [\"", false},             // brackets inside text count for nothing
        {"1 /* ( ", true},
        {"1 /* ( */ + 2", false},
        {"\"/*\" & 1", false},
        {"1 + // ( comment", false},
        {"( 1 ) )", false},  // too many closing ones: an error, not a continuation
        {") (", false},      // the early ")" is an error already
        {"", false},
    };
    for (const auto& [text, open] : cases) EXPECT_EQ(fmsim::continues(text), open) << text;
    const std::pair<const char*, bool> commands[] = {
        {".files", true},   {"  .Vars", true}, {".5", false}, {". files", false},
        {"x.files", false}, {".", false},      {"", false},
    };
    for (const auto& [line, command] : commands) {
        EXPECT_EQ(fmsim::isCommand(line), command) << line;
    }
}

TEST(ShellInput, HistoryPathFollowsTheEnvironment) {
    const struct {
        const char* history;  // nullptr: unset
        const char* home;
        const char* path;
    } cases[] = {
        {"/tmp/h", "/home/u", "/tmp/h"},
        {"", "/home/u", ""},  // set empty: no history
        {nullptr, "/home/u", "/home/u/.fmsim_history"},
        {nullptr, "", ""},
        {nullptr, nullptr, ""},
    };
    const char* savedHistory = std::getenv("FMSIM_HISTORY");
    const std::string history = savedHistory ? savedHistory : "";
    const char* savedHome = std::getenv("HOME");
    const std::string home = savedHome ? savedHome : "";
    for (const auto& c : cases) {
        c.history ? ::setenv("FMSIM_HISTORY", c.history, 1) : ::unsetenv("FMSIM_HISTORY");
        c.home ? ::setenv("HOME", c.home, 1) : ::unsetenv("HOME");
        EXPECT_EQ(fmsim::historyPath(), c.path);
    }
    savedHistory ? ::setenv("FMSIM_HISTORY", history.c_str(), 1) : ::unsetenv("FMSIM_HISTORY");
    savedHome ? ::setenv("HOME", home.c_str(), 1) : ::unsetenv("HOME");
}

// Dot-commands against a session without a plug-in, their output read back from a pipe.
class ShellCommands : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(::pipe2(results_, O_NONBLOCK), 0);
        ASSERT_EQ(::pipe2(messages_, O_NONBLOCK), 0);
        output_ = std::make_unique<fmsim::Output>(results_[1], messages_[1]);
    }
    void TearDown() override {
        output_.reset();
        for (int fd : {results_[0], results_[1], messages_[0], messages_[1]}) ::close(fd);
    }

    static std::string drain(int fd) {
        std::string text;
        char buffer[4096];
        for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;) text.append(buffer, n);
        return text;
    }

    // The results and the messages of one command.
    std::pair<std::string, std::string> run(const std::string& line, bool json) {
        const fmsim::CommandScope scope{session_, *output_, json, false};
        fmsim::runCommand(scope, line);
        output_->flush();
        return {drain(results_[0]), drain(messages_[0])};
    }

    sim::Session session_{[] {
        sim::SessionOptions o;
        o.seedSql = "CREATE TABLE T (v); INSERT INTO T VALUES (1), (2);";
        return o;
    }()};
    int results_[2] = {-1, -1};
    int messages_[2] = {-1, -1};
    std::unique_ptr<fmsim::Output> output_;
};

TEST_F(ShellCommands, ArgumentsAreCheckedAndAnswersAreJson) {
    const struct {
        const char* line;
        const char* json;   // the JSON answer
        const char* plain;  // plain results, or the message on standard error
    } cases[] = {
        {".idle 0", "{\"idle\": 0}\n", ""},
        {".idle .01", "{\"idle\": 0.01}\n", ""},
        {".idle 0x0", "{\"idle\": 0}\n", ""},
        {".idle 1e-3", "{\"idle\": 0.001}\n", ""},
        {".idle",
         "{\"command\": \".idle\", \"error\": \".idle needs a number of seconds (0 to 86400), not "
         "\\\"\\\"\"}\n",
         "fmsim: .idle needs a number of seconds (0 to 86400), not \"\"\n"},
        {".idle 1 2",
         "{\"command\": \".idle\", \"error\": \".idle needs a number of seconds (0 to 86400), not "
         "\\\"1\\\"\"}\n",
         "fmsim: .idle needs a number of seconds (0 to 86400), not \"1\"\n"},
        {".record", "{\"records\": []}\n", ""},
        {".record T=2", "{\"records\": [{\"table\": \"T\", \"record\": 2, \"current\": true}]}\n",
         ""},
        {".record t",
         "{\"command\": \".record\", \"error\": \".record needs TABLE=ROWID, not \\\"t\\\"\"}\n",
         "fmsim: .record needs TABLE=ROWID, not \"t\"\n"},
        {".record =2",
         "{\"command\": \".record\", \"error\": \".record needs TABLE=ROWID, not \\\"=2\\\"\"}\n",
         "fmsim: .record needs TABLE=ROWID, not \"=2\"\n"},
        {".record T=2x",
         "{\"command\": \".record\", \"error\": \".record needs TABLE=ROWID, not \\\"T=2x\\\"\"}\n",
         "fmsim: .record needs TABLE=ROWID, not \"T=2x\"\n"},
        {".record T=1 U=2",
         "{\"command\": \".record\", \"error\": \".record needs TABLE=ROWID, or nothing to list "
         "the current records\"}\n",
         "fmsim: .record needs TABLE=ROWID, or nothing to list the current records\n"},
        {".record T=3",
         "{\"command\": \".record\", \"error\": \".record T=3: no record 3 in T\"}\n",
         "fmsim: .record T=3: no record 3 in T\n"},
        {".cancel", "{\"cancel\": true}\n", ""},
        {".scripts", "{\"scripts\": []}\n", ""},
        {".Files",
         "{\"command\": \".Files\", \"error\": \"unknown command .Files (.help lists the "
         "commands)\"}\n",
         "fmsim: unknown command .Files (.help lists the commands)\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const auto [json, jsonMessages] = run(c.line, true);
        EXPECT_EQ(json, c.json);
        EXPECT_EQ(jsonMessages, "");
        const auto [plain, messages] = run(c.line, false);
        EXPECT_EQ(plain + messages, c.plain);
    }
    EXPECT_EQ(run(".record", false).first, "T=2 (current)\n");
    session_.eval("Let ( [ $$b = \"x¶y\" ; $$a[2] = 3 ] ; 0 )");
    EXPECT_EQ(run(".vars", false).first, "$$a[2] = 3\n$$b = x\ry\n");
    EXPECT_EQ(run(".vars", true).first,
              "{\"vars\": [{\"name\": \"$$a[2]\", \"type\": \"Number\", \"text\": \"3\"}, "
              "{\"name\": \"$$b\", \"type\": \"Text\", \"text\": \"x\\ry\"}]}\n");
    EXPECT_EQ(fmsim::runCommand({session_, *output_, true, false}, ".quit"),
              fmsim::CommandResult::Quit);
}

// Results longer than the buffer arrive whole and in order.
TEST_F(ShellCommands, ResultsPassTheBufferWhole) {
    const std::string big(10000, 'x');
    output_->results() << big << '\n' << "end\n";
    output_->flush();
    EXPECT_EQ(drain(results_[0]), big + "\nend\n");
}

// Output::separate in a child process of its own (it points the process's descriptors 1 and 2
// elsewhere): what a plug-in prints never reaches the results.
struct Streams {
    std::string out;
    std::string err;
    std::string log;
};

std::string readAll(int fd) {
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::read(fd, buffer, sizeof buffer)) > 0;) text.append(buffer, n);
    return text;
}

Streams separated(const std::string& logPath, bool quiet) {
    int out[2];
    int err[2];
    if (::pipe(out) != 0 || ::pipe(err) != 0) return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        for (int fd : {out[0], out[1], err[0], err[1]}) ::close(fd);
        fmsim::Output output;
        output.separate(logPath, quiet);
        output.results() << "result 1\n";
        std::printf("plugin:printf ");
        std::cout << "plugin:cout" << std::endl;
        std::fprintf(stderr, "plugin:stderr\n");
        output.message("message");
        output.results() << "result 2\n";
        output.flush();
        ::_exit(0);
    }
    ::close(out[1]);
    ::close(err[1]);
    Streams s{readAll(out[0]), readAll(err[0]), {}};
    ::close(out[0]);
    ::close(err[0]);
    ::waitpid(child, nullptr, 0);
    if (!logPath.empty()) {
        const int fd = ::open(logPath.c_str(), O_RDONLY);
        if (fd >= 0) {
            s.log = readAll(fd);
            ::close(fd);
        }
    }
    return s;
}

TEST(ShellOutput, PluginOutputGoesToStandardErrorTheLogOrNowhere) {
    const std::string log = ::testing::TempDir() + "fmsim_output_log." + std::to_string(getpid());
    ::unlink(log.c_str());
    const std::string plugin = "plugin:printf plugin:cout\nplugin:stderr\n";
    const struct {
        const char* name;
        std::string logPath;
        bool quiet;
        Streams wanted;
    } cases[] = {
        {"standard error", "", false, {"result 1\nresult 2\n", plugin + "fmsim: message\n", ""}},
        {"log", log, false, {"result 1\nresult 2\n", "fmsim: message\n", plugin}},
        {"quiet", "", true, {"result 1\nresult 2\n", "fmsim: message\n", ""}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Streams s = separated(c.logPath, c.quiet);
        EXPECT_EQ(s.out, c.wanted.out);
        EXPECT_EQ(s.err, c.wanted.err);
        EXPECT_EQ(s.log, c.wanted.log);
    }
    ::unlink(log.c_str());
    try {
        fmsim::Output output;
        output.separate("/nonexistent/dir/log", false);
        ADD_FAILURE() << "opened";
    } catch (const fmsim::UsageError& e) {
        EXPECT_STREQ(e.what(), "--log /nonexistent/dir/log: No such file or directory");
    }
}

}  // namespace

// fmsim: the substitute host's shell. Loads the plug-in into a session and evaluates
// calculations from the command line or standard input.
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "sim/core/encoding.h"
#include "sim/session/json.h"
#include "sim/session/session.h"
#include "sim/shell/concurrent.h"
#include "sim/shell/input.h"
#include "sim/shell/options.h"

namespace {

constexpr short kStarted = 57;
constexpr int kExitInitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitThreadsFailed = 3;

std::string defaultPluginPath() {
    std::error_code ec;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) return "Ravelin.fmx";
    return (self.parent_path() / "Ravelin.fmx").string();
}

std::string readSeed(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw fmsim::UsageError("--seed " + path + ": " + std::strerror(errno));
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) throw fmsim::UsageError("--seed " + path + ": cannot be read");
    return text.str();
}

// fmsim's own messages go to the standard error it was started with, even when the plug-in's
// platform log (which the plug-in writes to standard error) is sent elsewhere.
class Messages {
public:
    // Sends file descriptor 2 to `logPath` (or nowhere for `quiet`), keeping a descriptor of
    // the original for fmsim's messages. Throws UsageError when the log cannot be opened.
    void redirectLog(const std::string& logPath, bool quiet) {
        if (logPath.empty() && !quiet) return;
        const char* target = quiet ? "/dev/null" : logPath.c_str();
        const int log = ::open(target, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (log < 0) throw fmsim::UsageError("--log " + logPath + ": " + std::strerror(errno));
        fd_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        if (fd_ < 0) fd_ = STDERR_FILENO;
        ::dup2(log, STDERR_FILENO);
        ::close(log);
    }

    void line(const std::string& text) const {
        const std::string out = "fmsim: " + text + "\n";
        std::cout.flush();
        for (std::size_t done = 0; done < out.size();) {
            const ssize_t n = ::write(fd_, out.data() + done, out.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;
            done += static_cast<std::size_t>(n);
        }
    }

private:
    int fd_ = STDERR_FILENO;
};

using fmsim::errorShown;

// Prints results and script runs. A script started by a calculation runs before the
// calculation's result comes back from the session, but it is printed after that result.
// Script runs may come from the -t threads.
class Printer {
public:
    Printer(bool json, const Messages& messages)
        : json_(json), terminal_(isatty(STDOUT_FILENO)), messages_(messages) {}

    // Plain output keeps one line per result; where a syntax error was found and what the host
    // adds (SQLite's message, the unknown name) go to standard error.
    void result(const sim::EvalResult& r) {
        if (json_) {
            std::cout << sim::json::resultLine(r.type, r.text, r.error, r.message, r.detail,
                                               r.position)
                      << '\n';
            std::cout.flush();
            return;
        }
        std::cout << (r.error != 0 ? errorShown(r.error) : forDisplay(r.text)) << '\n';
        std::cout.flush();
        if (r.position > 0) {
            std::string where = "error " + std::to_string(r.error) + " at ";
            if (r.line > 1) where += "line " + std::to_string(r.line) + ", ";
            where += "character " + std::to_string(r.line > 1 ? r.column : r.position);
            messages_.line(r.detail.empty() ? where : where + ": " + r.detail);
        } else if (!r.detail.empty()) {
            messages_.line(r.detail);
        }
    }

    void tally(const fmsim::Tally& t) {
        std::cout << (json_ ? fmsim::jsonLine(t) : fmsim::plainLine(t, terminal_)) << std::endl;
    }

    void scriptRun(const sim::ScriptRunRecord& run) {
        std::string line =
            json_
                ? sim::json::scriptLine(run.script, run.file, run.parameter, run.error, run.message)
                : "script " + run.script + " in " + run.file + " with parameter \"" +
                      forDisplay(run.parameter) + "\"" +
                      (run.error != 0 ? " failed: " + errorShown(run.error) : std::string());
        std::lock_guard lock(mutex_);
        if (holding_) {
            held_.push_back(std::move(line));
        } else {
            // At the prompt, the line being typed gives way and is drawn again afterwards.
            if (atPrompt_) std::cout << "\r\x1b[K";
            std::cout << line << std::endl;
            ++printedAtPrompt_;
        }
    }

    // Between the lines of an interactive shell: counts what is printed meanwhile.
    void setAtPrompt(bool on) {
        std::lock_guard lock(mutex_);
        atPrompt_ = on;
        printedAtPrompt_ = 0;
    }
    int printedAtPrompt() {
        std::lock_guard lock(mutex_);
        return printedAtPrompt_;
    }

    void hold() {
        std::lock_guard lock(mutex_);
        holding_ = true;
    }
    void release() {
        std::lock_guard lock(mutex_);
        holding_ = false;
        for (const std::string& line : held_) std::cout << line << '\n';
        held_.clear();
        std::cout.flush();
    }

private:
    // Returns inside a value stay carriage returns, so that each result is one line; on a
    // terminal they are shown as line breaks.
    std::string forDisplay(std::string text) const {
        if (terminal_) {
            for (char& c : text) {
                if (c == '\r') c = '\n';
            }
        }
        return text;
    }

    bool json_;
    bool terminal_;
    const Messages& messages_;
    std::mutex mutex_;
    bool holding_ = false;
    bool atPrompt_ = false;
    int printedAtPrompt_ = 0;
    std::vector<std::string> held_;
};

void evaluate(sim::Session& session, Printer& printer, const std::string& calc) {
    printer.hold();
    const sim::EvalResult r = session.eval(calc);
    printer.result(r);
    printer.release();
}

const char* const kCommands =
    ".help              this list\n"
    ".quit              end fmsim (also .exit, or the end of the input)\n"
    ".idle SECONDS      send safe idle calls for SECONDS, running the scripts that fall due\n"
    ".scripts           the current file's scripts\n"
    ".vars              the current file's $$ variables and the $ variables of calculations\n"
    ".files             the open files, the current one first\n"
    "A calculation goes on in the next line while a bracket, quotation or comment is open.\n";

void listVariables(const std::shared_ptr<sim::Variables>& variables) {
    if (!variables) return;
    for (const auto& [name, value] : variables->list()) {
        sim::Value shown = value;
        std::string text = sim::toUtf8(shown.textForm().units());
        for (char& c : text) {
            if (c == '\r') c = '\n';
        }
        std::cout << sim::toUtf8(name) << " = " << text << '\n';
    }
}

// The dot-commands of the interactive shell (and of piped input); false for .quit.
bool runCommand(sim::Session& session, const Messages& messages, const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string argument;
    words >> command >> argument;
    sim::Host& host = session.host();
    const std::u16string current = host.currentFile();
    if (command == ".quit" || command == ".exit") return false;
    if (command == ".help") {
        std::cout << kCommands;
    } else if (command == ".idle") {
        char* end = nullptr;
        const double seconds = std::strtod(argument.c_str(), &end);
        if (argument.empty() || *end != '\0' || !(seconds >= 0 && seconds <= 86400)) {
            messages.line(".idle needs a number of seconds (0 to 86400), not \"" + argument + "\"");
        } else {
            session.idleFor(std::chrono::milliseconds(static_cast<long long>(seconds * 1000)));
        }
    } else if (command == ".scripts") {
        for (const std::u16string& name :
             host.scriptNames(current).value_or(std::vector<std::u16string>{})) {
            std::cout << sim::toUtf8(name) << '\n';
        }
    } else if (command == ".vars") {
        listVariables(host.fileGlobals(current));
        listVariables(host.fileLocals(current));
    } else if (command == ".files") {
        for (const std::u16string& name : host.databaseNames()) {
            std::cout << sim::toUtf8(name) << (name == current ? " (current)" : "") << '\n';
        }
    } else {
        messages.line("unknown command " + command + " (.help lists the commands)");
    }
    std::cout.flush();
    return true;
}

void readCalculations(sim::Session& session, Printer& printer, const Messages& messages) {
    const bool terminal = isatty(STDIN_FILENO) && isatty(STDOUT_FILENO);
    fmsim::InputActions actions;
    actions.evaluate = [&](const std::string& calc) { evaluate(session, printer, calc); };
    actions.command = [&](const std::string& line) { return runCommand(session, messages, line); };
    actions.idle = [&] {
        printer.setAtPrompt(terminal);
        session.idle(kFMXT_UserIdle);
        const bool printed = printer.printedAtPrompt() > 0;
        printer.setAtPrompt(false);
        return printed;
    };
    fmsim::readInput(actions, terminal);
}

}  // namespace

int main(int argc, char** argv) {
    fmsim::Options options;
    Messages messages;
    try {
        options = fmsim::parseArguments(std::vector<std::string>(argv + 1, argv + argc));
        if (options.help) {
            std::cout << fmsim::kUsage;
            return 0;
        }
        if (options.version) {
            std::cout << "fmsim " << FMSIM_VERSION << " (substitute FileMaker host, SQLite "
                      << sqlite3_libversion() << ")\n";
            return 0;
        }
        if (options.session.pluginPath.empty()) options.session.pluginPath = defaultPluginPath();
        if (!std::filesystem::exists(options.session.pluginPath)) {
            throw fmsim::UsageError("plug-in not found: " + options.session.pluginPath);
        }
        if (!options.seedPath.empty()) {
            options.session.seedSql = readSeed(options.seedPath);
            options.session.seedName = "--seed " + options.seedPath;
        }
        // Like the sqlite3 shell: a database that does not exist yet is created; a directory
        // that does not exist, or a file that is not a database, is an error.
        options.session.createDb = true;
        messages.redirectLog(options.logPath, options.quiet);
    } catch (const fmsim::UsageError& e) {
        std::cerr << "fmsim: " << e.what() << " (fmsim --help lists the options)\n";
        return kExitUsage;
    }

    Printer printer(options.json, messages);
    options.session.onScriptRun = [&printer](const sim::ScriptRunRecord& run) {
        printer.scriptRun(run);
    };
    std::unique_ptr<sim::Session> session;
    try {
        session = std::make_unique<sim::Session>(options.session);
    } catch (const sim::SessionError& e) {
        messages.line(e.what());
        return kExitUsage;
    }
    if (session->initResult() != kStarted) {
        if (options.json) {
            std::cout << sim::json::initLine(session->initResult()) << std::endl;
        } else {
            messages.line("the plug-in did not start: initialise answered " +
                          std::to_string(session->initResult()) + " (57 means started)");
        }
        return kExitInitFailed;
    }

    if (!options.concurrent.empty()) {
        try {
            for (const fmsim::Tally& t : fmsim::runConcurrently(*session, options.concurrent,
                                                                options.threads, options.repeat)) {
                printer.tally(t);
            }
        } catch (const std::exception& e) {  // no thread or memory left
            messages.line(std::string("the -t threads could not run: ") + e.what());
            return kExitThreadsFailed;
        }
    }
    if (options.calculations.empty() && options.concurrent.empty()) {
        readCalculations(*session, printer, messages);
    } else {
        for (const std::string& calc : options.calculations) evaluate(*session, printer, calc);
    }
    if (options.idleSeconds > 0) {
        session->idleFor(std::chrono::milliseconds(
            static_cast<long long>(std::min(options.idleSeconds, 1e9) * 1000.0 + 0.5)));
    }
    return 0;
}

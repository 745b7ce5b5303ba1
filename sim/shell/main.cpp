// fmsim: the substitute host's shell. Loads the plug-in into a session and evaluates
// calculations from the command line or standard input.
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
#include "sim/shell/commands.h"
#include "sim/shell/concurrent.h"
#include "sim/shell/input.h"
#include "sim/shell/interrupt.h"
#include "sim/shell/options.h"
#include "sim/shell/output.h"

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

using fmsim::errorShown;

// Prints results and script runs. A script started by a calculation runs before the
// calculation's result comes back from the session, but it is printed after that result.
// Script runs may come from the -t threads.
class Printer {
public:
    Printer(bool json, fmsim::Output& output)
        : json_(json), terminal_(output.resultsToTerminal()), output_(output) {}

    // Plain output keeps one line per result; where a syntax error was found and what the host
    // adds (SQLite's message, the unknown name) go to standard error.
    void result(const sim::EvalResult& r) {
        if (json_) {
            out() << sim::json::resultLine(r.type, r.text, r.error, r.message, r.detail, r.position)
                  << '\n';
            out().flush();
            return;
        }
        out() << (r.error != 0 ? errorShown(r.error) : forDisplay(r.text)) << '\n';
        out().flush();
        if (r.position > 0) {
            std::string where = "error " + std::to_string(r.error) + " at ";
            if (r.line > 1) where += "line " + std::to_string(r.line) + ", ";
            where += "character " + std::to_string(r.line > 1 ? r.column : r.position);
            output_.message(r.detail.empty() ? where : where + ": " + r.detail);
        } else if (!r.detail.empty()) {
            output_.message(r.detail);
        }
    }

    // A terminal echoes Ctrl-C as "^C" where the cursor is: the next line starts afresh.
    void afterEcho() {
        if (terminal_) out() << '\n';
    }

    void tally(const fmsim::Tally& t) {
        out() << (json_ ? fmsim::jsonLine(t) : fmsim::plainLine(t, terminal_)) << std::endl;
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
            if (atPrompt_) out() << "\r\x1b[K";
            out() << line << std::endl;
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
        for (const std::string& line : held_) out() << line << '\n';
        held_.clear();
        out().flush();
    }

private:
    std::ostream& out() { return output_.results(); }

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
    fmsim::Output& output_;
    std::mutex mutex_;
    bool holding_ = false;
    bool atPrompt_ = false;
    int printedAtPrompt_ = 0;
    std::vector<std::string> held_;
};

// Ctrl-C during the calculation fails it with error 1; one pressed before it started does not.
void evaluate(sim::Session& session, Printer& printer, fmsim::Output& output,
              const std::string& calc) {
    session.host().clearInterrupt();
    printer.hold();
    const sim::EvalResult r = session.eval(calc);
    if (session.host().interrupted()) printer.afterEcho();
    printer.result(r);
    printer.release();
    // What the plug-in printed meanwhile goes out now, in order with fmsim's messages.
    output.flush();
    session.host().clearInterrupt();
    fmsim::interruptTaken();
}

void readCalculations(sim::Session& session, Printer& printer, fmsim::Output& output, bool json) {
    const bool terminal = isatty(STDIN_FILENO) && output.resultsToTerminal();
    const fmsim::CommandScope scope{session, output, json, output.resultsToTerminal()};
    fmsim::InputActions actions;
    actions.evaluate = [&](const std::string& calc) { evaluate(session, printer, output, calc); };
    actions.command = [&](const std::string& line) {
        return fmsim::runCommand(scope, line) == fmsim::CommandResult::Continue;
    };
    actions.idle = [&] {
        printer.setAtPrompt(terminal);
        session.idle(kFMXT_UserIdle);
        output.flush();
        const bool printed = printer.printedAtPrompt() > 0;
        printer.setAtPrompt(false);
        return printed;
    };
    actions.takeInterrupt = [&] {
        if (!session.host().interruptFlag().exchange(false)) return false;
        fmsim::interruptTaken();
        return true;
    };
    if (terminal) {
        actions.terminalOut = output.resultFile();
        actions.terminalErr = output.messageFile();
    }
    fmsim::readInput(actions, terminal);
}

}  // namespace

int main(int argc, char** argv) {
    fmsim::Options options;
    fmsim::Output output;
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
        output.separate(options.logPath, options.quiet);
    } catch (const fmsim::UsageError& e) {
        std::cerr << "fmsim: " << e.what() << " (fmsim --help lists the options)\n";
        return kExitUsage;
    }

    Printer printer(options.json, output);
    options.session.onScriptRun = [&printer](const sim::ScriptRunRecord& run) {
        printer.scriptRun(run);
    };
    std::unique_ptr<sim::Session> session;
    try {
        session = std::make_unique<sim::Session>(options.session);
    } catch (const sim::SessionError& e) {
        output.message(e.what());
        return kExitUsage;
    }
    if (session->initResult() != kStarted) {
        if (options.json) {
            output.results() << sim::json::initLine(session->initResult()) << std::endl;
        } else {
            output.message("the plug-in did not start: initialise answered " +
                           std::to_string(session->initResult()) + " (57 means started)");
        }
        return kExitInitFailed;
    }

    fmsim::catchInterrupts(session->host().interruptFlag());
    if (!options.concurrent.empty()) {
        try {
            for (const fmsim::Tally& t : fmsim::runConcurrently(*session, options.concurrent,
                                                                options.threads, options.repeat)) {
                printer.tally(t);
            }
        } catch (const std::exception& e) {  // no thread or memory left
            output.message(std::string("the -t threads could not run: ") + e.what());
            return kExitThreadsFailed;
        }
    }
    if (options.calculations.empty() && options.concurrent.empty()) {
        readCalculations(*session, printer, output, options.json);
    } else {
        for (const std::string& calc : options.calculations) {
            evaluate(*session, printer, output, calc);
        }
    }
    if (options.idleSeconds > 0) {
        session->idleFor(
            std::chrono::milliseconds(static_cast<long long>(options.idleSeconds * 1000.0 + 0.5)));
    }
    output.flush();
    return 0;
}

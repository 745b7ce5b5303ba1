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

#include "sim/session/json.h"
#include "sim/session/session.h"
#include "sim/shell/concurrent.h"
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

// "? (error 1203: Unexpected end of calculation)", as a failed calculation prints.
std::string errorShown(short code) { return fmsim::errorShown(code); }

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
            std::cout << line << std::endl;
        }
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
    std::vector<std::string> held_;
};

void evaluate(sim::Session& session, Printer& printer, const std::string& calc) {
    printer.hold();
    const sim::EvalResult r = session.eval(calc);
    printer.result(r);
    printer.release();
}

void readCalculations(sim::Session& session, Printer& printer) {
    const bool interactive = isatty(STDIN_FILENO);
    std::string line;
    for (;;) {
        if (interactive) std::cout << "fmsim> " << std::flush;
        if (!std::getline(std::cin, line)) break;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        evaluate(session, printer, line);
    }
    if (interactive) std::cout << '\n';
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
        readCalculations(*session, printer);
    } else {
        for (const std::string& calc : options.calculations) evaluate(*session, printer, calc);
    }
    if (options.idleSeconds > 0) {
        session->idleFor(std::chrono::milliseconds(
            static_cast<long long>(std::min(options.idleSeconds, 1e9) * 1000.0 + 0.5)));
    }
    return 0;
}

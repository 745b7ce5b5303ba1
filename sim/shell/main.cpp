// fmsim: the substitute host's shell. Loads the plug-in into a session and evaluates
// calculations from the command line or standard input.
#include <unistd.h>

#include <algorithm>
#include <chrono>
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

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw fmsim::UsageError("cannot read " + path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Prints results and script runs. A script started by a calculation runs before the
// calculation's result comes back from the session, but it is printed after that result.
// Script runs may come from the -t threads.
class Printer {
public:
    explicit Printer(bool json) : json_(json), terminal_(isatty(STDOUT_FILENO)) {}

    void result(const sim::EvalResult& r) {
        if (json_) {
            std::cout << sim::json::resultLine(r.type, r.text, r.error) << '\n';
        } else if (r.error != 0) {
            std::cout << "? (error " << r.error << ")\n";
        } else {
            std::cout << forDisplay(r.text) << '\n';
        }
        std::cout.flush();
    }

    void tally(const fmsim::Tally& t) {
        std::cout << (json_ ? fmsim::jsonLine(t) : fmsim::plainLine(t, terminal_)) << std::endl;
    }

    void scriptRun(const sim::ScriptRunRecord& run) {
        std::string line = json_ ? sim::json::scriptLine(run.script, run.file, run.parameter)
                                 : "script " + run.script + " in " + run.file +
                                       " with parameter \"" + forDisplay(run.parameter) + "\"";
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
    try {
        options = fmsim::parseArguments(std::vector<std::string>(argv + 1, argv + argc));
        if (options.help) {
            std::cout << fmsim::kUsage;
            return 0;
        }
        if (options.session.pluginPath.empty()) options.session.pluginPath = defaultPluginPath();
        if (!std::filesystem::exists(options.session.pluginPath)) {
            throw fmsim::UsageError("plug-in not found: " + options.session.pluginPath);
        }
        if (!options.seedPath.empty()) options.session.seedSql = readFile(options.seedPath);
        // Like the sqlite3 shell: a database that does not exist yet is created; a directory
        // that does not exist, or a file that is not a database, is an error.
        options.session.createDb = true;
    } catch (const fmsim::UsageError& e) {
        std::cerr << "fmsim: " << e.what() << " (fmsim --help lists the options)\n";
        return kExitUsage;
    }

    Printer printer(options.json);
    options.session.onScriptRun = [&printer](const sim::ScriptRunRecord& run) {
        printer.scriptRun(run);
    };
    std::unique_ptr<sim::Session> session;
    try {
        session = std::make_unique<sim::Session>(options.session);
    } catch (const sim::SessionError& e) {
        std::cerr << "fmsim: " << e.what() << '\n';
        return kExitUsage;
    }
    if (session->initResult() != kStarted) {
        if (options.json) {
            std::cout << sim::json::initLine(session->initResult()) << std::endl;
        } else {
            std::cerr << "fmsim: the plug-in did not start: initialise answered "
                      << session->initResult() << " (57 means started)\n";
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
            std::cerr << "fmsim: the -t threads could not run: " << e.what() << '\n';
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

#include "sim/shell/options.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace fmsim {

const char* const kUsage =
    "usage: fmsim [options] [-t CALC]... [-e CALC]...\n"
    "  --plugin PATH        plug-in to load (default: Ravelin.fmx beside fmsim)\n"
    "  --file NAME          name of the current file (default Demo)\n"
    "  --db PATH            SQLite database holding the current file's tables (default: empty, "
    "in memory)\n"
    "  --seed FILE          run the SQL in FILE on the current file's database first\n"
    "  --open NAME          another open file, listed by DatabaseNames after the current one "
    "(repeatable)\n"
    "  --script NAME=CALC   a script of the current file; running it evaluates CALC with "
    "Get ( ScriptParameter ) set (repeatable)\n"
    "  --host-version N     host version sent at initialise (default 77)\n"
    "  --refuse ID          the host refuses to register function id ID (repeatable)\n"
    "  --idle SECONDS       after the calculations, send safe idle calls for SECONDS and run "
    "started scripts\n"
    "  --json               JSON lines output\n"
    "  -e CALC              evaluate CALC; several are evaluated in order in one session\n"
    "  -t CALC              evaluate CALC on every thread at once, before the -e calculations; "
    "several are evaluated in order (repeatable)\n"
    "  --threads N          threads evaluating the -t calculations, each with its own \"$\" "
    "variables (default 1)\n"
    "  --repeat K           times each thread evaluates the -t calculations (default 1)\n"
    "  (no -e, no -t)       read calculations from standard input, one per line\n"
    "Each -t calculation prints one line once every thread has finished: the calculation, then "
    "for each\n"
    "distinct result a tab, the result as -e prints it, and \" xCOUNT\"; most frequent first. "
    "With --json:\n"
    "{\"calc\": C, \"results\": [{\"type\": T, \"text\": S, \"error\": N, \"count\": K}, "
    "...]}\n";

namespace {

short parseShort(const std::string& option, const std::string& text) {
    int value = 0;
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    if (ec != std::errc() || ptr != end || text.empty() ||
        value < std::numeric_limits<short>::min() || value > std::numeric_limits<short>::max()) {
        throw UsageError(option + " needs a whole number, not \"" + text + "\"");
    }
    return static_cast<short>(value);
}

int parseCount(const std::string& option, const std::string& text, int max) {
    int value = 0;
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    if (ec != std::errc() || ptr != end || text.empty() || value < 1 || value > max) {
        throw UsageError(option + " needs a whole number from 1 to " + std::to_string(max) +
                         ", not \"" + text + "\"");
    }
    return value;
}

double parseSeconds(const std::string& option, const std::string& text) {
    std::size_t used = 0;
    double value = 0;
    try {
        value = std::stod(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size() || !std::isfinite(value) || value < 0) {
        throw UsageError(option + " needs a number of seconds, not \"" + text + "\"");
    }
    return value;
}

}  // namespace

Options parseArguments(const std::vector<std::string>& args) {
    Options o;
    bool threadsGiven = false;
    bool repeatGiven = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string option = args[i];
        std::optional<std::string> inlineValue;
        if (option.starts_with("--")) {
            if (auto eq = option.find('='); eq != std::string::npos) {
                inlineValue = option.substr(eq + 1);
                option.resize(eq);
            }
        }
        auto value = [&]() -> std::string {
            if (inlineValue) return *inlineValue;
            if (i + 1 >= args.size()) throw UsageError(option + " needs a value");
            return args[++i];
        };
        auto noValue = [&] {
            if (inlineValue) throw UsageError(option + " takes no value");
        };

        if (option == "-e") {
            o.calculations.push_back(value());
        } else if (option == "-t") {
            o.concurrent.push_back(value());
        } else if (option == "--threads") {
            o.threads = parseCount(option, value(), kMaxThreads);
            threadsGiven = true;
        } else if (option == "--repeat") {
            o.repeat = parseCount(option, value(), std::numeric_limits<int>::max());
            repeatGiven = true;
        } else if (option == "--plugin") {
            o.session.pluginPath = value();
            if (o.session.pluginPath.empty()) throw UsageError("--plugin needs a path");
        } else if (option == "--file") {
            o.session.fileName = value();
            if (o.session.fileName.empty()) throw UsageError("--file needs a name");
        } else if (option == "--db") {
            o.session.dbPath = value();
            if (o.session.dbPath.empty()) throw UsageError("--db needs a path");
        } else if (option == "--seed") {
            o.seedPath = value();
        } else if (option == "--open") {
            std::string name = value();
            if (name.empty()) throw UsageError("--open needs a file name");
            o.session.otherFiles.push_back(name);
        } else if (option == "--script") {
            const std::string spec = value();
            const auto eq = spec.find('=');
            if (eq == std::string::npos || eq == 0) {
                throw UsageError("--script needs NAME=CALC, not \"" + spec + "\"");
            }
            o.session.scripts.emplace_back(spec.substr(0, eq), spec.substr(eq + 1));
        } else if (option == "--host-version") {
            o.session.hostVersion = parseShort(option, value());
        } else if (option == "--refuse") {
            o.session.refusedIds.push_back(parseShort(option, value()));
        } else if (option == "--idle") {
            o.idleSeconds = parseSeconds(option, value());
        } else if (option == "--json") {
            noValue();
            o.json = true;
        } else if (option == "--help" || option == "-h") {
            noValue();
            o.help = true;
        } else {
            throw UsageError("unknown option " + option);
        }
    }
    if (o.concurrent.empty() && (threadsGiven || repeatGiven)) {
        throw UsageError(std::string(threadsGiven ? "--threads" : "--repeat") +
                         " needs at least one -t calculation");
    }
    return o;
}

}  // namespace fmsim

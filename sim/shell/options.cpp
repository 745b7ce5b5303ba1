#include "sim/shell/options.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "sim/core/encoding.h"
#include "sim/core/text.h"

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
    "  --record TABLE=ROWID the current record of TABLE in the current file (repeatable; the last\n"
    "                       one's table is the current table)\n"
    "  --idle SECONDS       after the calculations, send safe idle calls for SECONDS (0 to 86400) "
    "and run\n"
    "                       started scripts\n"
    "  --json               JSON lines output\n"
    "  --log FILE           append what the plug-in writes to standard output and error to FILE\n"
    "                       (default: fmsim's standard error; results stay on standard output)\n"
    "  --quiet              drop what the plug-in writes\n"
    "  --version            print fmsim's version\n"
    "  -e CALC              evaluate CALC; several are evaluated in order in one session\n"
    "  -t CALC              evaluate CALC on every thread at once, before the -e calculations; "
    "several are evaluated in order (repeatable)\n"
    "  --threads N          threads evaluating the -t calculations, each with its own \"$\" "
    "variables (default 1)\n"
    "  --repeat K           times each thread evaluates the -t calculations (default 1)\n"
    "  (no -e, no -t)       read calculations from standard input, one per line; on a terminal\n"
    "                       an interactive shell (.help lists its commands)\n"
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

// "Table=ROWID".
std::pair<std::string, int64_t> parseRecord(const std::string& text) {
    const auto eq = text.rfind('=');
    int64_t rowid = 0;
    if (eq != std::string::npos && eq > 0) {
        const char* end = text.data() + text.size();
        auto [ptr, ec] = std::from_chars(text.data() + eq + 1, end, rowid);
        if (ec == std::errc() && ptr == end && eq + 1 < text.size()) {
            return {text.substr(0, eq), rowid};
        }
    }
    throw UsageError("--record needs TABLE=ROWID, not \"" + text + "\"");
}

constexpr const char* kOptionNames[] = {
    "--plugin", "--file", "--db",   "--seed", "--open",   "--script",  "--host-version",
    "--refuse", "--idle", "--json", "--log",  "--quiet",  "--version", "--threads",
    "--repeat", "--help", "-e",     "-t",     "--record",
};

std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// File and script names match ignoring case, as the host compares them.
std::u16string folded(const std::string& name) { return sim::toLower(sim::fromUtf8(name)); }

}  // namespace

std::optional<double> idleSeconds(const std::string& text) {
    std::size_t used = 0;
    double value = 0;
    try {
        value = std::stod(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size() || !(value >= 0 && value <= kMaxIdleSeconds)) {
        return std::nullopt;
    }
    return value;
}

std::string idleSecondsWanted(const std::string& text) {
    return "needs a number of seconds (0 to 86400), not \"" + text + "\"";
}

std::string closestOption(const std::string& typed) {
    std::string best;
    std::size_t bestDistance = 3;  // further than two edits is another word
    for (const char* name : kOptionNames) {
        const std::size_t d = editDistance(typed, name);
        if (d < bestDistance) {
            bestDistance = d;
            best = name;
        }
    }
    return best;
}

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
            if (o.seedPath.empty()) throw UsageError("--seed needs a file");
        } else if (option == "--open") {
            std::string name = value();
            if (name.empty()) throw UsageError("--open needs a file name");
            o.session.otherFiles.push_back(name);
        } else if (option == "--script") {
            const std::string definition = value();
            const auto eq = definition.find('=');
            if (eq == std::string::npos || eq == 0) {
                throw UsageError("--script needs NAME=CALC, not \"" + definition + "\"");
            }
            const std::string name = definition.substr(0, eq);
            for (const auto& [given, calc] : o.session.scripts) {
                if (folded(given) == folded(name)) {
                    throw UsageError("--script " + name + ": a script named " + given +
                                     " is already given (names ignore case)");
                }
            }
            o.session.scripts.emplace_back(name, definition.substr(eq + 1));
        } else if (option == "--host-version") {
            o.session.hostVersion = parseShort(option, value());
        } else if (option == "--refuse") {
            o.session.refusedIds.push_back(parseShort(option, value()));
        } else if (option == "--idle") {
            const std::string text = value();
            const std::optional<double> seconds = idleSeconds(text);
            if (!seconds) throw UsageError("--idle " + idleSecondsWanted(text));
            o.idleSeconds = *seconds;
        } else if (option == "--record") {
            o.session.records.push_back(parseRecord(value()));
        } else if (option == "--json") {
            noValue();
            o.json = true;
        } else if (option == "--log") {
            o.logPath = value();
            if (o.logPath.empty()) throw UsageError("--log needs a file");
        } else if (option == "--quiet") {
            noValue();
            o.quiet = true;
        } else if (option == "--version") {
            noValue();
            o.version = true;
        } else if (option == "--help" || option == "-h") {
            noValue();
            o.help = true;
        } else if (!option.starts_with("-") || option == "-") {
            throw UsageError("\"" + args[i] + "\" is not an option; to evaluate it, write -e '" +
                             args[i] + "'");
        } else {
            const std::string near = closestOption(option);
            throw UsageError("unknown option " + option +
                             (near.empty() ? std::string() : " (did you mean " + near + "?)"));
        }
    }
    if (!o.logPath.empty() && o.quiet) throw UsageError("--log and --quiet exclude each other");
    // Every open file needs a name of its own.
    std::vector<std::string> files{o.session.fileName};
    for (const std::string& name : o.session.otherFiles) {
        for (const std::string& open : files) {
            if (folded(open) == folded(name)) {
                throw UsageError("--open " + name + ": a file named " + open +
                                 " is already open (names ignore case)");
            }
        }
        files.push_back(name);
    }
    if (o.concurrent.empty() && (threadsGiven || repeatGiven)) {
        throw UsageError(std::string(threadsGiven ? "--threads" : "--repeat") +
                         " needs at least one -t calculation");
    }
    return o;
}

}  // namespace fmsim

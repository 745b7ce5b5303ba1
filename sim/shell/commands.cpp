#include "sim/shell/commands.h"

#include <charconv>
#include <chrono>
#include <sstream>
#include <vector>

#include "sim/core/encoding.h"
#include "sim/session/json.h"
#include "sim/shell/options.h"

namespace fmsim {

const char* const kCommandHelp =
    ".help              this list\n"
    ".quit              end fmsim (also .exit, or the end of the input)\n"
    ".cancel            drop a calculation left open over several lines (as Ctrl-C does)\n"
    ".idle SECONDS      send safe idle calls for SECONDS (0 to 86400), running the scripts\n"
    "                   that fall due (Ctrl-C ends the wait)\n"
    ".scripts           the current file's scripts\n"
    ".vars              the current file's $$ variables and the $ variables of calculations\n"
    ".files             the open files, the current one first\n"
    ".record            the current records; .record TABLE=ROWID chooses one\n"
    "A calculation goes on in the next line while a bracket, quotation or comment is open.\n";

namespace {

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string w; in >> w;) words.push_back(w);
    return words;
}

std::string commandOf(const std::string& line) {
    const std::vector<std::string> words = wordsOf(line);
    return words.empty() ? std::string() : words[0];
}

std::string utf8(std::u16string_view text) { return sim::toUtf8(text); }

class Command {
public:
    Command(const CommandScope& scope, const std::string& line)
        : scope_(scope), words_(wordsOf(line)), host_(scope.session.host()) {}

    CommandResult run() {
        const std::string& name = words_[0];
        if (name == ".quit" || name == ".exit") return CommandResult::Quit;
        if (name == ".help") {
            help();
        } else if (name == ".cancel") {
            if (scope_.json) answer("{\"cancel\": true}");
        } else if (name == ".idle") {
            idle();
        } else if (name == ".scripts") {
            scripts();
        } else if (name == ".vars") {
            vars();
        } else if (name == ".files") {
            files();
        } else if (name == ".record") {
            record();
        } else {
            fail("unknown command " + name + " (.help lists the commands)");
        }
        scope_.output.results().flush();
        return CommandResult::Continue;
    }

private:
    std::ostream& out() { return scope_.output.results(); }
    void answer(const std::string& jsonLine) { out() << jsonLine << '\n'; }
    std::string argument() const { return words_.size() > 1 ? words_[1] : std::string(); }

    // A mistake: plain on standard error, or a JSON line naming the command.
    void fail(const std::string& message) {
        if (scope_.json) {
            answer("{\"command\": " + sim::json::quote(words_[0]) +
                   ", \"error\": " + sim::json::quote(message) + "}");
        } else {
            scope_.output.message(message);
        }
    }

    std::string shown(std::string text) const {
        if (scope_.terminal) {
            for (char& c : text) {
                if (c == '\r') c = '\n';
            }
        }
        return text;
    }

    void help() {
        if (scope_.json) {
            answer("{\"help\": " + sim::json::quote(kCommandHelp) + "}");
        } else {
            out() << kCommandHelp;
        }
    }

    void idle() {
        const std::optional<double> wanted = idleSeconds(argument());
        if (!wanted || words_.size() > 2) {
            fail(".idle " + idleSecondsWanted(argument()));
            return;
        }
        scope_.session.idleFor(
            std::chrono::milliseconds(static_cast<long long>(*wanted * 1000 + 0.5)));
        const bool interrupted = host_.interrupted();
        host_.clearInterrupt();
        if (interrupted && scope_.terminal) out() << '\n';  // after the terminal's "^C"
        if (scope_.json) {
            std::ostringstream seconds;
            seconds << *wanted;
            answer("{\"idle\": " + seconds.str() +
                   (interrupted ? ", \"interrupted\": true}" : "}"));
        }
    }

    void scripts() {
        const std::u16string file = host_.currentFile();
        std::string list;
        for (const std::u16string& name :
             host_.scriptNames(file).value_or(std::vector<std::u16string>{})) {
            if (scope_.json) {
                list += (list.empty() ? "" : ", ") + sim::json::quote(utf8(name));
            } else {
                out() << utf8(name) << '\n';
            }
        }
        if (scope_.json) answer("{\"scripts\": [" + list + "]}");
    }

    void vars() {
        const std::u16string file = host_.currentFile();
        std::string list;
        for (const auto& variables : {host_.fileGlobals(file), host_.fileLocals(file)}) {
            if (!variables) continue;
            for (const auto& [name, value] : variables->list()) {
                sim::Value v = value;
                const std::string text = utf8(v.textForm().units());
                if (scope_.json) {
                    list += std::string(list.empty() ? "" : ", ") +
                            "{\"name\": " + sim::json::quote(utf8(name)) +
                            ", \"type\": " + sim::json::quote(sim::typeName(v.type())) +
                            ", \"text\": " + sim::json::quote(text) + "}";
                } else {
                    out() << utf8(name) << " = " << shown(text) << '\n';
                }
            }
        }
        if (scope_.json) answer("{\"vars\": [" + list + "]}");
    }

    void files() {
        const std::u16string current = host_.currentFile();
        std::string list;
        for (const std::u16string& name : host_.databaseNames()) {
            if (scope_.json) {
                list += std::string(list.empty() ? "" : ", ") +
                        "{\"name\": " + sim::json::quote(utf8(name)) +
                        ", \"current\": " + (name == current ? "true" : "false") + "}";
            } else {
                out() << utf8(name) << (name == current ? " (current)" : "") << '\n';
            }
        }
        if (scope_.json) answer("{\"files\": [" + list + "]}");
    }

    // ".record" lists the current records; ".record TABLE=ROWID" chooses one.
    void record() {
        const std::u16string file = host_.currentFile();
        if (words_.size() > 2) {
            fail(".record needs TABLE=ROWID, or nothing to list the current records");
            return;
        }
        if (words_.size() == 2) {
            const std::string& given = argument();
            const auto eq = given.rfind('=');
            int64_t rowid = 0;
            const char* end = given.data() + given.size();
            const auto parsed = eq == std::string::npos
                                    ? std::from_chars_result{end, std::errc::invalid_argument}
                                    : std::from_chars(given.data() + eq + 1, end, rowid);
            if (eq == 0 || eq == std::string::npos || eq + 1 == given.size() ||
                parsed.ec != std::errc() || parsed.ptr != end) {
                fail(".record needs TABLE=ROWID, not \"" + given + "\"");
                return;
            }
            const std::string wrong =
                host_.setCurrentRecord(file, sim::fromUtf8(given.substr(0, eq)), rowid);
            if (!wrong.empty()) {
                fail(".record " + given + ": " + wrong);
                return;
            }
            if (!scope_.json) return;
        }
        std::string list;
        for (const sim::Host::RecordChoice& choice : host_.currentRecords(file)) {
            if (scope_.json) {
                list += std::string(list.empty() ? "" : ", ") +
                        "{\"table\": " + sim::json::quote(utf8(choice.table)) +
                        ", \"record\": " + std::to_string(choice.rowid) +
                        ", \"current\": " + (choice.current ? "true" : "false") + "}";
            } else {
                out() << utf8(choice.table) << '=' << choice.rowid
                      << (choice.current ? " (current)" : "") << '\n';
            }
        }
        if (scope_.json) answer("{\"records\": [" + list + "]}");
    }

    const CommandScope& scope_;
    std::vector<std::string> words_;
    sim::Host& host_;
};

}  // namespace

CommandResult runCommand(const CommandScope& scope, const std::string& line) {
    return Command(scope, line).run();
}

bool dropsOpenCalculation(const std::string& line) {
    const std::string name = commandOf(line);
    return wordsOf(line).size() == 1 && (name == ".cancel" || quits(line));
}

bool quits(const std::string& line) {
    const std::string name = commandOf(line);
    return name == ".quit" || name == ".exit";
}

}  // namespace fmsim

// fmsim's standard input: calculations one per line (continued while a bracket, quotation or
// comment is open), dot-commands, and safe idle calls between lines. On a terminal (input and
// output both) lines are edited with libedit, Ctrl-C drops the line being typed and any open
// calculation, and whole calculations are kept in a history file.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace fmsim {

struct InputActions {
    std::function<void(const std::string& calc)> evaluate;
    // A dot-command line; false ends the input (.quit).
    std::function<bool(const std::string& line)> command;
    // One safe idle call and the scripts it made due; true when something was printed.
    std::function<bool()> idle;
    // Whether the user pressed Ctrl-C since the last time this was asked.
    std::function<bool()> takeInterrupt = [] { return false; };
    // Where the interactive shell writes its prompt, echo and messages.
    FILE* terminalOut = stdout;
    FILE* terminalErr = stderr;
};

// A history entry longer than this (a pasted document, say) is not kept.
constexpr std::size_t kMaxHistoryEntryBytes = 16384;
constexpr int kHistoryEntries = 1000;

// Lines joined into one calculation while something is open in it.
struct Pending {
    std::string calc;   // lines joined with a return, as the calculation reads them
    std::string typed;  // lines joined with a line feed, as typed (for the history)

    bool empty() const { return calc.empty(); }
    void add(const std::string& line);
    void clear();
};

// What a line of input did.
struct Fed {
    bool more = true;  // false: the input ends (.quit)
    // A calculation now evaluated or a command, as typed (for the history); empty otherwise.
    std::string finished;
};

// Takes one line: a dot-command, a part of a calculation, or its last line (then evaluated).
// While a calculation is open, ".cancel" drops it and ".quit" / ".exit" drop it and end.
Fed feed(const InputActions& actions, Pending& pending, std::string line);

// True while `calc` has an open parenthesis or bracket, text constant or block comment, so that
// the calculation goes on in the next line.
bool continues(std::string_view calc);

// A line that is a dot-command: "." then a letter (".5" is a number).
bool isCommand(std::string_view line);

// Where the history is kept: $FMSIM_HISTORY when set (empty: nowhere), else ~/.fmsim_history;
// empty when there is no home either.
std::string historyPath();

// Reads until the end of the input or .quit. `terminal`: with the prompt, line editing and
// history, idle calls while waiting for a key; otherwise an idle call after each line.
void readInput(const InputActions& actions, bool terminal);

}  // namespace fmsim

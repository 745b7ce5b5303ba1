// fmsim's dot-commands (.help, .vars, .record, ...), on a terminal and in piped input alike. With
// --json every command answers one JSON line on standard output; otherwise plain lines, and
// mistakes go to standard error.
#pragma once

#include <string>

#include "sim/session/session.h"
#include "sim/shell/output.h"

namespace fmsim {

struct CommandScope {
    sim::Session& session;
    Output& output;
    bool json = false;
    bool terminal = false;  // returns inside values shown as line breaks
};

enum class CommandResult { Continue, Quit };

CommandResult runCommand(const CommandScope& scope, const std::string& line);

// Names of the commands that still work while a calculation is open over several lines: they
// drop the half-typed calculation (.cancel), or drop it and end (.quit, .exit).
bool dropsOpenCalculation(const std::string& line);
bool quits(const std::string& line);

extern const char* const kCommandHelp;

}  // namespace fmsim

// Ctrl-C in fmsim, as in the sqlite3 shell: SIGINT stops what runs (a calculation fails with
// error 1, an idle wait ends) and drops the line being typed, and the session goes on with its
// variables and pending scripts. Only when three come without the shell taking one (a plug-in
// call that does not return) does fmsim end, with exit code 130.
#pragma once

#include <atomic>

namespace fmsim {

// Installs the handler; it sets `flag`, which must outlive the process's use of it.
void catchInterrupts(std::atomic<bool>& flag);
// The shell has taken the interrupt (the count starts again).
void interruptTaken();

}  // namespace fmsim

// Stops for states that only a bug in this plug-in can reach, never a user's input. They hold in
// every build (unlike assert, which NDEBUG removes).
#pragma once

namespace fmlib {

// When `condition` is false: writes "Assertion failed: (expression), function F." to standard
// error and aborts the process.
void StopUnless(bool condition, const char* expression, const char* function);

}  // namespace fmlib

// The hooks behind the entry procedure's lifecycle calls.
#pragma once

#include "host/fmx_types.h"

// Runs before the functions are registered; false makes initialise decline (-2).
bool Startup();
void Shutdown();
void Preferences();

// Idle calls, by the host's idle kind: user idle (0) is the only time scheduled scripts start.
void SafeIdle();
void SemiSafeIdle(FMX_IdleLevel idleKind);
void UnsafeIdle();

// Which hook an idle call of `kind` runs: none before initialise (or after shutdown), the safe
// one for user idle (0), the unsafe one for 4, the semi-safe one for any other kind.
enum class IdleHook { kNone, kSafe, kSemiSafe, kUnsafe };
IdleHook idleHookFor(bool initialised, FMX_IdleLevel kind);

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

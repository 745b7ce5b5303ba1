// Process-wide state of the entry procedure.
#pragma once

#include <atomic>

#include "host/fmx_types.h"

// The parameter block of the entry call in progress (the host's start-script and environment
// callbacks are reached through it). Set before anything else on every entry call; atomic
// because a server host makes entry calls and function calls on different threads.
extern std::atomic<FMX_ExternCallPtr> gFMX_ExternCallPtr;

// True only between a successful initialise and the start of shutdown. Atomic because a server
// host may call into the plug-in from several threads.
extern std::atomic<bool> gPlugInInitialized;

// Set while the preferences hook runs, so that a nested preferences request does nothing.
extern std::atomic<bool> gPrefsOpen;

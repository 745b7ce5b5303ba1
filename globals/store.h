// The global store's process-wide objects. They are built when the plug-in is loaded and
// destroyed when it is unloaded; nothing is saved.
#pragma once

#include <atomic>

#include "globals/dictionary.h"

namespace rvl {

// Its operations hold gRecursiveMutex (globals/dictionary.h).
extern Dictionary globalDictionary;

// The interval for dropping values of closed files, set by Ravelin_Set "globalDieInterval".
// Kept as a setting only: nothing schedules that clean-up yet.
extern std::atomic<double> gCleanPeriod;

}  // namespace rvl

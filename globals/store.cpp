#include "globals/store.h"

namespace rvl {

// Same translation unit and this order: the mutex outlives the dictionary at unload.
fmlib::RecursiveMutex gRecursiveMutex;
Dictionary globalDictionary;
std::atomic<double> gCleanPeriod{60.0};

}  // namespace rvl

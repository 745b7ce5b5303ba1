#include "sim/session/heap_policy.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace sim {

void retainFreedMemory() {
#if defined(__GLIBC__)
    // Fixed values also switch off glibc's own adjustment of both thresholds.
    mallopt(M_MMAP_THRESHOLD, static_cast<int>(kHeapBlockLimit));
    mallopt(M_TRIM_THRESHOLD, static_cast<int>(kRetainedFreeLimit));
#endif
}

}  // namespace sim

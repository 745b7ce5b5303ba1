#include "fmlib/stop.h"

#include <cstdio>
#include <cstdlib>

namespace fmlib {

void StopUnless(bool condition, const char* expression, const char* function) {
    if (condition) return;
    std::fprintf(stderr, "Assertion failed: (%s), function %s.\n", expression, function);
    std::abort();
}

}  // namespace fmlib

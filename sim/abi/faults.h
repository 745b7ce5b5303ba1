// Fault injection for the host's C interface: makes chosen FM_* calls report failure through
// their failure record, so that the plug-in's exception frames can be exercised.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "host/fmx_types.h"

namespace sim::faults {

// The nth host call from now fails (n = 1: the next one) with `code` (1 or 2).
void failNthCall(uint64_t n, int code);
// Every call of the named function (for example "FM_Text_Assign") fails with `code`.
void failFunction(const std::string& name, int code);
// Also forgets the exceptions that reached the host (sim::functionEscapes()).
void clear();
// Host calls made since the last clear(); calls are counted only once a fault has been armed.
uint64_t callCount();

// The name of the function whose call the last armed fault made fail ("" when none has).
std::string lastFailedFunction();

// Set by the first failNthCall/failFunction and cleared only by clear(): an unarmed host (every
// run outside fault tests) pays one atomic load per call, inlined, and never writes shared state.
extern std::atomic<bool> armed;
bool armedCallFails(const char* function, fmx::_fmxcpt& x) noexcept;

// Called first by every FM_* function. True when this call must fail; the code is then stored in
// the record.
inline bool shouldFail(const char* function, fmx::_fmxcpt& x) noexcept {
    return armed.load(std::memory_order_acquire) && armedCallFails(function, x);
}

}  // namespace sim::faults

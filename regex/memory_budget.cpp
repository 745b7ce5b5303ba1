#include "regex/memory_budget.h"

#include <stdexcept>

#include "fmlib/mutex.h"

namespace rvl {

namespace {

struct Budget {
    fmlib::Mutex lock;
    std::size_t inUse GUARDED_BY(lock) = 0;
};

// Shared by every thread that substitutes; lives as long as the plug-in.
Budget& budget() {
    static Budget shared;
    return shared;
}

}  // namespace

RegexMemoryReservation::RegexMemoryReservation(std::size_t bytes) : bytes_(bytes) {
    Budget& b = budget();
    const fmlib::ScopedLock hold(b.lock);
    if (bytes > kRegexProcessBudget - b.inUse) throw std::runtime_error(kRegexMemoryBusy);
    b.inUse += bytes;
}

RegexMemoryReservation::~RegexMemoryReservation() {
    Budget& b = budget();
    const fmlib::ScopedLock hold(b.lock);
    b.inUse -= bytes_;
}

std::size_t RegexMemoryInUse() {
    Budget& b = budget();
    const fmlib::ScopedLock hold(b.lock);
    return b.inUse;
}

}  // namespace rvl

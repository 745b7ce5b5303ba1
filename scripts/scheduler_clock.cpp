#include "scripts/scheduler_clock.h"

namespace {
using Steady = std::chrono::steady_clock;
}  // namespace

std::chrono::nanoseconds SteadySchedulerClock::now() const {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Steady::now().time_since_epoch());
}

void SteadySchedulerClock::waitUntil(std::condition_variable& wake,
                                     std::unique_lock<std::mutex>& lock,
                                     std::optional<std::chrono::nanoseconds> due) const {
    if (!due) {
        wake.wait(lock);
        return;
    }
    wake.wait_until(lock, Steady::time_point(std::chrono::duration_cast<Steady::duration>(*due)));
}

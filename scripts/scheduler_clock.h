// The clock the script scheduler's timer runs on. Production uses the monotonic clock; tests
// use one they move by hand, so that no test waits for real delays.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

class SchedulerClock {
public:
    virtual ~SchedulerClock() = default;

    // Time since the clock's own epoch.
    virtual std::chrono::nanoseconds now() const = 0;

    // Blocks on `wake` (whose mutex `lock` holds) until the clock reaches `due`, or until
    // notified; with no due time, until notified. May return early (spuriously).
    virtual void waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                           std::optional<std::chrono::nanoseconds> due) const = 0;
};

// std::chrono::steady_clock.
class SteadySchedulerClock final : public SchedulerClock {
public:
    std::chrono::nanoseconds now() const override;
    void waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                   std::optional<std::chrono::nanoseconds> due) const override;
};

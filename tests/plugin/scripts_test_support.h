// A clock the tests move by hand, and a log that keeps what the scheduler wrote.
#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "scripts/scheduler_clock.h"

namespace scripts_test {

// Time moves only when the test says so; the test then wakes the timer itself.
class ManualClock : public SchedulerClock {
public:
    std::chrono::nanoseconds now() const override { return now_.load(); }
    void waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                   std::optional<std::chrono::nanoseconds>) const override {
        wake.wait(lock);
    }
    void set(std::chrono::nanoseconds t) { now_.store(t); }
    void advance(double seconds) {
        now_.store(now_.load() + std::chrono::nanoseconds(std::llround(seconds * 1e9)));
    }

private:
    std::atomic<std::chrono::nanoseconds> now_{std::chrono::nanoseconds(0)};
};

struct CapturedLog {
    void add(std::string_view line) {
        std::lock_guard lock(mutex);
        lines.emplace_back(line);
    }
    std::size_t count(std::string_view line) {
        std::lock_guard lock(mutex);
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }
    std::mutex mutex;
    std::vector<std::string> lines;
};

}  // namespace scripts_test

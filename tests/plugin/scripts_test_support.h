// A clock the tests move by hand, and a log that keeps what the scheduler wrote.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "scripts/scheduler_clock.h"

namespace scripts_test {

class ManualClock : public SchedulerClock {
public:
    std::chrono::nanoseconds now() const override { return now_.load(); }
    // Time only moves when the test says so, and the test then wakes the timer itself.
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

class CapturedLog {
public:
    void operator()(std::string_view line) {
        std::lock_guard lock(mutex_);
        lines_.emplace_back(line);
    }
    std::size_t count(std::string_view line) const {
        std::lock_guard lock(mutex_);
        return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
    }
    std::vector<std::string> lines() const {
        std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace scripts_test

// When a request scheduled `delaySeconds` from `now` comes due, as a signed 64-bit count of
// nanoseconds on the scheduler's clock.
#pragma once

#include <chrono>
#include <optional>

// nullopt: never. That is the answer for NaN, for a delay whose nanoseconds do not fit in 64
// bits (a past timestamp read as seconds lands here) and for a due time beyond the clock's
// range; nothing overflows on the way. A zero or negative delay is due at `now`.
std::optional<std::chrono::nanoseconds> dueTime(std::chrono::nanoseconds now, double delaySeconds);

#include "scripts/due_time.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {
// 2^63: the first double that no longer converts to int64.
constexpr double kInt64Limit = 9223372036854775808.0;
}  // namespace

std::optional<std::chrono::nanoseconds> dueTime(std::chrono::nanoseconds now, double delaySeconds) {
    if (std::isnan(delaySeconds)) return std::nullopt;
    const double nanos = delaySeconds * 1e9;
    if (nanos >= kInt64Limit) return std::nullopt;
    if (nanos <= 0.0) return now;
    const auto delay = static_cast<std::int64_t>(nanos);  // truncated
    // A negative `now` cannot overflow upwards; a positive one leaves this much room.
    if (now.count() > 0 && delay > std::numeric_limits<std::int64_t>::max() - now.count()) {
        return std::nullopt;
    }
    return now + std::chrono::nanoseconds(delay);
}

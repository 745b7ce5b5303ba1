// Ravelin_GetTimestamp: the current local date and time, from the platform's time-zone
// service. No exception frame: a failing host call reaches the host.
#include <time.h>

#include <chrono>

#include "info/functions.h"

namespace {

// Host timestamps count seconds from 0001-01-01, Unix time from 1970-01-01.
constexpr double kHostEpochToUnixEpoch = 62135596800.0;

// The local zone's offset from GMT at `when`, daylight saving included.
long gmtOffsetAt(time_t when) {
    tm local{};
    return localtime_r(&when, &local) != nullptr ? local.tm_gmtoff : 0;
}

double localSecondsSinceHostEpoch() {
    const auto now = std::chrono::system_clock::now();
    const double unixSeconds = std::chrono::duration<double>(now.time_since_epoch()).count();
    return unixSeconds +
           static_cast<double>(gmtOffsetAt(std::chrono::system_clock::to_time_t(now))) +
           kHostEpochToUnixEpoch;
}

}  // namespace

fmx::errcode body::Ravelin_GetTimestamp(const fmx::ExprEnv&, const rvl::Arguments&,
                                        fmx::Data& result) {
    fmx::FixPtUniquePtr seconds(0, fmx::kDefltFixedPrecision);
    seconds->AssignDouble(localSecondsSinceHostEpoch());
    fmx::DateTimeUniquePtr now;
    now->SetSecondsSinceEpoch(*seconds);
    result.SetAsTimeStamp(*now, fmx::kDTTimeStamp);
    return 0;
}

// The script scheduler. A request first waits on the timer thread until its delay has passed;
// it then becomes pending, appended to the end of the pending array. Each safe idle call
// starts at most one pending script, taken from the end: of several that came due before an
// idle call, the one that came due last runs first.
//
// One mutex guards both sides, since a server host idles on threads of its own. The timer
// thread starts with the first request and is stopped and joined by the destructor; requests
// still waiting then are dropped.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "fmlib/mutex.h"
#include "host/fmx_types.h"
#include "scripts/file_maker_script.h"
#include "scripts/scheduler_clock.h"

class Ravelin {
public:
    using LogSink = std::function<void(std::string_view line)>;
    // Asks the host to start the script; answers the host's error code.
    using StartScript = std::function<fmx::errcode(const FileMakerScript&)>;

    // A sizing hint for the pending array when it is first created, not a limit.
    static constexpr std::size_t kInitialCapacity = 1000;
    // How many requests may be queued at once, waiting and pending together, and how many bytes
    // of names and parameters they may hold: a calculation run in a loop cannot fill the
    // server's memory with requests.
    static constexpr std::size_t kMaxQueuedScripts = 10000;
    static constexpr std::size_t kMaxQueuedBytes = std::size_t{16} << 20;

    // The plug-in's own scheduler: steady clock, log on standard error. Built on first use and
    // destroyed when the library is unloaded, which stops its timer thread.
    static Ravelin& instance();

    // An empty sink logs nothing.
    Ravelin(std::shared_ptr<const SchedulerClock> clock, LogSink log);
    ~Ravelin();
    Ravelin(const Ravelin&) = delete;
    Ravelin& operator=(const Ravelin&) = delete;

    // Returns at once; the request cannot be cancelled. A delay of zero or less comes due at
    // once; one that never comes due (see dueTime) is not kept at all. False, with nothing
    // scheduled, when the queue already holds kMaxQueuedScripts requests or the request would
    // take it past kMaxQueuedBytes. Throws only when the timer thread cannot be started, and
    // then nothing is scheduled.
    bool scheduleScript(std::string scriptName, std::string fileName, std::string parameter,
                        double delaySeconds) EXCLUDES(mutex_);

    // The pending array: nullopt until the first request came due.
    std::optional<std::vector<FileMakerScript>> getScheduledScripts() const EXCLUDES(mutex_);
    void setScheduledScripts(std::optional<std::vector<FileMakerScript>> scripts) EXCLUDES(mutex_);

    // The idle side: starts the last pending script, logs a non-zero answer, then drops the
    // record whatever the outcome (also when `start` throws; the exception passes on). The
    // mutex is not held while `start` runs, and a call made while another one is starting a
    // script (nested, or from another thread) returns at once, so a record is never started
    // twice.
    void performScheduledScripts(const StartScript& start) EXCLUDES(mutex_);

    // Requests whose time has not come yet.
    std::size_t waitingCount() const EXCLUDES(mutex_);

    // For clocks that jump: wakes the timer and returns once it has delivered every request
    // due at the clock's time of the call (at once when the timer has not started).
    void clockAdvanced() EXCLUDES(mutex_);

    // Never with the mutex held, so that a slow sink holds up neither side.
    void log(std::string_view line) const EXCLUDES(mutex_);

private:
    void startTimerLocked() REQUIRES(mutex_);
    bool queueHasRoomLocked(std::size_t bytes) const REQUIRES(mutex_);
    void runTimer() noexcept EXCLUDES(mutex_);
    // Moves every due request to the pending array and returns the log lines that go with it.
    // Out of memory, the request being moved is lost, the rest wait, and no line is returned.
    std::vector<std::string> deliverDueLocked() noexcept REQUIRES(mutex_);
    // A line the sink fails on ends the batch.
    void logAll(const std::vector<std::string>& lines) const noexcept EXCLUDES(mutex_);
    // Until the next request is due or the timer is woken; `lock` holds the mutex again after.
    void waitLocked(fmlib::UniqueLock& lock) noexcept REQUIRES(mutex_);
    std::optional<std::chrono::nanoseconds> earliestDueLocked() const REQUIRES(mutex_);
    void dropStarted(std::size_t index, std::uint64_t arrayGeneration) noexcept EXCLUDES(mutex_);

    const std::shared_ptr<const SchedulerClock> clock_;
    const LogSink log_;

    mutable fmlib::Mutex mutex_;
    std::condition_variable timerWake_;
    std::condition_variable passDone_;
    // Due time to request; equal due times keep the order they were scheduled in.
    std::multimap<std::chrono::nanoseconds, FileMakerScript> waiting_ GUARDED_BY(mutex_);
    std::optional<std::vector<FileMakerScript>> scheduledScripts_ GUARDED_BY(mutex_);
    // Bumped when the whole array is replaced.
    std::uint64_t arrayGeneration_ GUARDED_BY(mutex_) = 0;
    std::uint64_t wakeups_ GUARDED_BY(mutex_) = 0;  // requests for a timer pass
    // The last request a finished pass had seen.
    std::uint64_t passesDone_ GUARDED_BY(mutex_) = 0;
    bool stopping_ GUARDED_BY(mutex_) = false;
    // Started under the mutex; the destructor joins it without, once stopping_ is set (the
    // timer thread never touches it).
    std::thread timer_ GUARDED_BY(mutex_);

    std::atomic<bool> performing_{false};
};

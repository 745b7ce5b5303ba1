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
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

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
                        double delaySeconds);

    // The pending array: nullopt until the first request came due.
    std::optional<std::vector<FileMakerScript>> getScheduledScripts() const;
    void setScheduledScripts(std::optional<std::vector<FileMakerScript>> scripts);

    // The idle side: starts the last pending script, logs a non-zero answer, then drops the
    // record whatever the outcome (also when `start` throws; the exception passes on). The
    // mutex is not held while `start` runs, and a call made while another one is starting a
    // script (nested, or from another thread) returns at once, so a record is never started
    // twice.
    void performScheduledScripts(const StartScript& start);

    // Requests whose time has not come yet.
    std::size_t waitingCount() const;

    // For clocks that jump: wakes the timer and returns once it has delivered every request
    // due at the clock's time of the call (at once when the timer has not started).
    void clockAdvanced();

    void log(std::string_view line) const;

private:
    void startTimerLocked();
    bool queueHasRoomLocked(std::size_t bytes) const;
    void runTimer() noexcept;
    // Moves every due request to the pending array and returns the log lines that go with it.
    std::vector<std::string> deliverDueLocked();
    std::optional<std::chrono::nanoseconds> earliestDueLocked() const;
    void dropStarted(std::size_t index, std::uint64_t arrayGeneration) noexcept;

    const std::shared_ptr<const SchedulerClock> clock_;
    const LogSink log_;

    mutable std::mutex mutex_;
    std::condition_variable timerWake_;
    std::condition_variable passDone_;
    // Due time to request; equal due times keep the order they were scheduled in.
    std::multimap<std::chrono::nanoseconds, FileMakerScript> waiting_;
    std::optional<std::vector<FileMakerScript>> scheduledScripts_;
    std::uint64_t arrayGeneration_ = 0;  // bumped when the whole array is replaced
    std::uint64_t wakeups_ = 0;          // requests for a timer pass
    std::uint64_t passesDone_ = 0;       // the last request a finished pass had seen
    bool stopping_ = false;
    std::thread timer_;

    std::atomic<bool> performing_{false};
};

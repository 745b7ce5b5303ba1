#include "scripts/ravelin.h"

#include <utility>

#include "fmlib/scope_exit.h"
#include "scripts/due_time.h"
#include "scripts/platform_log.h"

Ravelin& Ravelin::instance() {
    static Ravelin shared(std::make_shared<SteadySchedulerClock>(), logToStandardError);
    return shared;
}

Ravelin::Ravelin(std::shared_ptr<const SchedulerClock> clock, LogSink log)
    : clock_(std::move(clock)), log_(std::move(log)) {}

namespace {

using Lock = fmlib::ScopedLock<fmlib::Mutex>;

}  // namespace

Ravelin::~Ravelin() {
    {
        const Lock lock(mutex_);
        stopping_ = true;
    }
    timerWake_.notify_all();
    passDone_.notify_all();
    if (timer_.joinable()) timer_.join();
}

namespace {

std::size_t bytesOf(const FileMakerScript& s) {
    return s.script_name.size() + s.file_name.size() + s.script_parameters.size();
}

}  // namespace

bool Ravelin::queueHasRoomLocked(std::size_t bytes) const {
    const std::size_t pending = scheduledScripts_ ? scheduledScripts_->size() : 0;
    if (waiting_.size() + pending >= kMaxQueuedScripts) return false;
    std::size_t queued = bytes;
    for (const auto& [due, script] : waiting_) queued += bytesOf(script);
    if (scheduledScripts_) {
        for (const FileMakerScript& script : *scheduledScripts_) queued += bytesOf(script);
    }
    return queued <= kMaxQueuedBytes;
}

bool Ravelin::scheduleScript(std::string scriptName, std::string fileName, std::string parameter,
                             double delaySeconds) {
    const Lock lock(mutex_);
    if (stopping_) return true;
    const std::optional<std::chrono::nanoseconds> due = dueTime(clock_->now(), delaySeconds);
    // The timer would never look at it again.
    if (!due) return true;
    if (!queueHasRoomLocked(scriptName.size() + fileName.size() + parameter.size())) return false;
    startTimerLocked();
    waiting_.emplace(
        *due, FileMakerScript{std::move(scriptName), std::move(fileName), std::move(parameter)});
    ++wakeups_;
    timerWake_.notify_one();
    return true;
}

void Ravelin::startTimerLocked() {
    if (!timer_.joinable()) timer_ = std::thread(&Ravelin::runTimer, this);
}

void Ravelin::runTimer() noexcept {
    fmlib::UniqueLock lock(mutex_);
    while (!stopping_) {
        const std::uint64_t seen = wakeups_;
        const std::vector<std::string> lines = deliverDueLocked();
        if (!lines.empty()) {
            lock.unlock();
            logAll(lines);
            lock.lock();
        }
        passesDone_ = seen;
        passDone_.notify_all();
        if (stopping_ || wakeups_ != seen) continue;
        waitLocked(lock);
    }
}

std::vector<std::string> Ravelin::deliverDueLocked() noexcept {
    std::vector<std::string> lines;
    try {
        const std::chrono::nanoseconds now = clock_->now();
        while (!waiting_.empty() && waiting_.begin()->first <= now) {
            // Taken out first, so that a request that fails to move is not retried for ever.
            auto request = waiting_.extract(waiting_.begin());
            if (!scheduledScripts_) {
                scheduledScripts_.emplace();
                scheduledScripts_->reserve(kInitialCapacity);
            }
            if (log_) lines.push_back(describe(*scheduledScripts_));
            scheduledScripts_->push_back(std::move(request.mapped()));
            if (log_) lines.push_back(describe(*scheduledScripts_));
        }
    } catch (...) {
        lines.clear();
    }
    return lines;
}

void Ravelin::logAll(const std::vector<std::string>& lines) const noexcept {
    try {
        for (const std::string& line : lines) log(line);
    } catch (...) {
    }
}

void Ravelin::waitLocked(fmlib::UniqueLock& lock) noexcept {
    std::unique_lock<std::mutex>& held = lock.native();
    try {
        clock_->waitUntil(timerWake_, held, earliestDueLocked());
    } catch (...) {
        // A clock that failed while waiting: the timer goes on, holding the mutex again.
        if (!held.owns_lock()) held.lock();
    }
}

std::optional<std::chrono::nanoseconds> Ravelin::earliestDueLocked() const {
    if (waiting_.empty()) return std::nullopt;
    return waiting_.begin()->first;
}

void Ravelin::clockAdvanced() {
    fmlib::UniqueLock lock(mutex_);
    if (!timer_.joinable() || stopping_) return;
    const std::uint64_t target = ++wakeups_;
    timerWake_.notify_one();
    // A loop rather than a predicate: the analysis sees no lock inside a lambda.
    while (passesDone_ < target && !stopping_) passDone_.wait(lock.native());
}

std::optional<std::vector<FileMakerScript>> Ravelin::getScheduledScripts() const {
    const Lock lock(mutex_);
    return scheduledScripts_;
}

void Ravelin::setScheduledScripts(std::optional<std::vector<FileMakerScript>> scripts) {
    const Lock lock(mutex_);
    scheduledScripts_ = std::move(scripts);
    ++arrayGeneration_;
}

std::size_t Ravelin::waitingCount() const {
    const Lock lock(mutex_);
    return waiting_.size();
}

void Ravelin::performScheduledScripts(const StartScript& start) {
    if (performing_.exchange(true)) return;
    // The busy flag is cleared however the start ends.
    const fmlib::OnExit notBusy([&] { performing_.store(false); });

    FileMakerScript next;
    std::size_t index = 0;
    std::uint64_t generation = 0;
    {
        const Lock lock(mutex_);
        if (!scheduledScripts_ || scheduledScripts_->empty()) return;
        index = scheduledScripts_->size() - 1;
        next = scheduledScripts_->back();
        generation = arrayGeneration_;
    }
    // Only this side removes records and it is not re-entered, so the record keeps its index
    // while the timer appends behind it.
    const fmlib::OnExit drop([&] { dropStarted(index, generation); });
    const fmx::errcode error = start(next);
    if (error != 0) log(scriptErrorLine(error));
}

void Ravelin::dropStarted(std::size_t index, std::uint64_t arrayGeneration) noexcept {
    const Lock lock(mutex_);
    if (arrayGeneration != arrayGeneration_ || !scheduledScripts_) return;
    if (index < scheduledScripts_->size()) {
        scheduledScripts_->erase(scheduledScripts_->begin() + static_cast<std::ptrdiff_t>(index));
    }
}

void Ravelin::log(std::string_view line) const {
    if (log_) log_(line);
}

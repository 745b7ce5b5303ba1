#include "net/bounded_lookup.h"

#include <resolv.h>

#include <algorithm>
#include <condition_variable>
#include <list>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "fmlib/mutex.h"

namespace slib {

namespace {

struct Job {
    std::function<void()> lookup;
    bool done = false;  // under the workers' lock
};

struct Worker {
    std::shared_ptr<Job> job;
    std::thread thread;
};

// The workers that have not been joined yet. One per process, as the threads are.
class Workers {
public:
    ~Workers() { joinAll(); }

    bool run(std::function<void()> lookup, const NameServers& servers,
             LookupClock::time_point deadline) EXCLUDES(lock_) {
        reapFinished();
        auto job = std::make_shared<Job>();
        job->lookup = std::move(lookup);
        fmlib::UniqueLock hold(lock_);
        // Many look-ups at once wait for a free place, within their own deadline.
        while (runningLocked() >= kMaxLookupWorkers) {
            if (finished_.wait_until(hold.native(), deadline) == std::cv_status::timeout &&
                runningLocked() >= kMaxLookupWorkers) {
                return false;
            }
        }
        try {
            workers_.push_back({job, std::thread([this, job, servers] { work(*job, servers); })});
        } catch (const std::system_error&) {
            return false;
        }
        while (!job->done) {
            if (finished_.wait_until(hold.native(), deadline) == std::cv_status::timeout &&
                !job->done) {
                return false;
            }
        }
        // Joined at once: a look-up that answered in time leaves no thread behind, nor the
        // resolver state that the thread frees as it ends.
        std::list<Worker> own;
        for (auto it = workers_.begin(); it != workers_.end(); ++it) {
            if (it->job == job) {
                own.splice(own.end(), workers_, it);
                break;
            }
        }
        hold.unlock();
        for (Worker& w : own) w.thread.join();
        return true;
    }

    void joinAll() EXCLUDES(lock_) {
        std::list<Worker> all;
        {
            const fmlib::ScopedLock hold(lock_);
            all.swap(workers_);
        }
        for (Worker& w : all) w.thread.join();
    }

private:
    std::size_t runningLocked() const REQUIRES(lock_) {
        return static_cast<std::size_t>(std::count_if(
            workers_.begin(), workers_.end(), [](const Worker& w) { return !w.job->done; }));
    }

    // The thread's own resolver state (glibc keeps one per thread): the host's threads keep
    // theirs untouched.
    static void configureResolver(const NameServers& servers) {
        res_init();
        _res.retrans = kResolverTryTimeoutSeconds;
        _res.retry = 1;
        if (servers.addresses.empty()) return;
        const std::size_t count = std::min<std::size_t>(servers.addresses.size(), MAXNS);
        _res.nscount = static_cast<int>(count);
        for (std::size_t i = 0; i < count; ++i) _res.nsaddr_list[i] = servers.addresses[i];
    }

    void work(Job& job, const NameServers& servers) EXCLUDES(lock_) {
        configureResolver(servers);
        try {
            job.lookup();
        } catch (...) {
            // Its caller answers a failed look-up; the thread must not end the process.
        }
        {
            const fmlib::ScopedLock hold(lock_);
            job.done = true;
        }
        finished_.notify_all();
    }

    void reapFinished() EXCLUDES(lock_) {
        std::list<Worker> finished;
        {
            const fmlib::ScopedLock hold(lock_);
            for (auto it = workers_.begin(); it != workers_.end();) {
                const auto next = std::next(it);
                if (it->job->done) finished.splice(finished.end(), workers_, it);
                it = next;
            }
        }
        for (Worker& w : finished) w.thread.join();
    }

    // Guards the list and every job's `done`.
    mutable fmlib::Mutex lock_;
    std::condition_variable finished_;
    std::list<Worker> workers_ GUARDED_BY(lock_);
};

Workers& workers() {
    static Workers all;
    return all;
}

}  // namespace

bool LookUpBefore(std::function<void()> lookup, const NameServers& servers,
                  LookupClock::time_point deadline) {
    return workers().run(std::move(lookup), servers, deadline);
}

void JoinLookupWorkers() { workers().joinAll(); }

}  // namespace slib

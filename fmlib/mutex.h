// Mutexes the thread-safety analysis can follow: the standard ones, declared as capabilities,
// with scoped locks that say what they hold.
#pragma once

#include <mutex>

#include "fmlib/thread_annotations.h"

namespace fmlib {

template <class StdMutex>
class CAPABILITY("mutex") BasicMutex {
public:
    void lock() ACQUIRE() { m_.lock(); }
    void unlock() RELEASE() { m_.unlock(); }
    bool try_lock() TRY_ACQUIRE(true) { return m_.try_lock(); }

    // The standard mutex itself, for UniqueLock; locking it directly hides it from the analysis.
    StdMutex& native() { return m_; }

private:
    StdMutex m_;
};

using Mutex = BasicMutex<std::mutex>;
// May be locked again by the thread that holds it. The analysis cannot count: it reports a
// function that takes it twice itself, not one that calls another that takes it.
using RecursiveMutex = BasicMutex<std::recursive_mutex>;

// Holds `m` from construction to destruction.
template <class M>
class SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(M& m) ACQUIRE(m) : m_(m) { m_.lock(); }
    ~ScopedLock() RELEASE() { m_.unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    M& m_;
};

// Holds `m` from construction to destruction, except between unlock() and lock() again. A
// condition variable waits on native(): the wait releases the mutex and takes it again before it
// returns, so to the analysis the mutex stays held, as it is whenever the caller runs.
class SCOPED_CAPABILITY UniqueLock {
public:
    explicit UniqueLock(Mutex& m) ACQUIRE(m) : lock_(m.native()) {}
    ~UniqueLock() RELEASE() {}
    UniqueLock(const UniqueLock&) = delete;
    UniqueLock& operator=(const UniqueLock&) = delete;

    void lock() ACQUIRE() { lock_.lock(); }
    void unlock() RELEASE() { lock_.unlock(); }

    std::unique_lock<std::mutex>& native() { return lock_; }

private:
    std::unique_lock<std::mutex> lock_;
};

}  // namespace fmlib
